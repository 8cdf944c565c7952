// Conversion between TS strings and numbers, and the runtime locale that
// governs case, the decimal point and number reading.
#include "zor_ts.h"

#include <locale.h>
#include <stdlib.h>
#include <wchar.h>

#include "ts_shared.h"

namespace {

// Far more than the longest decimal text of a 32-bit value and its sign.
constexpr int kIntegerScratch = 40;

template <class Integer, class Writer>
TSString* set_integer(TSString* ts, Integer value, Writer write)
{
    wchar_t scratch[kIntegerScratch] = {};
    write(value, scratch, 10);
    return TSSetStr(ts, scratch);
}

}

double TSVal(const TSString* ts) { return wcstod(TSGetStr(ts), nullptr); }

TSString* TSFromInt(TSString* ts, int32_t value) { return set_integer(ts, int(value), _itow); }

TSString* TSFromLong(TSString* ts, int32_t value) { return set_integer(ts, long(value), _ltow); }

TSString* TSFromULong(TSString* ts, uint32_t value)
{
    return set_integer(ts, static_cast<unsigned long>(value), _ultow);
}

TSString* TSFromDouble(TSString* ts, double value) { return ts_set_formatted(ts, L"%lf", value); }

TSString* TSFromDoubleFmt(TSString* ts, double value, int32_t decimals)
{
    // A negative precision means none given; not every runtime reads it so.
    if (decimals < 0)
        return TSFromDouble(ts, value);
    return ts_set_formatted(ts, L"%.*lf", ts_clamp(decimals, kMaxFormatPrecision), value);
}

wchar_t* TSSetLocale(int category, const wchar_t* locale) { return _wsetlocale(category, locale); }
