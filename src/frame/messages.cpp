#include "zor_frame.h"

#include "module.h"
#include "zor_platform.h"

namespace {
// 0xFF: maximum width mask, so that the formatter makes no line breaks of
// its own.
constexpr DWORD kFromModuleAndSystem = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM | 0xFF;
constexpr DWORD kFromSystem = FORMAT_MESSAGE_FROM_SYSTEM | 0xFF;

// With the width mask the formatter turns the CR LF that closes every message
// into a space instead of dropping it; the caller is to get the bare text.
void trim_line_break(wchar_t* buffer, DWORD length)
{
    while (length > 0 && (buffer[length - 1] == L' ' || buffer[length - 1] == L'\r' ||
                          buffer[length - 1] == L'\n'))
        buffer[--length] = 0;
}
}

uint32_t ZORBaseFormatMessageVA(uint32_t code, uint32_t language, wchar_t* buffer,
                                uint32_t bufferLen, va_list args)
{
    DWORD length = FormatMessageW(kFromModuleAndSystem, g_zorModule, code, language, buffer,
                                  bufferLen, &args);
    if (!length)
        length = FormatMessageW(kFromSystem, nullptr, code, language, buffer, bufferLen, &args);
    if (length) {
        trim_line_break(buffer, length);
        return 0;
    }
    zor::counted_swprintf(buffer, bufferLen, L"Unknown Error Code: %08lX", (unsigned long)code);
    buffer[bufferLen - 1] = 0;
    return 0;
}

uint32_t ZORBaseFormatMessage(uint32_t code, uint32_t language, wchar_t* buffer,
                              uint32_t bufferLen, ...)
{
    va_list args;
    va_start(args, bufferLen);
    ZORBaseFormatMessageVA(code, language, buffer, bufferLen, args);
    va_end(args);
    return 0;
}
