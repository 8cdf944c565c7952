// The buffered file benchmark: a narrow and a wide file of about 100 MB in
// 60-unit lines, made once in the current directory (the build tree) and
// kept, read line by line with ZORFileGetLine at two buffer sizes, beside
// the runtime's fgetws and a bare 64 KiB ReadFile scan that only counts line
// feeds. One line per measure:  file <TAB> measure <TAB> value <TAB> unit
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include <windows.h>

#include "bench_clock.h"
#include "zorbase.h"

namespace {

constexpr uint32_t kLines = 1700000;  // 60 units each, line feed included
constexpr uint32_t kLineLen = 1024;

struct Subject {
    const char* name;
    const wchar_t* file;
    uint32_t encoding;
    const wchar_t* fopenMode;  // how fgetws must see the file
};

uint64_t file_size(const wchar_t* name)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(name, GetFileExInfoStandard, &data))
        return 0;
    return (uint64_t(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

// Line k: 59 units of varied text and a line feed; a wide file starts with
// its mark, which the record writes ahead of the first block.
void make_file(const Subject& s)
{
    uint64_t unit = s.encoding == ZOR_FILE_WIDE ? 2 : 1;
    if (file_size(s.file) == unit * (60ull * kLines + (unit == 2)))
        return;
    ZORFileRec rec;
    ZORFileOpen(&rec, 0, s.file, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr, s.encoding);
    std::string chunk;
    for (uint32_t k = 0; k < kLines; ++k) {
        char line[64];
        snprintf(line, sizeof line, "%08u some ordinary text of a line in a file, %010u\n", k, k * 2654435761u);
        // ASCII: a wide unit is the byte and a zero byte.
        for (const char* c = line; *c; ++c) {
            chunk += *c;
            if (unit == 2)
                chunk += '\0';
        }
        if (chunk.size() > 60000 || k + 1 == kLines) {
            ZORFileAppendBlock(&rec, chunk.data(), uint32_t(chunk.size()));
            chunk.clear();
        }
    }
    ZORFileClose(&rec);
}

// MB/s of one pass of `read`, which returns the lines it saw.
template <class Read>
double megabytes_per_second(const Subject& s, Read read)
{
    double start = now_seconds();
    uint32_t lines = read();
    double seconds = now_seconds() - start;
    if (lines != kLines)
        fprintf(stderr, "%s: %u lines instead of %u\n", s.name, lines, kLines);
    return double(file_size(s.file)) / 1e6 / seconds;
}

uint32_t get_lines(const Subject& s, uint32_t bufSize)
{
    ZORFileRec rec;
    ZORFileOpen(&rec, bufSize, s.file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr,
                s.encoding);
    std::vector<wchar_t> dst(kLineLen);
    uint32_t lines = 0;
    while (ZORFileGetLine(&rec, dst.data(), kLineLen) == ZOR_S_OK)
        ++lines;
    ZORFileClose(&rec);
    return lines;
}

uint32_t fgetws_lines(const Subject& s)
{
    FILE* file = _wfopen(s.file, s.fopenMode);
    if (!file)
        return 0;
    std::vector<wchar_t> dst(kLineLen);
    uint32_t lines = 0;
    while (fgetws(dst.data(), int(kLineLen), file))
        ++lines;
    fclose(file);
    return lines;
}

uint32_t scan_lines(const Subject& s)
{
    HANDLE file = CreateFileW(s.file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    std::vector<char> buf(65536);
    uint32_t lines = 0;
    DWORD got = 0;
    size_t unit = s.encoding == ZOR_FILE_WIDE ? 2 : 1;
    while (ReadFile(file, buf.data(), DWORD(buf.size()), &got, nullptr) && got) {
        for (DWORD i = 0; i < got; i += DWORD(unit))
            lines += buf[i] == '\n';
    }
    CloseHandle(file);
    return lines;
}

void print(const Subject& s, const char* measure, double value, const char* unit)
{
    printf("file\t%s %s\t%.2f\t%s\n", s.name, measure, value, unit);
}

}

int main()
{
    const Subject subjects[] = {
        {"narrow", L"bench-file-narrow.txt", ZOR_FILE_NARROW, L"r"},
        {"wide", L"bench-file-wide.txt", ZOR_FILE_WIDE, L"r, ccs=UTF-16LE"},
    };
    for (const Subject& s : subjects) {
        make_file(s);
        double small = megabytes_per_second(s, [&] { return get_lines(s, 4096); });
        double large = megabytes_per_second(s, [&] { return get_lines(s, 65536); });
        double runtime = megabytes_per_second(s, [&] { return fgetws_lines(s); });
        double scan = megabytes_per_second(s, [&] { return scan_lines(s); });
        print(s, "ZORFileGetLine 4 KiB", small, "MB/s");
        print(s, "ZORFileGetLine 64 KiB", large, "MB/s");
        print(s, "fgetws", runtime, "MB/s");
        print(s, "ReadFile scan 64 KiB", scan, "MB/s");
        print(s, "GetLine 64 KiB / fgetws", large / runtime, "x");
        print(s, "GetLine 64 KiB / scan", large / scan, "x");
    }
    return 0;
}
