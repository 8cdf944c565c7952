// Date text in the user's short date pattern, through the date family's
// platform formatting.
#include "zor_ts.h"

#include "../datetime/td_calendar.h"

namespace {

// Room for the pattern and for the text alike.
constexpr int32_t kDateUnits = 100;

}

TSString* TSFromDate(TSString* ts, const TDDate* date)
{
    wchar_t pattern[kDateUnits];
    zor_td::read_locale(LOCALE_SSHORTDATE, pattern, kDateUnits);
    wchar_t text[kDateUnits] = {};
    int32_t length = kDateUnits;
    TDToString(date, pattern[0] ? pattern : L"yyyy-MM-dd", nullptr, text, &length);
    return TSSetStr(ts, text);
}
