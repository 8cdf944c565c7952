// The runs of a session: linking the cross-reference, evaluating, finding
// the formula behind a failed run, and printing the print lines.
#include "session.h"

#include "text_io.h"

// New assignments since the last link reach the runs only through ExprXRef;
// linking only then keeps the dependency list free of stale copies.
void Session::link()
{
    if (expr_.xrefCounter == linkedCounter_)
        return;
    ExprXRef(&expr_);
    linkedCounter_ = expr_.xrefCounter;
}

ZORStatus Session::evaluate(const Compiled& what, const void*& value)
{
    link();
    ZORStatus status = ExprEvaluate(&expr_, what.start, reinterpret_cast<intptr_t>(&results_));
    if (status != ZOR_S_OK) {
        // A failed run leaves what it had pending; the next run starts clean.
        expr_.stackDepth = 0;
        return status;
    }
    value = ExprPopResult(&expr_);
    return ZOR_S_OK;
}

bool Session::evaluated(const Compiled& what, const wchar_t* kind, const void*& value)
{
    ZORStatus status = evaluate(what, value);
    if (status != ZOR_S_OK)
        report_run_error(what, status, kind);
    return status == ZOR_S_OK;
}

// The engine tells what failed, not where: the dependency runs inside the
// run are hidden. Running the earlier formulas one by one, in their order,
// finds the first that fails on its own, and that is the one to name.
void Session::report_run_error(const Compiled& what, ZORStatus status, const wchar_t* kind)
{
    for (const Compiled& formula : formulas_) {
        if (formula.start >= what.start)
            break;
        const void* value;
        ZORStatus own = evaluate(formula, value);
        if (own == ZOR_S_OK)
            continue;
        diagnostics_.report(formula.at, formula.item.start, formula.item.text.size(),
                            L"run error in the formula \"" + formula.item.text + L"\": " +
                                diagnostics_.status_text(own));
        diagnostics_.report(what.at, what.item.start, what.item.text.size(),
                            std::wstring(L"note: the ") + kind + L" \"" + what.item.text + L"\" needs it");
        return;
    }
    diagnostics_.report(what.at, what.item.start, what.item.text.size(),
                        std::wstring(L"run error in the ") + kind + L" \"" + what.item.text + L"\": " +
                            diagnostics_.status_text(status));
}

bool Session::run_job(const PrintJob& job)
{
    std::wstring text;
    size_t next = 0;
    for (const MaskPiece& piece : job.pieces) {
        if (!is_placeholder(piece)) {
            text += piece.text;
            continue;
        }
        const Compiled& what = job.values[next++];
        const void* value = nullptr;
        if (!evaluated(what, L"value", value))
            return false;
        text += fill_placeholder(piece, value, what.type, job.datePicture);
    }
    write_out(text + L"\n");
    return true;
}

bool Session::run()
{
    for (const PrintJob& job : jobs_) {
        if (!run_job(job))
            return false;
    }
    return true;
}
