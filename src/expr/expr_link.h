// The linked form of an expression: the instruction array has no jumps, so
// the shape of the value stack at every instruction is known before a run.
// The linker works it out once per start index and gives each operator the
// addresses of its operands and its result; the linked run then skips the
// pushes and pops of plain operands, keeps the previous result in a
// register, and writes the stack out only where someone can look at it: at
// a user function, a dependency step, a failure and the end. The
// instruction array stays the object's state; the linked form is a cache of
// it, dropped whenever the array, its count, the arena or the links of the
// cross-reference change.
#pragma once

#include <stdint.h>

#include "../containers/da_tail.h"
#include "expr_ops.h"
#include "zor_expr.h"

// One step of a linked run.
struct ExprLinkStep {
    uint32_t kind;  // ExprLinkKind, or expr_fast_kind
    uint32_t ip;    // the instruction it stands for
    union {
        void*         r;          // fast steps and calls: the result slot
        ExprOpHandler handler;    // other operators
        intptr_t      xrefIndex;  // dependency step
    };
    union {
        const void*    x;        // fast: the left or only operand's slot
        ExprInstr*     xRecord;  // other operators
        const int32_t* pending;  // escapes: see ExprLinkedProgram
    };
    union {
        const void* y;
        ExprInstr*  yRecord;
        ExprUserFn  function;  // a call's
    };
};

enum ExprLinkKind : uint32_t {
    kLinkOperator,  // the operator's own handler, on the records
    kLinkCall,        // EOP_PAR, through the run loop's call
    kLinkCallDouble,  // EOP_PAR of a function known to give a double
    kLinkCallLong,    // ... a Long or ULong
    kLinkRefresh,   // EOP_NOP of a variable with a dependency run
    kLinkEnd,       // EOP_END, or the end of the array
    kLinkFirstFast
};

// Operators with a step of their own, for the common number types. The rest
// call their handler, which reads the same slots through the records.
enum class ExprFastOp : uint32_t {
    AddD, SubD, MulD, DivD,        // doubles
    AddL, SubL, MulL,              // Long arithmetic, wrapping
    EquD, NeqD, LtD, GtD, LeqD, GeqD,  // comparisons of doubles, an EXT_Long truth
    EquL, NeqL, LtL, GtL, LeqL, GeqL,  // comparisons of Longs
    LandL, LorL,                   // logical operators on Long operands
    LongToDouble,
    None
};

// Where a fast step finds an operand: in its slot, or still in a register.
// Two registers of each type hold the results of the last two fast steps
// that gave that type, so that a chain of sums need not read each sum back
// from the slot it was just written to.
enum ExprFastSource : uint32_t { kFromSlot, kFromLast, kFromBefore, kFastSources };

constexpr uint32_t expr_fast_kind(ExprFastOp op, ExprFastSource x, ExprFastSource y)
{
    return kLinkFirstFast + (uint32_t(op) * kFastSources + x) * kFastSources + y;
}

// Two fast steps that run as one, with one dispatch: a first that reads its
// operands from slots, and the step right behind it, which reads the first's
// result from the register and its other operand as one of these.
enum ExprPairShape : uint32_t {
    kPairBeforeLast,  // left: the result before the first's; right: the first's
    kPairSlotLast,    // left: a slot; right: the first's
    kPairLastSlot,    // left: the first's; right: a slot (or none)
    kPairShapes
};

constexpr uint32_t kLinkFirstPair = expr_fast_kind(ExprFastOp::None, kFromSlot, kFromSlot);

constexpr uint32_t expr_pair_kind(ExprFastOp first, ExprFastOp second, ExprPairShape shape)
{
    return kLinkFirstPair + (uint32_t(first) * uint32_t(ExprFastOp::None) + uint32_t(second)) * kPairShapes + shape;
}

