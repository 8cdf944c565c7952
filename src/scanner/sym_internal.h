// Pieces shared by the scanner's translation units. Every write into the
// three buffers goes through put_alpha and put_raw, which drop what does not
// fit, so that no input can write behind bufLen.
#pragma once

#include "zor_sym.h"

#include "../frame/zor_platform.h"

namespace sym {

// Numbers and escapes read ASCII digits only; other digits of the runtime's
// class are single characters.
inline bool is_digit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// The value of an ASCII hexadecimal digit, or -1.
inline int hex_value(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    wchar_t lower = wchar_t(c | 0x20);
    if (lower >= L'a' && lower <= L'f')
        return lower - L'a' + 10;
    return -1;
}

ZOR_FORCEINLINE void put_alpha(SymScanner* sc, wchar_t c)
{
    if (ZOR_LIKELY(sc->alphaLen < sc->bufLen))
        sc->alpha[sc->alphaLen++] = c;
}

ZOR_FORCEINLINE void put_raw(SymScanner* sc, wchar_t c)
{
    if (ZOR_LIKELY(sc->rawLen < sc->bufLen))
        sc->raw[sc->rawLen++] = c;
}

inline void terminate_texts(SymScanner* sc)
{
    sc->raw[sc->rawLen] = 0;
    sc->alphaUpper[sc->alphaLen] = 0;
    sc->alpha[sc->alphaLen] = 0;
}

// Scans the text of a string delimited by openQuote from behind `column`;
// true when the closing delimiter was read.
bool scan_string(SymScanner* sc);

// Scans a block comment whose opening `*` is at `column`; true when closed.
bool scan_c_comment(SymScanner* sc);

}
