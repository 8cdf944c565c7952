#include <doctest/doctest.h>

#include <string.h>
#include <wctype.h>

#include "alloc_check.h"
#include "dll_image.h"
#include "locale_scope.h"
#include "zor_td.h"

namespace {

TDDate make(uint16_t y, uint16_t mo, uint16_t d, uint16_t h = 0, uint16_t mi = 0, uint16_t s = 0,
            uint16_t ms = 0) { return TDDate{y, mo, 0, d, h, mi, s, ms}; }

// An independent calendar: days since 1 March of year 0, proleptic Gregorian.
long day_number(long y, long m, long d)
{
    if (m <= 2) y -= 1, m += 12;
    return 365 * y + y / 4 - y / 100 + y / 400 + (153 * (m - 3) + 2) / 5 + d - 1;
}
long day_number(const TDDate& d) { return day_number(d.year, d.month, d.day); }

// The inverse by search, so that it shares no formula with day_number.
TDDate date_of(long n)
{
    long y = n / 366, m = 1;
    while (day_number(y + 1, 1, 1) <= n) ++y;
    while (m < 12 && day_number(y, m + 1, 1) <= n) ++m;
    return make(uint16_t(y), uint16_t(m), uint16_t(n - day_number(y, m, 1) + 1));
}
// 0 Sunday to 6 Saturday; 1 March of year 0 was a Wednesday.
int weekday(long n) { return int((n + 3) % 7); }
long long total_ms(const TDDate& d)
{
    long long seconds = ((day_number(d) * 24LL + d.hour) * 60 + d.minute) * 60 + d.second;
    return seconds * 1000 + d.milliSeconds;
}

// A fixed seed, so that every run checks the same dates; from 1601 on, where
// the platform's calendar starts.
struct Random {
    uint32_t state;
    uint32_t operator()(uint32_t n) { return ((state = state * 1664525u + 1013904223u) >> 8) % n; }
    TDDate date(uint32_t days)
    {
        TDDate d = date_of(day_number(1601, 1, 1) + long((*this)(days)));
        return make(d.year, d.month, d.day, (*this)(24), (*this)(60), (*this)(60));
    }
};

// op 1 adds, -1 subtracts; 0 and 2 set the fields of `i` as a time or as an interval.
TDDate apply(int op, TDDate d, const TDDate& i)
{
    if (op % 2 == 0)
        return *(op ? TDSetInterval : TDSetTime)(&d, i.year, i.month, i.day, i.hour, i.minute,
                                                 i.second, i.milliSeconds);
    return *(op > 0 ? TDAdd(&d, &i) : TDSubst(&d, &i));
}

// Monday of week 1 by the first-week rule: the week that holds 1 January
// ("0"), 7 January ("1", the first full week) or 4 January ("2", ISO 8601).
long week_one(long year, wchar_t rule)
{
    long anchor = day_number(year, 1, rule == L'0' ? 1 : rule == L'1' ? 7 : 4);
    return anchor - (weekday(anchor) + 6) % 7;
}

const TDDate kMarker = {0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA};
const TDDate kFailed = make(1, 1, 1, 1, 1, 1, 1);  // stands for "no result" in the tables
bool same(const TDDate& a, const TDDate& b) { return memcmp(&a, &b, sizeof a) == 0; }

// The record read, or kFailed after checking that a failure left it alone.
TDDate read(const wchar_t* text, const wchar_t* picture)
{
    TDDate date = kMarker, *result = TDFromString(text, picture, &date);
    CHECK((result == &date || (result == nullptr && same(date, kMarker))));
    return result ? date : kFailed;
}

// The text copied to end just before a page the process may not read, so
// that a reader going past the terminator faults at once.
const wchar_t* fenced(const std::wstring& text)
{
    static char* const fence =
        static_cast<char*>(VirtualAlloc(nullptr, 8192, MEM_COMMIT, PAGE_READWRITE)) + 4096;
    DWORD old;
    REQUIRE(VirtualProtect(fence, 4096, PAGE_NOACCESS, &old));
    size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    return static_cast<const wchar_t*>(memcpy(fence - bytes, text.c_str(), bytes));
}

}

