#include "alloc_check.h"
#include "expr_fixture.h"

namespace {

// What the functions saw, reached through the user pointer.
struct Seen { uint32_t types[2]; double values[2]; int calls; };

Seen* seen(ExprContext* expr) { return static_cast<Seen*>(ExprGetUserPtr(expr)); }

// Pops (Long, Double), last first.
void pop_two(ExprContext* expr)
{
    Seen* s = seen(expr);
    ++s->calls;
    s->values[1] = *static_cast<double*>(ExprPopArgument(expr, &s->types[1]));
    s->values[0] = *static_cast<int32_t*>(ExprPopArgument(expr, &s->types[0]));
}

TSString g_text = {};
TDDate   g_date = {2026, 11, 0, 22, 0, 0, 0, 0};

int32_t char_fn(ExprContext* expr, intptr_t) { pop_two(expr); return 0x12345; }
int32_t long_fn(ExprContext* expr, intptr_t arg) { pop_two(expr); return int32_t(arg); }
double double_fn(ExprContext* expr, intptr_t) { pop_two(expr); return 2.5; }
ExprBitField bits_fn(ExprContext* expr, intptr_t) { pop_two(expr); return {7, 9}; }
TSString* string_fn(ExprContext* expr, intptr_t) { pop_two(expr); return TSSetStr(&g_text, L"text"); }
TDDate* date_fn(ExprContext* expr, intptr_t) { pop_two(expr); return &g_date; }
int32_t failing_fn(ExprContext* expr, intptr_t) { ++seen(expr)->calls; ExprSetEvalErr(expr, 0x80041234); return 7; }
int32_t counting_fn(ExprContext* expr, intptr_t) { ++seen(expr)->calls; return 1; }
// Runs the expression at `start` 30 times, which grows the shared stack, then
// takes the 30 results off again.
int32_t nesting_fn(ExprContext* expr, intptr_t start)
{
    uint32_t type;
    ExprPopArgument(expr, &type);
    for (int i = 0; i < 30; ++i)
        ExprEvaluate(expr, uint32_t(start), 0);
    for (int i = 0; i < 30; ++i)
        ExprPopResult(expr);
    return 42;
}

struct Machine : Sheet {
    Machine()
    {
        a = 4, d = 0.5;
        ExprSetUserPtr(*this, &calls);
        const struct { void* fn; const wchar_t* name; uint32_t type; } typed[] = {
            {(void*)char_fn, L"fc", EXT_Char},   {(void*)long_fn, L"fl", EXT_Long},     {(void*)long_fn, L"fu", EXT_ULong},
            {(void*)double_fn, L"fd", EXT_Double}, {(void*)bits_fn, L"fb", EXT_BitField},
            {(void*)string_fn, L"fs", EXT_String}, {(void*)date_fn, L"ft", EXT_Date}};
        for (const auto& f : typed)
            ExprDefineFn(*this, ExprUserFn(f.fn), f.name, f.type, 2, EXT_Long, EXT_Double);
        ExprDefineFn(*this, ExprUserFn(failing_fn), L"fail", EXT_Long, 0);
        ExprDefineFn(*this, ExprUserFn(counting_fn), L"count", EXT_Long, 1, EXT_Long);
        ExprDefineFn(*this, ExprUserFn(counting_fn), L"two", EXT_Long, 2, EXT_Long, EXT_Long);
        ExprDefineFn(*this, ExprUserFn(counting_fn), L"nothing", EXT_Void, 1, EXT_Unknown);
        ExprDefineFn(*this, ExprUserFn(nesting_fn), L"nest", EXT_Long, 1, EXT_Long);
    }
    Seen calls = {};
};

}

TEST_CASE("user functions of every result type get their arguments last first")
{
    Machine m;
    // A converted argument arrives converted, typed as it was written.
    const struct { const wchar_t *text, *want; double second; } rows[] = {
        {L"fc(a, d)", L"C 9029", 0.5}, {L"fl(a, d)", L"L -3", 0.5},   {L"fu(a, d)", L"U 4294967293", 0.5},
        {L"fd(a, d)", L"D 2.5", 0.5},  {L"fb(a, d)", L"B 7:9", 0.5},  {L"fs(a, d)", L"S text", 0.5},
        {L"ft(a, d)", L"T 2026-11-22", 0.5}, {L"fl(a, 3)", L"L -3", 3.0}};
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.text));
        REQUIRE((m.compile(row.text) == 0 && ExprEvaluate(m, m.first, -3) == 0));
        CHECK(show(m.resultType, ExprPopResult(m)) == row.want);
        CHECK((m.calls.values[0] == 4 && m.calls.types[0] == EXT_Long && m.calls.values[1] == row.second));
        CHECK((m.calls.types[1] == (row.second == 3.0 ? EXT_Long : EXT_Double) && m->stackDepth == 0));
    }
    // A function of no result type is not called; its arguments stay below it.
    REQUIRE(m.compile(L"nothing(\"s\")") == 0);
    const int before = m.calls.calls;
    CHECK((ExprEvaluate(m, m.first, 0) == 0 && m.calls.calls == before && m->stackDepth == 2));
    TSInit(&g_text);
}

