#include "child_process.h"

namespace {

std::wstring quoted(const std::wstring& arg)
{
    std::wstring text = L"\"";
    for (wchar_t c : arg) {
        if (c == L'"')
            text += L'\\';
        text += c;
    }
    return text + L"\"";
}

std::wstring program_path(const wchar_t* name)
{
    wchar_t path[MAX_PATH];
    DWORD n = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring dir(path, n);
    return dir.substr(0, dir.find_last_of(L"\\/") + 1) + name;
}

struct Pipes {
    HANDLE inRead, inWrite, outRead, outWrite, errRead, errWrite;
    Pipes()
    {
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        CreatePipe(&inRead, &inWrite, &inherit, 1 << 16);
        CreatePipe(&outRead, &outWrite, &inherit, 0);
        CreatePipe(&errRead, &errWrite, &inherit, 0);
        SetHandleInformation(inWrite, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(outRead, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(errRead, HANDLE_FLAG_INHERIT, 0);
    }
    // Starts the program; the child's ends of the pipes are closed either way.
    HANDLE start(const wchar_t* name, const std::vector<std::wstring>& args, DWORD flags, DWORD& id)
    {
        std::wstring program = program_path(name);
        std::wstring line = quoted(program);
        for (const std::wstring& arg : args)
            line += L" " + quoted(arg);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = inRead;
        startup.hStdOutput = outWrite;
        startup.hStdError = errWrite;
        PROCESS_INFORMATION process{};
        BOOL started = CreateProcessW(program.c_str(), &line[0], nullptr, nullptr, TRUE, flags, nullptr, nullptr,
                                      &startup, &process);
        CloseHandle(inRead);
        CloseHandle(outWrite);
        CloseHandle(errWrite);
        if (!started)
            return nullptr;
        CloseHandle(process.hThread);
        id = process.dwProcessId;
        return process.hProcess;
    }
};

} // namespace

Outcome run_program(const wchar_t* name, const std::vector<std::wstring>& args, const std::string& input)
{
    Child child(name, args, input);
    return Outcome{child.finish(INFINITE), child.out(), child.err()};
}

Child::Child(const wchar_t* name, const std::vector<std::wstring>& args, const std::string& input,
             bool ownConsole)
{
    InitializeCriticalSection(&lock_);
    changed_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    Pipes pipes;
    process_ = pipes.start(name, args, ownConsole ? CREATE_NEW_CONSOLE : 0, id_);
    DWORD written = 0;
    if (process_ && !input.empty())
        WriteFile(pipes.inWrite, input.data(), DWORD(input.size()), &written, nullptr);
    CloseHandle(pipes.inWrite);
    channels_[0] = Channel{this, pipes.outRead, nullptr, {}};
    channels_[1] = Channel{this, pipes.errRead, nullptr, {}};
    // Both channels drain at once, so that a full pipe never stalls the child.
    for (Channel& channel : channels_)
        channel.thread = CreateThread(nullptr, 0, drain, &channel, 0, nullptr);
}

Child::~Child()
{
    finish(0);
    CloseHandle(changed_);
    DeleteCriticalSection(&lock_);
}

DWORD WINAPI Child::drain(void* param)
{
    Channel* channel = static_cast<Channel*>(param);
    char chunk[4096];
    DWORD got = 0;
    while (ReadFile(channel->pipe, chunk, sizeof chunk, &got, nullptr) && got > 0) {
        EnterCriticalSection(&channel->owner->lock_);
        channel->text.append(chunk, got);
        LeaveCriticalSection(&channel->owner->lock_);
        SetEvent(channel->owner->changed_);
    }
    return 0;
}

std::string Child::text_of(Channel& channel)
{
    EnterCriticalSection(&lock_);
    std::string text = channel.text;
    LeaveCriticalSection(&lock_);
    return text;
}

std::string Child::out() { return text_of(channels_[0]); }
std::string Child::err() { return text_of(channels_[1]); }

bool Child::wait_for(const std::string& text, DWORD ms, bool error)
{
    ULONGLONG deadline = GetTickCount64() + ms;
    for (;;) {
        if (text_of(channels_[error ? 1 : 0]).find(text) != std::string::npos)
            return true;
        ULONGLONG now = GetTickCount64();
        if (now >= deadline || WaitForSingleObject(changed_, DWORD(deadline - now)) == WAIT_FAILED)
            return text_of(channels_[error ? 1 : 0]).find(text) != std::string::npos;
    }
}

int Child::interrupt(DWORD ms)
{
    // Only a process on the same console can send it Ctrl+C, and the event
    // reaches every process there: this one ignores it until the program
    // has ended, and goes back to the console it had.
    HWND ownWindow = GetConsoleWindow();
    FreeConsole();
    if (process_ && AttachConsole(id_)) {
        SetConsoleCtrlHandler(nullptr, TRUE);
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
        WaitForSingleObject(process_, ms);
        FreeConsole();
        SetConsoleCtrlHandler(nullptr, FALSE);
    }
    if (ownWindow)
        AttachConsole(ATTACH_PARENT_PROCESS);
    return finish(0);
}

int Child::finish(DWORD ms)
{
    DWORD code = DWORD(-1);
    if (process_) {
        if (WaitForSingleObject(process_, ms) != WAIT_OBJECT_0)
            TerminateProcess(process_, DWORD(-1));
        WaitForSingleObject(process_, INFINITE);
        GetExitCodeProcess(process_, &code);
        CloseHandle(process_);
        process_ = nullptr;
    }
    for (Channel& channel : channels_) {
        if (channel.thread) {
            WaitForSingleObject(channel.thread, INFINITE);
            CloseHandle(channel.thread);
            CloseHandle(channel.pipe);
            channel.thread = nullptr;
        }
    }
    return int(code);
}
