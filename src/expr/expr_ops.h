// The seam between the run loop and the code that gives each operator and
// conversion its meaning, and between the compiler and the cross-reference. The run loop dispatches on the opcode, pops the operands
// and hands them over; the operator code works by type and writes the
// instruction's own slot.
#pragma once

#include <array>

#include "expr_op_facts.h"
#include "zor_expr.h"

// One operator or conversion. `self` is the executing instruction (its
// operand is the result slot; EOP_IDX and the assignment family may aim
// self->operand.value elsewhere). `x` is the left or only operand, `y` the
// right one of a binary operator and null otherwise; both point into the
// instruction array and have already been popped. Returns 0 to go on, or
// the code that ends the run. Must not touch the value stack.
typedef ZORStatus (*ExprOpHandler)(ExprContext* expr, ExprInstr* self, ExprInstr* x, ExprInstr* y);

// Handlers are made per opcode and per type, EXT_Void to EXT_Date, so that a
// run dispatches once and no handler switches on the type again.
constexpr uint32_t kExprDispatchTypes = EXT_Date + 1;
typedef std::array<ExprOpHandler, kExprDispatchTypes> ExprOpHandlerRow;

// Indexed by opcode, EOP_END to EOP_TO_STRING, then by expr_dispatch_type.
// The entries of EOP_END, EOP_NOP and EOP_PAR are never called (the run loop
// does those itself).
extern const std::array<ExprOpHandlerRow, EOP_TO_STRING + 1> kExprOpHandlers;

// The type of the value an operand instruction left in its slot: a
// conversion's record names the type it converted from.
inline uint32_t expr_value_type(const ExprInstr* x)
{
    const uint32_t converted = x->opcode < kExprOpCount ? expr_converts_to(x->opcode) : 0;
    return converted != EXT_Void ? converted : x->operand.type;
}

// The column of kExprOpHandlers: the record's own type, where types above
// EXT_Date do nothing, as EXT_Void does. Comparisons and the logical
// operators, whose record says EXT_Long, look at their operand themselves.
inline uint32_t expr_dispatch_type(const ExprInstr* self)
{
    const uint32_t type = self->operand.type;
    return type <= EXT_Date ? type : uint32_t(EXT_Void);
}

// How many operands each opcode pops before its handler runs.
inline constexpr auto kExprOpArity = [] {
    std::array<uint8_t, kExprOpCount> arity = {};
    for (uint32_t op = 0; op < kExprOpCount; ++op)
        arity[op] = kExprOpFacts[op].arity;
    return arity;
}();

// The compiler calls this after each assignment operator and each prefix or
// postfix step, with the target: the symbol's own operand inside the symbol
// tree. It must do nothing while expr->xrefOn is clear.
void expr_record_assignment(ExprContext* expr, ExprOperand* target);

// Replaces xrefTree and xrefList by new, empty ones (ExprInit and
// ExprXRefOn); false when either could not be made.
bool expr_xref_new_tables(ExprContext* expr);
