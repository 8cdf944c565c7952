// The linked run against the ordinary loop: twin objects compile the same
// random sheets and run them, one with the linked form switched off, and
// after every run they must agree on everything a caller can see: the code,
// evalErr, the stack, every instruction record, every arena byte, every
// variable and what each user function saw and did.
#include <string.h>

#include <string>

#include "expr/expr_link.h"
#include "expr/expr_op_facts.h"
#include "alloc_check.h"
#include "expr_fixture.h"

namespace {

struct Random {
    uint64_t state;
    uint32_t next() { return state ^= state << 13, state ^= state >> 7, state ^= state << 17, uint32_t(state >> 16); }
    uint32_t below(uint32_t n) { return next() % n; }
};

// Every variable in one block, so that a record's address can be compared
// as an offset; arrays last, with room behind them for an index that a
// start inside an expression puts on the wrong base.
struct Vars {
    uint16_t     c0, c1;
    int32_t      l0, l1;
    uint32_t     u0, u1;
    double       d0, d1;
    ExprBitField b0, b1;
    TDDate       t0, t1;
    int32_t      la[4];
    double       da[4];
    unsigned char room[64];
};

const struct { size_t offset; const wchar_t* name; uint32_t type; } kVars[] = {
    {offsetof(Vars, c0), L"c0", EXT_Char},     {offsetof(Vars, c1), L"c1", EXT_Char},
    {offsetof(Vars, l0), L"l0", EXT_Long},     {offsetof(Vars, l1), L"l1", EXT_Long},
    {offsetof(Vars, u0), L"u0", EXT_ULong},    {offsetof(Vars, u1), L"u1", EXT_ULong},
    {offsetof(Vars, d0), L"d0", EXT_Double},   {offsetof(Vars, d1), L"d1", EXT_Double},
    {offsetof(Vars, b0), L"b0", EXT_BitField}, {offsetof(Vars, b1), L"b1", EXT_BitField},
    {offsetof(Vars, t0), L"t0", EXT_Date},     {offsetof(Vars, t1), L"t1", EXT_Date},
    {offsetof(Vars, la), L"la", EXT_Long},     {offsetof(Vars, da), L"da", EXT_Double}};

std::string hex(const void* bytes, size_t size)
{
    std::string text;
    for (size_t i = 0; i < size; ++i)
        text += "0123456789abcdef"[static_cast<const unsigned char*>(bytes)[i] >> 4],
            text += "0123456789abcdef"[static_cast<const unsigned char*>(bytes)[i] & 15];
    return text;
}

struct Twin;
Twin& twin_of(ExprContext* expr) { return *static_cast<Twin*>(ExprGetUserPtr(expr)); }

struct Twin : Expr {
    Vars        v{};
    TSString    s0, s1, made;
    Random      rnd;  // what the functions do; in step while the twins agree
    std::string log;
    std::vector<uint32_t> starts;
    int         nesting = 0;

    Twin(uint64_t seed, bool linked) : rnd{seed}
    {
        TSClear(&s0), TSClear(&s1), TSClear(&made);
        expr_link_home(&ctx)->off = !linked;
        ExprSetUserPtr(&ctx, this);
        for (const auto& var : kVars)
            REQUIRE(ExprDefineVar(&ctx, reinterpret_cast<char*>(&v) + var.offset, var.name, var.type) == 0);
        REQUIRE(ExprDefineVar(&ctx, &s0, L"s0", EXT_String) == 0);
        REQUIRE(ExprDefineVar(&ctx, &s1, L"s1", EXT_String) == 0);
        REQUIRE(ExprDefineFn(&ctx, reinterpret_cast<ExprUserFn>(f1), L"f1", EXT_Long, 1, EXT_Long) == 0);
        REQUIRE(ExprDefineFn(&ctx, reinterpret_cast<ExprUserFn>(h2), L"h2", EXT_Double, 2, EXT_Double, EXT_Long) == 0);
        REQUIRE(ExprDefineFn(&ctx, reinterpret_cast<ExprUserFn>(g0), L"g0", EXT_Double, 0) == 0);
        REQUIRE(ExprDefineFn(&ctx, reinterpret_cast<ExprUserFn>(s1fn), L"sx", EXT_String, 1, EXT_Unknown) == 0);
        REQUIRE(ExprDefineFn(&ctx, reinterpret_cast<ExprUserFn>(g0), L"vf", EXT_Void, 1, EXT_Long) == 0);
    }
    ~Twin() { TSInit(&s0), TSInit(&s1), TSInit(&made); }

