// The ordinary run loop: one pass from a start index to its EOP_END over a
// stack of instruction indexes. Each instruction fills its own slot and
// pushes its index; operators find their operands through the indexes they
// pop. It serves what the linked run doesn't (expr_eval_linked.cpp) and
// takes over from it when a user function changed what it was derived from.
#include <windows.h>

#include "zor_expr.h"

#include "../frame/zor_alloc.h"
#include "../frame/zor_platform.h"
#include "expr_link.h"
#include "expr_ops.h"

namespace {

constexpr int32_t kStackStep = 20;

// A nested run that would leave less than this much of the thread's stack
// fails instead: a chain of expressions, each reading what the one before
// assigns, nests one run per link.
constexpr ULONG_PTR kStackReserve = 64 * 1024;

ZOR_FORCEINLINE ExprInstr* instructions(const ExprContext* expr)
{
    return reinterpret_cast<ExprInstr*>(expr->code->data);
}

// On exhaustion the stack is emptied rather than left null with a stale
// size, so that the object stays usable.
ZOR_NOINLINE ZORStatus grow_stack(ExprContext* expr)
{
    void* block = zor_realloc(expr->stack, size_t(expr->stackSize + kStackStep) * sizeof(int32_t));
    if (!block) {
        zor_free(expr->stack);
        expr->stack = nullptr;
        expr->stackDepth = expr->stackSize = 0;
        return ZOR_E_OUTOFMEMORY;
    }
    expr->stack = static_cast<int32_t*>(block);
    expr->stackSize += kStackStep;
    return ZOR_S_OK;
}

bool thread_stack_too_low()
{
    ULONG_PTR low = 0, high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    volatile char probe = 0;
    ULONG_PTR here = reinterpret_cast<ULONG_PTR>(&probe);
    return here < low + kStackReserve;
}

}

// The dependency step before a variable is read: the earlier expressions
// that assign it (its run in xrefList, closed by -1) run first, in order. A
// run that is cut short (a failed append while laying out) ends at the
// list's end instead of reading past it.
ZORStatus expr_refresh_variable(ExprContext* expr, int32_t xrefIndex, uint32_t start,
                                intptr_t userArg)
{
    if (expr->evalErr)
        return expr->evalErr;
    for (int32_t i = xrefIndex;; ++i) {
        const DA* list = expr->xrefList;
        if (!list || i < 0 || i >= list->count)
            return ZOR_S_OK;
        const int32_t entry = reinterpret_cast<const int32_t*>(list->data)[i];
        if (entry == -1 || entry >= int32_t(start))
            return ZOR_S_OK;
        if (thread_stack_too_low())
            return expr->evalErr = EXPR_E_TOO_DEEP;
        const int32_t depth = expr->stackDepth;
        expr->evalErr = ExprEvaluate(expr, uint32_t(entry), userArg);
        // The inner result must not lie between the operands of the operator
        // in progress. A stack that was emptied by a failed growth stays so.
        if (expr->stack && depth <= expr->stackSize)
            expr->stackDepth = depth;
        if (expr->evalErr)
            return expr->evalErr;
    }
}

// EOP_PAR: the function's name lies on top of its arguments. The function
// pops the arguments itself; its result goes into the call's slot.
ZORStatus expr_call_user_function(ExprContext* expr, uint32_t ip, intptr_t userArg)
{
    // A run started inside an expression could find anything on top.
    if (expr->stackDepth < 1)
        return ZOR_E_UNEXPECTED;
    const ExprInstr& name = instructions(expr)[expr->stack[--expr->stackDepth]];
    if (name.operand.storage != EXS_Function)
        return ZOR_E_UNEXPECTED;
    void* const fn = name.operand.value;
    const uint32_t type = instructions(expr)[ip].operand.type;
    // The function may compile into this object, which can move the array:
    // the slot is looked up again after the call.
    auto slot = [expr, ip]() { return instructions(expr)[ip].operand.value; };
    switch (type) {
    case EXT_Char: {
        const int32_t result = reinterpret_cast<ExprIntFn>(fn)(expr, userArg);
        *static_cast<uint16_t*>(slot()) = uint16_t(result);
        break;
    }
    case EXT_Long:
    case EXT_ULong: {
        const int32_t result = reinterpret_cast<ExprIntFn>(fn)(expr, userArg);
        *static_cast<int32_t*>(slot()) = result;
        break;
    }
    case EXT_Double: {
        const double result = reinterpret_cast<ExprDoubleFn>(fn)(expr, userArg);
        *static_cast<double*>(slot()) = result;
        break;
    }
    case EXT_BitField: {
        const ExprBitField result = reinterpret_cast<ExprBitFieldFn>(fn)(expr, userArg);
        *static_cast<ExprBitField*>(slot()) = result;
        break;
    }
    case EXT_String: {
        const TSString* result = reinterpret_cast<ExprStringFn>(fn)(expr, userArg);
        TSCopy(static_cast<TSString*>(slot()), result);
        break;
    }
    case EXT_Date: {
        const TDDate* result = reinterpret_cast<ExprDateFn>(fn)(expr, userArg);
        TDCopy(static_cast<TDDate*>(slot()), result);
        break;
    }
    default:
        return ZOR_S_OK;
    }
    return expr->evalErr;
}

