// Date text in the user's short date pattern, through the date family's
// platform formatting.
#include "zor_ts.h"

#include <windows.h>

namespace {

// Room for the pattern and for the text alike.
constexpr int32_t kDateUnits = 100;

}

TSString* TSFromDate(TSString* ts, const TDDate* date)
{
    wchar_t pattern[kDateUnits] = {};
    bool known = GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, pattern, kDateUnits) ||
                 GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, pattern, kDateUnits);
    wchar_t text[kDateUnits] = {};
    int32_t length = kDateUnits;
    TDToString(date, known ? pattern : L"yyyy-MM-dd", nullptr, text, &length);
    return TSSetStr(ts, text);
}
