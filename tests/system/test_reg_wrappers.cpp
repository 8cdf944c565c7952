#include <doctest/doctest.h>

#include "private_key.h"
#include "system_test_support.h"

TEST_CASE("the number readers pass up to 4 stored bytes through and else give the default")
{
    PrivateKey pk;
    const struct {
        const wchar_t* name;
        const char* bytes; // null: not stored
        DWORD size, type;
        int32_t rc;
        uint32_t value;
    } rows[] = {
        {L"missing", nullptr, 0, 0, ERROR_FILE_NOT_FOUND, 77},
        {L"number", "\x78\x56\x34\x12", 4, REG_DWORD, 0, 0x12345678},
        {L"flag", "\5\0\0\0", 4, REG_DWORD, 0, 5},
        {L"two bytes", "\x34\x12", 2, REG_BINARY, 0, 0x1234},
        {L"no bytes", "", 0, REG_BINARY, 0, 0},
        {L"five bytes", "\1\2\3\4\5", 5, REG_BINARY, ERROR_MORE_DATA, 77},
        {L"short text", "A\0\0\0", 4, REG_SZ, 0, 65},
    };
    for (const auto& row : rows)
        if (row.bytes)
            pk.set_bytes(row.name, row.bytes, row.size, row.type);
    for (auto read : {QueryRegEntryBool, QueryRegEntryDWord, QueryRegEntryLong}) {
        for (const auto& row : rows) {
            CAPTURE(std::wstring(row.name));
            uint32_t value = 0xDEADBEEF;
            CHECK(read(pk.key(), row.name, &value, 77) == row.rc);
            CHECK(value == row.value);
        }
    }
}

TEST_CASE("the string reader fills its buffer to the last unit, terminates, or gives the default")
{
    PrivateKey pk;
    const std::wstring fits(5, L'f'), full(6, L'u');
    pk.set_text(L"fits", fits);
    pk.set_text(L"one over", full);
    pk.set_text(L"empty", L"");
    // Stored as binary: a text value read back always carries a terminator.
    pk.set_bytes(L"open short", fits.data(), 10);
    pk.set_bytes(L"open full", full.data(), 12);
    pk.set_bytes(L"odd byte", "a\0b\0c", 5);
    pk.set_bytes(L"nothing", "", 0);
    const struct {
        const wchar_t* name;
        int32_t rc;
        std::wstring text;
        uint32_t len;
    } rows[] = {
        {L"fits", 0, fits, 6},         {L"one over", ERROR_MORE_DATA, L"def", 4},
        {L"empty", 0, L"", 1},         {L"missing", ERROR_FILE_NOT_FOUND, L"def", 4},
        {L"open short", 0, fits, 6},   {L"open full", ERROR_MORE_DATA, L"def", 4},
        {L"odd byte", 0, L"ab", 3},    {L"nothing", 0, L"", 1},
    };
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.name));
        wchar_t data[7] = L"######";
        uint32_t len = 6;
        CHECK(QueryRegEntryString(pk.key(), row.name, data, &len, L"def") == row.rc);
        CHECK(std::wstring(data) == row.text);
        CHECK(len == row.len);
    }
}

TEST_CASE("keys are made, found, enumerated with terminators and kept while they have subkeys")
{
    PrivateKey pk;
    HKEY key = nullptr;
    REQUIRE(CreateRegKey(pk.key(), L"child\\grandchild", KEY_ALL_ACCESS, &key) == 0);
    CHECK(CloseRegKey(key) == 0);
    CHECK(OpenRegKey(pk.key(), L"absent", KEY_READ, &key) == ERROR_FILE_NOT_FOUND);
    CHECK(DeleteRegKey(pk.key(), L"child") == ERROR_ACCESS_DENIED);
    REQUIRE(OpenRegKey(pk.key(), L"child\\grandchild", KEY_READ, &key) == 0);
    CHECK(CloseRegKey(key) == 0);
    pk.set_bytes(L"raw", "\1\2\3", 3);
    // Each call as text: code, name up to the first '#', length, and for
    // values the type and the bytes up to the one beyond the data.
    auto enumerated = [&](bool value, uint32_t index, uint32_t len, uint32_t size) {
        wchar_t name[9] = L"########";
        uint8_t data[6] = {9, 9, 9, 9, 9, 9};
        uint32_t type = 0;
        int32_t rc = value ? EnumRegValue(pk.key(), index, name, &len, &type, data, &size)
                           : EnumRegKey(pk.key(), index, name, &len);
        std::wstring shown = std::to_wstring(rc) + L" " + std::wstring(name, wcscspn(name, L"#")) +
                             L" " + std::to_wstring(len);
        return value && rc == 0 ? shown + L" " + describe_value(type, data, size + 2) : shown;
    };
    CHECK(enumerated(false, 0, 8, 0) == L"0 child 5");
    CHECK(enumerated(false, 1, 8, 0) == L"259  8");
    CHECK(enumerated(false, 0, 3, 0).substr(0, 4) == L"234 ");
    CHECK(enumerated(true, 0, 8, 3) == L"0 raw 3 3:0102030009");
    CHECK(enumerated(true, 0, 8, 2).substr(0, 4) == L"234 ");
    CHECK(enumerated(true, 1, 8, 3) == L"259  8");
    uint32_t len = 8;
    wchar_t name[9];
    CHECK(EnumRegValue(pk.key(), 0, name, &len, nullptr, nullptr, nullptr) == 0);
}
