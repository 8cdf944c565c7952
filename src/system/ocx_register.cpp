#include <wchar.h>

#include "../frame/zor_alloc.h"
#include "../frame/zor_platform.h"
#include "reg_paths.h"

using namespace zor_reg;

namespace {

// Starts the tool on one file and lets it run on its own.
ZORStatus start_tool(const wchar_t* command, const std::wstring& file)
{
    // The platform may write into the command line, so it lives in a block
    // of its own rather than in the caller's string.
    size_t units = wcslen(command) + 1 + file.size() + 1;
    auto* line = static_cast<wchar_t*>(zor_malloc(units * sizeof(wchar_t)));
    if (!line)
        return ZOR_E_OUTOFMEMORY;
    zor::counted_swprintf(line, units, L"%s %s", command, file.c_str());
    wchar_t desktop[] = L"WinSta0\\Default";
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.lpDesktop = desktop;
    start.dwFlags = STARTF_USESHOWWINDOW;
    start.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION process = {};
    ZORStatus status = 0;
    if (CreateProcessW(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                       &process)) {
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    } else {
        status = last_error_status();
    }
    zor_free(line);
    return status;
}

}

ZORStatus ZOR_OCXRegister(const ZOROCXRegisterArgs* args)
{
    wchar_t command[24];
    zor::counted_swprintf(command, 24, L"REGSVR32.EXE%s%s", args->bUnregister ? L" /u" : L"",
                          args->bSilent ? L" /s" : L"");
    for (const std::wstring& file : args->files) {
        if (ZORStatus status = start_tool(command, file))
            return status;
    }
    return 0;
}
