#include "trace_internal.h"

TraceObject  TraceObj;
TraceObject* pTraceObj = &TraceObj;
int32_t      bTraceObjInitialized;

// Invalid until a mailslot line opens it, so that an object that was set up
// by hand never writes through a handle that was never opened.
HANDLE hTraceMailslot = INVALID_HANDLE_VALUE;

namespace {

bool valid_level(int32_t level) { return level >= 0 && level <= 5; }

}

TraceObject* GetTraceObj(void) { return pTraceObj; }

int32_t IsTraceObjInitialized(void) { return bTraceObjInitialized; }

int32_t EnableTrace(TraceObject* obj, uint32_t facility, int32_t enable)
{
    if (facility >= 256)
        return 0;
    int32_t previous = obj->aFacility[facility];
    obj->aFacility[facility] = enable;
    return previous;
}

int32_t TraceLevelEnabled(const TraceObject* obj, int32_t level)
{
    return TraceLevelOn(obj, level);
}

int32_t TraceFacilityEnabled(const TraceObject* obj, int32_t level, uint32_t facility)
{
    return TraceFacilityOn(obj, facility);
}

wchar_t TraceLevelLetter(int32_t level) { return valid_level(level) ? L"?DIWEA"[level] : L'?'; }

uint16_t TraceEventType(const TraceObject* obj, int32_t level)
{
    return obj->awEventType[valid_level(level) ? level : 0];
}
