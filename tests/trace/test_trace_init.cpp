#include "private_key.h"
#include "trace_fixture.h"

namespace {

const std::vector<std::string> kBanner = {"*** T R A C E   S T A R T E D",
                                          "*** Disabled Facilities: "};

// A key of the test's own under HKEY_LOCAL_MACHINE and an object started
// from it.
struct Started {
    PrivateKey key{HKEY_LOCAL_MACHINE, L"SOFTWARE"};
    OwnTrace t;
    TraceObject& start(const wchar_t* file_name = nullptr, int32_t per_process = 0)
    {
        DeleteCriticalSection(&t.obj.cs);
        TraceInit(&t.obj, key.path().c_str(), file_name, per_process);
        return t.obj;
    }
};

std::wstring text(const wchar_t* field)
{
    return field;
}

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
    CHECK(file_texts(TraceObj.szFile, 'A') == kBanner);
    TraceObj.bFile = 0;
}

TEST_CASE("settings from the registry, with their defaults and limits")
{
    TempDir dir(true);
    Started s;
    TraceObject& obj = s.start();
    const uint16_t event_types[6] = {4, 0, 4, 2, 1, 4};
    CHECK(obj.nSizeKB == 10000);
    CHECK(obj.bNT == 1);
    CHECK(text(obj.szEventSource) == L"ZOR-STDTrace");
    CHECK(text(obj.szMailslot) == L"\\\\*\\mailslot\\");
    CHECK(memcmp(obj.awEventType, event_types, sizeof event_types) == 0);
    CHECK(TraceAnySink(&obj) == 0);

    EnableTrace(&obj, 5, 0);
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
    CHECK(obj.nSizeKB == -1);
    CHECK(obj.nDays == 3);
    CHECK(obj.dwLevelMask == 6);
    CHECK(obj.bDebug == 5);
    CHECK(obj.bMailslot == 1);
    CHECK(text(obj.szEventSource) == std::wstring(29, L'e'));
    CHECK(text(obj.szMailslot) == L"\\\\*\\mailslot\\" + std::wstring(86, L'm'));
    CHECK(text(obj.szPath) == dir.path() + L"\\");
    CHECK(text(obj.szFile) == L"");
    for (uint32_t facility = 0; facility < 256; ++facility)
        CHECK(obj.aFacility[facility] == !(facility == 0 || facility == 7 || facility == 255));

    // One unit more than each area holds: the default, or the sink off
    // where a shortened name would be the only other way.
    s.key.set_text(L"EVENTSOURCE", std::wstring(30, L'e'));
    s.key.set_text(L"MAILSLOT", std::wstring(87, L'm'));
    s.key.set_text(L"TRACEPATH", std::wstring(99, L'd'));
    s.key.set_text(L"DISABLED_FACILITIES", std::wstring(249, L'9') + L"1");
    s.key.set_dword(L"TRACEFILE", 1);
    s.start(L"x");
    CHECK(text(obj.szEventSource) == L"ZOR-STDTrace");
    CHECK(obj.bMailslot == 0);
    CHECK(text(obj.szMailslot) == L"");
    CHECK(obj.bFile == 0);
    CHECK(text(obj.szPath) == L"");
    CHECK(obj.aFacility[1] == 1);
    CHECK(obj.aFacility[5] == 1);

    // Texts beyond their read areas count as absent; one that fills its
    // area is read.
    s.key.set_text(L"TRACEPATH", std::wstring(100, L'd'));
    s.key.set_text(L"MAILSLOT", std::wstring(250, L'm'));
    s.key.set_text(L"DEFAULT_TRACEFILE", std::wstring(255, L'f'));
    s.key.set_text(L"DISABLED_FACILITIES", L"5" + std::wstring(248, L','));
    s.start();
    CHECK(text(obj.szPath) == L"");
    CHECK(text(obj.szMailslot) == L"\\\\*\\mailslot\\");
    CHECK(obj.bMailslot == 1);
    CHECK(text(obj.szFile) == date_back(0) + L".log");
    CHECK(obj.aFacility[5] == 0);

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
    const std::wstring id = std::to_wstring(GetCurrentProcessId()), too_long(243, L'n');
    const struct {
        const wchar_t* path;
        const wchar_t* argument;
        const wchar_t* registry;
        int32_t per_process;
        std::wstring stem; // below the directory; "-" for no file sink
    } rows[] = {
        {L"", nullptr, nullptr, 0, L""},
        {L"", L"", L"reg", 0, L"reg"},
        {L"\\", L"arg", L"reg", 0, L"arg"},
        {L"/", nullptr, L"reg", 0, L"reg"},
        {L"", L"app", nullptr, 1, L"app." + id + L"."},
        {L"", nullptr, nullptr, 1, id + L"."},
        {L"", too_long.c_str(), nullptr, 0, L"-"},
    };
    for (const auto& row : rows) {
        Started s;
        s.key.set_dword(L"TRACEFILE", 1);
        if (*row.path)
            s.key.set_text(L"TRACEPATH", dir.path() + row.path);
        if (row.registry)
            s.key.set_text(L"DEFAULT_TRACEFILE", row.registry);
        TraceObject& obj = s.start(row.argument, row.per_process);
        const bool on = row.stem != L"-";
        const std::wstring stem = on ? (*row.path ? dir.path() + row.path : L"") + row.stem : L"";
        CAPTURE(row.stem);
        CHECK(text(obj.szBaseName) == stem);
        CHECK(obj.bFile == on);
        if (on) {
            CHECK(text(obj.szFile) == stem + date_back(0) + L".log");
            CHECK(file_texts(obj.szFile, 'A') == kBanner);
            DeleteFileW(obj.szFile);
        }
    }

    // Level mask 0: the banner reaches the file, later lines do not; a file
    // over the limit is cut before the banner is written.
    Started s;
    s.key.set_dword(L"TRACEFILE", 1);
    s.key.set_dword(L"TRACESIZE", 2);
    s.key.set_text(L"DISABLED_FACILITIES", L"3,1");
    const std::string old_bytes = numbered_bytes(4000);
    write_bytes(dir.file(L"full" + date_back(0) + L".log"), old_bytes);
    TraceObject& obj = s.start(L"full");
    TraceVA(&obj, 5, L"not at level 0");
    const std::string kept = read_bytes(obj.szFile);
    CHECK(kept.substr(0, 1334) == old_bytes.substr(2666));
    write_bytes(obj.szFile, kept.substr(1334));
    CHECK(file_texts(obj.szFile, 'A') ==
          std::vector<std::string>{kBanner[0], kBanner[1] + "1, 3"});
}

TEST_CASE("an event-log sink enters its source under the local machine at start")
{
    Started s;
    const std::wstring source = L"zortrace" + std::to_wstring(GetCurrentProcessId());
    const std::wstring key =
        L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\" + source;
    s.key.set_dword(L"TRACEEVENTLOG", 1);
    s.key.set_text(L"EVENTSOURCE", source);
    CHECK(s.start().bEventLog == 1);
    wchar_t file[100] = {};
    DWORD size = sizeof file, type = 0, types = 0;
    CHECK(RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"EventMessageFile",
                       RRF_RT_ANY | RRF_NOEXPAND, &type, file, &size) == ERROR_SUCCESS);
    CHECK(type == REG_EXPAND_SZ);
    CHECK(text(file) == L"%SystemRoot%\\System\\" + source + L".msg");
    size = sizeof types;
    CHECK(RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"TypesSupported", RRF_RT_REG_DWORD,
                       nullptr, &types, &size) == ERROR_SUCCESS);
    CHECK(types == 7);
    PrivateKey::delete_tree(HKEY_LOCAL_MACHINE, key);
}
