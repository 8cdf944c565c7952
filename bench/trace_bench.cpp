// The trace benchmark: lines per second through the file sink from 1 and 4
// threads, beside the floor of the design (open, write and close under a
// lock for every line), and the cost of a disabled call. One line per
// measure:  trace <TAB> measure <TAB> value <TAB> unit
#include <stdio.h>
#include <string.h>

#include <string>

#include <windows.h>

#include "bench_clock.h"
#include "frame/zor_platform.h"
#include "trace/trace_internal.h"
#include "zorbase.h"

namespace {

constexpr int kLines = 2000;
constexpr long kDisabledCalls = 20000000;

struct Run {
    TraceObject* obj;
    CRITICAL_SECTION* floor_lock;
    const wchar_t* floor_file;
    int lines;
};

const wchar_t kText[] = L"a trace line of ordinary length, about sixty units long";

DWORD WINAPI trace_lines(void* arg)
{
    auto* run = static_cast<Run*>(arg);
    for (int i = 0; i < run->lines; ++i)
        Trace(run->obj, 2, kText, nullptr);
    return 0;
}

DWORD WINAPI floor_lines(void* arg)
{
    auto* run = static_cast<Run*>(arg);
    for (int i = 0; i < run->lines; ++i) {
        EnterCriticalSection(run->floor_lock);
        FILE* file = _wfopen(run->floor_file, L"a");
        if (file) {
            fwprintf(file, L"%s%s", kText, L"\n");
            fclose(file);
        }
        LeaveCriticalSection(run->floor_lock);
    }
    return 0;
}

// Lines per second of `body` spread over `threads` threads.
double lines_per_second(LPTHREAD_START_ROUTINE body, Run run, int threads)
{
    run.lines = kLines / threads;
    HANDLE handles[4];
    double start = now_seconds();
    for (int k = 0; k < threads; ++k)
        handles[k] = CreateThread(nullptr, 0, body, &run, 0, nullptr);
    WaitForMultipleObjects(threads, handles, TRUE, INFINITE);
    double seconds = now_seconds() - start;
    for (int k = 0; k < threads; ++k)
        CloseHandle(handles[k]);
    return kLines / seconds;
}

volatile long empty_calls;

// The same arguments as the disabled call, kept out of line so that the
// loop pays for a real call.
ZOR_NOINLINE void empty_call(TraceObject*, int32_t, uint32_t, const wchar_t*, ...)
{
    empty_calls = empty_calls + 1;
}

template <class Call>
double ns_per_call(Call call)
{
    double start = now_seconds();
    for (long i = 0; i < kDisabledCalls; ++i)
        call(i);
    return (now_seconds() - start) * 1e9 / kDisabledCalls;
}

void print(const char* measure, double value, const char* unit)
{
    printf("trace\t%s\t%.1f\t%s\n", measure, value, unit);
}

}

int main()
{
    wchar_t dir[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    std::wstring work =
        std::wstring(dir) + L"zortrace-bench" + std::to_wstring(GetCurrentProcessId());
    CreateDirectoryW(work.c_str(), nullptr);
    SetCurrentDirectoryW(work.c_str());

    static TraceObject obj;
    InitializeCriticalSection(&obj.cs);
    for (auto& entry : obj.aFacility)
        entry = 1;
    wcscpy(obj.szBaseName, (work + L"\\bench").c_str());
    TraceSetDailyName(&obj);
    wcscpy(obj.szLastFile, obj.szFile);
    obj.bFile = 1;
    CRITICAL_SECTION floor_lock;
    InitializeCriticalSection(&floor_lock);
    std::wstring floor_file = work + L"\\floor.log";
    Run run = {&obj, &floor_lock, floor_file.c_str(), 0};

    print("file sink, 1 thread", lines_per_second(trace_lines, run, 1), "lines/s");
    print("file sink, 4 threads", lines_per_second(trace_lines, run, 4), "lines/s");
    print("floor, 1 thread", lines_per_second(floor_lines, run, 1), "lines/s");
    print("floor, 4 threads", lines_per_second(floor_lines, run, 4), "lines/s");

    // Level 1 is off in a mask of 0; the call must return before any work.
    print("disabled TraceVAF", ns_per_call([](long i) {
              TraceVAF(&obj, 1, 18, L"%ld", i);
          }),
          "ns/call");
    print("empty call", ns_per_call([](long i) { empty_call(&obj, 1, 18, L"%ld", i); }), "ns/call");

    DeleteFileW(obj.szFile);
    DeleteFileW(floor_file.c_str());
    SetCurrentDirectoryW(dir);
    RemoveDirectoryW(work.c_str());
    return 0;
}
