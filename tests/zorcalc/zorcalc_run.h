// Starts the real zorcalc.exe, as a user's shell would, and collects what it
// prints on both channels.
#pragma once

#include <string>
#include <vector>

#include "child_process.h"

// `args` go to the program as they are; `input` is its standard input, which
// is closed behind it.
Outcome run_zorcalc(const std::vector<std::wstring>& args, const std::string& input = "");

// A sheet of tests/zorcalc/sheets.
std::wstring sheet(const wchar_t* name);

// A sheet written to the temporary directory for one test, removed after it.
struct TempSheet {
    explicit TempSheet(const std::string& bytes);
    ~TempSheet();
    std::wstring path;
};

// Text as the program prints it: UTF-8.
std::string utf8(const std::wstring& text);
