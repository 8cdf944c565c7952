// Shared by the FM tests: the locales they print in and a guarded print.
#pragma once

#include <doctest/doctest.h>

#include <wchar.h>

#include <string>

#include "locale_scope.h"
#include "wide_text.h"
#include "zor_fm.h"

constexpr const wchar_t* kEnglishLocale = L"English_United States.1252";  // point `.`, separator `,`
constexpr const wchar_t* kGermanLocale = L"German_Germany.1252";          // point `,`, separator `.`
constexpr wchar_t kGuard = 0xFDFD;

// FMFormatDouble writes no terminator and nothing behind the reported count.
inline std::wstring print(const wchar_t* picture, double value, const wchar_t* format = nullptr,
                          int32_t* complete = nullptr)
{
    wchar_t buffer[64];
    wmemset(buffer, kGuard, 64);
    int32_t n = FMFormatDouble(format, picture, int32_t(wcslen(picture)), value, buffer, complete);
    REQUIRE((n >= 0 && n < 64));
    for (int32_t i = n; i < 64; ++i)
        REQUIRE(buffer[i] == kGuard);
    return std::wstring(buffer, size_t(n));
}
