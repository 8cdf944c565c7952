// Compiler- and runtime-specific bits, kept in one place so that the rest of
// the library is plain C++17 for either mingw-w64 or MSVC.
#pragma once

#include <locale.h>
#include <stdarg.h>
#include <stddef.h>
#include <wchar.h>

// The Universal CRT's counted wide formatter. Declared here because mingw's
// headers only show it in UCRT mode, which this build does not define.
extern "C" int __cdecl __stdio_common_vswprintf(unsigned long long options, wchar_t* buffer,
                                                size_t count, const wchar_t* format,
                                                _locale_t locale, va_list args);
// Its narrow twin, for the same reason.
extern "C" int __cdecl __stdio_common_vsprintf(unsigned long long options, char* buffer, size_t count,
                                               const char* format, _locale_t locale, va_list args);

// Data that must lie in a fixed order in the image: both linkers sort the
// grouped sections .data$<key> by key and pack them without gaps beyond
// each object's alignment.
#if defined(_MSC_VER)
#  pragma section(".data$zor_ordered_1", read, write)
#  pragma section(".data$zor_ordered_2", read, write)
#  define ZOR_ORDERED_DATA(rank) __declspec(allocate(".data$zor_ordered_" #rank))
#else
#  define ZOR_ORDERED_DATA(rank) __attribute__((section(".data$zor_ordered_" #rank)))
#endif

#if defined(_MSC_VER)
#  define ZOR_LIKELY(x) (x)
#  define ZOR_UNLIKELY(x) (x)
#  define ZOR_NOINLINE __declspec(noinline)
#  define ZOR_FORCEINLINE __forceinline
#  define ZOR_UNREACHABLE() __assume(0)
#else
#  define ZOR_LIKELY(x) __builtin_expect(!!(x), 1)
#  define ZOR_UNLIKELY(x) __builtin_expect(!!(x), 0)
#  define ZOR_NOINLINE __attribute__((noinline))
#  define ZOR_FORCEINLINE inline __attribute__((always_inline))
#  define ZOR_UNREACHABLE() __builtin_unreachable()
#endif

namespace zor {

// Legacy null termination (no terminator when the text does not fit), legacy
// wide specifiers (%s takes wide text in a wide format), standard rounding
// (nearest on the exact binary value, ties to even).
constexpr unsigned long long kCountedPrintfOptions = 0x1 | 0x4 | 0x20;

// Writes at most `count` units; returns the length, or negative when cut.
inline int counted_vswprintf(wchar_t* buffer, size_t count, const wchar_t* format, va_list args)
{
    return __stdio_common_vswprintf(kCountedPrintfOptions, buffer, count, format, nullptr, args);
}

// The narrow twin, with the same options: `%s` takes narrow text here.
inline int counted_vsprintf(char* buffer, size_t count, const char* format, va_list args)
{
    return __stdio_common_vsprintf(kCountedPrintfOptions, buffer, count, format, nullptr, args);
}

inline int counted_swprintf(wchar_t* buffer, size_t count, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    int n = counted_vswprintf(buffer, count, format, args);
    va_end(args);
    return n;
}

}
