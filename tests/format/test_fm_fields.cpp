#include <doctest/doctest.h>

#include <math.h>
#include <wchar.h>

#include "locale_scope.h"
#include "wide_text.h"
#include "zor_fm.h"
#include "zor_fsc.h"
#include "zor_ts.h"

TEST_CASE("FMFormatStr: the first unit of the picture chooses the kind of field")
{
    RuntimeLocale english(L"English_United States.1252");
    const struct { const wchar_t* picture; int32_t length; const wchar_t* text; std::wstring expected; } rows[] = {
        {L"##,###.##", 9, L"EUR 1.234,5-", L"-1,234.5 "}, {L"*,***", 5, L"12", L"*,*12"}, {L".##", 3, L"0.25", L".25"},
        {L"-##", 3, L"-5", L" -5"}, {L"&", 1, L"xyz", L"x"}, {L"&", 1, L"", std::wstring(1, L'\0')},
        {L"/       /", 9, L"abc", L"abc      "}, {L"/       /", 9, L"abcdefghijkl", L"abcdefghi"},
        {L"^", 1, L"the whole text", L"the whole text"}, {L"^", 1, nullptr, L""}, {L"<<<", 3, L"123", L""},
        {L"/  /", 0, L"abc", L""}, {L"^", -1, L"abc", L""},
    };
    for (const auto& row : rows) {
        std::wstring buffer(64, wchar_t(0xFDFD));
        int32_t n = FMFormatStr(row.picture, row.length, row.text, &buffer[0]);
        REQUIRE(n >= 0);
        REQUIRE(n < 63);
        CHECK(buffer.substr(0, size_t(n)) == row.expected);
        CHECK(buffer[n] == 0);
        CHECK(buffer[n + 1] == 0xFDFD);
    }
}

// A hostile field: the text reads as 51456 with a fraction of zeros, and the
// picture mixes every letter. Zero-suppressing digits in the fraction show a
// digit only up to the last significant one, so those behind the first
// fraction digit stay blank even where a forced digit or fill next to them
// prints 0; the last floating minus takes the plus, and the empty group
// separator of the initial locale writes nothing.
TEST_CASE("FMFormatStr: a mixed picture over a long hostile text")
{
    std::wstring text;
    for (int i = 0; text.size() < 160; ++i)
        text += i % 3 ? L"\x00A0-" : L"\x1ABC+";
    text += L"51456,0000+";
    REQUIRE(text.size() == 171);
    wchar_t out[22];
    wmemset(out, 0xFDFD, 22);
    const int32_t n = FMFormatStr(L"##$<#.-*+$+#*,#,$-+-#", 21, text.c_str(), out);
    CHECK(std::wstring(out, size_t(n)) == L"51456. 0 0  0 000+ ");
    CHECK(n == 19);
    CHECK(out[19] == 0);
    CHECK(out[20] == 0xFDFD);
}

TEST_CASE("the readers take digits, the last sign and the last separator from anywhere")
{
    const std::wstring longFraction = L"-2." + std::wstring(400, L'3');
    const std::pair<const wchar_t*, double> doubles[] = {
        {L"  1 234,50 EUR", 1234.5}, {L"1.234,50", 1234.5}, {L"1,234", 1.234}, {L"1e3", 13}, {L".5", 0.5},
        {L"12-", -12}, {L"-5+", 5}, {L"1-2", -12}, {L"\x0661\x0662", 0},
        {L"0.12345678901234567890999", 0.1234567890123456789},  // 19 decimals at most
        {longFraction.c_str(), -2.3333333333333333},
    };
    for (const auto& row : doubles)
        CHECK(FMToDouble(row.first) == doctest::Approx(row.second).epsilon(1e-15));
    CHECK(FMToDouble(nullptr) == 0.0);
    CHECK(signbit(FMToDouble(L"-")));
    CHECK(FMToInt(nullptr) == 0);
    CHECK(FMToULong(L"") == 0u);
    CHECK(FMToInt(L"2147483648") == INT32_MIN);
    CHECK(FMToInt(L"12-") == -12);
    CHECK(FMToInt(L"-1.5+") == 15);
    CHECK(FMToLong(L" -1,234 kg") == -1234);
    CHECK(FMToUInt(L"4294967296") == 0u);
    CHECK(FMToULong(L"-1") == 1u);
}

TEST_CASE("a print mask is filled column-true in two locales")
{
    const wchar_t* mask = L"No. $$$$ & /          / qty ### at #,###.## = ##,###.##- \\^^";
    const double numbers[] = {42, 7, 1234.5, -8641.5};
    const wchar_t* const texts[] = {L"B-grade", L"Widget", L"note"};
    // As an application fills it: numbers through FMFormatDouble, texts through FMFormatStr.
    auto print_mask = [&] {
        FScScanner fsc;
        REQUIRE(FScInit(&fsc, 128) == 0);
        FScSetLine(&fsc, mask);
        wchar_t line[256];
        int32_t len = 0, number = 0, text = 0;
        for (int32_t sym; (sym = FScGetNextSym(&fsc)) != FSC_EOL;) {
            const wchar_t* piece = FScGetAlpha(&fsc);
            int32_t n = int32_t(FScGetAlphaLen(&fsc));
            if (sym == FSC_INTEGER || sym == FSC_DOUBLE)
                len += FMFormatDouble(nullptr, piece, n, numbers[number++], line + len, nullptr);
            else
                len += FScIsPlaceholder(sym) ? FMFormatStr(piece, n, texts[text++], line + len)
                                             : int32_t(wcslen(wcscpy(line + len, piece)));
        }
        FScRelease(&fsc);
        return std::wstring(line, size_t(len));
    };
    RuntimeLocale initial(L"C");  // put back after the application's own choices
    REQUIRE(TSSetLocale(LC_ALL, L"English_United States.1252"));
    CHECK(print_mask() == L"No. 0042 B Widget       qty   7 at 1,234.5  =  8,641.5 - ^note");
    REQUIRE(TSSetLocale(LC_ALL, L"German_Germany.1252"));
    CHECK(print_mask() == L"No. 0042 B Widget       qty   7 at 1.234,5  =  8.641,5 - ^note");
}
