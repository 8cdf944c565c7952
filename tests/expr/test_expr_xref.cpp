#include "alloc_check.h"
#include "expr_fixture.h"

namespace {

using List = std::vector<int32_t>;

List list_of(ExprContext* expr)
{
    const int32_t* data = reinterpret_cast<const int32_t*>(expr->xrefList->data);
    return List(data, data + expr->xrefList->count);
}

// The run that a variable's link points at, up to its closing -1.
List run_of(ExprContext* expr, const wchar_t* name)
{
    List list = list_of(expr), run;
    for (int32_t i = ExprLookUp(expr, name)->xrefIndex; i >= 0 && list.at(size_t(i)) != -1; ++i)
        run.push_back(list[size_t(i)]);
    return run;
}

struct Links : Expr {
    int32_t v = 0, w = 0, a = 0, x = 0, y = 0;
    Links()
    {
        for (auto [p, name] : {std::pair{&v, L"v"}, {&w, L"w"}, {&a, L"a"}, {&x, L"x"}, {&y, L"y"}})
            REQUIRE(ExprDefineVar(&ctx, p, name, EXT_Long) == 0);
    }
    int32_t line(const wchar_t* text)
    {
        CAPTURE(std::wstring(text));
        REQUIRE(compile(text) == 0);
        return int32_t(first);
    }
    int32_t eval(int32_t start)
    {
        REQUIRE(ExprEvaluate(&ctx, uint32_t(start), 0) == 0);
        return *static_cast<int32_t*>(ExprPopResult(&ctx));
    }
};

int32_t g_constant = 3;
int32_t answer(ExprContext*, intptr_t) { return 42; }

}

TEST_CASE("the list holds one run per assigned variable, and every copy of it is linked")
{
    Links e;
    REQUIRE(ExprXRef(e) == 0);  // recording is off: nothing but the closing -1
    CHECK((list_of(e) == List{-1} && ExprLookUp(e, L"v")->xrefIndex == -1));
    REQUIRE(ExprDefineConst(e, &g_constant, L"k", EXT_Long) == 0);
    REQUIRE(ExprDefineFn(e, reinterpret_cast<ExprUserFn>(answer), L"f", EXT_Long, 0) == 0);
    const int32_t fnIndex = ExprLookUp(e, L"f")->xrefIndex;
    REQUIRE((ExprXRefOn(e) == 0 && list_of(e).empty()));
    e.line(L"v = 7");
    REQUIRE(ExprXRefOn(e) == 0);  // forgets the record above
    const int32_t reads = e.line(L"w = v + k + f()");  // reads v before anything assigns it
    const int32_t first = e.line(L"v = 1"), twice = e.line(L"a = (a = 2) + 1"), second = e.line(L"v++");
    ExprXRefOff(e);
    e.line(L"v = 5");  // compiled while off: no record
    REQUIRE(ExprXRef(e) == 0);

    CHECK((run_of(e, L"v") == List{first, second} && run_of(e, L"w") == List{reads}));
    CHECK((run_of(e, L"a") == List{twice} && list_of(e).size() == 7));  // three closed runs
    CHECK((ExprLookUp(e, L"k")->xrefIndex == -1 && ExprLookUp(e, L"f")->xrefIndex == fnIndex));
    int32_t linked = 0;
    for (uint32_t i = 0; i < e.size(); ++i) {
        const ExprOperand& op = e.at(i).operand;
        linked += op.value == &e.v && op.xrefIndex == ExprLookUp(e, L"v")->xrefIndex;
        CHECK((op.storage != EXS_Function || op.xrefIndex == fnIndex));
    }
    CHECK(linked == 8);  // two per assignment, one per other read
    // Laying out again appends fresh runs and moves the links to them.
    REQUIRE(ExprXRef(e) == 0);
    CHECK((list_of(e).size() == 14 && ExprLookUp(e, L"v")->xrefIndex >= 7 && run_of(e, L"v") == List{first, second}));
}

TEST_CASE("reading a variable first re-runs the earlier expressions that assign it")
{
    Links e;
    REQUIRE(ExprXRefOn(e) == 0);
    const int32_t one = e.line(L"x = 1"), copy = e.line(L"y = x");
    e.line(L"x = 2");  // behind y = x: never re-run for it
    const int32_t bump = e.line(L"v = v + 1"), readV = e.line(L"w = v * 10"), sum = e.line(L"y + (v + x)");
    REQUIRE(ExprXRef(e) == 0);

    CHECK((e.eval(copy) == 1 && e.eval(one) == 1));
    // Its own start stops the expression from re-running itself.
    CHECK((e.eval(bump) == 1 && e.eval(readV) == 20 && e.v == 2));
    // Re-runs between the operands leave exactly one result behind.
    const int32_t depth = e->stackDepth;
    CHECK((e.eval(sum) == 1 + 3 + 2 && e->stackDepth == depth));  // both x assignments start earlier
    e.v = 0;  // running everything re-runs nothing
    REQUIRE(ExprEvaluate(e, EXPR_RUN_ALL, 0) == 0);
    CHECK((e.v == 1 && e.w == 10 && e.x == 2));
}

TEST_CASE("a failing re-run ends the reading run; a new recording drops the old links")
{
    Links e;
    REQUIRE(ExprXRefOn(e) == 0);
    e.line(L"x = 1 / a");
    const int32_t reads = e.line(L"y + x");
    REQUIRE(ExprXRef(e) == 0);
    CHECK((ExprEvaluate(e, uint32_t(reads), 0) == ZOR_DISP_E_DIVBYZERO && ExprGetEvalErr(e) == ZOR_DISP_E_DIVBYZERO));
    REQUIRE(ExprXRefOn(e) == 0);
    CHECK(ExprLookUp(e, L"x")->xrefIndex == -1);
    for (uint32_t i = 0; i < e.size(); ++i)
        CHECK(e.at(i).operand.xrefIndex == -1);
}

TEST_CASE("a long chain of dependencies ends in a failure instead of exhausting the stack")
{
    for (int links : {300, 60000}) {
        Expr e;
        List vars(size_t(links) + 1);
        std::vector<std::wstring> names(vars.size());
        REQUIRE(ExprXRefOn(e) == 0);
        for (size_t i = 0; i < vars.size(); ++i) {
            names[i] = L"v" + std::to_wstring(i);
            REQUIRE(ExprDefineVar(e, &vars[i], names[i].c_str(), EXT_Long) == 0);
            REQUIRE((i == 0 || e.compile((names[i] + L" = " + names[i - 1] + L" + 1").c_str()) == 0));
        }
        const ZORStatus status = ExprXRef(e) == 0 ? ExprEvaluate(e, e.first, 0) : ZOR_E_UNEXPECTED;
        CHECK((links == 300 ? status == 0 && vars.back() == 300 : status == EXPR_E_TOO_DEEP));
    }
}

TEST_CASE("exhaustion: a failed start records nothing, a failed look-up table still links")
{
    Links e;
    {
        AllAllocationsFail fail;
        CHECK(ExprXRefOn(e) == ZOR_E_OUTOFMEMORY);
    }
    CHECK((e.line(L"v = 1") == 0 && e->xrefOn == 0 && ExprXRef(e) == 0));
    REQUIRE(ExprXRefOn(e) == 0);
    const int32_t assigns = e.line(L"v = 2"), reads = e.line(L"v");
    zor_alloc_probe::fail_nth(1);
    CHECK(ExprXRef(e) == 0);
    zor_alloc_probe::fail_nth(0);
    CHECK((run_of(e, L"v") == List{assigns} && e.eval(reads) == 2));
}
