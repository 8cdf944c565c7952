// Shared by the FM tests: the two locales and a guarded print.
#pragma once

#include <doctest/doctest.h>

#include <wchar.h>

#include <string>

#include "locale_scope.h"
#include "wide_text.h"
#include "zor_fm.h"

// Point `.` and separator `,`, as the picture examples assume.
constexpr const wchar_t* kEnglishLocale = L"English_United States.1252";
// Point `,` and separator `.`.
constexpr const wchar_t* kGermanLocale = L"German_Germany.1252";

constexpr wchar_t kGuard = 0xFDFD;

// Prints through a buffer of guard units and checks that nothing lands
// behind the reported count; FMFormatDouble writes no terminator.
inline std::wstring print(const wchar_t* picture, double value, const wchar_t* format = nullptr,
                          int32_t* complete = nullptr)
{
    wchar_t buffer[64];
    wmemset(buffer, kGuard, 64);
    int32_t n = FMFormatDouble(format, picture, static_cast<int32_t>(wcslen(picture)), value,
                               buffer, complete);
    REQUIRE((n >= 0 && n < 64));
    int32_t touched = 64;
    while (touched > 0 && buffer[touched - 1] == kGuard)
        --touched;
    CHECK(touched <= n);
    return std::wstring(buffer, static_cast<size_t>(n));
}
