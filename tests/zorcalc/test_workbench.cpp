// What a user meets around the sheets: run errors that blame the formula that
// failed, one language per report, the overflow warning of number pictures,
// UTF-16 sheets, the interactive commands, and the tools' usage texts.
#include <initializer_list>

#include <doctest/doctest.h>

#include "zor_version.h"
#include "zorcalc_run.h"

namespace {

bool contains(const std::string& text, const std::string& part)
{
    bool found = text.find(part) != std::string::npos;
    if (!found)
        MESSAGE(text);
    return found;
}

std::string utf16(const std::wstring& text, bool littleEndian)
{
    std::string bytes = littleEndian ? "\xFF\xFE" : "\xFE\xFF";
    for (wchar_t unit : text) {
        char low = char(unit & 0xFF), high = char(unit >> 8);
        bytes += littleEndian ? std::string{low, high} : std::string{high, low};
    }
    return bytes;
}

} // namespace

TEST_CASE("a run error names the formula whose run failed and makes each assignment once")
{
    // `n = n + 1` runs inside the failed run and must have counted once when
    // `n` is read afterwards.
    Outcome run = run_zorcalc({L"-"}, "var long n\nvar long zero\nvar long q\nn = n + 1\nq = n / zero\nn\n"
                                      "print \"q ###\"  q\n");
    CHECK(run.status == 1);
    CHECK(run.out == "1 (EXT_Long)\n3 (EXT_Long)\n");
    CHECK(contains(run.err, "<stdin>:5:1: run error in the formula \"q = n / zero\": Division by zero. "
                            "(DISP_E_DIVBYZERO)\n"));
    CHECK(contains(run.err, "<stdin>:7:16: note: the value \"q\" needs it\n"));

    // `bad` fails when run alone, but nothing needs it.
    TempSheet file("var long n\nvar long zero\nvar long q\nvar long bad\nbad = 1 / zero\nn = n + 1\n"
                   "q = n / zero\nprint \"q ###\"  q\n");
    run = run_zorcalc({L"--lang", L"de", file.path});
    CHECK(run.status == 1);
    CHECK(contains(run.err, ":7:1: Laufzeitfehler in der Formel \"q = n / zero\": Division durch null. "
                            "(DISP_E_DIVBYZERO)\n"));
    CHECK(contains(run.err, ":8:16: Hinweis: der Wert \"q\" braucht sie\n"));
    CHECK(run.err.find("bad = 1 / zero\":") == std::string::npos);
}

TEST_CASE("platform codes of the engine read in the chosen language")
{
    struct Row {
        const wchar_t* formula;
        const char *english, *german;
    } rows[] = {
        {L"1 / 0", "Division by zero. (DISP_E_DIVBYZERO)", "Division durch null. (DISP_E_DIVBYZERO)"},
        {L"\"ab\"[5]", "Invalid index. (DISP_E_BADINDEX)", "Ung\xC3\xBCltiger Index. (DISP_E_BADINDEX)"},
        {L"zz + 1", "1: Unknown name. (DISP_E_UNKNOWNNAME): zz", "1: Unbekannter Name. (DISP_E_UNKNOWNNAME): zz"},
        {L"len(1, 2)", "6: Type mismatch. (DISP_E_TYPEMISMATCH)", "6: Die Typen passen nicht zusammen."},
        {L"b[3] = 1", "has no meaning for this value. (E_UNEXPECTED)", "keine Bedeutung. (E_UNEXPECTED)"},
        {L"round(1, 11)", "An argument is out of range. (E_INVALIDARG)", "Bereichs. (E_INVALIDARG)"},
    };
    for (const Row& row : rows) {
        for (bool german : {false, true}) {
            Outcome run = run_zorcalc({L"--lang", german ? L"de" : L"en", L"-e", L"var bitfield b", L"-e", row.formula});
            CHECK(run.status == 1);
            CHECK(contains(run.err, german ? row.german : row.english));
            CHECK(run.err.find(german ? "run error" : "Laufzeitfehler") == std::string::npos);
            CHECK(run.err.find("Unknown Error Code") == std::string::npos);
        }
    }
}

TEST_CASE("a number too large for its picture is printed as the library prints it, with a warning")
{
    TempSheet file("var double big = 123456.7\nprint \"v ###.## w ##\"  big, 99.5\nprint \"s ####\"  \"1234\"\n");
    Outcome run = run_zorcalc({L"--locale", L"en-US", file.path});
    CHECK(run.status == 0);
    CHECK(run.out == "v 456.7  w 00\ns 1234\n");
    CHECK(contains(run.err, ":2:24: warning: the value 123456.7 does not fit the picture \"###.##\"; the library "
                            "drops the leading digits\n"));
    CHECK(contains(run.err, ":2:29: warning: the value 99.5 does not fit the picture \"##\";"));
    CHECK(run.err.find(":3:") == std::string::npos);
}

TEST_CASE("sheets in UTF-16 of either byte order are read")
{
    const std::wstring text = L"var string s = \"Gr\u00f6\u00dfe \U0001F600\"\r\nprint \"^\"  s\r\n";
    for (bool littleEndian : {true, false}) {
        TempSheet file(utf16(text, littleEndian));
        Outcome run = run_zorcalc({file.path});
        CHECK(run.err == "");
        CHECK(run.out == "Gr\xC3\xB6\xC3\x9F" "e \xF0\x9F\x98\x80\n");
    }
}

TEST_CASE("usage, version and the commands of an interactive session")
{
    for (const wchar_t* option : {L"--help", L"--version"}) {
        Outcome run = run_zorcalc({option});
        CHECK(run.status == 0);
        CHECK(run.err == "");
        CHECK(run.out.find(option[2] == L'h' ? "usage: zorcalc" : "zorcalc " ZORBASE_VERSION_STRING "\n") == 0);
    }
    Outcome run = run_zorcalc({L"-"}, "1 + 1\n:help\n:nothing\n:quit\n2 + 2\n");
    CHECK(run.status == 1);
    CHECK(run.out.find("2 (EXT_Long)\nvar TYPE NAME") == 0);
    CHECK(run.out.find("4 (EXT_Long)") == std::string::npos);
    CHECK(contains(run.err, "<stdin>:3:1: unknown command \":nothing\" (:help, :quit)\n"));

    Outcome help = run_program(L"zormsg.exe", {L"--help"});
    CHECK(help.status == 0);
    CHECK(help.out.find("usage: zormsg") == 0);
    Outcome codes = run_program(L"zormsg.exe", {L"0xC0040406", L"c0040409"});
    CHECK(codes.status == 0);
    CHECK(codes.out == "0xC0040406  Illegal Number.\r\n            Ung\xC3\xBCltige Zahl.\r\n"
                       "0xC0040409  Operand required.\r\n            Operand wird erwartet.\r\n");
    for (const wchar_t* bad : {L"C004040G", L"123456789", L"0x", L"-1"}) {
        Outcome refused = run_program(L"zormsg.exe", {L"C0040406", bad});
        CHECK(refused.status == 2);
        CHECK(refused.out == "");
        CHECK(contains(refused.err, "is not a hexadecimal status code"));
    }
}
