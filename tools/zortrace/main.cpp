// zortrace, the trace viewer: shows, follows, listens to, counts and
// configures what the library's trace writes, using the library's own
// exports for files, dates and the registry.
#include <windows.h>

#include "commands.h"
#include "config.h"
#include "output.h"

namespace {

const int kExitUsage = 2;

} // namespace

int wmain(int argc, wchar_t** argv)
{
    SetConsoleOutputCP(CP_UTF8);
    Options options;
    std::wstring error;
    if (!parse_options(argc, argv, options, error)) {
        write_err(L"zortrace: " + error + L"\n" + kUsage);
        return kExitUsage;
    }
    if (options.help) {
        write_out(kUsage);
        return 0;
    }
    if (options.version) {
        write_version(L"zortrace");
        return 0;
    }
    set_colour(options.colour);
    switch (options.command) {
    case Command::Show: return show(options);
    case Command::Follow: return follow(options);
    case Command::Listen: return listen(options);
    case Command::Stats: return stats(options);
    case Command::Config:
        return options.sets.empty() ? show_config(options.operands[0], options.fileName)
                                    : set_config(options.operands[0], options.sets);
    case Command::None: break;
    }
    return kExitUsage;
}
