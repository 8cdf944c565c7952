#include "zorcalc_run.h"

#include <windows.h>

Outcome run_zorcalc(const std::vector<std::wstring>& args, const std::string& input)
{
    return run_program(L"zorcalc.exe", args, input);
}

std::wstring sheet(const wchar_t* name)
{
    return std::wstring(ZORCALC_SHEETS) + L"/" + name;
}

TempSheet::TempSheet(const std::string& bytes)
{
    wchar_t dir[MAX_PATH], name[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    GetTempFileNameW(dir, L"zc", 0, name);
    path = name;
    HANDLE file = CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.data(), DWORD(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

TempSheet::~TempSheet() { DeleteFileW(path.c_str()); }

std::string utf8(const std::wstring& text)
{
    int n = WideCharToMultiByte(CP_UTF8, 0, text.data(), int(text.size()), nullptr, 0, nullptr, nullptr);
    std::string bytes(size_t(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), int(text.size()), &bytes[0], n, nullptr, nullptr);
    return bytes;
}
