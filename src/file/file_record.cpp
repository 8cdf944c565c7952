#include "file_internal.h"

#include "../frame/zor_alloc.h"

namespace {

void reset(ZORFileRec* rec, uint32_t signature, uint32_t bufSize, uint32_t encoding, int32_t firstAccess)
{
    rec->dwSignature = signature;
    rec->hFile = INVALID_HANDLE_VALUE;
    rec->dwBufPos = 0;
    rec->dwBufSize = bufSize;
    rec->dwBufFill = 0;
    rec->pBuf = nullptr;
    rec->dwFilePos = 0;
    rec->dwEncoding = encoding;
    rec->bFirstAccess = firstAccess;
}

}

namespace zor_file {

ZORStatus check_access(const ZORFileRec* rec, bool argumentsGiven)
{
    if (rec->dwSignature != ZOR_FILE_SIGNATURE)
        return ZOR_E_INVALID_DATA;
    if (!argumentsGiven)
        return ZOR_E_INVALIDARG;
    if (rec->hFile == INVALID_HANDLE_VALUE)
        return ZOR_E_INVALID_HANDLE;
    return ZOR_S_OK;
}

ZORStatus last_error()
{
    DWORD error = GetLastError();
    return ZOR_STATUS_FROM_WIN32(error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE);
}

ZORStatus seek(const ZORFileRec* rec, uint32_t offset, DWORD method, uint32_t* landed)
{
    // Without a high part the result is the whole position, and the
    // invalid value is a failure only when an error goes with it.
    SetLastError(ERROR_SUCCESS);
    DWORD at = SetFilePointer(rec->hFile, static_cast<LONG>(offset), nullptr, method);
    if (at == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS)
        return last_error();
    if (landed)
        *landed = at;
    return ZOR_S_OK;
}

}

ZORStatus ZORFileInit(ZORFileRec* rec)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    reset(rec, ZOR_FILE_SIGNATURE, 0, 0, 1);
    return ZOR_S_OK;
}

ZORStatus ZORFileOpen(ZORFileRec* rec, uint32_t bufSize, const wchar_t* fileName, uint32_t access,
                      uint32_t share, struct _SECURITY_ATTRIBUTES* security, uint32_t disposition,
                      uint32_t flags, void* templateFile, uint32_t encoding)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    reset(rec, ZOR_FILE_SIGNATURE, bufSize, encoding ? encoding : ZOR_FILE_NARROW, 1);
    HANDLE file = CreateFileW(fileName, access, share, security, disposition, flags, templateFile);
    if (file == INVALID_HANDLE_VALUE)
        return zor_file::last_error();
    rec->hFile = file;
    rec->pBuf = static_cast<uint8_t*>(zor_calloc(bufSize, sizeof(uint16_t)));
    if (!rec->pBuf)
        return ZOR_E_OUTOFMEMORY;
    // Wide files are fully served; the status only tells a caller written
    // for narrow files that this one is not.
    return encoding == ZOR_FILE_WIDE ? ZOR_E_NOTIMPL : ZOR_S_OK;
}

ZORStatus ZORFileClose(ZORFileRec* rec)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    if (rec->hFile == INVALID_HANDLE_VALUE)
        return ZOR_S_OK;
    ZORStatus status = ZOR_S_OK;
    // A handle under a wrong signature may not be ours to close.
    if (rec->dwSignature != ZOR_FILE_SIGNATURE)
        status = ZOR_E_INVALID_DATA;
    else if (!CloseHandle(rec->hFile))
        status = zor_file::last_error();
    zor_free(rec->pBuf);
    reset(rec, 0, 0, 0, 0);
    return status;
}

uint32_t ZORFileGetPos(const ZORFileRec* rec)
{
    return rec ? rec->dwFilePos : 0;
}

ZORStatus ZORFileSetPos(ZORFileRec* rec, uint32_t pos)
{
    if (!rec)
        return ZOR_E_INVALIDARG;
    rec->dwFilePos = pos;
    rec->dwBufPos = 0;
    rec->dwBufFill = 0;
    return ZOR_S_OK;
}
