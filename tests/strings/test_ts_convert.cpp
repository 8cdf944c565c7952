#include <doctest/doctest.h>

#include <locale.h>
#include <windows.h>

#include "dll_image.h"
#include "locale_scope.h"
#include "ts_local.h"

TEST_CASE("numbers convert at the limits of their types and follow the runtime locale")
{
    Local s, word(L"\x00E4x");
    CHECK(TSFromInt(&s, INT32_MIN)->data == std::wstring(L"-2147483648"));
    CHECK(TSFromLong(&s, INT32_MAX)->data == std::wstring(L"2147483647"));
    CHECK(TSFromULong(&s, 4294967295u)->data == std::wstring(L"4294967295"));
    CHECK(TSFromDoubleFmt(&s, 1.0, -3)->data == std::wstring(L"1.000000"));
    CHECK(TSFromDoubleFmt(&s, 0.125, 2)->data == std::wstring(L"0.12"));
    CHECK(TSGetLen(TSFromDouble(&s, -1.7976931348623157e308)) == 317);
    CHECK(TSGetLen(TSFromDoubleFmt(&s, 1.0, 600)) == 512);
    const std::pair<const wchar_t*, double> reads[] = {
        {L"3.5abc", 3.5}, {L"", 0.0}, {L" \t-2e3x", -2000.0}, {L"1,5", 1.0}};
    for (const auto& read : reads)
        CHECK(TSVal(TSSetStr(&s, read.first)) == read.second);

    const std::wstring previous = TSSetLocale(LC_ALL, nullptr);
    REQUIRE(TSSetLocale(LC_ALL, L"German_Germany.1252") != nullptr);
    CHECK(TSVal(TSSetStr(&s, L"3,25")) == 3.25);
    CHECK(TSFromDoubleFmt(&s, 1.5, 2)->data == std::wstring(L"1,50"));
    CHECK(TSUpper(&word)->data == std::wstring(L"\x00C4X"));
    CHECK(TSLower(&word)->data == std::wstring(L"\x00E4x"));
    CHECK(TSSetLocale(LC_ALL, L"no such locale") == nullptr);
    TSSetLocale(LC_ALL, previous.c_str());
    CHECK(TSFromDouble(&s, 1.5)->data == std::wstring(L"1.500000"));
}

TEST_CASE("TSFromDate follows the user's short date pattern")
{
    TDDate date = {2026, 3, 0, 7, 13, 45, 0, 0};
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"dd.MM.yyyy", L"07.03.2026"},
        {L"yyyy/M/d", L"2026/3/7"},
        {L"dddd dddd dddd dddd dddd dddd dddd dddd dddd dddd dddd dddd", L""}};  // 107 units
    for (const auto& row : rows) {
        LocaleSetting pattern(LOCALE_SSHORTDATE, row.first);
        Local s(L"old");
        CHECK((TSFromDate(&s, &date) == &s && s.text() == row.second));
    }
}

TEST_CASE("the DLL exports every TS function")
{
    CHECK(missing_exports({"TSNew", "TSClear", "TSInit", "TSFree", "TSClone", "TSCloneN", "TSEmpty",
                           "TSGetLen", "TSGetStr", "TSGetChar", "TSCmp", "TSCopy", "TSSetStr",
                           "TSSetStrN", "TSSetLen", "TSFromCh", "TSCStr", "TSStr", "TSAdd",
                           "TSAddStr", "TSAddStrN", "TSLeft", "TSRight", "TSMid", "TSSubStr",
                           "TSLTrim", "TSRTrim", "TSATrim", "TSUpper", "TSLower", "TSInvert",
                           "TSRep", "TSChrSubst", "TSStrSubst", "TSStrPos", "TSStrRPos", "TSVal",
                           "TSFromInt", "TSFromLong", "TSFromULong", "TSFromDouble",
                           "TSFromDoubleFmt", "TSFromDate", "TSSetLocale"}) == "");
}
