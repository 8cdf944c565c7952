// A trace object of the test's own with its lock, real files in a private
// directory, and dates computed without the library's date code.
#pragma once

#include <doctest/doctest.h>

#include <string.h>
#include <wctype.h>

#include <string>
#include <vector>

#include <windows.h>

#include "temp_dir.h"
#include "trace/trace_internal.h"
#include "wide_text.h"

struct OwnTrace {
    TraceObject obj;
    OwnTrace()
    {
        memset(&obj, 0, sizeof obj);
        for (auto& entry : obj.aFacility)
            entry = 1;
        obj.nSizeKB = 10000;
        InitializeCriticalSection(&obj.cs);
    }
    ~OwnTrace() { DeleteCriticalSection(&obj.cs); }
    OwnTrace(const OwnTrace&) = delete;
    OwnTrace& operator=(const OwnTrace&) = delete;

    // Directory (with its separator) and stem of the daily files.
    void place(const std::wstring& dir, const std::wstring& stem)
    {
        wcscpy(obj.szPath, (dir + L"\\").c_str());
        wcscpy(obj.szBaseName, (dir + L"\\" + stem).c_str());
    }
    // The file sink on today's file of `stem` in `dir`, as after a check.
    void to_file(const std::wstring& dir, const std::wstring& stem)
    {
        place(dir, stem);
        TraceSetDailyName(&obj);
        wcscpy(obj.szLastFile, obj.szFile);
        obj.bFile = 1;
    }
};

// The local date `days_back` days ago as yyyymmdd, counted on the local
// clock's own ticks so that a change of summer time doesn't move it.
inline std::wstring date_back(int days_back)
{
    SYSTEMTIME now, then;
    GetLocalTime(&now);
    ULARGE_INTEGER ticks;
    SystemTimeToFileTime(&now, reinterpret_cast<FILETIME*>(&ticks));
    ticks.QuadPart -= days_back * 864000000000ull;
    FileTimeToSystemTime(reinterpret_cast<FILETIME*>(&ticks), &then);
    wchar_t text[16];
    swprintf(text, 16, L"%04u%02u%02u", then.wYear, then.wMonth, then.wDay);
    return text;
}

inline bool file_exists(const std::wstring& name)
{
    return GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// How many names in `dir` match a pattern such as L"TRA*.tmp".
inline int count_files(const std::wstring& dir, const wchar_t* pattern)
{
    WIN32_FIND_DATAW found;
    HANDLE walk = FindFirstFileW((dir + L"\\" + pattern).c_str(), &found);
    int count = 0;
    for (bool more = walk != INVALID_HANDLE_VALUE; more; more = FindNextFileW(walk, &found))
        ++count;
    FindClose(walk);
    return count;
}

// Bytes that differ at every position of a long run, so that a tail taken
// from the wrong place can't match.
inline std::string numbered_bytes(size_t size)
{
    std::string bytes(size, 0);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 7 + i / 251) & 0xFF);
    return bytes;
}

// The lines of a text file as written, without their CR LF.
inline std::vector<std::string> file_lines(const std::wstring& name)
{
    std::vector<std::string> lines;
    std::string bytes = read_bytes(name);
    for (size_t start = 0, end; (end = bytes.find("\r\n", start)) != std::string::npos;
         start = end + 2)
        lines.push_back(bytes.substr(start, end - start));
    return lines;
}

// The 18 units that stand before each line's text: `letter`, today's date
// day first with a two-digit year, and the time, whose digits are only
// counted.
template <class Text>
bool has_prefix(const Text& line, char letter)
{
    const std::wstring today = date_back(0);
    const std::wstring shape = wchar_t(letter) + today.substr(6, 2) + today.substr(4, 2) +
                               today.substr(2, 2) + L" ######### ";
    for (size_t i = 0; i < shape.size(); ++i) {
        wchar_t unit = i < line.size() ? wchar_t(line[i]) : 0;
        if (shape[i] == L'#' ? !iswdigit(unit) : unit != shape[i])
            return false;
    }
    return true;
}

// The lines of a trace file with their prefix checked and taken off.
inline std::vector<std::string> file_texts(const std::wstring& name, char letter)
{
    std::vector<std::string> lines = file_lines(name);
    for (std::string& line : lines) {
        CHECK(has_prefix(line, letter));
        line = line.substr(18);
    }
    return lines;
}
