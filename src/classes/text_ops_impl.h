// Definitions of the shared string operations. Included only by the source
// file of each class, which instantiates the mixin for that class.
#pragma once

#include "text_ops.h"

#include <string.h>

#include "../frame/zor_alloc.h"
#include "format_estimate.h"
#include "text_units.h"

namespace zorlib {
namespace detail {

// A private copy of a source that lies in the block it is written to.
template <class U>
class UnitCopy {
public:
    UnitCopy(const U* src, size_t units)
        : m_data(static_cast<U*>(zor_malloc((units + 1) * sizeof(U))))
    {
        if (m_data) {
            memcpy(m_data, src, units * sizeof(U));
            m_data[units] = 0;
        }
    }
    ~UnitCopy() { zor_free(m_data); }
    UnitCopy(const UnitCopy&) = delete;
    UnitCopy& operator=(const UnitCopy&) = delete;
    explicit operator bool() const { return m_data != nullptr; }
    const U* get() const { return m_data; }

private:
    U* m_data;
};

// Counts as the callers' limit allows them: negative measures.
template <class U>
size_t count_of(const U* text, int n)
{
    return n < 0 ? Units<U>::len(text) : size_t(n);
}

template <class Self, class U, class L>
TextOps<Self, U, L>::~TextOps()
{
    zor_free(this->buffer);
}

// Copies without the class's own Reserve: the object is not complete yet.
template <class Self, class U, class L>
TextOps<Self, U, L>::TextOps(const TextOps& other) : L()
{
    if (other.length && take_block(other.length)) {
        memcpy(this->buffer, other.buffer, other.length * sizeof(U));
        set_length(other.length);
    }
}

template <class Self, class U, class L>
TextOps<Self, U, L>::TextOps(TextOps&& other) noexcept : L(other)
{
    other.buffer = nullptr;
    other.capacity = 0;
    other.length = 0;
}

template <class Self, class U, class L>
const U* TextOps<Self, U, L>::GetStr() const
{
    static const U empty[1] = {};
    return self().length ? self().buffer : empty;
}

template <class Self, class U, class L>
uint32_t TextOps<Self, U, L>::room() const
{
    uint32_t capacity = this->capacity;
    if (L::kCapacityIsRoom)
        return capacity;
    return capacity / sizeof(U) ? capacity / sizeof(U) - 1 : 0;
}

template <class Self, class U, class L>
size_t TextOps<Self, U, L>::block_bytes() const
{
    if (L::kCapacityIsRoom)
        return this->buffer ? size_t(this->capacity) + 1 : 0;
    return this->capacity;
}

template <class Self, class U, class L>
bool TextOps<Self, U, L>::overlaps(const U* source, size_t units) const
{
    return blocks_overlap(self().buffer, block_bytes(), source, units * sizeof(U));
}

template <class Self, class U, class L>
void TextOps<Self, U, L>::clear(bool release)
{
    L& s = *this;
    if (release) {
        zor_free(s.buffer);
        s.buffer = nullptr;
        s.capacity = 0;
    } else if (s.buffer) {
        s.buffer[0] = 0;
    }
    s.length = 0;
}

template <class Self, class U, class L>
void TextOps<Self, U, L>::set_length(uint32_t n)
{
    this->length = n;
    this->buffer[n] = 0;
}

template <class Self, class U, class L>
bool TextOps<Self, U, L>::take_block(uint32_t n)
{
    uint64_t bytes = (uint64_t(n) + 1) * sizeof(U);
    if (bytes > UINT32_MAX)
        return false;
    U* block = static_cast<U*>(zor_realloc(this->buffer, size_t(bytes)));
    if (!block)
        return false;
    this->buffer = block;
    this->capacity = L::kCapacityIsRoom ? n : uint32_t(bytes);
    return true;
}

template <class Self, class U, class L>
int TextOps<Self, U, L>::Reserve(int n, int keep)
{
    Self& s = self();
    if (n < 0 || (uint32_t(n) > room() && !take_block(uint32_t(n))))
        return 0;
    if (!keep) {
        clear(false);
        return 1;
    }
    if (s.buffer)
        s.buffer[n] = 0;
    if (s.length > uint32_t(n))
        s.length = uint32_t(n);
    return 1;
}

template <class Self, class U, class L>
U* TextOps<Self, U, L>::GetBuffer(int n)
{
    return self().Reserve(n, 1) ? self().buffer : nullptr;
}

template <class Self, class U, class L>
void TextOps<Self, U, L>::ReleaseBuffer(int n)
{
    Self& s = self();
    if (!s.buffer) {
        s.length = 0;
        return;
    }
    uint32_t limit = room();
    uint32_t end = 0;
    if (n < 0)
        while (end < limit && s.buffer[end])
            ++end;
    else
        end = uint32_t(n) < limit ? uint32_t(n) : limit;
    set_length(end);
}

template <class Self, class U, class L>
U* TextOps<Self, U, L>::Detach()
{
    Self& s = self();
    U* block = s.buffer;
    s.buffer = nullptr;
    s.capacity = 0;
    s.length = 0;
    return block;
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::copy_from(const Self& other)
{
    if (&other == &self())
        return self();
    if (other.length)
        Assign(other.buffer, int(other.length));
    else
        clear(false);
    return self();
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::take_over(Self& other)
{
    if (&other == &self())
        return self();
    clear(true);
    Self& s = self();
    s.buffer = other.buffer;
    s.capacity = other.capacity;
    s.length = other.length;
    other.buffer = nullptr;
    other.capacity = 0;
    other.length = 0;
    return s;
}

template <class Self, class U, class L>
Self TextOps<Self, U, L>::copy_of(const U* text, size_t units) const
{
    Self result;
    if (units)
        result.Assign(text, int(units));
    return result;
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::set_counted(const U* text, int n)
{
    if (!text || n == 0 || (n < 0 && !*text))
        clear(false);
    else
        Assign(text, n);
    return self();
}

template <class Self, class U, class L>
template <class Redo>
bool TextOps<Self, U, L>::redo_on_copy(const U* source, size_t units, Redo redo)
{
    if (!overlaps(source, units))
        return false;
    UnitCopy<U> copy(source, units);
    if (copy)
        redo(copy.get());
    return true;
}

template <class Self, class U, class L>
void TextOps<Self, U, L>::Assign(const U* text, int n)
{
    if (!text) {
        clear(true);
        return;
    }
    size_t count = count_of(text, n);
    if (count == 0) {
        clear(false);
        return;
    }
    if (redo_on_copy(text, count, [&](const U* copy) { Assign(copy, int(count)); }))
        return;
    if (!self().Reserve(int(count), 0))
        return;
    memcpy(self().buffer, text, count * sizeof(U));
    set_length(uint32_t(count));
}

template <class Self, class U, class L>
void TextOps<Self, U, L>::Append(const U* text, int n)
{
    if (!text)
        return;
    size_t count = count_of(text, n);
    if (count == 0)
        return;
    if (redo_on_copy(text, count, [&](const U* copy) { Append(copy, int(count)); }))
        return;
    uint32_t old = self().length;
    uint64_t total = uint64_t(old) + count;
    if (total > INT32_MAX || !self().Reserve(int(total), 1))
        return;
    memcpy(self().buffer + old, text, count * sizeof(U));
    set_length(uint32_t(total));
}

template <class Self, class U, class L>
template <class Compare3>
int TextOps<Self, U, L>::guarded_compare(const U* x, Compare3 compare) const
{
    const Self& s = self();
    if (x == s.buffer)
        return 0;
    if (!x)
        return s.length ? 1 : 0;
    if (!s.length)
        return *x ? -1 : 0;
    return compare(s.buffer, x);
}

template <class Self, class U, class L>
template <class CompareN3>
int TextOps<Self, U, L>::guarded_compare_n(const U* x, int n, CompareN3 compare) const
{
    const Self& s = self();
    if (x == s.buffer)
        return 0;
    if (!x)
        return s.length ? 1 : 0;
    size_t count = count_of(x, n);
    if (count == 0)
        return s.length ? 1 : 0;
    if (!s.length)
        return -1;
    return compare(s.buffer, x, count < s.length ? count : s.length);
}

template <class Self, class U, class L>
int TextOps<Self, U, L>::Compare(const U* x) const { return guarded_compare(x, Units<U>::cmp); }

template <class Self, class U, class L>
int TextOps<Self, U, L>::CompareNoCase(const U* x) const { return guarded_compare(x, Units<U>::icmp); }

template <class Self, class U, class L>
int TextOps<Self, U, L>::CompareN(const U* x, int n) const { return guarded_compare_n(x, n, Units<U>::ncmp); }

template <class Self, class U, class L>
int TextOps<Self, U, L>::CompareNoCaseN(const U* x, int n) const { return guarded_compare_n(x, n, Units<U>::nicmp); }

template <class Self, class U, class L>
int TextOps<Self, U, L>::StartsWith(const U* x) const
{
    if (!x || !*x)
        return 1;
    if (!self().length)
        return 0;
    return CompareN(x, int(Units<U>::len(x))) == 0;
}

template <class Self, class U, class L>
int TextOps<Self, U, L>::EndsWith(const U* x) const
{
    if (!x || !*x)
        return 1;
    const Self& s = self();
    size_t n = Units<U>::len(x);
    if (!s.length || n > s.length)
        return 0;
    return Units<U>::ncmp(s.buffer + s.length - n, x, n) == 0;
}

template <class Self, class U, class L>
U* TextOps<Self, U, L>::Find(const U* text, int start) const
{
    const Self& s = self();
    uint32_t from = start < 0 ? 0 : uint32_t(start);
    if (!s.length || !text || !*text || from >= s.length)
        return nullptr;
    return const_cast<U*>(Units<U>::find(s.buffer + from, text));
}

template <class Self, class U, class L>
int TextOps<Self, U, L>::FindOneOf(const U* set) const
{
    const Self& s = self();
    if (!set || !s.length)
        return -1;
    const U* hit = Units<U>::pbrk(s.buffer, set);
    return hit ? int(hit - s.buffer) : -1;
}

template <class Self, class U, class L>
Self TextOps<Self, U, L>::Left(int n) const
{
    const Self& s = self();
    uint32_t units = n < 0 ? 0 : uint32_t(n);
    return copy_of(s.buffer, units < s.length ? units : s.length);
}

template <class Self, class U, class L>
Self TextOps<Self, U, L>::Right(int n) const
{
    const Self& s = self();
    uint32_t units = n < 0 ? 0 : uint32_t(n);
    if (units > s.length)
        units = s.length;
    return copy_of(s.buffer + s.length - units, units);
}

template <class Self, class U, class L>
Self TextOps<Self, U, L>::Mid(int start, int count) const
{
    const Self& s = self();
    uint32_t from = start < 0 ? 0 : uint32_t(start);
    uint32_t units = count < 0 ? 0 : uint32_t(count);
    if (from >= s.length)
        return Self();
    if (units > s.length - from)
        units = s.length - from;
    return copy_of(s.buffer + from, units);
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::MakeLower()
{
    if (self().length)
        Units<U>::lower(self().buffer);
    return self();
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::MakeUpper()
{
    if (self().length)
        Units<U>::upper(self().buffer);
    return self();
}

template <class Self, class U, class L>
template <class Drop>
Self& TextOps<Self, U, L>::trim_left_while(Drop drop)
{
    Self& s = self();
    uint32_t n = 0;
    while (n < s.length && drop(s.buffer[n]))
        ++n;
    if (n) {
        memmove(s.buffer, s.buffer + n, (s.length - n) * sizeof(U));
        set_length(s.length - n);
    }
    return s;
}

template <class Self, class U, class L>
template <class Drop>
Self& TextOps<Self, U, L>::trim_right_while(Drop drop)
{
    Self& s = self();
    uint32_t n = s.length;
    while (n && drop(s.buffer[n - 1]))
        --n;
    if (n != s.length)
        set_length(n);
    return s;
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::TrimLeft() { return trim_left_while(Units<U>::space); }

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::TrimLeft(U ch) { return trim_left_while([ch](U c) { return c == ch; }); }

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::TrimRight() { return trim_right_while(Units<U>::space); }

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::TrimRight(U ch) { return trim_right_while([ch](U c) { return c == ch; }); }

template <class Self, class U, class L>
template <class Keep>
Self& TextOps<Self, U, L>::keep_units(Keep keep)
{
    Self& s = self();
    uint32_t out = 0;
    for (uint32_t in = 0; in < s.length; ++in)
        if (keep(s.buffer[in]))
            s.buffer[out++] = s.buffer[in];
    if (out != s.length)
        set_length(out);
    return s;
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::RemoveChars(const U* set)
{
    if (!set || !*set)
        return self();
    return keep_units([set](U c) { return !Units<U>::in(set, c); });
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::KeepChars(const U* set)
{
    if (!set || !*set)
        return self();
    return keep_units([set](U c) { return Units<U>::in(set, c); });
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::RemoveRepeats(U ch)
{
    if (!ch)
        return self();
    U previous = 0;
    return keep_units([ch, &previous](U c) {
        bool repeat = c == ch && previous == ch;
        previous = c;
        return !repeat;
    });
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::ReplaceChars(const U* set, U ch)
{
    if (!set)
        return self();
    if (!ch)
        return self().RemoveChars(set);
    Self& s = self();
    for (uint32_t i = 0; i < s.length; ++i)
        if (Units<U>::in(set, s.buffer[i]))
            s.buffer[i] = ch;
    return s;
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::Remove(const U* text)
{
    if (!text || !*text || !self().length)
        return self();
    size_t n = Units<U>::len(text);
    // One unit needs no search and no copy of the argument.
    if (n == 1) {
        U unit = *text;
        return keep_units([unit](U c) { return c != unit; });
    }
    if (!redo_on_copy(text, n + 1, [&](const U* copy) { replace_shorter(copy, n, nullptr, 0); }))
        replace_shorter(text, n, nullptr, 0);
    return self();
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::Replace(const U* from, const U* to)
{
    if (!self().length || !from || !*from)
        return self();
    if (!to || !*to)
        return self().Remove(from);
    size_t fromLen = Units<U>::len(from), toLen = Units<U>::len(to);
    if (Self::kReplaceCopies || overlaps(from, fromLen + 1) || overlaps(to, toLen + 1)) {
        UnitCopy<U> fromCopy(from, fromLen), toCopy(to, toLen);
        if (!fromCopy || !toCopy)
            return self();
        if (toLen <= fromLen)
            replace_shorter(fromCopy.get(), fromLen, toCopy.get(), toLen);
        else
            replace_longer(fromCopy.get(), fromLen, toCopy.get(), toLen);
        return self();
    }
    if (toLen <= fromLen)
        replace_shorter(from, fromLen, to, toLen);
    else
        replace_longer(from, fromLen, to, toLen);
    return self();
}

// One pass in place: the write position never passes the read position.
template <class Self, class U, class L>
void TextOps<Self, U, L>::replace_shorter(const U* from, size_t fromLen, const U* to, size_t toLen)
{
    Self& s = self();
    U* end = s.buffer + s.length;
    U* read = s.buffer;
    U* write = s.buffer;
    for (const U* hit; (hit = Units<U>::find(read, from)) != nullptr; read += fromLen) {
        size_t kept = size_t(hit - read);
        if (write != read)
            memmove(write, read, kept * sizeof(U));
        write += kept;
        read += kept;
        if (toLen)
            memcpy(write, to, toLen * sizeof(U));
        write += toLen;
    }
    memmove(write, read, size_t(end - read) * sizeof(U));
    set_length(uint32_t(write + (end - read) - s.buffer));
}

// Counts the hits, then rebuilds the text from a copy into a block of the
// exact new size.
template <class Self, class U, class L>
void TextOps<Self, U, L>::replace_longer(const U* from, size_t fromLen, const U* to, size_t toLen)
{
    Self& s = self();
    uint64_t hits = 0;
    for (const U* p = s.buffer; (p = Units<U>::find(p, from)) != nullptr; p += fromLen)
        ++hits;
    if (!hits)
        return;
    uint64_t total = s.length + (toLen - fromLen) * hits;
    UnitCopy<U> old(s.buffer, s.length);
    if (total > INT32_MAX || !old)
        return;
    uint32_t oldLength = s.length;
    if (!self().Reserve(int(total), 0))
        return;
    const U* read = old.get();
    const U* end = read + oldLength;
    U* write = s.buffer;
    for (const U* hit; (hit = Units<U>::find(read, from)) != nullptr; read = hit + fromLen) {
        memcpy(write, read, size_t(hit - read) * sizeof(U));
        write += hit - read;
        memcpy(write, to, toLen * sizeof(U));
        write += toLen;
    }
    memcpy(write, read, size_t(end - read) * sizeof(U));
    set_length(uint32_t(write + (end - read) - s.buffer));
}

namespace {

template <class U>
int hex_value(U c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

template <class U>
U simple_escape(U c)
{
    static const char table[] = "b\bf\fn\nr\rt\tv\v";
    for (const char* p = table; *p; p += 2)
        if (c == U(p[0]))
            return U(p[1]);
    return c;
}

}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::Unescape()
{
    Self& s = self();
    U* text = s.buffer;
    uint32_t n = s.length, out = 0;
    for (uint32_t in = 0; in < n;) {
        U c = text[in++];
        if (c != '\\') {
            text[out++] = c;
            continue;
        }
        if (in == n)
            break;
        c = text[in];
        if (c == 'x') {
            int high = in + 1 < n ? hex_value(text[in + 1]) : -1;
            int low = in + 2 < n ? hex_value(text[in + 2]) : -1;
            if (high >= 0 && low >= 0) {
                text[out++] = U(high * 16 + low);
                in += 3;
            } else {
                text[out++] = c;
                ++in;
            }
            continue;
        }
        if (c >= '0' && c <= '7') {
            uint32_t digits = 0, value = 0;
            while (digits < 3 && in + digits < n && text[in + digits] >= '0' &&
                   text[in + digits] <= '7')
                value = value * 8 + uint32_t(text[in + digits++] - '0');
            // Too large for one byte: the digits stay as plain text.
            if (value < 256) {
                text[out++] = U(value);
                in += digits;
            }
            continue;
        }
        text[out++] = simple_escape(c);
        ++in;
    }
    if (out != n)
        set_length(out);
    return s;
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::Format(const U* format, ...)
{
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
    return self();
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::FormatV(const U* format, va_list args)
{
    if (!format) {
        clear(false);
        return self();
    }
    size_t formatLen = Units<U>::len(format);
    if (redo_on_copy(format, formatLen + 1, [&](const U* copy) { FormatV(copy, args); }))
        return self();
    int64_t estimate = format_estimate(format, args);
    if (estimate > INT32_MAX - 1)
        return self();
    int room = int(estimate);
    U* out = GetBuffer(room);
    if (!out)
        return self();
    int written = Units<U>::vformat(out, size_t(room), format, args);
    if (written < 0 || written >= room) {
        out[room - 1] = 0;
        written = -1;
    }
    ReleaseBuffer(written);
    return self();
}

namespace {

template <class U>
bool is_digit(U c) { return c >= '0' && c <= '9'; }

// Position of the decimal separator: the unit behind the leading digits
// (after a sign) when a digit follows it; 0 when there is none.
template <class U>
uint32_t separator_at(const U* text, uint32_t length)
{
    uint32_t i = text[0] == '-' ? 1 : 0;
    uint32_t digitsFrom = i;
    while (i < length && is_digit(text[i]))
        ++i;
    return i > digitsFrom && i + 1 < length && is_digit(text[i + 1]) ? i : 0;
}

}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::FromDouble(double value, int precision, int trimZeros)
{
    clear(false);
    if (precision < 0)
        Format(Units<U>::fixed(), value);
    else
        Format(Units<U>::fixed_precision(), precision, value);
    Self& s = self();
    uint32_t separator = s.length ? separator_at(s.buffer, s.length) : 0;
    if (!trimZeros || !separator)
        return s;
    uint32_t end = s.length;
    while (end > separator + 1 && s.buffer[end - 1] == '0')
        --end;
    if (end == separator + 1)
        end = separator;
    set_length(end);
    return s;
}

template <class Self, class U, class L>
template <class V>
Self& TextOps<Self, U, L>::number_text(void (*write)(V, U*), V value)
{
    clear(false);
    // 20 units hold every 32-bit and 64-bit decimal text with its sign.
    if (self().Reserve(20, 0)) {
        write(value, self().buffer);
        self().length = uint32_t(Units<U>::len(self().buffer));
    }
    return self();
}

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::FromInt(int32_t value) { return number_text(Units<U>::from_int, value); }

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::FromLong(int32_t value) { return number_text(Units<U>::from_long, value); }

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::FromUInt(uint32_t value) { return number_text(Units<U>::from_uint, value); }

template <class Self, class U, class L>
Self& TextOps<Self, U, L>::FromULong(uint32_t value) { return number_text(Units<U>::from_ulong, value); }

template <class Self, class U, class L>
template <class V>
Self& TextOps<Self, U, L>::convert_from(const V* src, int count, int64_t roomExtra,
                                     int64_t roomFactor, bool withTerminator,
                                     int (*routine)(U*, const V*, int, int))
{
    size_t n = src ? count_of(src, count) : 0;
    if (n == 0) {
        clear(false);
        return self();
    }
    int64_t want = (int64_t(n) + roomExtra) * roomFactor;
    if (want >= INT32_MAX || !self().Reserve(int(want), 0)) {
        if (Self::kEmptyOnFailedReserve)
            clear(false);
        return self();
    }
    int result = routine(self().buffer, src, int(want) + 1, int(n) + (withTerminator ? 1 : 0));
    if (result <= 0 || result > want + 1)
        clear(false);
    else
        set_length(uint32_t(result - 1));
    return self();
}

}
}
