// A thread that listens where the debug and mailslot sinks write: a debug
// output monitor on the DBWIN_BUFFER mapping and a local mailslot. It keeps
// what it receives until finish(), which returns once everything written
// before the call has been read. Nothing here calls CHECK from its thread.
#pragma once

#include <doctest/doctest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "trace/trace_internal.h"

class Listening {
public:
    // Also points the object's debug and mailslot sinks here.
    explicit Listening(TraceObject& obj)
    {
        static long serial = 0;
        std::wstring slot = L"\\\\.\\mailslot\\zortrace" + std::to_wstring(GetCurrentProcessId()) +
                            L"-" + std::to_wstring(++serial);
        m_slot = CreateMailslotW(slot.c_str(), 0, 0, nullptr);
        m_ready = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY");
        m_data = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
        m_map = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096,
                                   L"DBWIN_BUFFER");
        m_view = static_cast<const char*>(MapViewOfFile(m_map, FILE_MAP_READ, 0, 0, 4096));
        REQUIRE(m_slot != INVALID_HANDLE_VALUE);
        REQUIRE(m_view != nullptr);
        wcscpy(obj.szMailslot, slot.c_str());
        obj.bDebug = obj.bMailslot = 1;
        hTraceMailslot = INVALID_HANDLE_VALUE;
        SetEvent(m_ready);
        m_thread = CreateThread(nullptr, 0, run, this, 0, nullptr);
    }
    ~Listening()
    {
        finish();
        for (HANDLE handle : {m_slot, m_ready, m_data, m_map})
            CloseHandle(handle);
        UnmapViewOfFile(m_view);
    }
    // Debug lines of this process, one a call, and mailslot messages with
    // their terminator; also closes the library's handle on the slot.
    void finish()
    {
        if (!m_thread)
            return;
        InterlockedExchange(&m_stop, 1);
        WaitForSingleObject(m_thread, INFINITE);
        CloseHandle(m_thread);
        m_thread = nullptr;
        CloseHandle(hTraceMailslot);
        hTraceMailslot = INVALID_HANDLE_VALUE;
    }
    std::vector<std::wstring> debug, messages;

private:
    static DWORD WINAPI run(void* self)
    {
        auto* listening = static_cast<Listening*>(self);
        // A message written before finish() is pending when the flag is
        // seen, so the loop ends only on a round that found nothing.
        while (listening->receive() || !InterlockedCompareExchange(&listening->m_stop, 0, 0)) {
        }
        return 0;
    }
    // The slot is read after the wait, so that a message written before
    // finish() is read even when the wait found nothing.
    bool receive()
    {
        bool got = WaitForSingleObject(m_data, 100) == WAIT_OBJECT_0;
        if (got && *reinterpret_cast<const DWORD*>(m_view) == GetCurrentProcessId()) {
            std::string text = m_view + sizeof(DWORD);
            debug.emplace_back(text.begin(), text.end());
        }
        if (got)
            SetEvent(m_ready);
        wchar_t message[4096];
        for (DWORD size = 0; ReadFile(m_slot, message, sizeof message, &size, nullptr); got = true)
            messages.emplace_back(message, size / sizeof(wchar_t));
        return got;
    }

    HANDLE m_slot, m_ready, m_data, m_map, m_thread = nullptr;
    const char* m_view;
    volatile LONG m_stop = 0;
};