    // What a function does besides its work: pop one too few or too many,
    // fail, compile, run an earlier expression and keep or pop its result.
    void act(ExprContext* expr, int args, intptr_t userArg)
    {
        // What the function can see: the pending stack, the slots written so
        // far, the variables.
        log += "call with " + std::to_string(args) + " on";
        for (int32_t i = 0; i < expr->stackDepth; ++i)
            log += " " + std::to_string(expr->stack[i]);
        log += ": " + hex(expr->dataArena, size_t(expr->dataArenaUsed)) + " " + hex(&v, sizeof v);
        const uint32_t what = nesting < 2 ? rnd.below(16) : 0;
        // An extra pop may take a conversion's entry, whose type is not its
        // slot's: only the type is told then.
        const int pops = args - (what == 1) + (what == 2 && expr->stackDepth > args);
        for (int i = 0; i < pops && expr->stackDepth > 0; ++i) {
            uint32_t type = 0;
            const void* value = ExprPopArgument(expr, &type);
            const std::wstring text = i < args && type <= EXT_Date ? show(type, value) : L"?";
            log += " " + std::to_string(type) + " " + std::string(text.begin(), text.end());
        }
        ++nesting;
        if (what == 3)
            ExprSetEvalErr(expr, 0x80041234);
        if (what == 4) {
            uint32_t first = 0;
            log += " compiled " + std::to_string(ExprCompile(expr, L"l1 = l1 + 1", &first, 0, nullptr, nullptr));
        }
        if ((what == 5 || what == 6) && !starts.empty()) {
            log += " ran " + std::to_string(ExprEvaluate(expr, starts[rnd.below(uint32_t(starts.size()))], userArg));
            if (what == 5 && expr->stackDepth > 0)
                ExprPopResult(expr);
        }
        if (what == 7)
            ExprXRef(expr);
        --nesting;
        log += "\n";
    }
    static int32_t f1(ExprContext* expr, intptr_t arg) { twin_of(expr).act(expr, 1, arg); return 7; }
    static double h2(ExprContext* expr, intptr_t arg) { twin_of(expr).act(expr, 2, arg); return 2.5; }
    static double g0(ExprContext* expr, intptr_t arg) { twin_of(expr).act(expr, 0, arg); return -1.0; }
    static TSString* s1fn(ExprContext* expr, intptr_t arg)
    {
        twin_of(expr).act(expr, 1, arg);
        return TSSetStr(&twin_of(expr).made, L"made");
    }

    // A record's value, the same for both twins when they agree.
    std::string where(const ExprInstr& in) const
    {
        const auto* p = static_cast<const unsigned char*>(in.operand.value);
        const auto* vars = reinterpret_cast<const unsigned char*>(&v);
        if (in.operand.storage == EXS_Function || !p)
            return std::to_string(reinterpret_cast<uintptr_t>(p));
        if (p >= vars && p < vars + sizeof v)
            return "V" + std::to_string(p - vars);
        if (p >= ctx.dataArena && p < ctx.dataArena + ctx.dataArenaSize)
            return "A" + std::to_string(p - ctx.dataArena);
        if (p == static_cast<const void*>(&s0) || p == static_cast<const void*>(&s1))
            return p == static_cast<const void*>(&s0) ? "s0" : "s1";
        const uint32_t converted = expr_converts_to(in.opcode);
        const std::wstring text = show(converted != EXT_Void ? converted : in.operand.type, p);
        return "O" + std::string(text.begin(), text.end());
    }

