#include "reg_paths.h"

#include <wchar.h>

#include "../frame/zor_platform.h"

namespace zor_reg {

namespace {

struct Root {
    const wchar_t* name;
    HKEY key;
};

const Root kRoots[] = {
    {L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {L"HKEY_USERS", HKEY_USERS},
    {L"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
    {L"HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA},
};

bool fits(int written, size_t units)
{
    return written >= 0 && size_t(written) < units;
}

}

bool split_key_path(const wchar_t* path, KeyPath* out)
{
    const wchar_t* backslash = wcschr(path, L'\\');
    if (!backslash)
        return false;
    size_t len = size_t(backslash - path);
    for (const Root& root : kRoots) {
        if (wcslen(root.name) == len && _wcsnicmp(path, root.name, len) == 0) {
            *out = {root.key, path, int(len), backslash + 1};
            return true;
        }
    }
    return false;
}

bool join_path(wchar_t (&path)[kPathUnits], const wchar_t* parent, int parentLen,
               const wchar_t* name)
{
    if (parentLen > 0 && parent[parentLen - 1] == L'\\')
        --parentLen;
    return fits(zor::counted_swprintf(path, kPathUnits, L"%.*s\\%s", parentLen, parent, name),
                kPathUnits);
}

bool full_file_name(const wchar_t* name, wchar_t (&area)[kFileNameUnits])
{
    DWORD len = GetFullPathNameW(name, kFileNameUnits, area, nullptr);
    return len > 0 && len < kFileNameUnits;
}

ZORStatus last_error_status()
{
    DWORD error = GetLastError();
    return ZOR_STATUS_FROM_WIN32(error ? error : ERROR_GEN_FAILURE);
}

}
