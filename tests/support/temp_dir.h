// A private directory under the user's temporary folder, named with the
// process id, removed with everything in it when the scope ends. With
// `make_current` it is also the current directory for the scope, for code
// that works relative to it.
#pragma once

#include <doctest/doctest.h>

#include <stdio.h>

#include <string>

#include <windows.h>

// Whole files as bytes: cases write their input and read back their output.
inline void write_bytes(const std::wstring& name, const std::string& bytes)
{
    FILE* file = _wfopen(name.c_str(), L"wb");
    REQUIRE(file != nullptr);
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

// Empty for a missing file.
inline std::string read_bytes(const std::wstring& name)
{
    std::string bytes;
    if (FILE* file = _wfopen(name.c_str(), L"rb")) {
        char chunk[65536];
        for (size_t got; (got = fread(chunk, 1, sizeof chunk, file)) > 0;)
            bytes.append(chunk, got);
        fclose(file);
    }
    return bytes;
}

class TempDir {
public:
    explicit TempDir(bool make_current = false)
    {
        wchar_t base[MAX_PATH] = {};
        REQUIRE(GetTempPathW(MAX_PATH, base) != 0);
        static long serial = 0;
        m_path = std::wstring(base) + L"zor" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                 std::to_wstring(++serial);
        // Wine hands out small process ids again soon: a run that was killed
        // may have left this name behind.
        remove_tree(m_path);
        REQUIRE(CreateDirectoryW(m_path.c_str(), nullptr));
        if (make_current) {
            wchar_t old[MAX_PATH] = {};
            GetCurrentDirectoryW(MAX_PATH, old);
            m_old_current = old;
            REQUIRE(SetCurrentDirectoryW(m_path.c_str()));
        }
    }
    ~TempDir()
    {
        if (!m_old_current.empty())
            SetCurrentDirectoryW(m_old_current.c_str());
        remove_tree(m_path);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::wstring& path() const { return m_path; }
    // The full name of `name` inside the directory.
    std::wstring file(const std::wstring& name) const { return m_path + L"\\" + name; }

    static void remove_tree(const std::wstring& dir)
    {
        WIN32_FIND_DATAW found;
        HANDLE walk = FindFirstFileW((dir + L"\\*").c_str(), &found);
        if (walk != INVALID_HANDLE_VALUE) {
            do {
                std::wstring name = found.cFileName;
                if (name == L"." || name == L"..")
                    continue;
                std::wstring full = dir + L"\\" + name;
                if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                    remove_tree(full);
                } else {
                    SetFileAttributesW(full.c_str(), FILE_ATTRIBUTE_NORMAL);
                    DeleteFileW(full.c_str());
                }
            } while (FindNextFileW(walk, &found));
            FindClose(walk);
        }
        RemoveDirectoryW(dir.c_str());
    }

private:
    std::wstring m_path;
    std::wstring m_old_current;
};
