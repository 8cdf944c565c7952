#include "file_internal.h"

#include <string.h>

#include <algorithm>

namespace {

ZORStatus read_at(const ZORFileRec* rec, uint32_t offset, void* into, uint32_t bytes, uint32_t* got)
{
    ZORStatus status = zor_file::seek(rec, offset, FILE_BEGIN, nullptr);
    if (status)
        return status;
    DWORD read = 0;
    if (!ReadFile(rec->hFile, into, bytes, &read, nullptr))
        return zor_file::last_error();
    *got = read;
    return ZOR_S_OK;
}

// The first read of a record starts at the beginning of the file, or behind
// the byte order mark of a wide file; a position set before it is looked at
// for the mark and then given up.
ZORStatus check_mark(ZORFileRec* rec)
{
    bool marked = false;
    if (rec->dwEncoding == ZOR_FILE_WIDE) {
        uint8_t head[2] = {};
        uint32_t got = 0;
        ZORStatus status = read_at(rec, rec->dwFilePos, head, sizeof head, &got);
        if (status) {
            rec->bFirstAccess = 0;
            return status;
        }
        uint16_t first = static_cast<uint16_t>(head[0] | head[1] << 8);
        // FE FF is taken as a mark too, but the units stay little-endian.
        marked = got > 0 && (first == 0xFEFF || first == 0xFFFE);
    }
    rec->dwFilePos = marked ? 2 : 0;
    rec->bFirstAccess = 0;
    return ZOR_S_OK;
}

}

namespace zor_file {

ZORStatus refill(ZORFileRec* rec, uint32_t wanted)
{
    int32_t avail = static_cast<int32_t>(rec->dwBufFill - rec->dwBufPos);
    if (avail >= static_cast<int32_t>(wanted))
        return ZOR_S_OK;
    if (rec->bFirstAccess) {
        ZORStatus status = check_mark(rec);
        if (status)
            return status;
    }
    // A leftover part of a unit is read again at the front of the buffer.
    // The block holds twice dwBufSize bytes, so even a buffer of one byte
    // takes a whole wide unit; a buffer of none reads nothing.
    uint32_t from = rec->dwFilePos - static_cast<uint32_t>(std::max(avail, 0));
    uint32_t ask = rec->dwBufSize ? std::max(rec->dwBufSize, wanted) : 0;
    if (ask && !rec->pBuf)
        return ZOR_E_OUTOFMEMORY;
    uint32_t got = 0;
    ZORStatus status = read_at(rec, from, rec->pBuf, ask, &got);
    if (status)
        return status;
    rec->dwFilePos = from + got;
    rec->dwBufPos = 0;
    rec->dwBufFill = got;
    // Fewer bytes than a unit can only be the odd last byte of a wide file:
    // no unit is made of it.
    if (got < wanted) {
        rec->dwBufFill = 0;
        return ZOR_E_HANDLE_EOF;
    }
    return ZOR_S_OK;
}

}

ZORStatus ZORFileGetBlock(ZORFileRec* rec, void* buf, uint32_t* len)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    ZORStatus status = zor_file::check_access(rec, len && *len && buf);
    if (status)
        return status;
    uint8_t* into = static_cast<uint8_t*>(buf);
    uint32_t copied = 0;
    while (copied < *len) {
        status = zor_file::refill(rec, 1);
        if (status)
            break;
        uint32_t take = std::min(rec->dwBufFill - rec->dwBufPos, *len - copied);
        memcpy(into + copied, rec->pBuf + rec->dwBufPos, take);
        rec->dwBufPos += take;
        copied += take;
    }
    if (status == ZOR_E_HANDLE_EOF && copied) {
        *len = copied;
        return ZOR_S_OK;
    }
    return status;
}
