#include "trace_fixture.h"
#include "trace_listeners.h"

namespace {

constexpr int kThreads = 4;
constexpr int kLines = 500;

std::wstring line_text(int id, int index)
{
    wchar_t text[64];
    swprintf(text, 64, L"thread %d line %03d of the concurrent run", id, index);
    return text;
}

DWORD WINAPI write_lines(void* obj)
{
    static volatile LONG next_id = 0;
    const int id = InterlockedIncrement(&next_id) % kThreads;
    for (int i = 0; i < kLines; ++i)
        Trace(static_cast<TraceObject*>(obj), 3, line_text(id, i).c_str(), nullptr);
    return 0;
}

void run_writers(TraceObject& obj)
{
    HANDLE threads[kThreads];
    for (HANDLE& thread : threads)
        REQUIRE((thread = CreateThread(nullptr, 0, write_lines, &obj, 0, nullptr)) != nullptr);
    WaitForMultipleObjects(kThreads, threads, TRUE, INFINITE);
    for (HANDLE thread : threads)
        CloseHandle(thread);
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
        bool whole = has_prefix(text, 'W') &&
                     swscanf(text.c_str() + 18, L"thread %d line %d", &id, &index) == 2 &&
                     id >= 0 && id < kThreads &&
                     text.compare(18, std::wstring::npos, line_text(id, index)) == 0;
        if (!whole || index < next[id] || (complete && index != next[id]))
            return std::string(whole ? "out of order: " : "broken line: ")
                .append(line.begin(), line.end());
        next[id] = index + 1;
    }
    for (int count : next)
        if (complete && count != kLines)
            return "lines missing";
    return "";
}

}

TEST_CASE("debug output and mailslot messages, and a mailslot opened anew")
{
    TempDir dir(true);
    OwnTrace t;
    t.obj.dwLevelMask = 31;
    Listening listening(t.obj);
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
    listening.finish();

    CHECK(reset);
    // The texts behind the prefix; what has no prefix as it is.
    auto texts = [](const std::vector<std::wstring>& lines) {
        std::vector<std::wstring> out;
        for (const std::wstring& line : lines)
            out.push_back(has_prefix(line, 'W') ? line.substr(18) : line);
        return out;
    };
    CHECK(texts(listening.messages) ==
          std::vector<std::wstring>{std::wstring(L"first", 6), std::wstring(L"again", 6)});
    CHECK(texts(listening.debug) ==
          std::vector<std::wstring>{L"first", L"\n", L"lost", L"\n", L"again", L"\n",
                                    L"ASCII Dump: d (3 Chars)", L"\n", L"xyz", L"\n"});
}

TEST_CASE("four threads: each line once and whole in every sink, in each thread's order")
{
    TempDir dir(true);
    OwnTrace t;
    t.to_file(dir.path(), L"mt");
    Listening listening(t.obj);
    run_writers(t.obj);
    listening.finish();
    CHECK(verify(file_lines(t.obj.szFile), true) == "");
    std::vector<std::wstring> messages, debug;
    for (const std::wstring& message : listening.messages) {
        CHECK(message.back() == L'\0');
        messages.push_back(message.substr(0, message.size() - 1));
    }
    CHECK(verify(messages, true) == "");
    for (size_t i = 0; i < listening.debug.size(); i += 2) {
        debug.push_back(listening.debug[i]);
        CHECK(listening.debug[i + 1] == L"\n");
    }
    CHECK(verify(debug, true) == "");

    // With a limit of 1 KiB the file is cut again and again while the other
    // threads wait: it stays below the limit plus a line, and only its first
    // line may be a fragment.
    t.to_file(dir.path(), L"small");
    t.obj.bDebug = t.obj.bMailslot = 0;
    t.obj.nSizeKB = 1;
    run_writers(t.obj);
    CHECK(t.obj.bFile == 1);
    std::vector<std::string> lines = file_lines(t.obj.szFile);
    REQUIRE(lines.size() > 2);
    CHECK(read_bytes(t.obj.szFile).size() <= 1024 + lines.back().size() + 2);
    lines.erase(lines.begin());
    CHECK(verify(lines, false) == "");
    CHECK(count_files(dir.path(), L"TRA*.tmp") == 0);
}
