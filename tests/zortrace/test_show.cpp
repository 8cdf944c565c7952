// show and stats on files that the trace wrote, and on hand-made ones where
// a test needs lines of other times than now.
#include "zortrace_fixture.h"

#include <algorithm>
#include <functional>

namespace {

// Today's file after a trim left a cut line at its start, then a line of
// each of the six levels, a HEX dump at level 4 and an ASCII dump at level 3.
struct LevelsFile : TestTrace {
    std::wstring file;
    std::vector<std::string> lines;

    LevelsFile()
    {
        to_files(1);
        start();
        file = obj.szFile;
        // Lines of one length until the file passes 1 KiB and is cut to its last third.
        for (int i = 0, before = 0; i < 100; ++i) {
            Trace(&obj, 2, (L"filler line " + std::to_wstring(10 + i)).c_str(), nullptr);
            int size = int(file_text(file).size());
            if (size < before)
                break;
            before = size;
        }
        for (int level = 0; level < 6; ++level)
            Trace(&obj, level, (L"level " + std::to_wstring(level) + L" text").c_str(), nullptr);
        unsigned char bytes[40];
        for (int i = 0; i < 40; ++i)
            bytes[i] = static_cast<unsigned char>(0x41 + i);
        TraceHex(&obj, 4, L"blob", bytes, 40);
        std::wstring note(70, L'n');
        TraceAscii(&obj, 3, L"note", note.c_str(), 70);
        lines = lines_of(file_text(file));
        REQUIRE(lines.size() > 10);
        REQUIRE(lines[0].size() < 18); // the cut line
    }

    // The file's lines of the records whose head passes `keep`; a record is
    // a line with a prefix and the body lines below a dump header.
    std::vector<std::string> records(const std::function<bool(char letter, const std::string& head)>& keep) const
    {
        std::vector<std::string> kept;
        bool keeping = false;
        for (const std::string& line : lines) {
            bool head = line.size() >= 18 && line[7] == ' ' && line[17] == ' ';
            if (head || &line == &lines[0])
                keeping = keep(head ? line[0] : 0, line);
            if (keeping)
                kept.push_back(line);
        }
        return kept;
    }
};

const char kTimes[] = "I181126 095959999 [db] a\r\n"
                      "I181126 100000000 [net] b\r\n"
                      "W181126 103015000 [net] c\r\n"
                      "E181126 105959999 d\r\n"
                      "E181126 110000000 HEX Dump: big (64 Bytes)\r\n"
                      "41 -- \r\n"
                      "42 -- \r\n"
                      "A181126 110000001 ASCII Dump: small (3 Chars)\r\n"
                      "abc\r\n";

} // namespace

TEST_CASE("show prints the trace's own file through the level and text filters, dumps whole, the cut line always")
{
    LevelsFile trace;
    Outcome whole = zortrace({L"show", trace.file});
    CHECK(whole.status == 0);
    CHECK(lines_of(whole.out) == trace.lines);

    const struct {
        std::vector<std::wstring> filter;
        std::function<bool(char, const std::string&)> keep;
    } cases[] = {
        {{L"--levels", L"ew"}, [](char letter, const std::string&) { return !letter || letter == 'E' || letter == 'W'; }},
        {{L"--levels", L"?"}, [](char letter, const std::string&) { return !letter || letter == '?'; }},
        {{L"--grep", L"BLOB"}, [](char, const std::string& head) { return head.find("blob") != std::string::npos; }},
        {{L"--grep", L"Filler Line 3"},
         [](char, const std::string& head) { return head.find("filler line 3") != std::string::npos; }},
        {{L"--since", L"2099-01-01"}, [](char letter, const std::string&) { return !letter; }},
        {{L"--until", L"2000-01-01 12:00"}, [](char letter, const std::string&) { return !letter; }},
    };
    for (const auto& c : cases) {
        std::vector<std::wstring> args{L"show", trace.file};
        args.insert(args.end(), c.filter.begin(), c.filter.end());
        Outcome shown = zortrace(args);
        CAPTURE(utf8(c.filter[1]));
        CHECK(shown.status == 0);
        CHECK(lines_of(shown.out) == trace.records(c.keep));
    }
    Outcome coloured = zortrace({L"show", trace.file, L"--levels", L"E", L"--color"});
    std::vector<std::string> lines = lines_of(coloured.out);
    REQUIRE(lines.size() == 5);
    CHECK(lines[0] == trace.lines[0]);
    CHECK(lines[1].rfind("\x1b[31mE", 0) == 0);
    CHECK(lines[2].find("HEX Dump: blob") != std::string::npos);
}

