// Trace files on disk: the daily files of a stem, and one file read line by
// line through the library's buffered file.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "zor_file.h"
#include "zor_status.h"

// The daily files of `stem` (a directory and the start of the names), in
// date order: the stem, 8 digits and ".log", nothing else. With `anyStem`
// and a stem that ends in a separator, the daily files of every stem in
// that folder, by stem and date.
std::vector<std::wstring> daily_files(const std::wstring& stem, bool anyStem = false);

// The 8 digits of a daily file's name, or an empty text.
std::wstring date_of(const std::wstring& file);

bool is_folder(const std::wstring& path);

class TraceFile {
public:
    TraceFile() = default;
    ~TraceFile() { close(); }
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    // Opens `path` for reading beside the application that writes it, and
    // stands at byte `offset`. A file with zero bytes near its start is no
    // trace file; one that starts with FF FE is read as wide text. False
    // with `error` set on failure.
    bool open(const std::wstring& path, uint32_t offset, std::wstring& error);
    void close();

    // The next line, without its line end; false at the end of the file or
    // on a failure, which `error` then tells. A line of more than 4095
    // units comes in pieces.
    bool next(std::wstring& line, std::wstring& error);

    uint32_t size() const;
    // Raw bytes from `from` to the end; the next line is read from `from`.
    std::string bytes_from(uint32_t from);
    // Moves the next line to byte `offset`.
    void seek(uint32_t offset);

private:
    ZORFileRec rec_{};
    bool open_ = false;
    uint32_t start_ = 0; // behind the byte order mark
    std::vector<wchar_t> line_;
};
