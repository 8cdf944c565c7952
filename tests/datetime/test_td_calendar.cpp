#include <doctest/doctest.h>

#include <string.h>

#include "alloc_check.h"
#include "dll_image.h"
#include "locale_scope.h"
#include "td_reference.h"

using namespace td_reference;

namespace {

long long milliseconds(const TDDate& d)
{
    long long seconds = ((day_number(d) * 24LL + d.hour) * 60 + d.minute) * 60 + d.second;
    return seconds * 1000 + d.milliSeconds;
}

// op 1 adds, -1 subtracts, 0 sets the fields of `i` as a time.
TDDate apply(int op, TDDate d, const TDDate& i)
{
    if (op == 0)
        return *TDSetTime(&d, i.year, i.month, i.day, i.hour, i.minute, i.second, i.milliSeconds);
    return *(op > 0 ? TDAdd(&d, &i) : TDSubst(&d, &i));
}

// Monday of week 1 by the first-week rule: the week that holds 1 January
// ("0"), 7 January ("1", the first full week) or 4 January ("2", ISO 8601).
long week_one(long year, wchar_t rule)
{
    long anchor = day_number(year, 1, rule == L'0' ? 1 : rule == L'1' ? 7 : 4);
    return anchor - (weekday(anchor) + 6) % 7;
}

}

TEST_CASE("intervals agree with a day count and a month index over thousands of dates")
{
    Random r{20121231};
    for (int i = 0; i < 5000; ++i) {
        TDDate start = r.date(), span = make(0, 0, r(3000), r(100), r(200), r(200), r(5000));
        TDDate shift = make(r(30), r(40), 0);
        long long length = milliseconds(span) - milliseconds(make(0, 0, 0));
        INFO(start.year, "-", start.month, "-", start.day, " and ", span.day, " days");
        for (int sign : {1, -1}) {
            TDDate d = apply(sign, start, span), expected = start;
            CHECK(milliseconds(d) == milliseconds(start) + sign * length);
            CHECK((d.day >= 1 && d.hour < 24 && d.minute < 60 && d.second < 60 &&
                   d.milliSeconds < 1000));
            long index = start.year * 12 + start.month - 1 + sign * (shift.year * 12 + shift.month);
            long days = day_number((index + 1) / 12, (index + 1) % 12 + 1, 1) -
                        day_number(index / 12, index % 12 + 1, 1);
            expected.year = uint16_t(index / 12);
            expected.month = uint16_t(index % 12 + 1);
            expected.day = uint16_t(start.day < days ? start.day : days);
            d = apply(sign, start, shift);
            CHECK(TDCmp(&d, &expected) == 0);
        }
    }
}

TEST_CASE("days before months, the clip, normalising and the 16-bit wrap")
{
    struct Row { TDDate start, interval; int op; TDDate expected; };
    const Row rows[] = {
        {make(2013, 1, 31), make(0, 1, 1), 1, make(2013, 3, 1)},
        {make(2013, 3, 31), make(0, 1, 0), -1, make(2013, 2, 28)},
        {make(0, 0, 0), make(0, 0, 5), 1, make(0, 1, 5)},
        {make(2000, 40, 1), make(0, 0, 1), 1, make(2001, 1, 2)},
        {make(2000, 11, 1), make(0, 13, 0), 1, make(2001, 12, 1)},
        {make(65535, 12, 31), make(0, 0, 1), 1, make(0, 1, 1)},
        {make(0, 1, 1), make(0, 0, 1), -1, make(65535, 12, 31)},
        {make(2012, 3, 1), make(0, 12, 0), -1, make(2011, 3, 1)},
        {make(2000, 1, 1), make(0, 0, 0, 0, 0, 0, 65535), 1, make(2000, 1, 1, 0, 1, 5, 535)},
        {make(2000, 1, 1, 0, 0, 0, 1), make(0, 0, 0, 0, 0, 0, 65535), 1, make(2000, 1, 1)},
        {{}, make(2013, 5, 6, 10, 20, 75), 0, make(2013, 5, 6, 10, 21, 15)},
        {{}, make(2013, 5, 6, 24), 0, make(2013, 5, 7)},
        {{}, make(2013, 2, 29), 0, make(2013, 3, 1)},
        {{}, make(2012, 13, 5), 0, make(2013, 1, 5)},
    };
    for (const Row& row : rows) {
        TDDate result = apply(row.op, row.start, row.interval);
        CHECK((TDCmp(&result, &row.expected) == 0 && result.dayOfWeek == 0));
    }
    CHECK(apply(-1, make(2000, 0, 1), make(0, 0, 1)).year == 2000);  // a nonsense month ends
    TDDate set = make(1, 1, 1), ninety = make(0, 0, 0, 0, 90);
    set.dayOfWeek = 5;
    CHECK((TDSetInterval(&set, 0, 0, 0, 0, 90, 0, 0)->dayOfWeek == 0 && TDCmp(&set, &ninety) == 0));
}

