// An independent calendar for checking the TD family: dates as a count of
// days, so that field arithmetic can be compared with plain integer sums.
#pragma once

#include <stdint.h>

#include "zor_td.h"

namespace td_reference {

// Days since 1 March of year 0, proleptic Gregorian.
inline long day_number(long year, long month, long day)
{
    if (month <= 2) {
        year -= 1;
        month += 12;
    }
    return 365 * year + year / 4 - year / 100 + year / 400 + (153 * (month - 3) + 2) / 5 + day - 1;
}

inline long day_number(const TDDate& date)
{
    return day_number(date.year, date.month, date.day);
}

// The date of a day number: the inverse of day_number, by search over the
// year and month so that it shares no formula with it.
inline TDDate date_of(long number)
{
    TDDate date = {};
    long year = number / 366;
    while (day_number(year + 1, 1, 1) <= number)
        ++year;
    long month = 1;
    while (month < 12 && day_number(year, month + 1, 1) <= number)
        ++month;
    date.year = uint16_t(year);
    date.month = uint16_t(month);
    date.day = uint16_t(number - day_number(year, month, 1) + 1);
    return date;
}

// 0 Sunday to 6 Saturday; 1 March of year 0 was a Wednesday.
inline int weekday(long number)
{
    return int(((number + 3) % 7 + 7) % 7);
}

// A small deterministic generator, so that every run checks the same dates.
class Random {
public:
    explicit Random(uint32_t seed) : m_state(seed) {}
    uint32_t below(uint32_t bound)
    {
        m_state = m_state * 1664525u + 1013904223u;
        return (m_state >> 8) % bound;
    }

private:
    uint32_t m_state;
};

}
