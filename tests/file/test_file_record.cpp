#include "file_fixture.h"

#include "alloc_check.h"
#include "dll_image.h"

TEST_CASE("open fills the record, a failed open leaves it ready, close empties it")
{
    TempDir dir;
    NoLeak leak;
    ZORFileRec rec;
    CHECK(ZORFileOpen(nullptr, 1, L"x", 0, 0, nullptr, OPEN_EXISTING, 0, nullptr, 1) == ZOR_E_INVALIDARG);
    for (auto row : {std::make_pair(L"none", 0x80070002u), std::make_pair(L"none\\x", 0x80070003u)}) {
        CHECK(ZORFileOpen(&rec, 16, dir.file(row.first).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0,
                          nullptr, 0) == row.second);
        CHECK(fields(rec) == fields({ZOR_FILE_SIGNATURE, INVALID_HANDLE_VALUE, 0, 16, 0, nullptr, 0, 1, 1}));
    }
    ZORFileRec before = rec;
    CHECK(ZORFileClose(&rec) == ZOR_S_OK);
    CHECK(fields(rec) == fields(before));

    put_file(dir.file(L"w"), "\xFF\xFE" "a\0"s);
    TestFile wide(dir.file(L"w"), 4, ZOR_FILE_WIDE);
    CHECK(wide.opened == ZOR_E_NOTIMPL);
    CHECK(wide.lines(8) == L"a|");
    // A wrong signature keeps the handle open, and the record is emptied all the same.
    HANDLE handle = wide.rec.hFile;
    wide.rec.dwSignature = 1;
    CHECK(ZORFileClose(&wide.rec) == ZOR_E_INVALID_DATA);
    CHECK(fields(wide.rec) == fields({0, INVALID_HANDLE_VALUE, 0, 0, 0, nullptr, 0, 0, 0}));
    CHECK(CloseHandle(handle));
}

TEST_CASE("reads and writes test the signature, then their arguments, then the file")
{
    ZORFileRec raw = {}, ready;
    REQUIRE(ZORFileInit(&ready) == ZOR_S_OK);
    // Each call complete, or with one argument missing.
    static char buf[4]; static wchar_t line[4]; static uint32_t none = 0, four = 4;
    using Call = ZORStatus (*)(ZORFileRec*, bool);
    const Call calls[] = {
        [](ZORFileRec* r, bool all) { return ZORFileGetBlock(r, buf, all ? &four : &none); },
        [](ZORFileRec* r, bool all) { return ZORFileGetBlock(r, buf, all ? &four : nullptr); },
        [](ZORFileRec* r, bool all) { return ZORFileGetBlock(r, all ? buf : nullptr, &four); },
        [](ZORFileRec* r, bool all) { return ZORFileGetLine(r, line, all ? 4 : 0); },
        [](ZORFileRec* r, bool all) { return ZORFileGetLine(r, all ? line : nullptr, 4); },
        [](ZORFileRec* r, bool all) { return ZORFileGetLine(r, line, all ? 4 : 0x80000000u); },
        [](ZORFileRec* r, bool all) { return ZORFileWriteBlock(r, all ? buf : nullptr, 4); },
        [](ZORFileRec* r, bool all) { return ZORFileAppendBlock(r, all ? buf : nullptr, 4); },
        [](ZORFileRec* r, bool all) { return ZORFileWriteLine(r, L"x", all ? 1 : 0x80000000u); },
    };
    for (Call call : calls) {
        CHECK(call(nullptr, true) == ZOR_E_INVALIDARG);
        CHECK(call(&raw, false) == (call == calls[8] ? ZOR_E_INVALIDARG : ZOR_E_INVALID_DATA));
        CHECK(call(&ready, false) == ZOR_E_INVALIDARG);
        CHECK(call(&raw, true) == ZOR_E_INVALID_DATA);
        CHECK(call(&ready, true) == ZOR_E_INVALID_HANDLE);
    }
    // Writing nothing is done before any test; a null text is refused before the record is looked at.
    CHECK(ZORFileWriteBlock(&raw, nullptr, 0) == ZOR_S_OK);
    CHECK(ZORFileWriteLine(&raw, L"x", 0) == ZOR_S_OK);
    CHECK(ZORFileWriteLine(&raw, nullptr, 1) == ZOR_E_INVALIDARG);
    raw.dwFilePos = 9;
    CHECK(ZORFileGetPos(&raw) == 9);
    CHECK(ZORFileInit(nullptr) == ZOR_E_INVALIDARG);
    CHECK(ZORFileGetPos(nullptr) == 0);
    CHECK(ZORFileSetPos(nullptr, 1) == ZOR_E_INVALIDARG);
    CHECK(ZORFileClose(nullptr) == ZOR_E_INVALIDARG);
}

