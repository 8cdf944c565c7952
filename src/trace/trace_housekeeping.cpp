#include <string.h>

#include "trace_internal.h"
#include "zor_td.h"

namespace {

// The largest retention that a 16-bit day count can subtract.
constexpr int32_t kMaxDays = 65535;

// Room for a path of up to 99 units joined to a found name or a stem.
constexpr size_t kNameUnits = 400;

void date_digits(wchar_t* out, unsigned year, unsigned month, unsigned day)
{
    zor::counted_swprintf(out, kTraceDateUnits, L"%04d%02d%02d", year, month, day);
    out[kTraceDateUnits - 1] = 0;
}

bool is_digit(wchar_t unit) { return unit >= L'0' && unit <= L'9'; }

// 8 digits and ".log": the only names that an empty stem may prune.
bool is_daily_name(const wchar_t* name)
{
    for (int i = 0; i < 8; ++i)
        if (!is_digit(name[i]))
            return false;
    return _wcsicmp(name + 8, L".log") == 0;
}

}

int TraceSizeExceeded(const TraceObject* obj, int32_t size)
{
    if (obj->nSizeKB <= 0)
        return 0;
    // Computed wide: a limit past 2^31-1 bytes is one that no 32-bit size
    // passes.
    return static_cast<int64_t>(size) > static_cast<int64_t>(obj->nSizeKB) * 1024;
}

void TraceDateStr(wchar_t* out)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    date_digits(out, now.wYear, now.wMonth, now.wDay);
}

void TraceCutoffStr(const TraceObject* obj, wchar_t* out)
{
    TDDate* today = TDNew();
    TDDate* span = TDNew();
    if (today && span) {
        int32_t days = obj->nDays < kMaxDays ? obj->nDays : kMaxDays;
        TDGetActTime(today);
        TDSetInterval(span, 0, 0, static_cast<uint16_t>(days), 0, 0, 0, 0);
        TDSubst(today, span);
        date_digits(out, today->year, today->month, today->day);
    } else {
        wcscpy(out, L"INVALID");
    }
    TDFree(span);
    TDFree(today);
}

int TraceSetDailyName(TraceObject* obj)
{
    wchar_t date[kTraceDateUnits];
    TraceDateStr(date);
    return TraceFormat(obj->szFile, L"%s%s.log", obj->szBaseName, date);
}

void TracePruneFiles(TraceObject* obj)
{
    if (obj->nDays <= 0)
        return;
    wchar_t cutoff[kTraceDateUnits];
    TraceCutoffStr(obj, cutoff);
    // Letters sort above digits: without a date every dated file would
    // rate as old.
    if (!is_digit(cutoff[0]))
        return;
    wchar_t stem[kNameUnits], pattern[kNameUnits];
    if (!TraceFormat(stem, L"%s%s", obj->szBaseName, cutoff) ||
        !TraceFormat(pattern, L"%s*.*", obj->szBaseName))
        return;
    size_t n = wcslen(stem);
    bool daily_only = obj->szBaseName[0] == 0;

    WIN32_FIND_DATAW found;
    HANDLE walk = FindFirstFileW(pattern, &found);
    if (walk == INVALID_HANDLE_VALUE)
        return;
    do {
        wchar_t full[kNameUnits];
        if (daily_only && !is_daily_name(found.cFileName))
            continue;
        if (TraceFormat(full, L"%s%s", obj->szPath, found.cFileName) &&
            _wcsnicmp(full, stem, n) <= 0)
            DeleteFileW(full);
    } while (FindNextFileW(walk, &found));
    FindClose(walk);
}

void TraceCheckFile(TraceObject* obj)
{
    EnterCriticalSection(&obj->cs);
    bool ok = false;
    if (TraceSetDailyName(obj)) {
        if (_wcsicmp(obj->szFile, obj->szLastFile) != 0)
            TracePruneFiles(obj);
        HANDLE file = CreateFileW(obj->szFile, GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            DWORD size = GetFileSize(file, nullptr);
            CloseHandle(file);
            ok = size == INVALID_FILE_SIZE ||
                 !TraceSizeExceeded(obj, static_cast<int32_t>(size)) ||
                 TraceTrimFile(obj->szFile, size);
        }
    }
    if (ok) {
        wcscpy(obj->szLastFile, obj->szFile);
    } else {
        obj->bFile = 0;
        obj->bDebug = 0;
        obj->szFile[0] = 0;
        obj->dwLevelMask = 0;
    }
    LeaveCriticalSection(&obj->cs);
}
