// A buffer whose last element touches a no-access page, so that a read or
// write one unit past it faults where it happens instead of passing unseen.
#pragma once

#include <string.h>

#include <string>

#include <windows.h>

template <class T>
class Fenced {
public:
    // `count` elements of unspecified content; 0 gives a pointer right at the page.
    explicit Fenced(size_t count) : m_count(count)
    {
        const size_t page = 4096, bytes = count * sizeof(T);
        const size_t usable = (bytes + page - 1) / page * page;
        m_base = static_cast<char*>(VirtualAlloc(nullptr, usable + page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old;
        if (m_base)
            VirtualProtect(m_base + usable, page, PAGE_NOACCESS, &old);
        m_data = m_base ? reinterpret_cast<T*>(m_base + usable - bytes) : nullptr;
        if (m_data)
            memset(static_cast<void*>(m_data), 0xA5, bytes);
    }
    // A terminated text whose terminator is the last element.
    explicit Fenced(const std::basic_string<T>& text) : Fenced(text.size() + 1)
    {
        if (m_data)
            memcpy(static_cast<void*>(m_data), text.c_str(), (text.size() + 1) * sizeof(T));
    }
    ~Fenced() { VirtualFree(m_base, 0, MEM_RELEASE); }
    Fenced(const Fenced&) = delete;
    Fenced& operator=(const Fenced&) = delete;

    T*     data() const { return m_data; }
    size_t size() const { return m_count; }
    explicit operator bool() const { return m_data != nullptr; }

private:
    size_t m_count;
    char*  m_base = nullptr;
    T*     m_data;
};
