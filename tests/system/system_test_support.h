// Files as bytes and registry trees as one text, a line per key and value,
// so that a case states what it expects in a table and a difference shows.
#pragma once

#include <doctest/doctest.h>

#include <stdio.h>

#include <map>
#include <string>

#include "wide_text.h"
#include "zor_reg.h"

inline void write_file(const std::wstring& name, const std::string& bytes)
{
    FILE* file = _wfopen(name.c_str(), L"wb");
    REQUIRE(file);
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

inline std::string read_file(const std::wstring& name)
{
    std::string bytes;
    if (FILE* file = _wfopen(name.c_str(), L"rb")) {
        for (int c; (c = fgetc(file)) != EOF;)
            bytes += char(c);
        fclose(file);
    }
    return bytes;
}

inline std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

// "path = key" and "path|name = type:data", paths relative to the tree's
// key; texts as text ("(open)" when unterminated), other data in hex.
using RegModel = std::map<std::wstring, std::wstring>;

inline std::wstring describe_value(uint32_t type, const void* data, uint32_t size)
{
    std::wstring shown = std::to_wstring(type) + L":";
    if ((type == REG_SZ || type == REG_EXPAND_SZ) && size % 2 == 0 && size > 0) {
        std::wstring text(static_cast<const wchar_t*>(data), size / 2);
        return shown + (text.back() ? text + L"(open)" : text.substr(0, text.size() - 1));
    }
    for (uint32_t i = 0; i < size; ++i)
        shown += {L"0123456789abcdef"[static_cast<const uint8_t*>(data)[i] >> 4],
                  L"0123456789abcdef"[static_cast<const uint8_t*>(data)[i] & 15]};
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
