// Operators on the four number types, written once over the type. Integer
// arithmetic runs in 32 unsigned bits and is cut back to the type, which is
// what makes every integer operator wrap instead of overflowing. Inline, so
// that a handler made for one opcode keeps only that opcode's branch.
#pragma once

#include <math.h>
#include <stdint.h>

#include <type_traits>

#include "../frame/zor_platform.h"
#include "zor_expr.h"
#include "zor_status.h"

namespace zor_expr {
namespace numeric {

template <class T>
constexpr bool kFloat = std::is_floating_point<T>::value;

enum class Kind { Add, Sub, Mul, Div, Mod, And, Or, Xor, Shl, Shr };

// The assignment forms share the kind of their plain operator.
constexpr Kind kind_of(uint32_t op)
{
    switch (op) {
    case EOP_ADD: case EOP_ADDASS: return Kind::Add;
    case EOP_SUB: case EOP_SUBASS: return Kind::Sub;
    case EOP_MUL: case EOP_MULASS: return Kind::Mul;
    case EOP_DIV: case EOP_DIVASS: return Kind::Div;
    case EOP_MOD: case EOP_MODASS: return Kind::Mod;
    case EOP_AND: case EOP_ANDASS: return Kind::And;
    case EOP_OR: case EOP_ORASS: return Kind::Or;
    case EOP_XOR: case EOP_XORASS: return Kind::Xor;
    case EOP_SHL: case EOP_SHLASS: return Kind::Shl;
    default: return Kind::Shr;
    }
}

template <class T>
ZOR_FORCEINLINE T wrapping(uint32_t value)
{
    return T(value);
}

template <class T>
ZOR_FORCEINLINE T plus(T x, T y)
{
    if constexpr (kFloat<T>)
        return x + y;
    else
        return wrapping<T>(uint32_t(x) + uint32_t(y));
}

template <class T>
ZOR_FORCEINLINE T minus(T x, T y)
{
    if constexpr (kFloat<T>)
        return x - y;
    else
        return wrapping<T>(uint32_t(x) - uint32_t(y));
}

// Division of the one Long quotient that does not fit, -2147483648 / -1,
// wraps like every other integer result: quotient -2147483648, remainder 0.
template <class T>
ZOR_FORCEINLINE T quotient(T x, T y)
{
    if constexpr (std::is_same<T, int32_t>::value) {
        if (ZOR_UNLIKELY(y == -1))
            return wrapping<T>(0u - uint32_t(x));
    }
    return T(x / y);
}

template <class T>
ZOR_FORCEINLINE T remainder(T x, T y)
{
    if constexpr (kFloat<T>) {
        return fmod(x, y);
    } else {
        if constexpr (std::is_same<T, int32_t>::value) {
            if (ZOR_UNLIKELY(y == -1))
                return 0;
        }
        return T(x % y);
    }
}

// Counts are masked to five bits. A Char is shifted as a 32-bit number and
// cut back, so counts of 16 and more clear it in both directions.
template <class T>
ZOR_FORCEINLINE T shifted(Kind kind, T x, int32_t count)
{
    uint32_t c = uint32_t(count) & 31;
    if (kind == Kind::Shl)
        return wrapping<T>(uint32_t(x) << c);
    return T(x >> c);  // Long keeps its sign bit, the unsigned types take zeros
}

template <class T>
ZOR_FORCEINLINE ZORStatus compute(Kind kind, T x, const void* yp, T* out)
{
    if (kind == Kind::Shl || kind == Kind::Shr) {
        if constexpr (kFloat<T>)
            return ZOR_E_UNEXPECTED;
        else
            *out = shifted<T>(kind, x, *static_cast<const int32_t*>(yp));
        return ZOR_S_OK;
    }
    T y = *static_cast<const T*>(yp);
    switch (kind) {
    case Kind::Add: *out = plus(x, y); break;
    case Kind::Sub: *out = minus(x, y); break;
    case Kind::Mul:
        if constexpr (kFloat<T>)
            *out = x * y;
        else
            *out = wrapping<T>(uint32_t(x) * uint32_t(y));
        break;
    case Kind::Div:
    case Kind::Mod:
        // 0.0 == -0.0 holds and a NaN compares unequal, so one test serves
        // all types: both zeros stop the run, a NaN divisor passes.
        if (y == T(0))
            return ZOR_DISP_E_DIVBYZERO;
        *out = kind == Kind::Div ? quotient(x, y) : remainder(x, y);
        break;
    default:
        if constexpr (kFloat<T>) {
            return ZOR_E_UNEXPECTED;
        } else {
            uint32_t a = uint32_t(x), b = uint32_t(y);
            *out = wrapping<T>(kind == Kind::And ? a & b : kind == Kind::Or ? a | b : a ^ b);
        }
    }
    return ZOR_S_OK;
}

// A double outside the target's range gives the processor's "integer
// indefinite" pattern, as the truncating instructions do, computed here
// without undefined behaviour.
ZOR_FORCEINLINE int64_t cut_to_int64(double d)
{
    if (d >= -9223372036854775808.0 && d < 9223372036854775808.0)
        return int64_t(d);
    return INT64_MIN;
}

ZOR_FORCEINLINE int32_t cut_to_int32(double d)
{
    if (d > -2147483649.0 && d < 2147483648.0)
        return int32_t(d);
    return INT32_MIN;
}

// No conversion tests for range. Integers pass as their 32 bits (a Char
// zero-extends, a Char target keeps the low 16); a double is cut toward zero,
// through 64 bits for a ULong so that 3000000000.0 survives.
template <class To, class From>
ZOR_FORCEINLINE To converted(From v)
{
    if constexpr (kFloat<To>)
        return To(v);
    else if constexpr (!kFloat<From>)
        return To(uint32_t(v));
    else if constexpr (std::is_same<To, uint32_t>::value)
        return uint32_t(uint64_t(cut_to_int64(v)));
    else
        return To(cut_to_int32(v));
}

template <class T>
ZOR_FORCEINLINE int32_t compared(uint32_t op, T x, T y)
{
    switch (op) {
    case EOP_EQU: return x == y;
    case EOP_NEQ: return x != y;
    case EOP_LT: return x < y;
    case EOP_GT: return x > y;
    case EOP_LEQ: return x <= y;
    default: return x >= y;
    }
}

}

// A conversion into the type it starts from is never laid down.
template <class To, class From>
ZOR_FORCEINLINE ZORStatus convert_number(void* r, const void* x)
{
    if constexpr (std::is_same<To, From>::value) {
        return ZOR_E_UNEXPECTED;
    } else {
        *static_cast<To*>(r) = numeric::converted<To>(*static_cast<const From*>(x));
        return ZOR_S_OK;
    }
}

template <class T>
ZOR_FORCEINLINE ZORStatus numeric_op(uint32_t op, void* r, void* x, const void* y)
{
    using namespace numeric;
    T& a = *static_cast<T*>(x);
    switch (op) {
    case EOP_ASS:
        a = *static_cast<const T*>(y);
        return ZOR_S_OK;
    case EOP_MODASS:
        if constexpr (kFloat<T>)
            return ZOR_E_UNEXPECTED;
        return compute(Kind::Mod, a, y, &a);
    case EOP_MULASS: case EOP_DIVASS: case EOP_ADDASS: case EOP_SUBASS: case EOP_SHLASS:
    case EOP_SHRASS: case EOP_ANDASS: case EOP_XORASS: case EOP_ORASS:
        return compute(kind_of(op), a, y, &a);
    case EOP_OR: case EOP_XOR: case EOP_AND: case EOP_SHL: case EOP_SHR: case EOP_ADD:
    case EOP_SUB: case EOP_MUL: case EOP_DIV: case EOP_MOD:
        return compute(kind_of(op), a, y, static_cast<T*>(r));
    // Both sides are computed values, so no short cut is taken: a branch on
    // the data would be mispredicted whenever the truth of the left changes.
    case EOP_LOR:
        *static_cast<int32_t*>(r) = (a != T(0)) | (*static_cast<const T*>(y) != T(0));
        return ZOR_S_OK;
    case EOP_LAND:
        *static_cast<int32_t*>(r) = (a != T(0)) & (*static_cast<const T*>(y) != T(0));
        return ZOR_S_OK;
    case EOP_EQU: case EOP_NEQ: case EOP_LT: case EOP_GT: case EOP_LEQ: case EOP_GEQ:
        *static_cast<int32_t*>(r) = compared(op, a, *static_cast<const T*>(y));
        return ZOR_S_OK;
    case EOP_PREINC: a = plus(a, T(1)); return ZOR_S_OK;
    case EOP_PREDEC: a = minus(a, T(1)); return ZOR_S_OK;
    case EOP_POSTINC: *static_cast<T*>(r) = a; a = plus(a, T(1)); return ZOR_S_OK;
    case EOP_POSTDEC: *static_cast<T*>(r) = a; a = minus(a, T(1)); return ZOR_S_OK;
    case EOP_POS: *static_cast<T*>(r) = a; return ZOR_S_OK;
    case EOP_NEG:
        // For a double this flips the sign bit, so 0.0 becomes -0.0.
        if constexpr (kFloat<T>)
            *static_cast<T*>(r) = -a;
        else
            *static_cast<T*>(r) = minus(T(0), a);
        return ZOR_S_OK;
    case EOP_LNOT:
        *static_cast<int32_t*>(r) = a == T(0);  // a NaN is not zero: 0
        return ZOR_S_OK;
    case EOP_NOT:
        if constexpr (kFloat<T>)
            return ZOR_E_UNEXPECTED;
        else
            *static_cast<T*>(r) = wrapping<T>(~uint32_t(a));
        return ZOR_S_OK;
    default:
        return ZOR_E_UNEXPECTED;
    }
}

}
