#include "file_internal.h"

namespace {

constexpr uint8_t kWideMark[2] = {0xFF, 0xFE};

ZORStatus write_all(const ZORFileRec* rec, const void* buf, uint32_t n)
{
    DWORD written = 0;
    if (!WriteFile(rec->hFile, buf, n, &written, nullptr))
        return zor_file::last_error();
    return written == n ? ZOR_S_OK : ZOR_STATUS_FROM_WIN32(ERROR_HANDLE_DISK_FULL);
}

enum class Place { AtFilePos, AtEnd };

ZORStatus write_block(ZORFileRec* rec, const void* buf, uint32_t n, Place place)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    if (n == 0)
        return ZOR_S_OK;
    ZORStatus status = zor_file::check_access(rec, buf != nullptr);
    if (status)
        return status;
    bool atEnd = place == Place::AtEnd;
    status = zor_file::seek(rec, atEnd ? 0 : rec->dwFilePos, atEnd ? FILE_END : FILE_BEGIN, nullptr);
    // A write before any read settles the mark question: a wide file gets
    // its mark where this first write goes.
    if (!status && rec->bFirstAccess) {
        if (rec->dwEncoding == ZOR_FILE_WIDE)
            status = write_all(rec, kWideMark, sizeof kWideMark);
        rec->bFirstAccess = 0;
    }
    if (!status)
        status = write_all(rec, buf, n);
    if (atEnd)
        zor_file::seek(rec, 0, FILE_CURRENT, &rec->dwFilePos);
    return status;
}

}

ZORStatus ZORFileWriteBlock(ZORFileRec* rec, const void* buf, uint32_t n)
{
    return write_block(rec, buf, n, Place::AtFilePos);
}

ZORStatus ZORFileAppendBlock(ZORFileRec* rec, const void* buf, uint32_t n)
{
    return write_block(rec, buf, n, Place::AtEnd);
}
