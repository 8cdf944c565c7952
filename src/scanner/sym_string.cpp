#include "sym_internal.h"

namespace {

// Reads up to `most` further digits of `base` behind `col` into `value`;
// returns the column of the last one read.
uint32_t read_escape_digits(SymScanner* sc, uint32_t col, uint32_t base, int most, uint32_t* value)
{
    const wchar_t* text = sc->text;
    for (; most > 0; --most) {
        wchar_t c = text[col + 1];
        uint32_t d = scanner::digit_value(c);
        if (d >= base)
            break;
        ++col;
        // Hexadecimal digits are kept in lower case; the bit leaves digits alone.
        sym::put_raw(sc, base == 16 ? wchar_t(c | 0x20) : c);
        *value = *value * base + d;
    }
    return col;
}

}

ZOR_API int SymEscapeSeq(SymScanner* sc)
{
    const wchar_t* text = sc->text;
    uint32_t col = sc->column + 1;
    wchar_t c = text[col];
    // A backslash that ends the text escapes nothing; stay on it so that the
    // caller's step to the next unit lands on the terminator.
    if (c == 0)
        return 0;
    sym::put_raw(sc, c);
    uint32_t value = scanner::control_escape(c);
    if (value == 0) {
        // A decimal escape never starts with 0, so a leading 0 is octal.
        if (c == L'0') {
            col = read_escape_digits(sc, col, 8, 3, &value);
        } else if (c == L'x') {
            col = read_escape_digits(sc, col, 16, 2, &value);
        } else if (c >= L'1' && c <= L'9') {
            value = uint32_t(c - L'0');
            col = read_escape_digits(sc, col, 10, 2, &value);
        } else {
            value = c;
        }
    }
    sc->column = col;
    return int(value & 0xFFFFu);
}

namespace sym {

bool scan_string(SymScanner* sc)
{
    const wchar_t* text = sc->text;
    const wchar_t quote = sc->openQuote;
    uint32_t col = sc->column + 1;
    wchar_t c;
    while ((c = text[col]) != quote && c != 0) {
        put_raw(sc, c);
        if (c == L'\\') {
            if (text[col + 1] == 0) {
                ++col;
                break;
            }
            sc->column = col;
            c = wchar_t(SymEscapeSeq(sc));
            col = sc->column;
        }
        put_alpha(sc, c);
        ++col;
    }
    bool closed = c == quote && c != 0;
    sc->column = closed ? col + 1 : col;
    return closed;
}

}

ZOR_API void SymScanString(SymScanner* sc)
{
    sym::scan_string(sc);
    sym::terminate_alpha_and_raw(sc);
}
