// What the file and event-log sinks share between plain lines and dumps.
#include <stdlib.h>
#include <string.h>

#include "../frame/zor_alloc.h"
#include "../frame/zor_platform.h"
#include "trace_internal.h"

namespace {

constexpr wchar_t kSourceKey[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\";

}

void TraceWriteLine(FILE* file, const wchar_t* line)
{
    // The runtime's wide output stops at the first unit that it can't hold,
    // or under Wine at the first non-ASCII one; converting here keeps the
    // rest of the line. The stream stays in text mode for the line end.
    char bytes[512];
    size_t used = 0;
    for (;; ++line) {
        char unit[MB_LEN_MAX];
        int n = 1;
        if (*line == 0)
            unit[0] = '\n';
        else if (*line < 0x80)
            unit[0] = static_cast<char>(*line);
        else if ((n = wctomb(unit, *line)) <= 0) {
            unit[0] = '?';
            n = 1;
        }
        if (used + n > sizeof bytes) {
            fwrite(bytes, 1, used, file);
            used = 0;
        }
        memcpy(bytes + used, unit, n);
        used += n;
        if (*line == 0)
            break;
    }
    fwrite(bytes, 1, used, file);
}

void TraceReportEvent(TraceObject* obj, int32_t level, const wchar_t** strings, uint16_t count)
{
    HANDLE source = RegisterEventSourceW(nullptr, obj->szEventSource);
    if (!source)
        return;
    if (!ReportEventW(source, TraceEventType(obj, level), 0, 1, nullptr, count, 0, strings,
                      nullptr))
        obj->bEventLog = 0;
    DeregisterEventSource(source);
}

void TraceRegisterSource(TraceObject* obj)
{
    wchar_t name[sizeof kSourceKey / sizeof(wchar_t) + 30];
    wchar_t message_file[60];
    zor::counted_swprintf(name, sizeof name / sizeof(wchar_t), L"%s%s", kSourceKey,
                          obj->szEventSource);
    zor::counted_swprintf(message_file, 60, L"%%SystemRoot%%\\System\\%s.msg",
                          obj->szEventSource);
    HKEY key;
    if (RegCreateKeyW(HKEY_LOCAL_MACHINE, name, &key) != ERROR_SUCCESS) {
        obj->bEventLog = 0;
        return;
    }
    DWORD types = 7;
    DWORD file_bytes = static_cast<DWORD>((wcslen(message_file) + 1) * sizeof(wchar_t));
    if (RegSetValueExW(key, L"EventMessageFile", 0, REG_EXPAND_SZ,
                       reinterpret_cast<const BYTE*>(message_file), file_bytes) != ERROR_SUCCESS ||
        RegSetValueExW(key, L"TypesSupported", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&types),
                       sizeof types) != ERROR_SUCCESS)
        obj->bEventLog = 0;
    RegCloseKey(key);
}

void TraceEventAdd(TraceEventStrings* list, const wchar_t* line)
{
    if (list->count >= kTraceEventStrings)
        return;
    size_t length = wcslen(line);
    // Room for the line and 10 units more; zeroed, so the terminator is there.
    wchar_t* copy = static_cast<wchar_t*>(zor_calloc(length + 10, sizeof(wchar_t)));
    if (!copy)
        return;
    memcpy(copy, line, length * sizeof(wchar_t));
    copy[length] = L'\n';
    list->items[list->count++] = copy;
}

void TraceEventRelease(TraceEventStrings* list)
{
    while (list->count > 0)
        zor_free(const_cast<wchar_t*>(list->items[--list->count]));
}
