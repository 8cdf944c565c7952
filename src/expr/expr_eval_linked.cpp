// ExprEvaluate and the linked run: the steps of a linked program, in order,
// with the value stack written out only where it can be seen. Every step
// writes its own slot as the instruction would, and reads its operands from
// their slots at the moment it runs, so that assignments in between are
// seen. Only the results of the last fast steps may come from registers
// instead of their slots, since only fast steps, which write nothing but
// their own slots, ran in between.
#include "expr_link.h"
#include "expr_ops_numeric.h"

#include <type_traits>

namespace {

using namespace zor_expr::numeric;

// The registers of the last two results of each type.
struct HeldValue {
    double  d1 = 0, d2 = 0;
    int32_t l1 = 0, l2 = 0;
    ZOR_FORCEINLINE void keep(double v) { d2 = d1, d1 = v; }
    ZOR_FORCEINLINE void keep(int32_t v) { l2 = l1, l1 = v; }
    ZOR_FORCEINLINE void get(ExprFastSource from, double* v) const { *v = from == kFromLast ? d1 : d2; }
    ZOR_FORCEINLINE void get(ExprFastSource from, int32_t* v) const { *v = from == kFromLast ? l1 : l2; }
};

template <class T>
ZOR_FORCEINLINE T slot(const void* p)
{
    return *static_cast<const T*>(p);
}

// What each fast operator reads and computes, with the value routines of the
// handlers so that both give the same bits. False: division by zero.
template <ExprFastOp Op>
struct Fast;

template <ExprFastOp Op, class T, class R, R (*F)(T, T)>
struct FastBinary {
    using In = T;
    static constexpr bool kBinary = true;
    static ZOR_FORCEINLINE bool apply(T a, T b, R* out)
    {
        *out = F(a, b);
        return true;
    }
};

ZOR_FORCEINLINE double mul_d(double a, double b) { return a * b; }
ZOR_FORCEINLINE int32_t mul_l(int32_t a, int32_t b)
{
    return wrapping<int32_t>(uint32_t(a) * uint32_t(b));
}
template <uint32_t Op, class T>
ZOR_FORCEINLINE int32_t compare(T a, T b)
{
    return compared(Op, a, b);
}
ZOR_FORCEINLINE int32_t land(int32_t a, int32_t b) { return (a != 0) & (b != 0); }
ZOR_FORCEINLINE int32_t lor(int32_t a, int32_t b) { return (a != 0) | (b != 0); }

// The comparisons, in opcode order for each type.
template <ExprFastOp Op, class T, ExprFastOp First>
struct FastCompare
    : FastBinary<Op, T, int32_t, compare<EOP_EQU + (uint32_t(Op) - uint32_t(First)), T>> {};

template <ExprFastOp Op>
struct Fast : std::conditional_t<(Op >= ExprFastOp::EquL), FastCompare<Op, int32_t, ExprFastOp::EquL>,
                                 FastCompare<Op, double, ExprFastOp::EquD>> {};

template <> struct Fast<ExprFastOp::AddD> : FastBinary<ExprFastOp::AddD, double, double, plus<double>> {};
template <> struct Fast<ExprFastOp::SubD> : FastBinary<ExprFastOp::SubD, double, double, minus<double>> {};
template <> struct Fast<ExprFastOp::MulD> : FastBinary<ExprFastOp::MulD, double, double, mul_d> {};
template <> struct Fast<ExprFastOp::AddL> : FastBinary<ExprFastOp::AddL, int32_t, int32_t, plus<int32_t>> {};
template <> struct Fast<ExprFastOp::SubL> : FastBinary<ExprFastOp::SubL, int32_t, int32_t, minus<int32_t>> {};
template <> struct Fast<ExprFastOp::MulL> : FastBinary<ExprFastOp::MulL, int32_t, int32_t, mul_l> {};
template <> struct Fast<ExprFastOp::LandL> : FastBinary<ExprFastOp::LandL, int32_t, int32_t, land> {};
template <> struct Fast<ExprFastOp::LorL> : FastBinary<ExprFastOp::LorL, int32_t, int32_t, lor> {};

template <>
struct Fast<ExprFastOp::DivD> {
    using In = double;
    static constexpr bool kBinary = true;
    // Both zeros stop the run, a NaN divisor passes, as in the handler.
    static ZOR_FORCEINLINE bool apply(double a, double b, double* out)
    {
        if (ZOR_UNLIKELY(b == 0.0))
            return false;
        *out = quotient(a, b);
        return true;
    }
};

template <>
struct Fast<ExprFastOp::LongToDouble> {
    using In = int32_t;
    static constexpr bool kBinary = false;
    static ZOR_FORCEINLINE bool apply(int32_t a, int32_t, double* out)
    {
        *out = converted<double>(a);
        return true;
    }
};

template <class F>
struct ResultOf;
template <class A, class B, class R>
struct ResultOf<bool (*)(A, B, R*)> {
    using type = R;
};

// One fast step: operands from their slots or the register, the result into
// its slot and the register.
template <ExprFastOp Op, ExprFastSource X, ExprFastSource Y>
ZOR_FORCEINLINE bool fast_step(const ExprLinkStep* s, HeldValue& held)
{
    using F = Fast<Op>;
    using In = typename F::In;
    using Out = typename ResultOf<decltype(&F::apply)>::type;
    In a, b = In();
    if (X == kFromSlot)
        a = slot<In>(s->x);
    else
        held.get(X, &a);
    if (F::kBinary) {
        if (Y == kFromSlot)
            b = slot<In>(s->y);
        else
            held.get(Y, &b);
    }
    Out r;
    if (!F::apply(a, b, &r))
        return false;
    *static_cast<Out*>(s->r) = r;
    held.keep(r);
    return true;
}

// What the ordinary loop would have on the stack at an escape, from `base`.
ZOR_FORCEINLINE void write_pending(ExprContext* expr, int32_t base, const int32_t* pending)
{
    int32_t* stack = expr->stack + base;
    const int32_t count = pending[0];
    for (int32_t i = 0; i < count; ++i)
        stack[i] = pending[2 + i];
    expr->stackDepth = base + count;
}

// After a user function or a dependency run the linked form goes on only if
// it is still the current one (a compile, ExprXRef or ExprXRefOn drops it
// and counts a generation) and the stack holds exactly what it expects.
bool still_linked(const ExprContext* expr, uint32_t generation, int32_t maxDepth, int32_t base,
                  const int32_t* pending)
{
    if (expr_link_home(expr)->generation != generation || int64_t(base) + maxDepth > expr->stackSize)
        return false;
    const int32_t after = pending[1];
    if (expr->stackDepth != base + after)
        return false;
    for (int32_t i = 0; i < after; ++i)
        if (expr->stack[base + i] != pending[2 + i])
            return false;
    return true;
}

ZOR_NOINLINE ZORStatus fail(ExprContext* expr, const ExprLinkedProgram* program, uint32_t ip,
                            int32_t base, ZORStatus status)
{
    expr->stackDepth = base + expr_link_pending_at(expr, program, ip, base);
    return status;
}

#define ZOR_FAST_CASE(op, x, y)                                                   \
    case expr_fast_kind(ExprFastOp::op, x, y):                                    \
        if (!fast_step<ExprFastOp::op, x, y>(s, held))                            \
            return fail(expr, program, s->ip, base, ZOR_DISP_E_DIVBYZERO);        \
        break;
#define ZOR_FAST_CASES_X(op, x)                                                   \
    ZOR_FAST_CASE(op, x, kFromSlot)                                               \
    ZOR_FAST_CASE(op, x, kFromLast)                                               \
    ZOR_FAST_CASE(op, x, kFromBefore)
#define ZOR_PAIR_CASE(first, second, shape, x, y)                                 \
    case expr_pair_kind(ExprFastOp::first, ExprFastOp::second, shape):            \
        if (!fast_step<ExprFastOp::first, kFromSlot, kFromSlot>(s, held))          \
            return fail(expr, program, s->ip, base, ZOR_DISP_E_DIVBYZERO);        \
        if (!fast_step<ExprFastOp::second, x, y>(next, held))                     \
            return fail(expr, program, next->ip, base, ZOR_DISP_E_DIVBYZERO);     \
        ++next;                                                                   \
        break;
#define ZOR_PAIR_CASES(first, second)                                             \
    ZOR_PAIR_CASE(first, second, kPairBeforeLast, kFromBefore, kFromLast)         \
    ZOR_PAIR_CASE(first, second, kPairSlotLast, kFromSlot, kFromLast)             \
    ZOR_PAIR_CASE(first, second, kPairLastSlot, kFromLast, kFromSlot)
#define ZOR_FAST_CASES(op)                                                        \
    ZOR_FAST_CASES_X(op, kFromSlot)                                               \
    ZOR_FAST_CASES_X(op, kFromLast)                                               \
    ZOR_FAST_CASES_X(op, kFromBefore)

// A user function called directly. As in the run loop the name is popped
// first and the result stored before evalErr is looked at; the slot is the
// one the linker saw unless a compile inside the function moved the records.
template <class Result, class Fn>
ZOR_FORCEINLINE ZORStatus call_directly(ExprContext* expr, const ExprLinkStep* s, uint32_t generation,
                                        intptr_t userArg)
{
    void* const slot = s->r;
    const uint32_t ip = s->ip;
    --expr->stackDepth;
    const Result result = reinterpret_cast<Fn>(s->function)(expr, userArg);
    *static_cast<Result*>(expr_link_home(expr)->generation == generation
                              ? slot
                              : reinterpret_cast<ExprInstr*>(expr->code->data)[ip].operand.value) = result;
    return expr->evalErr;
}

// A user function or a dependency step, with the stack written out before
// and checked after. False: the run is over, with `status`. What runs may
// drop the program: what is needed of it afterwards is read before.
template <uint32_t Kind>
ZOR_FORCEINLINE bool escape(ExprContext* expr, const ExprLinkedProgram* program,
                            const ExprLinkStep* s, int32_t base, intptr_t userArg, ZORStatus* status)
{
    const uint32_t generation = program->generation, start = program->start, ip = s->ip;
    const int32_t maxDepth = program->maxDepth;
    const int32_t* const pending = s->pending;
    write_pending(expr, base, pending);
    if (Kind == kLinkCallDouble)
        *status = call_directly<double, ExprDoubleFn>(expr, s, generation, userArg);
    else if (Kind == kLinkCallLong)
        *status = call_directly<int32_t, ExprIntFn>(expr, s, generation, userArg);
    else if (Kind == kLinkCall)
        *status = expr_call_user_function(expr, ip, userArg);
    else
        *status = expr_refresh_variable(expr, int32_t(s->xrefIndex), start, userArg);
    if (ZOR_UNLIKELY(*status != ZOR_S_OK))
        return false;
    if (ZOR_LIKELY(still_linked(expr, generation, maxDepth, base, pending)))
        return true;
    *status = expr_run_ordinary(expr, start, ip, userArg, true);
    return false;
}

// The rarer escapes stay out of the run loop.
ZOR_NOINLINE bool escape_slowly(ExprContext* expr, const ExprLinkedProgram* program,
                                const ExprLinkStep* s, int32_t base, intptr_t userArg,
                                ZORStatus* status)
{
    return s->kind == kLinkCall ? escape<kLinkCall>(expr, program, s, base, userArg, status)
                                : escape<kLinkRefresh>(expr, program, s, base, userArg, status);
}

}

