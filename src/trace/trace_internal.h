// Routines shared by the trace sources; tests reach them through the
// static core.
#pragma once

#include <stdio.h>

#include "../frame/zor_platform.h"
#include "zor_trace.h"

// Formats into a field; text that does not fit whole leaves the field
// empty and gives false, so that no name is ever used cut short.
template <size_t N>
bool TraceFormat(wchar_t (&out)[N], const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    int n = zor::counted_vswprintf(out, N, format, args);
    va_end(args);
    if (n < 0 || static_cast<size_t>(n) >= N) {
        out[0] = 0;
        return false;
    }
    return true;
}

// The one mailslot handle of the process, shared by every trace object.
extern HANDLE hTraceMailslot;

// Room for the 8 digits of a date, or "INVALID", and a terminator.
constexpr int kTraceDateUnits = 9;

// Text of a level in the prefix and its event-log type; a level outside
// 0 to 5 reads as level 0.
wchar_t  TraceLevelLetter(int32_t level);
uint16_t TraceEventType(const TraceObject* obj, int32_t level);

// The three tests that come first in every output function, inline so
// that a disabled call costs a few loads and no call.
inline int TraceAnySink(const TraceObject* obj)
{
    return obj->bDebug || obj->bFile || obj->bEventLog || obj->bMailslot;
}

inline int32_t TraceLevelOn(const TraceObject* obj, int32_t level)
{
    // Unsigned, so that level 0 lands on bit 31 and no level shifts by a
    // negative count or by 32 or more.
    uint32_t mask = 1u << ((static_cast<uint32_t>(level) - 1u) & 31u);
    return (obj->dwLevelMask & mask) == mask;
}

inline int32_t TraceFacilityOn(const TraceObject* obj, uint32_t facility)
{
    return facility < 256 ? obj->aFacility[facility] : 1;
}

// 1 when `size` passes the limit of nSizeKB KiB; never without a limit.
int TraceSizeExceeded(const TraceObject* obj, int32_t size);

// Today's local date as yyyymmdd.
void TraceDateStr(wchar_t* out);

// The date nDays days before today as yyyymmdd, or "INVALID" when it can't
// be computed.
void TraceCutoffStr(const TraceObject* obj, wchar_t* out);

// Sets szFile to today's name from szBaseName. A name that does not fit
// leaves szFile empty and gives 0.
int TraceSetDailyName(TraceObject* obj);

// Deletes the files of szBaseName dated on or before the cut-off.
void TracePruneFiles(TraceObject* obj);

// Keeps the last third of `name`, which is `size` bytes long; not 0 on
// success. The temporary file lies in the current directory.
int TraceTrimFile(const wchar_t* name, uint32_t size);

// Names today's file, prunes at a change of name, creates the file and
// trims it over the limit. A failure switches off the file and debug sinks
// and zeroes the level mask.
void TraceCheckFile(TraceObject* obj);

// A plain line, a dump line, and the prefix of either: level letter, day,
// month, year, blank, time to the millisecond, blank.
constexpr int kTraceLineUnits = 2048;
constexpr int kTracePrefixUnits = 19;
void TraceFormatPrefix(wchar_t* out, int32_t level);

// Writes `line` and a line end through a text-mode stream, each unit
// converted in the runtime's current locale, "?" for one it can't hold.
void TraceWriteLine(FILE* file, const wchar_t* line);

// One event of `count` insertion strings with the level's type; a failed
// report switches the event log off.
void TraceReportEvent(TraceObject* obj, int32_t level, const wchar_t** strings, uint16_t count);

// Enters szEventSource as an event source under HKEY_LOCAL_MACHINE; any
// failure switches the event log off.
void TraceRegisterSource(TraceObject* obj);

// The insertion strings of a dump's event: at most 100 lines, each with
// its line end, each in a block of its own.
constexpr uint16_t kTraceEventStrings = 100;
struct TraceEventStrings {
    const wchar_t* items[kTraceEventStrings];
    uint16_t count;
};
void TraceEventAdd(TraceEventStrings* list, const wchar_t* line);
void TraceEventRelease(TraceEventStrings* list);

// Where the lines of a dump go; a null stream or list is a sink that is off.
struct TraceDumpSinks {
    FILE* file;
    int32_t debug;
    TraceEventStrings* events;
};
enum class TraceDumpKind { Ascii, Hex };

// Forms the header and body lines of a dump and hands each to the sinks.
void TraceWriteDump(const TraceDumpSinks& sinks, TraceDumpKind kind, const wchar_t* prefix,
                    const wchar_t* title, const void* data, int32_t count);
