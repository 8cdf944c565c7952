// One-line formulas from the command line and from a pipe, and the listing
// of what the compiler made of them.
#include <doctest/doctest.h>

#include "zorcalc_run.h"

TEST_CASE("-e prints each formula's value and type")
{
    Outcome run = run_zorcalc({L"--locale", L"C", L"-e", L"7 / 2", L"-e", L"-7 % 2", L"-e", L"'A' + 1", L"-e", L"1 << 33",
                               L"-e", L"2.5 * 4", L"-e", L"4000000000", L"-e", L"\"Gr\" + '\u00f6' + \"\u00dfe\"",
                               L"-e", L"len(\"Gr\u00f6\u00dfe\")", L"-e", L"round(-2.5, 0)", L"-e",
                               L"round(0.125, 10)", L"-e", L"days(30)", L"-e", L"months(65535)"});
    CHECK(run.err == "");
    CHECK(run.status == 0);
    CHECK(run.out == "3 (EXT_Long)\n-1 (EXT_Long)\n66 (EXT_Long)\n2 (EXT_Long)\n10 (EXT_Double)\n"
                     "4000000000 (EXT_ULong)\n\"Gr\xC3\xB6\xC3\x9F" "e\" (EXT_String)\n5 (EXT_Long)\n"
                     "-3 (EXT_Double)\n0.125 (EXT_Double)\n0000-00-30 (EXT_Date)\n0000-65535-00 (EXT_Date)\n");
}

TEST_CASE("standard input is read a line at a time and answered at once")
{
    Outcome run = run_zorcalc({L"--locale", L"en-GB", L"-"},
                              "var double x = 1.5\r\nx * 2\ny = 3\nvar long y\ny = 7 / 2\n\"ab\" + 'c'\n"
                              "print \"x is ##.$$\"  x\n# a comment and a formula that is only a comment\n// nothing\ny");
    CHECK(run.out == "3 (EXT_Double)\n3 (EXT_Long)\n\"abc\" (EXT_String)\nx is  1.50\n3 (EXT_Long)\n");
    CHECK(run.err.find("<stdin>:3:1: ") == 0);
    CHECK(run.err.find("(DISP_E_UNKNOWNNAME): y\ny = 3\n^\n") != std::string::npos);
    CHECK(run.status == 1);
}

TEST_CASE("--disasm lists index, opcode, type, storage and value")
{
    Outcome run = run_zorcalc({L"--locale", L"C", L"--disasm", L"-e", L"var double d", L"-e", L"var long a = 2", L"-e",
                               L"d = a + 1.5", L"-e", L"const long n = 3", L"-e", L"len(\"abc\") + n"});
    CHECK(run.err == "");
    CHECK(run.out.find("-e:2: 2\n"
                       "     0  EOP_NOP          EXT_Long      plain     2\n"
                       "     1  EOP_END          EXT_Void      plain     -\n"
                       "-e:3: d = a + 1.5\n"
                       "     2  EOP_NOP          EXT_Double    plain     d\n"
                       "     3  EOP_NOP          EXT_Long      plain     a\n"
                       "     4  EOP_TO_DOUBLE    EXT_Long      plain     -\n"
                       "     5  EOP_NOP          EXT_Double    plain     1.5\n"
                       "     6  EOP_ADD          EXT_Double    plain     -\n"
                       "     7  EOP_ASS          EXT_Double    plain     d\n"
                       "     8  EOP_END          EXT_Void      plain     -\n"
                       "3.5 (EXT_Double)\n") == 0);
    // Functions and constants go by their names, literals by their values.
    for (const char* row : {"EOP_NOP          EXT_String    string    \"abc\"\n",
                            "EOP_NOP          EXT_Long      function  len\n", "EOP_PAR          EXT_Long      plain     -\n",
                            "EOP_NOP          EXT_Long      constant  n\n", "6 (EXT_Long)\n"})
        CHECK(run.out.find(row) != std::string::npos);
}
