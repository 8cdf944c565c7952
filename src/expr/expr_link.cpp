// The linker: walks an expression once as the run loop would, with the
// stack holding only instruction indexes, and lays down a step for every
// operator, call, dependency step and the end. A start whose walk would
// read below the stack it was given (a start inside an expression), or
// meets an opcode the engine doesn't know or a call without its function,
// is left to the ordinary loop.
#include "expr_link.h"

#include <string.h>

#include <array>

#include "../frame/zor_alloc.h"
#include "expr_op_facts.h"

namespace {

struct Walk {
    const ExprContext* expr;
    ExprInstr*         code;
    uint32_t           count;
    uint32_t           start;
    int32_t*           stack;
    int32_t            depth = 0;
    int32_t            maxDepth = 0;
};

// How many arguments the function named on top pops, or -1 where the run
// loop would refuse the call or the count can't be known.
int32_t call_pops(const Walk& walk, const ExprInstr& call)
{
    if (walk.depth < 1)
        return -1;
    const ExprOperand& name = walk.code[walk.stack[walk.depth - 1]].operand;
    if (name.storage != EXS_Function)
        return -1;
    if (call.operand.type < EXT_Char || call.operand.type > EXT_Date)
        return 0;  // not called: the arguments stay
    const DA* types = walk.expr->argTypes;
    int32_t pops = 0;
    for (int32_t i = name.xrefIndex; i >= 0 && i < types->count; ++i, ++pops)
        if (reinterpret_cast<const uint32_t*>(types->data)[i] == 0)
            return walk.depth - 1 >= pops ? pops : -1;
    return -1;
}

// Walks from the start up to `stop` (or to the end), telling `visit` about
// each step; false where the ordinary loop must serve this start.
template <class Visitor>
bool walk_to(Walk& walk, uint32_t stop, Visitor& visit)
{
    for (uint32_t ip = walk.start; ip != stop;) {
        const ExprInstr& instr = walk.code[ip];
        if (instr.opcode >= kExprOpCount)
            return false;
        const ExprOpFacts& facts = kExprOpFacts[instr.opcode];
        if (facts.kind == ExprOpClass::End) {
            visit.escape(kLinkEnd, ip, walk, walk.depth);
            return true;
        }
        if (facts.kind == ExprOpClass::Operand) {
            if (instr.operand.xrefIndex != -1 && instr.operand.storage != EXS_Function)
                visit.escape(kLinkRefresh, ip, walk, walk.depth);
        } else if (facts.kind == ExprOpClass::Call) {
            const int32_t pops = call_pops(walk, instr);
            if (pops < 0)
                return false;
            visit.escape(kLinkCall, ip, walk, walk.depth - 1 - pops);
            walk.depth -= 1 + pops;
        } else {
            if (walk.depth < facts.arity)
                return false;
            const int32_t y = facts.arity == 2 ? walk.stack[--walk.depth] : -1;
            const int32_t x = walk.stack[--walk.depth];
            visit.operate(ip, x, y);
        }
        walk.stack[walk.depth++] = int32_t(ip);
        if (walk.depth > walk.maxDepth)
            walk.maxDepth = walk.depth;
        if (++ip >= walk.count) {
            visit.escape(kLinkEnd, ip, walk, walk.depth);
            return true;
        }
    }
    return true;
}

struct Counter {
    uint32_t steps = 0;
    size_t   pending = 0;
    void escape(uint32_t, uint32_t, const Walk& walk, int32_t)
    {
        ++steps;
        pending += 2 + size_t(walk.depth);
    }
    void operate(uint32_t, int32_t, int32_t) { ++steps; }
};

struct Ignore {
    void escape(uint32_t, uint32_t, const Walk&, int32_t) {}
    void operate(uint32_t, int32_t, int32_t) {}
};

// What a fast step reads and gives: a double or a Long.
enum class Held : uint8_t { Nothing, Double, Long };

struct FastFacts {
    ExprFastOp op;
    Held       reads, gives;
};

FastFacts fast_facts(const ExprInstr& self, const ExprInstr& x)
{
    const uint32_t type = expr_dispatch_type(&self);
    const bool onDouble = expr_value_type(&x) == EXT_Double;
    const bool onLong = expr_value_type(&x) == EXT_Long;
    const uint32_t op = self.opcode;
    if (op == EOP_ADD || op == EOP_SUB || op == EOP_MUL || op == EOP_DIV) {
        const uint32_t k = op - EOP_ADD;
        if (type == EXT_Double)
            return {ExprFastOp(uint32_t(ExprFastOp::AddD) + k), Held::Double, Held::Double};
        if (type == EXT_Long && op != EOP_DIV)
            return {ExprFastOp(uint32_t(ExprFastOp::AddL) + k), Held::Long, Held::Long};
    } else if (op >= EOP_EQU && op <= EOP_GEQ && onDouble) {
        return {ExprFastOp(uint32_t(ExprFastOp::EquD) + op - EOP_EQU), Held::Double, Held::Long};
    } else if (op >= EOP_EQU && op <= EOP_GEQ && onLong) {
        return {ExprFastOp(uint32_t(ExprFastOp::EquL) + op - EOP_EQU), Held::Long, Held::Long};
    } else if ((op == EOP_LAND || op == EOP_LOR) && onLong) {
        return {op == EOP_LAND ? ExprFastOp::LandL : ExprFastOp::LorL, Held::Long, Held::Long};
    } else if (op == EOP_TO_DOUBLE && self.operand.type == EXT_Long) {
        return {ExprFastOp::LongToDouble, Held::Long, Held::Double};
    }
    return {ExprFastOp::None, Held::Nothing, Held::Nothing};
}

// Assignments and indexes aim their own record while they run: whatever
// reads their result must go through the record, as the handlers do.
bool re_aimed(const ExprInstr& instr)
{
    const ExprOpClass kind = kExprOpFacts[instr.opcode].kind;
    return kind == ExprOpClass::Assign || kind == ExprOpClass::Index;
}

constexpr size_t kFastOps = size_t(ExprFastOp::None);

constexpr auto kPairable = [] {
    std::array<std::array<bool, kFastOps>, kFastOps> pairable = {};
#define ZOR_MARK_PAIR(first, second) pairable[size_t(ExprFastOp::first)][size_t(ExprFastOp::second)] = true;
    ZOR_EXPR_PAIRS(ZOR_MARK_PAIR)
#undef ZOR_MARK_PAIR
    return pairable;
}();

// The shape of a second step's sources, or kPairShapes for none.
ExprPairShape pair_shape(ExprFastSource x, ExprFastSource y)
{
    if (y == kFromLast)
        return x == kFromBefore ? kPairBeforeLast : x == kFromSlot ? kPairSlotLast : kPairShapes;
    return x == kFromLast && y == kFromSlot ? kPairLastSlot : kPairShapes;
}

struct Writer {
    ExprInstr*    code;
    ExprLinkStep* step;
    int32_t*      pending;
    // Whose results the registers hold, by type: the last fast step's
    // first, then the one before.
    int32_t       heldDouble[2] = {-1, -1};
    int32_t       heldLong[2] = {-1, -1};

