// Field-by-field addition and subtraction of an interval. Everything is
// 16-bit and wraps, so that nonsense input gives a defined record instead of
// a failure; the day walks rely on month 0 and months above 12 having length
// 0, which keeps every loop finite for any field values.
#include "td_calendar.h"

using zor_td::days_in_month;

namespace {

inline uint16_t u16(unsigned value)
{
    return static_cast<uint16_t>(value);
}

struct TimeUnit {
    uint16_t TDDate::*field;
    uint16_t size;
};

// Smallest first: each unit carries into or borrows from the next.
const TimeUnit kTimeUnits[] = {
    {&TDDate::milliSeconds, 1000},
    {&TDDate::second, 60},
    {&TDDate::minute, 60},
    {&TDDate::hour, 24},
};

void clip_day(TDDate* date)
{
    uint16_t length = days_in_month(date->month, date->year);
    if (date->day > length)
        date->day = length;
}

// One month back, from January to December of the year before.
void month_back(TDDate* date)
{
    if (date->month == 1) {
        date->month = 12;
        date->year = u16(date->year - 1u);
    } else {
        date->month = u16(date->month - 1u);
    }
}

}

TDDate* TDAdd(TDDate* dst, const TDDate* src)
{
    uint16_t carry = 0;
    for (const TimeUnit& unit : kTimeUnits) {
        uint16_t value = u16(dst->*unit.field + src->*unit.field + carry);
        carry = u16(value / unit.size);
        dst->*unit.field = u16(value % unit.size);
    }

    // Days first, month by month from the current day, so that a day count
    // lands on a real date before months are added.
    uint16_t add = u16(src->day + carry);
    uint16_t d = dst->day;
    uint16_t m = dst->month;
    uint16_t y = dst->year;
    for (;;) {
        uint16_t length = days_in_month(m, y);
        if (u16(d + add) <= length) {
            dst->day = u16(d + add);
            break;
        }
        add = u16(add + d - length);
        d = 0;
        m = u16(m + 1u);
        // A month beyond December, even one given as such, opens the next year.
        if (m >= 13) {
            m = 1;
            y = u16(y + 1u);
        }
    }

    m = u16(m + src->month);
    uint16_t yearCarry = 0;
    if (m > 12) {
        yearCarry = u16((m - 1u) / 12u);
        m = u16((m - 1u) % 12u + 1u);
    }
    dst->year = u16(y + src->year + yearCarry);
    dst->month = m;
    clip_day(dst);
    return dst;
}

TDDate* TDSubst(TDDate* dst, const TDDate* src)
{
    uint16_t borrow = 0;
    for (const TimeUnit& unit : kTimeUnits) {
        uint16_t take = u16(src->*unit.field + borrow);
        uint16_t have = dst->*unit.field;
        if (take <= have) {
            dst->*unit.field = u16(have - take);
            borrow = 0;
        } else {
            uint16_t diff = u16(take - have);
            borrow = u16((diff + unit.size - 1u) / unit.size);
            dst->*unit.field = u16(borrow * unit.size - diff);
        }
    }

    uint16_t sub = u16(src->day + borrow);
    if (sub < dst->day) {
        dst->day = u16(dst->day - sub);
    } else {
        // `rest` counts back from the last day of the month before.
        uint16_t rest = u16(sub - dst->day);
        month_back(dst);
        for (;;) {
            uint16_t length = days_in_month(dst->month, dst->year);
            if (rest < length) {
                dst->day = u16(length - rest);
                break;
            }
            month_back(dst);
            if (rest == length) {
                dst->day = days_in_month(dst->month, dst->year);
                break;
            }
            rest = u16(rest - length);
        }
    }

    uint16_t yearBorrow = 0;
    if (src->month < dst->month) {
        dst->month = u16(dst->month - src->month);
    } else {
        uint16_t diff = u16(src->month - dst->month);
        yearBorrow = u16(diff / 12u + 1u);
        dst->month = u16(12u - diff % 12u);
    }
    dst->year = u16(dst->year - (src->year + yearBorrow));
    clip_day(dst);
    return dst;
}
