// Everything the tool prints goes out as UTF-8, whatever the console's code
// page; trace lines may be coloured by their level letter.
#pragma once

#include <string>

#include "console_text.h"

// Colour is off for pipes and files unless asked for, on for a console
// unless refused: `choice` is 1 (--color), 0 (--no-color) or -1 (neither).
void set_colour(int choice);

// One line of trace text and its line end, in the colour of `letter` (a
// level letter, or 0 for no colour).
void write_line(const std::wstring& text, wchar_t letter);

// Every line of a trace record, coloured by the record's level.
struct Record;
void print_record(const Record& record);

// The system's text for an error code, without its line end.
std::wstring system_message(unsigned long code);