    // The cross-reference lays variables out in the order of their symbols'
    // addresses, which differ between the twins: a link is shown as the
    // starts it leads to. A function's index is its argument list, and an
    // end's is no link.
    std::string links(const ExprInstr& in) const
    {
        const ExprOperand& operand = in.operand;
        if (in.opcode == EOP_END || operand.storage == EXS_Function || operand.xrefIndex < 0)
            return std::to_string(operand.xrefIndex);
        std::string run = "[";
        const auto* list = reinterpret_cast<const int32_t*>(ctx.xrefList->data);
        for (int32_t i = operand.xrefIndex; i < ctx.xrefList->count && list[i] != -1; ++i)
            run += std::to_string(list[i]) + " ";
        return run + "]";
    }

    // Everything a caller can see, as text.
    std::string state() const
    {
        std::string all = "depth " + std::to_string(ctx.stackDepth) + " size " + std::to_string(ctx.stackSize) +
                          " err " + std::to_string(ctx.evalErr) + "\nstack";
        for (int32_t i = 0; i < ctx.stackDepth; ++i)
            all += " " + std::to_string(ctx.stack[i]);
        all += "\n";
        for (uint32_t i = 0; i < size(); ++i) {
            const ExprInstr& in = at(i);
            char row[96];
            snprintf(row, sizeof row, "%u: %u %u %u %u ", i, in.opcode, in.operand.type, in.operand.storage,
                     in.operand.useCount);
            all += row + links(in) + " " + where(in) + "\n";
        }
        all += hex(ctx.dataArena, size_t(ctx.dataArenaUsed)) + "\n" + hex(&v, sizeof v) + "\n";
        std::wstring strings = show(EXT_String, &s0) + show(EXT_String, &s1);
        return all + std::string(strings.begin(), strings.end()) + log;
    }
};

const wchar_t* const kBinary[] = {L"+", L"-", L"*", L"/", L"%", L"<<", L">>", L"&", L"|", L"^",
                                  L"==", L"!=", L"<", L">", L"<=", L">=", L"&&", L"||"};
const wchar_t* const kAssign[] = {L"=", L"+=", L"-=", L"*=", L"/=", L"%=", L"<<=", L">>=", L"&=", L"|=", L"^="};
const wchar_t* const kLeaves[] = {L"c0", L"c1", L"l0", L"l1", L"u0", L"u1", L"d0", L"d1", L"b0", L"b1",
                                  L"t0", L"t1", L"s0", L"s1", L"la[2]", L"da[1]", L"0", L"3", L"2.5",
                                  L"0.0", L"'A'", L"\"ab\"", L"70000", L"g0()"};
const wchar_t* const kTargets[] = {L"c0", L"l0", L"l1", L"u0", L"d0", L"d1", L"b0", L"t0", L"s0", L"la[1]", L"da[3]"};

template <size_t N>
std::wstring pick(Random& rnd, const wchar_t* const (&from)[N])
{
    return from[rnd.below(N)];
}

std::wstring formula(Random& rnd, int depth)
{
    const uint32_t kind = depth == 0 ? 0 : rnd.below(12);
    if (kind < 3)
        return pick(rnd, kLeaves);
    if (kind < 6)
        return L"(" + formula(rnd, depth - 1) + L" " + pick(rnd, kBinary) + L" " + formula(rnd, depth - 1) + L")";
    if (kind == 6)
        return L"(" + pick(rnd, kTargets) + L" " + pick(rnd, kAssign) + L" " + formula(rnd, depth - 1) + L")";
    if (kind == 7)
        return (rnd.below(2) ? L"-" : rnd.below(2) ? L"!" : L"~") + formula(rnd, depth - 1);
    if (kind == 8)
        return rnd.below(2) ? L"++" + pick(rnd, kTargets) : pick(rnd, kTargets) + L"--";
    if (kind == 9)
        return L"f1(" + formula(rnd, depth - 1) + L")";
    if (kind == 10)
        return L"h2(" + formula(rnd, depth - 1) + L", " + formula(rnd, depth - 1) + L")";
    return rnd.below(2) ? L"sx(" + formula(rnd, depth - 1) + L")" : L"vf(" + formula(rnd, depth - 1) + L")";
}

// One sheet: a few formulas, some of them recorded for the cross-reference,
// each run a few times from its start (now and then from inside it), with
// the results popped or left to pile up.
void run_sheet(uint64_t seed)
{
    Random rnd{seed};
    Twin plain(seed, false), linked(seed, true);
    Twin* twins[] = {&plain, &linked};
    const bool xref = rnd.below(2);
    for (Twin* t : twins)
        if (xref)
            REQUIRE(ExprXRefOn(*t) == 0);
    for (uint32_t n = 0, count = 2 + rnd.below(5); n < count; ++n) {
        const std::wstring text = formula(rnd, 1 + int(rnd.below(4)));
        for (Twin* t : twins)
            if (t->compile(text.c_str()) == 0 && t->first != EXPR_EMPTY)
                t->starts.push_back(t->first);
    }
    for (Twin* t : twins)
        if (xref)
            ExprXRef(*t);
    for (uint32_t run = 0; run < 12 && !plain.starts.empty(); ++run) {
        uint32_t start = plain.starts[rnd.below(uint32_t(plain.starts.size()))];
        if (rnd.below(8) == 0 && plain->stackDepth == 0)
            start += rnd.below(4);
        if (rnd.below(16) == 0)
            start = EXPR_RUN_ALL;
        const bool pop = rnd.below(4) != 0;
        ZORStatus status[2];
        for (int i = 0; i < 2; ++i) {
            status[i] = ExprEvaluate(*twins[i], start, 0);
            if (status[i] == 0 && pop && (*twins[i])->stackDepth > 0)
                ExprPopResult(*twins[i]);
        }
        CAPTURE(seed);
        CAPTURE(start);
        CHECK(status[0] == status[1]);
        REQUIRE(plain.state() == linked.state());
    }
}

}

