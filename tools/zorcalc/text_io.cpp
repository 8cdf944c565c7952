#include "text_io.h"

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

// A sheet saved as UTF-16 starts with its byte order mark; from there on its
// bytes become UTF-8 as they arrive, so that lines are split in one encoding.
void LineReader::take_utf16_mark(std::string& bytes)
{
    if (bytes.compare(0, 2, "\xFF\xFE") == 0)
        utf16_ = LittleEndian;
    else if (bytes.compare(0, 2, "\xFE\xFF") == 0)
        utf16_ = BigEndian;
    if (utf16_)
        bytes.erase(0, 2);
}

std::string LineReader::utf16_to_utf8(const std::string& bytes)
{
    carry_ += bytes;
    const unsigned char* b = reinterpret_cast<const unsigned char*>(carry_.data());
    std::wstring units(carry_.size() / 2, L'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = wchar_t(utf16_ == LittleEndian ? b[2 * i] | b[2 * i + 1] << 8 : b[2 * i] << 8 | b[2 * i + 1]);
    // Half a pair waits for its other half in the next chunk.
    size_t whole = units.size();
    if (whole > 0 && units[whole - 1] >= 0xD800 && units[whole - 1] <= 0xDBFF)
        --whole;
    carry_.erase(0, whole * 2);
    return to_utf8(units.data(), whole);
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
        if (first_ && pending_.empty() && !utf16_ && bytes.size() >= 2)
            take_utf16_mark(bytes);
        if (utf16_)
            bytes = utf16_to_utf8(bytes);
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
