// Reading a sheet into the session: declarations with their initial values,
// formulas and print lines compiled, and what the compiler rejected disarmed.
#include "session.h"

#include <string.h>
#include <wchar.h>

#include "disasm.h"
#include "text_io.h"
#include "values.h"

namespace {

// Identifiers may be as long as a line; the scanner's buffers hold a line.
const uint32_t kScannerBuffer = uint32_t(kMaxLineLength);
// The C-like dialect that also takes German letters inside names.
const uint32_t kScannerMode = 2;

std::wstring counted(size_t n, const wchar_t* noun)
{
    return std::to_wstring(n) + L" " + noun + (n == 1 ? L"" : L"s");
}

} // namespace

Session::Session(Diagnostics& diagnostics, bool listing) : diagnostics_(diagnostics), listing_(listing)
{
    TSClear(&results_.text);
    TDInit(&results_.date);
}

// The variables outlive the expression object: members go after the body.
Session::~Session()
{
    if (started_)
        ExprRelease(&expr_);
    TSInit(&results_.text);
}

Session::Variable::Variable(const std::wstring& n, uint32_t t) : name(n), type(t)
{
    memset(&value, 0, sizeof value);
}

Session::Variable::~Variable()
{
    if (type == EXT_String)
        TSInit(&value.text);
}

ZORStatus Session::start()
{
    ZORStatus status = ExprInit(&expr_, kScannerBuffer, kScannerBuffer, 0, kScannerMode, nullptr, 1, nullptr,
                                nullptr, nullptr, nullptr, nullptr);
    if (status != ZOR_S_OK)
        return status;
    started_ = true;
    status = define_functions(&expr_, names_);
    if (status == ZOR_S_OK)
        status = ExprXRefOn(&expr_);
    return status;
}

void Session::read(const std::wstring* file, int number, const std::wstring& text, bool immediate)
{
    lines_.push_back(text);
    SourceLine at{file, number, &lines_.back()};
    SheetLine line;
    LineError error;
    if (!parse_sheet_line(text, line, error)) {
        diagnostics_.report(at, error.start, error.length, error.message);
        return;
    }
    switch (line.kind) {
    case SheetLine::Declaration:
        declare(at, line);
        break;
    case SheetLine::DatePicture:
        datePicture_ = line.text.text;
        break;
    case SheetLine::Print:
        print(at, line, immediate);
        break;
    case SheetLine::Formula:
        formula(at, line, immediate);
        break;
    case SheetLine::Nothing:
        break;
    }
}

// A rejected line's instructions stay in the array, and assignments in them
// were already recorded for the cross-reference. Ending the expression at its
// first instruction keeps a later read from running what was rejected.
void Session::disarm(uint32_t start)
{
    if (start < uint32_t(DAGetSize(expr_.code)))
        static_cast<ExprInstr*>(DAGetElem(expr_.code, int32_t(start)))->opcode = EOP_END;
}

// The engine takes an indexed number variable as an array that the caller
// made large enough. A sheet's variable holds one value, so such an index
// would reach past it.
bool Session::indexes_variable(uint32_t start) const
{
    uint32_t size = uint32_t(DAGetSize(expr_.code));
    for (uint32_t index = start; index < size; ++index) {
        const ExprInstr& instr = *static_cast<const ExprInstr*>(DAGetElem(expr_.code, int32_t(index)));
        if (instr.opcode == EOP_END)
            return false;
        if (instr.opcode == EOP_IDX && names_.count(instr.operand.value))
            return true;
    }
    return false;
}

bool Session::compile(const SourceLine& at, const SheetItem& item, uint32_t wantedType, Compiled& out)
{
    out = Compiled{at, item, uint32_t(DAGetSize(expr_.code)), 0};
    auto reject = [&](size_t start, size_t length, const std::wstring& message) {
        disarm(out.start);
        diagnostics_.report(at, start, length, message);
        return false;
    };
    uint32_t first = EXPR_EMPTY;
    ZORStatus status = ExprCompile(&expr_, item.text.c_str(), &first, wantedType, nullptr, &out.type);
    if (status == ZOR_S_OK && expr_.scanner.commentDepth > 0) {
        // Every line is compiled on its own: a comment left open would
        // silently swallow the lines behind it.
        expr_.scanner.commentDepth = 0;
        return reject(item.start + item.text.size(), 0, diagnostics_.status_text(ZOR_E_COMMENT_NOT_CLOSED));
    }
    if (status != ZOR_S_OK) {
        uint32_t column = ExprGetColNo(&expr_);
        uint32_t length = ExprGetErrLen(&expr_);
        size_t token = column >= length ? column - length : 0;
        std::wstring message = diagnostics_.status_text(status);
        if (status == ZOR_DISP_E_TYPEMISMATCH && expr_.errorText && wcsncmp(expr_.errorText, L"EXT_", 4) == 0)
            message += std::wstring(L": ") + expr_.errorText;
        else if (status == ZOR_DISP_E_UNKNOWNNAME)
            message += L": " + item.text.substr(token < item.text.size() ? token : item.text.size(), length);
        return reject(item.start + token, length, message);
    }
    out.start = first;
    if (indexes_variable(out.start))
        return reject(item.start, item.text.size(),
                      L"only strings and bit fields can be indexed: a variable of the sheet holds one value");
    if (listing_ && out.start != EXPR_EMPTY)
        write_out(*at.file + L":" + std::to_wstring(at.number) + L": " + item.text + L"\n" +
                  disassemble(&expr_, out.start, names_, datePicture_));
    return true;
}

