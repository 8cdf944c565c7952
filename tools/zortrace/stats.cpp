// zortrace stats: what a set of trace files holds, counted.
#include "commands.h"

#include <stdio.h>

#include <algorithm>
#include <map>

#include <windows.h>

#include "config.h"
#include "output.h"

namespace {

const wchar_t* const kLetters = L"?DIWEA";

struct Largest {
    bool found = false;
    DumpHeader header;
    std::wstring file;
    std::wstring firstLine;
};

struct Counts {
    long records = 0;
    long unstamped = 0;
    long levels[6] = {};
    std::map<std::wstring, long> hours;       // "yyyy-MM-dd HH:00"
    std::map<std::wstring, long> facilities;  // the tag of "[tag] text"
    Largest largest;

    void add(const Record& record, const std::wstring& file)
    {
        ++records;
        if (!record.stamped) {
            ++unstamped;
            return;
        }
        const TDDate& t = record.stamp.time;
        ++levels[wcschr(kLetters, record.stamp.letter) - kLetters];
        wchar_t hour[32];
        swprintf(hour, 32, L"%04u-%02u-%02u %02u:00", t.year, t.month, t.day, t.hour);
        ++hours[hour];
        const std::wstring& line = record.lines[0];
        size_t close = line.find(L']', kPrefixUnits);
        if (line.size() > kPrefixUnits && line[kPrefixUnits] == L'[' && close != std::wstring::npos &&
            close > kPrefixUnits + 1 && line.find(L' ', kPrefixUnits) > close)
            ++facilities[line.substr(kPrefixUnits, close + 1 - kPrefixUnits)];
        if (record.dump && (!largest.found || record.header.count > largest.header.count))
            largest = Largest{true, record.header, file, line.substr(0, kPrefixUnits - 1)};
    }
};

std::wstring padded(std::wstring text, size_t width)
{
    if (text.size() < width)
        text.resize(width, L' ');
    return text;
}

void print_sizes(const std::vector<std::wstring>& files, long long limit)
{
    write_out(L"files\n");
    for (const std::wstring& file : files) {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data))
            continue;
        long long size = (long long)data.nFileSizeHigh << 32 | data.nFileSizeLow;
        std::wstring line = L"  " + file + L"  " + std::to_wstring(size) + L" bytes";
        if (limit) {
            wchar_t share[96];
            swprintf(share, 96, L", %.1f%% of the limit of %lld bytes%ls", 100.0 * double(size) / double(limit), limit,
                     size > limit ? L": over it, the next line trims it" : L"");
            line += share;
        }
        write_out(line + L"\n");
    }
    if (!limit)
        write_out(L"  (no size limit)\n");
}

void print_counts(const Counts& counts)
{
    write_out(L"records     " + std::to_wstring(counts.records) + L", without a readable prefix " +
              std::to_wstring(counts.unstamped) + L"\n");
    std::wstring levels = L"levels     ";
    for (int i = 0; i < 6; ++i)
        levels += L" " + std::wstring(1, kLetters[i]) + L" " + std::to_wstring(counts.levels[i]);
    write_out(levels + L"\n");
    write_out(L"hours\n");
    for (const auto& [hour, n] : counts.hours)
        write_out(L"  " + hour + L"  " + std::to_wstring(n) + L"\n");
    // The ten busiest, the most lines first, equal counts by name.
    std::vector<std::pair<std::wstring, long>> tags(counts.facilities.begin(), counts.facilities.end());
    std::stable_sort(tags.begin(), tags.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    if (tags.size() > 10)
        tags.resize(10);
    write_out(tags.empty() ? L"facilities  none named ([tag] at the start of a line's text)\n" : L"facilities\n");
    for (const auto& [tag, n] : tags)
        write_out(L"  " + padded(tag, 16) + L" " + std::to_wstring(n) + L"\n");
    const Largest& largest = counts.largest;
    if (!largest.found) {
        write_out(L"largest dump none\n");
        return;
    }
    write_out(L"largest dump " + std::wstring(largest.header.hex ? L"HEX \"" : L"ASCII \"") + largest.header.title +
              L"\", " + std::to_wstring(largest.header.count) + (largest.header.hex ? L" bytes" : L" chars") +
              L", " + largest.firstLine + L" in " + largest.file + L"\n");
}

} // namespace

int stats(const Options& options)
{
    std::vector<std::wstring> files;
    bool ok = resolve_paths(options.operands, files);
    Counts counts;
    for (const std::wstring& file : files)
        ok = read_records(file, [&](const Record& record) { counts.add(record, file); }) && ok;
    print_sizes(files, options.key.empty() ? 10000 * 1024LL : configured_limit(options.key));
    print_counts(counts);
    return ok && counts.records ? 0 : 1;
}
