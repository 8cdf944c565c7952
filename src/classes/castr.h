// The narrow string class: bytes in the narrow code page. Beside what it
// shares with its siblings it has comparison and concatenation operators,
// hexadecimal coding and message formatting. Internal to the library; the
// buffered file converts its lines to it before writing them.
//
// Wide text converts into room for one byte per wide unit and a terminator:
// text whose narrow form needs more, as in a double-byte code page, does not
// fit and leaves an empty text.
#pragma once

#include <stdint.h>

#include <iosfwd>

#include "text_ops.h"

// The platform's headers make this name a macro for its wide or narrow
// function; here it names the member.
#ifdef FormatMessage
#  undef FormatMessage
#endif

namespace zorlib {

class CWStr;
class CUtf8Str;

// Fields: buffer, length (bytes), capacity (room for text without the
// terminator).
class CAStr : public detail::TextOps<CAStr, char, detail::RoomBlock<char>> {
public:
    static constexpr bool kEmptyOnFailedReserve = true, kReplaceCopies = true;

    CAStr() = default;
    CAStr(char ch) { Assign(&ch, 1); }
    CAStr(const char* text) { Assign(text, -1); }
    CAStr(const char* text, int n) { Assign(text, n); }
    CAStr(const wchar_t* wide) { *this = wide; }
    CAStr(const CWStr& wide) { *this = wide; }
    CAStr(const CUtf8Str& utf8) { *this = utf8; }
    using TextOps::operator=;
    CAStr& operator=(const wchar_t* wide);
    CAStr& operator=(const CWStr& wide);
    CAStr& operator=(const CUtf8Str& utf8);
    CAStr& FromAnsi(const char* text, int n) { return set_counted(text, n); }
    CAStr& FromWide(const wchar_t* wide, int n);
    CAStr& FromUtf8(const char* utf8, int n);

    using TextOps::Append;
    void Append(char ch) { Append(&ch, 1); }

    // Exactly -1, 0 or 1, bytes taken as unsigned.
    int Compare(const char* x) const;
    // Over the shorter of the two texts: "ab" and "abc" compare equal. The
    // operators compare whole texts.
    int Compare(const CAStr& other) const { return CompareN(other.GetStr(), int(other.length)); }
    using TextOps::CompareNoCase;
    int CompareNoCase(const CAStr& other) const
    {
        return CompareNoCaseN(other.GetStr(), int(other.length));
    }

    // keep 0 takes a new block without copying the text when it must grow.
    int Reserve(int n, int keep);
    // release 0 empties and keeps the block; otherwise the block goes.
    void Clear(int release) { clear(release != 0); }

    operator const char*() const { return GetStr(); }
    // No bounds tests: i lies within the block.
    char& operator[](int i) { return buffer[i]; }
    unsigned char GetAt(int i) const { return static_cast<unsigned char>(buffer[i]); }
    void SetAt(int i, char ch) { buffer[i] = ch; }
    // The wide unit at i of the text converted to wide: i counts wide units.
    wchar_t GetWideCharAt(int i) const;

    // Whole-text comparisons; a null text counts as the empty text.
    bool operator==(const CAStr& other) const { return Compare(other.GetStr()) == 0; }
    bool operator==(const char* x) const { return Compare(x) == 0; }
    bool operator!=(const CAStr& other) const { return !(*this == other); }
    bool operator!=(const char* x) const { return !(*this == x); }
    bool operator<(const CAStr& other) const { return Compare(other.GetStr()) < 0; }
    bool operator<(const char* x) const { return Compare(x) < 0; }
    bool operator>(const CAStr& other) const { return Compare(other.GetStr()) > 0; }
    bool operator>(const char* x) const { return Compare(x) > 0; }
    CAStr operator+(const CAStr& other) const;
    CAStr operator+(char ch) const;
    CAStr operator+(const char* text) const;
    CAStr& operator+=(const CAStr& other);
    CAStr& operator+=(char ch);
    CAStr& operator+=(const char* text);
    CAStr& operator<<(const CAStr& other) { return *this += other; }
    CAStr& operator<<(char ch) { return *this += ch; }
    CAStr& operator<<(const char* text) { return *this += text; }

    // From `start`; null for a zero byte, an empty object or a start at or
    // beyond the end.
    char* FindChar(char ch, int start) const;
    // The leading bytes that occur in `set`.
    CAStr SpanIncluding(const char* set) const;
    CAStr& RemoveChar(char ch);
    // A count past the end is cut; nothing for a start at or beyond it.
    CAStr& Delete(int start, int count);
    // Up to the first zero byte; the length stays, also when `to` is 0.
    CAStr& ReplaceChar(char from, char to);
    using TextOps::Trim;
    using TextOps::TrimLeft;
    using TextOps::TrimRight;
    CAStr& Trim(const char* set) { TrimRight(set); return TrimLeft(set); }
    CAStr& TrimLeft(const char* set);
    CAStr& TrimRight(const char* set);

    // Formats the platform's message inserts of the wide `format` and keeps
    // the result converted to narrow; empty when the platform gives no text.
    const char* FormatMessage(const wchar_t* format, ...);
    // Two upper-case digits per byte, each followed by a blank when spaced.
    CAStr& HexEncode(int spaced);
    // Reads pairs of digits of either case; blanks and control bytes are
    // skipped, also inside a pair; a last lone digit is a high nibble. On any
    // other byte nothing changes and `errorPos`, when given, points at that
    // byte in this object's text.
    CAStr& HexDecode(const char** errorPos);
};

// Writes the bytes in double quotes, without conversion.
std::ostream& operator<<(std::ostream& out, const CAStr& text);

}
