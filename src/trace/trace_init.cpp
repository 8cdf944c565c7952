// Start of a trace object: defaults, the registry key, the platform, the
// first file check and the two banner lines.
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include "../frame/zor_platform.h"
#include "trace_internal.h"
#include "zor_reg.h"

namespace {

// szFile must hold the stem, 8 digits of date, ".log" and a terminator.
constexpr size_t kMaxStem = 255 - 1 - 12;
// Every number from 0 to 255 with its separator.
constexpr size_t kFacilityListUnits = 1200;

void set_defaults(TraceObject* obj)
{
    // Everything but the lock, which is made anew below.
    memset(obj, 0, offsetof(TraceObject, cs));
    obj->nSizeKB = 10000;
    for (auto& entry : obj->aFacility)
        entry = 1;
    const uint16_t event_types[6] = {4, 0, 4, 2, 1, 4};
    memcpy(obj->awEventType, event_types, sizeof event_types);
}

template <size_t N>
void read_text(HKEY key, const wchar_t* name, wchar_t (&out)[N], const wchar_t* fallback)
{
    uint32_t units = N;
    QueryRegEntryString(key, name, out, &units, fallback);
}

template <class Field>
void read_number(HKEY key, const wchar_t* name, Field& out, uint32_t fallback)
{
    uint32_t value = fallback;
    QueryRegEntryLong(key, name, &value, fallback);
    out = static_cast<Field>(value);
}

bool is_digit(wchar_t unit) { return unit >= L'0' && unit <= L'9'; }

// Any unit but an ASCII digit separates; those are the digits that _wtoi
// reads, so no run is taken for a number that it can't convert.
void disable_facilities(TraceObject* obj, const wchar_t* list)
{
    while (*list) {
        if (!is_digit(*list)) {
            ++list;
            continue;
        }
        EnableTrace(obj, static_cast<uint32_t>(_wtoi(list)), 0);
        while (is_digit(*list))
            ++list;
    }
}

// The file's stem, refused with the file sink rather than shortened.
void set_stem(TraceObject* obj, const wchar_t* format, const wchar_t* a, const wchar_t* b)
{
    if (!TraceFormat(obj->szFile, format, a, b) || wcslen(obj->szFile) > kMaxStem) {
        obj->szFile[0] = 0;
        obj->bFile = 0;
    }
    wcscpy(obj->szBaseName, obj->szFile);
}

void add_separator(TraceObject* obj)
{
    size_t length = wcslen(obj->szPath);
    if (length == 0 || obj->szPath[length - 1] == L'\\' || obj->szPath[length - 1] == L'/')
        return;
    if (length + 1 < sizeof obj->szPath / sizeof(wchar_t)) {
        obj->szPath[length] = L'\\';
        obj->szPath[length + 1] = 0;
    } else {
        obj->szPath[0] = 0;
        obj->bFile = 0;
    }
}

void TraceReadConfig(TraceObject* obj, const wchar_t* regPath, const wchar_t* fileName)
{
    HKEY key;
    if (OpenRegKey(HKEY_LOCAL_MACHINE, regPath, KEY_READ, &key) != ERROR_SUCCESS)
        return;
    read_number(key, L"TRACESIZE", obj->nSizeKB, 10000);
    read_number(key, L"TRACEDAYS", obj->nDays, 0);
    read_number(key, L"TRACELEVEL", obj->dwLevelMask, 0);
    int32_t* flags[] = {&obj->bDebug, &obj->bFile, &obj->bEventLog, &obj->bMailslot};
    const wchar_t* flag_names[] = {L"TRACEDEBUG", L"TRACEFILE", L"TRACEEVENTLOG", L"TRACEMAILSLOT"};
    for (int i = 0; i < 4; ++i) {
        uint32_t value = 0;
        QueryRegEntryBool(key, flag_names[i], &value, 0);
        *flags[i] = static_cast<int32_t>(value);
    }
    wchar_t disabled[250], mailslot[250], stem[255];
    read_text(key, L"DISABLED_FACILITIES", disabled, L"");
    read_text(key, L"EVENTSOURCE", obj->szEventSource, L"ZOR-STDTrace");
    read_text(key, L"TRACEPATH", obj->szPath, L"");
    read_text(key, L"MAILSLOT", mailslot, L"");
    bool named = fileName && *fileName;
    if (!named)
        read_text(key, L"DEFAULT_TRACEFILE", stem, L"");
    CloseRegKey(key);

    disable_facilities(obj, disabled);
    if (!TraceFormat(obj->szMailslot, L"%s%s", L"\\\\*\\mailslot\\", mailslot))
        obj->bMailslot = 0;
    add_separator(obj);
    const wchar_t* name = named ? fileName : stem;
    if (*name)
        set_stem(obj, L"%s%s", obj->szPath, name);
}

void TraceCheckPlatform(TraceObject* obj)
{
    if (GetVersion() & 0x80000000u)
        obj->bEventLog = 0;
    else
        obj->bNT = 1;
}

// The process id goes into the stem, "app" becoming "app.1234.": the files
// of this process stay apart from other processes' and are pruned by it.
void add_process_id(TraceObject* obj)
{
    wchar_t stem[255], id[16];
    wcscpy(stem, obj->szBaseName);
    _ultow(GetCurrentProcessId(), id, 10);
    set_stem(obj, *stem ? L"%s.%s." : L"%s%s.", stem, id);
}

void list_disabled(const TraceObject* obj, wchar_t* list)
{
    size_t length = 0;
    list[0] = 0;
    for (int facility = 0; facility < 256; ++facility)
        if (obj->aFacility[facility] == 0)
            length += zor::counted_swprintf(list + length, kFacilityListUnits - length,
                                            length ? L", %d" : L"%d", facility);
}

}

void TraceInit(TraceObject* obj, const wchar_t* regPath, const wchar_t* fileName,
               int32_t perProcess)
{
    if (obj == &TraceObj) {
        if (bTraceObjInitialized)
            return;
        bTraceObjInitialized = 1;
    }
    set_defaults(obj);
    // Closed rather than dropped: an open write handle would keep the slot
    // from being opened again.
    if (hTraceMailslot != INVALID_HANDLE_VALUE)
        CloseHandle(hTraceMailslot);
    hTraceMailslot = INVALID_HANDLE_VALUE;
    TraceReadConfig(obj, regPath, fileName);
    if (perProcess)
        add_process_id(obj);
    TraceCheckPlatform(obj);
    InitializeCriticalSection(&obj->cs);
    if (obj->bFile)
        TraceCheckFile(obj);
    if (obj->bEventLog)
        TraceRegisterSource(obj);
    wchar_t list[kFacilityListUnits];
    list_disabled(obj, list);
    Trace(obj, 5, L"*** T R A C E   S T A R T E D", nullptr);
    Trace(obj, 5, L"*** Disabled Facilities:", list);
}
