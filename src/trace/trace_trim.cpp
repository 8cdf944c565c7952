#include "../frame/zor_alloc.h"
#include "trace_internal.h"

namespace {

constexpr DWORD kLargeBuffer = 1048576;
constexpr DWORD kSmallBuffer = 102400;

HANDLE open_exclusive(const wchar_t* name, DWORD access, DWORD disposition)
{
    return CreateFileW(name, access, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Copies bytes start to size of `from` into `to`; false at the first failed
// step.
bool copy_tail(HANDLE from, HANDLE to, uint32_t start, uint32_t size, char* buffer,
               DWORD buffer_size)
{
    DWORD moved = SetFilePointer(from, static_cast<LONG>(start), nullptr, FILE_BEGIN);
    if (moved == 0 || moved == INVALID_SET_FILE_POINTER)
        return false;
    for (uint64_t position = start; position < size; position += buffer_size) {
        DWORD got = 0, put = 0;
        if (!ReadFile(from, buffer, buffer_size, &got, nullptr) ||
            !WriteFile(to, buffer, got, &put, nullptr))
            return false;
    }
    return true;
}

}

int TraceTrimFile(const wchar_t* name, uint32_t size)
{
    DWORD buffer_size = kLargeBuffer;
    char* buffer = static_cast<char*>(zor_malloc(buffer_size));
    if (!buffer) {
        buffer_size = kSmallBuffer;
        buffer = static_cast<char*>(zor_malloc(buffer_size));
        if (!buffer)
            return 0;
    }
    int result = 0;
    wchar_t temp[MAX_PATH];
    if (GetTempFileNameW(L".", L"TRA", 0, temp)) {
        HANDLE from = open_exclusive(name, GENERIC_READ, OPEN_EXISTING);
        HANDLE to = open_exclusive(temp, GENERIC_WRITE, CREATE_ALWAYS);
        if (from != INVALID_HANDLE_VALUE && to != INVALID_HANDLE_VALUE)
            result = copy_tail(from, to, 2u * size / 3u, size, buffer, buffer_size);
        if (from != INVALID_HANDLE_VALUE)
            CloseHandle(from);
        if (to != INVALID_HANDLE_VALUE)
            CloseHandle(to);
        // A failed step leaves the trace file as it was; the temporary file
        // stays behind with what was copied, for a look at what went wrong.
        if (result)
            result = MoveFileExW(temp, name, MOVEFILE_REPLACE_EXISTING) ? 1 : 0;
    }
    zor_free(buffer);
    return result;
}
