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

struct Spec {
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
void read_size(const U*& p, Spec& spec)
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
            spec.size = m.size;
            spec.text = m.width;
            return;
        }
}

int64_t at_least(int64_t a, int64_t b) { return a > b ? a : b; }

template <class U>
bool text_is_narrow(const Spec& spec, bool swapped)
{
    if (spec.text != TextWidth::native)
        return spec.text == TextWidth::narrow;
    return (sizeof(U) == 1) != swapped;
}

template <class U>
int64_t text_room(const Spec& spec, bool swapped, va_list& walk)
{
    const void* text = va_arg(walk, const void*);
    if (spec.hasPrecision && spec.precision != 0)
        return spec.span();
    if (!text)
        return at_least(spec.span(), 6);
    size_t n = text_is_narrow<U>(spec, swapped) ? strlen(static_cast<const char*>(text))
                                                : wcslen(static_cast<const wchar_t*>(text));
    return at_least(spec.span(), int64_t(n));
}

int64_t fixed_room(const Spec& spec, double value)
{
    int64_t room = at_least(fabs(value) > 1e6 ? 317 : 15, spec.width + 2);
    return spec.precision != 0 ? room + spec.precision - 6 : room;
}

void skip_integer(const Spec& spec, va_list& walk)
{
    if (spec.size == ArgSize::wide64)
        (void)va_arg(walk, long long);
    else
        (void)va_arg(walk, int);
}

// Room for one conversion, its argument slots taken from `walk`.
template <class U>
int64_t conversion_room(U conversion, const Spec& spec, va_list& walk)
{
    switch (conversion) {
    case '%':
        return at_least(spec.width, 1);
    case 'c':
    case 'C':
        (void)va_arg(walk, int);
        return at_least(spec.width, 1);
    case 'd': case 'i': case 'u': case 'x': case 'X':
        skip_integer(spec, walk);
        return at_least(spec.span(), 23);
    case 'o':
        skip_integer(spec, walk);
        return 0;
    case 'a': case 'A':
        (void)va_arg(walk, double);
        return at_least(spec.span(), 23);
    case 'e': case 'E': case 'g': case 'G':
        (void)va_arg(walk, double);
        return at_least(spec.span(), 13);
    case 'f': case 'F':
        return fixed_room(spec, va_arg(walk, double));
    case 'p':
        (void)va_arg(walk, void*);
        return at_least(spec.span(), 20);
    case 's':
    case 'S':
        return text_room<U>(spec, conversion == 'S', walk);
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
        Spec spec;
        for (;; ++p) {
            if (*p == ' ' || *p == '+' || *p == '-')
                spec.flags += 1;
            else if (*p == '#')
                spec.flags += 2;
            else
                break;
        }
        // A negative `*` width pads on the left, a negative precision is none.
        spec.width = read_count(p, walk);
        spec.width = spec.width < 0 ? -spec.width : spec.width;
        if (*p == '.') {
            ++p;
            spec.hasPrecision = true;
            spec.precision = read_count(p, walk);
            spec.precision = spec.precision < 0 ? 0 : spec.precision;
        }
        read_size(p, spec);
        total += spec.flags;
        if (*p)
            total += conversion_room(*p++, spec, walk);
    }
    va_end(walk);
    return total;
}

template int64_t format_estimate<char>(const char*, va_list);
template int64_t format_estimate<wchar_t>(const wchar_t*, va_list);

}
}
