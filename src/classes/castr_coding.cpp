// The narrow class's hexadecimal coding and message formatting.
#include "castr.h"

#include <stdarg.h>
#include <string.h>

#include <windows.h>

#include "cwstr.h"

#ifdef FormatMessage
#  undef FormatMessage
#endif

namespace zorlib {

namespace {

int hex_digit(unsigned char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    c = static_cast<unsigned char>(c & ~0x20);
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

bool skipped(unsigned char c) { return c >= 1 && c <= 0x20; }

}

const char* CAStr::FormatMessage(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    wchar_t* text = nullptr;
    DWORD n = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING, format, 0,
                             0, reinterpret_cast<wchar_t*>(&text), 0, &args);
    va_end(args);
    if (n && text)
        FromWide(text, int(n));
    else
        Clear(0);
    if (text)
        LocalFree(text);
    return GetStr();
}

CAStr& CAStr::HexEncode(int spaced)
{
    if (!length)
        return *this;
    static const char digits[] = "0123456789ABCDEF";
    uint64_t step = spaced ? 3 : 2, total = length * step;
    CAStr source(*this);
    if (source.length != length || total > INT32_MAX - 1 || !Reserve(int(total), 0))
        return *this;
    char* out = buffer;
    for (uint32_t i = 0; i < source.length; ++i) {
        unsigned char byte = static_cast<unsigned char>(source.buffer[i]);
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 15];
        if (spaced)
            *out++ = ' ';
    }
    set_length(uint32_t(total));
    return *this;
}

// The whole text is checked before the first byte is written, so that an
// error leaves it as it was; decoding then runs in place, as it never
// writes ahead of what it reads.
CAStr& CAStr::HexDecode(const char** errorPos)
{
    uint32_t end = 0;
    for (; end < length && buffer[end]; ++end) {
        unsigned char c = static_cast<unsigned char>(buffer[end]);
        if (!skipped(c) && hex_digit(c) < 0) {
            if (errorPos)
                *errorPos = buffer + end;
            return *this;
        }
    }
    if (!length)
        return *this;
    uint32_t out = 0;
    int high = -1;
    for (uint32_t i = 0; i < end; ++i) {
        unsigned char c = static_cast<unsigned char>(buffer[i]);
        if (skipped(c))
            continue;
        if (high < 0) {
            high = hex_digit(c);
            continue;
        }
        buffer[out++] = char(high << 4 | hex_digit(c));
        high = -1;
    }
    if (high >= 0)
        buffer[out++] = char(high << 4);
    set_length(out);
    return *this;
}

}
