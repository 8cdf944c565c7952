// UTF-8 on both sides of the workbench: sheets and standard input are read
// as UTF-8 lines, and everything it prints goes out as UTF-8, whatever the
// console's code page is.
#pragma once

#include <string>

#include <windows.h>

#include "console_text.h"

// Reads lines from a file or pipe as they arrive, so that a piped session
// answers each line before the next one is typed. Input is UTF-8, with or
// without a byte order mark, or UTF-16 of either order with its mark.
class LineReader {
public:
    explicit LineReader(HANDLE handle) : handle_(handle) {}

    // False at the end of the input. `badEncoding` tells that the line was
    // not valid UTF-8; `text` then holds what could be made of it.
    bool next(std::wstring& text, bool& badEncoding);

private:
    enum Utf16 { None, LittleEndian, BigEndian };

    bool fill();
    bool read_console(std::string& bytes);
    void take_utf16_mark(std::string& bytes);
    std::string utf16_to_utf8(const std::string& bytes);

    HANDLE handle_;
    std::string pending_;
    size_t used_ = 0;
    bool ended_ = false;
    bool first_ = true;
    Utf16 utf16_ = None;
    std::string carry_; // UTF-16 bytes not yet converted
};
