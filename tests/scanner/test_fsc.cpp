#include <doctest/doctest.h>

#include <stdint.h>
#include <wchar.h>

#include <string>
#include <utility>
#include <vector>

#include "alloc_check.h"
#include "dll_image.h"
#include "zor_fsc.h"
#include "zor_status.h"

namespace {

using Piece = std::pair<int32_t, std::wstring>;

// A scanner with room for any line of these tests, released at scope end.
struct Scanner {
    FScScanner fsc;
    Scanner() { REQUIRE(FScInit(&fsc, 256) == ZOR_S_OK); }
    ~Scanner() { FScRelease(&fsc); }

    // All pieces of a line up to and including the end. Each call must
    // consume something unless it reports the end.
    std::vector<Piece> pieces(const wchar_t* text, uint32_t len = 0xFFFFFFFFu)
    {
        FScSetLineLen(&fsc, text, len);
        std::vector<Piece> out;
        for (;;) {
            uint32_t before = FScGetColumnNo(&fsc);
            int32_t sym = FScGetNextSym(&fsc);
            REQUIRE(FScGetSym(&fsc) == sym);
            REQUIRE(FScGetAlpha(&fsc)[FScGetAlphaLen(&fsc)] == 0);
            out.emplace_back(sym, std::wstring(FScGetAlpha(&fsc), FScGetAlphaLen(&fsc)));
            if (sym == FSC_EOL)
                return out;
            REQUIRE(FScGetColumnNo(&fsc) > before);
        }
    }
};

std::string show(const std::vector<Piece>& pieces)
{
    std::string out;
    for (const Piece& p : pieces) {
        out += std::to_string(p.first) + ":";
        for (wchar_t unit : p.second)
            out += unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '?';
        out += " ";
    }
    return out;
}

}

TEST_CASE("lines split into constant text and placeholders that stand alone")
{
    Scanner s;
    const struct {
        const wchar_t* line;
        const char* pieces;
    } rows[] = {
        {L"", "-1: "},
        {L"Sum: ####.## EUR", "-2:Sum:  -7:####.## -2: EUR -1: "},
        {L"&^", "-3:& -5:^ -1: "},
        {L"/   /", "-4:/   / -1: "},
        {L"/ab/", "-2:/ab -2:/ -1: "},
        {L"//x/ a /", "-4:// -2:x -2:/ a  -2:/ -1: "},
        {L"+", "-2:+ -1: "},
        {L"+#", "-6:+# -1: "},
        {L"-#-", "-6:-# -2:- -1: "},
        {L"#+", "-6:#+ -1: "},
        {L"+-#", "-2:+ -6:-# -1: "},
        {L".##", "-2:. -6:## -1: "},
        {L"$$,$$$.**-", "-7:$$,$$$.**- -1: "},
        {L"+#.#-", "-7:+#.# -2:- -1: "},
        {L"#,", "-6:# -2:, -1: "},
        {L"##,,#", "-6:## -2:,, -6:# -1: "},
        {L"#,#.", "-7:#,#. -1: "},
        {L"a\\#b", "-2:a#b -1: "},
        {L"Qty&Name/  /=^", "-2:Qty -3:& -2:Name -4:/  / -2:= -5:^ -1: "},
    };
    for (const auto& row : rows) {
        CAPTURE(std::string(row.line, row.line + wcslen(row.line)));
        CHECK(show(s.pieces(row.line)) == row.pieces);
    }
    CHECK(FScGetNextSym(&s.fsc) == FSC_EOL);  // and again, at the same column
    CHECK(FScGetColumnNo(&s.fsc) == 14);
}

TEST_CASE("escapes translate in constant text and are cut to 16 bits")
{
    Scanner s;
    const struct {
        const wchar_t* line;
        std::wstring text;
    } rows[] = {
        {L"\\a\\b\\f\\n\\r\\t\\v", L"\a\b\f\n\r\t\v"},
        {L"\\0101\\0\\08\\07777", std::wstring(L"A") + L'\0' + L'\0' + L"8\x1FF" + L"7"},
        {L"\\65\\12345\\9", L"A\x04D2" L"5\x09"},
        {L"\\x41g\\x1F600\\xg", std::wstring(L"Ag\xF600") + L'\0' + L"g"},
        {L"\\&\\^\\/\\\\\\$\\q", L"&^/\\$q"},
    };
    for (const auto& row : rows) {
        auto pieces = s.pieces(row.line);
        REQUIRE(pieces.size() == 2);
        CHECK(pieces[0].first == FSC_CONSTANT);
        CHECK((pieces[0].second == row.text));
    }
    // A backslash at the end stands for itself and reads nothing beyond.
    const wchar_t guarded[] = {L'a', L'\\', 0, L'#', L'#', 0};
    CHECK(show(s.pieces(guarded)) == "-2:a\\ -1: ");
    CHECK(FScGetColumnNo(&s.fsc) == 2);
}

