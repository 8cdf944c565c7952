#include "alloc_check.h"
#include "trace_fixture.h"

namespace {

// Creates each file, runs the check as at the first line of a new day and
// tells which files are left; `kept` is true for the ones that must stay.
void run_change_of_date(OwnTrace& t, const TempDir& dir,
                        const std::vector<std::pair<std::wstring, bool>>& files)
{
    for (const auto& file : files)
        write_bytes(dir.file(file.first), "x");
    wcscpy(t.obj.szLastFile, (std::wstring(t.obj.szBaseName) + date_back(1) + L".log").c_str());
    t.obj.bFile = 1;
    TraceCheckFile(&t.obj);
    CHECK(t.obj.bFile == 1);
    CHECK(std::wstring(t.obj.szLastFile) == std::wstring(t.obj.szFile));
    CHECK(file_exists(t.obj.szFile));
    for (const auto& file : files) {
        CAPTURE(file.first);
        CHECK(file_exists(dir.file(file.first)) == file.second);
    }
}

const std::vector<std::wstring> kSentinels = {
    L"app19990101.log", L"appX.txt",         L"0readme.txt", L"-x.log",       L"1999.log",
    L"19990101.txt",    L"19990101.log.bak", L"1999010.log", L"a19990101.log"};

}

TEST_CASE("a change of date prunes by the ordering of names, only when the name changed")
{
    for (int days : {1, 7}) {
        TempDir dir(true);
        OwnTrace t;
        t.place(dir.path(), L"app");
        t.obj.nDays = days;
        std::vector<std::pair<std::wstring, bool>> files = {
            {L"APP" + date_back(days + 1) + L".LOG", false}, {L"app-old.txt", false},
            {L"apq19990101.log", true}, {L"19990101.log", true}, {L"notes.txt", true}};
        for (int back = 0; back <= days + 3; ++back)
            files.push_back({L"app" + date_back(back) + L".log", back < days});
        CAPTURE(days);
        run_change_of_date(t, dir, files);
        // Another check on the same day, under a name in other case, prunes nothing.
        write_bytes(dir.file(L"app19990101.log"), "x");
        _wcsupr(t.obj.szLastFile);
        TraceCheckFile(&t.obj);
        CHECK(file_exists(dir.file(L"app19990101.log")));
    }
}

TEST_CASE("pruning without a cut-off date or a stem keeps the user's files")
{
    TempDir dir(true);
    OwnTrace t;
    t.obj.nDays = 7;
    wcscpy(t.obj.szBaseName, L"app");
    for (const std::wstring& name : kSentinels)
        write_bytes(dir.file(name), "x");
    {
        AllAllocationsFail no_memory;
        TracePruneFiles(&t.obj);
    }
    for (const std::wstring& name : kSentinels) {
        CAPTURE(name);
        CHECK(file_exists(dir.file(name)));
    }
    OwnTrace bare;
    bare.obj.nDays = 7;
    std::vector<std::pair<std::wstring, bool>> files = {
        {date_back(8) + L".log", false}, {date_back(7) + L".LOG", false},
        {date_back(6) + L".log", true}};
    for (const std::wstring& name : kSentinels)
        files.push_back({name, true});
    run_change_of_date(bare, dir, files);
    CHECK(std::wstring(bare.obj.szFile) == date_back(0) + L".log");
}

TEST_CASE("a file past its limit keeps the tail from two thirds of its size")
{
    // 1024 bytes is at the limit and stays whole.
    const struct {
        size_t size;
        int32_t kb;
        size_t start;
    } rows[] = {{1024, 1, 0}, {1025, 1, 683}, {5000000, 1000, 3333333}};
    for (const auto& row : rows) {
        TempDir dir(true);
        OwnTrace t;
        t.place(dir.path(), L"big");
        t.obj.nSizeKB = row.kb;
        const std::wstring name = std::wstring(t.obj.szBaseName) + date_back(0) + L".log";
        const std::string bytes = numbered_bytes(row.size);
        write_bytes(name, bytes);
        t.obj.bFile = 1;
        TraceCheckFile(&t.obj);
        CAPTURE(row.size);
        CHECK(t.obj.bFile == 1);
        CHECK(read_bytes(name) == bytes.substr(row.start));
        CHECK(count_files(dir.path(), L"TRA*.tmp") == 0);
    }
}

TEST_CASE("a trim that can't run leaves the trace file as it was")
{
    TempDir dir(true);
    const std::wstring name = dir.file(L"t.log");
    std::string bytes = numbered_bytes(300000);
    write_bytes(name, bytes);
    // Without the large buffer the copy runs in several small steps.
    zor_alloc_probe::fail_nth(1);
    CHECK(TraceTrimFile(name.c_str(), 300000) == 1);
    zor_alloc_probe::fail_nth(0);
    CHECK(read_bytes(name) == bytes.substr(200000));
    bytes = read_bytes(name);
    {
        NoLeak no_leak;
        AllAllocationsFail no_memory;
        CHECK(TraceTrimFile(name.c_str(), 100000) == 0);
    }
    CHECK(count_files(dir.path(), L"TRA*.tmp") == 0);

    // A handle held without sharing: the temporary file stays behind, and
    // the check gives up the file and debug sinks and the levels, but not
    // the event log and the mailslot.
    OwnTrace t;
    t.place(dir.path(), L"held");
    t.obj.nSizeKB = 1;
    const std::wstring daily = std::wstring(t.obj.szBaseName) + date_back(0) + L".log";
    write_bytes(daily, bytes);
    HANDLE held = CreateFileW(daily.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    REQUIRE(held != INVALID_HANDLE_VALUE);
    CHECK(TraceTrimFile(daily.c_str(), 100000) == 0);
    CHECK(count_files(dir.path(), L"TRA*.tmp") == 1);
    t.obj.bFile = t.obj.bDebug = t.obj.bEventLog = t.obj.bMailslot = 1;
    t.obj.dwLevelMask = 31;
    TraceCheckFile(&t.obj);
    CloseHandle(held);
    CHECK(read_bytes(daily) == bytes);
    CHECK(t.obj.bFile == 0);
    CHECK(t.obj.bDebug == 0);
    CHECK(t.obj.dwLevelMask == 0);
    CHECK(t.obj.szFile[0] == 0);
    CHECK(t.obj.bEventLog == 1);
    CHECK(t.obj.bMailslot == 1);
}
