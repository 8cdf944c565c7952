#include <doctest/doctest.h>

#include "alloc_check.h"
#include "dll_image.h"
#include "td_reference.h"
#include "zor_td.h"

using namespace td_reference;

namespace {

TDDate make(uint16_t y, uint16_t mo, uint16_t d, uint16_t h = 0, uint16_t mi = 0, uint16_t s = 0,
            uint16_t ms = 0)
{
    TDDate date;
    return *TDSetInterval(&date, y, mo, d, h, mi, s, ms);
}

bool same(const TDDate& a, const TDDate& b)
{
    return TDCmp(&a, &b) == 0;
}

long long milliseconds(const TDDate& date)
{
    return ((((day_number(date) * 24LL + date.hour) * 60 + date.minute) * 60 + date.second) * 1000) +
           date.milliSeconds;
}

TDDate random_date(Random& random)
{
    long first = day_number(1601, 1, 1);
    long last = day_number(9999, 12, 31);
    TDDate date = date_of(first + long(random.below(uint32_t(last - first))));
    date.hour = uint16_t(random.below(24));
    date.minute = uint16_t(random.below(60));
    date.second = uint16_t(random.below(60));
    date.milliSeconds = uint16_t(random.below(1000));
    return date;
}

}

TEST_CASE("day and time intervals agree with a day count over thousands of dates")
{
    Random random(20121231);
    for (int i = 0; i < 5000; ++i) {
        TDDate start = random_date(random);
        TDDate interval = make(0, 0, uint16_t(random.below(3000)), uint16_t(random.below(100)),
                               uint16_t(random.below(200)), uint16_t(random.below(200)),
                               uint16_t(random.below(5000)));
        long long span = milliseconds(interval) - milliseconds(make(0, 0, 0));
        CAPTURE(start.year);
        CAPTURE(start.month);
        CAPTURE(start.day);
        CAPTURE(interval.day);

        TDDate later = start;
        TDAdd(&later, &interval);
        CHECK(milliseconds(later) == milliseconds(start) + span);
        CHECK(later.hour < 24);
        CHECK(later.minute < 60);
        CHECK(later.second < 60);
        CHECK(later.milliSeconds < 1000);

        TDDate earlier = start;
        TDSubst(&earlier, &interval);
        CHECK(milliseconds(earlier) == milliseconds(start) - span);
        CHECK(earlier.day >= 1);
        CHECK(earlier.hour < 24);
        CHECK(earlier.milliSeconds < 1000);
    }
}

TEST_CASE("month and year intervals move the month index and clip the day")
{
    Random random(4713);
    for (int i = 0; i < 3000; ++i) {
        TDDate start = random_date(random);
        uint16_t months = uint16_t(random.below(40));
        uint16_t years = uint16_t(random.below(30));
        TDDate interval = make(years, months, 0);
        CAPTURE(start.year);
        CAPTURE(start.month);
        CAPTURE(start.day);
        CAPTURE(months);

        for (int sign : {1, -1}) {
            long index = start.year * 12L + (start.month - 1) + sign * (years * 12L + months);
            uint16_t year = uint16_t(index / 12);
            uint16_t month = uint16_t(index % 12 + 1);
            long length = day_number(month == 12 ? year + 1 : year, month % 12 + 1, 1) -
                          day_number(year, month, 1);
            TDDate expected = start;
            expected.year = year;
            expected.month = month;
            expected.day = uint16_t(start.day < length ? start.day : length);

            TDDate moved = start;
            if (sign > 0)
                TDAdd(&moved, &interval);
            else
                TDSubst(&moved, &interval);
            CHECK(same(moved, expected));
        }
    }
}

TEST_CASE("days are added before months, the day is clipped last")
{
    TDDate date = make(2013, 1, 31);
    TDDate oneMonth = make(0, 1, 0);
    CHECK(same(*TDAdd(&date, &oneMonth), make(2013, 2, 28)));

    date = make(2013, 1, 31);
    TDDate monthAndDay = make(0, 1, 1);
    CHECK(same(*TDAdd(&date, &monthAndDay), make(2013, 3, 1)));

    date = make(2012, 2, 29);
    TDDate oneYear = make(1, 0, 0);
    CHECK(same(*TDAdd(&date, &oneYear), make(2013, 2, 28)));

    date = make(2013, 3, 31);
    CHECK(same(*TDSubst(&date, &oneMonth), make(2013, 2, 28)));

    date = make(2013, 3, 15);
    TDDate threeMonths = make(0, 3, 0);
    CHECK(same(*TDSubst(&date, &threeMonths), make(2012, 12, 15)));

    // An all-zero record walks into January of its year.
    TDDate zero = make(0, 0, 0);
    TDDate fiveDays = make(0, 0, 5);
    CHECK(same(*TDAdd(&zero, &fiveDays), make(0, 1, 5)));
}

