#include "run_limits.h"

#include "output.h"

namespace {

HANDLE g_stop = nullptr;

BOOL WINAPI on_console_event(DWORD)
{
    SetEvent(g_stop);
    return TRUE;
}

} // namespace

RunLimits::RunLimits(long count, long seconds)
    : count_(count), deadline_(seconds ? GetTickCount64() + ULONGLONG(seconds) * 1000 : 0)
{
    if (!g_stop) {
        g_stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        SetConsoleCtrlHandler(on_console_event, TRUE);
    }
}

bool RunLimits::wait(DWORD ms)
{
    if (count_ && printed_ >= count_)
        return false;
    if (deadline_) {
        ULONGLONG now = GetTickCount64();
        if (now >= deadline_)
            return false;
        if (deadline_ - now < ms)
            ms = DWORD(deadline_ - now);
    }
    return WaitForSingleObject(g_stop, ms) != WAIT_OBJECT_0;
}

bool RunLimits::print(const Record& record)
{
    print_record(record);
    ++printed_;
    return !count_ || printed_ < count_;
}
