// What the file family's readers and writers share: the test every access
// starts with, and the file calls in status form.
#pragma once

#include "zor_file.h"
#include "zor_status.h"

#include <windows.h>

namespace zor_file {

// Signature, then the caller's arguments, then the file: the order in which
// a caller learns what is wrong with the call.
ZORStatus check_access(const ZORFileRec* rec, bool argumentsGiven);

// The last system error in status form; never 0, so that a call that failed
// without setting an error still reads as a failure.
ZORStatus last_error();

ZORStatus seek(const ZORFileRec* rec, uint32_t offset, DWORD method, uint32_t* landed);

// Makes at least `wanted` bytes available at dwBufPos, reading the file when
// the buffer holds fewer. ZOR_E_HANDLE_EOF when the file has fewer left.
ZORStatus refill(ZORFileRec* rec, uint32_t wanted);

// Bytes of one unit of text: narrow records read bytes, every other
// encoding 16-bit units.
inline uint32_t unit_size(const ZORFileRec* rec)
{
    return rec->dwEncoding == ZOR_FILE_NARROW ? 1u : 2u;
}

// Sizes of text that the string classes can hold, which count in signed 32 bits.
constexpr uint32_t kMaxTextUnits = 0x7FFFFFFFu;

}
