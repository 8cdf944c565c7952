#include <doctest/doctest.h>

#include <string.h>

#include <string>

#include "private_key.h"
#include "wide_text.h"
#include "zor_reg.h"

namespace {

using NumberReader = int32_t (*)(HKEY, const wchar_t*, uint32_t*, uint32_t);

struct Bytes {
    const char* data;
    DWORD size;
    DWORD type;
};

}

TEST_CASE("the number readers pass stored bytes through and fall back to the default")
{
    PrivateKey pk;
    const uint8_t big[] = {0x78, 0x56, 0x34, 0x12};
    struct Row {
        const wchar_t* name;
        Bytes stored;
        int32_t rc;
        uint32_t value;
    } rows[] = {
        {L"missing", {nullptr, 0, 0}, ERROR_FILE_NOT_FOUND, 77},
        {L"number", {reinterpret_cast<const char*>(big), 4, REG_DWORD}, 0, 0x12345678},
        {L"flag", {"\5\0\0\0", 4, REG_DWORD}, 0, 5},
        {L"two bytes", {"\x34\x12", 2, REG_BINARY}, 0, 0x1234},
        {L"empty", {"", 0, REG_BINARY}, 0, 0},
        {L"five bytes", {"\1\2\3\4\5", 5, REG_BINARY}, ERROR_MORE_DATA, 77},
        {L"short text", {"A\0\0\0", 4, REG_SZ}, 0, 65},
    };
    for (const Row& row : rows)
        if (row.stored.data)
            pk.set_bytes(row.name, row.stored.data, row.stored.size, row.stored.type);
    for (NumberReader read : {QueryRegEntryBool, QueryRegEntryDWord, QueryRegEntryLong}) {
        for (const Row& row : rows) {
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
    const uint32_t capacity = 6;
    const std::wstring fits(capacity - 1, L'f'), full(capacity, L'u');
    pk.set_text(L"fits", fits);
    pk.set_text(L"one over", full);
    pk.set_text(L"empty", L"");
    // Stored as binary: a text value read back always carries a terminator.
    pk.set_bytes(L"open short", fits.data(), DWORD(fits.size() * 2));
    pk.set_bytes(L"open full", full.data(), DWORD(full.size() * 2));
    pk.set_bytes(L"odd byte", "a\0b\0c", 5);
    pk.set_bytes(L"nothing", "", 0);
    struct Row {
        const wchar_t* name;
        int32_t rc;
        std::wstring text;
        uint32_t len;
    } rows[] = {
        {L"fits", 0, fits, capacity},
        {L"one over", ERROR_MORE_DATA, L"def", 4},
        {L"missing", ERROR_FILE_NOT_FOUND, L"def", 4},
        {L"empty", 0, L"", 1},
        {L"open short", 0, fits, capacity},
        {L"open full", ERROR_MORE_DATA, L"def", 4},
        {L"odd byte", 0, L"ab", 3},
        {L"nothing", 0, L"", 1},
    };
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.name));
        wchar_t data[capacity + 1];
        wmemset(data, L'#', capacity + 1);
        uint32_t len = capacity;
        CHECK(QueryRegEntryString(pk.key(), row.name, data, &len, L"def") == row.rc);
        CHECK(std::wstring(data) == row.text);
        CHECK(len == row.len);
        CHECK(data[capacity] == L'#');
    }
}

TEST_CASE("keys are made, found, enumerated with terminators and refused for deletion with subkeys")
{
    PrivateKey pk;
    HKEY child = nullptr, grandchild = nullptr, opened = nullptr;
    REQUIRE(CreateRegKey(pk.key(), L"child", KEY_ALL_ACCESS, &child) == 0);
    REQUIRE(CreateRegKey(child, L"grandchild", KEY_ALL_ACCESS, &grandchild) == 0);
    CHECK(CloseRegKey(grandchild) == 0);
    CHECK(OpenRegKey(pk.key(), L"absent", KEY_READ, &opened) == ERROR_FILE_NOT_FOUND);
    CHECK(DeleteRegKey(pk.key(), L"child") == ERROR_ACCESS_DENIED);
    CHECK(OpenRegKey(pk.key(), L"child\\grandchild", KEY_READ, &opened) == 0);
    CHECK(CloseRegKey(opened) == 0);

    wchar_t name[16];
    wmemset(name, L'#', 16);
    uint32_t len = 16;
    CHECK(EnumRegKey(pk.key(), 0, name, &len) == 0);
    CHECK(std::wstring(name) == L"child");
    CHECK(len == 5);
    wmemset(name, L'#', 16);
    len = 16;
    CHECK(EnumRegKey(pk.key(), 1, name, &len) == ERROR_NO_MORE_ITEMS);
    CHECK(name[0] == L'#');
    len = 3;
    CHECK(EnumRegKey(pk.key(), 0, name, &len) == ERROR_MORE_DATA);

    pk.set_bytes(L"raw", "\1\2\3", 3);
    uint8_t data[8];
    memset(data, 0xAA, sizeof data);
    uint32_t type = 0, dataLen = 3;
    len = 16;
    CHECK(EnumRegValue(pk.key(), 0, name, &len, &type, data, &dataLen) == 0);
    CHECK(std::wstring(name) == L"raw");
    CHECK(len == 3);
    CHECK(type == REG_BINARY);
    CHECK(dataLen == 3);
    CHECK(data[2] == 3);
    CHECK(data[3] == 0);
    CHECK(data[4] == 0xAA);
    dataLen = 2;
    len = 16;
    CHECK(EnumRegValue(pk.key(), 0, name, &len, &type, data, &dataLen) == ERROR_MORE_DATA);
    len = 16;
    CHECK(EnumRegValue(pk.key(), 0, name, &len, nullptr, nullptr, nullptr) == 0);
    CHECK(EnumRegValue(pk.key(), 1, name, &len, &type, data, &dataLen) == ERROR_NO_MORE_ITEMS);
    CHECK(CloseRegKey(child) == 0);
}
