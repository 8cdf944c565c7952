// What the symbol scanner and the format scanner both need: the value of an
// escape's digits, the named control escapes and the lookup of their code
// descriptions.
#pragma once

#include <stdint.h>

namespace scanner {

// The value of an ASCII digit of a base up to 16, or 16 for anything else,
// so that `digit_value(c) < base` tests a digit of `base`.
inline uint32_t digit_value(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return uint32_t(c - L'0');
    wchar_t lower = wchar_t(c | 0x20);
    if (lower >= L'a' && lower <= L'f')
        return uint32_t(lower - L'a' + 10);
    return 16;
}

// The unit of \a \b \f \n \r \t \v, or 0 for any other letter.
inline wchar_t control_escape(wchar_t c)
{
    switch (c) {
    case L'a': return 7;
    case L'b': return 8;
    case L'f': return 12;
    case L'n': return 10;
    case L'r': return 13;
    case L't': return 9;
    case L'v': return 11;
    default: return 0;
    }
}

struct CodeDescription {
    int32_t        code;
    const wchar_t* text;
};

// Key of the row that ends a description table; its null text answers
// every code without a row of its own.
constexpr int32_t kEndOfDescriptions = 31333;

// Read only to word messages and dumps, so a linear walk is enough.
inline const wchar_t* find_description(const CodeDescription* table, int32_t code)
{
    while (table->code != code && table->code != kEndOfDescriptions)
        ++table;
    return table->text;
}

}
