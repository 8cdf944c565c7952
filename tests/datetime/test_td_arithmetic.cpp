#include <doctest/doctest.h>

#include "alloc_check.h"
#include "dll_image.h"
#include "td_reference.h"

using namespace td_reference;

namespace {

long long milliseconds(const TDDate& d)
{
    long long seconds = ((day_number(d) * 24LL + d.hour) * 60 + d.minute) * 60 + d.second;
    return seconds * 1000 + d.milliSeconds;
}

TDDate* add_or_subtract(bool add, TDDate* date, const TDDate* interval)
{
    return add ? TDAdd(date, interval) : TDSubst(date, interval);
}

}

TEST_CASE("intervals agree with a day count and a month index over thousands of dates")
{
    Random random{20121231};
    for (int i = 0; i < 5000; ++i) {
        TDDate start = random.date();
        TDSetInterval(&start, start.year, start.month, start.day, random.field(24),
                      random.field(60), random.field(60), random.field(1000));
        TDDate span = make(0, 0, random.field(3000), random.field(100), random.field(200),
                           random.field(200), random.field(5000));
        INFO(start.year, "-", start.month, "-", start.day, " and ", span.day, " days");
        for (bool add : {true, false}) {
            TDDate d = start;
            long long ms = milliseconds(span) - milliseconds(make(0, 0, 0));
            CHECK(milliseconds(*add_or_subtract(add, &d, &span)) ==
                  milliseconds(start) + (add ? ms : -ms));
            CHECK((d.day >= 1 && d.hour < 24 && d.minute < 60 && d.second < 60 &&
                   d.milliSeconds < 1000));
        }

        uint16_t years = random.field(30), months = random.field(40);
        TDDate shift = make(years, months, 0);
        for (bool add : {true, false}) {
            long moves = (add ? 1 : -1) * (years * 12L + months);
            long index = start.year * 12L + start.month - 1 + moves;
            long length = day_number((index + 1) / 12, (index + 1) % 12 + 1, 1) -
                          day_number(index / 12, index % 12 + 1, 1);
            TDDate expected = start, moved = start;
            expected.year = uint16_t(index / 12);
            expected.month = uint16_t(index % 12 + 1);
            expected.day = uint16_t(start.day < length ? start.day : length);
            CHECK(TDCmp(add_or_subtract(add, &moved, &shift), &expected) == 0);
        }
    }
}

TEST_CASE("days before months, the clip, normalising and the 16-bit wrap")
{
    struct Step { TDDate start, interval; bool add; TDDate expected; };
    const Step steps[] = {
        {make(2013, 1, 31), make(0, 1, 1), true, make(2013, 3, 1)},
        {make(2013, 3, 31), make(0, 1, 0), false, make(2013, 2, 28)},
        {make(0, 0, 0), make(0, 0, 5), true, make(0, 1, 5)},
        {make(2000, 40, 1), make(0, 0, 1), true, make(2001, 1, 2)},
        {make(2000, 11, 1), make(0, 13, 0), true, make(2001, 12, 1)},
        {make(65535, 12, 31), make(0, 0, 1), true, make(0, 1, 1)},
        {make(0, 1, 1), make(0, 0, 1), false, make(65535, 12, 31)},
        {make(2012, 3, 1), make(0, 12, 0), false, make(2011, 3, 1)},
        {make(2000, 1, 1), make(0, 0, 0, 0, 0, 0, 65535), true, make(2000, 1, 1, 0, 1, 5, 535)},
        {make(2000, 1, 1, 0, 0, 0, 1), make(0, 0, 0, 0, 0, 0, 65535), true, make(2000, 1, 1)},
    };
    for (const Step& step : steps) {
        TDDate date = step.start;
        INFO(step.expected.year, "-", step.expected.month, "-", step.expected.day);
        CHECK(TDCmp(add_or_subtract(step.add, &date, &step.interval), &step.expected) == 0);
    }
    TDDate date = make(2000, 0, 1), oneDay = make(0, 0, 1);
    CHECK(TDSubst(&date, &oneDay)->year == 2000);  // a nonsense month does not hang

    const TDDate normalised[][2] = {
        {make(2013, 5, 6, 10, 20, 75), make(2013, 5, 6, 10, 21, 15)},
        {make(2013, 5, 6, 24), make(2013, 5, 7)},
        {make(2013, 2, 29), make(2013, 3, 1)},
        {make(2012, 13, 5), make(2013, 1, 5)},
    };
    for (const auto& pair : normalised) {
        const TDDate& in = pair[0];
        TDSetTime(&date, in.year, in.month, in.day, in.hour, in.minute, in.second, 0);
        CHECK(TDCmp(&date, &pair[1]) == 0);
    }
    date.dayOfWeek = 5;
    TDSetInterval(&date, 0, 0, 0, 0, 90, 0, 0);
    CHECK((date.dayOfWeek == 0 && TDGetMinutes(&date) == 90 && TDGetHours(&date) == 0));
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

TEST_CASE("leap years, heap objects, the current time and the exports")
{
    CHECK((IsLeapYear(2000) && IsLeapYear(2012) && !IsLeapYear(1900) && !IsLeapYear(2013)));
    NoLeak leak;
    TDDate* date = TDNew();
    const TDDate zero = make(0, 0, 0);
    REQUIRE(date);
    CHECK(TDCmp(date, &zero) == 0);
    TDFree(date);
    AllAllocationsFail failing;
    CHECK(TDNew() == nullptr);
    TDDate now;
    CHECK((TDGetActTime(&now)->year >= 2020 && now.month >= 1 && now.month <= 12));
    CHECK((TDGetYears(nullptr) >= now.year && now.dayOfWeek <= 6));

    CHECK(missing_exports({"TDNew", "TDInit", "TDFree", "TDCopy", "TDCmp", "TDInRange", "TDAdd",
                           "TDSubst", "TDSetTime", "TDSetInterval", "TDGetActTime", "IsLeapYear",
                           "TDGetYears", "TDGetMonths", "TDGetDays", "TDGetHours", "TDGetMinutes",
                           "TDGetSeconds", "TDGetMilliSeconds", "TDGetDayOfWeek", "TDGetDayOfYear",
                           "TDGetWeekOfYear", "TDFromString", "TDToString"}) == "");
}
