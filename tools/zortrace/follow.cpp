// zortrace follow: the newest daily file of a stem, read as it grows, on
// into the next day's file.
//
// The trace's own size check and trim need the file to themselves for a
// moment, so the file is opened only for one read at a time, and only
// once its size has stood still for a poll (or after a few polls of steady
// growth). A trim replaces the file with its last third: the bytes read
// last are looked for in the new file, and reading goes on behind them.
#include "commands.h"

#include <algorithm>
#include <memory>

#include <windows.h>

#include "output.h"
#include "run_limits.h"
#include "trace_files.h"

namespace {

constexpr DWORD kPollMs = 200;
constexpr size_t kTailBytes = 256;
constexpr int kGrowingPolls = 3;    // reads wait this long at most for a file to stand still
constexpr int kPreviousPolls = 25;  // a day's file is watched this long after the next appears

struct Snapshot {
    long long size = -1;
    FILETIME written{};
    bool operator==(const Snapshot& o) const
    {
        return size == o.size && CompareFileTime(&written, &o.written) == 0;
    }
};

Snapshot snapshot_of(const std::wstring& path)
{
    Snapshot snapshot;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        snapshot.size = (long long)data.nFileSizeHigh << 32 | data.nFileSizeLow;
        snapshot.written = data.ftLastWriteTime;
    }
    return snapshot;
}

class WatchedFile {
public:
    WatchedFile(std::wstring path, std::vector<Record>& out)
        : path_(std::move(path)), builder_([&out](const Record& record) { out.push_back(record); })
    {
    }
    const std::wstring& path() const { return path_; }

    // Reads what was added since the last read when the file has changed
    // and stands still (or `now`); true when it had changed.
    bool poll(bool now)
    {
        Snapshot current = snapshot_of(path_);
        if (current.size < 0 || current == read_)
            return false;
        if (!(current == last_)) {
            last_ = current;
            if (!now && ++growing_ < kGrowingPolls)
                return true;
        }
        growing_ = 0;
        read_ = current;
        read_new_lines();
        return true;
    }
    void finish() { builder_.finish(); }

private:
    void read_new_lines()
    {
        TraceFile file;
        std::wstring error;
        if (!file.open(path_, 0, error))
            return;
        size_t keep = std::min<size_t>(tail_.size(), offset_);
        std::string bytes = file.bytes_from(uint32_t(offset_ - keep));
        if (bytes.compare(0, keep, tail_) != 0) {
            // Not the file that was read: trimmed and replaced.
            bytes = file.bytes_from(0);
            size_t found = find_tail(bytes);
            if (found == std::string::npos && offset_ > 0)
                write_err(L"zortrace: " + path_ + L" was trimmed before its last lines could be read\n");
            offset_ = found == std::string::npos ? 0 : found;
            bytes.erase(0, offset_);
        } else {
            bytes.erase(0, keep);
        }
        // Only whole lines: the rest is still being written.
        size_t end = bytes.rfind('\n');
        if (end == std::string::npos)
            return;
        bytes.resize(end + 1);
        std::vector<std::wstring> lines;
        file.seek(uint32_t(offset_));
        std::wstring line;
        for (size_t n = std::count(bytes.begin(), bytes.end(), '\n'); n > 0 && file.next(line, error); --n)
            lines.push_back(line);
        file.close();
        offset_ += bytes.size();
        std::string before = tail_ + bytes;
        tail_ = before.substr(before.size() - std::min(before.size(), kTailBytes));
        for (const std::wstring& whole : lines)
            builder_.add(whole);
    }

    // Where reading goes on in a trimmed file: behind the longest run of
    // whole lines read last that it still holds (the cut may fall inside
    // the bytes kept for this), npos when it holds none of them.
    size_t find_tail(const std::string& bytes) const
    {
        for (size_t from = 0; from < tail_.size();) {
            size_t found = bytes.find(tail_.c_str() + from, 0, tail_.size() - from);
            if (found != std::string::npos)
                return found + tail_.size() - from;
            size_t line_end = tail_.find('\n', from);
            if (line_end == std::string::npos)
                break;
            from = line_end + 1;
        }
        return std::string::npos;
    }

    std::wstring path_;
    RecordBuilder builder_;
    size_t offset_ = 0;
    std::string tail_;
    Snapshot read_, last_;
    int growing_ = 0;
};

} // namespace

int follow(const Options& options)
{
    // A folder alone names the files that are named by their date alone.
    std::wstring stem = options.operands[0];
    if (is_folder(stem) && stem.back() != L'\\' && stem.back() != L'/')
        stem += L'\\';
    size_t cut = stem.find_last_of(L"\\/");
    std::wstring folder = cut == std::wstring::npos ? L"." : stem.substr(0, cut + 1);
    if (!is_folder(folder)) {
        write_err(L"zortrace: the folder " + folder + L" does not exist\n");
        return 1;
    }
    RunLimits limits(options.count, options.seconds);
    std::vector<Record> records;
    std::unique_ptr<WatchedFile> current, previous;
    int previousPolls = 0;
    bool started = false;
    for (bool go = true; go; go = go && limits.wait(kPollMs)) {
        std::vector<std::wstring> files = daily_files(stem);
        if (!files.empty() && (!current || date_of(files.back()) > date_of(current->path()))) {
            if (current)
                current->poll(true);
            previous = std::move(current);
            previousPolls = 0;
            current = std::make_unique<WatchedFile>(files.back(), records);
        }
        if (previous) {
            previousPolls = previous->poll(false) ? 0 : previousPolls + 1;
            if (previousPolls >= kPreviousPolls) {
                previous->finish();
                previous.reset();
            }
        }
        if (current)
            current->poll(!started);
        if (!started) {
            if (!current)
                write_err(L"zortrace: waiting for " + stem + L"yyyymmdd.log\n");
            // The first read shows the end of what is there already.
            std::vector<Record> kept;
            for (const Record& record : records)
                if (options.filter.keeps(record))
                    kept.push_back(record);
            size_t skip = kept.size() > size_t(options.last) ? kept.size() - size_t(options.last) : 0;
            records.assign(kept.begin() + long(skip), kept.end());
            started = true;
        }
        for (const Record& record : records)
            if (options.filter.keeps(record) && !limits.print(record)) {
                go = false;
                break;
            }
        records.clear();
    }
    return limits.printed() ? 0 : 1;
}
