// zorcalc, the formula workbench: define typed variables, compile formulas
// that assign each other's variables, evaluate them and print the results
// through masks and date pictures, using only the library's exports.
#include <locale.h>

#include <windows.h>

#include "diagnostics.h"
#include "invoice_sheet.h"
#include "options.h"
#include "session.h"
#include "text_io.h"

namespace {

const int kExitErrors = 1;
const int kExitUsage = 2;

void read_text(Session& session, const std::wstring* file, const std::wstring& text)
{
    int number = 0;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find(L'\n', at);
        if (end == std::wstring::npos)
            end = text.size();
        session.read(file, ++number, text.substr(at, end - at), false);
        at = end + 1;
    }
}

void read_handle(Session& session, Diagnostics& diagnostics, const std::wstring* file, HANDLE handle,
                 bool immediate)
{
    LineReader reader(handle);
    std::wstring text;
    bool badEncoding = false;
    for (int number = 1; reader.next(text, badEncoding); ++number) {
        if (badEncoding) {
            SourceLine at{file, number, &text};
            diagnostics.report(at, 0, text.size(), L"the line is not valid UTF-8");
            continue;
        }
        if (immediate && !text.empty() && text[0] == L':') {
            // Commands of an interactive session; a sheet has no such lines.
            std::wstring command = text.substr(0, text.find_last_not_of(L" \t") + 1);
            if (command == L":quit")
                return;
            if (command == L":help") {
                write_out(kSheetHelp);
                continue;
            }
            SourceLine at{file, number, &text};
            diagnostics.report(at, 0, command.size(), L"unknown command \"" + command + L"\" (:help, :quit)");
            continue;
        }
        session.read(file, number, text, immediate);
    }
}

int run(const Options& options, Diagnostics& diagnostics)
{
    Session session(diagnostics, options.listing);
    ZORStatus status = session.start();
    if (status != ZOR_S_OK) {
        diagnostics.report(L"zorcalc", diagnostics.status_text(status));
        return kExitUsage;
    }
    static const std::wstring kStdin = L"<stdin>", kBuiltIn = L"<invoice>", kCommandLine = L"-e";
    if (options.sheet == L"-") {
        read_handle(session, diagnostics, &kStdin, GetStdHandle(STD_INPUT_HANDLE), true);
    } else if (!options.sheet.empty()) {
        HANDLE file = CreateFileW(options.sheet.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            diagnostics.report(options.sheet, L"cannot open the sheet: " +
                                                  diagnostics.status_text(ZOR_STATUS_FROM_WIN32(GetLastError())));
            return kExitUsage;
        }
        read_handle(session, diagnostics, &options.sheet, file, false);
        CloseHandle(file);
    } else if (options.expressions.empty()) {
        read_text(session, &kBuiltIn, kInvoiceSheet);
    }
    if (diagnostics.count() == 0 && options.sheet != L"-")
        session.run();
    for (size_t i = 0; i < options.expressions.size() && diagnostics.count() == 0; ++i)
        session.read(&kCommandLine, int(i + 1), options.expressions[i], true);
    return diagnostics.count() ? kExitErrors : 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    SetConsoleOutputCP(CP_UTF8);
    Options options;
    std::wstring error;
    if (!parse_options(argc, argv, options, error)) {
        write_err(L"zorcalc: " + error + L"\n" + kUsage);
        return kExitUsage;
    }
    if (options.help) {
        write_out(kUsage);
        return 0;
    }
    if (options.version) {
        write_version(L"zorcalc");
        return 0;
    }
    if (!_wsetlocale(LC_ALL, options.locale.c_str())) {
        write_err(L"zorcalc: unknown locale \"" + options.locale + L"\"\n");
        return kExitUsage;
    }
    Diagnostics diagnostics(options.language);
    return run(options, diagnostics);
}
