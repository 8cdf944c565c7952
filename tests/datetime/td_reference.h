// An independent calendar for checking the TD family: dates as a count of
// days, so that field arithmetic can be compared with plain integer sums.
#pragma once

#include "zor_td.h"

namespace td_reference {

inline TDDate make(uint16_t y, uint16_t mo, uint16_t d, uint16_t h = 0, uint16_t mi = 0,
                   uint16_t s = 0, uint16_t ms = 0)
{
    TDDate date;
    return *TDSetInterval(&date, y, mo, d, h, mi, s, ms);
}

// Days since 1 March of year 0, proleptic Gregorian; for years from 1 on.
inline long day_number(long year, long month, long day)
{
    if (month <= 2) {
        year -= 1;
        month += 12;
    }
    return 365 * year + year / 4 - year / 100 + year / 400 + (153 * (month - 3) + 2) / 5 + day - 1;
}

inline long day_number(const TDDate& d) { return day_number(d.year, d.month, d.day); }

// The inverse of day_number, by search, so that it shares no formula with it.
inline TDDate date_of(long number)
{
    long year = number / 366, month = 1;
    while (day_number(year + 1, 1, 1) <= number)
        ++year;
    while (month < 12 && day_number(year, month + 1, 1) <= number)
        ++month;
    return make(uint16_t(year), uint16_t(month), uint16_t(number - day_number(year, month, 1) + 1));
}

// 0 Sunday to 6 Saturday; 1 March of year 0 was a Wednesday.
inline int weekday(long number) { return int((number + 3) % 7); }

// A deterministic generator, so that every run checks the same dates.
struct Random {
    uint32_t state;
    uint32_t below(uint32_t bound)
    {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) % bound;
    }
    uint16_t field(uint32_t bound) { return uint16_t(below(bound)); }
    // A date from 1601 on, where the platform's calendar starts.
    TDDate date() { return date_of(day_number(1601, 1, 1) + long(below(3000000))); }
};

}
