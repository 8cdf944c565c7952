#include "alloc_check.h"
#include "locale_scope.h"
#include "trace_fixture.h"

namespace {

std::string repeat(const std::string& piece, int times)
{
    std::string text;
    while (times-- > 0)
        text += piece;
    return text;
}

}

TEST_CASE("plain lines: prefix, texts, cuts and the tests before formatting")
{
    TempDir dir(true);
    OwnTrace t;
    t.to_file(dir.path(), L"out");
    t.obj.dwLevelMask = 2;
    Trace(&t.obj, 2, L"abc", L"def");
    Trace(&t.obj, 2, nullptr, nullptr);
    Trace(&t.obj, 2, L"abc", nullptr);
    Trace(&t.obj, 2, nullptr, L"def");
    TraceVA(&t.obj, 2, L"%d-%s", 42, L"x");
    TraceVA(&t.obj, 3, L"not this level");
    TraceVAF(&t.obj, 2, 300, L"facility %u", 300u);
    EnableTrace(&t.obj, 9, 0);
    TraceVAF(&t.obj, 2, 9, L"not this facility");
    CHECK(file_texts(t.obj.szFile, 'I') ==
          std::vector<std::string>{"abc def", "", "abc", " def", "42-x", "facility 300"});

    // Trace tests no level: with mask 0 the line still goes out, and a
    // level beyond the table prints as "?". Long texts are cut at 2047
    // units, prefix included.
    DeleteFileW(t.obj.szFile);
    t.obj.dwLevelMask = 0;
    Trace(&t.obj, 5, L"always", nullptr);
    Trace(&t.obj, 9, L"unknown", nullptr);
    t.obj.dwLevelMask = 1;
    std::wstring long_text(3000, L'z');
    TraceVA(&t.obj, 1, L"%s", long_text.c_str());
    Trace(&t.obj, 1, L"a", long_text.c_str());
    std::vector<std::string> lines = file_lines(t.obj.szFile);
    REQUIRE(lines.size() == 4);
    CHECK(has_prefix(lines[0], 'A'));
    CHECK(has_prefix(lines[1], '?'));
    CHECK(lines[2].substr(17) == " " + std::string(2029, 'z'));
    CHECK(lines[3].substr(17) == " a " + std::string(2027, 'z'));
}

TEST_CASE("the file sink: locale, a new day, a deleted file and the limit")
{
    TempDir dir(true);
    OwnTrace t;
    t.to_file(dir.path(), L"f");
    {
        RuntimeLocale western(L".1252");
        Trace(&t.obj, 1, L"caf\u00e9 \u20ac \u4e2d end", nullptr);
    }
    CHECK(file_texts(t.obj.szFile, 'D') == std::vector<std::string>{"caf\xE9 \x80 ? end"});
    DeleteFileW(t.obj.szFile);
    Trace(&t.obj, 1, L"anew", nullptr);
    CHECK(file_texts(t.obj.szFile, 'D') == std::vector<std::string>{"anew"});

    // The first line of a day goes to the day before's file; the check that
    // follows names and creates today's.
    const std::wstring today = t.obj.szFile;
    const std::wstring yesterday = std::wstring(t.obj.szBaseName) + date_back(1) + L".log";
    DeleteFileW(today.c_str());
    wcscpy(t.obj.szFile, yesterday.c_str());
    wcscpy(t.obj.szLastFile, yesterday.c_str());
    Trace(&t.obj, 1, L"late", nullptr);
    CHECK(file_lines(yesterday).size() == 1);
    CHECK(std::wstring(t.obj.szFile) == today);
    CHECK(std::wstring(t.obj.szLastFile) == today);
    CHECK(file_exists(today));
    CHECK(read_bytes(today).empty());

    // A line that passes the limit is written first and survives the cut.
    t.obj.nSizeKB = 1;
    write_bytes(today, std::string(1000, 'x'));
    Trace(&t.obj, 1, std::wstring(100, L'k').c_str(), nullptr);
    std::string kept = read_bytes(today);
    CHECK(kept.size() == 1120 - 2 * 1120 / 3);
    CHECK(kept.substr(kept.size() - 102) == std::string(100, 'k') + "\r\n");
}

