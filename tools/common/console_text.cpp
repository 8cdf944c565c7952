#include "console_text.h"

#include "zor_version.h"

std::string to_utf8(const wchar_t* text, size_t length)
{
    int n = WideCharToMultiByte(CP_UTF8, 0, text, int(length), nullptr, 0, nullptr, nullptr);
    std::string bytes(size_t(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, int(length), &bytes[0], n, nullptr, nullptr);
    return bytes;
}

void write_bytes(DWORD which, const std::string& bytes)
{
    HANDLE handle = GetStdHandle(which);
    const char* at = bytes.data();
    size_t left = bytes.size();
    while (left > 0) {
        DWORD written = 0;
        if (!WriteFile(handle, at, DWORD(left), &written, nullptr) || written == 0)
            return;
        at += written;
        left -= written;
    }
}

void write_out(const std::wstring& text) { write_bytes(STD_OUTPUT_HANDLE, to_utf8(text)); }
void write_err(const std::wstring& text) { write_bytes(STD_ERROR_HANDLE, to_utf8(text)); }

void write_version(const wchar_t* tool)
{
    const std::string number = ZORBASE_VERSION_STRING;
    write_out(tool + (L" " + std::wstring(number.begin(), number.end())) + L"\n");
}
