// Calendar helpers shared by the TD sources: month lengths, the current
// time, the round trip through the platform's SYSTEMTIME and the locale
// reads with their fallback from the user's to the system's locale.
#pragma once

#include <windows.h>

#include "zor_td.h"

namespace zor_td {

static_assert(sizeof(TDDate) == sizeof(SYSTEMTIME), "TDDate must have the layout of SYSTEMTIME");

// Length of `month` in `year`; 0 for month 0 and months above 12, which the
// day walk of the arithmetic relies on.
uint16_t days_in_month(uint16_t month, uint16_t year);

// The record a getter works on: `date` itself, or the current local time in
// `scratch` when `date` is null.
const TDDate* or_now(const TDDate* date, TDDate* scratch);

SYSTEMTIME to_systemtime(const TDDate& date);
TDDate from_systemtime(const SYSTEMTIME& st);

// Reads a locale item into `buffer` of `units` units, from the user's locale
// and else the system's; the empty text when neither has it.
void read_locale(LCTYPE item, wchar_t* buffer, int units);

}
