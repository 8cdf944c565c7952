// Threads that listen where the debug and mailslot sinks write: a debug
// output monitor on the DBWIN_BUFFER mapping, and a local mailslot. Each
// keeps what it receives until finish(), which returns it after everything
// written before the call has been read. Nothing here calls CHECK from its
// thread.
#pragma once

#include <doctest/doctest.h>

#include <string>
#include <vector>

#include <windows.h>

class Listener {
public:
    virtual ~Listener() = default;

protected:
    void start() { m_thread = CreateThread(nullptr, 0, run, this, 0, nullptr); }
    // Derived destructors call it too, so that the thread never outlives
    // the handles it waits on.
    void stop()
    {
        if (!m_thread)
            return;
        InterlockedExchange(&m_stop, 1);
        WaitForSingleObject(m_thread, INFINITE);
        CloseHandle(m_thread);
        m_thread = nullptr;
    }
    // One wait for a message; false when none came within a short time.
    virtual bool receive() = 0;

private:
    static DWORD WINAPI run(void* self)
    {
        auto* listener = static_cast<Listener*>(self);
        // A message written before stop() is pending when the flag is seen,
        // so the loop ends only on a wait that found nothing.
        while (listener->receive() || !InterlockedCompareExchange(&listener->m_stop, 0, 0)) {
        }
        return 0;
    }

    HANDLE m_thread = nullptr;
    volatile LONG m_stop = 0;
};

// Debug output of this process, one entry per OutputDebugString call.
class DebugMonitor : public Listener {
public:
    DebugMonitor()
    {
        m_ready = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY");
        m_data = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
        m_map = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096,
                                   L"DBWIN_BUFFER");
        REQUIRE(m_map != nullptr);
        m_view = static_cast<const char*>(MapViewOfFile(m_map, FILE_MAP_READ, 0, 0, 4096));
        REQUIRE(m_view != nullptr);
        SetEvent(m_ready);
        start();
    }
    ~DebugMonitor() override
    {
        stop();
        UnmapViewOfFile(m_view);
        CloseHandle(m_map);
        CloseHandle(m_data);
        CloseHandle(m_ready);
    }
    std::vector<std::string> finish()
    {
        stop();
        return m_messages;
    }

private:
    bool receive() override
    {
        if (WaitForSingleObject(m_data, 200) != WAIT_OBJECT_0)
            return false;
        if (*reinterpret_cast<const DWORD*>(m_view) == GetCurrentProcessId())
            m_messages.emplace_back(m_view + sizeof(DWORD));
        SetEvent(m_ready);
        return true;
    }

    HANDLE m_ready, m_data, m_map;
    const char* m_view = nullptr;
    std::vector<std::string> m_messages;
};

// A mailslot of this process; each message as received, terminator and all.
class MailslotReader : public Listener {
public:
    MailslotReader()
    {
        static long serial = 0;
        m_name = L"\\\\.\\mailslot\\zortrace" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                 std::to_wstring(++serial);
        m_slot = CreateMailslotW(m_name.c_str(), 0, 200, nullptr);
        REQUIRE(m_slot != INVALID_HANDLE_VALUE);
        start();
    }
    ~MailslotReader() override
    {
        stop();
        CloseHandle(m_slot);
    }
    const std::wstring& name() const { return m_name; }
    std::vector<std::wstring> finish()
    {
        stop();
        return m_messages;
    }

private:
    bool receive() override
    {
        wchar_t message[4096];
        DWORD got = 0;
        if (!ReadFile(m_slot, message, sizeof message, &got, nullptr))
            return false;
        m_messages.emplace_back(message, got / sizeof(wchar_t));
        return true;
    }

    std::wstring m_name;
    HANDLE m_slot;
    std::vector<std::wstring> m_messages;
};