TEST_CASE("intervals and weekdays agree with a day count and a month index for random dates")
{
    Random r{20121231};
    for (int i = 0; i < 5000; ++i) {
        TDDate start = r.date(10500000), shift = make(r(30), r(40), 0);
        TDDate span = make(0, 0, r(3000), r(100), r(200), r(200), r(5000));
        INFO(start.year, "-", start.month, "-", start.day, " and ", span.day, " days");
        TDDate weekdayOf = start, kept = start;
        kept.dayOfWeek = uint16_t(weekday(day_number(start)));
        weekdayOf.dayOfWeek = 6;  // rewritten by the platform with the rest kept
        CHECK(TDGetDayOfWeek(&weekdayOf) == kept.dayOfWeek);
        CHECK(same(weekdayOf, kept));
        for (int sign : {1, -1}) {
            TDDate d = apply(sign, start, span);
            CHECK(total_ms(d) - total_ms(start) == sign * (total_ms(span) - total_ms({})));
            CHECK(d.day >= 1);
            CHECK(d.hour < 24);
            CHECK(d.minute < 60);
            CHECK(d.second < 60);
            CHECK(d.milliSeconds < 1000);
            long index = start.year * 12 + start.month - 1 + sign * (shift.year * 12 + shift.month);
            long days = day_number((index + 1) / 12, (index + 1) % 12 + 1, 1) -
                        day_number(index / 12, index % 12 + 1, 1);
            TDDate expected = make(index / 12, index % 12 + 1, start.day < days ? start.day : days,
                                   start.hour, start.minute, start.second, start.milliSeconds);
            CHECK(same(apply(sign, start, shift), expected));
        }
    }
}

TEST_CASE("days before months, the clip, normalising and the 16-bit wrap")
{
    struct Row { TDDate start, interval; int op; TDDate expected; };
    const Row rows[] = {
        {make(2013, 1, 31), make(0, 1, 1), 1, make(2013, 3, 1)},
        {make(0, 0, 0), make(0, 0, 5), 1, make(0, 1, 5)},
        {make(2000, 40, 1), make(0, 0, 1), 1, make(2001, 1, 2)},
        {make(65535, 12, 31), make(0, 0, 1), 1, make(0, 1, 1)},
        {make(0, 1, 1), make(0, 0, 1), -1, make(65535, 12, 31)},
        {make(2000, 1, 1), make(0, 0, 0, 0, 0, 0, 65535), 1, make(2000, 1, 1, 0, 1, 5, 535)},
        {make(2000, 1, 1, 0, 0, 0, 1), make(0, 0, 0, 0, 0, 0, 65535), 1, make(2000, 1, 1)},
        {{}, make(2013, 5, 6, 10, 20, 75), 0, make(2013, 5, 6, 10, 21, 15)},
        {{}, make(2013, 5, 6, 24), 0, make(2013, 5, 7)},
        {{}, make(2013, 2, 29), 0, make(2013, 3, 1)},
        {{}, make(2012, 13, 5), 0, make(2013, 1, 5)},
        {kMarker, make(0, 0, 0, 0, 90), 2, make(0, 0, 0, 0, 90)},
    };
    for (const Row& row : rows)
        CHECK(same(apply(row.op, row.start, row.interval), row.expected));
    CHECK(apply(-1, make(2000, 0, 1), make(0, 0, 1)).year == 2000);  // a nonsense month ends
}

TEST_CASE("refused weekdays, days of the year and the locale's first-week rule")
{
    for (TDDate bad : {make(1600, 12, 31), make(60000, 1, 1), make(2012, 0, 1), make(2012, 13, 1),
                       make(2012, 2, 30), make(2012, 1, 0), make(2012, 5, 5, 25)}) {
        TDDate refused = bad;
        refused.dayOfWeek = bad.dayOfWeek = 4;
        CHECK(TDGetDayOfWeek(&refused) == 0);
        CHECK(same(refused, bad));
    }
    TDDate noMonth = make(2012, 0, 17), last = make(2012, 12, 31), noDay = make(2012, 0, 0);
    CHECK(TDGetDayOfYear(&noMonth) == 17);
    CHECK(TDGetDayOfYear(&last) == 366);
    CHECK(TDGetWeekOfYear(&noDay) == 0);
    LocaleSetting sundayFirst(LOCALE_IFIRSTDAYOFWEEK, L"6");  // weeks start on Monday regardless
    for (const wchar_t* rule : {L"0", L"1", L"2"}) {
        LocaleSetting setting(LOCALE_IFIRSTWEEKOFYEAR, rule);
        for (long n = day_number(1999, 1, 1); n <= day_number(2030, 12, 31); ++n) {
            TDDate date = date_of(n);
            long year = n < week_one(date.year, *rule) ? date.year - 1 : date.year;
            long week = (n - week_one(year, *rule)) / 7 + 1;
            week = n >= week_one(date.year + 1, *rule) ? 1 : week;
            INFO("rule ", char(*rule), ": ", date.year, "-", date.month, "-", date.day);
            CHECK(TDGetWeekOfYear(&date) == week);
        }
    }
}

