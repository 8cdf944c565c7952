// Real files in a private temporary directory, and a record opened on one
// of them that is closed when the scope ends.
#pragma once

#include <doctest/doctest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
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
    std::ofstream out(name.c_str(), std::ios::binary);
    REQUIRE(out.write(bytes.data(), std::streamsize(bytes.size())).good());
}

inline std::string file_bytes(const std::wstring& name)
{
    std::ifstream in(name.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
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
    ZORStatus opened, last = 0; // `last`: the status of the last call through lines() or block()
    TestFile(const std::wstring& name, uint32_t bufSize, uint32_t encoding,
             uint32_t access = GENERIC_READ | GENERIC_WRITE, uint32_t disposition = OPEN_ALWAYS)
        : opened(ZORFileOpen(&rec, bufSize, name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             disposition, FILE_ATTRIBUTE_NORMAL, nullptr, encoding))
    {
        REQUIRE(rec.hFile != INVALID_HANDLE_VALUE);
    }
    ~TestFile() { ZORFileClose(&rec); }
    TestFile(const TestFile&) = delete;

    // Lines up to a failure or `most` of them, each followed by '|'. Every
    // call must zero-fill `dst` behind its line and stay inside it; a failing
    // one leaves it alone, and the end of the file leaves the buffer empty.
    std::wstring lines(uint32_t len, size_t most = SIZE_MAX)
    {
        std::wstring out;
        for (last = 0; !last && most--;) {
            std::wstring dst(len + 1, L'#');
            last = ZORFileGetLine(&rec, &dst[0], len);
            size_t end = last ? 0 : std::min<size_t>(wcslen(dst.c_str()), len - 1);
            CHECK(dst.substr(end) == (last ? std::wstring(len + 1, L'#') : std::wstring(len - end, L'\0') + L'#'));
            out += last ? L"" : dst.substr(0, end) + L'|';
        }
        if (last == ZOR_E_HANDLE_EOF) {
            CHECK(rec.dwBufPos == 0);
            CHECK(rec.dwBufFill == 0);
        }
        return out;
    }

    // Up to `len` raw bytes; empty after a failure, which leaves `len` alone.
    std::string block(uint32_t len)
    {
        std::string buf(len, '\0');
        uint32_t got = len;
        last = ZORFileGetBlock(&rec, &buf[0], &got);
        CHECK(got <= len);
        if (last)
            CHECK(got == len);
        return last ? std::string() : buf.substr(0, got);
    }
};
