#include "alloc_check.h"
#include "dll_image.h"
#include "expr_fixture.h"

TEST_CASE("the DLL exports the expression family")
{
    CHECK(missing_exports({"ExprInit", "ExprRelease", "ExprDefineVar", "ExprDefineConst", "ExprDefineFn",
                           "ExprLookUp", "ExprVarLookUp", "ExprGetFirstVar", "ExprGetNextVar", "ExprGetActExpr",
                           "ExprGetColNo", "ExprGetErrLen", "ExprGetEvalErr", "ExprSetEvalErr", "ExprGetUserPtr",
                           "ExprSetUserPtr", "ExprPopArgument", "ExprPopResult", "ExprCompile", "ExprEvaluate",
                           "ExprXRefOn", "ExprXRefOff", "ExprXRef"}) == "");
}

TEST_CASE("names are unique across kinds; look-ups and the walk see every kind")
{
    Expr e;
    int32_t x = 0, k = 3;
    CHECK(ExprGetActExpr(e) == EXPR_EMPTY);
    CHECK((ExprDefineFn(e, nullptr, L"fn", EXT_Double, 2, EXT_Long, EXT_Unknown) == 0 &&
           ExprDefineVar(e, &x, L"fn", EXT_Long) == ZOR_TYPE_E_NAMECONFLICT && ExprDefineVar(e, &x, L"x", EXT_Long) == 0));
    CHECK((ExprDefineConst(e, &k, L"x", EXT_Long) == ZOR_TYPE_E_NAMECONFLICT && ExprDefineConst(e, &k, L"k", EXT_Long) == 0));
    CHECK(ExprDefineFn(e, nullptr, L"x", EXT_Long, 0) == ZOR_TYPE_E_NAMECONFLICT);
    CHECK(DAGetSize(e->argTypes) == 3);  // the refused function left no list behind
    CHECK((ExprVarLookUp(e, L"k") == nullptr && e.error_text() == L"k"));
    const ExprOperand* constant = ExprLookUp(e, L"k");
    REQUIRE(constant != nullptr);
    CHECK((constant->storage == EXS_Const && constant->value == &k && constant->xrefIndex == -1));
    REQUIRE(e.compile(L"x + x") == 0);
    CHECK((ExprVarLookUp(e, L"x")->value == &x && ExprLookUp(e, L"x")->useCount == 2));
    CHECK((ExprLookUp(e, L"nosuch") == nullptr && e.error_text() == L"nosuch"));

    std::wstring names;
    ExprOperand operand = {};
    void* iter = nullptr;
    for (const wchar_t* name = ExprGetFirstVar(e, &operand, &iter); name; name = ExprGetNextVar(e, &operand, &iter))
        names += std::wstring(name) + L":" + std::to_wstring(operand.storage) + L" ";
    CHECK((names == L"fn:4 k:5 x:0 " && iter == nullptr));
    CHECK((ExprSetUserPtr(e, &x) == nullptr && ExprSetUserPtr(e, &k) == &x && ExprGetUserPtr(e) == &k));
}

TEST_CASE("arena growth carries every earlier constant along")
{
    Expr e;
    std::wstring text = L"0";
    double sum = 0;
    for (int i = 1; i < 300; ++i) {
        text += L" + " + std::to_wstring(i) + (i % 2 ? L".5" : L"");
        sum += i + (i % 2 ? 0.5 : 0.0);
    }
    void* value = nullptr;
    CHECK((e.eval(text.c_str(), &value) == 0 && *static_cast<double*>(value) == sum && e->dataArenaSize > 2048));
}

TEST_CASE("init and defines survive exhaustion")
{
    NoLeak leak;
    fail_each_allocation([]() {
        ExprContext ctx;
        const ZORStatus status = ExprInit(&ctx, 32, 32, 1, 1, L";", 1, nullptr, nullptr, nullptr, nullptr, nullptr);
        CHECK((status == 0 || status == ZOR_E_OUTOFMEMORY));
        if (status != 0)
            return;
        int32_t x = 0;
        const ZORStatus defined = ExprDefineFn(&ctx, nullptr, L"fn", EXT_Long, 3, EXT_Long, EXT_Long, EXT_Long);
        CHECK((defined == 0 || defined == ZOR_E_OUTOFMEMORY));
        CHECK(DAGetSize(ctx.argTypes) == (defined == 0 ? 4 : 0));
        CHECK(ExprDefineVar(&ctx, &x, L"x", EXT_Long) != ZOR_TYPE_E_NAMECONFLICT);
        ExprRelease(&ctx);
    });
}
