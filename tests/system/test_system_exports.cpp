#include <doctest/doctest.h>

#include "dll_image.h"

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
