#include "text_io.h"

static std::string to_utf8(const wchar_t* text, size_t length)
{
    int n = WideCharToMultiByte(CP_UTF8, 0, text, int(length), nullptr, 0, nullptr, nullptr);
    std::string bytes(size_t(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, int(length), &bytes[0], n, nullptr, nullptr);
    return bytes;
}

static void write_utf8(DWORD which, const std::wstring& text)
{
    std::string bytes = to_utf8(text.data(), text.size());
    HANDLE handle = GetStdHandle(which);
    const char* at = bytes.data();
    size_t left = bytes.size();
    while (left > 0) {
        DWORD written = 0;
        if (!WriteFile(handle, at, DWORD(left), &written, nullptr) || written == 0)
            return;
        at += written;
        left -= written;
    }
}

void write_out(const std::wstring& text) { write_utf8(STD_OUTPUT_HANDLE, text); }
void write_err(const std::wstring& text) { write_utf8(STD_ERROR_HANDLE, text); }

// A console delivers bytes in its own code page; asking it for wide text
// keeps typed umlauts intact. Ctrl+Z at the start of a line ends the input.
bool LineReader::read_console(std::string& bytes)
{
    wchar_t chunk[1024];
    DWORD got = 0;
    if (!ReadConsoleW(handle_, chunk, 1024, &got, nullptr) || got == 0 || chunk[0] == 0x1A)
        return false;
    bytes = to_utf8(chunk, got);
    return true;
}

bool LineReader::fill()
{
    if (ended_)
        return false;
    std::string bytes;
    DWORD mode = 0;
    if (GetConsoleMode(handle_, &mode)) {
        ended_ = !read_console(bytes);
    } else {
        char chunk[4096];
        DWORD got = 0;
        // A pipe whose writer has gone reports ERROR_BROKEN_PIPE: that is its end.
        ended_ = !ReadFile(handle_, chunk, sizeof chunk, &got, nullptr) || got == 0;
        bytes.assign(chunk, got);
    }
    if (ended_)
        return false;
    pending_.erase(0, used_);
    used_ = 0;
    pending_ += bytes;
    return true;
}

bool LineReader::next(std::wstring& text, bool& badEncoding)
{
    size_t end;
    while ((end = pending_.find('\n', used_)) == std::string::npos) {
        if (!fill())
            break;
    }
    if (end == std::string::npos && used_ == pending_.size())
        return false;
    size_t stop = end == std::string::npos ? pending_.size() : end;
    std::string line = pending_.substr(used_, stop - used_);
    used_ = end == std::string::npos ? pending_.size() : end + 1;
    if (first_ && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
        line.erase(0, 3);
    first_ = false;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();

    text.clear();
    badEncoding = false;
    if (line.empty())
        return true;
    int n = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.data(), int(line.size()), nullptr, 0);
    if (n == 0) {
        badEncoding = true;
        n = MultiByteToWideChar(CP_UTF8, 0, line.data(), int(line.size()), nullptr, 0);
    }
    text.resize(size_t(n));
    MultiByteToWideChar(CP_UTF8, badEncoding ? 0 : MB_ERR_INVALID_CHARS, line.data(), int(line.size()),
                        &text[0], n);
    return true;
}