TEST_CASE("show reads --since and --until through the date pictures, to the end of the day, minute or second named")
{
    TempDir dir;
    std::wstring file = dir.file(L"times.log");
    write_file(file, kTimes);
    const std::vector<std::string> lines = lines_of(kTimes);
    const struct {
        std::vector<std::wstring> filter;
        std::vector<int> kept; // lines of kTimes
        int status;
    } cases[] = {
        {{L"--since", L"2026-11-18 10:00", L"--until", L"2026-11-18 10:59"}, {1, 2, 3}, 0},
        {{L"--since", L"2026-11-18T10:30:15"}, {2, 3, 4, 5, 6, 7, 8}, 0},
        {{L"--until", L"2026-11-18"}, {0, 1, 2, 3, 4, 5, 6, 7, 8}, 0},
        {{L"--until", L"2026-11-18 10:30:14"}, {0, 1}, 0},
        {{L"--since", L"2026-11-19"}, {}, 1},
    };
    for (const auto& c : cases) {
        std::vector<std::wstring> args{L"show", file};
        args.insert(args.end(), c.filter.begin(), c.filter.end());
        Outcome shown = zortrace(args);
        std::vector<std::string> expected;
        for (int i : c.kept)
            expected.push_back(lines[size_t(i)]);
        CAPTURE(utf8(c.filter[1]));
        CHECK(lines_of(shown.out) == expected);
        CHECK(shown.status == c.status);
    }
}

TEST_CASE("show takes a folder and stem in date order, a folder by stems, and refuses what is no trace")
{
    TempDir dir;
    write_file(dir.file(L"app20261119.log"), "I191126 000000000 second\r\n");
    write_file(dir.file(L"app20261118.log"), "I181126 000000000 first\r\n");
    write_file(dir.file(L"other20261117.log"), "I171126 000000000 other\r\n");
    write_file(dir.file(L"app.log"), "I181126 000000000 not daily\r\n");
    write_file(dir.file(L"app2026111.log"), "I181126 000000000 short date\r\n");
    write_file(dir.file(L"binary.dat"), std::string("I181126\0\x01\x02", 10));
    CreateDirectoryW(dir.file(L"empty").c_str(), nullptr);

    Outcome stem = zortrace({L"show", dir.file(L"app")});
    CHECK(stem.status == 0);
    CHECK(lines_of(stem.out) == std::vector<std::string>{"I181126 000000000 first", "I191126 000000000 second"});
    Outcome folder = zortrace({L"show", dir.path()});
    CHECK(lines_of(folder.out) == std::vector<std::string>{"I181126 000000000 first", "I191126 000000000 second",
                                                           "I171126 000000000 other"});

    const struct {
        std::vector<std::wstring> args;
        int status;
        const char* message;
    } refused[] = {
        {{L"show", dir.file(L"missing")}, 1, "no such file"},
        {{L"show", dir.file(L"empty")}, 1, "no trace files"},
        {{L"show", dir.file(L"binary.dat")}, 1, "binary"},
        {{L"show"}, 2, "at least one operand"},
        {{L"show", dir.path(), L"--levels", L"X"}, 2, "?DIWEA"},
        {{L"show", dir.path(), L"--since", L"2026-11-18 junk"}, 2, "yyyy-MM-dd"},
        {{L"show", dir.path(), L"--count", L"3"}, 2, "does not go with show"},
        {{L"listen", L"a", L"b"}, 2, "one operand"},
        {{L"follow", L"a", L"--last", L"-1"}, 2, "a number"},
        {{L"watch"}, 2, "unknown command"},
    };
    for (const auto& r : refused) {
        Outcome outcome = zortrace(r.args);
        CAPTURE(r.message);
        CHECK(outcome.status == r.status);
        CHECK(outcome.err.find(r.message) != std::string::npos);
    }
    Outcome partly = zortrace({L"show", dir.file(L"app20261118.log"), dir.file(L"missing")});
    CHECK(partly.status == 1);
    CHECK(partly.out == "I181126 000000000 first\n");
    CHECK(zortrace({L"--help"}).status == 0);
    CHECK(zortrace({L"--version"}).out.rfind("zortrace ", 0) == 0);
}

TEST_CASE("stats counts levels, hours and tagged facilities, finds the largest dump and sets sizes against the limit")
{
    TestTrace trace;
    trace.key.set_dword(L"TRACESIZE", 1);
    std::wstring file = trace.dir.file(L"app20261118.log");
    // A cut line long enough to take the file over its 1 KiB limit.
    write_file(file, std::string(1100, 'x') + "\r\n" + kTimes);
    Outcome counted = zortrace({L"stats", trace.stem(), L"--key", trace.key.path()});
    CHECK(counted.status == 0);
    std::vector<std::string> lines = lines_of(counted.out);
    auto has = [&](const std::string& line) {
        CAPTURE(line);
        CHECK(std::find(lines.begin(), lines.end(), line) != lines.end());
    };
    std::string size = "  " + utf8(file) + "  " + std::to_string(file_text(file).size()) + " bytes, ";
    REQUIRE(lines.size() > 1);
    CHECK(lines[1].rfind(size, 0) == 0);
    CHECK(lines[1].find("% of the limit of 1024 bytes: over it, the next line trims it") != std::string::npos);
    has("records     7, without a readable prefix 1");
    has("levels      ? 0 D 0 I 2 W 1 E 2 A 1");
    has("  2026-11-18 09:00  1");
    has("  2026-11-18 10:00  3");
    has("  2026-11-18 11:00  2");
    has("  [net]            2");
    has("  [db]             1");
    has("largest dump HEX \"big\", 64 bytes, E181126 110000000 in " + utf8(file));
}
