#include <string.h>

#include "zor_reg.h"

namespace {

int32_t query_number(HKEY key, const wchar_t* name, uint32_t* value, uint32_t defaultValue)
{
    // Zeroed, so that fewer than 4 stored bytes read as a defined number.
    uint8_t area[4] = {};
    DWORD size = sizeof area;
    DWORD type = 0;
    LONG rc = RegQueryValueExW(key, name, nullptr, &type, area, &size);
    if (rc == ERROR_SUCCESS)
        *value = uint32_t(area[0]) | uint32_t(area[1]) << 8 | uint32_t(area[2]) << 16 |
                 uint32_t(area[3]) << 24;
    else
        *value = defaultValue;
    return rc;
}

}

int32_t OpenRegKey(HKEY key, const wchar_t* subKey, uint32_t access, HKEY* result)
{
    return RegOpenKeyExW(key, subKey, 0, access, result);
}

int32_t CreateRegKey(HKEY key, const wchar_t* subKey, uint32_t access, HKEY* result)
{
    wchar_t noClass[] = L"";
    return RegCreateKeyExW(key, subKey, 0, noClass, 0, access, nullptr, result, nullptr);
}

int32_t CloseRegKey(HKEY key)
{
    return RegCloseKey(key);
}

int32_t DeleteRegKey(HKEY key, const wchar_t* subKey)
{
    return RegDeleteKeyW(key, subKey);
}

int32_t EnumRegKey(HKEY key, uint32_t index, wchar_t* name, uint32_t* nameLen)
{
    DWORD len = *nameLen;
    LONG rc = RegEnumKeyExW(key, index, name, &len, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_SUCCESS) {
        *nameLen = len;
        name[len] = 0;
    }
    return rc;
}

int32_t EnumRegValue(HKEY key, uint32_t index, wchar_t* name, uint32_t* nameLen, uint32_t* type,
                     uint8_t* data, uint32_t* dataLen)
{
    DWORD len = *nameLen;
    DWORD storedType = 0;
    DWORD bytes = dataLen ? *dataLen : 0;
    LONG rc = RegEnumValueW(key, index, name, &len, nullptr, type ? &storedType : nullptr, data,
                            dataLen ? &bytes : nullptr);
    if (rc != ERROR_SUCCESS)
        return rc;
    *nameLen = len;
    name[len] = 0;
    if (type)
        *type = storedType;
    if (dataLen)
        *dataLen = bytes;
    if (data && dataLen)
        data[bytes] = 0;
    return rc;
}

int32_t QueryRegEntryBool(HKEY key, const wchar_t* name, uint32_t* value, uint32_t defaultValue)
{
    return query_number(key, name, value, defaultValue);
}

int32_t QueryRegEntryDWord(HKEY key, const wchar_t* name, uint32_t* value, uint32_t defaultValue)
{
    return query_number(key, name, value, defaultValue);
}

int32_t QueryRegEntryLong(HKEY key, const wchar_t* name, uint32_t* value, uint32_t defaultValue)
{
    return query_number(key, name, value, defaultValue);
}

int32_t QueryRegEntryString(HKEY key, const wchar_t* name, wchar_t* data, uint32_t* dataLen,
                            const wchar_t* defaultValue)
{
    uint32_t capacity = *dataLen;
    DWORD bytes = capacity * sizeof(wchar_t);
    DWORD type = 0;
    LONG rc = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &bytes);
    if (rc == ERROR_SUCCESS) {
        uint32_t units = bytes / sizeof(wchar_t);
        bool terminated = units > 0 && data[units - 1] == 0;
        if (terminated || units < capacity) {
            // An odd trailing byte is dropped with the added terminator.
            if (!terminated)
                data[units++] = 0;
            *dataLen = units;
            return rc;
        }
        // No room for the terminator the caller relies on: the same answer as
        // a text one unit too long.
        rc = ERROR_MORE_DATA;
    }
    wcscpy(data, defaultValue);
    *dataLen = static_cast<uint32_t>(wcslen(defaultValue) + 1);
    return rc;
}
