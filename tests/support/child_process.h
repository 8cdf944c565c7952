// Programs of the build started as a user's shell would start them, with
// both output channels collected: run_program waits for the end, Child lets
// a test talk to a program that is still running.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

struct Outcome {
    int status = -1;
    std::string out; // as written, UTF-8 for the project's tools
    std::string err;
};

// `name` lies beside the test program; `args` go to it as they are, and
// `input` is its standard input, closed behind it.
Outcome run_program(const wchar_t* name, const std::vector<std::wstring>& args, const std::string& input = "");

// A running program whose output grows while the test goes on. Nothing here
// calls CHECK from its threads.
class Child {
public:
    // `input` is the program's standard input, closed behind it; it must fit
    // the pipe's buffer of 64 KiB. With `ownConsole` the program gets a
    // console of its own, which interrupt() needs.
    Child(const wchar_t* name, const std::vector<std::wstring>& args, const std::string& input = "",
          bool ownConsole = false);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    bool started() const { return process_ != nullptr; }
    // Waits until `text` stands in the output (`error`: the error channel),
    // at most `ms` milliseconds; false when it did not come.
    bool wait_for(const std::string& text, DWORD ms, bool error = false);
    // Waits at most `ms` for the program to end and gives its exit status;
    // a program that is still running is ended and gives -1.
    int finish(DWORD ms);
    // Ctrl+C on the program's own console, as a user's key press; then as
    // finish(ms).
    int interrupt(DWORD ms);
    std::string out();
    std::string err();

private:
    struct Channel {
        Child* owner;
        HANDLE pipe;
        HANDLE thread;
        std::string text;
    };
    static DWORD WINAPI drain(void* channel);
    std::string text_of(Channel& channel);

    HANDLE process_ = nullptr;
    DWORD id_ = 0;
    HANDLE changed_;
    CRITICAL_SECTION lock_;
    Channel channels_[2];
};
