/* TD: the date and time value. A record of calendar fields in the layout of
   the platform's SYSTEMTIME, used both as a point in time and as an interval;
   nothing marks which. Arithmetic works field by field with carries: there
   is no day number, no epoch and no time zone. Every sum and difference is
   16-bit and wraps without notice; the arithmetic accepts any field values
   and never fails.

   Getters take a null `date` as the current local time. Every other TDDate*
   must point at a valid record. */
#ifndef ZOR_TD_H
#define ZOR_TD_H

#include "zor_api.h"

typedef struct TDDate {
    uint16_t year;         /* calendar year, or a count of years */
    uint16_t month;        /* 1 to 12, or a count of months */
    uint16_t dayOfWeek;    /* 0 Sunday to 6 Saturday; valid only after TDGetDayOfWeek,
                              TDGetActTime or TDFromString with a day name */
    uint16_t day;          /* 1 to 31, or a count of days */
    uint16_t hour;
    uint16_t minute;
    uint16_t second;
    uint16_t milliSeconds;
} TDDate;

/* Life. TDNew gives null when the heap is exhausted. A record in the
   caller's storage owns nothing and needs only TDInit, which zeroes all
   fields (month and day 0: no calendar date). */
ZOR_API TDDate* TDNew(void);
ZOR_API TDDate* TDInit(TDDate* date);
ZOR_API void    TDFree(TDDate* date);
ZOR_API TDDate* TDCopy(TDDate* dst, const TDDate* src);

/* Ordering by year, month, day, hour, minute, second, milliseconds, each
   unsigned; dayOfWeek takes no part. TDCmp gives -1, 0 or 1. TDInRange gives
   1 when c lies in the closed range between a and b, in either order. */
ZOR_API int TDCmp(const TDDate* a, const TDDate* b);
ZOR_API int TDInRange(const TDDate* a, const TDDate* b, const TDDate* c);

/* Adding and subtracting an interval `src`, read as counts. Time fields
   carry from the milliseconds up, then days walk month by month, then
   months and years are added, and the day is clipped to its month's length
   last: 31 January + 1 month is 28 February, + 1 month 1 day is 1 March.
   Subtracting two points in time gives a record of field differences, not a
   calendar distance. dayOfWeek is left alone. */
ZOR_API TDDate* TDAdd(TDDate* dst, const TDDate* src);
ZOR_API TDDate* TDSubst(TDDate* dst, const TDDate* src);

/* TDSetTime stores the fields and normalises them by adding an empty
   interval (second 75 becomes the next minute, 29 February 2013 becomes
   1 March, month 13 day 5 becomes 5 January of the next year: the day walk
   takes any month beyond December as the end of the year); TDSetInterval
   stores them as they are. Both set dayOfWeek 0. */
ZOR_API TDDate* TDSetTime(TDDate* date, uint16_t year, uint16_t month, uint16_t day,
                          uint16_t hour, uint16_t minute, uint16_t second,
                          uint16_t milliSeconds);
ZOR_API TDDate* TDSetInterval(TDDate* date, uint16_t year, uint16_t month, uint16_t day,
                              uint16_t hour, uint16_t minute, uint16_t second,
                              uint16_t milliSeconds);
ZOR_API TDDate* TDGetActTime(TDDate* date);

/* Gregorian for every year, with no Julian calendar before it. */
ZOR_API int IsLeapYear(uint16_t year);

/* The fields as stored, without normalising. */
ZOR_API uint16_t TDGetYears(const TDDate* date);
ZOR_API uint16_t TDGetMonths(const TDDate* date);
ZOR_API uint16_t TDGetDays(const TDDate* date);
ZOR_API uint16_t TDGetHours(const TDDate* date);
ZOR_API uint16_t TDGetMinutes(const TDDate* date);
ZOR_API uint16_t TDGetSeconds(const TDDate* date);
ZOR_API uint16_t TDGetMilliSeconds(const TDDate* date);

/* 0 Sunday to 6 Saturday. The record goes through the platform's
   conversion to a file time and back, so every field is rewritten in
   canonical form. For a year outside 1601 to 30827 or a field outside its
   calendar range the conversion fails, the record stays as it was and the
   result is 0, which cannot be told from Sunday. */
ZOR_API uint16_t TDGetDayOfWeek(TDDate* date);
/* Days of the months before `month` plus `day`; month 0 or 1 gives `day`. */
ZOR_API uint16_t TDGetDayOfYear(const TDDate* date);
/* Weeks start on Monday. Week 1 is chosen by the locale's first-week value:
   "0" the week of 1 January, "1" the first full week, "2" the first week of
   at least four days (ISO 8601); any other value counts full weeks only.
   Days before week 1 belong to the last week of the previous year, days of
   late December may be week 1 of the next. 0 when the day of the year is 0. */
ZOR_API uint16_t TDGetWeekOfYear(const TDDate* date);

/* Reads `text` by a picture (null: the locale's short date pattern):
     d dd        day 1 to 31           ddd dddd   day name, sets dayOfWeek only
     M MM        month 1 to 12         MMM MMMM   month name
     y yy        2000 + two digits     yyy yyyy   four digits as they stand
     H HH        hour 0 to 23          h hh       hour 0 to 11
     m mm        minute 0 to 59        s ss       second 0 to 59
     t tt        A or P (tt: AM or PM) adds 12 hours for P
     g           era, reads nothing
   Every other unit is a literal that must stand in the text exactly; there
   is no quoting. Digits of other scripts count by their decimal value.
   Whatever precedes a field in the text is passed over; text
   behind the last item is not looked at. A field met again in the same
   picture (H after h, dd after dddd) reads nothing. Names come from the
   locale and are compared case-blind; a name field reads at most 39 letters
   or digits, and a longer run is cut there, its rest staying in the text
   for the next item of the picture. Fields the picture does not name are 0.
   Gives `date`, or null on any failure, leaving `date` untouched. */
ZOR_API TDDate* TDFromString(const wchar_t* text, const wchar_t* format, TDDate* date);

/* Writes the date part by `dateFormat`, then at once the time part by
   `timeFormat`, in the platform's picture letters; a null format leaves its
   part out, and both null give date and time in the locale's defaults.
   `length` counts units with the terminator. When `buffer` is null or
   `*length` too small, the size needed is stored in `*length` and the result
   is null; a buffer of at least one unit then holds the empty text. A null
   `length` gives null. A record the platform refuses (a year outside 1601 to
   30827, a field outside its range) gives the empty text as success. */
ZOR_API wchar_t* TDToString(const TDDate* date, const wchar_t* dateFormat,
                            const wchar_t* timeFormat, wchar_t* buffer, int32_t* length);

#endif
