// A private registry key named with the process id, created under a root
// (HKEY_CURRENT_USER unless a case needs another) and deleted with all its
// subkeys when the scope ends.
#pragma once

#include <doctest/doctest.h>

#include <string>

#include <windows.h>

class PrivateKey {
public:
    explicit PrivateKey(HKEY root = HKEY_CURRENT_USER, const std::wstring& parent = L"Software")
        : m_root(root)
    {
        static long serial = 0;
        m_path = parent + L"\\zortest" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                 std::to_wstring(++serial);
        REQUIRE(RegCreateKeyExW(m_root, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                &m_key, nullptr) == ERROR_SUCCESS);
    }
    ~PrivateKey()
    {
        RegCloseKey(m_key);
        delete_tree(m_root, m_path);
    }
    PrivateKey(const PrivateKey&) = delete;
    PrivateKey& operator=(const PrivateKey&) = delete;

    HKEY root() const { return m_root; }
    HKEY key() const { return m_key; }
    // The path below the root, without a leading backslash.
    const std::wstring& path() const { return m_path; }

    void set_dword(const wchar_t* name, DWORD value) const
    {
        REQUIRE(RegSetValueExW(m_key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                               sizeof value) == ERROR_SUCCESS);
    }
    void set_text(const wchar_t* name, const std::wstring& value, DWORD type = REG_SZ) const
    {
        REQUIRE(RegSetValueExW(m_key, name, 0, type, reinterpret_cast<const BYTE*>(value.c_str()),
                               static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) ==
                ERROR_SUCCESS);
    }
    void set_bytes(const wchar_t* name, const void* data, DWORD size, DWORD type = REG_BINARY) const
    {
        REQUIRE(RegSetValueExW(m_key, name, 0, type, static_cast<const BYTE*>(data), size) ==
                ERROR_SUCCESS);
    }

    // Deletes a key and everything below it, deepest first.
    static void delete_tree(HKEY root, const std::wstring& path)
    {
        HKEY key;
        if (RegOpenKeyExW(root, path.c_str(), 0, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS) {
            wchar_t name[256];
            DWORD len = 256;
            while (RegEnumKeyExW(key, 0, name, &len, nullptr, nullptr, nullptr, nullptr) ==
                   ERROR_SUCCESS) {
                delete_tree(root, path + L"\\" + name);
                len = 256;
            }
            RegCloseKey(key);
        }
        RegDeleteKeyW(root, path.c_str());
    }

private:
    HKEY m_root;
    HKEY m_key = nullptr;
    std::wstring m_path;
};
