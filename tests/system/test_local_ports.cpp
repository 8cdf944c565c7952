#include <doctest/doctest.h>

#include <vector>

#include "alloc_check.h"
#include "wide_text.h"
#include "zor_reg.h"

namespace {

// Names at the cursor, one step after each, then the number of steps that
// gave 1; bounded, so that a walk that never ends fails instead of hanging.
std::wstring walk()
{
    std::wstring seen;
    wchar_t name[64];
    uint32_t ones = 0;
    for (; GetCurrentPortName(name, 64) && ones < 1000; ones += GetNextPortInfo())
        seen += std::wstring(name) + L"\n";
    return seen + std::to_wstring(ones);
}

}

TEST_CASE("the port walk gives 1 for each port the spooler lists, then 0 for good")
{
    NoLeak leak;
    wchar_t name[64] = L"#";
    CHECK(GetNextPortInfo() == 0);
    CHECK(GetCurrentPortName(name, 64) == 0);
    CHECK(name[0] == 0);
    DWORD needed = 0, count = 0;
    EnumPortsW(nullptr, 1, nullptr, 0, &needed, &count);
    std::vector<BYTE> block(needed);
    REQUIRE(EnumPortsW(nullptr, 1, block.data(), needed, &needed, &count));
    std::wstring listed;
    for (DWORD i = 0; i < count; ++i)
        listed += std::wstring(reinterpret_cast<PORT_INFO_1W*>(block.data())[i].pName) + L"\n";
    REQUIRE(count > 0);

    const long live = zor_alloc_probe::live_blocks();
    CHECK(GetLocalPorts() == 1);
    CHECK(zor_alloc_probe::live_blocks() == live + 1);
    // A name without room for it: its size, and an empty text.
    CHECK(GetCurrentPortName(name, 2) == listed.find(L'\n') + 1);
    CHECK(name[0] == 0);
    CHECK(walk() == listed + std::to_wstring(count));
    CHECK(zor_alloc_probe::live_blocks() == live);
    CHECK(GetNextPortInfo() == 0);
    CHECK(GetNextPortInfo() == 0);

    // A second snapshot in the middle of a walk replaces the first.
    CHECK(GetLocalPorts() == 1);
    CHECK(GetNextPortInfo() == 1);
    CHECK(GetLocalPorts() == 1);
    CHECK(zor_alloc_probe::live_blocks() == live + 1);
    CHECK(walk() == listed + std::to_wstring(count));
    {
        AllAllocationsFail exhausted;
        CHECK(GetLocalPorts() == 0);
    }
    CHECK(GetNextPortInfo() == 0);
}
