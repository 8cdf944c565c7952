// The six conversions. None tests for range; the number rules are shared
// with the run loop's inline dispatch.
#include <string.h>

#include "expr_ops_values.h"
#include "zor_ts.h"

namespace zor_expr {
namespace {

template <class To>
ZORStatus to_number(uint32_t from, void* r, const void* x)
{
    switch (from) {
    case EXT_Char: return convert_number<To, uint16_t>(r, x);
    case EXT_Long: return convert_number<To, int32_t>(r, x);
    case EXT_ULong: return convert_number<To, uint32_t>(r, x);
    case EXT_Double: return convert_number<To, double>(r, x);
    default: return ZOR_E_UNEXPECTED;
    }
}

// An integer source goes into the low word; a double keeps its bytes, so the
// field holds the bit pattern, not a number.
ZORStatus to_bitfield(uint32_t from, void* r, const void* x)
{
    ExprBitField* out = static_cast<ExprBitField*>(r);
    switch (from) {
    case EXT_Char: *out = {0, *static_cast<const uint16_t*>(x)}; return ZOR_S_OK;
    case EXT_Long:
    case EXT_ULong: *out = {0, *static_cast<const uint32_t*>(x)}; return ZOR_S_OK;
    case EXT_Double: memcpy(r, x, sizeof(ExprBitField)); return ZOR_S_OK;
    default: return ZOR_E_UNEXPECTED;
    }
}

}

ZORStatus value_convert(uint32_t op, uint32_t from, void* r, const void* x)
{
    if (op == EOP_TO_STRING) {
        if (from != EXT_Char)
            return ZOR_E_INVALID_DATA;
        return TSFromCh(static_cast<TSString*>(r), wchar_t(*static_cast<const uint16_t*>(x)))
                   ? ZOR_S_OK
                   : ZOR_E_OUTOFMEMORY;
    }
    if (from == EXT_Void || from > EXT_Date)
        return ZOR_S_OK;
    switch (op) {
    case EOP_TO_CHAR: return to_number<uint16_t>(from, r, x);
    case EOP_TO_LONG: return to_number<int32_t>(from, r, x);
    case EOP_TO_ULONG: return to_number<uint32_t>(from, r, x);
    case EOP_TO_DOUBLE: return to_number<double>(from, r, x);
    default: return to_bitfield(from, r, x);
    }
}

}
