// The shape of a trace file: lines that start with an 18-unit prefix (level
// letter, day, month, two-digit year, blank, time to the millisecond,
// blank), and dumps, whose header has a prefix and whose body lines don't.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "zor_td.h"

constexpr size_t kPrefixUnits = 18;

struct Stamp {
    wchar_t letter = 0;
    TDDate time{};
};

// False when the line does not start with a prefix that can be read.
bool read_prefix(const std::wstring& line, Stamp& stamp);

struct DumpHeader {
    bool hex = false;
    std::wstring title;
    long count = 0;       // units of an ASCII dump, bytes of a HEX dump
    long bodyLines = 0;   // lines the writer puts below the header
};

// False for a line that is no dump header; the line must have a prefix.
bool read_dump_header(const std::wstring& line, DumpHeader& header);

// A plain line, a dump with its body, or a line without a prefix, which
// stands alone.
struct Record {
    std::vector<std::wstring> lines;
    bool stamped = false;
    Stamp stamp;
    bool dump = false;
    DumpHeader header;
};

// A record of one line, with its prefix read when it has one.
Record make_record(const std::wstring& line);

// Gathers lines into records. A dump takes the number of body lines that
// its header announces, but a line with a prefix always starts a record of
// its own: when lines of other threads stand between a dump's lines, the
// dump is shorter and nothing is lost.
class RecordBuilder {
public:
    explicit RecordBuilder(std::function<void(const Record&)> done) : done_(std::move(done)) {}
    void add(const std::wstring& line);
    // Hands out a dump that waits for more body lines.
    void finish();

private:
    std::function<void(const Record&)> done_;
    Record open_;
    bool pending_ = false;
};
