// The wide string class: 16-bit units, an exact-fit block that never
// shrinks, and no allocation for an empty object. Internal to the library;
// the buffered file converts its lines through it.
#pragma once

#include <stdint.h>

#include "text_ops.h"

namespace zorlib {

class CWStr : public detail::TextOps<CWStr, wchar_t> {
public:
    static constexpr bool kCapacityIsRoom = false;
    static constexpr bool kEmptyOnFailedReserve = false;
    static constexpr bool kReplaceCopies = false;

    wchar_t* buffer = nullptr;
    uint32_t capacity = 0;  // bytes of the block, terminator included
    uint32_t length = 0;    // units of text

    CWStr() = default;
    CWStr(const CWStr& other) { copy_from(other); }
    CWStr(CWStr&& other) noexcept { take_over(other); }
    // A null or empty text takes no block.
    CWStr(const wchar_t* text) { Assign(text, -1); }
    CWStr(const wchar_t* text, int n) { Assign(text, n); }
    // Narrow text in the narrow code page.
    CWStr(const char* narrow) { *this = narrow; }
    virtual ~CWStr() { clear(true); }

    // An empty source empties this object and keeps its block.
    CWStr& operator=(const CWStr& other) { return copy_from(other); }
    CWStr& operator=(CWStr&& other) noexcept { return take_over(other); }
    // A null text releases the block.
    CWStr& operator=(const wchar_t* text);
    CWStr& operator=(wchar_t unit);
    // Conversions: a null or empty source empties and keeps the block; a
    // conversion that fails leaves an empty text.
    CWStr& operator=(const char* narrow);
    CWStr& FromAnsi(const char* narrow, int n);
    CWStr& FromUtf8(const char* utf8, int n);
    // As Assign, but a null text empties and keeps the block.
    CWStr& FromWide(const wchar_t* text, int n);

    // The unit at i; 0 outside the text and at its end.
    wchar_t GetCharAt(int i) const;
};

}
