// One line of a sheet, taken apart. The reader knows the line kinds and
// their shape; formulas and values stay text for the engine to compile.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

// Longer lines are refused: the engine's scanner is sized for this many units.
const size_t kMaxLineLength = 1000;

struct SheetItem {
    std::wstring text;
    size_t start; // unit index in the line
};

struct SheetLine {
    enum Kind { Nothing, Declaration, DatePicture, Print, Formula };
    Kind kind = Nothing;

    // Declaration: "var" or "const", a type, a name, and maybe "= value".
    bool constant = false;
    uint32_t type = 0;
    SheetItem name;
    bool hasValue = false;
    SheetItem value;

    // DatePicture: the picture; Print: the mask, untranslated, and its items.
    SheetItem text;
    std::vector<SheetItem> items;

    // Formula: the whole formula, from its first non-blank unit.
    SheetItem formula;
};

struct LineError {
    size_t start;
    size_t length;
    std::wstring message;
};

// A double-quoted text at `start`: its inner text as written (escapes kept)
// and the index behind the closing quote. False if it is not closed.
bool read_quoted(const std::wstring& line, size_t start, std::wstring& inner, size_t& end);
// Escapes of a quoted text resolved: a backslash keeps the unit behind it.
std::wstring unescape(const std::wstring& inner);

bool parse_sheet_line(const std::wstring& line, SheetLine& out, LineError& error);