TEST_CASE("a code set by a user function ends the run once its result is stored")
{
    Machine m;
    REQUIRE(m.compile(L"two(fail(), count(1))") == 0);
    CHECK((ExprEvaluate(m, m.first, 0) == 0x80041234 && ExprGetEvalErr(m) == 0x80041234));
    CHECK(m.calls.calls == 1);  // neither count nor two ran
    CHECK((*static_cast<int32_t*>(m.at(m.first + 1).operand.value) == 7 && m->stackDepth == 0));
    // An operator's failure leaves what was pending on the stack, evalErr clear.
    REQUIRE(m.compile(L"two(1, *a)") == 0);
    CHECK((ExprEvaluate(m, m.first, 0) == ZOR_E_NOTIMPL && m->stackDepth == 1 && ExprGetEvalErr(m) == 0));
    m->stackDepth = 0;
    // Started in the middle, an operator finds no operand, a call no function.
    CHECK(ExprEvaluate(m, m.first + 2, 0) == ZOR_E_UNEXPECTED);
    REQUIRE(m.compile(L"count(1)") == 0);
    CHECK(ExprEvaluate(m, m.first + 2, 0) == ZOR_E_UNEXPECTED);
    REQUIRE(ExprEvaluate(m, m.first, 0) == 0);  // its result stays on top
    CHECK(ExprEvaluate(m, m.first + 2, 0) == ZOR_E_UNEXPECTED);
}

TEST_CASE("start marks, run-all and a stack that grows by 20 and is the caller's to balance")
{
    NoLeak leak;
    Machine m;
    ExprSetEvalErr(m, 5);
    CHECK((ExprEvaluate(m, EXPR_EMPTY, 0) == 0 && ExprGetEvalErr(m) == 0));
    REQUIRE((m.compile(L"a") == 0 && m.compile(L"d") == 0));
    CHECK((ExprEvaluate(m, m.size(), 0) == 0 && ExprEvaluate(m, 0x7FFFFFFF, 0) == 0 && m->stack == nullptr));
    {
        AllAllocationsFail fail;  // a stack that can't grow fails the run and stays usable
        CHECK((ExprEvaluate(m, m.first, 0) == ZOR_E_OUTOFMEMORY && m->stackDepth == 0 && m->stackSize == 0));
    }
    CHECK((ExprEvaluate(m, EXPR_RUN_ALL, 0) == 0 && m->stackDepth == 4));
    CHECK((ExprPopResult(m) == nullptr && ExprPopResult(m) == &m.d));
    CHECK((ExprPopResult(m) == nullptr && ExprPopResult(m) == &m.a));
    for (int i = 0; i < 20; ++i)
        REQUIRE(ExprEvaluate(m, 0, 0) == 0);
    CHECK(m->stackSize == 20);
    REQUIRE(ExprEvaluate(m, m.first, 0) == 0);
    CHECK((m->stackSize == 40 && m->stackDepth == 21));
    CHECK((ExprPopResult(m) == &m.d && ExprPopResult(m) == &m.a));
}

TEST_CASE("a user function may run the same object again on the shared stack")
{
    Machine m;
    REQUIRE(m.compile(L"d") == 0);
    const uint32_t inner = m.first;
    REQUIRE(m.compile(L"two(a, nest(a))") == 0);
    REQUIRE(ExprEvaluate(m, m.first, intptr_t(inner)) == 0);
    CHECK((m->stackDepth == 3 && m->stackSize == 40));  // "two" leaves its arguments
    CHECK((*static_cast<int32_t*>(ExprPopResult(m)) == 1 && *static_cast<int32_t*>(ExprPopResult(m)) == 42));
    CHECK((ExprPopResult(m) == &m.a && m.calls.calls == 1));
}
