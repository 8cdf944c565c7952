// Real files in a private temporary directory, and a record opened on one
// of them that is closed when the scope ends.
#pragma once

#include <doctest/doctest.h>

#include <stdio.h>

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
    FILE* file = _wfopen(name.c_str(), L"wb");
    REQUIRE(file);
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

inline std::string file_bytes(const std::wstring& name)
{
    std::string bytes;
    char chunk[4096];
    FILE* file = _wfopen(name.c_str(), L"rb");
    for (size_t n; file && (n = fread(chunk, 1, sizeof chunk, file)) > 0;)
        bytes.append(chunk, n);
    if (file)
        fclose(file);
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

    // Lines up to the end of the file or `most` of them, each followed by
    // '|'; the status that ended the reading goes to `last`.
    std::wstring lines(uint32_t len, ZORStatus* last = nullptr, size_t most = 10000000)
    {
        std::vector<wchar_t> dst(len, L'#');
        std::wstring out;
        for (size_t n = 0; n < most; ++n) {
            ZORStatus status = ZORFileGetLine(&rec, dst.data(), len);
            if (status) {
                if (last)
                    *last = status;
                return out;
            }
            REQUIRE(dst[len - 1] == 0);
            out += std::wstring(dst.data()) + L'|';
        }
        return out;
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
