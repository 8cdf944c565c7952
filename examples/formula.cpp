// ZORBaseUx64 from C++: a formula over two variables, a constant and a
// function of the program's own, run with fresh values; then two formulas
// with mistakes, reported with their column and text.
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <zorbase.h>

namespace {

// A user function runs inside ExprEvaluate. It pops its arguments, the last
// one first, in the types it was defined with, and returns its result in
// its own type. It must not throw; to stop the run it calls ExprSetEvalErr.
double clamp(ExprContext* expr, intptr_t)
{
    uint32_t t;
    double high = *static_cast<double*>(ExprPopArgument(expr, &t));
    double low = *static_cast<double*>(ExprPopArgument(expr, &t));
    double value = *static_cast<double*>(ExprPopArgument(expr, &t));
    return value < low ? low : value > high ? high : value;
}

void report_compile_error(ExprContext* expr, const wchar_t* text, ZORStatus status)
{
    wchar_t message[256];
    // The catalogue has the compiler's own codes; Windows may have no text for
    // a platform code such as an unknown name, so say that one in your words.
    if (status == ZOR_DISP_E_UNKNOWNNAME)
        swprintf(message, 256, L"unknown name \"%ls\"", expr->errorText);
    else
        ZORBaseFormatMessage(status, 1033, message, 256);
    // The column stands behind the failing token, counted from 0.
    wprintf(L"\"%ls\": column %u: %ls\n", text, ExprGetColNo(expr), message);
}

} // namespace
int main()
{
    _setmode(_fileno(stdout), _O_U8TEXT);

    // The engine lives in your storage. Arguments: longest name and line, case-
    // sensitive names, C-like dialect (2), no terminators, reads its own tokens.
    ExprContext expr;
    if (ExprInit(&expr, 256, 256, 0, 2, nullptr, 1, nullptr, nullptr, nullptr, nullptr, nullptr))
        return 1;

    // Variables are read and written in place and names are borrowed: both
    // must outlive the engine.
    int32_t qty = 0;
    double price = 0;
    const double vat = 0.19;
    ExprDefineVar(&expr, &qty, L"qty", EXT_Long);
    ExprDefineVar(&expr, &price, L"price", EXT_Double);
    ExprDefineConst(&expr, &vat, L"vat", EXT_Double);
    ExprDefineFn(&expr, reinterpret_cast<ExprUserFn>(clamp), L"clamp", EXT_Double, 3, EXT_Double,
                 EXT_Double, EXT_Double);

    // The result is converted to EXT_Double, whatever the formula's type.
    uint32_t start;
    if (ExprCompile(&expr, L"clamp(qty * price * (1 + vat), 0, 500)", &start, EXT_Double,
                    nullptr, nullptr))
        return 1;
    for (qty = 1; qty <= 3; ++qty) {
        price = 99.5 * qty;
        if (ExprEvaluate(&expr, start, 0))
            return 1;
        // Every run leaves its result on the engine's stack: pop it each time.
        double result = *static_cast<double*>(ExprPopResult(&expr));
        wprintf(L"qty %d, price %.2f: %.2f\n", qty, price, result);
    }

    const wchar_t* mistakes[] = {L"qty * (price + 1", L"qty * cost"};
    for (const wchar_t* text : mistakes) {
        if (ZORStatus status = ExprCompile(&expr, text, &start, 0, nullptr, nullptr))
            report_compile_error(&expr, text, status);
    }
    ExprRelease(&expr);
    return 0;
}
