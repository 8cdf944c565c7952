// Everything the engine knows about an opcode, in one row per opcode: its
// name, how many operands it pops, what kind of work it does, and where it
// comes from in the source text. The compiler's token tables, the operand
// counts of the run loop, the choice of handler, the linker and the
// workbench's disassembler all read this table, so that a new or moved
// opcode is one row to change. Header only and free of the object's
// internals: the workbench includes it too.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "zor_expr.h"
#include "zor_sym.h"

// What an instruction does when it runs, and so which slots it reads and
// writes.
enum class ExprOpClass : uint8_t {
    End,       // ends the run; writes nothing
    Operand,   // pushes its own slot, which already holds the value
    Assign,    // writes the target x addresses, aims its own record there
    PostStep,  // old value of x into its own slot, then changes x
    Value,     // own slot from x (and y), by its own record's type
    Truth,     // own slot, an EXT_Long, by the type of x
    Index,     // aims its own record at an element, or fills its own slot
    Call,      // the user function named on top; its result into its own slot
    Refused,   // pops its operand and fails: the syntax has no meaning yet
    Convert,   // own slot of the target type from x of the record's type
};

// Where the operator stands in the text; the compiler looks its tokens up by
// this.
enum class ExprOpForm : uint8_t { None, Binary, Assignment, Prefix, Postfix };

// The type a binary operator's result gets: the common type of its balanced
// operands, a truth value, or the left operand's type (the shifts, whose
// right side is forced to EXT_Long).
enum class ExprOpResult : uint8_t { Common, Long, Left };

struct ExprOpFacts {
    uint32_t       opcode;
    const wchar_t* name;
    uint8_t        arity;     // operands popped before the operator runs
    ExprOpClass    kind;
    ExprOpForm     form;
    int32_t        token;     // the scanner's code, 0 where the form is None
    uint8_t        priority;  // binary operators: 0 binds loosest
    ExprOpResult   result;    // binary operators
};

namespace expr_op_rows {
using C = ExprOpClass;
using F = ExprOpForm;
using R = ExprOpResult;
constexpr ExprOpFacts row(uint32_t op, const wchar_t* name, uint8_t arity, C kind, F form = F::None,
                          int32_t token = 0, uint8_t priority = 0, R result = R::Common)
{
    return {op, name, arity, kind, form, token, priority, result};
}
}

