// Pieces shared by the scanner's translation units. Every write into the
// three buffers tests bufLen first (put_alpha and put_raw drop what does not
// fit), so that no input can write behind it.
#pragma once

#include "zor_sym.h"

#include "../frame/zor_platform.h"
#include "scanner_shared.h"

namespace sym {

// Numbers and escapes read ASCII digits only; other digits of the runtime's
// class are single characters.
inline bool is_digit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
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

// Only identifiers fill alphaUpper; the routines behind other tokens leave it.
inline void terminate_alpha_and_raw(SymScanner* sc)
{
    sc->raw[sc->rawLen] = 0;
    sc->alpha[sc->alphaLen] = 0;
}

inline void terminate_texts(SymScanner* sc)
{
    terminate_alpha_and_raw(sc);
    sc->alphaUpper[sc->alphaLen] = 0;
}

// Scans the text of a string delimited by openQuote from behind `column`;
// true when the closing delimiter was read.
bool scan_string(SymScanner* sc);

// Scans a block comment whose opening `*` is at `column`; true when closed.
bool scan_c_comment(SymScanner* sc);

}
