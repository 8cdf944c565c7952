// The six conversions. None tests for range: a double outside the target's
// range gives the processor's "integer indefinite" pattern, as the
// truncating instructions do, computed here without undefined behaviour.
#include <string.h>

#include "expr_ops_values.h"
#include "zor_ts.h"

namespace zor_expr {
namespace {

int64_t cut_to_int64(double d)
{
    if (d >= -9223372036854775808.0 && d < 9223372036854775808.0)
        return int64_t(d);
    return INT64_MIN;
}

int32_t cut_to_int32(double d)
{
    if (d > -2147483649.0 && d < 2147483648.0)
        return int32_t(d);
    return INT32_MIN;
}

// Integer sources as the unsigned 32 bits they hold; Char zero-extends.
bool integer_source(uint32_t from, const void* x, uint32_t* bits)
{
    switch (from) {
    case EXT_Char: *bits = *static_cast<const uint16_t*>(x); return true;
    case EXT_Long: case EXT_ULong: *bits = *static_cast<const uint32_t*>(x); return true;
    default: return false;
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
    // A conversion into the type it starts from is never laid down.
    if (converted_type(op) == from)
        return ZOR_E_UNEXPECTED;
    uint32_t bits = 0;
    bool integer = integer_source(from, x, &bits);
    if (!integer && from != EXT_Double)
        return ZOR_E_UNEXPECTED;
    double d = integer ? 0.0 : *static_cast<const double*>(x);
    switch (op) {
    case EOP_TO_CHAR:
        *static_cast<uint16_t*>(r) = uint16_t(integer ? bits : uint32_t(cut_to_int32(d)));
        break;
    case EOP_TO_LONG:
        *static_cast<int32_t*>(r) = integer ? int32_t(bits) : cut_to_int32(d);
        break;
    case EOP_TO_ULONG:
        *static_cast<uint32_t*>(r) = integer ? bits : uint32_t(uint64_t(cut_to_int64(d)));
        break;
    case EOP_TO_BITFIELD:
        // A double keeps its bytes: the field holds the bit pattern, not a number.
        if (integer)
            *static_cast<ExprBitField*>(r) = {0, bits};
        else
            memcpy(r, x, sizeof(ExprBitField));
        break;
    default:
        if (from == EXT_Long)
            *static_cast<double*>(r) = double(int32_t(bits));
        else
            *static_cast<double*>(r) = double(bits);
        break;
    }
    return ZOR_S_OK;
}

}
