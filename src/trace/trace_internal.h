// Routines shared by the trace sources; tests reach them through the
// static core.
#pragma once

#include "zor_trace.h"

// The one mailslot handle of the process, shared by every trace object.
extern HANDLE hTraceMailslot;

// Room for the 8 digits of a date, or "INVALID", and a terminator.
constexpr int kTraceDateUnits = 9;

// Text of a level in the prefix and its event-log type; a level outside
// 0 to 5 reads as level 0.
wchar_t  TraceLevelLetter(int32_t level);
uint16_t TraceEventType(const TraceObject* obj, int32_t level);

// 1 when any of the four sinks is on.
int TraceAnySink(const TraceObject* obj);

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
