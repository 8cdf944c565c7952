#include <string>

#include "expr_fixture.h"
#include "fuzz.h"
#include "guard_heap.h"

namespace {

// Every allocation of this program ends at a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

const wchar_t* const kPieces[] = {
    L"a", L"d", L"s", L"ch", L"bf", L"dt", L"vv", L"la", L"c", L"f", L"g", L"f2", L"anyfn", L"wild", L"wildd",
    L"zz", L"1", L"0", L"-1", L"2147483647", L"4294967295", L"1e308", L"0.5", L"\"t\"", L"'x'", L"\"", L"(",
    L")", L"[", L"]", L",", L".", L"->", L"+", L"-", L"*", L"/", L"%", L"<<", L">>", L"&", L"|", L"^", L"~",
    L"!", L"&&", L"||", L"==", L"!=", L"<", L">=", L"=", L"+=", L"<<=", L"++", L"--", L"?", L"/*", L" "};

// The run that the user functions take their whims from.
FuzzRng*      g_rng;
int           g_nested;
const wchar_t* const kRecompiled[] = {L"a = a + 1", L"s = s + \"x\"", L"(", L"wild(a)", L""};

// Fails the run, pops too few or too many arguments, compiles onto the array
// that is running, or runs an expression again, as the generator decides.
int32_t wild(ExprContext* expr, intptr_t start)
{
    uint32_t type = 0, first = 0;
    switch (g_rng->below(6)) {
    case 0: ExprSetEvalErr(expr, 0x80041234); break;
    case 1:
        for (uint32_t n = g_rng->below(4); n > 0; --n)
            ExprPopArgument(expr, &type);
        break;
    case 2: ExprCompile(expr, g_rng->pick(kRecompiled), &first, 0, nullptr, nullptr); break;
    case 3:
        if (g_nested < 3) {
            ++g_nested;
            if (ExprEvaluate(expr, uint32_t(start), start) == 0)
                ExprPopResult(expr);
            --g_nested;
        }
        break;
    default: ExprPopArgument(expr, &type); break;
    }
    return int32_t(g_rng->below(3));
}

double wild_double(ExprContext* expr, intptr_t start)
{
    return wild(expr, start) * 0.5;
}

std::wstring soup(FuzzRng& rng, int pieces)
{
    std::wstring text;
    for (int n = rng.between(1, pieces); n > 0; --n)
        text += std::wstring(rng.pick(kPieces)) + (rng.chance(30) ? L" " : L"");
    return text;
}

}

TEST_CASE("fuzz: Expr compiles token soup and runs what compiles, with user functions on a whim")
{
    fuzz_loop(1500, [](FuzzRng& rng) {
        Sheet e;
        g_rng = &rng;
        REQUIRE(ExprDefineFn(e, ExprUserFn(wild), L"wild", EXT_Long, 1, EXT_Unknown) == 0);
        REQUIRE(ExprDefineFn(e, ExprUserFn(wild_double), L"wildd", EXT_Double, 2, EXT_Long, EXT_Double) == 0);
        for (int formula = rng.between(1, 4); formula > 0; --formula) {
            const std::wstring text = rng.chance(30) ? L"wild(" + soup(rng, 6) + L") + a" : soup(rng, 14);
            CAPTURE(text);
            const uint32_t wanted = rng.chance(20) ? rng.below(9) : 0;
            const ZORStatus status = e.compile(text.c_str(), wanted);
            if (e.first != EXPR_EMPTY)
                CHECK(e.at(e.size() - 1).opcode == EOP_END);
            if (status != 0 || e.first == EXPR_EMPTY)
                continue;
            const uint32_t first = e.first;
            if (ExprEvaluate(e, first, intptr_t(first)) == 0)
                ExprPopResult(e);
            while (e->stackDepth > 0)
                ExprPopResult(e);
        }
        g_rng = nullptr;
    });
}

// The smallest inputs of what the loop above found: a function that pops
// more than it was given read below the stack, and one that compiles while
// its expression runs in linked form read the dropped form afterwards.
TEST_CASE("user functions that pop past their arguments or compile during a linked run")
{
    for (int whim : {1, 2}) {
        Sheet e;
        struct Fn {
            static int32_t pop_three(ExprContext* expr, intptr_t)
            {
                uint32_t type = 1;
                for (int i = 0; i < 3; ++i)
                    ExprPopArgument(expr, &type);
                return type == EXT_Void ? 7 : -1;
            }
            static int32_t compile(ExprContext* expr, intptr_t)
            {
                uint32_t first = 0, type = 0;
                ExprPopArgument(expr, &type);
                ExprCompile(expr, L"a = a + 1", &first, 0, nullptr, nullptr);
                return 7;
            }
        };
        REQUIRE(ExprDefineFn(e, ExprUserFn(whim == 1 ? Fn::pop_three : Fn::compile), L"wild", EXT_Long, 1,
                             EXT_Unknown) == 0);
        REQUIRE(e.compile(L"wild(0) + a") == 0);
        const uint32_t first = e.first;
        for (int run = 0; run < 3; ++run) {
            CAPTURE(whim);
            CAPTURE(run);
            const ZORStatus status = ExprEvaluate(e, first, 0);
            REQUIRE(status == 0);
            CHECK(*static_cast<int32_t*>(ExprPopResult(e)) == 7);
            CHECK(ExprPopResult(e) == nullptr);
            CHECK(e->stackDepth == 0);
        }
    }
}

// Nesting far past the limit fails cleanly in every form, without using up
// the thread's stack, and a formula of a megabyte compiles and runs.
TEST_CASE("nesting 10,000 and 1,000,000 deep fails cleanly; a formula of a megabyte compiles and runs")
{
    Sheet e;
    const std::pair<const wchar_t*, const wchar_t*> forms[] = {
        {L"(", L")"}, {L"-", L""}, {L"a[", L"]"}, {L"f(", L")"}, {L"a=", L""}, {L"!", L""}};
    for (const auto& form : forms)
        for (size_t depth : {size_t(10000), size_t(1000000)}) {
            std::wstring text;
            text.reserve(depth * 3 + 1);
            for (size_t i = 0; i < depth; ++i)
                text += form.first;
            text += L"1";
            for (size_t i = 0; i < depth; ++i)
                text += form.second;
            CAPTURE(std::wstring(form.first));
            CAPTURE(depth);
            CHECK(e.compile(text.c_str()) == EXPR_E_TOO_DEEP);
        }
    std::wstring sum;
    while (sum.size() < (size_t(1) << 19))
        sum += L"1+";
    sum += L"a";
    e.a = 5;
    REQUIRE(e.compile(sum.c_str()) == 0);
    REQUIRE(ExprEvaluate(e, e.first, 0) == 0);
    CHECK(*static_cast<int32_t*>(ExprPopResult(e)) == int32_t(sum.size() / 2) + 5);
}