TEST_CASE("dumps: headers, body lines and what they leave out")
{
    hTraceMailslot = INVALID_HANDLE_VALUE;
    TempDir dir(true);
    OwnTrace t;
    t.to_file(dir.path(), L"d");
    t.obj.dwLevelMask = 2;
    t.obj.bMailslot = 1;
    wcscpy(t.obj.szMailslot, L"\\\\.\\mailslot\\nobody-listens");
    std::wstring text;
    for (int i = 0; i < 61; ++i)
        text += static_cast<wchar_t>(L'A' + i % 26);
    const wchar_t short_text[5] = {L'a', L'b', 0, L'x', L'y'};
    const unsigned char bytes[33] = {0x41, 0x00, 0x7F, 0xFF, 0x20};
    TraceAscii(&t.obj, 2, L"txt", text.c_str(), 61);
    TraceAscii(&t.obj, 2, L"short", short_text, 5);
    TraceAscii(&t.obj, 2, L"none", text.c_str(), 0);
    TraceAsciiF(&t.obj, 2, 300, L"minus", text.c_str(), -3);
    TraceHex(&t.obj, 2, L"buf", bytes, 4);
    TraceHex(&t.obj, 2, L"odd", bytes, 33);
    EnableTrace(&t.obj, 4, 0);
    TraceHexF(&t.obj, 2, 4, L"off", bytes, 4);
    TraceAsciiF(&t.obj, 2, 4, L"off", text.c_str(), 4);
    TraceHex(&t.obj, 1, L"level", bytes, 4);
    // A title too long for the line area is cut.
    TraceHex(&t.obj, 2, std::wstring(3000, L't').c_str(), bytes, 0);

    const std::string ascii(text.begin(), text.end());
    const std::vector<std::string> expected = {
        "ASCII Dump: txt (61 Chars)",
        ascii.substr(0, 60),
        ascii.substr(60),
        "ASCII Dump: short (5 Chars)",
        "   ab",
        "ASCII Dump: none (0 Chars)",
        "ASCII Dump: minus (-3 Chars)",
        "HEX Dump: buf (4 Bytes)",
        "41 00 7F FF " + repeat("-- ", 28) + "     A___",
        "HEX Dump: odd (33 Bytes)",
        "41 00 7F FF 20 " + repeat("00 ", 27) + "     A___ " + repeat("_", 27),
        "00 " + repeat("-- ", 31) + "     _",
        "HEX Dump: " + std::string(2047 - 28, 't'),
    };
    std::vector<std::string> lines = file_lines(t.obj.szFile);
    REQUIRE(lines.size() == expected.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        bool header = expected[i].find("Dump: ") != std::string::npos;
        CAPTURE(i);
        CHECK(has_prefix(lines[i], 'I') == header);
        CHECK((header ? lines[i].substr(18) : lines[i]) == expected[i]);
    }
    CHECK(hTraceMailslot == INVALID_HANDLE_VALUE);
}

TEST_CASE("a dump's event holds its header and 99 body lines")
{
    std::vector<unsigned char> data(3200);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<unsigned char>(i);
    auto starts_with_byte = [](const std::wstring& line, int index) {
        wchar_t digits[4];
        swprintf(digits, 4, L"%02X ", index & 0xFF);
        return line.compare(0, 3, digits) == 0;
    };
    // The nth block failing drops one line; the next ones move up.
    const struct {
        long failing;
        bool header_kept;
        int body_at_49; // 1-based body line in place 49
        int body_at_99;
    } rows[] = {{0, true, 49, 99}, {1, false, 50, 100}, {50, true, 50, 100}};
    for (const auto& row : rows) {
        NoLeak no_leak;
        TraceEventStrings events = {};
        zor_alloc_probe::fail_nth(row.failing);
        TraceWriteDump({nullptr, 0, &events}, TraceDumpKind::Hex, L"P ", L"big", data.data(), 3200);
        zor_alloc_probe::fail_nth(0);
        CAPTURE(row.failing);
        REQUIRE(events.count == 100);
        CHECK((std::wstring(events.items[0]) == L"P HEX Dump: big (3200 Bytes)\n") ==
              row.header_kept);
        CHECK(starts_with_byte(events.items[49], (row.body_at_49 - 1) * 32));
        CHECK(starts_with_byte(events.items[99], (row.body_at_99 - 1) * 32));
        CHECK(std::wstring(events.items[99]).size() == 134);
        CHECK(std::wstring(events.items[99]).back() == L'\n');
        TraceEventRelease(&events);
        CHECK(events.count == 0);
    }

    // With the event log on (a stub under Wine) the file still gets every line.
    TempDir dir(true);
    OwnTrace t;
    t.to_file(dir.path(), L"e");
    t.obj.dwLevelMask = 16;
    t.obj.bEventLog = 1;
    wcscpy(t.obj.szEventSource, L"zortrace-test");
    {
        NoLeak no_leak;
        TraceHex(&t.obj, 5, L"big", data.data(), 3200);
        Trace(&t.obj, 5, L"after", nullptr);
    }
    CHECK(file_lines(t.obj.szFile).size() == 102);
    CHECK(t.obj.bEventLog == 1);
}