TEST_CASE("failing system calls keep the record usable and leak nothing")
{
    TempDir dir;
    NoLeak leak;
    put_file(dir.file(L"n"), "one\ntwo\n");
    {
        TestFile reader(dir.file(L"n"), 3, ZOR_FILE_NARROW, GENERIC_READ, OPEN_EXISTING);
        CHECK(reader.lines(8, 1) == L"one|");
        CHECK(ZORFileWriteBlock(&reader.rec, "x", 1) == 0x80070005u);
        CHECK(ZORFileAppendBlock(&reader.rec, "x", 1) == 0x80070005u);
        // Behind a failed append the position is the end of the file all the same.
        CHECK(ZORFileGetPos(&reader.rec) == 8);
        ZORFileSetPos(&reader.rec, 4);
        CHECK(reader.lines(8) == L"two|");
    }
    CHECK(file_bytes(dir.file(L"n")) == "one\ntwo\n");
    TestFile orphan(dir.file(L"n"), 3, ZOR_FILE_NARROW);
    CloseHandle(orphan.rec.hFile);
    CHECK(orphan.lines(8) == L"");
    CHECK(orphan.last == 0x80070006u);
    CHECK(ZORFileAppendBlock(&orphan.rec, "x", 1) == 0x80070006u);
    CHECK(ZORFileClose(&orphan.rec) == 0x80070006u);
}

TEST_CASE("an exhausted heap gives E_OUTOFMEMORY, loses no line and leaks nothing")
{
    TempDir dir;
    NoLeak leak;
    for (uint32_t encoding : {ZOR_FILE_NARROW, ZOR_FILE_WIDE}) {
        std::wstring name = dir.file(std::to_wstring(encoding));
        long requests = fail_each_allocation([&] {
            // Every run, also one whose open found no buffer, let go of the file.
            if (!DeleteFileW(name.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) {
                FAIL_CHECK("the last run kept the file open");
                return;
            }
            TestFile f(name, 5, encoding);
            if (f.opened == ZOR_E_OUTOFMEMORY) {
                CHECK(f.lines(8) == L"");
                CHECK(f.last == ZOR_E_OUTOFMEMORY);
                return;
            }
            // Each call is made again after running out: what it did not do is still to do.
            auto again = [](auto call) {
                ZORStatus status = call();
                return status == ZOR_E_OUTOFMEMORY ? call() : status;
            };
            CHECK(again([&] { return ZORFileWriteLine(&f.rec, L"first\r\nsecond", 13); }) == ZOR_S_OK);
            ZORFileSetPos(&f.rec, encoding == ZOR_FILE_WIDE ? 2 : 0);
            std::wstring got;
            wchar_t dst[8];
            while (again([&] { return ZORFileGetLine(&f.rec, dst, 8); }) == ZOR_S_OK)
                got += std::wstring(dst) + L'|';
            CHECK(got == L"first|second|");
        });
        CHECK(requests >= 3);
    }
}

TEST_CASE("the DLL exports the file family")
{
    CHECK(missing_exports({"ZORFileInit", "ZORFileOpen", "ZORFileClose", "ZORFileGetBlock", "ZORFileGetLine",
                           "ZORFileGetPos", "ZORFileSetPos", "ZORFileWriteBlock", "ZORFileAppendBlock",
                           "ZORFileWriteLine"}) == "");
}
