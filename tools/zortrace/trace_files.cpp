#include "trace_files.h"

#include <algorithm>

#include <windows.h>

#include "output.h"

namespace {

constexpr uint32_t kBufferBytes = 65536;
constexpr uint32_t kLineUnits = 4096;
constexpr uint32_t kSniffBytes = 4096;

std::wstring status_text(ZORStatus status)
{
    return system_message((status & 0xFFFF0000u) == 0x80070000u ? status & 0xFFFFu : status);
}

bool is_daily_tail(const std::wstring& name, size_t stemUnits)
{
    if (name.size() != stemUnits + 12 || _wcsicmp(name.c_str() + stemUnits + 8, L".log") != 0)
        return false;
    for (size_t i = stemUnits; i < stemUnits + 8; ++i)
        if (name[i] < L'0' || name[i] > L'9')
            return false;
    return true;
}

} // namespace

bool is_folder(const std::wstring& path)
{
    DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::wstring date_of(const std::wstring& file)
{
    size_t name = file.find_last_of(L"\\/") + 1;
    if (file.size() < name + 12 || !is_daily_tail(file, file.size() - 12))
        return L"";
    return file.substr(file.size() - 12, 8);
}

std::vector<std::wstring> daily_files(const std::wstring& stem, bool anyStem)
{
    size_t cut = stem.find_last_of(L"\\/");
    std::wstring folder = cut == std::wstring::npos ? L"" : stem.substr(0, cut + 1);
    std::wstring start = stem.substr(folder.size());
    std::vector<std::wstring> files;
    WIN32_FIND_DATAW found;
    HANDLE walk = FindFirstFileW((stem + L"*.log").c_str(), &found);
    if (walk == INVALID_HANDLE_VALUE)
        return files;
    do {
        std::wstring name = found.cFileName;
        bool ours = start.empty() && anyStem ? name.size() >= 12 && is_daily_tail(name, name.size() - 12)
                                  : is_daily_tail(name, start.size()) && _wcsnicmp(name.c_str(), start.c_str(), start.size()) == 0;
        if (ours && !(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            files.push_back(folder + name);
    } while (FindNextFileW(walk, &found));
    FindClose(walk);
    // By stem, then by date: the date is the last 12 units but for ".log".
    std::sort(files.begin(), files.end(), [](const std::wstring& a, const std::wstring& b) {
        int stems = _wcsicmp(a.substr(0, a.size() - 12).c_str(), b.substr(0, b.size() - 12).c_str());
        return stems ? stems < 0 : a.compare(a.size() - 12, 8, b, b.size() - 12, 8) < 0;
    });
    return files;
}

bool TraceFile::open(const std::wstring& path, uint32_t offset, std::wstring& error)
{
    close();
    // Shared for writing and deleting, so that the application goes on
    // appending and may trim or prune while the file is read.
    const uint32_t share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    ZORStatus status = ZORFileOpen(&rec_, kBufferBytes, path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr, ZOR_FILE_NARROW);
    if (status != ZOR_S_OK) {
        error = path + L": " + status_text(status);
        return false;
    }
    open_ = true;
    std::string head(kSniffBytes, '\0');
    uint32_t got = kSniffBytes;
    status = ZORFileGetBlock(&rec_, &head[0], &got);
    head.resize(status == ZOR_S_OK ? got : 0);
    start_ = 0;
    if (head.compare(0, 2, "\xFF\xFE") == 0) {
        close();
        ZORFileOpen(&rec_, kBufferBytes, path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                    FILE_ATTRIBUTE_NORMAL, nullptr, ZOR_FILE_WIDE);
        open_ = true;
        // The first read deals with the mark; only after it can reading be
        // moved.
        char first;
        uint32_t one = 1;
        ZORFileGetBlock(&rec_, &first, &one);
        start_ = 2;
    } else if (head.find('\0') != std::string::npos) {
        close();
        error = path + L": not a trace file (it holds binary data)";
        return false;
    }
    seek(offset);
    return true;
}

void TraceFile::close()
{
    if (open_)
        ZORFileClose(&rec_);
    open_ = false;
}

bool TraceFile::next(std::wstring& line, std::wstring& error)
{
    line_.resize(kLineUnits);
    ZORStatus status = ZORFileGetLine(&rec_, line_.data(), kLineUnits);
    if (status == ZOR_S_OK) {
        line = line_.data();
        return true;
    }
    if (status != ZOR_E_HANDLE_EOF)
        error = status_text(status);
    return false;
}

uint32_t TraceFile::size() const
{
    DWORD size = GetFileSize(static_cast<HANDLE>(rec_.hFile), nullptr);
    return size == INVALID_FILE_SIZE ? 0 : size;
}

std::string TraceFile::bytes_from(uint32_t from)
{
    seek(from);
    std::string bytes;
    char chunk[kBufferBytes];
    for (;;) {
        uint32_t got = sizeof chunk;
        if (ZORFileGetBlock(&rec_, chunk, &got) != ZOR_S_OK)
            break;
        bytes.append(chunk, got);
    }
    seek(from);
    return bytes;
}

void TraceFile::seek(uint32_t offset) { ZORFileSetPos(&rec_, std::max(offset, start_)); }
