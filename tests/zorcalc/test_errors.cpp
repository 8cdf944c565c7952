// What a user sees for a wrong sheet: every error with its place, the line
// and a caret under the token, and a non-zero exit status, never a crash.
#include <doctest/doctest.h>

#include "zorcalc_run.h"

namespace {

// The report for `where` ("line:column: message"), then the source line and
// the caret line, as they must appear in the error output.
std::string report(const std::wstring& file, const std::string& where, const std::string& line,
                   const std::string& caret)
{
    return utf8(file) + ":" + where + "\n" + line + "\n" + caret + "\n";
}

bool has(const Outcome& run, const std::string& text)
{
    bool found = run.err.find(text) != std::string::npos;
    if (!found)
        MESSAGE(run.err);
    return found;
}

} // namespace

TEST_CASE("compile errors name place, token and the library's message")
{
    std::wstring file = sheet(L"errors.zc");
    Outcome run = run_zorcalc({file});
    CHECK(run.status == 1);
    CHECK(run.out == "");
    CHECK(has(run, report(file, "3:4: Operand required.", "n =", "   ^")));
    CHECK(has(run, report(file, "6:3: L-Value required.", "1 = n", "  ^")));
    CHECK(has(run, report(file, "7:11: \")\" required.", "n = (n + 1", "          ^")));
    CHECK(has(run, report(file, "8:7: the mask has 2 placeholders for 1 value", "print \"# #\"  n", "      ^~~~~")));
    CHECK(has(run, report(file, "9:7: Syntax error.", "n = 2 n", "      ^")));
    // Codes without catalogue text carry their name and what the engine says.
    CHECK(has(run, "errors.zc:4:6: "));
    CHECK(has(run, "(DISP_E_TYPEMISMATCH): EXT_Long <-> EXT_String\nn = s\n     ^\n"));
    CHECK(has(run, "(DISP_E_UNKNOWNNAME): m\nm = 3\n^\n"));
}

TEST_CASE("--lang de gives the catalogue's German texts")
{
    std::wstring file = sheet(L"errors.zc");
    Outcome run = run_zorcalc({L"--lang", L"de", file});
    CHECK(has(run, report(file, "3:4: Operand wird erwartet.", "n =", "   ^")));
    CHECK(has(run, report(file, "7:11: \")\" wird erwartet.", "n = (n + 1", "          ^")));
    CHECK(run.status == 1);
}

TEST_CASE("malformed lines are reported one by one")
{
    std::wstring file = sheet(L"badlines.zc");
    Outcome run = run_zorcalc({file});
    CHECK(run.status == 1);
    CHECK(has(run, report(file, "1:5: unknown type \"dbl\" (types are char, long, ulong, double, bitfield, string, date)",
                          "var dbl x", "    ^~~")));
    CHECK(has(run, report(file, "2:11: a name is expected after the type", "var double", "          ^")));
    CHECK(has(run, report(file, "3:14: \"=\" or the end of the line is expected after the name", "var double y z",
                          "             ^")));
    CHECK(has(run, report(file, "4:12: a name is expected after the type", "const long 9lives = 9", "           ^")));
    CHECK(has(run, report(file, "5:13: datepicture needs a picture in double quotes", "datepicture dd.MM.yyyy",
                          "            ^")));
    CHECK(has(run, report(file, "6:7: the mask is not closed by a double quote", "print \"unclosed mask",
                          "      ^~~~~~~~~~~~~~")));
    CHECK(has(run, report(file, "8:17: \"31.02.2026\" is no date in the picture \"yyyy-MM-dd\"",
                          "var date when = \"31.02.2026\"", "                ^~~~~~~~~~~~")));
    CHECK(has(run, report(file, "9:10: \"var\" is a word of the sheet and no name", "var long var = 1",
                          "         ^~~")));
}