TEST_CASE("TDSetTime normalises, TDSetInterval keeps the counts")
{
    TDDate date;
    CHECK(same(*TDSetTime(&date, 2013, 5, 6, 10, 20, 75, 0), make(2013, 5, 6, 10, 21, 15)));
    CHECK(same(*TDSetTime(&date, 2013, 5, 6, 24, 0, 0, 0), make(2013, 5, 7)));
    CHECK(same(*TDSetTime(&date, 2013, 2, 29, 0, 0, 0, 0), make(2013, 3, 1)));
    CHECK(same(*TDSetTime(&date, 2012, 13, 5, 0, 0, 0, 0), make(2013, 1, 5)));
    CHECK(same(*TDSetTime(&date, 2012, 12, 32, 0, 0, 0, 0), make(2013, 1, 1)));
    CHECK(same(*TDSetTime(&date, 2012, 12, 31, 23, 59, 59, 1000), make(2013, 1, 1)));

    date.dayOfWeek = 5;
    TDSetInterval(&date, 0, 0, 0, 0, 90, 0, 0);
    CHECK(date.dayOfWeek == 0);
    CHECK(TDGetMinutes(&date) == 90);
    CHECK(TDGetHours(&date) == 0);
}

TEST_CASE("sums and differences wrap at 16 bits")
{
    TDDate date = make(65535, 12, 31);
    TDDate oneDay = make(0, 0, 1);
    CHECK(same(*TDAdd(&date, &oneDay), make(0, 1, 1)));
    CHECK(same(*TDSubst(&date, &oneDay), make(65535, 12, 31)));

    // 65535 ms is 65 s 535 ms; the carry goes on into the minute.
    date = make(2000, 1, 1, 0, 0, 0, 0);
    TDDate manyMs = make(0, 0, 0, 0, 0, 0, 65535);
    CHECK(same(*TDAdd(&date, &manyMs), make(2000, 1, 1, 0, 1, 5, 535)));

    // A field sum beyond 16 bits is lost.
    date = make(2000, 1, 1, 0, 0, 0, 1);
    CHECK(same(*TDAdd(&date, &manyMs), make(2000, 1, 1)));

    // A year count larger than the year wraps below zero.
    date = make(5, 6, 7);
    TDDate tenYears = make(10, 0, 0);
    CHECK(TDSubst(&date, &tenYears)->year == 65531);

    // Nonsense months walk on without hanging.
    date = make(2000, 40, 1);
    CHECK(same(*TDAdd(&date, &oneDay), make(2001, 1, 2)));
    date = make(2000, 0, 1);
    CHECK(TDSubst(&date, &oneDay)->year == 2000);
}

TEST_CASE("ordering compares fields from the year down and ignores the weekday")
{
    TDDate a = make(2012, 6, 15, 10, 0, 0, 0);
    TDDate b = a;
    b.dayOfWeek = 3;
    CHECK(TDCmp(&a, &b) == 0);
    TDDate later[] = {make(2013, 1, 1), make(2012, 7, 1), make(2012, 6, 16),
                      make(2012, 6, 15, 11), make(2012, 6, 15, 10, 1), make(2012, 6, 15, 10, 0, 1),
                      make(2012, 6, 15, 10, 0, 0, 1)};
    for (const TDDate& c : later) {
        CHECK(TDCmp(&a, &c) == -1);
        CHECK(TDCmp(&c, &a) == 1);
    }

    TDDate low = make(2012, 1, 1), high = make(2012, 12, 31), mid = make(2012, 6, 1);
    TDDate outside = make(2013, 1, 1);
    for (int swap = 0; swap < 2; ++swap) {
        const TDDate* x = swap ? &high : &low;
        const TDDate* y = swap ? &low : &high;
        CHECK(TDInRange(x, y, &mid) == 1);
        CHECK(TDInRange(x, y, &low) == 1);
        CHECK(TDInRange(x, y, &high) == 1);
        CHECK(TDInRange(x, y, &outside) == 0);
    }
    CHECK(TDInRange(&low, &low, &low) == 1);
    CHECK(TDInRange(&low, &low, &mid) == 0);
}

TEST_CASE("leap years follow the Gregorian rule for every year")
{
    CHECK(IsLeapYear(2000) == 1);
    CHECK(IsLeapYear(1900) == 0);
    CHECK(IsLeapYear(2012) == 1);
    CHECK(IsLeapYear(2013) == 0);
    CHECK(IsLeapYear(0) == 1);
    int leaps = 0;
    for (unsigned year = 1; year <= 400; ++year)
        leaps += IsLeapYear(uint16_t(year));
    CHECK(leaps == 97);
}

TEST_CASE("heap objects and the current time")
{
    NoLeak leak;
    TDDate* date = TDNew();
    REQUIRE(date);
    CHECK(same(*date, make(0, 0, 0)));
    TDFree(date);
    {
        AllAllocationsFail failing;
        CHECK(TDNew() == nullptr);
    }

    TDDate now;
    TDGetActTime(&now);
    CHECK(now.year >= 2020);
    CHECK(now.month >= 1);
    CHECK(now.month <= 12);
    CHECK(now.dayOfWeek <= 6);
    CHECK(TDGetYears(nullptr) >= now.year);
    CHECK(TDGetMonths(nullptr) >= 1);
}

TEST_CASE("the DLL exports the whole family")
{
    CHECK(missing_exports({"TDNew", "TDInit", "TDFree", "TDCopy", "TDCmp", "TDInRange", "TDAdd",
                           "TDSubst", "TDSetTime", "TDSetInterval", "TDGetActTime", "IsLeapYear",
                           "TDGetYears", "TDGetMonths", "TDGetDays", "TDGetHours", "TDGetMinutes",
                           "TDGetSeconds", "TDGetMilliSeconds", "TDGetDayOfWeek", "TDGetDayOfYear",
                           "TDGetWeekOfYear", "TDFromString", "TDToString"}) == "");
}
