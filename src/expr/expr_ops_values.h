// What one operator does to values, apart from where the values come from.
// The run loop finds the slots (operand records, targets, the instruction's
// own slot) and hands them here; these routines only read and write them.
#pragma once

#include <stdint.h>

#include <type_traits>

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
// `Type` is the type the operator works by, fixed per handler so that no
// run-time switch on it is left; EXT_Void does nothing and succeeds.
template <uint32_t Type>
struct Number {
    using type = void;
};
template <> struct Number<EXT_Char> { using type = uint16_t; };
template <> struct Number<EXT_Long> { using type = int32_t; };
template <> struct Number<EXT_ULong> { using type = uint32_t; };
template <> struct Number<EXT_Double> { using type = double; };

template <uint32_t Type>
constexpr bool kIsNumber = !std::is_void<typename Number<Type>::type>::value;

template <uint32_t Op, uint32_t Type>
ZOR_FORCEINLINE ZORStatus value_op(void* r, void* x, const void* y)
{
    if constexpr (kIsNumber<Type>)
        return numeric_op<typename Number<Type>::type>(Op, r, x, y);
    else if constexpr (Type == EXT_BitField)
        return bitfield_op(Op, r, x, y);
    else if constexpr (Type == EXT_String)
        return string_op(Op, r, x, y);
    else if constexpr (Type == EXT_Date)
        return date_op(Op, r, x, y);
    else
        return ZOR_S_OK;
}

// r of a bit field or a string from x of type `from`; the number targets
// are converted inline by the run loop's handlers.
ZORStatus value_convert(uint32_t op, uint32_t from, void* r, const void* x);

}
