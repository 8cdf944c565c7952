/* ZORFile: a buffered file in the caller's storage. Reads go through a
   buffer of `dwBufSize` bytes by block or by line; lines come back as wide
   text whatever the file holds. Writes go straight to the file. Two
   encodings: 1 narrow text in the narrow code page, 2 wide text
   (little-endian 16-bit units) behind the byte order mark FF FE.

   Every function but ZORFileGetPos returns a status (zor_status.h). A record
   is raw (no signature), ready (ZORFileInit, or an open that failed in
   CreateFileW) or open. Reads and writes check, in this order: the
   signature (ZOR_E_INVALID_DATA), the length argument and the data pointer
   (ZOR_E_INVALIDARG), the file (ZOR_E_INVALID_HANDLE). A failing system
   call comes back as ZOR_STATUS_FROM_WIN32 of its error, with the file open
   and the record's position kept. Positions and sizes are 32-bit: offsets
   above 2^31-1 cannot be reached.

   Choices of this library where the rules leave room:
   - A null record gives ZOR_E_INVALIDARG everywhere; ZORFileGetPos gives 0
     for it and ZORFileSetPos does nothing.
   - An encoding other than 1 or 2 is read and written as wide text, but
     without a byte order mark, so that what was written reads back.
   - A read of the file asks for at least one whole unit of the record's
     encoding: with `bufSize` 1 a wide record still reads every unit. With
     `bufSize` 0 every read is the end of the file.
   - The odd last byte of a wide file is no unit: ZORFileGetLine drops it
     and reports the end of the file; ZORFileGetBlock delivers it raw.
   - A line holding a zero unit comes back up to that unit; the rest of the
     line is consumed and lost, and `dst` is zero-filled behind it.
   - A record whose buffer could not be had (ZORFileOpen gave
     ZOR_E_OUTOFMEMORY) answers every read with ZOR_E_OUTOFMEMORY; its
     writes work.
   - ZORFileGetLine takes its working area and the room of the wide line
     before it consumes anything, and ZORFileWriteLine takes the room of both
     conversions before it writes: ZOR_E_OUTOFMEMORY loses no line and
     writes nothing.
   - `len` of ZORFileGetLine and `n` of ZORFileWriteLine above 2^31-1 give
     ZOR_E_INVALIDARG: text of the library counts in signed 32 bits.
   - Narrow lines are written one byte per wide unit at most: under a
     double-byte code page a line whose narrow form is longer is written as
     nothing, with status 0. */
#ifndef ZOR_FILE_H
#define ZOR_FILE_H

#include "zor_api.h"

#define ZOR_FILE_SIGNATURE  47689u /* 0xBA49 */
#define ZOR_FILE_NARROW     1u
#define ZOR_FILE_WIDE       2u

struct _SECURITY_ATTRIBUTES;

/* In the caller's storage; the fields are part of the interface. */
typedef struct ZORFileRec {
    uint32_t dwSignature;  /* ZOR_FILE_SIGNATURE from init or open on; 0 after close */
    void*    hFile;        /* the platform's file handle; INVALID_HANDLE_VALUE when none */
    uint32_t dwBufPos;     /* offset in the buffer of the next byte to hand out */
    uint32_t dwBufSize;    /* bytes asked for by each read of the file */
    uint32_t dwBufFill;    /* bytes that the last read brought in */
    uint8_t* pBuf;         /* dwBufSize 16-bit units, owned by the record */
    uint32_t dwFilePos;    /* where the next read of the file starts: runs ahead of the
                              caller by what the buffer holds; ZORFileWriteBlock writes here */
    uint32_t dwEncoding;   /* ZOR_FILE_NARROW or ZOR_FILE_WIDE */
    int32_t  bFirstAccess; /* 1 until the first read or write has dealt with the mark */
} ZORFileRec;

/* A ready record: signature, no file, no buffer, counters 0. */
ZOR_API ZORStatus ZORFileInit(ZORFileRec* rec);

/* Fills the record whatever it held (an open record loses its file and
   buffer), then opens with CreateFileW and the six arguments in its order.
   Encoding 0 is stored as 1. A failed CreateFileW leaves a ready record.
   ZOR_E_OUTOFMEMORY for the buffer leaves the file open: ZORFileClose is
   owed. Encoding 2 gives ZOR_E_NOTIMPL as a notice: the record is open and
   fully usable, and ZORFileClose is owed as well. */
ZOR_API ZORStatus ZORFileOpen(ZORFileRec* rec, uint32_t bufSize, const wchar_t* fileName,
                              uint32_t access, uint32_t share,
                              struct _SECURITY_ATTRIBUTES* security, uint32_t disposition,
                              uint32_t flags, void* templateFile, uint32_t encoding);

/* Closes the file, releases the buffer and empties the record (raw). With
   no file: 0 and nothing touched. With a wrong signature the handle is left
   open, the record is emptied all the same and the result is
   ZOR_E_INVALID_DATA. */
ZOR_API ZORStatus ZORFileClose(ZORFileRec* rec);

/* Up to *len raw bytes, behind the mark of a wide file. At the end of the
   file *len becomes the number delivered (status 0); with nothing left the
   result is ZOR_E_HANDLE_EOF and *len stays. */
ZOR_API ZORStatus ZORFileGetBlock(ZORFileRec* rec, void* buf, uint32_t* len);

/* One line as wide text into `dst` of `len` units, the rest zero-filled.
   Units are bytes of encoding 1, 16-bit little-endian otherwise. A line
   feed ends the line and is consumed; carriage returns are dropped
   wherever they stand; the end of the file ends the last line. At most
   len-1 units are delivered: the next call goes on with the unit that did
   not fit (so `len` 1 gives an empty line and consumes nothing). At the end
   of the file ZOR_E_HANDLE_EOF, with `dst` untouched. Narrow text is
   converted in the narrow code page. */
ZOR_API ZORStatus ZORFileGetLine(ZORFileRec* rec, wchar_t* dst, uint32_t len);

/* Where the next read of the file starts; no test of any kind. */
ZOR_API uint32_t  ZORFileGetPos(const ZORFileRec* rec);

/* Empties the buffer and moves the next read, and ZORFileWriteBlock, to
   `pos`. Before the first read it has no effect on where reading starts:
   at 0, or at 2 when a mark stands at the position the record holds. */
ZOR_API ZORStatus ZORFileSetPos(ZORFileRec* rec, uint32_t pos);

/* `n` bytes as they are: WriteBlock at dwFilePos, which stays; AppendBlock
   at the end of the file, after which dwFilePos is the file pointer (also
   when the write failed). `n` 0 does nothing and gives 0 before any test.
   The first access of a wide record that is a write puts the mark where the
   write was going, ahead of the data. Writes leave the buffer alone: what
   it holds is handed out as it was read until ZORFileSetPos. */
ZOR_API ZORStatus ZORFileWriteBlock(ZORFileRec* rec, const void* buf, uint32_t n);
ZOR_API ZORStatus ZORFileAppendBlock(ZORFileRec* rec, const void* buf, uint32_t n);

/* Appends `n` units of `text` in the record's encoding, narrow text in the
   narrow code page. No line end is added. */
ZOR_API ZORStatus ZORFileWriteLine(ZORFileRec* rec, const wchar_t* text, uint32_t n);

#endif
