// The TS string core: create, fill, read, join and compare. Every change of
// length reallocates the block to the exact new size; there is no capacity.
#include "zor_ts.h"

#include <string.h>

#include "../frame/zor_alloc.h"
#include "../frame/zor_platform.h"
#include "ts_shared.h"

namespace {

// The one shared empty text. Const data lands in a read-only section, so a
// caller's stray write through TSGetStr faults instead of changing every
// empty string of the process.
const wchar_t g_emptyText[1] = {0};

// Resizes the block to exactly `units` units (terminator included). On
// exhaustion the old block is released and the string left empty.
bool resize_block(TSString* ts, int32_t units)
{
    wchar_t* old = ts->data;
    ts->data = static_cast<wchar_t*>(zor_realloc(old, size_t(units) * sizeof(wchar_t)));
    if (!ts->data) {
        zor_free(old);
        ts->size = 0;
        return false;
    }
    return true;
}

// Cuts at kFormatCut units; the zeroed unit behind terminates every text.
TSString* set_formatted(TSString* ts, wchar_t* scratch, const wchar_t* format, va_list args)
{
    zor::counted_vswprintf(scratch, kFormatCut, format, args);
    return TSSetStr(ts, scratch);
}

}

TSString* ts_set_formatted(TSString* ts, const wchar_t* format, ...)
{
    wchar_t scratch[kFormatCut + 1] = {};
    va_list args;
    va_start(args, format);
    TSString* result = set_formatted(ts, scratch, format, args);
    va_end(args);
    return result;
}

TSString* ts_set_formatted_on_heap(TSString* ts, const wchar_t* format, ...)
{
    wchar_t* scratch = static_cast<wchar_t*>(zor_calloc(kFormatCut + 1, sizeof(wchar_t)));
    if (!scratch)
        return nullptr;
    va_list args;
    va_start(args, format);
    TSString* result = set_formatted(ts, scratch, format, args);
    va_end(args);
    zor_free(scratch);
    return result;
}

int ts_clamp(int64_t value, int limit)
{
    return int(value < -limit ? -limit : value > limit ? limit : value);
}

TSString* TSNew(void)
{
    TSString* ts = static_cast<TSString*>(zor_malloc(sizeof(TSString)));
    return ts ? TSClear(ts) : nullptr;
}

TSString* TSClear(TSString* ts)
{
    ts->data = nullptr;
    ts->size = 0;
    return ts;
}

TSString* TSInit(TSString* ts)
{
    zor_free(ts->data);
    return TSClear(ts);
}

void TSFree(TSString* ts)
{
    TSInit(ts);
    zor_free(ts);
}

TSString* TSClone(const wchar_t* text)
{
    return TSCloneN(text, int32_t(wcslen(text)));
}

TSString* TSCloneN(const wchar_t* text, int32_t n)
{
    TSString* ts = TSNew();
    if (!ts)
        return nullptr;
    if (!TSSetStrN(ts, text, n)) {
        TSFree(ts);
        return nullptr;
    }
    return ts;
}

int TSEmpty(const TSString* ts) { return ts->size == 0; }

int32_t TSGetLen(const TSString* ts) { return ts->size ? ts->size - 1 : 0; }

wchar_t* TSGetStr(const TSString* ts)
{
    return ts->size ? ts->data : const_cast<wchar_t*>(g_emptyText);
}

wchar_t TSGetChar(const TSString* ts, int32_t index)
{
    return index >= 0 && index < ts->size ? ts->data[index] : 0;
}

int TSCmp(const TSString* a, const TSString* b)
{
    if (!a->size)
        return b->size ? -1 : 0;
    if (!b->size)
        return 1;
    for (const wchar_t *p = a->data, *q = b->data;; ++p, ++q) {
        if (*p != *q)
            return uint16_t(*p) < uint16_t(*q) ? -1 : 1;
        if (!*p)
            return 0;
    }
}