TEST_CASE("the linked run leaves exactly what the ordinary loop leaves, on random sheets")
{
    for (uint64_t seed = 1; seed <= 600; ++seed)
        run_sheet(seed * 0x9E3779B97F4A7C15ull);
}

TEST_CASE("where the heap fails, the linked run gives the ordinary loop's answers, and its forms go with the object")
{
    NoLeak noLeak;
    Twin plain(7, false), linked(7, true);
    Twin* twins[] = {&plain, &linked};
    for (Twin* t : twins) {
        t->v.d0 = 0.5, t->v.l0 = 3;
        REQUIRE(t->compile(L"d1 = d0 * 2.0 + l0 / 4.0 - (d0 < 1.0 && l0 > 2)") == 0);
        // The stack is made first, so that only the linking can fail.
        REQUIRE(ExprEvaluate(*t, EXPR_RUN_ALL, 0) == 0);
        (*t)->stackDepth = 0;
    }
    auto run_both = [&] {
        for (Twin* t : twins) {
            CHECK(ExprEvaluate(*t, t->first, 0) == 0);
            ExprPopResult(*t);
            t->v.d0 += 1.0;
        }
        CHECK(plain.state() == linked.state());
    };
    // The run that links at last allocates; the ones after it nothing.
    CHECK(fail_each_allocation(run_both) > 0);
    const long requests = zor_alloc_probe::requests();
    run_both();
    CHECK(zor_alloc_probe::requests() == requests);
    // Results left on the stack until it must grow, and can't.
    AllAllocationsFail noHeap;
    ZORStatus status = ZOR_S_OK;
    while (status == ZOR_S_OK) {
        status = ExprEvaluate(plain, plain.first, 0);
        CHECK(ExprEvaluate(linked, linked.first, 0) == status);
        CHECK(plain.state() == linked.state());
    }
    CHECK(status == ZOR_E_OUTOFMEMORY);
}
