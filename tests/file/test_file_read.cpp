#include "file_fixture.h"

// What the random files of the fuzz loop do not hold.
TEST_CASE("lines: zero units, other marks, odd last bytes, encodings of their own, len 1")
{
    struct Row {
        uint32_t encoding, bufSize, len;
        std::string bytes;
        std::wstring lines;
    };
    const Row rows[] = {
        {1, 4, 10, "a\0b\nc"s, L"a|c|"},
        {2, 8, 8, wide_bytes(L"a\0b\nc"s), L"a|c|"},
        {2, 8, 8, "\xFE\xFF" + wide_bytes(L"\x6100"), L"\x6100|"},
        {2, 8, 8, wide_bytes(L"a\nb") + "c", L"a|b|"},
        {2, 1, 8, wide_bytes(L"a") + "c", L"a|"},
        {3, 5, 8, "\xFF\xFE" + wide_bytes(L"a"), L"\xFEFF" L"a|"},
        // `len` 1 still consumes a line feed.
        {2, 8, 1, "\xFF\xFE" + wide_bytes(L"\n\r\n"), L"||"},
    };
    TempDir dir;
    for (const Row& row : rows) {
        CAPTURE(row.lines);
        put_file(dir.file(L"f"), row.bytes);
        TestFile f(dir.file(L"f"), row.bufSize, row.encoding);
        CHECK(f.lines(row.len) == row.lines);
        CHECK(f.last == ZOR_E_HANDLE_EOF);
    }
    put_file(dir.file(L"f"), "abc\n");
    TestFile f(dir.file(L"f"), 8, ZOR_FILE_NARROW);
    CHECK(f.lines(1, 1) == L"|");
    CHECK(f.lines(6) == L"abc|");
}

TEST_CASE("the buffer runs ahead of the caller until a new position; the mark is dealt with at the first read")
{
    TempDir dir;
    put_file(dir.file(L"n"), "xxx\n" + std::string(5000, 'y'));
    TestFile narrow(dir.file(L"n"), 1000, ZOR_FILE_NARROW);
    // A position set before the first read is given up.
    ZORFileSetPos(&narrow.rec, 2);
    CHECK(narrow.lines(10, 1) == L"xxx|");
    CHECK(ZORFileGetPos(&narrow.rec) == 1000);
    // What the buffer holds is handed out as read, until a new position sends the next read to the file.
    put_file(dir.file(L"n"), "ab\ncd");
    CHECK(narrow.block(2) == "yy");
    ZORFileSetPos(&narrow.rec, 0);
    CHECK(narrow.lines(10) == L"ab|cd|");
    ZORFileSetPos(&narrow.rec, 100);
    CHECK(narrow.lines(10) == L"");
    CHECK(narrow.last == ZOR_E_HANDLE_EOF);

    put_file(dir.file(L"w"), "\xFF\xFE" "ab"s);
    TestFile wide(dir.file(L"w"), 3, ZOR_FILE_WIDE), raw(dir.file(L"w"), 64, ZOR_FILE_NARROW);
    CHECK(wide.block(1) == "a");
    CHECK(ZORFileGetPos(&wide.rec) == 4);
    CHECK(raw.block(9) == "\xFF\xFE" "ab");
}