namespace {

ZOR_FORCEINLINE ZORStatus run_linked(ExprContext* expr, const ExprLinkedProgram* program, intptr_t userArg)
{
    const int32_t base = expr->stackDepth;
    HeldValue held;
    for (const ExprLinkStep* next = program->steps;;) {
        const ExprLinkStep* const s = next++;
        switch (s->kind) {
            ZOR_FAST_CASES(AddD)
            ZOR_FAST_CASES(SubD)
            ZOR_FAST_CASES(MulD)
            ZOR_FAST_CASES(DivD)
            ZOR_FAST_CASES(AddL)
            ZOR_FAST_CASES(SubL)
            ZOR_FAST_CASES(MulL)
            ZOR_FAST_CASES(EquD)
            ZOR_FAST_CASES(NeqD)
            ZOR_FAST_CASES(LtD)
            ZOR_FAST_CASES(GtD)
            ZOR_FAST_CASES(LeqD)
            ZOR_FAST_CASES(GeqD)
            ZOR_FAST_CASES(EquL)
            ZOR_FAST_CASES(NeqL)
            ZOR_FAST_CASES(LtL)
            ZOR_FAST_CASES(GtL)
            ZOR_FAST_CASES(LeqL)
            ZOR_FAST_CASES(GeqL)
            ZOR_FAST_CASES(LandL)
            ZOR_FAST_CASES(LorL)
            ZOR_FAST_CASES(LongToDouble)
            ZOR_EXPR_PAIRS(ZOR_PAIR_CASES)
        case kLinkOperator: {
            const ZORStatus status =
                s->handler(expr, program->code + s->ip, s->xRecord, s->yRecord);
            if (status != ZOR_S_OK)
                return fail(expr, program, s->ip, base, status);
            // No step reads a register across a call: saying so lets the
            // registers be ones that calls need not preserve.
            held = HeldValue();
            break;
        }
        case kLinkEnd:
            write_pending(expr, base, s->pending);
            return ZOR_S_OK;
#define ZOR_ESCAPE_CASE(kind, how)                                                 \
        case kind: {                                                              \
            ZORStatus status;                                                     \
            if (!how(expr, program, s, base, userArg, &status))                   \
                return status;                                                    \
            held = HeldValue();                                                   \
            break;                                                                \
        }
        ZOR_ESCAPE_CASE(kLinkCallDouble, escape<kLinkCallDouble>)
        ZOR_ESCAPE_CASE(kLinkCallLong, escape<kLinkCallLong>)
        ZOR_ESCAPE_CASE(kLinkCall, escape_slowly)
        case kLinkRefresh: {
            ZORStatus status;
            if (!escape_slowly(expr, program, s, base, userArg, &status))
                return status;
            held = HeldValue();
            break;
        }
        default:
            ZOR_UNREACHABLE();
        }
    }
}

}

// The linked form serves every run it can; a run of the whole array, a start
// inside an expression and a stack that must grow are the ordinary loop's.
ZORStatus ExprEvaluate(ExprContext* expr, uint32_t start, intptr_t userArg)
{
    expr->evalErr = 0;
    if (start == EXPR_EMPTY)
        return ZOR_S_OK;
    const bool runAll = start == EXPR_RUN_ALL;
    const uint32_t first = runAll ? 0 : start;
    if (first >= uint32_t(expr->code->count))
        return ZOR_S_OK;
    if (!runAll) {
        const ExprLinkHome* home = expr_link_home(expr);
        const ExprLinkedProgram* program = home->recent;
        if (!program || home->recentStart != start ||
            program->code != reinterpret_cast<ExprInstr*>(expr->code->data) ||
            program->count != expr->code->count || program->arena != expr->dataArena)
            program = expr_linked(expr, start);
        if (program && int64_t(expr->stackDepth) + program->maxDepth <= expr->stackSize)
            return run_linked(expr, program, userArg);
    }
    return expr_run_ordinary(expr, start, first, userArg, false);
}

