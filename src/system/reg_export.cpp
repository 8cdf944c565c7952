#include <stdlib.h>
#include <string.h>

#include "../frame/zor_alloc.h"
#include "../frame/zor_platform.h"
#include "reg_paths.h"

using namespace zor_reg;

namespace {

const char kHeadLine[] = "REGEDIT4\r\n\r\n";
constexpr DWORD kHeadBytes = sizeof kHeadLine - 1;
constexpr DWORD kHeadMark = 8; // "REGEDIT4"
constexpr DWORD kDataBytes = 512;
constexpr DWORD kValueNameUnits = 256;
// A text of kDataBytes in quotes, or the digits of a number.
constexpr size_t kValueTextUnits = kDataBytes / sizeof(wchar_t) + 3;
constexpr DWORD kWriteThroughNormal = FILE_FLAG_WRITE_THROUGH | FILE_ATTRIBUTE_NORMAL;

// An existing file is only added to when it is empty or already a registry
// text file: the head line would go over the first bytes of anything else,
// and a file written by the profile functions may lack the blank line behind
// the mark, so its first section starts where the head line would end.
ZORStatus write_head_line(HANDLE file, bool append)
{
    if (append) {
        char start[kHeadMark] = {};
        DWORD got = 0;
        if (!ReadFile(file, start, kHeadMark, &got, nullptr))
            return last_error_status();
        if (got == kHeadMark && memcmp(start, kHeadLine, kHeadMark) == 0)
            return 0;
        if (got != 0)
            return ZOR_E_INVALID_DATA;
    }
    DWORD written = 0;
    WriteFile(file, kHeadLine, kHeadBytes, &written, nullptr);
    return 0;
}

ZORStatus prepare_file(const wchar_t* name, const ZORRegExportArgs& args)
{
    HANDLE file = CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                              args.bAppend ? OPEN_ALWAYS : CREATE_ALWAYS, kWriteThroughNormal,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return last_error_status();
    ZORStatus status = args.bNoHeader ? 0 : write_head_line(file, args.bAppend != 0);
    if (!CloseHandle(file) && !status)
        status = last_error_status();
    return status;
}

// Texts in quotes, numbers in decimal; false for what the file cannot hold.
bool value_text(DWORD type, const uint8_t* data, DWORD size, wchar_t (&text)[kValueTextUnits])
{
    if (size == 0)
        return false;
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        int units = int(size / sizeof(wchar_t));
        zor::counted_swprintf(text, kValueTextUnits, L"\"%.*s\"", units,
                              reinterpret_cast<const wchar_t*>(data));
        return true;
    }
    if (type == REG_DWORD) {
        uint32_t number = 0;
        memcpy(&number, data, size < 4 ? size : 4);
        _ultow(number, text, 10);
        return true;
    }
    return false;
}

ZORStatus export_values(HKEY key, const wchar_t* section, const wchar_t* file)
{
    DWORD count = 0;
    LONG rc = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                               nullptr, nullptr, nullptr, nullptr);
    if (rc != ERROR_SUCCESS)
        return status_of(rc);
    auto* data = static_cast<uint8_t*>(zor_malloc(kDataBytes));
    if (!data)
        return ZOR_E_OUTOFMEMORY;
    ZORStatus status = 0;
    for (DWORD index = 0; index < count && !status; ++index) {
        wchar_t name[kValueNameUnits];
        DWORD nameLen = kValueNameUnits, type = 0, size = kDataBytes;
        // A value or a name too long for its area ends this key's values
        // without a failure; the subkeys are still exported.
        if (RegEnumValueW(key, index, name, &nameLen, nullptr, &type, data, &size) !=
            ERROR_SUCCESS)
            break;
        wchar_t text[kValueTextUnits], quotedName[kValueNameUnits + 2];
        if (!value_text(type, data, size, text))
            continue;
        zor::counted_swprintf(quotedName, kValueNameUnits + 2, L"\"%s\"", name);
        if (!WritePrivateProfileStringW(section, quotedName, text, file))
            status = last_error_status();
    }
    zor_free(data);
    return status;
}

ZORStatus export_key(HKEY parent, const wchar_t* parentPath, int parentLen, const wchar_t* name,
                     const wchar_t* file, bool recursive);

ZORStatus export_subkeys(HKEY key, const wchar_t* path, const wchar_t* file)
{
    DWORD count = 0;
    LONG rc = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr);
    ZORStatus status = status_of(rc);
    for (DWORD index = 0; index < count && !status; ++index) {
        wchar_t name[kSubkeyNameUnits];
        rc = RegEnumKeyW(key, index, name, kSubkeyNameUnits);
        status = rc ? status_of(rc)
                    : export_key(key, path, int(wcslen(path)), name, file, true);
    }
    return status;
}

ZORStatus export_key(HKEY parent, const wchar_t* parentPath, int parentLen, const wchar_t* name,
                     const wchar_t* file, bool recursive)
{
    HKEY key = nullptr;
    LONG rc = RegOpenKeyExW(parent, name, 0, KEY_READ, &key);
    if (rc != ERROR_SUCCESS)
        return status_of(rc);
    wchar_t path[kPathUnits];
    ZORStatus status = join_path(path, parentPath, parentLen, name)
                           ? export_values(key, path, file)
                           : ZOR_E_INVALIDARG;
    if (!status && recursive)
        status = export_subkeys(key, path, file);
    rc = RegCloseKey(key);
    return status ? status : status_of(rc);
}

}

ZORStatus ZOR_RegExport(const ZORRegExportArgs* args)
{
    KeyPath key;
    wchar_t file[kFileNameUnits];
    if (!split_key_path(args->pszKey, &key) || !full_file_name(args->pszFile, file))
        return ZOR_E_INVALIDARG;
    ZORStatus status = prepare_file(file, *args);
    if (status)
        return status;
    return export_key(key.root, key.rootName, key.rootLen, key.subkey, file,
                      args->bRecursive != 0);
}
