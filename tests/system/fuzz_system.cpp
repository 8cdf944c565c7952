#include <doctest/doctest.h>

#include <string.h>

#include <vector>

#include "fenced.h"
#include "fuzz.h"
#include "system_test_support.h"

namespace {

// Success, a refusal, or a system error in status form.
bool orderly(ZORStatus status)
{
    return status == 0 || status == ZOR_E_INVALIDARG || status >> 16 == 0x8007;
}

}

TEST_CASE("fuzz: the value readers give the stored bytes, or the default and the platform's code")
{
    PrivateKey pk;
    // Not text types: a text read back under Wine always gets a terminator,
    // and the readers don't look at the type.
    const DWORD types[] = {REG_BINARY, REG_NONE};
    decltype(&QueryRegEntryBool) numberReaders[] = {QueryRegEntryBool, QueryRegEntryDWord,
                                                    QueryRegEntryLong};
    fuzz_loop(400, [&](FuzzRng& rng) {
        const uint32_t capacity = rng.between(1, 20);
        // Often right at the buffer's size, where the terminator decides.
        std::vector<uint8_t> stored(rng.chance(50) ? size_t(int(capacity) * 2 + rng.between(-2, 2))
                                                   : rng.below(41));
        for (uint8_t& byte : stored)
            byte = rng.chance(20) ? 0 : uint8_t(rng.below(256));
        if (stored.size() >= 2 && rng.chance(30))
            stored.back() = stored[stored.size() - 2] = 0;
        const bool missing = rng.chance(10);
        if (missing)
            RegDeleteValueW(pk.key(), L"v");
        else
            pk.set_bytes(L"v", stored.data(), DWORD(stored.size()), rng.pick(types));
        const uint32_t units = uint32_t(stored.size() / 2);
        const std::wstring fallback = capacity >= 4 ? L"def" : L"";
        Fenced<wchar_t> data(capacity);
        uint32_t len = capacity;
        int32_t rc = QueryRegEntryString(pk.key(), L"v", data.data(), &len, fallback.c_str());
        // What the reader must make of the stored bytes: the units as they
        // are, and a terminator behind them when they have none.
        std::wstring text(units, L' ');
        memcpy(&text[0], stored.data(), units * 2);
        bool terminated = units > 0 && text.back() == 0;
        bool fits = !missing && stored.size() <= capacity * 2 && (terminated || units < capacity);
        CHECK(rc == (missing ? ERROR_FILE_NOT_FOUND : fits ? 0 : ERROR_MORE_DATA));
        CHECK(len == (fits ? units + !terminated : fallback.size() + 1));
        CHECK(std::wstring(data.data()) == (fits ? text.substr(0, text.find(L'\0')) : fallback));

        // Fewer than 4 bytes read as a number filled up with zero bytes.
        const uint32_t fallbackNumber = uint32_t(rng.next());
        uint32_t number = ~fallbackNumber, expected = 0;
        rc = rng.pick(numberReaders)(pk.key(), L"v", &number, fallbackNumber);
        bool small = !missing && stored.size() <= 4;
        memcpy(&expected, stored.data(), small ? stored.size() : 0);
        CHECK(rc == (missing ? ERROR_FILE_NOT_FOUND : small ? 0 : ERROR_MORE_DATA));
        CHECK(number == (small ? expected : fallbackNumber));
        if (missing)
            return;

        // The data area of the enumeration has the one byte beyond its size.
        Fenced<uint8_t> bytes(stored.size() + 1);
        Fenced<wchar_t> name(2);
        uint32_t nameLen = 2, size = uint32_t(stored.size()), type = 0;
        CHECK(EnumRegValue(pk.key(), 0, name.data(), &nameLen, &type, bytes.data(), &size) == 0);
        CHECK(size == stored.size());
        CHECK(bytes.data()[size] == 0);
        CHECK(memcmp(bytes.data(), stored.data(), size) == 0);
    });
}

TEST_CASE("fuzz: registry text files of random lines and random key paths end in a status")
{
    PrivateKey pk;
    TempDir dir;
    const std::wstring file = dir.file(L"random.reg");
    // The one section with a known root lies below the private key.
    const std::string section = "[" + hkcu(pk) + "\\r\\";
    const std::string pieces[] = {"\"", "=", "name", "17", "-", "[", "]", "\\", ";", " ", "\r\n",
                                  "HKEY_NOWHERE\\", section, "REGEDIT4", "\xe9",
                                  std::string(300, 'l')};
    fuzz_loop(80, [&](FuzzRng& rng) {
        std::string text;
        for (uint32_t n = rng.below(40); n > 0; --n)
            text += rng.pick(pieces);
        write_bytes(file, text);
        CAPTURE(text);
        std::vector<std::wstring> files{file};
        CHECK(orderly(ZOR_RegImport(&files)));
        std::wstring key = widen(hkcu(pk)) + L"\\r";
        for (uint32_t n = rng.below(8); n > 0; --n)
            key += rng.chance(75) ? L"\\" : std::wstring(rng.below(200), L'k');
        ZORRegExportArgs args{int(rng.below(2)), 1, int(rng.below(2)), key.c_str(), file.c_str()};
        CHECK(orderly(ZOR_RegExport(&args)));
    });
}

TEST_CASE("fuzz: update files of random lines end in 0 or a code and stay in their key")
{
    PrivateKey pk(HKEY_LOCAL_MACHINE, L"SOFTWARE");
    TempDir dir;
    const std::wstring file = dir.file(L"random.txt");
    // Only key lines open with a bracket, and they name a key below the
    // private one even when their last two units are cut, so that nothing
    // lands beside it.
    const std::string keyLine = "[X\\" + narrow(pk.path()) + "\\k";
    const std::string pieces[] = {"\"", "=", "name", "\\", "]", " ", "REGEDIT", "x",
                                  std::string(600, 'l')};
    fuzz_loop(120, [&](FuzzRng& rng) {
        std::string text;
        for (uint32_t line = rng.below(8); line > 0; --line) {
            text += rng.chance(30) ? keyLine : rng.chance(50) ? "\"" : "";
            for (uint32_t n = rng.below(8); n > 0; --n)
                text += rng.pick(pieces);
            text += rng.chance(90) ? "\n" : "";
        }
        write_bytes(file, text);
        CAPTURE(text);
        int32_t rc = UpdateRegistryWithFile(file.c_str());
        CHECK((rc == 0 || rc == ERROR_INVALID_DATA || rc == ERROR_FILE_NOT_FOUND));
    });
}
