// What a user sees for a wrong sheet: every error with its place, the line
// and a caret under the token, and a non-zero exit status, never a crash.
#include <initializer_list>

#include <doctest/doctest.h>

#include "zorcalc_run.h"

namespace {

bool has(const Outcome& run, const std::string& text)
{
    bool found = run.err.find(text) != std::string::npos;
    if (!found)
        MESSAGE(run.err);
    return found;
}

// One report as it must appear in the error output: "file:where", the
// source line and the caret line.
struct Report {
    std::string where, line, caret;
};

void check_reports(const Outcome& run, const std::wstring& file, std::initializer_list<Report> reports)
{
    for (const Report& r : reports)
        CHECK(has(run, utf8(file) + ":" + r.where + "\n" + r.line + "\n" + r.caret + "\n"));
}

} // namespace

TEST_CASE("compile errors name place, token and the library's message")
{
    std::wstring file = sheet(L"errors.zc");
    Outcome run = run_zorcalc({file});
    CHECK(run.status == 1);
    CHECK(run.out == "");
    check_reports(run, file,
                  {{"3:4: Operand required.", "n =", "   ^"},
                   {"6:3: L-Value required.", "1 = n", "  ^"},
                   {"7:11: \")\" required.", "n = (n + 1", "          ^"},
                   {"8:7: the mask has 2 placeholders for 1 value", "print \"# #\"  n", "      ^~~~~"},
                   {"9:7: Syntax error.", "n = 2 n", "      ^"},
                   {"11:16: the number picture \"###\" can't show an EXT_Date value", "print \"n ###\"  d",
                    "               ^"}});
    // Codes without catalogue text carry their name and what the engine says.
    CHECK(has(run, "(DISP_E_TYPEMISMATCH): EXT_Long <-> EXT_String\nn = s\n     ^\n"));
    CHECK(has(run, "(DISP_E_UNKNOWNNAME): m\nm = 3\n^\n"));

    run = run_zorcalc({L"--lang", L"de", file});
    CHECK(run.status == 1);
    check_reports(run, file,
                  {{"3:4: Operand wird erwartet.", "n =", "   ^"},
                   {"7:11: \")\" wird erwartet.", "n = (n + 1", "          ^"}});
}

TEST_CASE("malformed lines are reported one by one")
{
    std::wstring file = sheet(L"badlines.zc");
    Outcome run = run_zorcalc({file});
    CHECK(run.status == 1);
    check_reports(
        run, file,
        {{"1:5: unknown type \"dbl\" (types are char, long, ulong, double, bitfield, string, date)", "var dbl x",
          "    ^~~"},
         {"2:11: a name is expected after the type", "var double", "          ^"},
         {"3:14: \"=\" or the end of the line is expected after the name", "var double y z", "             ^"},
         {"4:12: a name is expected after the type", "const long 9lives = 9", "           ^"},
         {"5:13: datepicture needs a picture in double quotes", "datepicture dd.MM.yyyy", "            ^"},
         {"6:7: the mask is not closed by a double quote", "print \"unclosed mask", "      ^~~~~~~~~~~~~~"},
         {"8:17: \"31.02.2026\" is no date in the picture \"yyyy-MM-dd\"", "var date when = \"31.02.2026\"",
          "                ^~~~~~~~~~~~"},
         {"9:10: \"var\" is a word of the sheet and no name", "var long var = 1", "         ^~~"}});
}

TEST_CASE("a run error names the formula that failed and stops the printing")
{
    std::wstring file = sheet(L"runerror.zc");
    Outcome run = run_zorcalc({file});
    CHECK(run.status == 1);
    CHECK(run.out == "start 2026-02-28\n");
    CHECK(has(run, utf8(file) + ":6:1: run error in the formula \"mean = total / count\": "));
    CHECK(has(run, "(DISP_E_DIVBYZERO)\nmean = total / count\n^~~~~~~~~~~~~~~~~~~~\n"));
    check_reports(run, file,
                  {{"8:22: note: the value \"mean\" needs it", "print \"mean ###.##\"  mean", "                     ^~~~"}});
}

TEST_CASE("user functions stop the run on an argument out of range")
{
    const std::wstring formulas[] = {L"today() + days(-1)", L"days(65536)", L"months(-1)", L"round(1.5, 11)",
                                     L"round(1.5, -1)", L"picture(1, \"" + std::wstring(257, L'#') + L"\")"};
    for (const std::wstring& formula : formulas) {
        Outcome run = run_zorcalc({L"-e", formula});
        CHECK(run.status == 1);
        CHECK(has(run, "-e:1:1: run error in the formula \"" + utf8(formula) + "\": "));
        CHECK(has(run, "(E_INVALIDARG)\n"));
    }
}

TEST_CASE("names are defined once, comments close on their line, and indexes stay inside a variable")
{
    Outcome run = run_zorcalc({L"-", L"--locale", L"en-GB"},
                              "var long len = 1\nvar long a = 1\nvar double a\na = 2 /* open\na + 1\n\ta = = 1\n"
                              "var long n = 7\nn[100000000] = 5\nvar bitfield b = 5\nb[2] + n[0]\nn\n");
    check_reports(run, L"<stdin>",
                  {{"1:10: \"len\" is already defined", "var long len = 1", "         ^~~"},
                   {"3:12: \"a\" is already defined", "var double a", "           ^"},
                   {"4:14: The comment is not properly closed.", "a = 2 /* open", "             ^"},
                   // A tab stays a tab in front of the caret.
                   {"6:6: Operand required.", "\ta = = 1", "\t    ^"},
                   {"8:1: only strings and bit fields can be indexed: a variable of the sheet holds one value",
                    "n[100000000] = 5", "^~~~~~~~~~~~~~~~"}});
    CHECK(has(run, "<stdin>:10:1: only strings"));
    CHECK(run.out == "2 (EXT_Long)\n7 (EXT_Long)\n");
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
    SUBCASE("a line or a date picture that is too long")
    {
        TempSheet file("x = 1\ny = " + std::string(1000, '1') + "\ndatepicture \"" + std::string(65, 'd') + "\"\n");
        Outcome run = run_zorcalc({file.path});
        CHECK(run.status == 1);
        CHECK(has(run, utf8(file.path) + ":2:1001: the line is longer than 1000 characters\n"));
        CHECK(has(run, utf8(file.path) + ":3:14: the date picture is longer than 64 characters\n"));
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
