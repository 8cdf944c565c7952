// Wide text in failure messages; units outside printable ASCII show as `?`.
#pragma once

#include <doctest/doctest.h>

#include <string>

namespace doctest {
template <>
struct StringMaker<std::wstring> {
    static String convert(const std::wstring& text)
    {
        std::string shown = "\"";
        for (wchar_t unit : text)
            shown += unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '?';
        return (shown + "\"").c_str();
    }
};
}
