// Plain lines: the prefix, the line and its way through the four sinks.
#include "../frame/zor_platform.h"
#include "trace_internal.h"

namespace {

// Appends as much of `text` as the line area holds.
void append(wchar_t* line, size_t& length, const wchar_t* text)
{
    while (length < kTraceLineUnits - 1 && *text)
        line[length++] = *text++;
    line[length] = 0;
}

void write_to_file(TraceObject* obj, const wchar_t* line)
{
    FILE* file = _wfopen(obj->szFile, L"a");
    if (!file)
        return;
    TraceWriteLine(file, line);
    // Flushed first: an append stream reads its position from the handle,
    // which stands at the end of the file only once the bytes went out.
    fflush(file);
    long position = ftell(file);
    fclose(file);
    // The line is already out: the first line of a day lands in the file of
    // the day before, and the check then names the new day's file.
    if (TraceSizeExceeded(obj, static_cast<int32_t>(position)) || !TraceSetDailyName(obj) ||
        _wcsicmp(obj->szFile, obj->szLastFile) != 0)
        TraceCheckFile(obj);
}

void write_to_mailslot(const TraceObject* obj, const wchar_t* line)
{
    if (hTraceMailslot == INVALID_HANDLE_VALUE)
        hTraceMailslot = CreateFileW(obj->szMailslot, GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hTraceMailslot == INVALID_HANDLE_VALUE)
        return;
    DWORD bytes = static_cast<DWORD>((wcslen(line) + 1) * sizeof(wchar_t));
    DWORD written = 0;
    if (!WriteFile(hTraceMailslot, line, bytes, &written, nullptr)) {
        // The reader is gone or the slot was never one: the next line opens
        // it anew.
        CloseHandle(hTraceMailslot);
        hTraceMailslot = INVALID_HANDLE_VALUE;
    }
}

void trace_formatted(TraceObject* obj, int32_t level, const wchar_t* fmt, va_list args)
{
    wchar_t text[kTraceLineUnits];
    zor::counted_vswprintf(text, kTraceLineUnits, fmt, args);
    // The formatter leaves no terminator when it cuts.
    text[kTraceLineUnits - 1] = 0;
    Trace(obj, level, text, nullptr);
}

}

void TraceFormatPrefix(wchar_t* out, int32_t level)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    zor::counted_swprintf(out, kTracePrefixUnits, L"%c%02d%02d%02d %02d%02d%02d%03d ",
                          TraceLevelLetter(level), now.wDay, now.wMonth, now.wYear % 100,
                          now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    out[kTracePrefixUnits - 1] = 0;
}

void Trace(TraceObject* obj, int32_t level, const wchar_t* text1, const wchar_t* text2)
{
    // Built before the lock, so that threads wait only for the sinks.
    wchar_t line[kTraceLineUnits];
    TraceFormatPrefix(line, level);
    size_t length = wcslen(line);
    if (text1)
        append(line, length, text1);
    if (text2) {
        append(line, length, L" ");
        append(line, length, text2);
    }

    EnterCriticalSection(&obj->cs);
    if (obj->bDebug) {
        OutputDebugStringW(line);
        OutputDebugStringW(L"\n");
    }
    if (obj->bFile)
        write_to_file(obj, line);
    if (obj->bEventLog) {
        const wchar_t* strings[1] = {line};
        TraceReportEvent(obj, level, strings, 1);
    }
    if (obj->bMailslot)
        write_to_mailslot(obj, line);
    LeaveCriticalSection(&obj->cs);
}

void TraceVA(TraceObject* obj, int32_t level, const wchar_t* fmt, ...)
{
    if (!TraceAnySink(obj) || !TraceLevelOn(obj, level))
        return;
    va_list args;
    va_start(args, fmt);
    trace_formatted(obj, level, fmt, args);
    va_end(args);
}

void TraceVAF(TraceObject* obj, int32_t level, uint32_t facility, const wchar_t* fmt, ...)
{
    if (!TraceAnySink(obj) || !TraceLevelOn(obj, level) ||
        !TraceFacilityOn(obj, facility))
        return;
    va_list args;
    va_start(args, fmt);
    trace_formatted(obj, level, fmt, args);
    va_end(args);
}
