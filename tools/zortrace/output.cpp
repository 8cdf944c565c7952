#include "output.h"

#include <windows.h>

#include "trace_line.h"

namespace {

enum class Colour { None, Escapes, Console };
Colour g_colour = Colour::None;
WORD g_plain = FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE;

struct LevelColour {
    wchar_t letter;
    const char* escape;
    WORD attributes;
};
const LevelColour kColours[] = {
    {L'?', "\x1b[35m", FOREGROUND_RED | FOREGROUND_BLUE},
    {L'D', "\x1b[90m", FOREGROUND_INTENSITY},
    {L'W', "\x1b[33m", FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_INTENSITY},
    {L'E', "\x1b[31m", FOREGROUND_RED | FOREGROUND_INTENSITY},
    {L'A', "\x1b[36m", FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY},
};

const LevelColour* colour_of(wchar_t letter)
{
    for (const LevelColour& colour : kColours)
        if (colour.letter == letter)
            return &colour;
    return nullptr;
}

} // namespace

void set_colour(int choice)
{
    HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    bool console = GetConsoleMode(out, &mode) != 0;
    if (choice == 0 || (choice < 0 && !console))
        return;
    g_colour = Colour::Escapes;
    // Consoles that don't understand escapes get their text attributes set
    // instead; the attributes in force at the start are restored after each
    // coloured line.
    if (console && !SetConsoleMode(out, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING)) {
        CONSOLE_SCREEN_BUFFER_INFO info;
        if (GetConsoleScreenBufferInfo(out, &info))
            g_plain = info.wAttributes;
        g_colour = Colour::Console;
    }
}

void write_line(const std::wstring& text, wchar_t letter)
{
    const LevelColour* colour = g_colour == Colour::None ? nullptr : colour_of(letter);
    if (!colour) {
        write_out(text + L"\n");
        return;
    }
    if (g_colour == Colour::Escapes) {
        write_bytes(STD_OUTPUT_HANDLE, colour->escape + to_utf8(text) + "\x1b[0m\n");
        return;
    }
    HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
    SetConsoleTextAttribute(out, colour->attributes);
    write_out(text);
    SetConsoleTextAttribute(out, g_plain);
    write_out(L"\n");
}

std::wstring system_message(unsigned long code)
{
    wchar_t* text = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                   nullptr, DWORD(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring message = text ? text : L"";
    LocalFree(text);
    while (!message.empty() && wcschr(L"\r\n. ", message.back()))
        message.pop_back();
    return message.empty() ? L"system error " + std::to_wstring(code) : message;
}

void print_record(const Record& record)
{
    for (const std::wstring& line : record.lines)
        write_line(line, record.stamped ? record.stamp.letter : 0);
}
