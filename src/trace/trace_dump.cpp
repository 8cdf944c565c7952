// ASCII and HEX dumps: a header line and body lines to the file, debug and
// event-log sinks. Dumps take no lock and run no file check; each has its
// own stream and areas, so threads may dump at the same time.
#include <ctype.h>
#include <string.h>

#include "../frame/zor_platform.h"
#include "trace_internal.h"

namespace {

constexpr int32_t kAsciiPerLine = 60;
constexpr int32_t kHexPerLine = 32;

void emit(const TraceDumpSinks& sinks, const wchar_t* line)
{
    if (sinks.file)
        TraceWriteLine(sinks.file, line);
    if (sinks.debug) {
        OutputDebugStringW(line);
        OutputDebugStringW(L"\n");
    }
    if (sinks.events)
        TraceEventAdd(sinks.events, line);
}

void ascii_line(wchar_t* line, const wchar_t* text, int32_t n)
{
    zor::counted_swprintf(line, kTraceLineUnits, L"%*.*s", n, n, text);
}

// Two digits and a blank for each byte, "-- " for each byte the last line
// lacks, five blanks, then each byte as a character when it prints.
void hex_line(wchar_t* line, const unsigned char* bytes, int32_t n)
{
    static const wchar_t kDigits[] = L"0123456789ABCDEF";
    wchar_t* out = line;
    for (int32_t i = 0; i < kHexPerLine; ++i) {
        out[0] = i < n ? kDigits[bytes[i] >> 4] : L'-';
        out[1] = i < n ? kDigits[bytes[i] & 15] : L'-';
        out[2] = L' ';
        out += 3;
    }
    for (int i = 0; i < 5; ++i)
        *out++ = L' ';
    for (int32_t i = 0; i < n; ++i)
        *out++ = isprint(bytes[i]) ? static_cast<wchar_t>(bytes[i]) : L'_';
    *out = 0;
}

void dump(TraceObject* obj, int32_t level, TraceDumpKind kind, const wchar_t* title,
          const void* data, int32_t count)
{
    wchar_t prefix[kTracePrefixUnits];
    TraceFormatPrefix(prefix, level);
    TraceEventStrings events = {};
    TraceDumpSinks sinks = {obj->bFile ? _wfopen(obj->szFile, L"a") : nullptr, obj->bDebug,
                            obj->bEventLog ? &events : nullptr};
    TraceWriteDump(sinks, kind, prefix, title, data, count);
    if (sinks.file)
        fclose(sinks.file);
    if (sinks.events)
        TraceReportEvent(obj, level, events.items, events.count);
    TraceEventRelease(&events);
}

void dump_if_on(TraceObject* obj, int32_t level, TraceDumpKind kind, const wchar_t* title,
                const void* data, int32_t count)
{
    if (TraceAnySink(obj) && TraceLevelOn(obj, level))
        dump(obj, level, kind, title, data, count);
}

}

void TraceWriteDump(const TraceDumpSinks& sinks, TraceDumpKind kind, const wchar_t* prefix,
                    const wchar_t* title, const void* data, int32_t count)
{
    bool ascii = kind == TraceDumpKind::Ascii;
    wchar_t line[kTraceLineUnits];
    zor::counted_swprintf(line, kTraceLineUnits,
                          ascii ? L"%sASCII Dump: %s (%d Chars)" : L"%sHEX Dump: %s (%d Bytes)",
                          prefix, title, count);
    // A title too long for the area is cut; the formatter leaves no
    // terminator when it cuts.
    line[kTraceLineUnits - 1] = 0;
    emit(sinks, line);

    int32_t step = ascii ? kAsciiPerLine : kHexPerLine;
    for (int64_t done = 0; done < count; done += step) {
        int32_t n = static_cast<int32_t>(count - done < step ? count - done : step);
        if (ascii)
            ascii_line(line, static_cast<const wchar_t*>(data) + done, n);
        else
            hex_line(line, static_cast<const unsigned char*>(data) + done, n);
        emit(sinks, line);
    }
}

void TraceAscii(TraceObject* obj, int32_t level, const wchar_t* title, const wchar_t* text,
                int32_t count)
{
    dump_if_on(obj, level, TraceDumpKind::Ascii, title, text, count);
}

void TraceAsciiF(TraceObject* obj, int32_t level, uint32_t facility, const wchar_t* title,
                 const wchar_t* text, int32_t count)
{
    if (TraceFacilityOn(obj, facility))
        dump_if_on(obj, level, TraceDumpKind::Ascii, title, text, count);
}

void TraceHex(TraceObject* obj, int32_t level, const wchar_t* title, const void* data,
              int32_t count)
{
    dump_if_on(obj, level, TraceDumpKind::Hex, title, data, count);
}

void TraceHexF(TraceObject* obj, int32_t level, uint32_t facility, const wchar_t* title,
               const void* data, int32_t count)
{
    if (TraceFacilityOn(obj, facility))
        dump_if_on(obj, level, TraceDumpKind::Hex, title, data, count);
}
