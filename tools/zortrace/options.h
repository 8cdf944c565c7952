// The command line: a command, its operands and the options that it takes.
#pragma once

#include <string>
#include <vector>

#include "filter.h"

enum class Command { None, Show, Follow, Listen, Stats, Config };

struct Options {
    Command command = Command::None;
    std::vector<std::wstring> operands;
    Filter filter;
    int colour = -1;                  // 1 --color, 0 --no-color, -1 as the output is
    long last = 10;                   // follow: records of the newest file shown first
    long count = 0;                   // follow, listen: stop after this many records; 0 never
    long seconds = 0;                 // follow, listen: stop after this long; 0 never
    std::wstring key;                 // stats: the configuration whose size limit applies
    std::wstring fileName;            // config: the file name that the application passes
    std::vector<std::wstring> sets;   // config: NAME=VALUE, in order
    bool help = false;
    bool version = false;
};

extern const wchar_t* const kUsage;

// False with `error` set when the command line is not understood.
bool parse_options(int argc, wchar_t** argv, Options& options, std::wstring& error);
