#include <doctest/doctest.h>

#include <math.h>

#include "fm_test_support.h"

TEST_CASE("FMToDouble takes digits, the last sign and the last separator from anywhere")
{
    const struct {
        const wchar_t* text;
        double value;
    } rows[] = {
        {L"  1 234,50 EUR", 1234.5}, {L"1,234.50", 1234.5}, {L"1.234,50", 1234.5},
        {L"1,234", 1.234},           {L"1e3", 13},          {L".5", 0.5},
        {L"5.", 5},                  {L"12-", -12},         {L"-5+", 5},
        {L"1-2", -12},               {L"abc", 0},           {L"\x0661\x0662", 0},
        // fraction digits beyond the 19th do not count
        {L"0.12345678901234567890999", 0.1234567890123456789},
        {L"1.00000000000000000000000007", 1},
    };
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.text));
        CHECK(FMToDouble(row.text) == doctest::Approx(row.value).epsilon(1e-15));
    }
    std::wstring longFraction = L"-2." + std::wstring(400, L'3');
    CHECK(FMToDouble(longFraction.c_str()) == doctest::Approx(-2.3333333333333333));
    CHECK((FMToDouble(nullptr) == 0.0 && signbit(FMToDouble(L"-"))));
}

TEST_CASE("the integer readers wrap, and only the signed ones see signs")
{
    CHECK((FMToInt(L"2147483648") == INT32_MIN && FMToInt(L"-2147483648") == INT32_MIN));
    CHECK((FMToInt(L"12-") == -12 && FMToInt(L"1.5") == 15 && FMToInt(nullptr) == 0));
    CHECK(FMToLong(L" -1,234 kg") == -1234);
    CHECK((FMToUInt(L"4294967295") == UINT32_MAX && FMToUInt(L"4294967296") == 0u));
    CHECK((FMToULong(L"-1") == 1u && FMToULong(L"") == 0u));
}