// The stack's pointer, depth and size live in locals while operators run
// (handlers never touch the stack); they go back to the object before
// anything that may use it: a user function, a dependency run, a return.
ZORStatus expr_run_ordinary(ExprContext* expr, uint32_t start, uint32_t ip, intptr_t userArg,
                            bool executed)
{
    const bool runAll = start == EXPR_RUN_ALL;
    ExprInstr* code = instructions(expr);
    uint32_t count = uint32_t(expr->code->count);
    int32_t* stack = expr->stack;
    // Pointer-sized, so that indexing the stack needs no widening.
    intptr_t depth = expr->stackDepth;
    intptr_t size = expr->stackSize;
    ZORStatus status = ZOR_S_OK;
    auto reload = [&]() {
        code = instructions(expr);
        count = uint32_t(expr->code->count);
        stack = expr->stack;
        depth = expr->stackDepth;
        size = expr->stackSize;
    };
    for (;; executed = false) {
        ExprInstr* const instr = code + ip;
        const uint32_t opcode = instr->opcode;
        if (executed) {
            // The linked run has done this one and hands over for the push.
        } else if (opcode == EOP_NOP) {
            if (ZOR_UNLIKELY(instr->operand.xrefIndex != -1) &&
                instr->operand.storage != EXS_Function) {
                expr->stackDepth = int32_t(depth);
                status = expr_refresh_variable(expr, instr->operand.xrefIndex, start, userArg);
                reload();
                if (status != ZOR_S_OK)
                    return status;
            }
        } else if (ZOR_LIKELY(opcode <= EOP_TO_STRING) && opcode != EOP_END && opcode != EOP_PAR) {
            const int32_t arity = kExprOpArity[opcode];
            if (ZOR_UNLIKELY(depth < arity)) {
                status = ZOR_E_UNEXPECTED;
                break;
            }
            ExprInstr* const y = arity == 2 ? code + stack[--depth] : nullptr;
            ExprInstr* const x = code + stack[--depth];
            status = kExprOpHandlers[opcode][expr_dispatch_type(instr)](expr, instr, x, y);
            if (status != ZOR_S_OK)
                break;
        } else if (opcode == EOP_END) {
            if (!runAll)
                break;
        } else if (opcode == EOP_PAR) {
            expr->stackDepth = int32_t(depth);
            status = expr_call_user_function(expr, ip, userArg);
            reload();
            if (status != ZOR_S_OK)
                return status;
        }
        if (ZOR_UNLIKELY(depth >= size)) {
            expr->stackDepth = int32_t(depth);
            status = grow_stack(expr);
            if (status != ZOR_S_OK)
                return status;
            stack = expr->stack;
            size = expr->stackSize;
        }
        stack[depth++] = int32_t(ip);
        if (++ip >= count)
            break;
    }
    expr->stackDepth = int32_t(depth);
    return status;
}

void* ExprPopResult(ExprContext* expr)
{
    uint32_t type;
    return ExprPopArgument(expr, &type);
}

void* ExprPopArgument(ExprContext* expr, uint32_t* type)
{
    // A user function that pops more than it was given must not read below
    // the stack.
    if (expr->stackDepth < 1) {
        *type = EXT_Void;
        return nullptr;
    }
    const ExprOperand& operand = instructions(expr)[expr->stack[--expr->stackDepth]].operand;
    *type = operand.type;
    return operand.value;
}

uint32_t ExprGetEvalErr(ExprContext* expr)
{
    return expr->evalErr;
}

void ExprSetEvalErr(ExprContext* expr, uint32_t code)
{
    expr->evalErr = code;
}
