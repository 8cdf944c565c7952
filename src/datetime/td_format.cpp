// Writing a date as text through the platform's formatters, the date part
// and the time part joined without a separator. Each part falls back from
// the user's locale to the system's, as everywhere in the family.
#include "td_calendar.h"

using namespace zor_td;

namespace {

using Formatter = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

// One part of the text: a picture given by the caller, or the locale's
// default when the caller wants the locale's format for both.
struct Part {
    Formatter formatter;
    const wchar_t* picture;
    bool wanted;

    // Units written with the terminator, or needed when `units` is 0; 0 on
    // failure in both locales.
    int write(const SYSTEMTIME& st, wchar_t* out, int units) const
    {
        if (!wanted)
            return 0;
        DWORD flags = picture ? 0 : LOCALE_NOUSEROVERRIDE;
        int n = formatter(LOCALE_USER_DEFAULT, flags, &st, picture, out, units);
        return n ? n : formatter(LOCALE_SYSTEM_DEFAULT, flags, &st, picture, out, units);
    }
};

int without_terminator(int units)
{
    return units > 0 ? units - 1 : 0;
}

}

wchar_t* TDToString(const TDDate* date, const wchar_t* dateFormat, const wchar_t* timeFormat,
                    wchar_t* buffer, int32_t* length)
{
    if (!length)
        return nullptr;
    if (buffer && *length >= 1)
        buffer[0] = 0;

    TDDate now;
    SYSTEMTIME st = to_systemtime(*or_now(date, &now));
    bool both = !dateFormat && !timeFormat;
    const Part datePart = {GetDateFormatW, dateFormat, both || dateFormat};
    const Part timePart = {GetTimeFormatW, timeFormat, both || timeFormat};

    int total = without_terminator(datePart.write(st, nullptr, 0)) +
                without_terminator(timePart.write(st, nullptr, 0)) + 1;
    if (!buffer || *length < total) {
        *length = total;
        return nullptr;
    }

    int dateUnits = without_terminator(datePart.write(st, buffer, *length));
    if (timePart.write(st, buffer + dateUnits, *length - dateUnits) == 0)
        buffer[dateUnits] = 0;
    return buffer;
}
