#include <doctest/doctest.h>

#include <math.h>

#include "dll_image.h"
#include "fm_test_support.h"
#include "zor_fsc.h"
#include "zor_ts.h"

TEST_CASE("FMFormatStr: the first unit of the picture chooses the kind of field")
{
    RuntimeLocale english(kEnglishLocale);
    const struct {
        const wchar_t* picture;
        int32_t length;
        const wchar_t* text;
        std::wstring expected;
    } rows[] = {
        {L"##,###.##", 9, L"EUR 1.234,5-", L"-1,234.5 "}, {L"*,***", 5, L"12", L"*,*12"},
        {L".##", 3, L"0.25", L".25"},                     {L"-##", 3, L"-5", L" -5"},
        {L"&", 1, L"xyz", L"x"},                          {L"&", 1, L"", std::wstring(1, L'\0')},
        {L"/       /", 9, L"abc", L"abc      "},         {L"/       /", 9, L"abcdefghijkl", L"abcdefghi"},
        {L"^", 1, L"the whole text", L"the whole text"},  {L"^", 1, nullptr, L""},
        {L"<<<", 3, L"123", L""},  {L"/  /", 0, L"abc", L""},  {L"^", -1, L"abc", L""},
    };
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.picture));
        wchar_t buffer[64];
        wmemset(buffer, kGuard, 64);
        int32_t n = FMFormatStr(row.picture, row.length, row.text, buffer);
        REQUIRE((n >= 0 && n < 63));
        CHECK((std::wstring(buffer, size_t(n)) == row.expected && buffer[n] == 0 && buffer[n + 1] == kGuard));
    }
}

TEST_CASE("the readers take digits, the last sign and the last separator from anywhere")
{
    const std::pair<const wchar_t*, double> doubles[] = {
        {L"  1 234,50 EUR", 1234.5}, {L"1.234,50", 1234.5}, {L"1,234", 1.234}, {L"1e3", 13},
        {L".5", 0.5}, {L"12-", -12}, {L"-5+", 5}, {L"1-2", -12}, {L"\x0661\x0662", 0},
        {L"0.12345678901234567890999", 0.1234567890123456789},  // 19 decimals at most
    };
    for (const auto& row : doubles)
        CHECK(FMToDouble(row.first) == doctest::Approx(row.second).epsilon(1e-15));
    std::wstring longFraction = L"-2." + std::wstring(400, L'3');
    CHECK(FMToDouble(longFraction.c_str()) == doctest::Approx(-2.3333333333333333));
    CHECK((FMToDouble(nullptr) == 0.0 && signbit(FMToDouble(L"-"))));

    CHECK((FMToInt(L"2147483648") == INT32_MIN && FMToInt(L"12-") == -12 && FMToInt(L"1.5") == 15));
    CHECK((FMToLong(L" -1,234 kg") == -1234 && FMToInt(nullptr) == 0));
    CHECK((FMToUInt(L"4294967296") == 0u && FMToULong(L"-1") == 1u && FMToULong(L"") == 0u));
}

TEST_CASE("the descriptors are exported one behind the other and are writable")
{
    CHECK(missing_exports({"DefaultDblFormat", "LLDblFormat", "GetDefaultDblFormat", "GetLLDblFormat",
                           "FMFormatDouble", "FMFormatInt", "FMFormatUInt", "FMFormatStr", "FMToDouble",
                           "FMToInt", "FMToLong", "FMToUInt", "FMToULong"}) == "");
    auto defaults = reinterpret_cast<const wchar_t*>(GetProcAddress(zor_load_dll(), "DefaultDblFormat"));
    REQUIRE(defaults);
    CHECK((std::wstring(defaults) == L"#$**.,+-#&*$.,+-" && GetLLDblFormat() == GetDefaultDblFormat() + 8));
    DefaultDblFormat[1] = L'9';
    std::wstring printed = print(L"999", 5.0);
    DefaultDblFormat[1] = L'$';
    CHECK(printed == L"005");
}

namespace {
// Fills a mask the way an application does: the scanner cuts it, numbers
// go through FMFormatDouble and texts through FMFormatStr, in mask order.
std::wstring print_mask(const wchar_t* mask, const double* numbers, const wchar_t* const* texts)
{
    FScScanner fsc;
    REQUIRE(FScInit(&fsc, 128) == 0);
    FScSetLine(&fsc, mask);
    wchar_t line[256];
    int32_t len = 0;
    for (int32_t sym; (sym = FScGetNextSym(&fsc)) != FSC_EOL;) {
        const wchar_t* piece = FScGetAlpha(&fsc);
        int32_t n = int32_t(FScGetAlphaLen(&fsc));
        if (sym == FSC_INTEGER || sym == FSC_DOUBLE)
            len += FMFormatDouble(nullptr, piece, n, *numbers++, line + len, nullptr);
        else if (FScIsPlaceholder(sym))
            len += FMFormatStr(piece, n, *texts++, line + len);
        else
            len += int32_t(wcslen(wcscpy(line + len, piece)));
    }
    FScRelease(&fsc);
    return std::wstring(line, size_t(len));
}
}

TEST_CASE("a print mask is filled column-true in two locales")
{
    const wchar_t* mask = L"No. $$$$ & /          / qty ### at #,###.## = ##,###.##- \\^^";
    const double numbers[] = {42, 7, 1234.5, -8641.5};
    const wchar_t* const texts[] = {L"B-grade", L"Widget", L"note"};
    RuntimeLocale initial(L"C");  // put back after the application's own choices
    REQUIRE(TSSetLocale(LC_ALL, kEnglishLocale));
    CHECK(print_mask(mask, numbers, texts) == L"No. 0042 B Widget       qty   7 at 1,234.5  =  8,641.5 - ^note");
    REQUIRE(TSSetLocale(LC_ALL, kGermanLocale));
    CHECK(print_mask(mask, numbers, texts) == L"No. 0042 B Widget       qty   7 at 1.234,5  =  8.641,5 - ^note");
}
