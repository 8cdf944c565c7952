// The run loop's handlers: each finds the slots an operator works on (its
// own result slot, the target of an assignment, the element behind an index)
// and leaves the arithmetic to the value routines.
#include "expr_ops.h"
#include "expr_ops_values.h"
#include "../frame/zor_platform.h"

#include <array>
#include <utility>

using namespace zor_expr;

namespace {

// The right operand's slot, for the opcodes that have one.
template <uint32_t Op>
ZOR_FORCEINLINE const void* right(const ExprInstr* y)
{
    return kExprOpArity[Op] == 2 ? y->operand.value : nullptr;
}

// Value operators: the run loop has chosen the type from the record.
template <uint32_t Op, uint32_t Type>
ZORStatus value_operator(ExprContext*, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    return value_op<Op, Type>(self->operand.value, x->operand.value, right<Op>(y));
}

// Comparisons and the logical operators carry EXT_Long as their own type and
// go by the type of what they compare, known only once the operand is popped.
template <uint32_t Op>
ZORStatus truth_operator(ExprContext*, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    void* const r = self->operand.value;
    void* const left = x->operand.value;
    const void* const right_value = right<Op>(y);
    // Tests rather than a jump: the two common types go by predicted branches.
    const uint32_t type = expr_value_type(x);
    if (type == EXT_Double)
        return value_op<Op, EXT_Double>(r, left, right_value);
    if (type == EXT_Long)
        return value_op<Op, EXT_Long>(r, left, right_value);
    switch (type) {
    case EXT_Char: return value_op<Op, EXT_Char>(r, left, right_value);
    case EXT_ULong: return value_op<Op, EXT_ULong>(r, left, right_value);
    case EXT_BitField: return value_op<Op, EXT_BitField>(r, left, right_value);
    case EXT_String: return value_op<Op, EXT_String>(r, left, right_value);
    case EXT_Date: return value_op<Op, EXT_Date>(r, left, right_value);
    default: return ZOR_S_OK;
    }
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
template <uint32_t Op, uint32_t Type>
ZORStatus assignment(ExprContext* expr, ExprInstr* self, ExprInstr* x, ExprInstr* y)
{
    if (ZOR_UNLIKELY(is_bit_of_field(expr, x)))
        return ZOR_E_UNEXPECTED;
    void* target = x->operand.value;
    self->operand.value = target;
    return value_op<Op, Type>(nullptr, target, right<Op>(y));
}

// Postfix steps keep the old value in their own slot and change the target.
template <uint32_t Op, uint32_t Type>
ZORStatus postfix_step(ExprContext* expr, ExprInstr* self, ExprInstr* x, ExprInstr*)
{
    if (ZOR_UNLIKELY(is_bit_of_field(expr, x)))
        return ZOR_E_UNEXPECTED;
    return value_op<Op, Type>(self->operand.value, x->operand.value, nullptr);
}

// `From` is the record's own type, the source.
template <uint32_t Op, uint32_t From>
ZORStatus conversion(ExprContext*, ExprInstr* self, ExprInstr* x, ExprInstr*)
{
    constexpr uint32_t kTo = expr_converts_to(Op);
    if constexpr (!kIsNumber<kTo>)
        return value_convert(Op, From, self->operand.value, x->operand.value);
    else if constexpr (kIsNumber<From>)
        return convert_number<typename Number<kTo>::type, typename Number<From>::type>(
            self->operand.value, x->operand.value);
    else
        return From == EXT_Void ? ZOR_S_OK : ZOR_E_UNEXPECTED;
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
    switch (expr_value_type(x)) {
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

// The run loop does the ends, the operands and the calls itself; their
// entries are never called.
template <uint32_t Op, uint32_t Type>
constexpr ExprOpHandler handler()
{
    constexpr ExprOpClass kKind = kExprOpFacts[Op].kind;
    if constexpr (kKind == ExprOpClass::Assign)
        return assignment<Op, Type>;
    else if constexpr (kKind == ExprOpClass::PostStep)
        return postfix_step<Op, Type>;
    else if constexpr (kKind == ExprOpClass::Value)
        return value_operator<Op, Type>;
    else if constexpr (kKind == ExprOpClass::Truth)
        return truth_operator<Op>;
    else if constexpr (kKind == ExprOpClass::Index)
        return index_operator;
    else if constexpr (kKind == ExprOpClass::Convert)
        return conversion<Op, Type>;
    else
        return not_implemented;
}

template <uint32_t Op, size_t... Type>
constexpr ExprOpHandlerRow row(std::index_sequence<Type...>)
{
    return {{handler<Op, uint32_t(Type)>()...}};
}

template <size_t... Op>
constexpr std::array<ExprOpHandlerRow, sizeof...(Op)> table(std::index_sequence<Op...>)
{
    return {{row<uint32_t(Op)>(std::make_index_sequence<kExprDispatchTypes>())...}};
}

}

const std::array<ExprOpHandlerRow, kExprOpCount> kExprOpHandlers =
    table(std::make_index_sequence<kExprOpCount>());
