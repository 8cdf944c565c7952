#include <doctest/doctest.h>

#include <string.h>

#include "locale_scope.h"
#include "td_reference.h"

using namespace td_reference;

namespace {

// Monday of week 1 by the first-week rule: the week that holds 1 January
// ("0"), 7 January ("1", the first full week) or 4 January ("2", ISO 8601).
long week_one(long year, wchar_t rule)
{
    long anchor = day_number(year, 1, rule == L'0' ? 1 : rule == L'1' ? 7 : 4);
    return anchor - (weekday(anchor) + 6) % 7;
}

int reference_week(long number, long year, wchar_t rule)
{
    if (number >= week_one(year + 1, rule))
        return 1;
    long start = week_one(number < week_one(year, rule) ? year - 1 : year, rule);
    return int((number - start) / 7 + 1);
}

}

TEST_CASE("the weekday comes from the platform, which rewrites or refuses the record")
{
    for (long number = day_number(1601, 1, 1); number <= day_number(30827, 12, 31); number += 13) {
        TDDate date = date_of(number);
        date.dayOfWeek = 6;
        date.hour = 23;
        TDDate kept = date;
        INFO(date.year, "-", date.month, "-", date.day);
        CHECK(TDGetDayOfWeek(&date) == weekday(number));
        CHECK((date.dayOfWeek == weekday(number) && TDCmp(&date, &kept) == 0));
    }
    for (const TDDate& bad : {make(1600, 12, 31), make(60000, 1, 1), make(2012, 0, 1),
                              make(2012, 13, 1), make(2012, 2, 30), make(2012, 1, 0),
                              make(2012, 5, 5, 25)}) {
        TDDate date = bad, refused = bad;
        date.dayOfWeek = refused.dayOfWeek = 4;
        CHECK(TDGetDayOfWeek(&refused) == 0);
        CHECK(memcmp(&refused, &date, sizeof date) == 0);
    }
    TDDate noMonth = make(2012, 0, 17), december = make(2012, 12, 31);
    CHECK((TDGetDayOfYear(&noMonth) == 17 && TDGetDayOfYear(&december) == 366));
}

TEST_CASE("week numbers follow the locale's first-week rule for every day")
{
    TDDate oneDay = make(0, 0, 1);
    LocaleSetting sundayFirst(LOCALE_IFIRSTDAYOFWEEK, L"6");  // weeks start on Monday regardless
    for (const wchar_t* rule : {L"0", L"1", L"2"}) {
        LocaleSetting setting(LOCALE_IFIRSTWEEKOFYEAR, rule);
        for (TDDate date = make(1999, 1, 1, 12); date.year <= 2030; TDAdd(&date, &oneDay)) {
            INFO("rule ", char(rule[0]), ": ", date.year, "-", date.month, "-", date.day);
            CHECK(TDGetWeekOfYear(&date) == reference_week(day_number(date), date.year, rule[0]));
        }
    }
    LocaleSetting iso(LOCALE_IFIRSTWEEKOFYEAR, L"2");
    TDDate noDay = make(2012, 0, 0);
    CHECK(TDGetWeekOfYear(&noDay) == 0);
    CHECK((TDGetWeekOfYear(nullptr) >= 1 && TDGetWeekOfYear(nullptr) <= 53));
}