inline constexpr ExprOpFacts kExprOpFacts[] = {
    // clang-format off
    expr_op_rows::row(EOP_END,      L"EOP_END",      0, ExprOpClass::End),
    expr_op_rows::row(EOP_NOP,      L"EOP_NOP",      0, ExprOpClass::Operand),
    expr_op_rows::row(EOP_ASS,      L"EOP_ASS",      2, ExprOpClass::Assign, ExprOpForm::Assignment, '='),
    expr_op_rows::row(EOP_MULASS,   L"EOP_MULASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_MUL_ASSIGN),
    expr_op_rows::row(EOP_DIVASS,   L"EOP_DIVASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_DIV_ASSIGN),
    expr_op_rows::row(EOP_MODASS,   L"EOP_MODASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_MOD_ASSIGN),
    expr_op_rows::row(EOP_ADDASS,   L"EOP_ADDASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_ADD_ASSIGN),
    expr_op_rows::row(EOP_SUBASS,   L"EOP_SUBASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_SUB_ASSIGN),
    expr_op_rows::row(EOP_SHLASS,   L"EOP_SHLASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_SHL_ASSIGN),
    expr_op_rows::row(EOP_SHRASS,   L"EOP_SHRASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_SHR_ASSIGN),
    expr_op_rows::row(EOP_ANDASS,   L"EOP_ANDASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_AND_ASSIGN),
    expr_op_rows::row(EOP_XORASS,   L"EOP_XORASS",   2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_XOR_ASSIGN),
    expr_op_rows::row(EOP_ORASS,    L"EOP_ORASS",    2, ExprOpClass::Assign, ExprOpForm::Assignment, SYM_OR_ASSIGN),
    expr_op_rows::row(EOP_LOR,      L"EOP_LOR",      2, ExprOpClass::Truth,  ExprOpForm::Binary, SYM_OR,  0, ExprOpResult::Long),
    expr_op_rows::row(EOP_LAND,     L"EOP_LAND",     2, ExprOpClass::Truth,  ExprOpForm::Binary, SYM_AND, 1, ExprOpResult::Long),
    expr_op_rows::row(EOP_OR,       L"EOP_OR",       2, ExprOpClass::Value,  ExprOpForm::Binary, '|',     2),
    expr_op_rows::row(EOP_XOR,      L"EOP_XOR",      2, ExprOpClass::Value,  ExprOpForm::Binary, '^',     3),
    expr_op_rows::row(EOP_AND,      L"EOP_AND",      2, ExprOpClass::Value,  ExprOpForm::Binary, '&',     4),
    expr_op_rows::row(EOP_EQU,      L"EOP_EQU",      2, ExprOpClass::Truth,  ExprOpForm::Binary, SYM_EQ,  5, ExprOpResult::Long),
    expr_op_rows::row(EOP_NEQ,      L"EOP_NEQ",      2, ExprOpClass::Truth,  ExprOpForm::Binary, SYM_NE,  5, ExprOpResult::Long),
    expr_op_rows::row(EOP_LT,       L"EOP_LT",       2, ExprOpClass::Truth,  ExprOpForm::Binary, '<',     6, ExprOpResult::Long),
    expr_op_rows::row(EOP_GT,       L"EOP_GT",       2, ExprOpClass::Truth,  ExprOpForm::Binary, '>',     6, ExprOpResult::Long),
    expr_op_rows::row(EOP_LEQ,      L"EOP_LEQ",      2, ExprOpClass::Truth,  ExprOpForm::Binary, SYM_LE,  6, ExprOpResult::Long),
    expr_op_rows::row(EOP_GEQ,      L"EOP_GEQ",      2, ExprOpClass::Truth,  ExprOpForm::Binary, SYM_GE,  6, ExprOpResult::Long),
    expr_op_rows::row(EOP_SHL,      L"EOP_SHL",      2, ExprOpClass::Value,  ExprOpForm::Binary, SYM_SHL, 7, ExprOpResult::Left),
    expr_op_rows::row(EOP_SHR,      L"EOP_SHR",      2, ExprOpClass::Value,  ExprOpForm::Binary, SYM_SHR, 7, ExprOpResult::Left),
    expr_op_rows::row(EOP_ADD,      L"EOP_ADD",      2, ExprOpClass::Value,  ExprOpForm::Binary, '+',     8),
    expr_op_rows::row(EOP_SUB,      L"EOP_SUB",      2, ExprOpClass::Value,  ExprOpForm::Binary, '-',     8),
    expr_op_rows::row(EOP_MUL,      L"EOP_MUL",      2, ExprOpClass::Value,  ExprOpForm::Binary, '*',     9),
    expr_op_rows::row(EOP_DIV,      L"EOP_DIV",      2, ExprOpClass::Value,  ExprOpForm::Binary, '/',     9),
    expr_op_rows::row(EOP_MOD,      L"EOP_MOD",      2, ExprOpClass::Value,  ExprOpForm::Binary, '%',     9),
    expr_op_rows::row(EOP_PREINC,   L"EOP_PREINC",   1, ExprOpClass::Assign, ExprOpForm::Prefix, SYM_INC),
    expr_op_rows::row(EOP_PREDEC,   L"EOP_PREDEC",   1, ExprOpClass::Assign, ExprOpForm::Prefix, SYM_DEC),
    expr_op_rows::row(EOP_POS,      L"EOP_POS",      1, ExprOpClass::Value,  ExprOpForm::Prefix, '+'),
    expr_op_rows::row(EOP_NEG,      L"EOP_NEG",      1, ExprOpClass::Value,  ExprOpForm::Prefix, '-'),
    expr_op_rows::row(EOP_LNOT,     L"EOP_LNOT",     1, ExprOpClass::Truth,  ExprOpForm::Prefix, '!'),
    expr_op_rows::row(EOP_NOT,      L"EOP_NOT",      1, ExprOpClass::Value,  ExprOpForm::Prefix, '~'),
    expr_op_rows::row(EOP_DRF,      L"EOP_DRF",      1, ExprOpClass::Refused, ExprOpForm::Prefix, '*'),
    expr_op_rows::row(EOP_ADR,      L"EOP_ADR",      1, ExprOpClass::Refused, ExprOpForm::Prefix, '&'),
    expr_op_rows::row(EOP_POSTINC,  L"EOP_POSTINC",  1, ExprOpClass::PostStep, ExprOpForm::Postfix, SYM_INC),
    expr_op_rows::row(EOP_POSTDEC,  L"EOP_POSTDEC",  1, ExprOpClass::PostStep, ExprOpForm::Postfix, SYM_DEC),
    expr_op_rows::row(EOP_IDX,      L"EOP_IDX",      2, ExprOpClass::Index,  ExprOpForm::Postfix, '['),
    expr_op_rows::row(EOP_PAR,      L"EOP_PAR",      0, ExprOpClass::Call,   ExprOpForm::Postfix, '('),
    expr_op_rows::row(EOP_DFA,      L"EOP_DFA",      1, ExprOpClass::Refused, ExprOpForm::Postfix, '.'),
    expr_op_rows::row(EOP_IFA,      L"EOP_IFA",      1, ExprOpClass::Refused, ExprOpForm::Postfix, SYM_ARROW),
    expr_op_rows::row(EOP_TO_CHAR,     L"EOP_TO_CHAR",     1, ExprOpClass::Convert),
    expr_op_rows::row(EOP_TO_LONG,     L"EOP_TO_LONG",     1, ExprOpClass::Convert),
    expr_op_rows::row(EOP_TO_ULONG,    L"EOP_TO_ULONG",    1, ExprOpClass::Convert),
    expr_op_rows::row(EOP_TO_BITFIELD, L"EOP_TO_BITFIELD", 1, ExprOpClass::Convert),
    expr_op_rows::row(EOP_TO_DOUBLE,   L"EOP_TO_DOUBLE",   1, ExprOpClass::Convert),
    expr_op_rows::row(EOP_TO_STRING,   L"EOP_TO_STRING",   1, ExprOpClass::Convert),
    // clang-format on
};

constexpr uint32_t kExprOpCount = EOP_TO_STRING + 1;

// One row per opcode, each in its own place: a missing or misplaced row
// stops the build instead of shifting every opcode after it.
constexpr bool expr_op_rows_in_place()
{
    if (sizeof kExprOpFacts / sizeof kExprOpFacts[0] != kExprOpCount)
        return false;
    for (uint32_t op = 0; op < kExprOpCount; ++op)
        if (kExprOpFacts[op].opcode != op)
            return false;
    return true;
}
static_assert(expr_op_rows_in_place(), "kExprOpFacts needs one row per opcode, in opcode order");

// The conversion's target type; EXT_Void for any other opcode.
constexpr uint32_t expr_converts_to(uint32_t op)
{
    switch (op) {
    case EOP_TO_CHAR: return EXT_Char;
    case EOP_TO_LONG: return EXT_Long;
    case EOP_TO_ULONG: return EXT_ULong;
    case EOP_TO_BITFIELD: return EXT_BitField;
    case EOP_TO_DOUBLE: return EXT_Double;
    case EOP_TO_STRING: return EXT_String;
    default: return EXT_Void;
    }
}

// The opcode of a given form written with `token`, or EOP_END for none.
constexpr uint32_t expr_opcode_of(ExprOpForm form, int32_t token)
{
    for (const ExprOpFacts& facts : kExprOpFacts)
        if (facts.form == form && facts.token == token)
            return facts.opcode;
    return EOP_END;
}

// The name of an opcode, or null outside the table.
constexpr const wchar_t* expr_op_name(uint32_t op)
{
    return op < kExprOpCount ? kExprOpFacts[op].name : nullptr;
}

// The opcodes of one form, in table order, as a constant array: the
// compiler's token tables.
template <ExprOpForm Form>
constexpr size_t expr_count_of_form()
{
    size_t n = 0;
    for (const ExprOpFacts& facts : kExprOpFacts)
        n += facts.form == Form;
    return n;
}

template <ExprOpForm Form>
struct ExprOpsOfForm {
    uint8_t opcodes[expr_count_of_form<Form>()] = {};
    constexpr ExprOpsOfForm()
    {
        size_t n = 0;
        for (const ExprOpFacts& facts : kExprOpFacts)
            if (facts.form == Form)
                opcodes[n++] = uint8_t(facts.opcode);
    }
};
