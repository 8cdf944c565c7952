// Sets one value of the user's locale for the life of the object and puts
// the old value back, so that each test states the locale it relies on.
#pragma once

#include <doctest/doctest.h>

#include <string>

#include <windows.h>

// A locale item as the user's locale gives it.
inline std::wstring locale_text(LCTYPE item)
{
    wchar_t text[100] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, item, text, 100);
    return text;
}

class LocaleSetting {
public:
    LocaleSetting(LCTYPE item, const wchar_t* value) : m_item(item), m_old(locale_text(item))
    {
        REQUIRE(SetLocaleInfoW(LOCALE_USER_DEFAULT, item, value));
    }
    ~LocaleSetting() { SetLocaleInfoW(LOCALE_USER_DEFAULT, m_item, m_old.c_str()); }
    LocaleSetting(const LocaleSetting&) = delete;
    LocaleSetting& operator=(const LocaleSetting&) = delete;

private:
    LCTYPE m_item;
    std::wstring m_old;
};
