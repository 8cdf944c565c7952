// The real zortrace.exe on traces that the library itself writes: a trace
// object of the test's own, started by TraceInit from a private key under
// HKEY_LOCAL_MACHINE, with its daily files in a private directory.
#pragma once

#include <doctest/doctest.h>

#include <string.h>

#include <string>
#include <vector>

#include <windows.h>

#include "child_process.h"
#include "private_key.h"
#include "temp_dir.h"
#include "zor_trace.h"

inline Outcome zortrace(const std::vector<std::wstring>& args) { return run_program(L"zortrace.exe", args); }

inline std::string utf8(const std::wstring& text)
{
    int n = WideCharToMultiByte(CP_UTF8, 0, text.data(), int(text.size()), nullptr, 0, nullptr, nullptr);
    std::string bytes(size_t(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), int(text.size()), &bytes[0], n, nullptr, nullptr);
    return bytes;
}

// Lines of printed or stored text, without their line ends.
inline std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start - (end > start && text[end - 1] == '\r')));
    if (start < text.size())
        lines.push_back(text.substr(start));
    return lines;
}

inline std::string file_text(const std::wstring& name)
{
    std::string bytes;
    HANDLE file = CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
    char chunk[65536];
    DWORD got = 0;
    while (file != INVALID_HANDLE_VALUE && ReadFile(file, chunk, sizeof chunk, &got, nullptr) && got)
        bytes.append(chunk, got);
    CloseHandle(file);
    return bytes;
}

inline void write_file(const std::wstring& name, const std::string& bytes)
{
    HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    REQUIRE(file != INVALID_HANDLE_VALUE);
    DWORD written = 0;
    WriteFile(file, bytes.data(), DWORD(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

// The local date `days` days from today as yyyymmdd, by the system's calendar.
inline std::wstring date_from_today(int days)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    FILETIME stamp;
    SystemTimeToFileTime(&now, &stamp);
    ULARGE_INTEGER ticks{{stamp.dwLowDateTime, stamp.dwHighDateTime}};
    ticks.QuadPart += static_cast<unsigned long long>(static_cast<long long>(days) * 864000000000ll);
    stamp = FILETIME{ticks.LowPart, ticks.HighPart};
    SYSTEMTIME then;
    FileTimeToSystemTime(&stamp, &then);
    wchar_t text[16];
    swprintf(text, 16, L"%04u%02u%02u", then.wYear, then.wMonth, then.wDay);
    return text;
}

struct TestTrace {
    // Current, because a trim leaves its temporary file there.
    TempDir dir{true};
    PrivateKey key{HKEY_LOCAL_MACHINE, L"SOFTWARE"};
    TraceObject obj;
    bool started = false;

    TestTrace() { memset(&obj, 0, sizeof obj); }
    ~TestTrace()
    {
        if (started)
            DeleteCriticalSection(&obj.cs);
    }
    TestTrace(const TestTrace&) = delete;
    TestTrace& operator=(const TestTrace&) = delete;

    // The file sink on daily files of "app" in the directory, every level.
    void to_files(DWORD sizeKB)
    {
        key.set_dword(L"TRACEFILE", 1);
        key.set_dword(L"TRACESIZE", sizeKB);
        key.set_dword(L"TRACELEVEL", 0x8000001F);
        key.set_text(L"TRACEPATH", dir.path());
        key.set_text(L"DEFAULT_TRACEFILE", L"app");
    }
    void start(const wchar_t* fileName = nullptr)
    {
        if (started)
            DeleteCriticalSection(&obj.cs);
        TraceInit(&obj, key.path().c_str(), fileName, 0);
        started = true;
    }
    std::wstring stem() const { return dir.file(L"app"); }
};
