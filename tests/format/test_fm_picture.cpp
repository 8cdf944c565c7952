#include <doctest/doctest.h>

#include <wchar.h>

#include "alloc_check.h"
#include "dll_image.h"
#include "locale_scope.h"
#include "wide_text.h"
#include "zor_fm.h"

constexpr wchar_t kGuard = 0xFDFD;

// FMFormatDouble writes no terminator and nothing behind the reported count.
static std::wstring print(const wchar_t* picture, double value, const wchar_t* format = nullptr)
{
    wchar_t buffer[64];
    wmemset(buffer, kGuard, 64);
    int32_t n = FMFormatDouble(format, picture, int32_t(wcslen(picture)), value, buffer, nullptr);
    REQUIRE(n >= 0);
    REQUIRE(n < 64);
    REQUIRE(std::wstring(buffer + n, size_t(64 - n)) == std::wstring(size_t(64 - n), kGuard));
    return std::wstring(buffer, size_t(n));
}

TEST_CASE("pictures: zero suppression, forced digits, fills, floating and fixed signs")
{
    RuntimeLocale english(L"English_United States.1252");
    const struct { const wchar_t* picture; double value; const wchar_t* expected; } rows[] = {
        {L"#,###.##", 1234.5, L"1,234.5 "}, {L"#,###.##", 0.5, L"    0.5 "}, {L"#,###.##", -0.5, L"   -0.5 "},
        {L"$$$.$$", 1.5, L"001.50"}, {L"***.**", 1.5, L"**1.50"}, {L"$$,$$$", 42, L"00,042"}, {L"+###", 5, L"  +5"},
        {L"***,***.**", 1234.5, L"**1,234.50"}, {L"+###", -5, L"  -5"}, {L"###-", 5, L"  5 "}, {L"###-", -5, L"  5-"},
        {L"<<<.##", 5, L"5.0 "}, {L"###", 12345, L"345"}, {L"###", -5, L" -5"}, {L"#", -5, L"5"}, {L"###", 0, L"  0"},
        {L"$$$", 0, L"000"}, {L"###.##", 0, L"  0.0 "}, {L"###.###", 0.05, L"  0.05 "}, {L"+#,###", 12, L"   +12"},
        {L"-$$$", -7, L"-007"}, {L"-<<<", -42, L"-42"}, {L"###.#", 9.96, L" 10.0"}, {L"##", 99.6, L"00"},
        {L"(###) EUR", 12, L"( 12) EUR"}, {L"<<<", 0, L"0"},
    };
    for (const auto& row : rows)
        CHECK(print(row.picture, row.value) == row.expected);
}

TEST_CASE("the descriptor names the letters; the locale decides how point and separator look")
{
    RuntimeLocale english(L"English_United States.1252");
    CHECK(print(L"$$$,$$&", 1234, LLDblFormat) == L"$$1,234");
    CHECK(print(L"Z'ZZ9:99", 1234.5, L"Z9**:'+-") == L"1,234.50");
    DefaultDblFormat[1] = L'9';
    CHECK(print(L"999", 5.0) == L"005");
    DefaultDblFormat[1] = L'$';
    RuntimeLocale swiss(L"German_Switzerland.1252");  // separator widened through the code page
    CHECK(print(L"#,###.##", 1234.5) == L"1\x2019" L"234.5 ");
    RuntimeLocale initial(L"C");  // no group separator: it vanishes
    CHECK(print(L"***,***.**", 1234.5) == L"**1234.50");
}

TEST_CASE("integer front ends, the complete flag, empty pictures, an exhausted heap, the exported descriptors")
{
    wchar_t out[12];
    CHECK(FMFormatInt(nullptr, L"###########", 11, INT32_MIN, out, nullptr) == 11);
    CHECK(std::wstring(out, 11) == L"-2147483648");
    CHECK(FMFormatUInt(nullptr, L"$$$$$$$$$$", 10, UINT32_MAX, out, nullptr) == 10);
    CHECK(std::wstring(out, 10) == L"4294967295");
    int32_t complete = -1;
    CHECK(FMFormatDouble(nullptr, L"#", 1, 98765.0, out, &complete) == 1);
    CHECK(out[0] == L'5');
    CHECK(complete == 1);
    CHECK(missing_exports({"DefaultDblFormat", "LLDblFormat", "GetDefaultDblFormat", "GetLLDblFormat",
                           "FMFormatDouble", "FMFormatInt", "FMFormatUInt", "FMFormatStr", "FMToDouble",
                           "FMToInt", "FMToLong", "FMToUInt", "FMToULong"}) == "");
    auto defaults = reinterpret_cast<const wchar_t*>(GetProcAddress(zor_load_dll(), "DefaultDblFormat"));
    REQUIRE(defaults);
    CHECK(std::wstring(defaults) == L"#$**.,+-#&*$.,+-");
    CHECK(GetLLDblFormat() == GetDefaultDblFormat() + 8);
    out[0] = out[1] = kGuard;
    for (int32_t length : {0, -3}) {
        CHECK(FMFormatDouble(nullptr, L"###", length, 5.0, out, nullptr) == 0);
        CHECK(out[0] == kGuard);
    }
    NoLeak leak;
    AllAllocationsFail fail;
    CHECK(FMFormatDouble(nullptr, L"###", 3, 5.0, out, &complete) == 0);
    CHECK(complete == 0);
    CHECK(out[0] == 0);
    CHECK(out[1] == kGuard);
}
