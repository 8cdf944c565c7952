// follow and listen while the trace writes: each run is bounded by --count
// and --seconds, and every wait of the test has a time limit.
#include "zortrace_fixture.h"

namespace {

constexpr DWORD kPatience = 20000;

// The texts of printed trace lines, without their prefix.
std::vector<std::string> texts_of(const std::string& printed)
{
    std::vector<std::string> texts;
    for (const std::string& line : lines_of(printed))
        texts.push_back(line.size() >= 18 ? line.substr(18) : line);
    return texts;
}

std::wstring numbered(const wchar_t* text, int n)
{
    wchar_t line[32];
    swprintf(line, 32, L"%ls %03d", text, n);
    return line;
}

} // namespace

TEST_CASE("follow prints every line once, across a trim and on into the next day's file, until Ctrl+C")
{
    TestTrace trace;
    trace.to_files(1);
    trace.start();
    std::vector<std::string> expected{"*** T R A C E   S T A R T E D", "*** Disabled Facilities: "};
    auto write = [&](int from, int to) {
        for (int i = from; i <= to; ++i) {
            Trace(&trace.obj, 2, numbered(L"line", i).c_str(), nullptr);
            expected.push_back(utf8(numbered(L"line", i)));
        }
    };
    Child follower(L"zortrace.exe", {L"follow", trace.stem(), L"--seconds", L"60"}, "", true);
    REQUIRE(follower.wait_for("Disabled Facilities", kPatience));
    write(1, 28);
    REQUIRE(follower.wait_for("line 028", kPatience));
    write(29, 40);
    // The 1 KiB limit was passed: the file lost its first lines.
    CHECK(trace.obj.bFile == 1);
    CHECK(file_text(trace.obj.szFile).find("line 001") == std::string::npos);
    REQUIRE(follower.wait_for("line 040", kPatience));
    write(41, 45);
    std::wstring today = date_from_today(0), tomorrow = date_from_today(1);
    std::string stamp = "I" + utf8(tomorrow.substr(6, 2) + tomorrow.substr(4, 2) + tomorrow.substr(2, 2));
    write_file(trace.stem() + tomorrow + L".log",
               stamp + " 000000001 next 001\r\n" + stamp + " 000000002 next 002\r\n");
    expected.push_back("next 001");
    expected.push_back("next 002");
    REQUIRE(follower.wait_for("next 002", kPatience));
    CHECK(follower.interrupt(kPatience) == 0);
    CHECK(texts_of(follower.out()) == expected);
    CHECK(follower.err() == "");
}

TEST_CASE("listen prints the trace's mailslot lines as they come, other messages as hex, and refuses a taken name")
{
    TestTrace trace;
    std::wstring name = L"zortrace-listen-" + std::to_wstring(GetCurrentProcessId());
    trace.key.set_dword(L"TRACEMAILSLOT", 1);
    trace.key.set_dword(L"TRACELEVEL", 31);
    trace.key.set_text(L"MAILSLOT", name);
    Child listener(L"zortrace.exe", {L"listen", name, L"--count", L"3", L"--seconds", L"60"});
    REQUIRE(listener.wait_for("listening on", kPatience, true));

    Outcome taken = zortrace({L"listen", name});
    CHECK(taken.status == 1);
    CHECK(taken.err.find("another program has it") != std::string::npos);

    // A second writer is refused while the trace's sink holds the slot
    // open, so this one goes first.
    HANDLE slot = CreateFileW((L"\\\\.\\mailslot\\" + name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    REQUIRE(slot != INVALID_HANDLE_VALUE);
    DWORD written = 0;
    WriteFile(slot, "ab\0", 3, &written, nullptr);
    CloseHandle(slot);
    trace.start();
    // The broadcast name that the configuration makes, \\*\mailslot\NAME,
    // can't be opened under Wine: the sink gets the local name of the slot.
    wcscpy(trace.obj.szMailslot, (L"\\\\.\\mailslot\\" + name).c_str());
    TraceVA(&trace.obj, 3, L"warned %d times", 7);
    Trace(&trace.obj, 4, L"Gr\u00fc\u00dfe", nullptr);

    CHECK(listener.finish(kPatience) == 0);
    std::vector<std::string> lines = lines_of(listener.out());
    REQUIRE(lines.size() == 3);
    CHECK(lines[0] == "(3 bytes that are no wide line) 61 62 00");
    CHECK(lines[1].substr(0, 1) == "W");
    CHECK(lines[1].substr(18) == "warned 7 times");
    CHECK(lines[2].substr(18) == "Gr\xc3\xbc\xc3\x9f" "e");
}
