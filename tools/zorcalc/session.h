// One workbench session: an expression object with the sheet's variables,
// constants and functions, the compiled formulas and print lines, and the
// runs that bring them up to date and print them.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics.h"
#include "functions.h"
#include "mask.h"
#include "sheet_line.h"
#include "zorbase.h"

// How a run error names what failed, and what needed it.
struct RunKind {
    Wording failed; // "run error in the formula"
    Wording needs;  // "note: the formula"
};
extern const RunKind kFormulaRun, kValueRun;

class Session {
public:
    Session(Diagnostics& diagnostics, bool listing);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ZORStatus start();

    // Takes one line of a sheet. Declarations and pictures take effect at
    // once; formulas and print lines are compiled, and with `immediate` run
    // at once as well, a formula printing its value and type. `file` must
    // outlive the session.
    void read(const std::wstring* file, int number, const std::wstring& text, bool immediate);

    // Prints the compiled print lines in order. False at the first run error.
    bool run();

private:
    struct Variable {
        Variable(const std::wstring& n, uint32_t t);
        ~Variable();
        Variable(const Variable&) = delete;
        Variable& operator=(const Variable&) = delete;

        std::wstring name;
        uint32_t type;
        union {
            wchar_t ch;
            int32_t l;
            uint32_t ul;
            double d;
            ExprBitField bits;
            TSString text;
            TDDate date;
        } value;
    };
    // A compiled piece of a line: a formula, a print value or an initial value.
    struct Compiled {
        SourceLine at;
        SheetItem item;
        uint32_t start;
        uint32_t type;
    };
    struct PrintJob {
        SourceLine at;
        std::vector<MaskPiece> pieces;
        std::vector<Compiled> values;
        std::wstring datePicture;
    };

    void declare(const SourceLine& at, const SheetLine& line);
    bool initialise(const SourceLine& at, const SheetLine& line, Variable& variable);
    void formula(const SourceLine& at, const SheetLine& line, bool immediate);
    void print(const SourceLine& at, const SheetLine& line, bool immediate);

    void disarm(uint32_t start);
    bool indexes_variable(uint32_t start) const;
    bool compile(const SourceLine& at, const SheetItem& item, uint32_t wantedType, Compiled& out);
    ZORStatus evaluate(uint32_t start, const void*& value);
    // Evaluates and reports a failure, naming `what` as a formula or value.
    bool evaluated(const Compiled& what, const RunKind& kind, const void*& value);
    // Copies of the variables' values; false when a copy ran out of memory.
    bool save_variables(std::vector<std::unique_ptr<Variable>>& copies) const;
    // `before` holds the variables as they were before the run, or is null
    // when they could not be saved; then `what` itself is named.
    void report_run_error(const Compiled& what, ZORStatus status, const RunKind& kind,
                          std::vector<std::unique_ptr<Variable>>* before);
    void restore_variables(std::vector<std::unique_ptr<Variable>>& copies);
    uint32_t failing_run(uint32_t start);
    const Compiled* formula_at(uint32_t start) const;
    void link();
    bool run_job(const PrintJob& job);

    Diagnostics& diagnostics_;
    bool listing_;
    bool started_ = false;
    ExprContext expr_;
    CallResults results_;
    uint32_t linkedCounter_ = 0;
    std::wstring datePicture_ = L"yyyy-MM-dd";
    std::deque<std::wstring> lines_;
    std::vector<std::unique_ptr<Variable>> variables_;
    std::map<const void*, std::wstring> names_;
    std::vector<Compiled> formulas_;
    std::vector<PrintJob> jobs_;
};
