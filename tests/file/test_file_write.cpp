#include "file_fixture.h"

#include "classes/encodings.h"

namespace {
// The narrow code page for a scope.
struct NarrowCodePage {
    explicit NarrowCodePage(uint32_t page) : old(zorlib::narrowCodePage) { zorlib::narrowCodePage = page; }
    ~NarrowCodePage() { zorlib::narrowCodePage = old; }
    uint32_t old;
};
}

TEST_CASE("blocks are written at the position, which stays, or appended behind the end")
{
    TempDir dir;
    put_file(dir.file(L"n"), "abcdef");
    {
        TestFile f(dir.file(L"n"), 4, ZOR_FILE_NARROW);
        ZORFileSetPos(&f.rec, 2);
        CHECK(ZORFileWriteBlock(&f.rec, "XY", 2) == ZOR_S_OK);
        CHECK(ZORFileWriteBlock(&f.rec, "Z", 1) == ZOR_S_OK);
        CHECK(ZORFileGetPos(&f.rec) == 2);
        CHECK(ZORFileAppendBlock(&f.rec, "gh", 2) == ZOR_S_OK);
        CHECK(ZORFileGetPos(&f.rec) == 8);
        CHECK(ZORFileWriteBlock(&f.rec, "i", 1) == ZOR_S_OK);
        CHECK(file_bytes(dir.file(L"n")) == "abZYefghi");
    }
    // The first access of a wide record is a write: the mark goes where the write goes.
    put_file(dir.file(L"w"), wide_bytes(L"ab"));
    {
        TestFile f(dir.file(L"w"), 4, ZOR_FILE_WIDE);
        CHECK(ZORFileAppendBlock(&f.rec, wide_bytes(L"c").data(), 2) == ZOR_S_OK);
        CHECK(ZORFileAppendBlock(&f.rec, wide_bytes(L"d").data(), 2) == ZOR_S_OK);
        CHECK(file_bytes(dir.file(L"w")) == wide_bytes(L"ab") + "\xFF\xFE" + wide_bytes(L"cd"));
    }
    TestFile f(dir.file(L"w"), 4, ZOR_FILE_WIDE);
    ZORFileSetPos(&f.rec, 4);
    CHECK(ZORFileWriteBlock(&f.rec, "", 0) == ZOR_S_OK);
    CHECK(ZORFileWriteBlock(&f.rec, "!", 1) == ZOR_S_OK);
    CHECK(file_bytes(dir.file(L"w")) == wide_bytes(L"ab\xFEFF!d"));
}

TEST_CASE("lines are written in the record's encoding and read back, reads and writes alternating")
{
    TempDir dir;
    NarrowCodePage latin(1252);
    const std::wstring text = L"caf\xE9\r\n\n", more = L"end";
    struct Row {
        uint32_t encoding;
        std::string bytes;
    };
    const Row rows[] = {
        {ZOR_FILE_NARROW, "caf\xE9\r\n\nend"},
        {ZOR_FILE_WIDE, "\xFF\xFE" + wide_bytes(text + more)},
        {3, wide_bytes(text + more)},
    };
    for (const Row& row : rows) {
        std::wstring name = dir.file(L"l" + std::to_wstring(row.encoding));
        TestFile f(name, 3, row.encoding);
        CHECK(ZORFileWriteLine(&f.rec, text.c_str(), static_cast<uint32_t>(text.size())) == ZOR_S_OK);
        uint32_t start = row.encoding == ZOR_FILE_WIDE ? 2 : 0, unit = row.encoding == ZOR_FILE_NARROW ? 1 : 2;
        ZORFileSetPos(&f.rec, start);
        wchar_t line[10];
        CHECK(ZORFileGetLine(&f.rec, line, 10) == ZOR_S_OK);
        CHECK(std::wstring(line) == L"caf\xE9");
        // The append moves the next read to the end; a position brings back what lies between.
        CHECK(ZORFileWriteLine(&f.rec, more.c_str(), 3) == ZOR_S_OK);
        CHECK(f.lines(10) == L"");
        ZORFileSetPos(&f.rec, ZORFileGetPos(&f.rec) - 4 * unit);
        CHECK(f.lines(10) == L"|end|");
        CHECK(file_bytes(name) == row.bytes);
        TestFile again(name, 64, row.encoding);
        CHECK(again.lines(10) == L"caf\xE9||end|");
    }
}

TEST_CASE("a narrow line longer in a double-byte code page than in wide units is written as nothing")
{
    TempDir dir;
    NarrowCodePage japanese(932);
    TestFile f(dir.file(L"j"), 16, ZOR_FILE_NARROW);
    CHECK(ZORFileWriteLine(&f.rec, L"\x65E5\x672C\x8A9E", 3) == ZOR_S_OK);
    CHECK(file_bytes(dir.file(L"j")) == "");
    CHECK(ZORFileAppendBlock(&f.rec, "\x93\xFA\x96\x7B\n", 5) == ZOR_S_OK);
    ZORFileSetPos(&f.rec, 0);
    CHECK(f.lines(8) == L"\x65E5\x672C|");
}
