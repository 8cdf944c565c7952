// The command line of the workbench.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

struct Options {
    std::wstring sheet;                    // a file, "-" for standard input, empty for the built-in sheet
    std::vector<std::wstring> expressions; // -e, in order
    bool listing = false;                  // --disasm
    bool help = false;
    bool version = false;
    uint32_t language = 1033;              // --lang en|de
    std::wstring locale;                   // --locale, empty for the user's
};

extern const wchar_t* const kUsage;
// What :help shows in an interactive session.
extern const wchar_t* const kSheetHelp;

// False with `error` set when the command line is not understood.
bool parse_options(int argc, wchar_t** argv, Options& options, std::wstring& error);
