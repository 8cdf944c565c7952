#include "file_internal.h"

#include <string.h>

#include "../frame/zor_alloc.h"
#include "../classes/cwstr.h"

namespace {

template <class Unit>
Unit load(const uint8_t* at)
{
    Unit unit;
    memcpy(&unit, at, sizeof unit);
    return unit;
}

// Reads one line into `area` of `len` units and terminates it there. The
// buffer holds at least one unit on entry. Units are taken straight from
// the buffer, a refill only when it is used up.
template <class Unit>
ZORStatus read_units(ZORFileRec* rec, Unit* area, uint32_t len)
{
    uint32_t stored = 0;
    for (;;) {
        const uint8_t* next = rec->pBuf + rec->dwBufPos;
        uint32_t units = (rec->dwBufFill - rec->dwBufPos) / sizeof(Unit);
        for (uint32_t i = 0; i < units; ++i) {
            Unit unit = load<Unit>(next + i * sizeof(Unit));
            if (unit == '\r')
                continue;
            // A full area leaves the unit for the next call; a line feed is consumed.
            if (unit == '\n' || stored + 1 == len) {
                rec->dwBufPos += (i + (unit == '\n')) * sizeof(Unit);
                area[stored] = 0;
                return ZOR_S_OK;
            }
            area[stored++] = unit;
        }
        rec->dwBufPos += units * sizeof(Unit);
        ZORStatus status = zor_file::refill(rec, sizeof(Unit));
        if (status == ZOR_E_HANDLE_EOF)
            break;
        if (status)
            return status;
    }
    area[stored] = 0;
    return ZOR_S_OK;
}

// Narrow units are gathered apart and then converted into `line`, whose
// room is taken before anything is consumed, so that an exhausted heap
// loses no line.
ZORStatus narrow_line(ZORFileRec* rec, zorlib::CWStr& line, uint32_t len)
{
    char* area = static_cast<char*>(zor_malloc(len));
    if (!area)
        return ZOR_E_OUTOFMEMORY;
    ZORStatus status = line.Reserve(static_cast<int>(len), 0) ? read_units(rec, area, len) : ZOR_E_OUTOFMEMORY;
    if (!status)
        line = area;
    zor_free(area);
    return status;
}

// Wide units go straight into the line's own block; the text ends at its
// first zero unit. The block has a unit to spare, so that it exists even
// for a `len` of 1.
ZORStatus wide_line(ZORFileRec* rec, zorlib::CWStr& line, uint32_t len)
{
    wchar_t* area = line.GetBuffer(static_cast<int>(len));
    if (!area)
        return ZOR_E_OUTOFMEMORY;
    ZORStatus status = read_units(rec, area, len);
    line.ReleaseBuffer(-1);
    return status;
}

}

ZORStatus ZORFileGetLine(ZORFileRec* rec, wchar_t* dst, uint32_t len)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    ZORStatus status = zor_file::check_access(rec, dst && len && len <= zor_file::kMaxTextUnits);
    if (status)
        return status;
    status = zor_file::refill(rec, zor_file::unit_size(rec));
    if (status)
        return status;
    zorlib::CWStr line;
    status = rec->dwEncoding == ZOR_FILE_NARROW ? narrow_line(rec, line, len) : wide_line(rec, line, len);
    if (status)
        return status;
    // What wcsncpy of len units leaves, without its unit-by-unit fill.
    uint32_t units = line.GetLength();
    memcpy(dst, line.GetStr(), units * sizeof(wchar_t));
    memset(dst + units, 0, (len - units) * sizeof(wchar_t));
    return ZOR_S_OK;
}
