#include "cutf8str.h"

#include "castr.h"
#include "cwstr.h"
#include "encodings.h"
#include "text_ops_impl.h"

namespace zorlib {

template class detail::TextOps<CUtf8Str, char, detail::SizedBlock<char>>;

namespace {

uint32_t sequence_length(char lead)
{
    unsigned char b = static_cast<unsigned char>(lead);
    return b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : b < 0xFC ? 5 : 6;
}

// Bytes of the character at p in a terminated text, cut at its terminator.
uint32_t terminated_char_bytes(const char* p)
{
    uint32_t want = sequence_length(*p), n = 1;
    while (n < want && p[n])
        ++n;
    return n;
}

}

CUtf8Str::CUtf8Str(const char* utf8, int n)
{
    if (utf8 && take_block(uint32_t(detail::count_of(utf8, n))))
        Assign(utf8, n);
}

CUtf8Str::CUtf8Str(const CAStr& narrow)
{
    FromAnsi(narrow.GetStr(), -1);
}

// A wide unit never takes more than three bytes: five per unit is room to spare.
CUtf8Str& CUtf8Str::operator=(const wchar_t* wide)
{
    return FromWide(wide, -1);
}

CUtf8Str& CUtf8Str::operator=(const CWStr& wide)
{
    return FromWide(wide.GetStr(), int(wide.length));
}

CUtf8Str& CUtf8Str::FromWide(const wchar_t* wide, int n)
{
    return convert_from(wide, n, 1, 5, false, WideToUtf8);
}

CUtf8Str& CUtf8Str::FromAnsi(const char* narrow, int n)
{
    CWStr wide;
    wide.FromAnsi(narrow, n);
    return *this = wide;
}

uint32_t CUtf8Str::char_bytes(uint32_t at) const
{
    uint32_t n = sequence_length(buffer[at]);
    return n < length - at ? n : length - at;
}

uint32_t CUtf8Str::advance(uint32_t from, uint32_t chars) const
{
    uint32_t at = from;
    for (; chars && at < length && buffer[at]; --chars)
        at += char_bytes(at);
    return at;
}

uint32_t CUtf8Str::GetLength() const
{
    uint32_t count = 0;
    for (uint32_t at = 0; at < length && buffer[at]; at += char_bytes(at))
        ++count;
    return count;
}

CUtf8Str CUtf8Str::Left(int n) const
{
    return copy_of(buffer, advance(0, n < 0 ? 0 : uint32_t(n)));
}

CUtf8Str CUtf8Str::Right(int n) const
{
    uint32_t chars = GetLength(), keep = n < 0 ? 0 : uint32_t(n);
    uint32_t from = keep >= chars ? 0 : advance(0, chars - keep);
    return copy_of(buffer + from, length - from);
}

CUtf8Str CUtf8Str::Mid(int start, int count) const
{
    uint32_t first = start < 0 ? 0 : uint32_t(start);
    if (first > GetLength())
        return CUtf8Str();
    uint32_t from = advance(0, first);
    return copy_of(buffer + from, advance(from, count < 0 ? 0 : uint32_t(count)) - from);
}

char* CUtf8Str::Find(const char* text, int start) const
{
    uint32_t first = start < 0 ? 0 : uint32_t(start);
    if (!length || !text || first >= GetLength())
        return nullptr;
    char* from = buffer + advance(0, first);
    return *text ? strstr(from, text) : from;
}

int CUtf8Str::FindOneOf(const char* set) const
{
    if (!set || !length)
        return -1;
    int index = 0;
    for (uint32_t at = 0; at < length && buffer[at]; at += char_bytes(at), ++index)
        for (const char* s = set; *s; s += terminated_char_bytes(s))
            if (terminated_char_bytes(s) == char_bytes(at) && !memcmp(s, buffer + at, char_bytes(at)))
                return index;
    return -1;
}

CUtf8Str& CUtf8Str::keep_chars(const char* set, bool found)
{
    if (!set || !*set || !length)
        return *this;
    uint32_t out = 0, at = 0;
    for (uint32_t n; at < length && buffer[at]; at += n) {
        n = char_bytes(at);
        // The longest sequence of the table and a terminator.
        char one[7] = {};
        memcpy(one, buffer + at, n);
        bool inSet = n == 1 ? strchr(set, one[0]) != nullptr : strstr(set, one) != nullptr;
        if (inSet == found) {
            memmove(buffer + out, buffer + at, n);
            out += n;
        }
    }
    set_length(out);
    return *this;
}

CUtf8Str& CUtf8Str::KeepChars(const char* set)
{
    return keep_chars(set, true);
}

CUtf8Str& CUtf8Str::RemoveChars(const char* set)
{
    return keep_chars(set, false);
}

uint32_t CUtf8Str::GetCodePoint(int i) const
{
    if (i < 0 || uint32_t(i) >= GetLength())
        return 0;
    static const uint32_t offsets[] = {0, 0, 0x3080, 0xE2080, 0x3C82080, 0xFA082080, 0x82082080};
    uint32_t at = advance(0, uint32_t(i));
    uint32_t n = sequence_length(buffer[at]);
    if (char_bytes(at) < n || memchr(buffer + at, 0, n))
        return 0xFFFD;
    uint32_t value = 0;
    for (uint32_t k = 0; k < n; ++k)
        value = (k ? value * 64 : 0) + static_cast<unsigned char>(buffer[at + k]);
    return value - offsets[n];
}

}
