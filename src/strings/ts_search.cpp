// Searching in a TS string, and replacing what is found.
#include "zor_ts.h"

#include <wchar.h>

#include "ts_shared.h"

namespace {

// Rebuilds `ts` with every hit of `find` replaced; `find` returns the next
// hit at or after its argument and its length, or null. Works on the text up
// to its first zero unit. The new text is built aside and then takes over,
// so that inserted text is never searched; a failed append leaves `ts` empty.
template <class FindHit>
TSString* substitute(TSString* ts, const wchar_t* replacement, FindHit find)
{
    TSString built;
    TSClear(&built);
    const wchar_t* rest = ts->data;
    bool ok = true;
    size_t hitLength = 0;
    for (const wchar_t* hit; ok && (hit = find(rest, &hitLength)) != nullptr;
         rest = hit + hitLength) {
        ok = TSAddStrN(&built, rest, int32_t(hit - rest)) &&
             (!replacement || TSAddStr(&built, replacement));
    }
    ok = ok && TSAddStr(&built, rest);
    TSInit(ts);
    if (ok)
        *ts = built;
    else
        TSInit(&built);
    return ts;
}

}

TSString* TSChrSubst(TSString* ts, const wchar_t* set, const wchar_t* replacement)
{
    if (!TSGetStr(ts)[0])
        return ts;
    set = ts_or_empty(set);
    return substitute(ts, replacement, [set](const wchar_t* from, size_t* length) {
        const wchar_t* hit = from + wcscspn(from, set);
        *length = 1;
        return *hit ? hit : nullptr;
    });
}

TSString* TSStrSubst(TSString* ts, const wchar_t* needle, const wchar_t* replacement)
{
    needle = ts_or_empty(needle);
    if (!TSGetStr(ts)[0] || !needle[0])
        return ts;
    size_t needleLength = wcslen(needle);
    return substitute(ts, replacement, [needle, needleLength](const wchar_t* from, size_t* length) {
        *length = needleLength;
        return wcsstr(from, needle);
    });
}

int32_t TSStrPos(const TSString* ts, const wchar_t* needle, int32_t start)
{
    needle = ts_or_empty(needle);
    if (TSEmpty(ts) || !needle[0] || start < 0 || start > TSGetLen(ts) || !ts->data[0])
        return -1;
    const wchar_t* hit = wcsstr(ts->data + start, needle);
    return hit ? int32_t(hit - ts->data) : -1;
}

int32_t TSStrRPos(const TSString* ts, const wchar_t* needle, int32_t lowest)
{
    needle = ts_or_empty(needle);
    const wchar_t* text = TSGetStr(ts);
    size_t needleLength = wcslen(needle);
    // Compared by count, so an empty needle matches at once at the end.
    for (int64_t i = int64_t(TSGetLen(ts)) - int64_t(needleLength); i >= lowest && i >= 0; --i) {
        if (wcsncmp(text + i, needle, needleLength) == 0)
            return int32_t(i);
    }
    return -1;
}
