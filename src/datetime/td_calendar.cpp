// The record itself: life, copy, ordering, the leap-year rule and the plain
// field getters.
#include "td_calendar.h"

#include <string.h>

#include "../frame/zor_alloc.h"

namespace zor_td {

uint16_t days_in_month(uint16_t month, uint16_t year)
{
    static const uint16_t kLengths[2][13] = {
        {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
        {0, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
    };
    return month > 12 ? 0 : kLengths[IsLeapYear(year)][month];
}

const TDDate* or_now(const TDDate* date, TDDate* scratch)
{
    return date ? date : TDGetActTime(scratch);
}

SYSTEMTIME to_systemtime(const TDDate& date)
{
    SYSTEMTIME st;
    memcpy(&st, &date, sizeof st);
    return st;
}

TDDate from_systemtime(const SYSTEMTIME& st)
{
    TDDate date;
    memcpy(&date, &st, sizeof date);
    return date;
}

void read_locale(LCTYPE item, wchar_t* buffer, int units)
{
    if (GetLocaleInfoW(LOCALE_USER_DEFAULT, item, buffer, units) == 0 &&
        GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, item, buffer, units) == 0)
        buffer[0] = 0;
}

}

using namespace zor_td;

TDDate* TDNew(void)
{
    TDDate* date = static_cast<TDDate*>(zor_malloc(sizeof(TDDate)));
    return date ? TDInit(date) : nullptr;
}

TDDate* TDInit(TDDate* date)
{
    memset(date, 0, sizeof *date);
    return date;
}

void TDFree(TDDate* date)
{
    zor_free(date);
}

TDDate* TDCopy(TDDate* dst, const TDDate* src)
{
    *dst = *src;
    return dst;
}

int TDCmp(const TDDate* a, const TDDate* b)
{
    const uint16_t TDDate::*const kOrder[] = {
        &TDDate::year,   &TDDate::month,  &TDDate::day,         &TDDate::hour,
        &TDDate::minute, &TDDate::second, &TDDate::milliSeconds};
    for (auto field : kOrder) {
        if (a->*field != b->*field)
            return a->*field < b->*field ? -1 : 1;
    }
    return 0;
}

int TDInRange(const TDDate* a, const TDDate* b, const TDDate* c)
{
    if (TDCmp(a, b) > 0) {
        const TDDate* earlier = b;
        b = a;
        a = earlier;
    }
    return TDCmp(a, c) <= 0 && TDCmp(c, b) <= 0 ? 1 : 0;
}

TDDate* TDSetInterval(TDDate* date, uint16_t year, uint16_t month, uint16_t day, uint16_t hour,
                      uint16_t minute, uint16_t second, uint16_t milliSeconds)
{
    *date = TDDate{year, month, 0, day, hour, minute, second, milliSeconds};
    return date;
}

TDDate* TDSetTime(TDDate* date, uint16_t year, uint16_t month, uint16_t day, uint16_t hour,
                  uint16_t minute, uint16_t second, uint16_t milliSeconds)
{
    TDSetInterval(date, year, month, day, hour, minute, second, milliSeconds);
    TDDate nothing;
    return TDAdd(date, TDInit(&nothing));
}

TDDate* TDGetActTime(TDDate* date)
{
    SYSTEMTIME st;
    GetLocalTime(&st);
    *date = from_systemtime(st);
    return date;
}

int IsLeapYear(uint16_t year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 1 : 0;
}

// The getters read a field as stored, of the current time when `date` is null.
#define TD_FIELD_GETTER(name, field) \
    uint16_t name(const TDDate* date) \
    { \
        TDDate now; \
        return or_now(date, &now)->field; \
    }

TD_FIELD_GETTER(TDGetYears, year)
TD_FIELD_GETTER(TDGetMonths, month)
TD_FIELD_GETTER(TDGetDays, day)
TD_FIELD_GETTER(TDGetHours, hour)
TD_FIELD_GETTER(TDGetMinutes, minute)
TD_FIELD_GETTER(TDGetSeconds, second)
TD_FIELD_GETTER(TDGetMilliSeconds, milliSeconds)
