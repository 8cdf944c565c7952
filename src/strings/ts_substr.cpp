// Substrings of a TS string into a second one. Each function empties `dst`
// first, so that every early return leaves it empty rather than stale.
#include "zor_ts.h"

#include <algorithm>

TSString* TSLeft(TSString* dst, const TSString* src, int32_t n)
{
    TSInit(dst);
    if (TSEmpty(src) || n < 0)
        return dst;
    if (n < src->size)
        return TSSetStrN(dst, src->data, n);
    return TSCopy(dst, src);
}

TSString* TSRight(TSString* dst, const TSString* src, int32_t n)
{
    TSInit(dst);
    if (TSEmpty(src) || n < 0)
        return dst;
    int32_t first = TSGetLen(src) - n;
    if (first < 0)
        return TSCopy(dst, src);
    return TSSetStrN(dst, src->data + first, n);
}

TSString* TSMid(TSString* dst, const TSString* src, int32_t start, int32_t count)
{
    TSInit(dst);
    int32_t length = TSGetLen(src);
    // 64 bits: start + count must not wrap for counts near the 32-bit limit.
    int64_t from = start < 0 ? int64_t(start) + length : start;
    int64_t to = count < 0 ? length : from + count;
    from = std::max<int64_t>(from, 0);
    to = std::min<int64_t>(to, length);
    if (from >= to)
        return dst;
    return TSSetStrN(dst, src->data + from, int32_t(to - from));
}

TSString* TSSubStr(TSString* dst, const TSString* src, int32_t start, int32_t count)
{
    TSInit(dst);
    if (TSEmpty(src) || start < 0 || count < 0 || int64_t(start) + count > TSGetLen(src))
        return dst;
    return TSSetStrN(dst, src->data + start, count);
}
