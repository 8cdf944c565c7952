// The runs of a session: linking the cross-reference, evaluating, finding
// the formula behind a failed run, and printing the print lines.
#include "session.h"

#include "text_io.h"
#include "values.h"

// New assignments since the last link reach the runs only through ExprXRef;
// linking only then keeps the dependency list free of stale copies.
void Session::link()
{
    if (expr_.xrefCounter == linkedCounter_)
        return;
    ExprXRef(&expr_);
    linkedCounter_ = expr_.xrefCounter;
}

ZORStatus Session::evaluate(uint32_t start, const void*& value)
{
    link();
    ZORStatus status = ExprEvaluate(&expr_, start, reinterpret_cast<intptr_t>(&results_));
    if (status != ZOR_S_OK) {
        // A failed run leaves what it had pending; the next run starts clean.
        expr_.stackDepth = 0;
        return status;
    }
    value = ExprPopResult(&expr_);
    return ZOR_S_OK;
}

const RunKind kFormulaRun = {{L"run error in the formula", L"Laufzeitfehler in der Formel"},
                             {L"note: the formula", L"Hinweis: die Formel"}};
const RunKind kValueRun = {{L"run error in the value", L"Laufzeitfehler im Wert"},
                           {L"note: the value", L"Hinweis: der Wert"}};

bool Session::evaluated(const Compiled& what, const RunKind& kind, const void*& value)
{
    std::vector<std::unique_ptr<Variable>> before;
    bool saved = save_variables(before);
    ZORStatus status = evaluate(what.start, value);
    if (status != ZOR_S_OK)
        report_run_error(what, status, kind, saved ? &before : nullptr);
    return status == ZOR_S_OK;
}

bool Session::save_variables(std::vector<std::unique_ptr<Variable>>& copies) const
{
    for (const auto& variable : variables_) {
        copies.push_back(std::make_unique<Variable>(variable->name, variable->type));
        if (!store_value(&copies.back()->value, &variable->value, variable->type))
            return false;
    }
    return true;
}

// The engine tells that a run failed, not which of the formulas it re-ran
// for the cross-reference failed. So the variables go back to where they
// stood before the run, and the run's dependency runs are made again one by
// one, as the engine makes them, until one fails; the search goes on inside
// that one. Each probe is a run like the first, so the variables end as the
// failed run left them, each assignment made once.
void Session::report_run_error(const Compiled& what, ZORStatus status, const RunKind& kind,
                               std::vector<std::unique_ptr<Variable>>* before)
{
    const Compiled* culprit = &what;
    if (before) {
        restore_variables(*before);
        const Compiled* found = formula_at(failing_run(what.start));
        if (found)
            culprit = found;
    }
    diagnostics_.report(culprit->at, culprit->item.start, culprit->item.text.size(),
                        diagnostics_.say(culprit == &what ? kind.failed : kFormulaRun.failed) +
                            (L" \"" + culprit->item.text + L"\": ") + diagnostics_.status_text(status));
    if (culprit != &what)
        diagnostics_.report(what.at, what.item.start, what.item.text.size(),
                            diagnostics_.say(kind.needs) + (L" \"" + what.item.text + L"\" ") +
                                diagnostics_.say({L"needs it", L"braucht sie"}));
}

void Session::restore_variables(std::vector<std::unique_ptr<Variable>>& copies)
{
    for (size_t i = 0; i < copies.size(); ++i)
        store_value(&variables_[i]->value, &copies[i]->value, variables_[i]->type);
}

// The start of the run that failed on its own inside the run of `start`: the
// engine runs, before each read of a variable, the earlier formulas that
// assign it (its entries in xrefList up to -1), in the order of the reads.
uint32_t Session::failing_run(uint32_t start)
{
    const int32_t size = DAGetSize(expr_.code);
    for (int32_t ip = int32_t(start); ip < size; ++ip) {
        const ExprInstr& instr = *static_cast<const ExprInstr*>(DAGetElem(expr_.code, ip));
        if (instr.opcode == EOP_END)
            break;
        if (instr.opcode != EOP_NOP || instr.operand.storage == EXS_Function || instr.operand.xrefIndex < 0)
            continue;
        for (int32_t i = instr.operand.xrefIndex; i < DAGetSize(expr_.xrefList); ++i) {
            const int32_t entry = *static_cast<const int32_t*>(DAGetElem(expr_.xrefList, i));
            if (entry == -1 || entry >= int32_t(start))
                break;
            std::vector<std::unique_ptr<Variable>> before;
            if (!save_variables(before))
                return start;
            const void* value = nullptr;
            if (evaluate(uint32_t(entry), value) != ZOR_S_OK) {
                restore_variables(before);
                return failing_run(uint32_t(entry));
            }
        }
    }
    return start;
}

const Session::Compiled* Session::formula_at(uint32_t start) const
{
    for (const Compiled& formula : formulas_) {
        if (formula.start == start)
            return &formula;
    }
    return nullptr;
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
        if (!evaluated(what, kValueRun, value))
            return false;
        text += fill_placeholder(piece, value, what.type, job.datePicture);
        if (!fits_placeholder(piece, value, what.type))
            diagnostics_.warn(what.at, what.item.start, what.item.text.size(),
                              diagnostics_.say({L"the value ", L"der Wert "}) +
                                  value_text(value, what.type, job.datePicture) +
                                  diagnostics_.say({L" does not fit the picture \"", L" passt nicht in das Bild \""}) +
                                  piece.text +
                                  diagnostics_.say({L"\"; the library drops the leading digits",
                                                    L"\"; die Bibliothek l\u00e4sst die f\u00fchrenden Ziffern weg"}));
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
