/* Trace: diagnostic lines through up to four sinks (file, debug output,
   event log, mailslot), filtered by a level mask and 256 facility switches.

   Levels 0 to 5 print as the letters "?DIWEA". The mask is a set of bits,
   not a threshold: level n passes when bit n-1 is set, level 0 on bit 31.
   A level outside 0 to 5 prints as "?" and takes the event type of level 0.
   Facilities 0 to 255 have a switch (0 off, anything else on); every number
   from 256 up is always on.

   The file sink appends to one file a day, named by the stem `szBaseName`,
   the local date as yyyymmdd and ".log" (app20261118.log). After a line
   that passes the size limit the file is cut down to its last third (the
   cut falls at a byte, so the first line kept is usually a fragment); at
   the first line of a new day files older than the retention are deleted.
   Values that the settings cannot mean:
   - "TRACESIZE" above 2097151 is no limit: the limit in bytes would pass
     the largest size that the 32-bit position of the file can show.
   - "TRACEDAYS" above 65535 keeps 65535 days (the date arithmetic counts
     days in 16 bits), which in practice keeps every file.
   - Pruning never deletes what it cannot date. When the cut-off date can't
     be computed (no memory) nothing is deleted; with an empty stem only
     names of the daily form (8 digits and ".log") may go, never other files
     of the directory.

   No function tests `obj` for null. */
#ifndef ZOR_TRACE_H
#define ZOR_TRACE_H

#include "zor_api.h"

#ifndef _WINDOWS_
#include <windows.h>
#endif

typedef struct TraceObject {
    wchar_t          szFile[255];     /* file in use: stem, date, ".log" */
    wchar_t          szLastFile[255]; /* szFile at the last finished file check */
    wchar_t          szBaseName[255]; /* directory and stem, no date */
    uint32_t         dwLevelMask;     /* bit n-1 enables level n, bit 31 level 0 */
    int32_t          aFacility[256];  /* 0 disables a facility */
    int32_t          bFile;           /* sink switches: on when not 0 */
    int32_t          bDebug;
    int32_t          bEventLog;
    int32_t          bMailslot;
    int32_t          bNT;             /* the platform has an event log */
    wchar_t          szPath[100];     /* directory, ending in a separator unless empty */
    wchar_t          szMailslot[100]; /* full mailslot name */
    wchar_t          szEventSource[30];
    uint16_t         awEventType[6];  /* event-log type of each level */
    int32_t          nDays;           /* retention in days; 0 or less keeps all */
    int32_t          nSizeKB;         /* file limit in KiB; 0 or less: no limit */
    CRITICAL_SECTION cs;              /* recursive; held by Trace across all sinks */
} TraceObject;

/* The library's own object, zero until TraceInit; pTraceObj always points
   at it, bTraceObjInitialized is 1 from the start of its first TraceInit. */
ZOR_DATA TraceObject  TraceObj;
ZOR_DATA TraceObject* pTraceObj;
ZOR_DATA int32_t      bTraceObjInitialized;

ZOR_API TraceObject* GetTraceObj(void);
ZOR_API int32_t      IsTraceObjInitialized(void);

/* Stores `enable` as the facility's switch and returns the entry as it was
   stored before (5 stays 5). A facility of 256 or more is left alone: 0. */
ZOR_API int32_t EnableTrace(TraceObject* obj, uint32_t facility, int32_t enable);

/* 1 when the level's bit is set in the mask. */
ZOR_API int32_t TraceLevelEnabled(const TraceObject* obj, int32_t level);

/* The facility's entry as stored, 1 from 256 up; the level takes no part. */
ZOR_API int32_t TraceFacilityEnabled(const TraceObject* obj, int32_t level, uint32_t facility);

