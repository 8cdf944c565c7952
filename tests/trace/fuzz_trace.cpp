#include "fenced.h"
#include "fuzz.h"
#include "private_key.h"
#include "trace_fixture.h"

namespace {

template <size_t N>
bool terminated_within(const wchar_t (&field)[N])
{
    return wcsnlen(field, N) < N;
}

// A text of a length near `limit`, from letters that make no path.
std::wstring letters_near(FuzzRng& rng, uint32_t limit)
{
    return std::wstring(rng.below(limit + 3), static_cast<wchar_t>(L'a' + rng.below(26)));
}

}

TEST_CASE("fuzz: trace start with hostile registry values and names")
{
    TempDir dir(true);
    PrivateKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE");
    OwnTrace t;
    fuzz_loop(1000, [&](FuzzRng& rng) {
        const wchar_t* numbers[] = {L"TRACESIZE", L"TRACEDAYS", L"TRACELEVEL", L"TRACEDEBUG",
                                    L"TRACEFILE", L"TRACEMAILSLOT"};
        for (const wchar_t* name : numbers)
            key.set_dword(name, static_cast<DWORD>(rng.chance(50) ? rng.below(3) : rng.extreme()));
        key.set_text(L"DISABLED_FACILITIES", rng.text(260, L"0123456789,; x-"));
        key.set_text(L"EVENTSOURCE", rng.text(35));
        key.set_text(L"TRACEPATH", rng.chance(50) ? dir.path() : letters_near(rng, 100));
        key.set_text(L"MAILSLOT", letters_near(rng, 90));
        key.set_text(L"DEFAULT_TRACEFILE", letters_near(rng, 260));
        Fenced<wchar_t> name(letters_near(rng, 260));
        DeleteCriticalSection(&t.obj.cs);
        TraceInit(&t.obj, key.path().c_str(), rng.chance(50) ? name.data() : nullptr,
                  rng.chance(30));

        CHECK(terminated_within(t.obj.szFile));
        CHECK(terminated_within(t.obj.szBaseName));
        CHECK(terminated_within(t.obj.szPath));
        CHECK(terminated_within(t.obj.szMailslot));
        CHECK(terminated_within(t.obj.szEventSource));
        size_t path = wcslen(t.obj.szPath);
        CHECK((path == 0 || t.obj.szPath[path - 1] == L'\\' || t.obj.szPath[path - 1] == L'/'));
        CHECK(wcslen(t.obj.szBaseName) <= 242);
        if (t.obj.bFile)
            CHECK(std::wstring(t.obj.szFile) ==
                  std::wstring(t.obj.szBaseName) + date_back(0) + L".log");
        if (t.obj.bMailslot)
            CHECK(wcsncmp(t.obj.szMailslot, L"\\\\*\\mailslot\\", 13) == 0);
        for (int32_t entry : t.obj.aFacility)
            CHECK((entry == 0 || entry == 1));
        if (t.obj.bFile)
            DeleteFileW(t.obj.szFile);
    });
}

TEST_CASE("fuzz: dumps of any count and title keep their line shapes")
{
    TempDir dir(true);
    fuzz_loop(2000, [&](FuzzRng& rng) {
        bool ascii = rng.chance(50);
        int32_t count = rng.extreme();
        if (count > 3000)
            count %= 3000;
        size_t units = count > 0 ? static_cast<size_t>(count) : 0;
        Fenced<wchar_t> text(units);
        Fenced<unsigned char> bytes(units);
        for (size_t i = 0; i < units; ++i) {
            text.data()[i] = static_cast<wchar_t>(rng.chance(5) ? 0 : L' ' + rng.below(95));
            bytes.data()[i] = static_cast<unsigned char>(rng.below(256));
        }
        // Any unit but a line end, which would make two lines of the header.
        Fenced<wchar_t> title(rng.text(rng.chance(10) ? 3000 : 40,
                                       L"ab XY%$*\t\"'\\\x00A0\xD800\xFFFF\x20AC\x00E4"));
        FILE* file = _wfopen(dir.file(L"dump.log").c_str(), L"w+");
        REQUIRE(file != nullptr);
        TraceEventStrings events = {};
        TraceDumpSinks sinks = {file, 0, &events};
        TraceWriteDump(sinks, ascii ? TraceDumpKind::Ascii : TraceDumpKind::Hex, L"P ",
                       title.data(), ascii ? static_cast<const void*>(text.data()) : bytes.data(),
                       count);
        fclose(file);

        std::vector<std::string> lines = file_lines(dir.file(L"dump.log"));
        int32_t step = ascii ? 60 : 32;
        size_t body = units / step + (units % step ? 1 : 0);
        REQUIRE(lines.size() == 1 + body);
        CHECK(lines[0].size() <= 2047);
        for (size_t i = 1; i < lines.size(); ++i) {
            size_t n = i < body ? step : units - (body - 1) * step;
            CHECK(lines[i].size() == (ascii ? n : 101 + n));
        }
        CHECK(events.count == (lines.size() < 100 ? lines.size() : 100));
        for (uint16_t i = 0; i < events.count; ++i)
            CHECK(events.items[i][wcslen(events.items[i]) - 1] == L'\n');
        TraceEventRelease(&events);
    });
}
