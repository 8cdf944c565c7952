#include "fm_locale_marks.h"

#include <locale.h>
#include <stdlib.h>

#include <windows.h>

namespace zor_fm {
namespace {

// The runtime's narrow field widened in the locale's own code page; false
// when the runtime has no text or the text does not convert.
bool widen(const char* narrow, MarkText& mark)
{
    if (!narrow)
        return false;
    size_t units = mbstowcs(mark.text, narrow, MarkText::kCapacity - 1);
    if (units == static_cast<size_t>(-1))
        return false;
    mark.text[units] = 0;
    mark.len = static_cast<int32_t>(units);
    return true;
}

// The user's locale, then the system's; an empty text when both fail.
void from_platform(LCTYPE item, MarkText& mark)
{
    int units = GetLocaleInfoW(LOCALE_USER_DEFAULT, item, mark.text, MarkText::kCapacity);
    if (units <= 0)
        units = GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, item, mark.text, MarkText::kCapacity);
    mark.len = units > 0 ? units - 1 : 0;
}

}

LocaleMarks& LocaleMarks::fetched()
{
    if (m_fetched)
        return *this;
    m_fetched = true;
    const lconv* conv = localeconv();
    if (!conv || !widen(conv->decimal_point, m_point))
        from_platform(LOCALE_SDECIMAL, m_point);
    if (!conv || !widen(conv->thousands_sep, m_separator))
        from_platform(LOCALE_STHOUSAND, m_separator);
    return *this;
}

}