/* Output. A line starts with 18 units of prefix from the local time, the
   level letter and the date day first: "W181126 043012345 " is level 3 on
   18 November 2026 at 04:30:12.345. Lines hold at most 2047 units; what lies
   beyond is cut. Nothing is reported: a line that a sink can't take is lost
   for that sink alone.

   Trace writes the prefix, text1 and, when text2 is given, a blank and
   text2, with no level or facility test, to every sink that is on, in the
   order debug output, file, event log, mailslot, under the object's lock.
   The file is opened, appended to and closed for each line; the date and
   size check comes after the line, so the first line of a day still lands
   in the day before's file. The file gets the line converted unit by unit
   in the runtime's current locale, "?" for a unit that the locale can't
   hold, with a CR LF line end. The mailslot gets the line's units and its
   terminator as one message; a failed write closes the process's mailslot
   handle and the next line opens the slot anew. Trace is for initialised
   objects only.

   TraceVA and TraceVAF test that a sink is on, the level and (TraceVAF)
   the facility, in that order, and format nothing when a test fails; %s
   takes wide text. */
ZOR_API void Trace(TraceObject* obj, int32_t level, const wchar_t* text1, const wchar_t* text2);
ZOR_API void TraceVA(TraceObject* obj, int32_t level, const wchar_t* fmt, ...);
ZOR_API void TraceVAF(TraceObject* obj, int32_t level, uint32_t facility, const wchar_t* fmt, ...);

/* Dumps: a header "<prefix>ASCII Dump: <title> (<count> Chars)" with 60
   units a body line, or "<prefix>HEX Dump: <title> (<count> Bytes)" with 32
   bytes a body line (digits, "-- " for missing bytes, five blanks, the
   bytes that print, "_" for the others). To the file, debug output and
   event log only; no lock, no mailslot, no file check. A count of 0 or less
   writes the header alone; a header with a title too long for 2047 units is
   cut. The event holds the header and the first 99 body lines. The F
   variants test the facility first. `text` must hold `count` units. */
ZOR_API void TraceAscii(TraceObject* obj, int32_t level, const wchar_t* title, const wchar_t* text,
                        int32_t count);
ZOR_API void TraceAsciiF(TraceObject* obj, int32_t level, uint32_t facility, const wchar_t* title,
                         const wchar_t* text, int32_t count);
ZOR_API void TraceHex(TraceObject* obj, int32_t level, const wchar_t* title, const void* data,
                      int32_t count);
ZOR_API void TraceHexF(TraceObject* obj, int32_t level, uint32_t facility, const wchar_t* title,
                       const void* data, int32_t count);

/* Starts an object from the key HKEY_LOCAL_MACHINE\<regPath>, read once:
   "TRACESIZE" (default 10000), "TRACEDAYS", "TRACELEVEL", the flags
   "TRACEDEBUG", "TRACEFILE", "TRACEEVENTLOG", "TRACEMAILSLOT", the texts
   "DISABLED_FACILITIES" (numbers divided by anything but digits),
   "EVENTSOURCE" (default "ZOR-STDTrace"), "TRACEPATH", "MAILSLOT" (the
   slot becomes \\*\mailslot\<name>) and "DEFAULT_TRACEFILE", the stem used
   when `fileName` is null or empty. A missing key leaves every sink off; a
   missing value, or a text too long for its area, takes its default. Then
   the file check runs, the event source is entered, and two banner lines
   go out at level 5 without level test, the second listing the disabled
   facilities ("0, 255"). TraceObj starts once: a second call returns at
   once. Any other object starts over on each call; the process's mailslot
   handle is closed and opened again by the next mailslot line.

   With `perProcess` the process id joins the stem: "app" becomes
   "app.1234.", giving app.1234.20261118.log, and pruning takes this
   process's files only. The files of ended processes are left to a process
   that runs without `perProcess` on the same stem, whose pruning counts
   them as old, since "." sorts below the digits.

   Names that don't fit are refused, never shortened: a stem (path and file
   name) beyond 242 units, or a "TRACEPATH" of 99 units that has no room
   for its separator, leaves the file sink off; a "MAILSLOT" beyond 86 units
   leaves the mailslot sink off. */
ZOR_API void TraceInit(TraceObject* obj, const wchar_t* regPath, const wchar_t* fileName,
                       int32_t perProcess);

#endif
