// The UTF-8 string class. Storage, comparison and search work on bytes;
// length, positions and extraction count characters, found by the lead byte
// of each sequence alone (five- and six-byte forms included, continuation
// bytes not tested, nothing validated). There is no index: each operation
// in characters walks from the start. Internal to the library.
//
// A last sequence that its lead byte promises longer than the text ends
// every walk at the text's end; GetCodePoint gives U+FFFD for it and reads
// nothing beyond the terminator.
#pragma once

#include <stdint.h>

#include <iosfwd>

#include "text_ops.h"

namespace zorlib {

class CAStr;
class CWStr;

// Fields: buffer, capacity (bytes of the block), length (bytes).
class CUtf8Str : public detail::TextOps<CUtf8Str, char, detail::SizedBlock<char>> {
public:
    static constexpr bool kEmptyOnFailedReserve = true, kReplaceCopies = true;

    CUtf8Str() = default;
    // The bytes as they are; a null or empty text takes no block.
    CUtf8Str(const char* utf8) { Assign(utf8, -1); }
    // Takes a block for n bytes at once, also for n 0.
    CUtf8Str(const char* utf8, int n);
    CUtf8Str(const CAStr& narrow);
    CUtf8Str(const CWStr& wide) { *this = wide; }
    CUtf8Str(const wchar_t* wide) { *this = wide; }
    using TextOps::operator=;
    CUtf8Str& operator=(const wchar_t* wide);
    CUtf8Str& operator=(const CWStr& wide);
    CUtf8Str& FromUtf8(const char* utf8, int n) { return set_counted(utf8, n); }
    CUtf8Str& FromAnsi(const char* narrow, int n);
    CUtf8Str& FromWide(const wchar_t* wide, int n);

    // Characters, counted on each call; the field `length` counts bytes.
    uint32_t GetLength() const;
    CUtf8Str Left(int n) const;
    CUtf8Str Right(int n) const;
    CUtf8Str Mid(int start, int count) const;
    CUtf8Str Mid(int start) const { return Mid(start, int(GetLength()) - start); }
    // `start` in characters; an empty text gives the character at `start`.
    char* Find(const char* text, int start) const;
    // Position in characters of the first character that `set` holds.
    int FindOneOf(const char* set) const;
    CUtf8Str& KeepChars(const char* set);
    CUtf8Str& RemoveChars(const char* set);
    // The code point of character i; 0 outside the text and at its end.
    uint32_t GetCodePoint(int i) const;

private:
    // Byte offset `chars` characters on from `from`, stopping at the end.
    uint32_t advance(uint32_t from, uint32_t chars) const;
    uint32_t char_bytes(uint32_t at) const;
    CUtf8Str& keep_chars(const char* set, bool found);
};

// Writes the bytes in double quotes, without conversion.
std::ostream& operator<<(std::ostream& out, const CUtf8Str& text);

}
