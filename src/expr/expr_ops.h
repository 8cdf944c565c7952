// The seam between the run loop and the code that gives each operator and
// conversion its meaning, and between the compiler or run loop and the
// cross-reference. The run loop dispatches on the opcode, pops the operands
// and hands them over; the operator code works by type and writes the
// instruction's own slot.
#pragma once

#include <array>

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
    static constexpr uint32_t kConverted[] = {EXT_Char, EXT_Long, EXT_ULong,
                                              EXT_BitField, EXT_Double, EXT_String};
    const uint32_t conversion = x->opcode - EOP_TO_CHAR;
    return conversion < sizeof kConverted / sizeof kConverted[0] ? kConverted[conversion]
                                                                  : x->operand.type;
}

// The column of kExprOpHandlers: the record's own type, where types above
// EXT_Date do nothing, as EXT_Void does. Comparisons and the logical
// operators, whose record says EXT_Long, look at their operand themselves.
inline uint32_t expr_dispatch_type(const ExprInstr* self)
{
    const uint32_t type = self->operand.type;
    return type <= EXT_Date ? type : uint32_t(EXT_Void);
}

// How many operands each opcode pops before its handler runs: 2 for the
// assignment family, the binary operators and EOP_IDX; 1 for the prefix and
// postfix steps, the unary operators, EOP_DFA, EOP_IFA and the conversions.
inline constexpr uint8_t kExprOpArity[EOP_TO_STRING + 1] = {
    0, 0,                                   // END, NOP
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,        // ASS .. ORASS
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,        // LOR .. GEQ
    2, 2, 2, 2, 2, 2, 2,                    // SHL .. MOD
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1,           // PREINC .. POSTDEC
    2, 0, 1, 1,                             // IDX, PAR, DFA, IFA
    1, 1, 1, 1, 1, 1                        // TO_CHAR .. TO_STRING
};

// The compiler calls this after each assignment operator and each prefix or
// postfix step, with the target: the symbol's own operand inside the symbol
// tree. It must do nothing while expr->xrefOn is clear.
void expr_record_assignment(ExprContext* expr, ExprOperand* target);

// The run loop calls this before an EOP_NOP whose xrefIndex is not -1 and
// whose storage is not EXS_Function pushes, with this run's `start`. It brings
// the variable up to date by running the earlier expressions that assign it
// and returns 0, or the code that ends the run. It may run user functions and
// nested evaluations, so it may grow (move) the value stack.
ZORStatus expr_refresh_variable(ExprContext* expr, int32_t xrefIndex, uint32_t start,
                                intptr_t userArg);

// Replaces xrefTree and xrefList by new, empty ones (ExprInit and
// ExprXRefOn); false when either could not be made.
bool expr_xref_new_tables(ExprContext* expr);
