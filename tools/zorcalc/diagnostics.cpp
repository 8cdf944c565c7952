#include "diagnostics.h"

#include "text_io.h"

namespace {

struct CodeName {
    ZORStatus code;
    const wchar_t* name;
};

// Codes the engine returns that have no catalogue text: the platform may or
// may not know them, so the report always carries the name as well.
const CodeName kCodeNames[] = {
    {ZOR_E_OUTOFMEMORY, L"E_OUTOFMEMORY"},
    {ZOR_E_INVALIDARG, L"E_INVALIDARG"},
    {ZOR_E_INVALID_DATA, L"ERROR_INVALID_DATA"},
    {ZOR_E_NOTIMPL, L"E_NOTIMPL"},
    {ZOR_E_UNEXPECTED, L"E_UNEXPECTED"},
    {ZOR_DISP_E_TYPEMISMATCH, L"DISP_E_TYPEMISMATCH"},
    {ZOR_DISP_E_UNKNOWNNAME, L"DISP_E_UNKNOWNNAME"},
    {ZOR_DISP_E_OVERFLOW, L"DISP_E_OVERFLOW"},
    {ZOR_DISP_E_BADINDEX, L"DISP_E_BADINDEX"},
    {ZOR_DISP_E_BADPARAMCOUNT, L"DISP_E_BADPARAMCOUNT"},
    {ZOR_DISP_E_DIVBYZERO, L"DISP_E_DIVBYZERO"},
    {ZOR_TYPE_E_NAMECONFLICT, L"TYPE_E_NAMECONFLICT"},
};

} // namespace

std::wstring Diagnostics::status_text(ZORStatus code) const
{
    wchar_t buffer[512];
    ZORBaseFormatMessage(code, language_, buffer, 512);
    std::wstring text = buffer;
    for (const CodeName& known : kCodeNames) {
        if (known.code == code)
            return text + L" (" + known.name + L")";
    }
    return text;
}

void Diagnostics::report(const SourceLine& at, size_t start, size_t length, const std::wstring& message)
{
    ++count_;
    const std::wstring& line = *at.text;
    if (start > line.size())
        start = line.size();
    if (length > line.size() - start)
        length = line.size() - start;
    std::wstring text = *at.file + L":" + std::to_wstring(at.number) + L":" + std::to_wstring(start + 1) +
                        L": " + message + L"\n" + line + L"\n";
    // Tabs stay tabs in front of the caret, so that it lines up in any editor.
    for (size_t i = 0; i < start; ++i)
        text += line[i] == L'\t' ? L'\t' : L' ';
    text += L'^';
    if (length > 1)
        text.append(length - 1, L'~');
    text += L'\n';
    write_err(text);
}

void Diagnostics::report(const std::wstring& where, const std::wstring& message)
{
    ++count_;
    write_err(where + L": " + message + L"\n");
}
