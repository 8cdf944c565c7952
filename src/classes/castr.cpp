#include "castr.h"

#include "cutf8str.h"
#include "cwstr.h"
#include "encodings.h"
#include "text_ops_impl.h"

namespace zorlib {

template class detail::TextOps<CAStr, char, detail::RoomBlock<char>>;

// Wide sources convert with their terminator, so that text whose narrow form
// passes the room fails as a whole instead of losing its last character.
CAStr& CAStr::operator=(const wchar_t* wide)
{
    return convert_from(wide, -1, 1, 1, true, WideToAnsi);
}

CAStr& CAStr::operator=(const CWStr& wide)
{
    return convert_from(wide.GetStr(), int(wide.length), 1, 1, true, WideToAnsi);
}

CAStr& CAStr::operator=(const CUtf8Str& utf8)
{
    return *this = CWStr(utf8);
}

CAStr& CAStr::FromWide(const wchar_t* wide, int n)
{
    return *this = CWStr().FromWide(wide, n < 0 ? -1 : n);
}

CAStr& CAStr::FromUtf8(const char* utf8, int n)
{
    return *this = CWStr().FromUtf8(utf8, n < 0 ? -1 : n);
}

int CAStr::Compare(const char* x) const
{
    return guarded_compare(x, [](const char* a, const char* b) {
        for (;; ++a, ++b) {
            unsigned char ca = static_cast<unsigned char>(*a), cb = static_cast<unsigned char>(*b);
            if (ca != cb)
                return ca < cb ? -1 : 1;
            if (!ca)
                return 0;
        }
    });
}

int CAStr::Reserve(int n, int keep)
{
    if (n < 0)
        return 0;
    if (uint32_t(n) <= capacity) {
        if (!keep) {
            clear(false);
            return 1;
        }
        if (buffer)
            buffer[n] = 0;
        if (length > uint32_t(n))
            length = uint32_t(n);
        return 1;
    }
    if (keep) {
        if (!take_block(uint32_t(n)))
            return 0;
        buffer[n] = 0;
        return 1;
    }
    // The text is dropped anyway: a fresh block saves copying it.
    char* block = static_cast<char*>(zor_malloc(size_t(n) + 1));
    if (!block)
        return 0;
    zor_free(buffer);
    buffer = block;
    capacity = uint32_t(n);
    set_length(0);
    return 1;
}

wchar_t CAStr::GetWideCharAt(int i) const
{
    return CWStr(*this).GetCharAt(i);
}

CAStr CAStr::operator+(const CAStr& other) const
{
    CAStr sum(*this);
    return sum += other;
}

CAStr CAStr::operator+(char ch) const
{
    CAStr sum(*this);
    return sum += ch;
}

CAStr CAStr::operator+(const char* text) const
{
    CAStr sum(*this);
    return sum += text;
}

CAStr& CAStr::operator+=(const CAStr& other)
{
    Append(other.GetStr(), int(other.length));
    return *this;
}

CAStr& CAStr::operator+=(char ch)
{
    Append(ch);
    return *this;
}

CAStr& CAStr::operator+=(const char* text)
{
    Append(text, -1);
    return *this;
}

char* CAStr::FindChar(char ch, int start) const
{
    uint32_t from = start < 0 ? 0 : uint32_t(start);
    if (!ch || from >= length)
        return nullptr;
    return strchr(buffer + from, ch);
}

CAStr CAStr::SpanIncluding(const char* set) const
{
    return Left(set ? int(strspn(GetStr(), set)) : 0);
}

CAStr& CAStr::RemoveChar(char ch)
{
    if (!ch)
        return *this;
    return keep_units([ch](char c) { return c != ch; });
}

CAStr& CAStr::Delete(int start, int count)
{
    if (count <= 0 || start < 0 || uint32_t(start) >= length)
        return *this;
    uint32_t from = uint32_t(start);
    uint32_t n = uint32_t(count) < length - from ? uint32_t(count) : length - from;
    memmove(buffer + from, buffer + from + n, length - from - n);
    set_length(length - n);
    return *this;
}

CAStr& CAStr::ReplaceChar(char from, char to)
{
    if (!length || from == to)
        return *this;
    for (char* p = buffer; p < buffer + length && *p; ++p)
        if (*p == from)
            *p = to;
    return *this;
}

CAStr& CAStr::TrimLeft(const char* set)
{
    return trim_left_while([set](char c) { return detail::Units<char>::in(set, c); });
}

CAStr& CAStr::TrimRight(const char* set)
{
    return trim_right_while([set](char c) { return detail::Units<char>::in(set, c); });
}

}
