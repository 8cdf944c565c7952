// The conversions into a bit field and into a string; none tests for range.
#include <string.h>

#include "expr_ops_values.h"
#include "zor_ts.h"

namespace zor_expr {
namespace {

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
    return from == EXT_Void ? ZOR_S_OK : to_bitfield(from, r, x);
}

}
