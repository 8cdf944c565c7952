#include <doctest/doctest.h>

#include "private_key.h"
#include "system_test_support.h"

// Stored bytes of every length and buffers of every size go through the
// fuzz loop of the readers; these rows are the named cases.
TEST_CASE("the readers give stored values unchanged, or the default with the platform's code")
{
    PrivateKey pk;
    pk.set_dword(L"number", 0x12345678);
    pk.set_dword(L"flag", 5);
    pk.set_text(L"fits", L"fffff");
    pk.set_text(L"one over", L"uuuuuu");
    const struct {
        const wchar_t* name;
        int32_t rc;
        uint32_t number;
        std::wstring text;
    } rows[] = {
        {L"missing", ERROR_FILE_NOT_FOUND, 77, L"def"},
        {L"number", 0, 0x12345678, L"\x5678\x1234"},
        {L"flag", 0, 5, L"\5"},
        {L"fits", ERROR_MORE_DATA, 77, L"fffff"},
        {L"one over", ERROR_MORE_DATA, 77, L"def"},
    };
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.name));
        for (auto read : {QueryRegEntryBool, QueryRegEntryDWord, QueryRegEntryLong}) {
            uint32_t value = 0xDEADBEEF;
            CHECK(read(pk.key(), row.name, &value, 77) == row.rc);
            CHECK(value == row.number);
        }
        wchar_t data[7] = L"######";
        uint32_t len = 6;
        CHECK(QueryRegEntryString(pk.key(), row.name, data, &len, L"def") ==
              (row.text == L"def" ? row.rc : 0));
        CHECK(std::wstring(data) == row.text);
        CHECK(len == row.text.size() + 1);
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
