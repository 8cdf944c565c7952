#include <limits.h>

#include "alloc_check.h"
#include "dll_image.h"
#include "trace_fixture.h"

TEST_CASE("levels are single bits of the mask and facilities switch one by one")
{
    OwnTrace t;
    const struct {
        uint32_t mask;
        int32_t level;
        int32_t on;
    } rows[] = {
        {0x80000000u, 0, 1}, {0x7FFFFFFFu, 0, 0}, {8, 4, 1},           {8, 3, 0},
        {8, 5, 0},           {31, 5, 1},          {31, 0, 0},          {1, 1, 1},
        {1, 33, 1},          {1u << 30, -1, 1},   {0x80000000u, INT_MIN, 1}, {0, 1, 0},
    };
    for (const auto& row : rows) {
        t.obj.dwLevelMask = row.mask;
        CAPTURE(row.mask);
        CAPTURE(row.level);
        CHECK(TraceLevelEnabled(&t.obj, row.level) == row.on);
    }
    CHECK(EnableTrace(&t.obj, 300, 0) == 0);
    CHECK(TraceFacilityEnabled(&t.obj, 1, 300) == 1);
    CHECK(EnableTrace(&t.obj, 7, 5) == 1);
    CHECK(EnableTrace(&t.obj, 7, 1) == 5);
    CHECK(EnableTrace(&t.obj, 255, 0) == 1);
    CHECK(EnableTrace(&t.obj, 0xFFFFFFFFu, 0) == 0);
    for (int32_t level : {-7, 0, 3, 99}) {
        CHECK(TraceFacilityEnabled(&t.obj, level, 255) == 0);
        CHECK(TraceFacilityEnabled(&t.obj, level, 254) == 1);
    }
    // Levels outside the tables read as level 0.
    const uint16_t types[6] = {4, 0, 4, 2, 1, 4};
    memcpy(t.obj.awEventType, types, sizeof types);
    for (int32_t level : {6, -1, INT_MIN}) {
        CHECK(TraceLevelLetter(level) == L'?');
        CHECK(TraceEventType(&t.obj, level) == 4);
    }
    CHECK(TraceLevelLetter(4) == L'E');
    CHECK(TraceEventType(&t.obj, 3) == 2);

    int32_t* sinks[] = {&t.obj.bFile, &t.obj.bDebug, &t.obj.bEventLog, &t.obj.bMailslot};
    t.obj.bNT = 1;
    CHECK(TraceAnySink(&t.obj) == 0);
    for (int32_t* sink : sinks) {
        *sink = -1;
        CHECK(TraceAnySink(&t.obj) == 1);
        *sink = 0;
    }
}

TEST_CASE("size limit and cut-off date stay defined for every setting")
{
    OwnTrace t;
    const struct {
        int32_t kb;
        int32_t size;
        int exceeded;
    } sizes[] = {
        {10000, 10240000, 0}, {10000, 10240001, 1}, {0, INT_MAX, 0},       {-5, 100, 0},
        {1, -1, 0},           {2097151, INT_MAX, 1}, {2097152, INT_MAX, 0}, {INT_MAX, INT_MAX, 0},
    };
    for (const auto& row : sizes) {
        t.obj.nSizeKB = row.kb;
        CAPTURE(row.kb);
        CHECK(TraceSizeExceeded(&t.obj, row.size) == row.exceeded);
    }
    wchar_t text[kTraceDateUnits];
    TraceDateStr(text);
    CHECK(std::wstring(text) == date_back(0));
    // Beyond 65535 days the date arithmetic's 16 bits take the largest.
    for (int32_t days : {1, 7, 400, 65535, 70000}) {
        t.obj.nDays = days;
        TraceCutoffStr(&t.obj, text);
        CHECK(std::wstring(text) == date_back(days > 65535 ? 65535 : days));
    }
    {
        NoLeak no_leak;
        AllAllocationsFail no_memory;
        TraceCutoffStr(&t.obj, text);
    }
    CHECK(std::wstring(text) == L"INVALID");
}

TEST_CASE("the DLL exports the trace functions and the object, zero until started")
{
    REQUIRE(missing_exports({"TraceObj", "pTraceObj", "bTraceObjInitialized", "GetTraceObj",
                             "IsTraceObjInitialized", "EnableTrace", "TraceLevelEnabled",
                             "TraceFacilityEnabled", "Trace", "TraceVA", "TraceVAF", "TraceAscii",
                             "TraceAsciiF", "TraceHex", "TraceHexF", "TraceInit"}) == "");
    auto object = dll_proc<TraceObject*>("TraceObj");
    CHECK(*dll_proc<TraceObject**>("pTraceObj") == object);
    CHECK(*dll_proc<int32_t*>("bTraceObjInitialized") == 0);
    CHECK(dll_proc<TraceObject* (*)()>("GetTraceObj")() == object);
    CHECK(dll_proc<int32_t (*)()>("IsTraceObjInitialized")() == 0);
    static const TraceObject zero = {};
    CHECK(memcmp(object, &zero, sizeof zero) == 0);
    CHECK(GetTraceObj() == &TraceObj);
}
