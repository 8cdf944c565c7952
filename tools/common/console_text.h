// What the tools print goes out as UTF-8, whatever the console's code page.
#pragma once

#include <string>

#include <windows.h>

std::string to_utf8(const wchar_t* text, size_t length);
inline std::string to_utf8(const std::wstring& text) { return to_utf8(text.data(), text.size()); }

// Writes all of `bytes` to a standard handle (STD_OUTPUT_HANDLE, ...).
void write_bytes(DWORD which, const std::string& bytes);

void write_out(const std::wstring& text);
void write_err(const std::wstring& text);

// "<tool> <version>" and a line end, for --version.
void write_version(const wchar_t* tool);