// The pairs that have a step of their own: sums and products of doubles,
// conversions feeding them, and truth values feeding && and ||.
#define ZOR_EXPR_PAIRS_DOUBLE(X, first) X(first, AddD) X(first, SubD) X(first, MulD) X(first, DivD)
#define ZOR_EXPR_PAIRS_TRUTH(X, first) X(first, LandL) X(first, LorL)
#define ZOR_EXPR_PAIRS(X)                                                                         \
    ZOR_EXPR_PAIRS_DOUBLE(X, AddD) ZOR_EXPR_PAIRS_DOUBLE(X, SubD) ZOR_EXPR_PAIRS_DOUBLE(X, MulD)  \
    ZOR_EXPR_PAIRS_DOUBLE(X, DivD) ZOR_EXPR_PAIRS_DOUBLE(X, LongToDouble)                         \
    ZOR_EXPR_PAIRS_TRUTH(X, EquD) ZOR_EXPR_PAIRS_TRUTH(X, NeqD) ZOR_EXPR_PAIRS_TRUTH(X, LtD)      \
    ZOR_EXPR_PAIRS_TRUTH(X, GtD) ZOR_EXPR_PAIRS_TRUTH(X, LeqD) ZOR_EXPR_PAIRS_TRUTH(X, GeqD)      \
    ZOR_EXPR_PAIRS_TRUTH(X, EquL) ZOR_EXPR_PAIRS_TRUTH(X, NeqL) ZOR_EXPR_PAIRS_TRUTH(X, LtL)      \
    ZOR_EXPR_PAIRS_TRUTH(X, GtL) ZOR_EXPR_PAIRS_TRUTH(X, LeqL) ZOR_EXPR_PAIRS_TRUTH(X, GeqL)      \
    ZOR_EXPR_PAIRS_TRUTH(X, LandL) ZOR_EXPR_PAIRS_TRUTH(X, LorL)                                  \
    X(AddL, LongToDouble) X(SubL, LongToDouble) X(MulL, LongToDouble)


struct ExprLinkedProgram {
    uint32_t         start;
    // The deepest the stack gets above where the run found it. A start that
    // the ordinary loop must serve (see expr_link.cpp) gets a form without
    // steps whose depth no stack has.
    int32_t          maxDepth;
    uint32_t         generation;
    ExprInstr*       code;      // what it was linked against
    int32_t          count;
    const uint8_t*   arena;
    ExprLinkStep*    steps;
    // Each escape's record: the number of entries pending on the stack when
    // the step starts, how many are left when the call or dependency step
    // returns, then the entries, bottom first (instruction indexes).
    int32_t*         pending;
};

// Where the linked forms live: behind the header of the instruction array,
// so that the public object shows nothing of them and a run reaches the
// form it used last in two loads. Forms are looked up by start index in a
// table with open addressing.
struct ExprLinkHome {
    uint32_t            recentStart;
    ExprLinkedProgram*  recent;
    ExprLinkedProgram** table;
    uint32_t            tableSize;  // a power of two, or 0
    uint32_t            used;
    uint32_t            generation;  // counts the drops
    bool                off;  // the ordinary loop serves every run (the tests compare both)
};

inline ExprLinkHome* expr_link_home(const ExprContext* expr)
{
    return static_cast<ExprLinkHome*>(da_tail(expr->code));
}

// Finds or makes the linked form of `start`; null when it can't be made (a
// failed allocation: the ordinary loop serves the run) or linking is off.
ExprLinkedProgram* expr_linked(ExprContext* expr, uint32_t start);

// Forgets every linked form: the compiler, the cross-reference and anyone
// else who changes what the forms were derived from calls this.
void expr_link_drop(ExprContext* expr);
// Frees the linked forms and their table; ExprRelease, before the array.
void expr_link_release(ExprContext* expr);

// Rewrites the stack from `base` as the ordinary loop would have it just
// before the instruction `stop` of the program runs, less that
// instruction's operands: what a failure there leaves. Returns the depth.
int32_t expr_link_pending_at(const ExprContext* expr, const ExprLinkedProgram* program,
                             uint32_t stop, int32_t base);

// The run loop's pieces that the linked run shares: the ordinary loop from
// `ip` (`executed`: the instruction at `ip` has run and only its push is
// left), the call of a user function and the dependency step.
ZORStatus expr_run_ordinary(ExprContext* expr, uint32_t start, uint32_t ip, intptr_t userArg,
                            bool executed);
ZORStatus expr_call_user_function(ExprContext* expr, uint32_t ip, intptr_t userArg);
ZORStatus expr_refresh_variable(ExprContext* expr, int32_t xrefIndex, uint32_t start,
                                intptr_t userArg);
