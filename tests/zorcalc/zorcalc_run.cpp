#include "zorcalc_run.h"

#include <windows.h>

namespace {

struct Drain {
    HANDLE pipe;
    std::string text;
};

DWORD WINAPI drain(void* param)
{
    Drain* d = static_cast<Drain*>(param);
    char chunk[4096];
    DWORD got = 0;
    while (ReadFile(d->pipe, chunk, sizeof chunk, &got, nullptr) && got > 0)
        d->text.append(chunk, got);
    return 0;
}

std::wstring quoted(const std::wstring& arg)
{
    std::wstring text = L"\"";
    for (wchar_t c : arg) {
        if (c == L'"')
            text += L'\\';
        text += c;
    }
    return text + L"\"";
}

std::wstring program_path(const wchar_t* name)
{
    wchar_t path[MAX_PATH];
    DWORD n = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring dir(path, n);
    return dir.substr(0, dir.find_last_of(L"\\/") + 1) + name;
}

} // namespace

Outcome run_zorcalc(const std::vector<std::wstring>& args, const std::string& input)
{
    return run_program(L"zorcalc.exe", args, input);
}

Outcome run_program(const wchar_t* name, const std::vector<std::wstring>& args, const std::string& input)
{
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    HANDLE inRead, inWrite, outRead, outWrite, errRead, errWrite;
    CreatePipe(&inRead, &inWrite, &inherit, 1 << 16);
    CreatePipe(&outRead, &outWrite, &inherit, 0);
    CreatePipe(&errRead, &errWrite, &inherit, 0);
    SetHandleInformation(inWrite, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(outRead, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(errRead, HANDLE_FLAG_INHERIT, 0);

    std::wstring program = program_path(name);
    std::wstring line = quoted(program);
    for (const std::wstring& arg : args)
        line += L" " + quoted(arg);

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = inRead;
    startup.hStdOutput = outWrite;
    startup.hStdError = errWrite;
    PROCESS_INFORMATION process{};
    Outcome outcome;
    BOOL started = CreateProcessW(program.c_str(), &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                  &startup, &process);
    CloseHandle(inRead);
    CloseHandle(outWrite);
    CloseHandle(errWrite);
    // The input fits the pipe's buffer, so it can go before the child reads.
    DWORD written = 0;
    if (started && !input.empty())
        WriteFile(inWrite, input.data(), DWORD(input.size()), &written, nullptr);
    CloseHandle(inWrite);
    if (started) {
        // Both channels drain at once, so that a full pipe never stalls the child.
        Drain out{outRead, {}}, err{errRead, {}};
        HANDLE errThread = CreateThread(nullptr, 0, drain, &err, 0, nullptr);
        drain(&out);
        WaitForSingleObject(errThread, INFINITE);
        CloseHandle(errThread);
        WaitForSingleObject(process.hProcess, INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(process.hProcess, &code);
        outcome = Outcome{int(code), out.text, err.text};
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(outRead);
    CloseHandle(errRead);
    return outcome;
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
