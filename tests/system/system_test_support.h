// Registry trees as one text, a line per key and value, so that a case
// states what it expects in a table and a difference shows.
#pragma once

#include <doctest/doctest.h>

#include <map>
#include <string>

#include "private_key.h"
#include "temp_dir.h"
#include "wide_text.h"
#include "zor_reg.h"

inline std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

inline std::wstring widen(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

// A private key under HKEY_CURRENT_USER as the text files name it.
inline std::string hkcu(const PrivateKey& pk)
{
    return "HKEY_CURRENT_USER\\" + narrow(pk.path());
}

// A file's text with each "@" standing for a private key's path.
inline std::string with_key(const std::string& text, const std::string& path)
{
    std::string out;
    for (char c : text)
        out += c == '@' ? path : std::string(1, c);
    return out;
}

// "path = key" and "path|name = type:data", paths relative to the tree's
// key; texts as text ("(open)" when unterminated), other data in hex.
using RegModel = std::map<std::wstring, std::wstring>;

inline std::wstring describe_value(uint32_t type, const void* data, uint32_t size)
{
    std::wstring shown = std::to_wstring(type) + L":";
    auto bytes = static_cast<const uint8_t*>(data);
    if ((type == REG_SZ || type == REG_EXPAND_SZ) && size % 2 == 0 && size > 0) {
        std::wstring text(static_cast<const wchar_t*>(data), size / 2);
        return shown + (text.back() ? text + L"(open)" : text.substr(0, text.size() - 1));
    }
    for (uint32_t i = 0; i < size; ++i)
        shown += {L"0123456789abcdef"[bytes[i] >> 4], L"0123456789abcdef"[bytes[i] & 15]};
    return shown;
}

inline std::wstring shown(const RegModel& model)
{
    std::wstring text;
    for (const auto& entry : model)
        text += entry.first + L" = " + entry.second + L"\n";
    return text;
}

// Walks the tree through the library's own wrappers; a missing key adds
// no line.
inline void record_tree(HKEY parent, const std::wstring& path, RegModel& model,
                        const std::wstring& relative = L"")
{
    HKEY key = nullptr;
    if (OpenRegKey(parent, path.c_str(), KEY_READ, &key) != 0)
        return;
    model[relative] = L"key";
    wchar_t name[256];
    uint8_t data[4097];
    for (uint32_t i = 0, len = 256, type = 0, size = 4096;
         EnumRegValue(key, i, name, &len, &type, data, &size) == 0; ++i, len = 256, size = 4096)
        model[relative + L"|" + name] = describe_value(type, data, size);
    for (uint32_t i = 0, len = 256; EnumRegKey(key, i, name, &len) == 0; ++i, len = 256)
        record_tree(key, name, model, relative + L"\\" + name);
    CloseRegKey(key);
}

inline std::wstring tree_of(HKEY parent, const std::wstring& path)
{
    RegModel model;
    record_tree(parent, path, model);
    return shown(model);
}
