#include "scanner_test_support.h"

#include <random>

#include "alloc_check.h"
#include "dll_image.h"
#include "zor_fsc.h"

namespace {
struct FormatScanner {
    FScScanner fsc;
    FormatScanner() { REQUIRE(FScInit(&fsc, 256) == ZOR_S_OK); }
    ~FormatScanner() { FScRelease(&fsc); }
    // "code:text " for every piece up to and including the end; each piece
    // but the end consumes something, and alpha is always terminated.
    std::string pieces(const wchar_t* text, uint32_t len = 0xFFFFFFFFu)
    {
        FScSetLineLen(&fsc, text, len);
        std::string out;
        for (int32_t sym = 0; sym != FSC_EOL;) {
            uint32_t before = FScGetColumnNo(&fsc);
            sym = FScGetNextSym(&fsc);
            REQUIRE(FScGetSym(&fsc) == sym);
            REQUIRE(FScGetAlpha(&fsc)[FScGetAlphaLen(&fsc)] == 0);
            REQUIRE((sym == FSC_EOL || FScGetColumnNo(&fsc) > before));
            out += std::to_string(sym) + ":" + printable(FScGetAlpha(&fsc), FScGetAlphaLen(&fsc)) + " ";
        }
        return out;
    }
};
}

TEST_CASE("lines split into constant text and placeholders; zero units inside a given length are text")
{
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"", "-1: "}, {L"Sum: ####.## EUR", "-2:Sum:  -7:####.## -2: EUR -1: "}, {L"&^", "-3:& -5:^ -1: "},
        {L"/   /", "-4:/   / -1: "}, {L"/ab/", "-2:/ab -2:/ -1: "}, {L"//x/ a /", "-4:// -2:x -2:/ a  -2:/ -1: "},
        {L"+", "-2:+ -1: "}, {L"+#", "-6:+# -1: "}, {L"-#-", "-6:-# -2:- -1: "}, {L"#+", "-6:#+ -1: "},
        {L"+-#", "-2:+ -6:-# -1: "}, {L".##", "-2:. -6:## -1: "}, {L"$$,$$$.**-", "-7:$$,$$$.**- -1: "},
        {L"#,,#,", "-6:# -2:,, -6:# -2:, -1: "}, {L"Qty&Name/  /=^", "-2:Qty -3:& -2:Name -4:/  / -2:= -5:^ -1: "},
        // escapes, cut to 16 bits
        {L"a\\#b\\a\\b\\f\\n\\r\\t\\v", "-2:a#b<7><8><c><a><d><9><b> -1: "},
        {L"\\0101\\08\\0777x", "-2:A<0>8<1ff>x -1: "}, {L"\\&\\^\\/\\\\\\$\\q", "-2:&^/\\$q -1: "},
        {L"\\65\\12345\\x41g\\x1F600\\xg", "-2:A<4d2>5Ag<f600><0>g -1: "},
    };
    FormatScanner s;
    for (const auto& row : rows)
        CHECK(s.pieces(row.first) == row.second);
    CHECK(FScGetNextSym(&s.fsc) == FSC_EOL);
    CHECK(FScGetColumnNo(&s.fsc) == 24);

    CHECK(s.pieces(L"ab\0cd", 5) == "-2:ab -2:<0>cd -1: ");
    CHECK(FScGetColumnNo(&s.fsc) == 5);
    CHECK(s.pieces(L"#\0\0&", 4) == "-6:# -2:<0> -2:<0> -3:& -1: ");
    CHECK(s.pieces(L"/\0/", 3) == "-2:/ -2:<0> -2:/ -1: ");
    CHECK(s.pieces(L"x\\\0", 3) == "-2:x<0> -1: ");
    CHECK(s.pieces(L"abc\0##", 1) == "-2:abc -1: ");
    CHECK(FScGetColumnNo(&s.fsc) == 3);
    // A backslash at the end stands for itself; a line without a length ends at its first zero unit.
    CHECK(s.pieces(L"a\\\0##") == "-2:a\\ -1: ");
    CHECK(FScGetColumnNo(&s.fsc) == 2);
    FScSetLine(&s.fsc, L"a\0b");
    CHECK(FScGetNextSym(&s.fsc) == FSC_CONSTANT);
    CHECK(FScGetNextSym(&s.fsc) == FSC_EOL);
}

TEST_CASE("random lines split into pieces that cover the line exactly")
{
    const wchar_t alphabet[] = L"#$*+-,./&^\\ ax0719Ff\t";  // with its zero unit
    std::mt19937 rng(20261122);
    FormatScanner s;
    for (int round = 0; round < 3000; ++round) {
        uint32_t len = rng() % 40, column = 0;
        std::wstring line;
        while (line.size() < len)
            line += alphabet[rng() % (sizeof alphabet / sizeof alphabet[0])];
        line += std::wstring(1, L'\0') + L"##&";  // would show as pieces if read
        FScSetLineLen(&s.fsc, line.c_str(), len);
        for (int32_t sym; (sym = FScGetNextSym(&s.fsc)) != FSC_EOL; column = FScGetColumnNo(&s.fsc)) {
            uint32_t end = FScGetColumnNo(&s.fsc);
            REQUIRE(end > column);
            REQUIRE(end <= len);
            std::wstring alpha(FScGetAlpha(&s.fsc), FScGetAlphaLen(&s.fsc));
            // Escapes only shorten constant text; a placeholder is its own text.
            CHECK((sym == FSC_CONSTANT ? alpha.size() <= end - column : alpha == line.substr(column, end - column)));
        }
        CHECK(column == len);
        CHECK(FScGetAlphaLen(&s.fsc) == 0);
    }
}

TEST_CASE("descriptions, placeholder codes, allocation and exports")
{
    CHECK(std::wstring(FScGetSymDescription(FSC_INTEGER)) == L"INTEGER placeholder");
    CHECK(std::wstring(FScGetSymDescription(FSC_VARIANT)) == L"VARIANT placeholder ");
    for (int32_t sym : {0, -8, 31333})
        CHECK(FScGetSymDescription(sym) == nullptr);
    for (int32_t sym = -9; sym <= 1; ++sym)
        CHECK(FScIsPlaceholder(sym) == (sym >= -7 && sym <= -3));

    NoLeak leak;
    FScScanner fsc;
    {
        AllAllocationsFail fail;
        CHECK(FScInit(&fsc, 16) == ZOR_E_OUTOFMEMORY);
    }
    FScRelease(&fsc);
    REQUIRE(FScInit(&fsc, 0) == ZOR_S_OK);  // still room for the terminator
    FScSetLine(&fsc, L"");
    CHECK(FScGetNextSym(&fsc) == FSC_EOL);
    CHECK(FScGetAlpha(&fsc)[0] == 0);
    FScRelease(&fsc);
    CHECK(missing_exports({"FScInit", "FScRelease", "FScSetLine", "FScSetLineLen", "FScGetNextSym", "FScGetSym",
                           "FScGetAlpha", "FScGetAlphaLen", "FScGetColumnNo", "FScGetSymDescription",
                           "FScIsPlaceholder"}) == "");
}
