#include "file_fixture.h"

#include "narrow_code_page.h"

TEST_CASE("blocks are written at the position, which stays, or appended behind the end")
{
    TempDir dir;
    put_file(dir.file(L"n"), "abcdef");
    {
        TestFile f(dir.file(L"n"), 4, ZOR_FILE_NARROW);
        ZORFileSetPos(&f.rec, 2);
        CHECK(ZORFileWriteBlock(&f.rec, "XY", 2) == ZOR_S_OK);
        CHECK(ZORFileWriteBlock(&f.rec, "Z", 1) == ZOR_S_OK);
        CHECK(ZORFileAppendBlock(&f.rec, "gh", 2) == ZOR_S_OK);
        CHECK(ZORFileWriteBlock(&f.rec, "i", 1) == ZOR_S_OK);
        CHECK(file_bytes(dir.file(L"n")) == "abZYefghi");
    }
    // The first access of a wide record is a write: the mark goes where the write goes.
    put_file(dir.file(L"w"), wide_bytes(L"ab"));
    {
        TestFile f(dir.file(L"w"), 4, ZOR_FILE_WIDE);
        CHECK(ZORFileAppendBlock(&f.rec, L"c", 2) == ZOR_S_OK);
        CHECK(ZORFileAppendBlock(&f.rec, L"d", 2) == ZOR_S_OK);
        CHECK(file_bytes(dir.file(L"w")) == wide_bytes(L"ab\xFEFF" L"cd"));
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
    const std::wstring text = L"caf\xE9\r\n\n";
    for (uint32_t encoding : {ZOR_FILE_NARROW, ZOR_FILE_WIDE, 3u}) {
        std::wstring name = dir.file(std::to_wstring(encoding));
        TestFile f(name, 3, encoding);
        CHECK(ZORFileWriteLine(&f.rec, text.c_str(), uint32_t(text.size())) == ZOR_S_OK);
        ZORFileSetPos(&f.rec, encoding == ZOR_FILE_WIDE ? 2 : 0);
        CHECK(f.lines(10, 1) == L"caf\xE9|");
        // The append moves the next read to the end; a position brings back what lies between.
        CHECK(ZORFileWriteLine(&f.rec, L"end", 3) == ZOR_S_OK);
        CHECK(f.lines(10) == L"");
        ZORFileSetPos(&f.rec, ZORFileGetPos(&f.rec) - (encoding == ZOR_FILE_NARROW ? 4 : 8));
        CHECK(f.lines(10) == L"|end|");
        const std::string body = encoding == ZOR_FILE_NARROW ? "caf\xE9\r\n\nend" : wide_bytes(text + L"end");
        CHECK(file_bytes(name) == (encoding == ZOR_FILE_WIDE ? "\xFF\xFE" + body : body));
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