TEST_CASE("ordering ignores the weekday; ranges take their bounds in either order")
{
    TDDate a = make(2012, 6, 15, 10), b = a, low = make(2012, 1, 1);
    b.dayOfWeek = 3;
    CHECK((TDCmp(&a, &b) == 0 && TDInRange(&low, &low, &low) && !TDInRange(&low, &low, &a)));
    for (const TDDate& c : {make(2013, 1, 1), make(2012, 7, 1), make(2012, 6, 16),
                            make(2012, 6, 15, 11), make(2012, 6, 15, 10, 1),
                            make(2012, 6, 15, 10, 0, 1), make(2012, 6, 15, 10, 0, 0, 1)}) {
        CHECK((TDCmp(&a, &c) == -1 && TDCmp(&c, &a) == 1));
        CHECK((TDInRange(&c, &low, &a) && TDInRange(&a, &c, &c) && !TDInRange(&low, &a, &c)));
    }
}

TEST_CASE("the weekday comes from the platform, which rewrites or refuses the record")
{
    for (long n = day_number(1601, 1, 1); n <= day_number(30827, 12, 31); n += 13) {
        TDDate date = date_of(n, 23), kept = date;
        date.dayOfWeek = 6;
        CHECK((TDGetDayOfWeek(&date) == weekday(n) && date.dayOfWeek == weekday(n)));
        CHECK(TDCmp(&date, &kept) == 0);
    }
    for (TDDate bad : {make(1600, 12, 31), make(60000, 1, 1), make(2012, 0, 1), make(2012, 13, 1),
                       make(2012, 2, 30), make(2012, 1, 0), make(2012, 5, 5, 25)}) {
        TDDate refused = bad;
        CHECK((TDGetDayOfWeek(&refused) == 0 && memcmp(&refused, &bad, sizeof bad) == 0));
    }
    TDDate noMonth = make(2012, 0, 17), december = make(2012, 12, 31);
    CHECK((TDGetDayOfYear(&noMonth) == 17 && TDGetDayOfYear(&december) == 366));
}

TEST_CASE("week numbers follow the locale's first-week rule for every day")
{
    LocaleSetting sundayFirst(LOCALE_IFIRSTDAYOFWEEK, L"6");  // weeks start on Monday regardless
    for (const wchar_t* rule : {L"0", L"1", L"2"}) {
        LocaleSetting setting(LOCALE_IFIRSTWEEKOFYEAR, rule);
        for (long n = day_number(1999, 1, 1); n <= day_number(2030, 12, 31); ++n) {
            TDDate date = date_of(n, 12);
            long start = week_one(n < week_one(date.year, *rule) ? date.year - 1 : date.year, *rule);
            int week = n >= week_one(date.year + 1, *rule) ? 1 : int((n - start) / 7 + 1);
            INFO("rule ", char(*rule), ": ", date.year, "-", date.month, "-", date.day);
            CHECK(TDGetWeekOfYear(&date) == week);
        }
    }
    TDDate noDay = make(2012, 0, 0);
    CHECK((TDGetWeekOfYear(&noDay) == 0 && TDGetWeekOfYear(nullptr) - 1u < 53));
}

TEST_CASE("leap years, heap objects, the current time and the exports")
{
    CHECK((IsLeapYear(2000) && IsLeapYear(2012) && !IsLeapYear(1900) && !IsLeapYear(2013)));
    NoLeak leak;
    TDDate *date = TDNew(), zero = make(0, 0, 0), now;
    CHECK((date && TDCmp(date, &zero) == 0));
    TDFree(date);
    AllAllocationsFail failing;
    CHECK(TDNew() == nullptr);
    CHECK((TDGetActTime(&now)->year >= 2020 && now.month - 1u < 12 && now.dayOfWeek <= 6));
    CHECK(TDGetYears(nullptr) >= now.year);
    CHECK(missing_exports({"TDNew", "TDInit", "TDFree", "TDCopy", "TDCmp", "TDInRange", "TDAdd",
                           "TDSubst", "TDSetTime", "TDSetInterval", "TDGetActTime", "IsLeapYear",
                           "TDGetYears", "TDGetMonths", "TDGetDays", "TDGetHours", "TDGetMinutes",
                           "TDGetSeconds", "TDGetMilliSeconds", "TDGetDayOfWeek", "TDGetDayOfYear",
                           "TDGetWeekOfYear", "TDFromString", "TDToString"}) == "");
}
