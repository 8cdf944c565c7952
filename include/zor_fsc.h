/* FSc: cuts a format line, such as a print mask, into runs of constant text
   and placeholders. Each placeholder's text and length go to FMFormatStr or
   FMFormatDouble; constant text comes back with its escapes translated.

   Placeholders, in the letters of DefaultDblFormat:
     &            one character
     / blanks /   fixed-width text, the slashes included in the width
     ^            whole text
     number       optional leading sign, digits `#` `$` `*` in groups parted
                  by single commas, optional `.` and further digits, and a
                  trailing sign if there was no leading one. A comma that no
                  digit follows is constant text, and so is a sign or a `.`
                  that does not stand before a digit.
   Escapes in constant text: \a \b \f \n \r \t \v; \0 and up to three octal
   digits; \1 to \9 with up to four decimal digits in all; \x and any number
   of hexadecimal digits; any other unit stands for itself, so \# or \/ put
   placeholder letters into text. Values are cut to 16 bits. A backslash at
   the very end of the line stands for itself. */
#ifndef ZOR_FSC_H
#define ZOR_FSC_H

#include "zor_api.h"

#define FSC_EOL      (-1) /* end of the line */
#define FSC_CONSTANT (-2) /* constant text */
#define FSC_CHAR     (-3) /* & */
#define FSC_STRING   (-4) /* / blanks / */
#define FSC_VARIANT  (-5) /* ^ */
#define FSC_INTEGER  (-6) /* number picture without a decimal point */
#define FSC_DOUBLE   (-7) /* number picture with a decimal point */

/* In the caller's storage. `alpha` holds the current piece, always
   terminated, and stays valid until the next FScGetNextSym. */
typedef struct FScScanner {
    int32_t        sym;
    uint32_t       bufLen;   /* units of `alpha`, terminator included */
    const wchar_t* text;     /* borrowed */
    uint32_t       column;   /* next unit to read */
    uint32_t       alphaLen;
    wchar_t*       alpha;    /* owned */
    uint32_t       lineLen;  /* 0xFFFFFFFF when the line ends at its terminator */
} FScScanner;

/* `bufLen` must be at least the longest line's length plus one: a piece is at
   most the whole line, and it is not tested. A `bufLen` of 0 still gets room
   for the terminator. Returns 0 or ZOR_E_OUTOFMEMORY; after a failure
   FScRelease is harmless. */
ZOR_API ZORStatus FScInit(FScScanner* fsc, uint32_t bufLen);
ZOR_API void      FScRelease(FScScanner* fsc);

/* FScSetLineLen lets the line hold zero units: one in front of `len` is
   text, one at or behind `len` ends the line, so the scanner never reads
   beyond the first zero unit from `len` on. Without a length the first zero
   unit ends the line. */
ZOR_API void FScSetLine(FScScanner* fsc, const wchar_t* text);
ZOR_API void FScSetLineLen(FScScanner* fsc, const wchar_t* text, uint32_t len);

/* The next piece's code; FSC_EOL at the end, and again on every further
   call. A placeholder always stands alone in its piece. */
ZOR_API int32_t        FScGetNextSym(FScScanner* fsc);
ZOR_API int32_t        FScGetSym(const FScScanner* fsc);
ZOR_API wchar_t*       FScGetAlpha(const FScScanner* fsc);
ZOR_API uint32_t       FScGetAlphaLen(const FScScanner* fsc);
ZOR_API uint32_t       FScGetColumnNo(const FScScanner* fsc);

/* "EOL", "STRING/CHAR constant", "CHAR placeholder", "STRING placeholder",
   "VARIANT placeholder " (with its blank), "INTEGER placeholder",
   "DOUBLE placeholder" for -1 to -7; null for every other code. */
ZOR_API const wchar_t* FScGetSymDescription(int32_t sym);
/* 1 for the placeholder codes -7 to -3, 0 for all others. */
ZOR_API int32_t        FScIsPlaceholder(int32_t sym);

#endif
