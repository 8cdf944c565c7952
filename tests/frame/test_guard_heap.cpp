#include <doctest/doctest.h>

#include <stdint.h>
#include <stdlib.h>

#include <initializer_list>
#include <string>
#include <utility>

#include <windows.h>

#include "alloc_check.h"
#include "guard_heap.h"
#include "zor_ts.h"

namespace {

const bool guarded = guard_this_program();

DWORD state_of(const void* address)
{
    MEMORY_BASIC_INFORMATION info = {};
    REQUIRE(VirtualQuery(address, &info, sizeof info) == sizeof info);
    return info.State == MEM_COMMIT ? info.Protect : 0;
}

}

TEST_CASE("the guard heap ends every block at a no-access page and decommits it when freed")
{
    REQUIRE(guarded);
    NoLeak leak;
    for (size_t bytes : {size_t(0), size_t(1), size_t(2), size_t(6), size_t(24), size_t(32), size_t(5000)}) {
        CAPTURE(bytes);
        unsigned char* block = static_cast<unsigned char*>(zor_malloc(bytes));
        REQUIRE(block != nullptr);
        CHECK(zor_alloc_probe::guard_heap_owns(block));
        // Aligned as far as the size allows, so that elements of any type fit.
        CHECK(uintptr_t(block + bytes) % 4096 == 0);
        CHECK(state_of(block + bytes) == 0);
        if (bytes)
            CHECK(state_of(block + bytes - 1) == PAGE_READWRITE);
        unsigned char* moved = static_cast<unsigned char*>(zor_realloc(block, bytes + 3));
        REQUIRE(moved != nullptr);
        CHECK(moved != block);
        CHECK(state_of(block) == 0);
        CHECK(uintptr_t(moved + bytes + 3) % 4096 == 0);
        zor_free(moved);
        CHECK(state_of(moved + bytes) == 0);
    }
    // A block from before the switch, or beyond what the heap takes, goes back to the runtime.
    void* foreign = malloc(16);
    CHECK(!zor_alloc_probe::guard_heap_owns(foreign));
    zor_alloc_probe::guard_heap().release(foreign);
    // The library's own blocks end at the page too: a terminated text's last unit touches it.
    TSString* text = TSClone(L"abc");
    REQUIRE(text != nullptr);
    CHECK(state_of(text->data + 4) == 0);
    TSFree(text);
}

// Faults on guarded blocks, run only in a child process each: a read past a
// block's last unit, a read after the block was freed, a write one unit past
// the end, and a write in front that only the canary check at release sees.
TEST_CASE("guard fault: a search past a text that lost its terminator" * doctest::skip())
{
    TSString* text = TSClone(L"abc");
    text->data[3] = L'd';
    TSStrPos(text, L"zz", 0);
}

TEST_CASE("guard fault: a copy from a freed text" * doctest::skip())
{
    TSString *text = TSClone(L"abc"), *copy = TSNew();
    const wchar_t* gone = TSGetStr(text);
    TSFree(text);
    TSSetStr(copy, gone);
}

TEST_CASE("guard fault: one unit written past a block" * doctest::skip())
{
    TSString* text = TSClone(L"abc");
    TSSetLen(text, 2)->data[3] = L'x';
}

TEST_CASE("guard fault: a write in front of a block" * doctest::skip())
{
    unsigned char* block = static_cast<unsigned char*>(zor_malloc(8));
    block[-40] = 0;  // in front of the block's record, on the canary
    zor_free(block);
}

namespace {

// Runs this program on one test case; gives its exit code and all it printed.
std::string run_case(const char* name, DWORD* exitCode)
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string command = std::string("\"") + path + "\" --no-skip -tc=\"" + name + "\"";
    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE readEnd, writeEnd;
    REQUIRE(CreatePipe(&readEnd, &writeEnd, &inherit, 0));
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = writeEnd;
    PROCESS_INFORMATION child = {};
    const BOOL started = CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                        &startup, &child);
    CloseHandle(writeEnd);
    std::string output;
    char chunk[4096];
    DWORD got = 0;
    while (started && ReadFile(readEnd, chunk, sizeof chunk, &got, nullptr) && got)
        output.append(chunk, got);
    CloseHandle(readEnd);
    REQUIRE(started);
    WaitForSingleObject(child.hProcess, INFINITE);
    GetExitCodeProcess(child.hProcess, exitCode);
    CloseHandle(child.hProcess);
    CloseHandle(child.hThread);
    return output;
}

}

TEST_CASE("a fault on a guarded block or its canary is reported with the test case's name")
{
    const char* const past = "FATAL: access past a guarded block or after its release";
    const std::pair<const char*, const char*> cases[] = {
        {"guard fault: a search past a text that lost its terminator", past},
        {"guard fault: a copy from a freed text", past},
        {"guard fault: one unit written past a block", past},
        {"guard fault: a write in front of a block", "FATAL: damaged canary in front of a guarded block"}};
    for (const auto& [name, report] : cases) {
        DWORD exitCode = 0;
        const std::string output = run_case(name, &exitCode);
        CAPTURE(output);
        CHECK(exitCode == 3);
        CHECK(output.find(report) != std::string::npos);
        CHECK(output.find(std::string("in test case \"") + name + "\"") != std::string::npos);
    }
}
