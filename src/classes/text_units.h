// The runtime library's text functions for one unit type, so that the
// string classes are written once over narrow bytes and wide units.
#pragma once

#include <ctype.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <wctype.h>

#include "../frame/zor_platform.h"

namespace zorlib {
namespace detail {

template <class U>
struct Units;

template <>
struct Units<wchar_t> {
    static size_t len(const wchar_t* s) { return wcslen(s); }
    static int cmp(const wchar_t* a, const wchar_t* b) { return wcscmp(a, b); }
    static int icmp(const wchar_t* a, const wchar_t* b) { return _wcsicmp(a, b); }
    static int ncmp(const wchar_t* a, const wchar_t* b, size_t n) { return wcsncmp(a, b, n); }
    static int nicmp(const wchar_t* a, const wchar_t* b, size_t n) { return _wcsnicmp(a, b, n); }
    static const wchar_t* find(const wchar_t* s, const wchar_t* t) { return wcsstr(s, t); }
    static const wchar_t* pbrk(const wchar_t* s, const wchar_t* set) { return wcspbrk(s, set); }
    static bool in(const wchar_t* set, wchar_t c) { return c && wcschr(set, c); }
    static void lower(wchar_t* s) { _wcslwr(s); }
    static void upper(wchar_t* s) { _wcsupr(s); }
    static bool space(wchar_t c) { return iswspace(c) != 0; }
    static int vformat(wchar_t* out, size_t count, const wchar_t* format, va_list args)
    {
        return zor::counted_vswprintf(out, count, format, args);
    }
    static void from_int(int32_t v, wchar_t* out) { _itow(v, out, 10); }
    static void from_long(int32_t v, wchar_t* out) { _ltow(v, out, 10); }
    static void from_uint(uint32_t v, wchar_t* out) { _ui64tow(v, out, 10); }
    static void from_ulong(uint32_t v, wchar_t* out) { _ultow(v, out, 10); }
    static const wchar_t* fixed() { return L"%f"; }
    static const wchar_t* fixed_precision() { return L"%0.*f"; }
};

// Bytes go to the classification functions as unsigned values: a negative
// char is no valid argument to them.
template <>
struct Units<char> {
    static size_t len(const char* s) { return strlen(s); }
    static int cmp(const char* a, const char* b) { return strcmp(a, b); }
    static int icmp(const char* a, const char* b) { return _stricmp(a, b); }
    static int ncmp(const char* a, const char* b, size_t n) { return strncmp(a, b, n); }
    static int nicmp(const char* a, const char* b, size_t n) { return _strnicmp(a, b, n); }
    static const char* find(const char* s, const char* t) { return strstr(s, t); }
    static const char* pbrk(const char* s, const char* set) { return strpbrk(s, set); }
    static bool in(const char* set, char c) { return c && strchr(set, c); }
    static void lower(char* s) { _strlwr(s); }
    static void upper(char* s) { _strupr(s); }
    static bool space(char c) { return isspace(static_cast<unsigned char>(c)) != 0; }
    static int vformat(char* out, size_t count, const char* format, va_list args)
    {
        return zor::counted_vsprintf(out, count, format, args);
    }
    static void from_int(int32_t v, char* out) { _itoa(v, out, 10); }
    static void from_long(int32_t v, char* out) { _ltoa(v, out, 10); }
    static void from_uint(uint32_t v, char* out) { _ui64toa(v, out, 10); }
    static void from_ulong(uint32_t v, char* out) { _ultoa(v, out, 10); }
    static const char* fixed() { return "%f"; }
    static const char* fixed_precision() { return "%0.*f"; }
};

}
}
