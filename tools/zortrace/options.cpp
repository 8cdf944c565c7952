#include "options.h"

#include <wchar.h>

const wchar_t* const kUsage =
    L"usage: zortrace COMMAND [options]\n"
    L"  show PATH...      print trace files: a file, a folder (its daily files) or a\n"
    L"                    folder and stem such as logs\\app (app20261118.log, ...),\n"
    L"                    daily files in date order, dumps whole with their header\n"
    L"  follow STEM       print the newest daily file's last records, then new lines as\n"
    L"                    they are written, on into the next day's file (Ctrl+C stops)\n"
    L"  listen NAME       create the mailslot \\\\.\\mailslot\\NAME and print each message\n"
    L"  stats PATH...     lines per level and hour, tagged facilities ([net] ...),\n"
    L"                    the largest dump, each file's size against the limit\n"
    L"  config KEY        what TraceInit makes of HKEY_LOCAL_MACHINE\\KEY\n"
    L"filters of show, follow and listen:\n"
    L"  --levels LETTERS  keep these levels of ?DIWEA, e.g. EWA\n"
    L"  --since TIME      keep lines from TIME on: yyyy-MM-dd, yyyy-MM-dd HH:mm[:ss], HH:mm[:ss]\n"
    L"  --until TIME      keep lines up to the end of TIME (a day, minute or second)\n"
    L"  --grep TEXT       keep lines that hold TEXT, ignoring case\n"
    L"  lines without a readable prefix pass the level and time filters\n"
    L"follow and listen:\n"
    L"  --last N          follow: records of the newest file shown first (default 10)\n"
    L"  --count N         stop after N lines or messages\n"
    L"  --seconds N       stop after N seconds\n"
    L"stats:  --key KEY   take the size limit from this configuration (default 10000 KiB)\n"
    L"config: --file NAME the file name that the application gives TraceInit\n"
    L"        --set NAME=VALUE  write one value (may be repeated), e.g. TRACELEVEL=EWA\n"
    L"  --color, --no-color  colour lines by level (default: on a console only)\n"
    L"  -h, --help        this text\n"
    L"  --version         the version of zortrace and of the library\n"
    L"exit status: 0 done, 1 nothing matched or a file, key or mailslot failed, 2 bad command line\n";

namespace {

enum : unsigned { kShow = 1, kFollow = 2, kListen = 4, kStats = 8, kConfig = 16};

struct CommandName {
    const wchar_t* name;
    Command command;
    unsigned bit;
    size_t minOperands, maxOperands;
};
const CommandName kCommands[] = {
    {L"show", Command::Show, kShow, 1, size_t(-1)},   {L"follow", Command::Follow, kFollow, 1, 1},
    {L"listen", Command::Listen, kListen, 1, 1},      {L"stats", Command::Stats, kStats, 1, size_t(-1)},
    {L"config", Command::Config, kConfig, 1, 1},
};

bool read_count(const std::wstring& text, long& value)
{
    wchar_t* end = nullptr;
    value = wcstol(text.c_str(), &end, 10);
    return !text.empty() && *end == 0 && value >= 0 && value < 100000000;
}

// One option with a value; `error` tells what is wrong with the value.
bool take_value(const std::wstring& name, const std::wstring& value, Options& options, std::wstring& error)
{
    Filter& filter = options.filter;
    if (name == L"--levels") {
        if (!read_levels(value, filter.levels))
            error = L"--levels takes letters of ?DIWEA, not \"" + value + L"\"";
    } else if (name == L"--since" || name == L"--until") {
        TDDate start, end;
        if (!read_moment(value, start, end))
            error = name + L" takes yyyy-MM-dd, yyyy-MM-dd HH:mm[:ss] or HH:mm[:ss], not \"" + value + L"\"";
        else if (name == L"--since")
            filter.hasSince = true, filter.since = start;
        else
            filter.hasUntil = true, filter.until = end;
    } else if (name == L"--grep") {
        filter.grep = lower(value);
    } else if (name == L"--key") {
        options.key = value;
    } else if (name == L"--file") {
        options.fileName = value;
    } else if (name == L"--set") {
        options.sets.push_back(value);
    } else {
        long* target = name == L"--last" ? &options.last : name == L"--count" ? &options.count : &options.seconds;
        if (!read_count(value, *target))
            error = name + L" takes a number from 0, not \"" + value + L"\"";
    }
    return error.empty();
}

} // namespace

bool parse_options(int argc, wchar_t** argv, Options& options, std::wstring& error)
{
    static const struct {
        const wchar_t* name;
        unsigned commands;
    } kValued[] = {
        {L"--levels", kShow | kFollow | kListen}, {L"--since", kShow | kFollow | kListen},
        {L"--until", kShow | kFollow | kListen},  {L"--grep", kShow | kFollow | kListen},
        {L"--last", kFollow},                     {L"--count", kFollow | kListen},
        {L"--seconds", kFollow | kListen},        {L"--key", kStats},
        {L"--file", kConfig},                     {L"--set", kConfig},
    };
    const CommandName* command = nullptr;
    std::vector<std::pair<std::wstring, std::wstring>> valued;
    for (int i = 1; i < argc; ++i) {
        std::wstring arg = argv[i];
        if (arg == L"-h" || arg == L"--help") {
            options.help = true;
        } else if (arg == L"--version") {
            options.version = true;
        } else if (arg == L"--color" || arg == L"--no-color") {
            options.colour = arg == L"--color";
        } else if (arg.size() > 1 && arg[0] == L'-') {
            size_t equals = arg.find(L'=');
            std::wstring name = arg.substr(0, equals);
            bool known = false;
            for (const auto& option : kValued)
                known = known || name == option.name;
            if (!known) {
                error = L"unknown option " + arg;
                return false;
            }
            if (equals != std::wstring::npos) {
                valued.emplace_back(name, arg.substr(equals + 1));
            } else if (i + 1 < argc) {
                valued.emplace_back(name, argv[++i]);
            } else {
                error = name + L" needs a value";
                return false;
            }
        } else if (!command) {
            for (const CommandName& known : kCommands)
                if (arg == known.name)
                    command = &known;
            if (!command) {
                error = L"unknown command \"" + arg + L"\"";
                return false;
            }
        } else {
            options.operands.push_back(arg);
        }
    }
    if (options.help || options.version)
        return true;
    if (!command) {
        error = L"a command is needed";
        return false;
    }
    options.command = command->command;
    for (const auto& [name, value] : valued) {
        for (const auto& option : kValued)
            if (name == option.name && !(option.commands & command->bit)) {
                error = name + L" does not go with " + command->name;
                return false;
            }
        if (!take_value(name, value, options, error))
            return false;
    }
    size_t operands = options.operands.size();
    if (operands < command->minOperands || operands > command->maxOperands) {
        error = std::wstring(command->name) + (command->maxOperands == 1 ? L" takes one operand" : L" takes at least one operand");
        return false;
    }
    return true;
}
