#include <doctest/doctest.h>

#include "alloc_check.h"
#include "fm_test_support.h"

TEST_CASE("pictures: zero suppression, forced digits, fills, floating and fixed signs")
{
    RuntimeLocale english(kEnglishLocale);
    const struct {
        const wchar_t* picture;
        double value;
        const wchar_t* expected;
    } rows[] = {
        {L"#,###.##", 1234.5, L"1,234.5 "}, {L"#,###.##", 0.5, L"    0.5 "}, {L"#,###.##", -0.5, L"   -0.5 "},
        {L"$$$.$$", 1.5, L"001.50"},       {L"***.**", 1.5, L"**1.50"},    {L"$$,$$$", 42, L"00,042"},
        {L"***,***.**", 1234.5, L"**1,234.50"}, {L"+###", 5, L"  +5"},    {L"+###", -5, L"  -5"},
        {L"###-", 5, L"  5 "},             {L"###-", -5, L"  5-"},         {L"<<<.##", 5, L"5.0 "},
        {L"###", 12345, L"345"},           {L"###", -5, L" -5"},           {L"#", -5, L"5"},
        {L"###", 0, L"  0"},               {L"$$$", 0, L"000"},            {L"###.##", 0, L"  0.0 "},
        {L"###.###", 0.05, L"  0.05 "},    {L"+#,###", 12, L"   +12"},     {L"-$$$", -7, L"-007"},
        {L"-<<<", -42, L"-42"},            {L"###.#", 9.96, L" 10.0"},     {L"##", 99.6, L"00"},
        {L"(###) EUR", 12, L"( 12) EUR"},  {L"<<<", 0, L"0"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.value);
        CAPTURE(std::wstring(row.picture));
        CHECK(print(row.picture, row.value) == row.expected);
    }
    wchar_t untouched[1] = {kGuard};
    for (int32_t length : {0, -3})
        CHECK((FMFormatDouble(nullptr, L"###", length, 5.0, untouched, nullptr) == 0 && untouched[0] == kGuard));
}

TEST_CASE("the descriptor names the letters; the locale decides how point and separator look")
{
    RuntimeLocale english(kEnglishLocale);
    CHECK(print(L"$$$,$$&", 1234, LLDblFormat) == L"$$1,234");
    const wchar_t own[8] = {L'Z', L'9', L'*', L'*', L':', L'\'', L'+', L'-'};
    CHECK(print(L"Z'ZZ9:99", 1234.5, own) == L"1,234.50");
    RuntimeLocale swiss(L"German_Switzerland.1252");  // separator widened through the code page
    CHECK(print(L"#,###.##", 1234.5) == L"1\x2019" L"234.5 ");
    RuntimeLocale initial(L"C");  // no group separator: it vanishes
    CHECK(print(L"***,***.**", 1234.5) == L"**1234.50");
}

TEST_CASE("integer front ends, the complete flag and an exhausted heap")
{
    wchar_t out[12];
    CHECK((FMFormatInt(nullptr, L"###########", 11, INT32_MIN, out, nullptr) == 11 &&
           std::wstring(out, 11) == L"-2147483648"));
    CHECK((FMFormatUInt(nullptr, L"$$$$$$$$$$", 10, UINT32_MAX, out, nullptr) == 10 &&
           std::wstring(out, 10) == L"4294967295"));
    int32_t complete = -1;
    CHECK((print(L"#", 98765.0, nullptr, &complete) == L"5" && complete == 1));

    NoLeak leak;
    AllAllocationsFail fail;
    out[1] = kGuard;
    CHECK((FMFormatDouble(nullptr, L"###", 3, 5.0, out, &complete) == 0 && complete == 0));
    CHECK((out[0] == 0 && out[1] == kGuard));
}
