// zortrace listen: a local mailslot that the trace's mailslot sink writes
// to, one message a line.
#include "commands.h"

#include <stdio.h>

#include <vector>

#include "output.h"
#include "run_limits.h"

namespace {

// A whole wide line: 16-bit units, one terminator at the end and no other.
bool wide_line(const std::vector<unsigned char>& bytes, DWORD size, std::wstring& text)
{
    if (size < 2 || size % 2)
        return false;
    text.assign(size / 2 - 1, L'\0');
    for (size_t i = 0; i < text.size(); ++i) {
        text[i] = wchar_t(bytes[2 * i] | bytes[2 * i + 1] << 8);
        if (!text[i])
            return false;
    }
    return bytes[size - 2] == 0 && bytes[size - 1] == 0;
}

std::wstring hex_text(const std::vector<unsigned char>& bytes, DWORD size)
{
    std::wstring text = L"(" + std::to_wstring(size) + L" bytes that are no wide line)";
    for (DWORD i = 0; i < size; ++i) {
        wchar_t pair[4];
        swprintf(pair, 4, L" %02X", bytes[i]);
        text += pair;
    }
    return text;
}

} // namespace

int listen(const Options& options)
{
    std::wstring name = L"\\\\.\\mailslot\\" + options.operands[0];
    // The read timeout is how often a wait for a message looks at the stop.
    HANDLE slot = CreateMailslotW(name.c_str(), 0, 200, nullptr);
    if (slot == INVALID_HANDLE_VALUE) {
        DWORD code = GetLastError();
        write_err(L"zortrace: cannot create " + name + L": " +
                  (code == ERROR_ALREADY_EXISTS ? L"another program has it" : system_message(code)) + L"\n");
        return 1;
    }
    write_err(L"zortrace: listening on " + name + L"\n");
    RunLimits limits(options.count, options.seconds);
    std::vector<unsigned char> bytes(65536);
    while (limits.wait(0)) {
        DWORD got = 0;
        if (!ReadFile(slot, bytes.data(), DWORD(bytes.size()), &got, nullptr)) {
            DWORD next = 0;
            if (GetLastError() == ERROR_INSUFFICIENT_BUFFER && GetMailslotInfo(slot, nullptr, &next, nullptr, nullptr) &&
                next != MAILSLOT_NO_MESSAGE)
                bytes.resize(next);
            continue;
        }
        std::wstring text;
        Record record = make_record(wide_line(bytes, got, text) ? text : hex_text(bytes, got));
        if (options.filter.keeps(record) && !limits.print(record))
            break;
    }
    CloseHandle(slot);
    return limits.printed() ? 0 : 1;
}