TEST_CASE("with a given length, zero units inside the line are text")
{
    Scanner s;
    CHECK(show(s.pieces(L"ab\0cd", 5)) == "-2:ab -2:?cd -1: ");
    CHECK(FScGetColumnNo(&s.fsc) == 5);
    CHECK(show(s.pieces(L"#\0\0&", 4)) == "-6:# -2:? -2:? -3:& -1: ");
    CHECK(show(s.pieces(L"/\0/", 3)) == "-2:/ -2:? -2:/ -1: ");
    CHECK(show(s.pieces(L"x\\\0", 3)) == "-2:x? -1: ");
    // A length in front of the terminator does not lead the scan past it.
    CHECK(show(s.pieces(L"abc\0##", 1)) == "-2:abc -1: ");
    CHECK(FScGetColumnNo(&s.fsc) == 3);
}

TEST_CASE("random lines split into pieces that cover the line exactly")
{
    const wchar_t alphabet[] = L"#$*+-,./&^\\ ax0719Ff\t";
    const uint32_t letters = sizeof(alphabet) / sizeof(alphabet[0]);  // the zero unit included
    Scanner s;
    uint32_t seed = 20261122;
    auto next = [&seed](uint32_t bound) {
        seed = seed * 1664525u + 1013904223u;
        return (seed >> 8) % bound;
    };
    for (int round = 0; round < 3000; ++round) {
        uint32_t len = next(40);
        std::wstring line;
        for (uint32_t i = 0; i < len; ++i)
            line += alphabet[next(letters)];
        line += std::wstring(1, L'\0') + L"##&";  // would show as pieces if read
        CAPTURE(round);
        FScSetLineLen(&s.fsc, line.c_str(), len);
        uint32_t column = 0;
        int32_t sym;
        while ((sym = FScGetNextSym(&s.fsc)) != FSC_EOL) {
            uint32_t end = FScGetColumnNo(&s.fsc);
            REQUIRE(end > column);
            REQUIRE(end <= len);
            std::wstring read = line.substr(column, end - column);
            std::wstring alpha(FScGetAlpha(&s.fsc), FScGetAlphaLen(&s.fsc));
            if (sym == FSC_CONSTANT)
                CHECK(alpha.size() <= read.size());
            else
                CHECK(alpha == read);
            column = end;
        }
        CHECK(column == len);
        CHECK(FScGetAlphaLen(&s.fsc) == 0);
    }
}

TEST_CASE("descriptions, placeholder codes, allocation and exports")
{
    CHECK(std::wstring(FScGetSymDescription(FSC_INTEGER)) == L"INTEGER placeholder");
    CHECK(std::wstring(FScGetSymDescription(FSC_VARIANT)) == L"VARIANT placeholder ");
    CHECK(std::wstring(FScGetSymDescription(FSC_EOL)) == L"EOL");
    CHECK(FScGetSymDescription(0) == nullptr);
    CHECK(FScGetSymDescription(-8) == nullptr);
    CHECK(FScGetSymDescription(31333) == nullptr);
    for (int32_t sym = -9; sym <= 1; ++sym)
        CHECK(FScIsPlaceholder(sym) == (sym >= -7 && sym <= -3));

    NoLeak leak;
    FScScanner fsc;
    {
        AllAllocationsFail fail;
        CHECK(FScInit(&fsc, 16) == ZOR_E_OUTOFMEMORY);
    }
    FScRelease(&fsc);
    REQUIRE(FScInit(&fsc, 0) == ZOR_S_OK);
    FScSetLine(&fsc, L"");
    CHECK(FScGetNextSym(&fsc) == FSC_EOL);
    CHECK(FScGetAlpha(&fsc)[0] == 0);
    FScRelease(&fsc);

    CHECK(missing_exports({"FScInit", "FScRelease", "FScSetLine", "FScSetLineLen",
                           "FScGetNextSym", "FScGetSym", "FScGetAlpha", "FScGetAlphaLen",
                           "FScGetColumnNo", "FScGetSymDescription", "FScIsPlaceholder"}) == "");
}
