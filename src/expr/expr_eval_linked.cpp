// The linked run: the steps of a linked program, in order, with the value
// stack written out only where it can be seen. Every step writes its own
// slot as the instruction would, and reads its operands from their slots at
// the moment it runs, so that assignments in between are seen. Only the
// result of the step just before may come from a register instead of its
// slot, since nothing can have touched that slot in between.
#include "expr_link.h"
#include "expr_ops_numeric.h"

namespace {

using namespace zor_expr::numeric;

// The register of the step before's result, for each kind of fast step.
struct HeldValue {
    double  d = 0;
    int32_t l = 0;
    ZOR_FORCEINLINE void keep(double v) { d = v; }
    ZOR_FORCEINLINE void keep(int32_t v) { l = v; }
    ZOR_FORCEINLINE void get(double* v) const { *v = d; }
    ZOR_FORCEINLINE void get(int32_t* v) const { *v = l; }
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

template <> struct Fast<ExprFastOp::AddD> : FastBinary<ExprFastOp::AddD, double, double, plus<double>> {};
template <> struct Fast<ExprFastOp::SubD> : FastBinary<ExprFastOp::SubD, double, double, minus<double>> {};
template <> struct Fast<ExprFastOp::MulD> : FastBinary<ExprFastOp::MulD, double, double, mul_d> {};
template <> struct Fast<ExprFastOp::AddL> : FastBinary<ExprFastOp::AddL, int32_t, int32_t, plus<int32_t>> {};
template <> struct Fast<ExprFastOp::SubL> : FastBinary<ExprFastOp::SubL, int32_t, int32_t, minus<int32_t>> {};
template <> struct Fast<ExprFastOp::MulL> : FastBinary<ExprFastOp::MulL, int32_t, int32_t, mul_l> {};
template <> struct Fast<ExprFastOp::EquD> : FastBinary<ExprFastOp::EquD, double, int32_t, compare<EOP_EQU, double>> {};
template <> struct Fast<ExprFastOp::NeqD> : FastBinary<ExprFastOp::NeqD, double, int32_t, compare<EOP_NEQ, double>> {};
template <> struct Fast<ExprFastOp::LtD> : FastBinary<ExprFastOp::LtD, double, int32_t, compare<EOP_LT, double>> {};
template <> struct Fast<ExprFastOp::GtD> : FastBinary<ExprFastOp::GtD, double, int32_t, compare<EOP_GT, double>> {};
template <> struct Fast<ExprFastOp::LeqD> : FastBinary<ExprFastOp::LeqD, double, int32_t, compare<EOP_LEQ, double>> {};
template <> struct Fast<ExprFastOp::GeqD> : FastBinary<ExprFastOp::GeqD, double, int32_t, compare<EOP_GEQ, double>> {};
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
template <ExprFastOp Op, ExprFastMode Mode>
ZOR_FORCEINLINE bool fast_step(const ExprLinkStep* s, HeldValue& held)
{
    using F = Fast<Op>;
    using In = typename F::In;
    using Out = typename ResultOf<decltype(&F::apply)>::type;
    In a, b = In();
    if (Mode == kFastLeftHeld)
        held.get(&a);
    else
        a = slot<In>(s->x);
    if (F::kBinary) {
        if (Mode == kFastRightHeld)
            held.get(&b);
        else
            b = slot<In>(s->y);
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
    for (int32_t i = 0; i < pending[0]; ++i)
        stack[i] = pending[2 + i];
    expr->stackDepth = base + pending[0];
}

// After a user function or a dependency run: the linked form goes on only
// if nothing it was derived from changed and the stack holds exactly what
// it expects. The program may be gone, so its fields are read last.
struct Derived {
    uint32_t         start;
    const ExprInstr* code;
    int32_t          count;
    const uint8_t*   arena;
    uint32_t         generation;
    int32_t          maxDepth;
};

bool unchanged(const ExprContext* expr, const Derived& from, int32_t base, const int32_t* pending)
{
    if (reinterpret_cast<const ExprInstr*>(expr->code->data) != from.code ||
        expr->code->count != from.count || expr->dataArena != from.arena ||
        expr_link_home(expr)->generation != from.generation ||
        int64_t(base) + from.maxDepth > expr->stackSize)
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

}

#define ZOR_FAST_CASES(op)                                                        \
    case expr_fast_kind(ExprFastOp::op, kFastSlots):                              \
        if (!fast_step<ExprFastOp::op, kFastSlots>(s, held))                      \
            return fail(expr, program, s->ip, base, ZOR_DISP_E_DIVBYZERO);        \
        break;                                                                    \
    case expr_fast_kind(ExprFastOp::op, kFastLeftHeld):                           \
        if (!fast_step<ExprFastOp::op, kFastLeftHeld>(s, held))                   \
            return fail(expr, program, s->ip, base, ZOR_DISP_E_DIVBYZERO);        \
        break;                                                                    \
    case expr_fast_kind(ExprFastOp::op, kFastRightHeld):                          \
        if (!fast_step<ExprFastOp::op, kFastRightHeld>(s, held))                  \
            return fail(expr, program, s->ip, base, ZOR_DISP_E_DIVBYZERO);        \
        break;

ZORStatus expr_run_linked(ExprContext* expr, const ExprLinkedProgram* program, intptr_t userArg)
{
    const int32_t base = expr->stackDepth;
    const Derived from = {program->start, program->code, program->count, program->arena, program->generation,
                          program->maxDepth};
    HeldValue held;
    for (const ExprLinkStep* s = program->steps;; ++s) {
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
            ZOR_FAST_CASES(LandL)
            ZOR_FAST_CASES(LorL)
            ZOR_FAST_CASES(LongToDouble)
        case kLinkOperator: {
            const ZORStatus status =
                s->handler(expr, program->code + s->ip, s->xRecord, s->yRecord);
            if (status != ZOR_S_OK)
                return fail(expr, program, s->ip, base, status);
            break;
        }
        case kLinkEnd:
            write_pending(expr, base, s->pending);
            return ZOR_S_OK;
        default: {  // kLinkCall, kLinkRefresh
            // The program may be dropped by what runs now: read it before.
            const uint32_t ip = s->ip;
            const int32_t* const pending = s->pending;
            write_pending(expr, base, pending);
            const ZORStatus status =
                s->kind == kLinkCall
                    ? expr_call_user_function(expr, ip, userArg)
                    : expr_refresh_variable(expr, int32_t(s->xrefIndex), from.start, userArg);
            if (status != ZOR_S_OK)
                return status;
            if (!unchanged(expr, from, base, pending))
                return expr_run_ordinary(expr, from.start, ip, userArg, true);
            break;
        }
        }
    }
}
