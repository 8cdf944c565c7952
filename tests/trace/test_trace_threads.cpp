#include "trace_fixture.h"
#include "trace_listeners.h"

namespace {

constexpr int kThreads = 4;
constexpr int kLines = 500;

struct Writer {
    TraceObject* obj;
    int id;
};

std::wstring line_text(int id, int index)
{
    wchar_t text[64];
    swprintf(text, 64, L"thread %d line %03d of the concurrent run", id, index);
    return text;
}

DWORD WINAPI write_lines(void* arg)
{
    auto* writer = static_cast<Writer*>(arg);
    for (int i = 0; i < kLines; ++i)
        Trace(writer->obj, 3, line_text(writer->id, i).c_str(), nullptr);
    return 0;
}

void run_writers(TraceObject* obj)
{
    Writer writers[kThreads];
    HANDLE threads[kThreads];
    for (int k = 0; k < kThreads; ++k) {
        writers[k] = {obj, k};
        threads[k] = CreateThread(nullptr, 0, write_lines, &writers[k], 0, nullptr);
        REQUIRE(threads[k] != nullptr);
    }
    WaitForMultipleObjects(kThreads, threads, TRUE, INFINITE);
    for (HANDLE thread : threads)
        CloseHandle(thread);
}

template <class Text>
std::string fault(const char* what, const Text& line)
{
    std::string shown = what;
    for (auto unit : line)
        shown += static_cast<char>(unit);
    return shown;
}

// Empty when every line is whole and each thread's lines stand in their
// order; with `complete`, also when each line arrived exactly once.
// Otherwise the first fault.
template <class Text>
std::string verify(const std::vector<Text>& lines, bool complete)
{
    int next[kThreads] = {};
    for (const Text& line : lines) {
        std::wstring text(line.begin(), line.end());
        int id = -1, index = -1;
        if (!has_prefix(text, 'W') ||
            swscanf(text.c_str() + 18, L"thread %d line %d", &id, &index) != 2 || id < 0 ||
            id >= kThreads || text.compare(18, std::wstring::npos, line_text(id, index)) != 0)
            return fault("broken line: ", line);
        if (index < next[id] || (complete && index != next[id]))
            return fault("out of order: ", line);
        next[id] = index + 1;
    }
    for (int count : next)
        if (complete && count != kLines)
            return "lines missing";
    return "";
}

// The debug and mailslot sinks of an object switched on, with a listener
// at each.
struct Listening {
    explicit Listening(OwnTrace& t)
    {
        t.obj.bDebug = 1;
        t.obj.bMailslot = 1;
        hTraceMailslot = INVALID_HANDLE_VALUE;
        wcscpy(t.obj.szMailslot, slot.name().c_str());
    }
    void finish(std::vector<std::wstring>& messages, std::vector<std::string>& debug)
    {
        messages = slot.finish();
        debug = monitor.finish();
        CloseHandle(hTraceMailslot);
        hTraceMailslot = INVALID_HANDLE_VALUE;
    }
    MailslotReader slot;
    DebugMonitor monitor;
};

}

TEST_CASE("debug output and mailslot messages, and a mailslot opened anew")
{
    TempDir dir(true);
    OwnTrace t;
    t.obj.dwLevelMask = 31;
    Listening listening(t);

    Trace(&t.obj, 3, L"first", nullptr);
    // A handle that can't be written to stands in for a slot whose reader
    // went away: that line is lost and the next one opens the slot again.
    write_bytes(dir.file(L"r"), "");
    CloseHandle(hTraceMailslot);
    hTraceMailslot = CreateFileW(dir.file(L"r").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                 0, nullptr);
    Trace(&t.obj, 3, L"lost", nullptr);
    bool reset = hTraceMailslot == INVALID_HANDLE_VALUE;
    Trace(&t.obj, 3, L"again", nullptr);
    TraceAscii(&t.obj, 3, L"d", L"xyz", 3);

    std::vector<std::wstring> messages;
    std::vector<std::string> debug;
    listening.finish(messages, debug);

    CHECK(reset);
    REQUIRE(messages.size() == 2);
    CHECK(messages[0].substr(18) == std::wstring(L"first") + L'\0');
    CHECK(messages[1].substr(18) == std::wstring(L"again") + L'\0');
    CHECK(has_prefix(messages[1], 'W'));
    REQUIRE(debug.size() == 10);
    const char* texts[] = {"first", "lost", "again", "ASCII Dump: d (3 Chars)"};
    for (int i = 0; i < 4; ++i) {
        CHECK(has_prefix(debug[2 * i], 'W'));
        CHECK(debug[2 * i].substr(18) == texts[i]);
        CHECK(debug[2 * i + 1] == "\n");
    }
    CHECK(debug[8] == "xyz");
}

TEST_CASE("four threads: each line once and whole in every sink, in each thread's order")
{
    TempDir dir(true);
    OwnTrace t;
    t.to_file(dir.path(), L"mt");
    Listening listening(t);
    run_writers(&t.obj);
    std::vector<std::wstring> messages;
    std::vector<std::string> debug;
    listening.finish(messages, debug);

    CHECK(verify(file_lines(t.obj.szFile), true) == "");
    for (std::wstring& message : messages) {
        CHECK(message.back() == L'\0');
        message.pop_back();
    }
    CHECK(verify(messages, true) == "");
    REQUIRE(debug.size() == 2 * kThreads * kLines);
    std::vector<std::string> debug_lines;
    for (size_t i = 0; i < debug.size(); i += 2) {
        debug_lines.push_back(debug[i]);
        CHECK(debug[i + 1] == "\n");
    }
    CHECK(verify(debug_lines, true) == "");

    // With a limit of 1 KiB the file is cut again and again while the other
    // threads wait: it stays below the limit plus a line, and only its first
    // line may be a fragment.
    t.to_file(dir.path(), L"small");
    t.obj.bDebug = 0;
    t.obj.bMailslot = 0;
    t.obj.nSizeKB = 1;
    run_writers(&t.obj);
    CHECK(t.obj.bFile == 1);
    std::vector<std::string> lines = file_lines(t.obj.szFile);
    REQUIRE(lines.size() > 2);
    CHECK(read_bytes(t.obj.szFile).size() <= 1024 + lines.back().size() + 2);
    lines.erase(lines.begin());
    CHECK(verify(lines, false) == "");
    CHECK(count_files(dir.path(), L"TRA*.tmp") == 0);
}
