#include "private_key.h"
#include "trace_fixture.h"

namespace {

const std::string kBanner = "*** T R A C E   S T A R T E D";

// A key of the test's own under HKEY_LOCAL_MACHINE and a started object.
struct Started {
    PrivateKey key{HKEY_LOCAL_MACHINE, L"SOFTWARE"};
    OwnTrace t;
    void start(const wchar_t* file_name = nullptr, int32_t per_process = 0)
    {
        DeleteCriticalSection(&t.obj.cs);
        TraceInit(&t.obj, key.path().c_str(), file_name, per_process);
    }
    std::wstring field(const wchar_t* text) const { return text; }
};

}

TEST_CASE("the library's object stays silent until it is started, and starts once")
{
    TempDir dir(true);
    PrivateKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE");
    key.set_dword(L"TRACEFILE", 1);
    key.set_dword(L"TRACELEVEL", 31);
    TraceVA(GetTraceObj(), 5, L"before");
    CHECK(IsTraceObjInitialized() == 0);
    CHECK(count_files(dir.path(), L"*.log") == 0);

    TraceInit(&TraceObj, key.path().c_str(), L"main", 0);
    CHECK(IsTraceObjInitialized() == 1);
    TraceObject after_first;
    memcpy(&after_first, &TraceObj, sizeof after_first);
    key.set_dword(L"TRACELEVEL", 1);
    TraceInit(&TraceObj, key.path().c_str(), L"other", 1);
    CHECK(memcmp(&after_first, &TraceObj, sizeof after_first) == 0);
    CHECK(file_texts(TraceObj.szFile, 'A') ==
          std::vector<std::string>{kBanner, "*** Disabled Facilities: "});
    TraceObj.bFile = 0;
}

TEST_CASE("settings from the registry, with their defaults and limits")
{
    TempDir dir(true);
    const std::wstring digits99(99, L'd');
    {
        Started s;
        s.start();
        CHECK(s.t.obj.nSizeKB == 10000);
        CHECK(s.t.obj.bNT == 1);
        CHECK(s.field(s.t.obj.szEventSource) == L"ZOR-STDTrace");
        CHECK(s.field(s.t.obj.szMailslot) == L"\\\\*\\mailslot\\");
        CHECK(s.t.obj.awEventType[4] == 1);
        CHECK(TraceAnySink(&s.t.obj) == 0);

        EnableTrace(&s.t.obj, 5, 0);
        s.key.set_dword(L"TRACESIZE", 0xFFFFFFFF);
        s.key.set_dword(L"TRACEDAYS", 3);
        s.key.set_dword(L"TRACELEVEL", 6);
        s.key.set_dword(L"TRACEDEBUG", 5);
        s.key.set_dword(L"TRACEMAILSLOT", 1);
        s.key.set_text(L"EVENTSOURCE", std::wstring(29, L'e'));
        s.key.set_text(L"MAILSLOT", std::wstring(86, L'm'));
        s.key.set_text(L"TRACEPATH", dir.path());
        s.key.set_text(L"DISABLED_FACILITIES", L"0;255 256,x7 99999999999");
        s.start();
        CHECK(s.t.obj.nSizeKB == -1);
        CHECK(s.t.obj.nDays == 3);
        CHECK(s.t.obj.dwLevelMask == 6);
        CHECK(s.t.obj.bDebug == 5);
        CHECK(s.t.obj.bMailslot == 1);
        CHECK(s.field(s.t.obj.szEventSource) == std::wstring(29, L'e'));
        CHECK(s.field(s.t.obj.szMailslot) == L"\\\\*\\mailslot\\" + std::wstring(86, L'm'));
        CHECK(s.field(s.t.obj.szPath) == dir.path() + L"\\");
        CHECK(s.field(s.t.obj.szFile) == L"");
        for (uint32_t facility = 0; facility < 256; ++facility)
            CHECK(TraceFacilityEnabled(&s.t.obj, 0, facility) ==
                  (facility == 0 || facility == 7 || facility == 255 ? 0 : 1));

        // One unit more than each area holds: the default, or the sink off
        // where a shortened name would be the only other way.
        s.key.set_text(L"EVENTSOURCE", std::wstring(30, L'e'));
        s.key.set_text(L"MAILSLOT", std::wstring(87, L'm'));
        s.key.set_text(L"TRACEPATH", digits99);
        s.key.set_text(L"DISABLED_FACILITIES", std::wstring(249, L'9') + L"1");
        s.key.set_dword(L"TRACEFILE", 1);
        s.start(L"x");
        CHECK(s.field(s.t.obj.szEventSource) == L"ZOR-STDTrace");
        CHECK(s.t.obj.bMailslot == 0);
        CHECK(s.field(s.t.obj.szMailslot) == L"");
        CHECK(s.t.obj.bFile == 0);
        CHECK(s.field(s.t.obj.szPath) == L"");
        CHECK(TraceFacilityEnabled(&s.t.obj, 0, 1) == 1);
        CHECK(TraceFacilityEnabled(&s.t.obj, 0, 5) == 1);

        // Texts beyond their read areas count as absent; one that fills its
        // area is read.
        s.key.set_text(L"TRACEPATH", digits99 + L"d");
        s.key.set_text(L"MAILSLOT", std::wstring(250, L'm'));
        s.key.set_text(L"DEFAULT_TRACEFILE", std::wstring(255, L'f'));
        s.key.set_text(L"DISABLED_FACILITIES", L"5" + std::wstring(248, L','));
        s.start();
        CHECK(s.field(s.t.obj.szPath) == L"");
        CHECK(s.field(s.t.obj.szMailslot) == L"\\\\*\\mailslot\\");
        CHECK(s.t.obj.bMailslot == 1);
        CHECK(s.field(s.t.obj.szFile) == date_back(0) + L".log");
        CHECK(TraceFacilityEnabled(&s.t.obj, 0, 5) == 0);
    }

    OwnTrace missing;
    DeleteCriticalSection(&missing.obj.cs);
    TraceInit(&missing.obj, L"SOFTWARE\\zortrace-no-such-key", L"x", 0);
    CHECK(TraceAnySink(&missing.obj) == 0);
    CHECK(missing.obj.szMailslot[0] == 0);
    CHECK(missing.obj.nSizeKB == 10000);
}

