// What the object, the compiler and the run loop share and the operator code
// has no business with.
#pragma once

#include "zor_expr.h"

// "No L-value": all zero except storage EXS_Const, so that the one test for
// an assignable expression is storage != EXS_Const. Never written.
extern ExprOperand g_exprNoLValue;

// The symbol of that name, by the object's own name comparison, or null.
ExprSymbol* expr_find_symbol(ExprContext* expr, const wchar_t* name);

// Every constant and temporary the compiler makes comes from here: a value of
// `type`, filled from `init` (text for strings, the record for dates and bit
// fields, the number otherwise) or zero. Number slots lie in the data arena;
// when the arena moves, instructions that point into it move with it, so a
// slot's address is final only once compiling is over.
ZORStatus expr_new_value(ExprContext* expr, uint32_t type, const void* init, ExprOperand* out);

// Releases what an operand owns (strings, dates, bit-field blocks).
void expr_release_value(const ExprOperand& operand);
