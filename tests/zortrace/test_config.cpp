// config against what TraceInit really applied from the same key, and
// config --set read back by TraceInit.
#include "zortrace_fixture.h"

#include <map>

namespace {

// The fields of `config`'s output by their label; notes under "note", joined.
std::map<std::string, std::string> fields_of(const std::string& printed)
{
    std::map<std::string, std::string> fields;
    for (const std::string& line : lines_of(printed)) {
        std::string label = line.substr(0, line.find_last_not_of(' ', 13) + 1);
        std::string& field = fields[label];
        field += (field.empty() ? "" : "\n") + line.substr(14);
    }
    return fields;
}

std::string letters_of(uint32_t mask)
{
    std::string letters = mask >> 31 ? "?" : "";
    for (int bit = 0; bit < 5; ++bit)
        if (mask >> bit & 1)
            letters += "DIWEA"[bit];
    return letters;
}

std::string disabled_of(const TraceObject& obj)
{
    std::string list;
    for (int facility = 0; facility < 256; ++facility)
        if (!obj.aFacility[facility])
            list += (list.empty() ? "" : ", ") + std::to_string(facility);
    return list.empty() ? "none" : list;
}

// What config says about the key against the object that TraceInit started.
void check_against(TestTrace& trace, const std::map<std::string, std::string>& fields)
{
    const TraceObject& obj = trace.obj;
    std::string on;
    for (auto [flag, name] : {std::pair<int, const char*>{obj.bFile, "file"}, {obj.bDebug, "debug output"},
                              {obj.bEventLog, "event log"}, {obj.bMailslot, "mailslot"}})
        if (flag)
            on += (on.empty() ? "" : ", ") + std::string(name);
    CHECK(fields.at("sinks on") == (on.empty() ? "none" : on));
    if (obj.bFile)
        CHECK(fields.at("file today") == utf8(obj.szFile));
    CHECK(fields.at("levels") == letters_of(obj.dwLevelMask) + " (TRACELEVEL " + std::to_string(obj.dwLevelMask) + ")");
    CHECK(fields.at("disabled") == disabled_of(obj));
    CHECK(fields.at("retention") == (obj.nDays > 0 ? std::to_string(obj.nDays) + " days" : "all files kept"));
    CHECK(fields.at("size limit").rfind(std::to_string(obj.nSizeKB) + " KiB", 0) == 0);
    CHECK(fields.at("event source") == utf8(obj.szEventSource));
    if (obj.bMailslot)
        CHECK(fields.at("mailslot") == utf8(obj.szMailslot));
}

} // namespace

TEST_CASE("config prints what TraceInit applied from the key and names the values that it ignored")
{
    TestTrace trace;
    trace.to_files(5);
    trace.key.set_dword(L"TRACELEVEL", 0x0000001C);
    trace.key.set_dword(L"TRACEDAYS", 7);
    trace.key.set_dword(L"TRACEMAILSLOT", 1);
    trace.key.set_text(L"MAILSLOT", L"zortrace-config");
    trace.key.set_text(L"DISABLED_FACILITIES", L"0, 255;256 7");
    trace.key.set_text(L"EVENTSOURCE", std::wstring(30, L'e'));
    trace.key.set_text(L"TRACEDAYS_", L"typo");
    trace.key.set_text(L"TRACEDEBUG", L"1");
    trace.start();

    Outcome shown = zortrace({L"config", trace.key.path()});
    CHECK(shown.status == 0);
    std::map<std::string, std::string> fields = fields_of(shown.out);
    check_against(trace, fields);
    const std::string& notes = fields["note"];
    for (const char* note : {"\"EVENTSOURCE\" does not fit its 29 units", "\"TRACEDAYS_\" is not a value",
                             "facility 256 in \"DISABLED_FACILITIES\" has no switch",
                             "\"TRACEDEBUG\" is stored as a text: its bytes read as the number 49"}) {
        CAPTURE(std::string(note));
        CHECK(notes.find(note) != std::string::npos);
    }

    // The application's own file name wins over the key's.
    trace.start(L"named");
    fields = fields_of(zortrace({L"config", trace.key.path(), L"--file", L"named"}).out);
    check_against(trace, fields);
    CHECK(fields["note"].find("\"DEFAULT_TRACEFILE\" is not read") != std::string::npos);

    // Names too long for their fields leave their sinks off.
    trace.key.set_text(L"TRACEPATH", std::wstring(99, L'p'));
    trace.key.set_text(L"MAILSLOT", std::wstring(87, L'm'));
    trace.start();
    fields = fields_of(zortrace({L"config", trace.key.path()}).out);
    check_against(trace, fields);
    CHECK(fields["note"].find("\"TRACEPATH\" leaves no room for its separator") != std::string::npos);
    CHECK(fields["note"].find("\"MAILSLOT\" is longer than 86 units") != std::string::npos);

    Outcome missing = zortrace({L"config", trace.key.path() + L"\\missing"});
    CHECK(missing.status == 1);
    CHECK(missing.err.find("TraceInit would leave every sink off") != std::string::npos);
}

TEST_CASE("config --set writes what TraceInit reads and refuses what it could not use")
{
    TestTrace trace;
    Outcome written = zortrace({L"config", trace.key.path(), L"--set", L"TRACELEVEL=ewa", L"--set", L"TRACESIZE=2097151",
                                L"--set", L"TRACEDAYS=0x10", L"--set", L"TRACEFILE=1", L"--set", L"DEFAULT_TRACEFILE=app",
                                L"--set", L"DISABLED_FACILITIES=3 9", L"--set", L"MAILSLOT=slot"});
    CHECK(written.status == 0);
    CHECK(lines_of(written.out).size() == 7);
    const struct {
        const wchar_t* set;
        const char* message;
    } refused[] = {
        {L"TRACESIZE=2097152", "from 0 to 2097151"},
        {L"TRACEDAYS=-1", "from 0 to 65535"},
        {L"TRACEFILE=2", "from 0 to 1"},
        {L"TRACELEVEL=64", "bits 0 to 4 and 31"},
        {L"EVENTSOURCE=012345678901234567890123456789", "at most 29 units"},
        {L"DISABLED_FACILITIES=1, 256", "facility 256 has no switch"},
        {L"TRACECOLOR=1", "not a value that the trace reads"},
        {L"TRACEFILE", "NAME=VALUE"},
    };
    for (const auto& row : refused) {
        Outcome set = zortrace({L"config", trace.key.path(), L"--set", row.set});
        CAPTURE(utf8(row.set));
        CHECK(set.status == 2);
        CHECK(set.err.find(row.message) != std::string::npos);
    }
    std::wstring tooLong = L"MAILSLOT=" + std::wstring(87, L'm');
    CHECK(zortrace({L"config", trace.key.path(), L"--set", L"TRACEDAYS=3", L"--set", tooLong}).status == 2);
    trace.key.set_text(L"TRACEPATH", trace.dir.path());
    trace.start();
    CHECK(trace.obj.dwLevelMask == 0x1C);
    CHECK(trace.obj.nSizeKB == 2097151);
    CHECK(trace.obj.nDays == 16);
    CHECK(trace.obj.bFile == 1);
    CHECK(std::wstring(trace.obj.szBaseName) == trace.stem());
    CHECK(trace.obj.aFacility[3] == 0);
    CHECK(trace.obj.aFacility[9] == 0);
    CHECK(std::wstring(trace.obj.szMailslot) == L"\\\\*\\mailslot\\slot");
}
