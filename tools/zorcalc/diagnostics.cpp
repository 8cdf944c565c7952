#include "diagnostics.h"

#include "text_io.h"

namespace {

struct CodeText {
    ZORStatus code;
    const wchar_t* name;
    Wording text;
};

// Platform codes that the engine returns. The system may have no text for
// them (Wine has none) or have it only in its own language, so the workbench
// brings its own in both of its languages, and always adds the name.
const CodeText kCodeTexts[] = {
    {ZOR_E_OUTOFMEMORY, L"E_OUTOFMEMORY", {L"Not enough memory.", L"Nicht genug Speicher."}},
    {ZOR_E_INVALIDARG, L"E_INVALIDARG",
     {L"An argument is out of range.", L"Ein Argument liegt au\u00dferhalb des erlaubten Bereichs."}},
    {ZOR_E_INVALID_DATA, L"ERROR_INVALID_DATA",
     {L"The value cannot be converted.", L"Der Wert kann nicht umgewandelt werden."}},
    {ZOR_E_NOTIMPL, L"E_NOTIMPL",
     {L"The operation is not implemented.", L"Die Operation ist nicht implementiert."}},
    {ZOR_E_UNEXPECTED, L"E_UNEXPECTED",
     {L"The operation has no meaning for this value.", L"Die Operation hat f\u00fcr diesen Wert keine Bedeutung."}},
    {ZOR_DISP_E_TYPEMISMATCH, L"DISP_E_TYPEMISMATCH", {L"Type mismatch.", L"Die Typen passen nicht zusammen."}},
    {ZOR_DISP_E_UNKNOWNNAME, L"DISP_E_UNKNOWNNAME", {L"Unknown name.", L"Unbekannter Name."}},
    {ZOR_DISP_E_OVERFLOW, L"DISP_E_OVERFLOW", {L"Value out of range.", L"Wert au\u00dferhalb des Bereichs."}},
    {ZOR_DISP_E_BADINDEX, L"DISP_E_BADINDEX", {L"Invalid index.", L"Ung\u00fcltiger Index."}},
    {ZOR_DISP_E_BADPARAMCOUNT, L"DISP_E_BADPARAMCOUNT",
     {L"Wrong number of arguments.", L"Falsche Anzahl von Argumenten."}},
    {ZOR_DISP_E_DIVBYZERO, L"DISP_E_DIVBYZERO", {L"Division by zero.", L"Division durch null."}},
    {ZOR_TYPE_E_NAMECONFLICT, L"TYPE_E_NAMECONFLICT",
     {L"The name is already defined.", L"Der Name ist schon definiert."}},
    {EXPR_E_TOO_DEEP, L"EXPR_E_TOO_DEEP", {L"Nested too deeply.", L"Zu tief verschachtelt."}},
};

} // namespace

std::wstring Diagnostics::status_text(ZORStatus code) const
{
    for (const CodeText& known : kCodeTexts) {
        if (known.code == code)
            return std::wstring(say(known.text)) + L" (" + known.name + L")";
    }
    wchar_t buffer[512];
    ZORBaseFormatMessage(code, language_, buffer, 512);
    return buffer;
}

void Diagnostics::report(const SourceLine& at, size_t start, size_t length, const std::wstring& message)
{
    ++count_;
    show(at, start, length, message);
}

void Diagnostics::warn(const SourceLine& at, size_t start, size_t length, const std::wstring& message)
{
    show(at, start, length, say({L"warning: ", L"Warnung: "}) + message);
}

void Diagnostics::show(const SourceLine& at, size_t start, size_t length, const std::wstring& message)
{
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
