#include "sym_internal.h"

namespace {

void classify_integer(SymScanner* sc)
{
    uint32_t value = sc->ulongVal;
    if (value <= 0x7FFFu) {
        sc->shortVal = int16_t(value);
        sc->sym = SYM_SHORT;
    } else if (value <= 0xFFFFu) {
        sc->ushortVal = uint16_t(value);
        sc->sym = SYM_USHORT;
    } else if (value <= 0x7FFFFFFFu) {
        sc->longVal = int32_t(value);
        sc->sym = SYM_LONG;
    } else {
        sc->sym = SYM_ULONG;
    }
}

// A number cannot be longer than the buffer: the unit that does not fit
// makes the number an error.
ZOR_FORCEINLINE bool append_digit(SymScanner* sc, wchar_t c)
{
    if (ZOR_UNLIKELY(sc->alphaLen >= sc->bufLen)) {
        sc->sym = SYM_ERR_NUMBER;
        return false;
    }
    sc->alpha[sc->alphaLen++] = c;
    return true;
}

// The digits behind "0x" or "0b". The limits keep the value below what
// callers have always seen accepted; they are not exact overflow bounds.
uint32_t scan_prefixed(SymScanner* sc, uint32_t col, uint32_t base, uint32_t limit)
{
    const wchar_t* text = sc->text;
    bool anyDigit = false;
    for (uint32_t d; (d = scanner::digit_value(text[col])) < base;) {
        if (!append_digit(sc, text[col++]))
            return col;
        anyDigit = true;
        if (sc->ulongVal > limit - d) {
            sc->sym = SYM_ERR_NUMBER;
            return col;
        }
        sc->ulongVal = base * sc->ulongVal + d;
    }
    if (anyDigit)
        classify_integer(sc);
    else
        sc->sym = SYM_ERR_NUMBER;
    return col;
}

// Decimal digits, an optional fraction. Integers that reach 429496730 - d
// go on in floating point; outside mode 3 such a number is an error.
uint32_t scan_decimal(SymScanner* sc, uint32_t col)
{
    const wchar_t* text = sc->text;
    for (wchar_t c; sym::is_digit(c = text[col]);) {
        uint32_t d = uint32_t(c - L'0');
        ++col;
        if (!append_digit(sc, c))
            return col;
        if (sc->sym == SYM_DOUBLE) {
            sc->doubleVal = sc->doubleVal * 10.0 + d;
        } else if (sc->ulongVal > 0x19999999u - d) {
            sc->sym = SYM_DOUBLE;
            sc->doubleVal = 10.0 * sc->ulongVal + d;
        } else {
            sc->ulongVal = 10 * sc->ulongVal + d;
        }
    }
    if (text[col] != L'.') {
        if (sc->sym != SYM_DOUBLE)
            classify_integer(sc);
        else if (sc->mode != 3)
            sc->sym = SYM_ERR_NUMBER;
        return col;
    }
    if (sc->sym != SYM_DOUBLE) {
        sc->doubleVal = sc->ulongVal;
        sc->sym = SYM_DOUBLE;
    }
    if (!append_digit(sc, L'.'))
        return col;
    ++col;
    // Summing the fraction as one integer and dividing once keeps every
    // digit that a double can hold; adding d / 10^k digit by digit would not.
    double fraction = 0.0;
    double scale = 1.0;
    for (wchar_t c; sym::is_digit(c = text[col]);) {
        ++col;
        if (!append_digit(sc, c))
            return col;
        if (scale < 1e300) {
            fraction = fraction * 10.0 + (c - L'0');
            scale *= 10.0;
        }
    }
    sc->doubleVal += fraction / scale;
    return col;
}

}

ZOR_API void SymScanNumber(SymScanner* sc)
{
    const wchar_t* text = sc->text;
    uint32_t col = sc->column;
    wchar_t first = text[col];
    if (!sym::is_digit(first)) {
        sc->sym = SYM_ERR_NUMBER;
        return;
    }
    sc->sym = SYM_ULONG;
    sym::put_alpha(sc, first);
    sc->ulongVal = uint32_t(first - L'0');
    ++col;
    wchar_t next = text[col];
    if (first == L'0' && next != L'.') {
        if (next == L'x' || next == L'X') {
            sym::put_alpha(sc, next);
            col = scan_prefixed(sc, col + 1, 16, 0x0FFFFFFFu);
        } else if (next == L'b' || next == L'B') {
            sym::put_alpha(sc, next);
            col = scan_prefixed(sc, col + 1, 2, 0x7FFFFFFFu);
        } else {
            classify_integer(sc);
        }
    } else {
        col = scan_decimal(sc, col);
    }
    sc->alpha[sc->alphaLen] = 0;
    sc->column = col;
}
