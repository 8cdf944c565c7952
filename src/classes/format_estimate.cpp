// The format estimate: fixed widths per conversion, the text of `%s`
// arguments measured, one walk over a copy of the arguments.
#include "format_estimate.h"

#include <math.h>
#include <string.h>
#include <wchar.h>

namespace zorlib {
namespace detail {

namespace {

// Beyond this a width or precision cannot be met by any block anyway; the
// cap keeps the sums from overflowing.
constexpr int64_t kCountCap = int64_t(1) << 40;

enum class ArgSize { normal, wide64 };
enum class TextWidth { native, narrow, wide };

struct Field {
    int64_t flags = 0;
    int64_t width = 0;
    int64_t precision = 0;
    bool hasPrecision = false;
    ArgSize size = ArgSize::normal;
    TextWidth text = TextWidth::native;

    int64_t span() const { return hasPrecision && precision > width ? precision : width; }
};

template <class U>
bool is_digit(U c) { return c >= '0' && c <= '9'; }

// A decimal number or `*`, which takes the next argument.
template <class U>
int64_t read_count(const U*& p, va_list& walk)
{
    if (*p == '*') {
        ++p;
        return va_arg(walk, int);
    }
    int64_t n = 0;
    for (; is_digit(*p); ++p)
        n = n < kCountCap ? n * 10 + (*p - '0') : kCountCap;
    return n;
}

template <class U>
bool starts(const U* p, const char* word)
{
    for (; *word; ++p, ++word)
        if (*p != U(*word))
            return false;
    return true;
}

template <class U>
void read_size(const U*& p, Field& field)
{
    struct Modifier { const char* text; ArgSize size; TextWidth width; };
    static const Modifier modifiers[] = {
        {"I64", ArgSize::wide64, TextWidth::native}, {"I32", ArgSize::normal, TextWidth::native},
        {"hh", ArgSize::normal, TextWidth::narrow},  {"ll", ArgSize::wide64, TextWidth::native},
        {"h", ArgSize::normal, TextWidth::narrow},   {"l", ArgSize::normal, TextWidth::wide},
        {"w", ArgSize::normal, TextWidth::wide},     {"L", ArgSize::wide64, TextWidth::native},
        {"I", ArgSize::wide64, TextWidth::native},   {"j", ArgSize::wide64, TextWidth::native},
        {"z", ArgSize::wide64, TextWidth::native},   {"t", ArgSize::wide64, TextWidth::native},
    };
    for (const Modifier& m : modifiers)
        if (starts(p, m.text)) {
            p += strlen(m.text);
            field.size = m.size;
            field.text = m.width;
            return;
        }
}

int64_t at_least(int64_t a, int64_t b) { return a > b ? a : b; }

template <class U>
bool text_is_narrow(const Field& field, bool swapped)
{
    if (field.text != TextWidth::native)
        return field.text == TextWidth::narrow;
    return (sizeof(U) == 1) != swapped;
}

template <class U>
int64_t text_room(const Field& field, bool swapped, va_list& walk)
{
    const void* text = va_arg(walk, const void*);
    if (field.hasPrecision && field.precision != 0)
        return field.span();
    if (!text)
        return at_least(field.span(), 6);
    size_t n = text_is_narrow<U>(field, swapped) ? strlen(static_cast<const char*>(text))
                                                : wcslen(static_cast<const wchar_t*>(text));
    return at_least(field.span(), int64_t(n));
}

int64_t fixed_room(const Field& field, double value)
{
    int64_t room = at_least(fabs(value) > 1e6 ? 317 : 15, field.width + 2);
    return field.precision != 0 ? room + field.precision - 6 : room;
}

void skip_integer(const Field& field, va_list& walk)
{
    if (field.size == ArgSize::wide64)
        (void)va_arg(walk, long long);
    else
        (void)va_arg(walk, int);
}

// Room for one conversion, its argument slots taken from `walk`.
template <class U>
int64_t conversion_room(U conversion, const Field& field, va_list& walk)
{
    switch (conversion) {
    case '%':
        return at_least(field.width, 1);
    case 'c':
    case 'C':
        (void)va_arg(walk, int);
        return at_least(field.width, 1);
    case 'd': case 'i': case 'u': case 'x': case 'X':
        skip_integer(field, walk);
        return at_least(field.span(), 23);
    case 'o':
        skip_integer(field, walk);
        return 0;
    case 'a': case 'A':
        (void)va_arg(walk, double);
        return at_least(field.span(), 23);
    case 'e': case 'E': case 'g': case 'G':
        (void)va_arg(walk, double);
        return at_least(field.span(), 13);
    case 'f': case 'F':
        return fixed_room(field, va_arg(walk, double));
    case 'p':
        (void)va_arg(walk, void*);
        return at_least(field.span(), 20);
    case 's':
    case 'S':
        return text_room<U>(field, conversion == 'S', walk);
    case 'n':
    case 'Z':
        (void)va_arg(walk, void*);
        return 0;
    default:
        return 0;
    }
}

}

template <class U>
int64_t format_estimate(const U* format, va_list args)
{
    if (!format)
        return 0;
    va_list walk;
    va_copy(walk, args);
    int64_t total = 1;
    for (const U* p = format; *p;) {
        if (*p++ != '%') {
            ++total;
            continue;
        }
        Field field;
        for (;; ++p) {
            if (*p == ' ' || *p == '+' || *p == '-')
                field.flags += 1;
            else if (*p == '#')
                field.flags += 2;
            else
                break;
        }
        // A negative `*` width pads on the left, a negative precision is none.
        field.width = read_count(p, walk);
        field.width = field.width < 0 ? -field.width : field.width;
        if (*p == '.') {
            ++p;
            field.hasPrecision = true;
            field.precision = read_count(p, walk);
            field.precision = field.precision < 0 ? 0 : field.precision;
        }
        read_size(p, field);
        total += field.flags;
        if (*p)
            total += conversion_room(*p++, field, walk);
    }
    va_end(walk);
    return total;
}

template int64_t format_estimate<char>(const char*, va_list);
template int64_t format_estimate<wchar_t>(const wchar_t*, va_list);

}
}
