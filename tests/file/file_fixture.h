// Real files in a private temporary directory, and a record opened on one
// of them that is closed when the scope ends.
#pragma once

#include <doctest/doctest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "temp_dir.h"
#include "wide_text.h"
#include "zor_file.h"
#include "zor_status.h"

using namespace std::string_literals;

inline void put_file(const std::wstring& name, const std::string& bytes)
{
    HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    REQUIRE(file != INVALID_HANDLE_VALUE);
    DWORD written = 0;
    CHECK(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    CloseHandle(file);
}

inline std::string file_bytes(const std::wstring& name)
{
    HANDLE file = CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
    REQUIRE(file != INVALID_HANDLE_VALUE);
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    CHECK(ReadFile(file, &bytes[0], static_cast<DWORD>(bytes.size()), &read, nullptr));
    CloseHandle(file);
    return bytes;
}

// The bytes of wide text, little-endian.
inline std::string wide_bytes(const std::wstring& text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}

// The record's fields in order, for comparing whole records.
inline std::vector<uint64_t> fields(const ZORFileRec& r)
{
    return {r.dwSignature, reinterpret_cast<uint64_t>(r.hFile), r.dwBufPos, r.dwBufSize, r.dwBufFill,
            reinterpret_cast<uint64_t>(r.pBuf), r.dwFilePos, r.dwEncoding, static_cast<uint64_t>(r.bFirstAccess)};
}

struct TestFile {
    ZORFileRec rec;
    ZORStatus opened;
    TestFile(const std::wstring& name, uint32_t bufSize, uint32_t encoding,
             uint32_t access = GENERIC_READ | GENERIC_WRITE, uint32_t disposition = OPEN_ALWAYS)
        : opened(ZORFileOpen(&rec, bufSize, name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             disposition, FILE_ATTRIBUTE_NORMAL, nullptr, encoding))
    {
        REQUIRE(rec.hFile != INVALID_HANDLE_VALUE);
    }
    ~TestFile() { ZORFileClose(&rec); }
    TestFile(const TestFile&) = delete;
    TestFile& operator=(const TestFile&) = delete;

    // Lines up to the end of the file, each followed by '|'; the status
    // that ended the reading goes to `last`.
    std::wstring lines(uint32_t len, ZORStatus* last = nullptr)
    {
        std::vector<wchar_t> dst(len, L'#');
        std::wstring out;
        for (;;) {
            ZORStatus status = ZORFileGetLine(&rec, dst.data(), len);
            if (status) {
                if (last)
                    *last = status;
                return out;
            }
            REQUIRE(dst[len - 1] == 0);
            out += std::wstring(dst.data()) + L'|';
            REQUIRE(out.size() < 10000000);
        }
    }

    // Up to `len` raw bytes; empty when the call fails.
    std::string block(uint32_t len, ZORStatus* status = nullptr)
    {
        std::string buf(len, '\0');
        ZORStatus got = ZORFileGetBlock(&rec, &buf[0], &len);
        if (status)
            *status = got;
        return got ? std::string() : buf.substr(0, len);
    }
};