// Plain fields of every size and full names are left to the round trip below.
TEST_CASE("reading by a picture: limits, literals, repetitions, the clock, names, hostile text")
{
    const wchar_t* refused[][2] = {
        {L"31-12-2012", L"dd.MM.yyyy"}, {L"30.02.2012", L"dd.MM.yyyy"}, {L"", L"d"}, {L"32", L"d"},
        {L"0", L"d"}, {L"13", L"M"}, {L"0", L"MM"}, {L"24", L"H"}, {L"12", L"h"}, {L"60", L"m"},
        {L"60", L"s"}, {L"7", L"'d'"}, {L"AD 2012", L"gg yyyy"}, {L"31", L"dd."}, {L"4", L"htt"},
        {L"12:00 PM", L"HH:mm tt"}, {L"4 P", L"h tt"}, {L"4 X", L"h t"}, {L"Nomonth", L"MMMM"}};
    for (const auto& row : refused)
        CHECK(same(read(row[0], row[1]), kFailed));
    struct Row { const wchar_t *text, *picture; TDDate expected; };
    const Row rows[] = {
        {L"31.02", L"dd.MM", make(0, 2, 31)},     {L"at 7:05", L"H:mm", make(0, 0, 0, 7, 5)},
        {L"123", L"dd", make(0, 0, 12)},          {L"\u0661\uFF12", L"dd", make(0, 0, 12)},
        {L"5", L"y", make(2005, 0, 0)},           {L"123456", L"yyyy", make(1234, 0, 0)},
        {L"", L"yy", make(2000, 0, 0)},           {L"5/", L"d/d", make(0, 0, 5)},
        {L"05:", L"hh:HH", make(0, 0, 0, 5)},     {L"2012", L"yyyyyy", make(2012, 0, 0)},
        {L"3.", L"dd.dddd", make(0, 0, 3)},       {L"'7'", L"'d'", make(0, 0, 7)},
        {L" 2012", L"gg yyyy", make(2012, 0, 0)}, {L"3 p", L"h t", make(0, 0, 0, 15)},
        {L"4", L"ht", make(0, 0, 0, 4)},          {L"11:00 PM", L"HH:mm tt", make(0, 0, 0, 23)},
        {L"4 pm.", L"h tt.", make(0, 0, 0, 16)},  {L"Noday 5", L"dddd d", make(0, 0, 0)},
    };
    for (const Row& row : rows) {
        CAPTURE(row.picture);
        CHECK(same(read(row.text, row.picture), row.expected));
    }
    LocaleSetting shortDate(LOCALE_SSHORTDATE, L"yyyy/MM/dd");
    CHECK(same(read(L"2012/12/31", nullptr), make(2012, 12, 31)));
    for (int i = 0; i < 12; ++i) {
        std::wstring abbreviated = locale_text(LOCALE_SABBREVMONTHNAME1 + LCTYPE(i));
        CHECK(read(abbreviated.c_str(), L"MMM").month == (abbreviated.size() == 3 ? i + 1 : 1));
    }
    // Hostile text never leads the reader past its end.
    auto run = [](size_t n) { return std::wstring(n, L'z') + L"9 " + std::wstring(n, L'7'); };
    const std::wstring texts[] = {L"Monday January 2012", L"31.12.2012 23:59:59 PM", run(40),
                                  run(41), run(100)};
    for (const wchar_t* picture :
         {L"dddd MMMM yyyy", L"MMMM dddd", L"ddd MMM", L"dd.MM.yyyy HH:mm:ss tt", L"h:mm t"}) {
        for (const std::wstring& whole : texts)
            for (size_t cut = 0; cut <= whole.size(); ++cut)
                read(fenced(whole.substr(0, cut)), picture);
    }
    // A run longer than a name is cut at 39 units; its rest stays in the text.
    std::wstring january = locale_text(LOCALE_SMONTHNAME1) + std::wstring(40, L'q');
    CHECK(same(read(january.c_str(), L"MMMM"), kFailed));
    CHECK(same(read((std::wstring(40, L'b') + L"7").c_str(), L"ddddbH"), make(0, 0, 0, 7)));
}