void Session::declare(const SourceLine& at, const SheetLine& line)
{
    auto variable = std::make_unique<Variable>(line.name.text, line.type);
    if (line.hasValue && !initialise(at, line, *variable))
        return;
    ZORStatus status = line.constant
                           ? ExprDefineConst(&expr_, &variable->value, variable->name.c_str(), variable->type)
                           : ExprDefineVar(&expr_, &variable->value, variable->name.c_str(), variable->type);
    if (status != ZOR_S_OK) {
        diagnostics_.report(at, line.name.start, line.name.text.size(),
                            status == ZOR_TYPE_E_NAMECONFLICT ? L"\"" + variable->name + L"\" is already defined"
                                                              : diagnostics_.status_text(status));
        return;
    }
    names_[&variable->value] = variable->name;
    variables_.push_back(std::move(variable));
}

bool Session::initialise(const SourceLine& at, const SheetLine& line, Variable& variable)
{
    const SheetItem& value = line.value;
    if (variable.type == EXT_Date && value.text[0] == L'"') {
        std::wstring inner;
        size_t end = 0;
        if (!read_quoted(value.text, 0, inner, end) || end != value.text.size()) {
            diagnostics_.report(at, value.start, value.text.size(),
                                L"a date is written as one text in double quotes");
            return false;
        }
        std::wstring text = unescape(inner);
        if (!TDFromString(text.c_str(), datePicture_.c_str(), &variable.value.date)) {
            diagnostics_.report(at, value.start, value.text.size(),
                                L"\"" + text + L"\" is no date in the picture \"" + datePicture_ + L"\"");
            return false;
        }
        return true;
    }
    Compiled initial;
    if (!compile(at, value, variable.type, initial))
        return false;
    if (initial.start == EXPR_EMPTY) {
        diagnostics_.report(at, value.start, value.text.size(), L"a value is expected here");
        return false;
    }
    const void* result = nullptr;
    bool computed = evaluated(initial, kValueRun, result);
    // An initial value is computed once; an assignment inside it must not
    // run again when a formula reads what it assigned.
    disarm(initial.start);
    if (!computed)
        return false;
    if (!store_value(&variable.value, result, variable.type)) {
        diagnostics_.report(at, value.start, value.text.size(), diagnostics_.status_text(ZOR_E_OUTOFMEMORY));
        return false;
    }
    return true;
}

void Session::formula(const SourceLine& at, const SheetLine& line, bool immediate)
{
    Compiled formula;
    if (!compile(at, line.formula, 0, formula) || formula.start == EXPR_EMPTY)
        return;
    formulas_.push_back(formula);
    if (!immediate)
        return;
    const void* value = nullptr;
    if (evaluated(formula, kFormulaRun, value))
        write_out(value_literal(value, formula.type, datePicture_) + L" (" + type_name(formula.type) + L")\n");
}

void Session::print(const SourceLine& at, const SheetLine& line, bool immediate)
{
    PrintJob job{at, {}, {}, datePicture_};
    if (!cut_mask(line.text.text, job.pieces)) {
        diagnostics_.report(at, line.text.start, line.text.text.size(), diagnostics_.status_text(ZOR_E_OUTOFMEMORY));
        return;
    }
    std::vector<const MaskPiece*> placeholders;
    for (const MaskPiece& piece : job.pieces) {
        if (is_placeholder(piece))
            placeholders.push_back(&piece);
    }
    if (placeholders.size() != line.items.size()) {
        diagnostics_.report(at, line.text.start - 1, line.text.text.size() + 2,
                            L"the mask has " + counted(placeholders.size(), L"placeholder") + L" for " +
                                counted(line.items.size(), L"value"));
        return;
    }
    for (size_t i = 0; i < line.items.size(); ++i) {
        Compiled value;
        bool usable = compile(at, line.items[i], 0, value);
        if (usable && value.start == EXPR_EMPTY) {
            diagnostics_.report(at, line.items[i].start, line.items[i].text.size(), L"a value is expected here");
            usable = false;
        } else if (usable && !placeholder_takes(*placeholders[i], value.type)) {
            diagnostics_.report(at, line.items[i].start, line.items[i].text.size(),
                                L"the number picture \"" + placeholders[i]->text + L"\" can't show an " +
                                    type_name(value.type) + L" value");
            disarm(value.start);
            usable = false;
        }
        if (!usable) {
            for (const Compiled& earlier : job.values)
                disarm(earlier.start);
            return;
        }
        job.values.push_back(value);
    }
    jobs_.push_back(job);
    if (immediate)
        run_job(jobs_.back());
}
