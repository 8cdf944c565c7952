// Operators on strings and dates. Their slots are persistent objects that an
// execution empties and refills, so only the copy and the append can fail,
// and a null from either means the heap ran out.
#include <type_traits>

#include "expr_ops_values.h"
#include "zor_td.h"
#include "zor_ts.h"

namespace zor_expr {
namespace {

TSString* copy(TSString* dst, const TSString* src) { return TSCopy(dst, src); }
TDDate* copy(TDDate* dst, const TDDate* src) { return TDCopy(dst, src); }
TSString* add(TSString* dst, const TSString* src) { return TSAdd(dst, src); }
TDDate* add(TDDate* dst, const TDDate* src) { return TDAdd(dst, src); }
int order(const TSString* a, const TSString* b) { return TSCmp(a, b); }
int order(const TDDate* a, const TDDate* b) { return TDCmp(a, b); }

ZORStatus done(const void* result) { return result ? ZOR_S_OK : ZOR_E_OUTOFMEMORY; }

// Both types take =, += and +, and compare; only a date subtracts.
template <class T>
ZORStatus object_op(uint32_t op, void* r, void* xp, const void* yp)
{
    T* x = static_cast<T*>(xp);
    const T* y = static_cast<const T*>(yp);
    T* out = static_cast<T*>(r);
    switch (op) {
    case EOP_ASS: return done(copy(x, y));
    case EOP_ADDASS: return done(add(x, y));
    case EOP_ADD: return done(copy(out, x) && add(out, y) ? out : nullptr);
    case EOP_SUB:
        if constexpr (std::is_same<T, TDDate>::value)
            return done(copy(out, x) && TDSubst(out, y) ? out : nullptr);
        return ZOR_E_UNEXPECTED;
    case EOP_EQU: case EOP_NEQ: case EOP_LT: case EOP_GT: case EOP_LEQ: case EOP_GEQ:
        *static_cast<int32_t*>(r) = numeric::compared(op, order(x, y), 0);
        return ZOR_S_OK;
    default: return ZOR_E_UNEXPECTED;
    }
}

}

ZORStatus string_op(uint32_t op, void* r, void* x, const void* y)
{
    return object_op<TSString>(op, r, x, y);
}

ZORStatus date_op(uint32_t op, void* r, void* x, const void* y)
{
    return object_op<TDDate>(op, r, x, y);
}

}