TEST_CASE("writing measures first, reports a short buffer and joins the parts")
{
    const TDDate date = make(2012, 12, 31, 13, 5, 7), early = make(1500, 1, 1),
                 hour25 = make(2012, 1, 1, 25);
    wchar_t buffer[64];
    int32_t length = 64;
    auto text = [&](const TDDate* d, const wchar_t* datePicture, const wchar_t* timePicture,
                    int32_t given = 64) {
        wchar_t* result = TDToString(d, datePicture, timePicture, buffer, &(length = given));
        return std::wstring(result == buffer ? buffer : L"(null)");
    };
    std::wstring both = text(&date, nullptr, nullptr);
    CHECK(both.find(L"2012") < both.find(L":05"));
    CHECK(both.find(L":05") != both.npos);
    CHECK(text(&date, nullptr, L"HH:mm:ss") == L"13:05:07");
    CHECK(length == 64);
    wmemset(buffer, L'#', 64);
    CHECK(text(&date, L"dd.MM.yyyy", L" HH", 0) == L"(null)");
    CHECK(length == 14);
    CHECK(*buffer == L'#');
    CHECK(text(&date, L"dd.MM.yyyy", L" HH", 13) == L"(null)");
    CHECK(length == 14);
    CHECK(*buffer == 0);
    CHECK(text(&date, L"dd.MM.yyyy", L" HH") == L"31.12.2012 13");
    CHECK(TDToString(&date, L"yyyy", nullptr, nullptr, &(length = 64)) == nullptr);
    CHECK(length == 5);
    CHECK(TDToString(&date, L"yyyy", nullptr, buffer, nullptr) == nullptr);
    // Each part looks only at its own fields; a part the platform refuses is left out.
    CHECK(text(&early, L"yyyy", nullptr, 0) == L"(null)");
    CHECK(length == 1);
    CHECK(text(&early, L"yyyy", nullptr).empty());
    CHECK(text(&hour25, L"yyyy", L"HH") == L"2012");
    CHECK(_wtoi(text(nullptr, L"yyyy", nullptr).c_str()) == TDGetYears(nullptr));
}

TEST_CASE("text written by a picture reads back to the same date, in any case")
{
    const wchar_t* pictures[2][2] = {{L"dd.MM.yyyy ", L"HH:mm:ss"},
                                     {L"dddd, MMMM yyyy, ", L"hh:mm:ss tt"}};
    Random r{47689};
    for (int i = 0; i < 1000; ++i) {
        TDDate date = r.date(3000000);  // four-digit years
        wchar_t text[100];
        int32_t length = 100;
        REQUIRE(TDToString(&date, pictures[i % 2][0], pictures[i % 2][1], text, &length) == text);
        if (i % 2) {  // a day name and a day number cannot share a picture
            for (wchar_t* unit = text; *unit; ++unit)
                *unit = wchar_t(i % 4 == 1 ? towupper(*unit) : towlower(*unit));
            date.dayOfWeek = uint16_t(weekday(day_number(date)));
            date.day = 0;
        }
        CAPTURE(std::string(text, text + wcslen(text)));
        // The 12-hour clock writes 12 for midnight and noon, which reading refuses.
        CHECK(same(read(text, (std::wstring(pictures[i % 2][0]) + pictures[i % 2][1]).c_str()),
                   i % 2 && date.hour % 12 == 0 ? kFailed : date));
    }
}

TEST_CASE("ordering, leap years, heap objects, the current time and the exports")
{
    TDDate a = make(2012, 6, 15, 10), low = make(2012, 1, 1), b = {2012, 6, 3, 15, 10, 0, 0, 0};
    CHECK(TDCmp(&a, &b) == 0);
    CHECK(TDInRange(&low, &low, &low));
    CHECK(!TDInRange(&low, &low, &a));
    for (const TDDate& c : {make(2013, 1, 1), make(2012, 7, 1), make(2012, 6, 16),
                            make(2012, 6, 15, 11), make(2012, 6, 15, 10, 1),
                            make(2012, 6, 15, 10, 0, 1), make(2012, 6, 15, 10, 0, 0, 1)}) {
        CHECK(TDCmp(&a, &c) == -1);
        CHECK(TDCmp(&c, &a) == 1);
        CHECK(TDInRange(&c, &low, &a));
        CHECK(TDInRange(&a, &c, &c));
        CHECK(!TDInRange(&low, &a, &c));
    }
    CHECK(IsLeapYear(2000));
    CHECK(IsLeapYear(2012));
    CHECK(!IsLeapYear(1900));
    CHECK(!IsLeapYear(2013));
    NoLeak leak;
    TDDate *date = TDNew(), now;
    REQUIRE(date);
    CHECK(same(*date, make(0, 0, 0)));
    TDFree(date);
    AllAllocationsFail failing;
    CHECK(TDNew() == nullptr);
    CHECK(TDGetActTime(&now)->year >= 2020);
    CHECK(now.month - 1u < 12);
    CHECK(now.dayOfWeek <= 6);
    CHECK(TDGetYears(nullptr) >= now.year);
    CHECK(TDGetWeekOfYear(nullptr) - 1u < 53);
    CHECK(missing_exports({"TDNew", "TDInit", "TDFree", "TDCopy", "TDCmp", "TDInRange", "TDAdd",
                           "TDSubst", "TDSetTime", "TDSetInterval", "TDGetActTime", "IsLeapYear",
                           "TDGetYears", "TDGetMonths", "TDGetDays", "TDGetHours", "TDGetMinutes",
                           "TDGetSeconds", "TDGetMilliSeconds", "TDGetDayOfWeek", "TDGetDayOfYear",
                           "TDGetWeekOfYear", "TDFromString", "TDToString"}) == "");
}