TEST_CASE("the trace file's name, its banner and its check at start")
{
    TempDir dir(true);
    const std::wstring today = date_back(0);
    struct Row {
        const wchar_t* path;
        const wchar_t* argument;
        const wchar_t* registry;
        int32_t per_process;
        std::wstring stem; // below the directory; "-" for no file sink
    };
    std::wstring id = std::to_wstring(GetCurrentProcessId());
    std::wstring too_long(243, L'n');
    const Row rows[] = {
        {L"", nullptr, nullptr, 0, L""},
        {L"", L"", L"reg", 0, L"reg"},
        {L"\\", L"arg", L"reg", 0, L"arg"},
        {L"/", nullptr, L"reg", 0, L"reg"},
        {L"", L"app", nullptr, 1, L"app." + id + L"."},
        {L"", nullptr, nullptr, 1, id + L"."},
        {L"", too_long.c_str(), nullptr, 0, L"-"},
    };
    for (const Row& row : rows) {
        Started s;
        s.key.set_dword(L"TRACEFILE", 1);
        if (*row.path)
            s.key.set_text(L"TRACEPATH", dir.path() + row.path);
        if (row.registry)
            s.key.set_text(L"DEFAULT_TRACEFILE", row.registry);
        s.start(row.argument, row.per_process);
        std::wstring expected_stem =
            row.stem == L"-" ? L"" : (*row.path ? dir.path() + row.path : L"") + row.stem;
        CAPTURE(row.stem);
        CHECK(s.field(s.t.obj.szBaseName) == expected_stem);
        CHECK(s.t.obj.bFile == (row.stem == L"-" ? 0 : 1));
        if (row.stem != L"-") {
            CHECK(s.field(s.t.obj.szFile) == expected_stem + today + L".log");
            CHECK(file_texts(s.t.obj.szFile, 'A') ==
                  std::vector<std::string>{kBanner, "*** Disabled Facilities: "});
            DeleteFileW(s.t.obj.szFile);
        }
    }

    // Level mask 0: the banner reaches the file, later lines do not; a file
    // over the limit is cut before the banner is written.
    Started s;
    s.key.set_dword(L"TRACEFILE", 1);
    s.key.set_dword(L"TRACESIZE", 2);
    s.key.set_text(L"DISABLED_FACILITIES", L"3,1");
    std::string old_bytes = numbered_bytes(4000);
    write_bytes(dir.file(L"full" + today + L".log"), old_bytes);
    s.start(L"full");
    TraceVA(&s.t.obj, 5, L"not at level 0");
    std::string kept = read_bytes(s.t.obj.szFile);
    CHECK(kept.substr(0, 1334) == old_bytes.substr(2666));
    write_bytes(s.t.obj.szFile, kept.substr(1334));
    CHECK(file_texts(s.t.obj.szFile, 'A') ==
          std::vector<std::string>{kBanner, "*** Disabled Facilities: 1, 3"});
}

TEST_CASE("an event-log sink enters its source at start")
{
    Started s;
    std::wstring source = L"zortrace-init" + std::to_wstring(GetCurrentProcessId());
    s.key.set_dword(L"TRACEEVENTLOG", 1);
    s.key.set_text(L"EVENTSOURCE", source);
    s.start();
    std::wstring key = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\" + source;
    DWORD types = 0, size = sizeof types;
    CHECK(RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"TypesSupported", RRF_RT_REG_DWORD,
                       nullptr, &types, &size) == ERROR_SUCCESS);
    CHECK(types == 7);
    CHECK(s.t.obj.bEventLog == 1);
    PrivateKey::delete_tree(HKEY_LOCAL_MACHINE, key);
}
