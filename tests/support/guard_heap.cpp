#include "guard_heap.h"

#include <stdio.h>

#include <windows.h>

#include "frame/zor_alloc.h"
#include "fuzz.h"

namespace {

LONG report(const EXCEPTION_RECORD& record, const char* what)
{
    const bool access = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2;
    fprintf(stderr, "FATAL: %s (code 0x%08lx)", what, record.ExceptionCode);
    if (access)
        fprintf(stderr, " %s address %p", record.ExceptionInformation[0] ? "writing" : "reading",
                reinterpret_cast<void*>(record.ExceptionInformation[1]));
    fprintf(stderr, " at %p in test case \"%s\"\n", record.ExceptionAddress, fuzz_test_case());
    const std::string replay = fuzz_replay();
    if (!replay.empty())
        fprintf(stderr, "  %s\n", replay.c_str());
    fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_CONTINUE_SEARCH;
}

// First chance, and only for faults that are certainly the library's: the
// platform handles access violations of its own in other places.
LONG CALLBACK on_guard_fault(EXCEPTION_POINTERS* info)
{
    const EXCEPTION_RECORD& record = *info->ExceptionRecord;
    if (record.ExceptionCode == zor_alloc_probe::kCanaryDamaged)
        return report(record, "damaged canary in front of a guarded block");
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2 &&
        zor_alloc_probe::guard_heap_owns(reinterpret_cast<void*>(record.ExceptionInformation[1])))
        return report(record, "access past a guarded block or after its release");
    return EXCEPTION_CONTINUE_SEARCH;
}

// Last chance: whatever nothing else handled.
LONG WINAPI on_crash(EXCEPTION_POINTERS* info)
{
    return report(*info->ExceptionRecord, "unhandled exception");
}

}

bool guard_this_program()
{
    zor_alloc_probe::use_heap(zor_alloc_probe::guard_heap());
    AddVectoredExceptionHandler(1, on_guard_fault);
    SetUnhandledExceptionFilter(on_crash);
    return true;
}
