// Editing a TS string in place: trimming, case, reversal and repetition.
#include "zor_ts.h"

#include <string.h>

#include <algorithm>

#include "../frame/zor_alloc.h"
#include "ts_shared.h"

namespace {

enum class TrimEnd { Leading, Trailing };

// Counting works by length, so a zero unit stops the scan like any other
// non-space. The kept text is taken from a private copy because TSSetStrN
// may move or release the block it would read from.
TSString* trim(TSString* ts, TrimEnd end)
{
    int32_t length = TSGetLen(ts);
    if (!length)
        return ts;
    const wchar_t* text = ts->data;
    int32_t spaces = 0;
    if (end == TrimEnd::Leading) {
        while (spaces < length && text[spaces] == L' ')
            ++spaces;
    } else {
        while (spaces < length && text[length - 1 - spaces] == L' ')
            ++spaces;
    }
    if (spaces == 0)
        return ts;
    wchar_t* copy = static_cast<wchar_t*>(zor_calloc(size_t(length) + 1, sizeof(wchar_t)));
    if (!copy)
        return ts;
    memcpy(copy, text, (size_t(length) + 1) * sizeof(wchar_t));
    if (spaces == length)
        TSInit(ts);
    else
        TSSetStrN(ts, end == TrimEnd::Leading ? copy + spaces : copy, length - spaces);
    zor_free(copy);
    return ts;
}

// Longest text that `size` can describe.
constexpr size_t kMaxLength = 0x7FFFFFFE;

}

TSString* TSLTrim(TSString* ts) { return trim(ts, TrimEnd::Leading); }

TSString* TSRTrim(TSString* ts) { return trim(ts, TrimEnd::Trailing); }

TSString* TSATrim(TSString* ts) { return TSRTrim(TSLTrim(ts)); }

TSString* TSUpper(TSString* ts)
{
    if (!TSEmpty(ts))
        _wcsupr(ts->data);
    return ts;
}

TSString* TSLower(TSString* ts)
{
    if (!TSEmpty(ts))
        _wcslwr(ts->data);
    return ts;
}

TSString* TSInvert(TSString* ts, const wchar_t* text)
{
    if (!TSSetStr(ts, ts_or_empty(text)))
        return nullptr;
    if (!TSEmpty(ts))
        std::reverse(ts->data, ts->data + TSGetLen(ts));
    return ts;
}

TSString* TSRep(TSString* ts, const wchar_t* text, int32_t count)
{
    text = ts_or_empty(text);
    size_t unitLength = wcslen(text);
    size_t repeats = count > 0 && unitLength ? size_t(count) : 0;
    if (repeats > kMaxLength / (unitLength ? unitLength : 1))
        return nullptr;
    size_t total = unitLength * repeats;
    wchar_t* scratch = static_cast<wchar_t*>(zor_calloc(total + 1, sizeof(wchar_t)));
    if (!scratch)
        return nullptr;
    for (size_t i = 0; i < repeats; ++i)
        memcpy(scratch + i * unitLength, text, unitLength * sizeof(wchar_t));
    TSString* result = TSSetStr(ts, scratch);
    zor_free(scratch);
    return result;
}
