#include "options.h"

const wchar_t* const kUsage =
    L"usage: zorcalc [options] [SHEET | -]\n"
    L"  SHEET          read a sheet and print its print lines; without SHEET and -e\n"
    L"                 the built-in invoice sheet runs\n"
    L"  -              read sheet lines from standard input and answer each at once\n"
    L"  -e LINE        evaluate a formula (or take any sheet line) after the sheet and\n"
    L"                 print its value and type; may be given more than once\n"
    L"  --disasm       list the instructions compiled for every formula and value\n"
    L"  --lang en|de   language of the library's messages (default en)\n"
    L"  --locale NAME  runtime locale for decimal point and group separator\n"
    L"                 (default: the user's locale)\n"
    L"  -h, --help     this text\n"
    L"  --version      the version of zorcalc and of the library it was built with\n"
    L"exit status: 0 done, 1 errors in the sheet or its runs, 2 bad command line or unreadable file\n"
    L"In an interactive session (-) :help shows the sheet lines and :quit ends.\n";

const wchar_t* const kSheetHelp =
    L"var TYPE NAME [= VALUE]     a variable (types: char long ulong double bitfield string date)\n"
    L"const TYPE NAME = VALUE     a constant\n"
    L"datepicture \"PICTURE\"       the picture of dates read and printed from here on\n"
    L"print \"MASK\" VALUE, ...     a print line: # $ * number pictures, /  / ^ & texts\n"
    L"# text                      a comment\n"
    L"anything else               a formula, e.g. net = qty * price; its value and type are shown\n"
    L"functions: today() days(n) months(n) round(x, places) len(s) picture(x, \"#,###.##\")\n"
    L":help                       this text\n"
    L":quit                       end the session (so does the end of the input)\n";

bool parse_options(int argc, wchar_t** argv, Options& options, std::wstring& error)
{
    for (int i = 1; i < argc; ++i) {
        std::wstring arg = argv[i];
        bool hasValue = i + 1 < argc;
        if (arg == L"-h" || arg == L"--help") {
            options.help = true;
        } else if (arg == L"--version") {
            options.version = true;
        } else if (arg == L"--disasm") {
            options.listing = true;
        } else if (arg == L"-e" || arg == L"--lang" || arg == L"--locale") {
            if (!hasValue) {
                error = arg + L" needs a value";
                return false;
            }
            std::wstring value = argv[++i];
            if (arg == L"-e") {
                options.expressions.push_back(value);
            } else if (arg == L"--locale") {
                options.locale = value;
            } else if (value == L"en" || value == L"de") {
                options.language = value == L"en" ? 1033 : 1031;
            } else {
                error = L"--lang takes en or de, not \"" + value + L"\"";
                return false;
            }
        } else if (arg.size() > 1 && arg[0] == L'-') {
            error = L"unknown option \"" + arg + L"\"";
            return false;
        } else if (!options.sheet.empty()) {
            error = L"only one sheet can be read, \"" + options.sheet + L"\" and \"" + arg + L"\" were given";
            return false;
        } else {
            options.sheet = arg;
        }
    }
    return true;
}
