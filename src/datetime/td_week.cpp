// Weekday, day of the year and week number. The weekday comes from the
// platform's calendar conversions; the week rule from the locale, read at
// each call so that a change of locale takes effect at once.
#include "td_calendar.h"

using namespace zor_td;

namespace {

// Weekday of 1 January of `year`, counted from Monday 0 to Sunday 6; the
// other fields are those of `date`, as the platform sees them.
int jan1_from_monday(const TDDate& date, uint16_t year)
{
    TDDate jan1 = date;
    jan1.year = year;
    jan1.month = 1;
    jan1.day = 1;
    uint16_t weekday = TDGetDayOfWeek(&jan1);
    return (weekday == 0 ? 7 : weekday) - 1;
}

}

uint16_t TDGetDayOfWeek(TDDate* date)
{
    TDDate now;
    if (!date)
        date = TDGetActTime(&now);
    SYSTEMTIME st = to_systemtime(*date);
    FILETIME ft;
    SYSTEMTIME canonical;
    if (!SystemTimeToFileTime(&st, &ft) || !FileTimeToSystemTime(&ft, &canonical))
        return 0;
    *date = from_systemtime(canonical);
    return date->dayOfWeek;
}

uint16_t TDGetDayOfYear(const TDDate* date)
{
    TDDate now;
    date = or_now(date, &now);
    uint16_t days = date->day;
    for (uint16_t m = 1; m < date->month; ++m)
        days = static_cast<uint16_t>(days + days_in_month(m, date->year));
    return days;
}

uint16_t TDGetWeekOfYear(const TDDate* date)
{
    TDDate now;
    const TDDate& d = *or_now(date, &now);
    int yday = TDGetDayOfYear(&d);
    if (yday == 0)
        return 0;
    int nextJan1 = jan1_from_monday(d, static_cast<uint16_t>(d.year + 1u));
    int thisJan1 = jan1_from_monday(d, d.year);

    wchar_t rule[10];
    read_locale(LOCALE_IFIRSTWEEKOFYEAR, rule, 10);
    int full = (yday - 1 + thisJan1) / 7;
    int left = 31 - int(d.day);
    int week;
    switch (rule[0]) {
    case L'0':  // the week of 1 January
        if (d.month == 12 && left < nextJan1)
            return 1;
        week = full + 1;
        break;
    case L'1':  // the first full week
        week = full + (thisJan1 == 0 ? 1 : 0);
        break;
    case L'2':  // the first week with four days or more
        if (d.month == 12 && left < nextJan1 && nextJan1 <= 3)
            return 1;
        week = full + (thisJan1 < 4 ? 1 : 0);
        break;
    default:
        week = full;
        break;
    }
    if (week != 0)
        return static_cast<uint16_t>(week);

    // Before week 1: the same day counted on from 31 December of the year
    // before, with a day field above 31 on purpose.
    TDDate previous = d;
    previous.year = static_cast<uint16_t>(d.year - 1u);
    previous.month = 12;
    previous.day = static_cast<uint16_t>(d.day + 31u);
    return TDGetWeekOfYear(&previous);
}
