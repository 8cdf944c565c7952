// The run loop's handlers: each finds the slots an operator works on (its
// own result slot, the target of an assignment, the element behind an index)
// and leaves the arithmetic to the value routines.
#include "expr_ops.h"
#include "expr_ops_values.h"
#include "../frame/zor_platform.h"

using namespace zor_expr;

namespace {

// The type of the value an operand instruction left in its slot: a
// conversion's record names the type it converted from.
ZOR_FORCEINLINE uint32_t value_type(const ExprInstr* x)
{
    return is_conversion(x->opcode) ? converted_type(x->opcode) : x->operand.type;
}

// The right operand's slot, for the opcodes that have one.
template <uint32_t Op>
ZOR_FORCEINLINE const void* right(const ExprInstr* y)
{
    return kExprOpArity[Op] == 2 ? y->operand.value : nullptr;
}

template <uint32_t Op>
ZORStatus value_operator(ExprContext*, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    return value_op<Op>(self->operand.type, self->operand.value, x->operand.value, right<Op>(y));
}

// Comparisons and the logical operators carry EXT_Long as their own type and
// go by the type of what they compare.
template <uint32_t Op>
ZORStatus truth_operator(ExprContext*, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    return value_op<Op>(value_type(x), self->operand.value, x->operand.value, right<Op>(y));
}

// Constants and temporaries, and nothing else, live in the data arena.
bool in_data_arena(const ExprContext* expr, const void* slot)
{
    const uint8_t* p = static_cast<const uint8_t*>(slot);
    return expr->dataArena && p >= expr->dataArena && p < expr->dataArena + expr->dataArenaUsed;
}

// An index is an assignment's target in the arena only when it is a bit of a
// bit field (an index on a value without a variable is no L-value): the
// field is the target the compiler recorded, and a single bit has no
// address, so writing would reach the index's own slot or overrun it.
ZOR_FORCEINLINE bool is_bit_of_field(const ExprContext* expr, const ExprInstr* x)
{
    return x->opcode == EOP_IDX && in_data_arena(expr, x->operand.value);
}

// The assignment family and the prefix steps write the slot the left operand
// addresses (a variable, or the element an index aimed at), and aim their own
// record there so that whatever reads the result reaches that slot.
template <uint32_t Op>
ZORStatus assignment(ExprContext* expr, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    uint32_t type = self->operand.type;
    if (ZOR_UNLIKELY(is_bit_of_field(expr, x)))
        return ZOR_E_UNEXPECTED;
    void* target = x->operand.value;
    self->operand.value = target;
    return value_op<Op>(type, nullptr, target, right<Op>(y));
}

// Postfix steps keep the old value in their own slot and change the target.
template <uint32_t Op>
ZORStatus postfix_step(ExprContext* expr, ExprInstr* self, ExprInstr* x, ExprInstr*)
{
    uint32_t type = self->operand.type;
    if (ZOR_UNLIKELY(is_bit_of_field(expr, x)))
        return ZOR_E_UNEXPECTED;
    return value_op<Op>(type, self->operand.value, x->operand.value, nullptr);
}

ZORStatus conversion(ExprContext*, ExprInstr* self, ExprInstr* x, ExprInstr*)
{
    return value_convert(self->opcode, self->operand.type, self->operand.value, x->operand.value);
}

ZORStatus not_implemented(ExprContext*, ExprInstr*, ExprInstr*, ExprInstr*)
{
    return ZOR_E_NOTIMPL;
}

// A number variable is taken as an array of its type and the instruction is
// aimed at the element, unchecked: the caller who defined the variable gave
// the storage. A base with no variable behind it (a constant, a sum, a
// function result) has only its own slot, which index 0 gives.
ZORStatus index_element(ExprContext* expr, ExprInstr* self, ExprInstr* x, int32_t index,
                        uint32_t width)
{
    uint8_t* base = static_cast<uint8_t*>(x->operand.value);
    if (in_data_arena(expr, base) && index != 0)
        return ZOR_DISP_E_BADINDEX;
    self->operand.value = base + intptr_t(index) * intptr_t(width);
    return ZOR_S_OK;
}

ZORStatus index_operator(ExprContext* expr, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    int32_t index = *static_cast<const int32_t*>(y->operand.value);
    switch (value_type(x)) {
    case EXT_Char: return index_element(expr, self, x, index, sizeof(uint16_t));
    case EXT_Long:
    case EXT_ULong: return index_element(expr, self, x, index, sizeof(uint32_t));
    case EXT_Double: return index_element(expr, self, x, index, sizeof(double));
    case EXT_BitField: {
        if (index < 0 || index > 63)
            return ZOR_DISP_E_BADINDEX;
        const ExprBitField* field = static_cast<const ExprBitField*>(x->operand.value);
        uint32_t word = index < 32 ? field->lo : field->hi;
        *static_cast<int32_t*>(self->operand.value) = (word >> (index & 31)) & 1;
        return ZOR_S_OK;
    }
    case EXT_String: {
        const TSString* text = static_cast<const TSString*>(x->operand.value);
        if (index < 0 || index >= TSGetLen(text))
            return ZOR_DISP_E_BADINDEX;
        *static_cast<uint16_t*>(self->operand.value) = uint16_t(TSGetChar(text, index));
        return ZOR_S_OK;
    }
    case EXT_Date: return ZOR_E_UNEXPECTED;
    default: return ZOR_S_OK;
    }
}

}

const ExprOpHandler kExprOpHandlers[EOP_TO_STRING + 1] = {
    not_implemented,  // EOP_END: the run loop's
    not_implemented,  // EOP_NOP: the run loop's
    assignment<EOP_ASS>, assignment<EOP_MULASS>, assignment<EOP_DIVASS>,
    assignment<EOP_MODASS>, assignment<EOP_ADDASS>, assignment<EOP_SUBASS>,
    assignment<EOP_SHLASS>, assignment<EOP_SHRASS>, assignment<EOP_ANDASS>,
    assignment<EOP_XORASS>, assignment<EOP_ORASS>,
    truth_operator<EOP_LOR>, truth_operator<EOP_LAND>,
    value_operator<EOP_OR>, value_operator<EOP_XOR>, value_operator<EOP_AND>,
    truth_operator<EOP_EQU>, truth_operator<EOP_NEQ>, truth_operator<EOP_LT>,
    truth_operator<EOP_GT>, truth_operator<EOP_LEQ>, truth_operator<EOP_GEQ>,
    value_operator<EOP_SHL>, value_operator<EOP_SHR>, value_operator<EOP_ADD>,
    value_operator<EOP_SUB>, value_operator<EOP_MUL>, value_operator<EOP_DIV>,
    value_operator<EOP_MOD>,
    assignment<EOP_PREINC>, assignment<EOP_PREDEC>,
    value_operator<EOP_POS>, value_operator<EOP_NEG>, truth_operator<EOP_LNOT>,
    value_operator<EOP_NOT>,
    not_implemented, not_implemented,  // DRF, ADR
    postfix_step<EOP_POSTINC>, postfix_step<EOP_POSTDEC>,
    index_operator,
    not_implemented,  // EOP_PAR: the run loop's
    not_implemented, not_implemented,  // DFA, IFA
    conversion, conversion, conversion, conversion, conversion, conversion,
};