TEST_CASE("a run error names the formula that failed and stops the printing")
{
    std::wstring file = sheet(L"runerror.zc");
    Outcome run = run_zorcalc({file});
    CHECK(run.status == 1);
    CHECK(run.out == "start 2026-02-28\n");
    CHECK(has(run, utf8(file) + ":6:1: run error in the formula \"mean = total / count\": "));
    CHECK(has(run, "(DISP_E_DIVBYZERO)\nmean = total / count\n^~~~~~~~~~~~~~~~~~~~\n"));
    CHECK(has(run, report(file, "8:22: note: the value \"mean\" needs it", "print \"mean ###.##\"  mean",
                          "                     ^~~~")));

    // A user function stops the run through the engine's error call.
    run = run_zorcalc({L"-e", L"today() + days(-1)"});
    CHECK(run.status == 1);
    CHECK(has(run, "-e:1:1: run error in the formula \"today() + days(-1)\": "));
    CHECK(has(run, "(E_INVALIDARG)\n"));
}

TEST_CASE("names are defined once, and a comment may not swallow the next line")
{
    Outcome run = run_zorcalc({L"-", L"--locale", L"en-GB"},
                              "var long len = 1\nvar long a = 1\nvar double a\na = 2 /* open\na + 1\n");
    CHECK(has(run, report(L"<stdin>", "1:10: \"len\" is already defined", "var long len = 1", "         ^~~")));
    CHECK(has(run, report(L"<stdin>", "3:12: \"a\" is already defined", "var double a", "           ^")));
    CHECK(has(run, report(L"<stdin>", "4:14: The comment is not properly closed.", "a = 2 /* open", "             ^")));
    CHECK(run.out == "2 (EXT_Long)\n");
}

TEST_CASE("an index that would reach past a variable is refused")
{
    Outcome run = run_zorcalc({L"-"}, "var long n = 7\nn[100000000] = 5\nvar bitfield b = 5\nb[2] + n[0]\nn\n");
    CHECK(has(run, report(L"<stdin>", "2:1: only strings and bit fields can be indexed: a variable of the sheet holds one value",
                          "n[100000000] = 5", "^~~~~~~~~~~~~~~~")));
    CHECK(has(run, "<stdin>:4:1: only strings"));
    CHECK(run.out == "7 (EXT_Long)\n");
    CHECK(run.status == 1);
}

TEST_CASE("unreadable input gives a clear message and status")
{
    SUBCASE("a missing sheet")
    {
        Outcome run = run_zorcalc({L"no-such-sheet.zc"});
        CHECK(run.status == 2);
        CHECK(run.err.find("no-such-sheet.zc: cannot open the sheet: ") == 0);
    }
    SUBCASE("a line that is too long")
    {
        TempSheet file("x = 1\ny = " + std::string(1000, '1') + "\n");
        Outcome run = run_zorcalc({file.path});
        CHECK(run.status == 1);
        CHECK(has(run, utf8(file.path) + ":2:1001: the line is longer than 1000 characters\n"));
    }
    SUBCASE("bytes that are not UTF-8")
    {
        TempSheet file("\xEF\xBB\xBFvar string s = \"ok\"\nvar string t = \"\xFF\xFE\"\nprint \"^\"  s\n");
        Outcome run = run_zorcalc({file.path});
        CHECK(run.status == 1);
        CHECK(has(run, utf8(file.path) + ":2:1: the line is not valid UTF-8\n"));
        CHECK(run.out == "");
    }
    SUBCASE("a bad command line")
    {
        CHECK(run_zorcalc({L"--bogus"}).status == 2);
        CHECK(run_zorcalc({L"--lang", L"fr"}).status == 2);
        CHECK(run_zorcalc({L"-e"}).status == 2);
        CHECK(run_zorcalc({L"a.zc", L"b.zc"}).status == 2);
        Outcome run = run_zorcalc({L"--locale", L"xx-nowhere"});
        CHECK(run.status == 2);
        CHECK(run.err == "zorcalc: unknown locale \"xx-nowhere\"\n");
    }
}