    // The step before, when it is a fast step that reads only slots and is
    // not yet part of a pair.
    ExprLinkStep* pairable = nullptr;
    ExprFastOp    pairableOp = ExprFastOp::None;

    void forget()
    {
        heldDouble[0] = heldDouble[1] = heldLong[0] = heldLong[1] = -1;
        pairable = nullptr;
    }
    int32_t* held(Held type) { return type == Held::Double ? heldDouble : heldLong; }
    ExprFastSource source(Held type, int32_t operand)
    {
        const int32_t* ips = held(type);
        return operand < 0 ? kFromSlot : operand == ips[0] ? kFromLast : operand == ips[1] ? kFromBefore : kFromSlot;
    }

    void escape(uint32_t kind, uint32_t ip, const Walk& walk, int32_t after)
    {
        ExprLinkStep& s = *step++;
        s = {};
        s.kind = kind;
        s.ip = ip;
        if (kind == kLinkRefresh)
            s.xrefIndex = walk.code[ip].operand.xrefIndex;
        if (kind == kLinkCall) {
            // The function and its result type are the records'; a double
            // or a Long needs no detour through the run loop's call.
            const uint32_t type = code[ip].operand.type;
            s.r = code[ip].operand.value;
            s.function = reinterpret_cast<ExprUserFn>(code[walk.stack[walk.depth - 1]].operand.value);
            s.kind = type == EXT_Double ? kLinkCallDouble
                   : type == EXT_Long || type == EXT_ULong ? kLinkCallLong
                   : kLinkCall;
        }
        s.pending = pending;
        *pending++ = walk.depth;
        *pending++ = after;
        memcpy(pending, walk.stack, size_t(walk.depth) * sizeof(int32_t));
        pending += walk.depth;
        // A user function or a nested run may change any slot.
        forget();
    }

