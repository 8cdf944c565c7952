#include "file_fixture.h"

#include <random>

namespace {
const std::string kMark = "\xFF\xFE";

// Lines as a reader of this family sees them: a line feed ends a line, carriage
// returns vanish, the end of the file ends a line that has begun, and a line is
// handed out in pieces of at most len-1 units.
std::wstring split_reference(const std::wstring& text, uint32_t len)
{
    std::wstring out, line;
    bool begun = false;
    for (size_t i = 0; i <= text.size(); ++i) {
        bool end = i == text.size();
        if (!end && text[i] != L'\n') {
            begun = true;
            if (text[i] != L'\r')
                line += text[i];
            continue;
        }
        for (size_t at = 0; (!end || begun) && (at == 0 || at < line.size()); at += len - 1)
            out += line.substr(at, len - 1) + L'|';
        line.clear();
        begun = false;
    }
    return out;
}
}

TEST_CASE("line ends, the cut, marks and odd sizes")
{
    struct Row {
        uint32_t encoding, bufSize, len;
        std::string bytes;
        std::wstring lines;
    };
    const Row rows[] = {
        {1, 8, 8, "", L""},
        {1, 8, 8, "a\r\n", L"a|"},
        {1, 8, 8, "a\rb\n", L"ab|"},
        {1, 8, 8, "a\n", L"a|"},
        {1, 2, 8, "\n\na\n\r", L"||a||"},
        {1, 1, 3, "abcde\nfg\nh", L"ab|cd|e|fg|h|"},
        {1, 4, 10, "a\0b\nc"s, L"a|c|"},
        {1, 0, 8, "abc", L""},
        {2, 8, 8, kMark + wide_bytes(L"a\r\nb"), L"a|b|"},
        {2, 8, 8, wide_bytes(L"a\nb"), L"a|b|"},
        {2, 8, 8, "\xFE\xFF" + wide_bytes(L"\x6100"), L"\x6100|"},
        {2, 3, 8, kMark + wide_bytes(L"abc\nd"), L"abc|d|"},
        {2, 1, 2, kMark + wide_bytes(L"ab\n\xE9"), L"a|b|\xE9|"},
        {2, 8, 1, kMark + wide_bytes(L"\n\r\n"), L"||"},
        {2, 8, 8, wide_bytes(std::wstring(L"a\0b\nc", 5)), L"a|c|"},
        // The odd last byte is no unit; an encoding of its own has no mark.
        {2, 8, 8, wide_bytes(L"a\nb") + "c", L"a|b|"},
        {2, 1, 8, wide_bytes(L"a") + "c", L"a|"},
        {3, 5, 8, kMark + wide_bytes(L"a"), L"\xFEFF" L"a|"},
    };
    TempDir dir;
    for (const Row& row : rows) {
        CAPTURE(row.lines);
        put_file(dir.file(L"f"), row.bytes);
        TestFile f(dir.file(L"f"), row.bufSize, row.encoding);
        ZORStatus last = 0;
        CHECK(f.lines(row.len, &last) == row.lines);
        CHECK(last == ZOR_E_HANDLE_EOF);
        CHECK(f.rec.dwBufPos == 0);
        CHECK(f.rec.dwBufFill == 0);
    }
    put_file(dir.file(L"f"), "abc\n");
    TestFile f(dir.file(L"f"), 8, ZOR_FILE_NARROW);
    wchar_t dst[6];
    wmemset(dst, L'#', 6);
    CHECK(ZORFileGetLine(&f.rec, dst, 1) == ZOR_S_OK);
    CHECK(dst[0] == 0);
    CHECK(dst[1] == L'#');
    CHECK(ZORFileGetLine(&f.rec, dst, 6) == ZOR_S_OK);
    CHECK(std::wstring(dst, 6) == L"abc\0\0\0"s);
    dst[0] = L'#';
    CHECK(ZORFileGetLine(&f.rec, dst, 6) == ZOR_E_HANDLE_EOF);
    CHECK(dst[0] == L'#');
}

TEST_CASE("the buffer runs ahead of the caller; the mark is dealt with at the first read")
{
    TempDir dir;
    put_file(dir.file(L"n"), "xxx\n" + std::string(5000, 'y'));
    TestFile narrow(dir.file(L"n"), 1000, ZOR_FILE_NARROW);
    // A position set before the first read is given up.
    ZORFileSetPos(&narrow.rec, 2);
    CHECK(narrow.lines(10, nullptr, 1) == L"xxx|");
    CHECK(ZORFileGetPos(&narrow.rec) == 1000);
    // The buffer hands out what it read; after a new position the next read goes to the file.
    put_file(dir.file(L"n"), "ab\ncd");
    CHECK(narrow.block(2) == "yy");
    ZORFileSetPos(&narrow.rec, 0);
    CHECK(narrow.lines(10) == L"ab|cd|");

    put_file(dir.file(L"w"), kMark + wide_bytes(L"ab\ncd"));
    TestFile wide(dir.file(L"w"), 3, ZOR_FILE_WIDE);
    CHECK(wide.block(1) == "a");
    CHECK(ZORFileGetPos(&wide.rec) == 5);
    CHECK(wide.block(100) == wide_bytes(L"ab\ncd").substr(1));
    ZORStatus last = 0;
    CHECK(wide.block(100, &last) == "");
    CHECK(last == ZOR_E_HANDLE_EOF);
    TestFile unmarked(dir.file(L"w"), 64, ZOR_FILE_NARROW);
    CHECK(unmarked.block(100) == kMark + wide_bytes(L"ab\ncd"));
    uint32_t len = 7;
    char buf[8];
    CHECK(ZORFileGetBlock(&unmarked.rec, buf, &len) == ZOR_E_HANDLE_EOF);
    CHECK(len == 7);
}

TEST_CASE("random files read through random buffers and lengths split like the reference")
{
    TempDir dir;
    std::mt19937 random(14);
    const wchar_t narrowUnits[] = L"abcXYZ 019.;\r\r\n\n\n";
    const wchar_t wideUnits[] = L"aZ9 \xE9\x3A9\x4E2D\xFFFD\xD83D\r\r\n\n\n";
    for (int round = 0; round < 160; ++round) {
        bool wide = round % 2;
        const wchar_t* units = wide ? wideUnits : narrowUnits;
        size_t count = wcslen(units);
        std::wstring text;
        size_t size = random() % 5 == 0 ? random() % 8 : random() % 6000;
        for (size_t i = 0; i < size; ++i)
            text += random() % 3 ? units[random() % 6] : units[random() % count];
        bool marked = wide && random() % 2;
        std::string bytes = wide ? (marked ? kMark : "") + wide_bytes(text) : std::string(text.begin(), text.end());
        put_file(dir.file(L"r"), bytes);
        uint32_t bufSize = random() % 4 ? 1 + random() % 300 : 1 + random() % 70000;
        uint32_t len = 2 + random() % 299;
        CAPTURE(round);
        TestFile f(dir.file(L"r"), bufSize, wide ? ZOR_FILE_WIDE : ZOR_FILE_NARROW);
        CHECK(f.lines(len) == split_reference(text, len));
        ZORFileSetPos(&f.rec, marked ? 2 : 0);
        std::string blocks;
        for (ZORStatus status = 0; !status;)
            blocks += f.block(1 + random() % 500, &status);
        CHECK(blocks == bytes.substr(marked ? 2 : 0));
    }
}
