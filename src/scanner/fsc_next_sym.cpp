#include "zor_fsc.h"

#include "fsc_scanner.h"
#include "scanner_shared.h"

namespace {

bool is_picture_digit(wchar_t unit)
{
    return unit == L'#' || unit == L'$' || unit == L'*';
}

bool is_sign(wchar_t unit)
{
    return unit == L'+' || unit == L'-';
}

class PieceReader {
public:
    explicit PieceReader(FScScanner* fsc) : m(*fsc) { m.alphaLen = 0; }

    int32_t read();

private:
    int32_t finish(int32_t sym)
    {
        m.alpha[m.alphaLen] = 0;
        m.sym = sym;
        return sym;
    }
    wchar_t peek() const { return m.text[m.column]; }
    // A zero unit inside a line of given length is text; the line never
    // extends past a zero unit at or behind that length.
    bool at_line_end() const
    {
        return peek() == 0 && (m.lineLen == zor_fsc::kNoLineLen || m.column >= m.lineLen);
    }
    void append(wchar_t unit) { m.alpha[m.alphaLen++] = unit; }
    void take() { append(m.text[m.column++]); }

    int32_t read_picture();
    wchar_t read_escape();
    wchar_t read_number(uint32_t base, uint32_t maxDigits, uint32_t value);

    FScScanner& m;
};

int32_t PieceReader::read()
{
    bool haveText = false;
    bool inSlash = false;  // the text so far is a slash and blanks
    for (;;) {
        wchar_t c = peek();
        if (c == 0 && (haveText || at_line_end()))
            return finish(haveText ? FSC_CONSTANT : FSC_EOL);
        bool startsPicture = is_picture_digit(c) || is_sign(c);
        bool single = c == L'&' || c == L'^';
        if (haveText) {
            if (c == L'/' && inSlash) {
                take();
                return finish(FSC_STRING);
            }
            // A placeholder stands alone: the text in front of it goes first.
            if (startsPicture || single || c == L'/')
                return finish(FSC_CONSTANT);
        } else if (startsPicture) {
            if (int32_t sym = read_picture())
                return finish(sym);
            // A sign with no digit behind it has been taken as text.
            haveText = true;
            continue;
        } else if (single) {
            take();
            return finish(c == L'&' ? FSC_CHAR : FSC_VARIANT);
        }
        if (c == L'\\') {
            ++m.column;
            append(read_escape());
            inSlash = false;
        } else {
            inSlash = c == L'/' || (inSlash && c == L' ');
            take();
        }
        haveText = true;
    }
}

// A number picture from its first unit; 0 when no digit follows the sign,
// which then stays taken as text.
int32_t PieceReader::read_picture()
{
    bool leadingSign = is_sign(peek());
    if (leadingSign)
        take();
    int32_t sym = 0;
    bool endsInComma = false;
    while (is_picture_digit(peek())) {
        sym = FSC_INTEGER;
        while (is_picture_digit(peek()))
            take();
        endsInComma = peek() == L',';
        if (endsInComma)
            take();
    }
    if (!sym)
        return 0;
    // A comma with no digit behind it belongs to the text that follows.
    if (endsInComma) {
        --m.alphaLen;
        --m.column;
        return sym;
    }
    if (peek() == L'.') {
        take();
        sym = FSC_DOUBLE;
    }
    while (is_picture_digit(peek()))
        take();
    if (!leadingSign && is_sign(peek()))
        take();
    return sym;
}

// The unit a backslash sequence stands for; the backslash is consumed.
wchar_t PieceReader::read_escape()
{
    if (at_line_end())
        return L'\\';
    wchar_t d = m.text[m.column++];
    if (wchar_t control = scanner::control_escape(d))
        return control;
    if (d == L'0')
        return read_number(8, 3, 0);
    if (d == L'x')
        return read_number(16, UINT32_MAX, 0);
    if (d >= L'1' && d <= L'9')
        return read_number(10, 3, static_cast<uint32_t>(d - L'0'));
    return d;
}

// Wraps in 32 bits, which keeps the low 16 bits that the result is cut to.
wchar_t PieceReader::read_number(uint32_t base, uint32_t maxDigits, uint32_t value)
{
    for (uint32_t n = 0; n < maxDigits && scanner::digit_value(peek()) < base; ++n)
        value = value * base + scanner::digit_value(m.text[m.column++]);
    return static_cast<wchar_t>(value & 0xFFFFu);
}

}

int32_t FScGetNextSym(FScScanner* fsc)
{
    return PieceReader(fsc).read();
}
