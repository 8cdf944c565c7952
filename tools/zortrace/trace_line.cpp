#include "trace_line.h"

#include <wchar.h>

namespace {

bool digits(const std::wstring& line, size_t at, size_t count, unsigned& value)
{
    value = 0;
    for (size_t i = at; i < at + count; ++i) {
        if (line[i] < L'0' || line[i] > L'9')
            return false;
        value = value * 10 + unsigned(line[i] - L'0');
    }
    return true;
}

bool ends_with(const std::wstring& text, const std::wstring& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

} // namespace

bool read_prefix(const std::wstring& line, Stamp& stamp)
{
    if (line.size() < kPrefixUnits || !wcschr(L"?DIWEA", line[0]) || line[0] == 0 || line[7] != L' ' ||
        line[17] != L' ')
        return false;
    unsigned day, month, year, hour, minute, second, millis;
    if (!digits(line, 1, 2, day) || !digits(line, 3, 2, month) || !digits(line, 5, 2, year) ||
        !digits(line, 8, 2, hour) || !digits(line, 10, 2, minute) || !digits(line, 12, 2, second) ||
        !digits(line, 14, 3, millis))
        return false;
    if (day < 1 || day > 31 || month < 1 || month > 12 || hour > 23 || minute > 59 || second > 59)
        return false;
    stamp.letter = line[0];
    TDSetInterval(&stamp.time, uint16_t(2000 + year), uint16_t(month), uint16_t(day), uint16_t(hour),
                  uint16_t(minute), uint16_t(second), uint16_t(millis));
    return true;
}

bool read_dump_header(const std::wstring& line, DumpHeader& header)
{
    static const struct {
        const wchar_t* head;
        const wchar_t* unit;
        bool hex;
        long perLine;
    } kinds[] = {{L"ASCII Dump: ", L" Chars)", false, 60}, {L"HEX Dump: ", L" Bytes)", true, 32}};
    std::wstring text = line.substr(kPrefixUnits);
    for (const auto& kind : kinds) {
        size_t head = wcslen(kind.head);
        size_t open = text.rfind(L" (");
        if (text.compare(0, head, kind.head) != 0 || !ends_with(text, kind.unit) || open == std::wstring::npos ||
            open < head)
            continue;
        wchar_t* end = nullptr;
        const wchar_t* number = text.c_str() + open + 2;
        long count = wcstol(number, &end, 10);
        if (end == number || std::wstring(end) != kind.unit)
            continue;
        header.hex = kind.hex;
        header.title = text.substr(head, open - head);
        header.count = count;
        header.bodyLines = count > 0 ? (count + kind.perLine - 1) / kind.perLine : 0;
        return true;
    }
    return false;
}

Record make_record(const std::wstring& line)
{
    Record record;
    record.lines.push_back(line);
    record.stamped = read_prefix(line, record.stamp);
    record.dump = record.stamped && read_dump_header(line, record.header);
    return record;
}

void RecordBuilder::add(const std::wstring& line)
{
    Stamp stamp;
    bool stamped = read_prefix(line, stamp);
    if (pending_ && !stamped) {
        open_.lines.push_back(line);
        if (long(open_.lines.size()) > open_.header.bodyLines)
            finish();
        return;
    }
    finish();
    open_ = make_record(line);
    pending_ = open_.dump && open_.header.bodyLines > 0;
    if (!pending_)
        done_(open_);
}

void RecordBuilder::finish()
{
    if (!pending_)
        return;
    pending_ = false;
    done_(open_);
}