    void operate(uint32_t ip, int32_t x, int32_t y)
    {
        ExprInstr& self = code[ip];
        const FastFacts fast = fast_facts(self, code[x]);
        const bool dynamic = re_aimed(code[x]) || (y >= 0 && re_aimed(code[y]));
        ExprLinkStep& s = *step++;
        s = {};
        s.ip = ip;
        if (fast.op == ExprFastOp::None || dynamic) {
            s.kind = kLinkOperator;
            s.handler = kExprOpHandlers[self.opcode][expr_dispatch_type(&self)];
            s.xRecord = code + x;
            s.yRecord = y >= 0 ? code + y : nullptr;
            forget();
            return;
        }
        const ExprFastSource sx = source(fast.reads, x), sy = source(fast.reads, y);
        s.kind = expr_fast_kind(fast.op, sx, sy);
        const ExprPairShape shape = pair_shape(sx, sy);
        if (pairable && shape != kPairShapes && kPairable[size_t(pairableOp)][size_t(fast.op)]) {
            pairable->kind = expr_pair_kind(pairableOp, fast.op, shape);
            pairable = nullptr;
        } else {
            pairable = sx == kFromSlot && sy == kFromSlot ? &s : nullptr;
            pairableOp = fast.op;
        }
        s.r = self.operand.value;
        s.x = code[x].operand.value;
        s.y = y >= 0 ? code[y].operand.value : nullptr;
        int32_t* ips = held(fast.gives);
        ips[1] = ips[0];
        ips[0] = int32_t(ip);
    }
};

void free_programs(ExprLinkHome* home)
{
    for (uint32_t i = 0; i < home->tableSize; ++i) {
        zor_free(home->table[i]);
        home->table[i] = nullptr;
    }
    home->used = 0;
    home->recent = nullptr;
    home->recentStart = EXPR_EMPTY;
}

ExprLinkedProgram** slot_of(ExprLinkHome* home, uint32_t start)
{
    const uint32_t mask = home->tableSize - 1;
    for (uint32_t i = (start * 2654435761u) & mask;; i = (i + 1) & mask)
        if (!home->table[i] || home->table[i]->start == start)
            return &home->table[i];
}

// Keeps the table at most half full; false when it can't grow.
bool make_room(ExprLinkHome* home)
{
    if (home->tableSize && (home->used + 1) * 2 <= home->tableSize)
        return true;
    const uint32_t size = home->tableSize ? home->tableSize * 2 : 8;
    auto** table = static_cast<ExprLinkedProgram**>(zor_calloc(size, sizeof(ExprLinkedProgram*)));
    if (!table)
        return false;
    ExprLinkedProgram** old = home->table;
    const uint32_t oldSize = home->tableSize;
    home->table = table;
    home->tableSize = size;
    for (uint32_t i = 0; i < oldSize; ++i)
        if (old[i])
            *slot_of(home, old[i]->start) = old[i];
    zor_free(old);
    return true;
}

ExprLinkedProgram* link(ExprContext* expr, uint32_t start)
{
    Walk walk;
    walk.expr = expr;
    walk.code = reinterpret_cast<ExprInstr*>(expr->code->data);
    walk.count = uint32_t(expr->code->count);
    walk.start = start;
    walk.stack = static_cast<int32_t*>(zor_malloc((walk.count - start + 1) * sizeof(int32_t)));
    if (!walk.stack)
        return nullptr;
    Counter counter;
    const bool linkable = walk_to(walk, EXPR_RUN_ALL, counter);
    const size_t steps = linkable ? counter.steps : 0;
    const size_t bytes = sizeof(ExprLinkedProgram) + steps * sizeof(ExprLinkStep) +
                         (linkable ? counter.pending : 0) * sizeof(int32_t);
    auto* program = static_cast<ExprLinkedProgram*>(zor_malloc(bytes));
    if (program) {
        program->start = start;
        program->maxDepth = linkable ? walk.maxDepth : INT32_MAX;
        program->generation = expr_link_home(expr)->generation;
        program->code = walk.code;
        program->count = int32_t(walk.count);
        program->arena = expr->dataArena;
        program->steps = reinterpret_cast<ExprLinkStep*>(program + 1);
        program->pending = reinterpret_cast<int32_t*>(program->steps + steps);
        if (linkable) {
            walk.depth = walk.maxDepth = 0;
            Writer writer{walk.code, program->steps, program->pending};
            walk_to(walk, EXPR_RUN_ALL, writer);
        }
    }
    zor_free(walk.stack);
    return program;
}

}

ExprLinkedProgram* expr_linked(ExprContext* expr, uint32_t start)
{
    ExprLinkHome* home = expr_link_home(expr);
    if (home->off)
        return nullptr;
    ExprLinkedProgram* program = nullptr;
    if (home->tableSize)
        program = *slot_of(home, start);
    // Someone changed the array behind the engine's back: start afresh.
    if (program && (program->code != reinterpret_cast<ExprInstr*>(expr->code->data) ||
                    program->count != expr->code->count || program->arena != expr->dataArena)) {
        expr_link_drop(expr);
        program = nullptr;
    }
    if (!program) {
        if (!make_room(home))
            return nullptr;
        program = link(expr, start);
        if (!program)
            return nullptr;
        *slot_of(home, start) = program;
        ++home->used;
    }
    home->recentStart = start;
    home->recent = program;
    return program;
}

void expr_link_drop(ExprContext* expr)
{
    ExprLinkHome* home = expr_link_home(expr);
    free_programs(home);
    ++home->generation;
}

void expr_link_release(ExprContext* expr)
{
    ExprLinkHome* home = expr_link_home(expr);
    free_programs(home);
    zor_free(home->table);
    home->table = nullptr;
    home->tableSize = 0;
}

int32_t expr_link_pending_at(const ExprContext* expr, const ExprLinkedProgram* program,
                             uint32_t stop, int32_t base)
{
    Walk walk;
    walk.expr = expr;
    walk.code = program->code;
    walk.count = uint32_t(program->count);
    walk.start = program->start;
    walk.stack = expr->stack + base;
    Ignore ignore;
    walk_to(walk, stop, ignore);
    return walk.depth - kExprOpFacts[program->code[stop].opcode].arity;
}