TSString* TSCopy(TSString* dst, const TSString* src)
{
    if (dst == src)
        return dst;
    if (!src->size)
        return TSInit(dst);
    if (!resize_block(dst, src->size))
        return nullptr;
    memmove(dst->data, src->data, size_t(src->size) * sizeof(wchar_t));
    dst->size = src->size;
    return dst;
}

TSString* TSSetStr(TSString* ts, const wchar_t* text)
{
    return TSSetStrN(ts, text, int32_t(wcslen(text)));
}

// A source in the block moves or goes with the block when it is resized.
int32_t ts_offset_in_block(const TSString* ts, const wchar_t* text)
{
    return ts->size && text >= ts->data && text < ts->data + ts->size ? int32_t(text - ts->data) : -1;
}

TSString* TSSetStrN(TSString* ts, const wchar_t* text, int32_t n)
{
    // A source in the block is moved to its front first, which the resize keeps.
    const bool inBlock = n && ts_offset_in_block(ts, text) >= 0;
    if (inBlock)
        memmove(ts->data, text, size_t(n) * sizeof(wchar_t));
    if (!TSSetLen(ts, n))
        return nullptr;
    if (n && !inBlock)
        memmove(ts->data, text, size_t(n) * sizeof(wchar_t));
    return ts;
}

TSString* TSSetLen(TSString* ts, int32_t n)
{
    if (n == 0)
        return TSInit(ts);
    if (!resize_block(ts, n + 1))
        return nullptr;
    ts->data[n] = 0;
    ts->size = n + 1;
    return ts;
}

TSString* TSFromCh(TSString* ts, wchar_t ch) { return TSSetStrN(ts, &ch, 1); }

TSString* TSCStr(TSString* ts, double value, const wchar_t* format)
{
    return ts_set_formatted_on_heap(ts, format, value);
}

TSString* TSStr(TSString* ts, double value, int32_t width, int32_t precision)
{
    const int64_t digits = precision < 0 ? -int64_t(precision) : precision;
    const int kept = ts_clamp(digits, kMaxFormatPrecision);
    // The text gets shorter by the digits dropped; a right-justified field
    // shrinks by as much, so that its padding stays the same.
    int64_t field = width;
    if (field > 0)
        field = field > digits - kept ? field - (digits - kept) : 0;
    return ts_set_formatted(ts, precision < 0 ? L"%*.*e" : L"%*.*f", ts_clamp(field, kMaxFormatWidth),
                            kept, value);
}

TSString* TSAdd(TSString* dst, const TSString* src)
{
    int32_t oldLen = TSGetLen(dst);
    int32_t newSize = oldLen + 1 + TSGetLen(src);
    if (newSize == 1)
        return dst;
    int32_t srcUnits = src->size;  // read before dst's block may move
    if (!resize_block(dst, newSize))
        return nullptr;
    // src's text is read after the reallocation: when src is dst it moved too.
    if (srcUnits)
        memmove(dst->data + oldLen, src->data, size_t(srcUnits) * sizeof(wchar_t));
    else
        dst->data[oldLen] = 0;
    dst->size = newSize;
    return dst;
}

TSString* TSAddStr(TSString* ts, const wchar_t* text)
{
    return TSAddStrN(ts, text, int32_t(wcslen(text)));
}

TSString* TSAddStrN(TSString* ts, const wchar_t* text, int32_t n)
{
    int32_t oldLen = TSGetLen(ts);
    int32_t newSize = oldLen + 1 + n;
    if (newSize == 1)
        return ts;
    const int32_t offset = ts_offset_in_block(ts, text);
    if (!resize_block(ts, newSize))
        return nullptr;
    if (offset >= 0)
        text = ts->data + offset;
    memmove(ts->data + oldLen, text, size_t(n) * sizeof(wchar_t));
    ts->data[oldLen + n] = 0;
    ts->size = newSize;
    return ts;
}
