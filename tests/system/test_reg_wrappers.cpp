#include <doctest/doctest.h>

#include "dll_image.h"
#include "private_key.h"
#include "system_test_support.h"

// The value readers are checked against stored bytes of every length in the
// fuzz loop; these are the key calls and the enumeration's terminators.
TEST_CASE("keys are made, found, enumerated with terminators and kept while they have subkeys")
{
    PrivateKey pk;
    HKEY key = nullptr;
    REQUIRE(CreateRegKey(pk.key(), L"child\\grandchild", KEY_ALL_ACCESS, &key) == 0);
    CHECK(CloseRegKey(key) == 0);
    CHECK(OpenRegKey(pk.key(), L"absent", KEY_READ, &key) == ERROR_FILE_NOT_FOUND);
    CHECK(DeleteRegKey(pk.key(), L"child") == ERROR_ACCESS_DENIED);
    pk.set_bytes(L"raw", "\1\2\3", 3);
    wchar_t name[9] = L"########";
    uint32_t len = 8, type = 0, size = 3;
    CHECK(EnumRegKey(pk.key(), 0, name, &len) == 0);
    CHECK(std::wstring(name) == L"child");
    CHECK(len == 5);
    CHECK(EnumRegKey(pk.key(), 1, name, &len) == ERROR_NO_MORE_ITEMS);
    uint8_t data[5] = {9, 9, 9, 9, 9};
    len = 8;
    CHECK(EnumRegValue(pk.key(), 0, name, &len, &type, data, &size) == 0);
    CHECK(std::wstring(name) == L"raw");
    CHECK(describe_value(type, data, 5) == L"3:0102030009");
    len = 8;
    CHECK(EnumRegValue(pk.key(), 0, name, &len, nullptr, nullptr, nullptr) == 0);
    CHECK(DeleteRegKey(pk.key(), L"child\\grandchild") == 0);
    CHECK(DeleteRegKey(pk.key(), L"child") == 0);
}

TEST_CASE("the DLL exports the registry, registration and port functions under their names")
{
    REQUIRE(zor_load_dll());
    CHECK(missing_exports({"OpenRegKey", "CreateRegKey", "CloseRegKey", "DeleteRegKey",
                           "EnumRegKey", "EnumRegValue", "QueryRegEntryBool", "QueryRegEntryDWord",
                           "QueryRegEntryLong", "QueryRegEntryString", "ZOR_RegExport",
                           "ZOR_RegImport", "ZOR_OCXRegister", "UpdateRegistry",
                           "UpdateRegistryWithFile", "GetLocalPorts", "GetNextPortInfo",
                           "GetCurrentPortName"}) == "");
}
