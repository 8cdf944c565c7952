// Locale values set for a scope and put back after it, so that each test
// states the locale it relies on and leaves the prefix as it found it.
#pragma once

#include <doctest/doctest.h>

#include <locale.h>

#include <string>

#include <windows.h>

// A locale item as the user's locale gives it.
inline std::wstring locale_text(LCTYPE item)
{
    wchar_t text[100] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, item, text, 100);
    return text;
}

// One value of the user's locale.
struct LocaleSetting {
    LocaleSetting(LCTYPE item, const wchar_t* value) : item(item), old(locale_text(item))
    {
        REQUIRE(SetLocaleInfoW(LOCALE_USER_DEFAULT, item, value));
    }
    ~LocaleSetting() { SetLocaleInfoW(LOCALE_USER_DEFAULT, item, old.c_str()); }
    LocaleSetting(const LocaleSetting&) = delete;
    LCTYPE item;
    std::wstring old;
};

// The C runtime's locale.
struct RuntimeLocale {
    explicit RuntimeLocale(const wchar_t* name) : old(_wsetlocale(LC_ALL, nullptr))
    {
        REQUIRE(_wsetlocale(LC_ALL, name) != nullptr);
    }
    ~RuntimeLocale() { _wsetlocale(LC_ALL, old.c_str()); }
    RuntimeLocale(const RuntimeLocale&) = delete;
    std::wstring old;
};
