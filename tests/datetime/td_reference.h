// An independent calendar for checking the TD family: dates as a count of
// days, so that field arithmetic can be compared with plain integer sums.
#pragma once

#include "zor_td.h"

namespace td_reference {

inline TDDate make(uint16_t y, uint16_t mo, uint16_t d, uint16_t h = 0, uint16_t mi = 0,
                   uint16_t s = 0, uint16_t ms = 0)
{
    return TDDate{y, mo, 0, d, h, mi, s, ms};
}

// Days since 1 March of year 0, proleptic Gregorian; for years from 1 on.
inline long day_number(long y, long m, long d)
{
    if (m <= 2)
        y -= 1, m += 12;
    return 365 * y + y / 4 - y / 100 + y / 400 + (153 * (m - 3) + 2) / 5 + d - 1;
}
inline long day_number(const TDDate& d) { return day_number(d.year, d.month, d.day); }

// The inverse by search, so that it shares no formula with day_number.
inline TDDate date_of(long n, uint16_t hour = 0)
{
    long y = n / 366, m = 1;
    while (day_number(y + 1, 1, 1) <= n)
        ++y;
    while (m < 12 && day_number(y, m + 1, 1) <= n)
        ++m;
    return make(uint16_t(y), uint16_t(m), uint16_t(n - day_number(y, m, 1) + 1), hour);
}

// 0 Sunday to 6 Saturday; 1 March of year 0 was a Wednesday.
inline int weekday(long n) { return int((n + 3) % 7); }

// A fixed seed, so that every run checks the same dates, from 1601 on where
// the platform's calendar starts.
struct Random {
    uint32_t state;
    uint32_t operator()(uint32_t bound)
    {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) % bound;
    }
    TDDate date()
    {
        TDDate d = date_of(day_number(1601, 1, 1) + long((*this)(3000000)));
        return make(d.year, d.month, d.day, (*this)(24), (*this)(60), (*this)(60), (*this)(1000));
    }
};

}
