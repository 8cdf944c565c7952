// What one operator does to values, apart from where the values come from.
// The run loop finds the slots (operand records, targets, the instruction's
// own slot) and hands them here; these routines only read and write them.
#pragma once

#include <stdint.h>

#include "expr_ops_numeric.h"
#include "zor_expr.h"
#include "zor_status.h"

namespace zor_expr {

ZORStatus bitfield_op(uint32_t op, void* r, void* x, const void* y);
ZORStatus string_op(uint32_t op, void* r, void* x, const void* y);
ZORStatus date_op(uint32_t op, void* r, void* x, const void* y);

// Operand roles by opcode:
//   value operators, comparisons, logicals: r = x op y (r of a comparison or
//     logical is an int32_t);
//   assignment family: x op= y, r unused (the result is x itself);
//   POS, NEG, LNOT, NOT: r = op x;
//   PREINC, PREDEC: x changes, r unused; POSTINC, POSTDEC: r = old x.
// Shift counts arrive as int32_t whatever the type of x.
// `type` is the type the operator works by; EXT_Void and types above
// EXT_Date do nothing and succeed.
template <uint32_t Op>
ZOR_FORCEINLINE ZORStatus value_op(uint32_t type, void* r, void* x, const void* y)
{
    switch (type) {
    case EXT_Char: return numeric_op<uint16_t>(Op, r, x, y);
    case EXT_Long: return numeric_op<int32_t>(Op, r, x, y);
    case EXT_ULong: return numeric_op<uint32_t>(Op, r, x, y);
    case EXT_Double: return numeric_op<double>(Op, r, x, y);
    case EXT_BitField: return bitfield_op(Op, r, x, y);
    case EXT_String: return string_op(Op, r, x, y);
    case EXT_Date: return date_op(Op, r, x, y);
    default: return ZOR_S_OK;
    }
}

// r of the conversion's target type from x of type `from`.
ZORStatus value_convert(uint32_t op, uint32_t from, void* r, const void* x);

// The type a conversion instruction leaves in its slot.
inline uint32_t converted_type(uint32_t op)
{
    switch (op) {
    case EOP_TO_CHAR: return EXT_Char;
    case EOP_TO_LONG: return EXT_Long;
    case EOP_TO_ULONG: return EXT_ULong;
    case EOP_TO_BITFIELD: return EXT_BitField;
    case EOP_TO_DOUBLE: return EXT_Double;
    default: return EXT_String;
    }
}

inline bool is_conversion(uint32_t op) { return op >= EOP_TO_CHAR && op <= EOP_TO_STRING; }

// Comparisons turn TSCmp and TDCmp's -1, 0, 1 into the answer.
inline int32_t order_matches(uint32_t op, int order)
{
    switch (op) {
    case EOP_EQU: return order == 0;
    case EOP_NEQ: return order != 0;
    case EOP_LT: return order == -1;
    case EOP_GT: return order == 1;
    case EOP_LEQ: return order != 1;
    default: return order != -1;
    }
}

inline bool is_comparison(uint32_t op) { return op >= EOP_EQU && op <= EOP_GEQ; }

}
