// Operators on bit fields. A field is two words, and apart from the shifts
// every operator treats them as two separate values: the ordering compares
// word by word and needs both words to agree, and truth looks at each word.
#include "expr_ops_values.h"

namespace zor_expr {
namespace {

ZORStatus bitwise(uint32_t op, const ExprBitField& x, const ExprBitField& y, ExprBitField* out)
{
    switch (op) {
    case EOP_AND: case EOP_ANDASS: *out = {x.hi & y.hi, x.lo & y.lo}; break;
    case EOP_OR: case EOP_ORASS: *out = {x.hi | y.hi, x.lo | y.lo}; break;
    default: *out = {x.hi ^ y.hi, x.lo ^ y.lo}; break;
    }
    return ZOR_S_OK;
}

// Shifted as one 64-bit number; counts outside 0..63 leave the field alone.
ZORStatus shift(uint32_t op, const ExprBitField& x, int32_t count, ExprBitField* out)
{
    if (count < 0 || count > 63)
        return ZOR_DISP_E_OVERFLOW;
    uint64_t v = uint64_t(x.hi) << 32 | x.lo;
    v = op == EOP_SHL || op == EOP_SHLASS ? v << count : v >> count;
    *out = {uint32_t(v >> 32), uint32_t(v)};
    return ZOR_S_OK;
}

int32_t compared(uint32_t op, const ExprBitField& x, const ExprBitField& y)
{
    switch (op) {
    case EOP_EQU: return x.hi == y.hi && x.lo == y.lo;
    case EOP_NEQ: return x.hi != y.hi || x.lo != y.lo;
    case EOP_LT: return x.hi <= y.hi && x.lo < y.lo;
    case EOP_GT: return x.hi >= y.hi && x.lo > y.lo;
    case EOP_LEQ: return x.hi <= y.hi && x.lo <= y.lo;
    default: return x.hi >= y.hi && x.lo >= y.lo;
    }
}

}

ZORStatus bitfield_op(uint32_t op, void* r, void* xp, const void* yp)
{
    ExprBitField& x = *static_cast<ExprBitField*>(xp);
    const ExprBitField& y = *static_cast<const ExprBitField*>(yp);
    ExprBitField* out = static_cast<ExprBitField*>(r);
    int32_t* truth = static_cast<int32_t*>(r);
    switch (op) {
    case EOP_ASS: x = y; return ZOR_S_OK;
    case EOP_ANDASS: case EOP_XORASS: case EOP_ORASS: return bitwise(op, x, y, &x);
    case EOP_AND: case EOP_XOR: case EOP_OR: return bitwise(op, x, y, out);
    case EOP_SHLASS: case EOP_SHRASS: return shift(op, x, *static_cast<const int32_t*>(yp), &x);
    case EOP_SHL: case EOP_SHR: return shift(op, x, *static_cast<const int32_t*>(yp), out);
    case EOP_LOR: *truth = (x.hi | x.lo | y.hi | y.lo) != 0; return ZOR_S_OK;
    case EOP_LAND: *truth = (x.hi != 0) & (x.lo != 0) & (y.hi != 0) & (y.lo != 0); return ZOR_S_OK;
    case EOP_EQU: case EOP_NEQ: case EOP_LT: case EOP_GT: case EOP_LEQ: case EOP_GEQ:
        *truth = compared(op, x, y);
        return ZOR_S_OK;
    case EOP_LNOT: *truth = !(x.hi && x.lo); return ZOR_S_OK;
    case EOP_NOT: *out = {~x.hi, ~x.lo}; return ZOR_S_OK;
    default: return ZOR_E_UNEXPECTED;
    }
}

}
