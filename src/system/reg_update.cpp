#include <stdio.h>
#include <wchar.h>

#include "reg_paths.h"

using namespace zor_reg;

namespace {

// fgetws hands a longer line over in pieces of this size, terminator included.
constexpr int kLineUnits = 1000;
// A name side, quotes included, and its terminator.
constexpr size_t kNameUnits = 100;
constexpr DWORD kAllAccess = 0xF003F;

// The current key path, behind the root: SOFTWARE\...
struct UpdateWalk {
    wchar_t keyPath[kPathUnits] = {};
};

// "[root\SOFTWARE\path]" with its line feed.
int32_t apply_key_line(UpdateWalk& walk, wchar_t* line, size_t len)
{
    line[len - 2] = 0;
    wchar_t* path = wcschr(line, L'\\');
    wchar_t* subkey = path ? wcschr(path + 1, L'\\') : nullptr;
    if (!subkey || wcslen(path + 1) >= kPathUnits)
        return ERROR_INVALID_DATA;
    wcscpy(walk.keyPath, path + 1);
    HKEY software = nullptr, created = nullptr;
    LONG rc = RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_WRITE, &software);
    if (rc != ERROR_SUCCESS)
        return rc;
    rc = CreateRegKey(software, subkey + 1, kAllAccess, &created);
    if (rc == ERROR_SUCCESS)
        RegCloseKey(created);
    RegCloseKey(software);
    return rc;
}

// Cuts the first and the last unit, taken to be quotes; false when there
// are not two units to cut.
bool strip_quotes(wchar_t*& text)
{
    size_t len = wcslen(text);
    if (len < 2)
        return false;
    text[len - 1] = 0;
    ++text;
    return true;
}

// "\"name\"=\"text\"" with its line feed.
int32_t apply_value_line(const UpdateWalk& walk, wchar_t* line, size_t len)
{
    line[len - 1] = 0;
    wchar_t* equals = wcschr(line, L'=');
    if (!walk.keyPath[0] || !equals || size_t(equals - line) >= kNameUnits)
        return ERROR_INVALID_DATA;
    *equals = 0;
    wchar_t *name = line, *text = equals + 1;
    if (!strip_quotes(name) || !strip_quotes(text))
        return ERROR_INVALID_DATA;
    return UpdateRegistry(walk.keyPath, name, text);
}

// A piece without its line feed is a whole line only at the end of the file.
bool line_is_whole(FILE* file, const wchar_t* line, size_t len)
{
    if (line[len - 1] == L'\n')
        return true;
    wint_t next = fgetwc(file);
    if (next == WEOF)
        return true;
    ungetwc(next, file);
    return false;
}

int32_t apply_lines(FILE* file)
{
    UpdateWalk walk;
    wchar_t line[kLineUnits];
    while (fgetws(line, kLineUnits, file)) {
        // A line that starts with a zero unit reads as empty.
        size_t len = wcslen(line);
        if (len == 0)
            continue;
        if (!line_is_whole(file, line, len))
            return ERROR_INVALID_DATA;
        if (wcsncmp(line, L"REGEDIT", 7) == 0 || len == 1)
            continue;
        int32_t rc = line[0] == L'[' ? apply_key_line(walk, line, len)
                                     : apply_value_line(walk, line, len);
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    return ERROR_SUCCESS;
}

}

int32_t UpdateRegistry(const wchar_t* subKey, const wchar_t* name, const wchar_t* value)
{
    HKEY key = nullptr;
    LONG rc = RegOpenKeyExW(HKEY_LOCAL_MACHINE, subKey, 0, KEY_WRITE, &key);
    if (rc != ERROR_SUCCESS)
        return rc;
    const wchar_t* text = value ? value : L"";
    rc = RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                        DWORD((wcslen(text) + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
    return rc;
}

int32_t UpdateRegistryWithFile(const wchar_t* fileName)
{
    FILE* file = _wfopen(fileName, L"r");
    if (!file)
        return ERROR_SUCCESS;
    int32_t rc = apply_lines(file);
    fclose(file);
    return rc;
}
