/* The library frame: message texts for status codes, the lock class for
   callers, and GCD. */
#ifndef ZOR_FRAME_H
#define ZOR_FRAME_H

#include <stdarg.h>
#include "zor_api.h"
#include "zor_status.h"

/* Writes the text of `code` into `buffer` (bufferLen units, at least 1):
   the library's catalogue in `language` (1033 English, 1031 German, 0 for the
   platform's choice), else the system's text, else "Unknown Error Code: ".
   Always returns 0 and always leaves terminated text. */
ZOR_API uint32_t ZORBaseFormatMessage(uint32_t code, uint32_t language,
                                      wchar_t* buffer, uint32_t bufferLen, ...);
ZOR_API uint32_t ZORBaseFormatMessageVA(uint32_t code, uint32_t language,
                                        wchar_t* buffer, uint32_t bufferLen,
                                        va_list args);

/* Euclid on two positive values; 0 as an argument is outside the interface. */
ZOR_API uint32_t GCD(uint32_t a, uint32_t b);

#ifdef __cplusplus
#ifndef _WINDOWS_
#include <windows.h>
#endif
/* A recursive lock for callers; the library itself never takes it.
   Assignment copies the section's state member-wise and is only sound on a
   section that nobody holds or waits for. */
class ZOR_EXPORT ZORCritSect {
public:
    ZORCritSect();
    ~ZORCritSect();
    void Lock();
    void UnLock();
    ZORCritSect& operator=(const ZORCritSect& other);

private:
    CRITICAL_SECTION m_section;
};
#endif

#endif
