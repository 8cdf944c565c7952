#include "file_internal.h"

#include "../classes/castr.h"
#include "../classes/cwstr.h"

ZORStatus ZORFileWriteLine(ZORFileRec* rec, const wchar_t* text, uint32_t n)
{
    if (!rec || !text || n > zor_file::kMaxTextUnits)
        return ZOR_E_INVALIDARG;
    if (rec->dwEncoding != ZOR_FILE_NARROW)
        return ZORFileAppendBlock(rec, text, n * sizeof(wchar_t));
    if (n == 0)
        return ZOR_S_OK;
    // Both conversions get their room first: a text that comes out empty
    // then did not fit the narrow room, which is not an exhausted heap.
    zorlib::CWStr wide(text, static_cast<int>(n));
    zorlib::CAStr narrow;
    if (wide.GetLength() != n || !narrow.Reserve(static_cast<int>(n) + 1, 0))
        return ZOR_E_OUTOFMEMORY;
    narrow = wide;
    return ZORFileAppendBlock(rec, narrow.GetStr(), narrow.GetLength());
}
