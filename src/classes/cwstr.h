// The wide string class: 16-bit units, an exact-fit block that never
// shrinks, and no allocation for an empty object. Internal to the library;
// the buffered file converts its lines through it.
#pragma once

#include <stdint.h>

#include <iosfwd>

#include "text_ops.h"

namespace zorlib {

class CAStr;
class CUtf8Str;

// Fields: buffer, capacity (bytes of the block), length (units).
class CWStr : public detail::TextOps<CWStr, wchar_t, detail::SizedBlock<wchar_t>> {
public:
    static constexpr bool kEmptyOnFailedReserve = false, kReplaceCopies = false;

    CWStr() = default;
    // A null or empty text takes no block.
    CWStr(const wchar_t* text) { Assign(text, -1); }
    CWStr(const wchar_t* text, int n) { Assign(text, n); }
    // Narrow text in the narrow code page.
    CWStr(const char* narrow) { *this = narrow; }
    CWStr(const CAStr& narrow) { *this = narrow; }
    CWStr(const CUtf8Str& utf8) { *this = utf8; }

    // Copy assignment: an empty source empties this object and keeps its
    // block.
    using TextOps::operator=;
    // Conversions: a null or empty source empties and keeps the block; a
    // conversion that fails leaves an empty text.
    CWStr& operator=(const char* narrow);
    CWStr& operator=(const CAStr& narrow);
    CWStr& operator=(const CUtf8Str& utf8);
    CWStr& FromAnsi(const char* narrow, int n);
    CWStr& FromUtf8(const char* utf8, int n);
    // As Assign, but a null text empties and keeps the block.
    CWStr& FromWide(const wchar_t* text, int n);

    // The unit at i; 0 outside the text and at its end.
    wchar_t GetCharAt(int i) const;
};

// Writes the text converted to narrow, in double quotes.
std::ostream& operator<<(std::ostream& out, const CWStr& text);

}
