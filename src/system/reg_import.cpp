#include <stdlib.h>
#include <wchar.h>

#include "../frame/zor_alloc.h"
#include "reg_paths.h"

using namespace zor_reg;

namespace {

constexpr DWORD kFirstListUnits = 4096;

// A list of the profile functions: terminated entries one after the other.
struct ProfileList {
    wchar_t* area = nullptr;
    DWORD units = 0; // as reported, without the final terminator
    ~ProfileList() { zor_free(area); }
};

// The profile readers report a cut list as its size - 2 (and never more), so
// that result is taken as cut and read again into twice the area.
template <class Read>
ZORStatus read_list(ProfileList& list, Read read)
{
    for (DWORD size = kFirstListUnits;; size *= 2) {
        zor_free(list.area);
        list.area = size < MAXDWORD / 4
                        ? static_cast<wchar_t*>(zor_malloc(size * sizeof(wchar_t)))
                        : nullptr;
        if (!list.area)
            return ZOR_E_OUTOFMEMORY;
        list.units = read(list.area, size);
        if (list.units < size - 2)
            return 0;
    }
}

// Hands each entry to `step` until one fails; a step may cut its entry.
template <class Step>
ZORStatus for_each_entry(const ProfileList& list, Step step)
{
    for (wchar_t* entry = list.area; entry < list.area + list.units && *entry;) {
        wchar_t* next = entry + wcslen(entry) + 1;
        if (ZORStatus status = step(entry))
            return status;
        entry = next;
    }
    return 0;
}

// One entry "name=value", taken apart in place.
ZORStatus import_value(HKEY key, wchar_t* entry)
{
    wchar_t* equals = wcschr(entry, L'=');
    if (!equals)
        return ZOR_E_INVALIDARG;
    *equals = 0;
    wchar_t* name = entry;
    if (wchar_t* quote = wcschr(entry, L'"')) {
        name = quote + 1;
        if (wchar_t* end = wcschr(name, L'"'))
            *end = 0;
    }
    wchar_t* value = equals + 1;
    wchar_t* first = wcschr(value, L'"');
    LONG rc;
    if (first) {
        // The last quote ends the text, so quotes inside it come back.
        wchar_t* last = wcsrchr(value, L'"');
        if (last == first)
            return ZOR_E_INVALIDARG;
        *last = 0;
        DWORD bytes = DWORD(last - first) * sizeof(wchar_t);
        rc = RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(first + 1), bytes);
    } else {
        uint32_t number = static_cast<uint32_t>(_wtoi64(value));
        rc = RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                            sizeof number);
    }
    return status_of(rc);
}

ZORStatus import_section(const wchar_t* section, const wchar_t* file)
{
    KeyPath path;
    if (wcslen(section) >= kPathUnits || !split_key_path(section, &path))
        return ZOR_E_INVALIDARG;
    HKEY key = nullptr;
    LONG rc = CreateRegKey(path.root, path.subkey, KEY_WRITE, &key);
    if (rc != ERROR_SUCCESS)
        return status_of(rc);
    ProfileList entries;
    ZORStatus status = read_list(entries, [&](wchar_t* area, DWORD size) {
        return GetPrivateProfileSectionW(section, area, size, file);
    });
    if (!status)
        status = for_each_entry(entries, [&](wchar_t* entry) { return import_value(key, entry); });
    rc = RegCloseKey(key);
    return status ? status : status_of(rc);
}

ZORStatus import_file(const std::wstring& name)
{
    wchar_t file[kFileNameUnits];
    if (name.size() >= kFileNameUnits || !full_file_name(name.c_str(), file))
        return ZOR_E_INVALIDARG;
    // The profile readers take a missing file for an empty one.
    if (GetFileAttributesW(file) == INVALID_FILE_ATTRIBUTES)
        return last_error_status();
    ProfileList sections;
    ZORStatus status = read_list(sections, [&](wchar_t* area, DWORD size) {
        return GetPrivateProfileSectionNamesW(area, size, file);
    });
    if (status)
        return status;
    return for_each_entry(sections,
                          [&](const wchar_t* section) { return import_section(section, file); });
}

}

ZORStatus ZOR_RegImport(const std::vector<std::wstring>* files)
{
    for (const std::wstring& name : *files) {
        ZORStatus status = import_file(name);
        if (status)
            return status;
    }
    return 0;
}
