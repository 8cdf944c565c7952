#include <wchar.h>

#include "../frame/zor_alloc.h"
#include "zor_reg.h"

// One walk per process, without a lock: the snapshot of the spooler's
// level-1 port records, the record at the cursor, the records not yet
// stepped past.
static void* pPortBlock = nullptr;
static PORT_INFO_1W* pPortCurrent = nullptr;
static DWORD dwPortsLeft = 0;

namespace {

void release_snapshot()
{
    zor_free(pPortBlock);
    pPortBlock = nullptr;
    pPortCurrent = nullptr;
}

}

int32_t GetLocalPorts(void)
{
    // A walk that was not finished gives way to the new snapshot.
    release_snapshot();
    dwPortsLeft = 0;
    DWORD needed = 0, count = 0;
    if (EnumPortsW(nullptr, 1, nullptr, 0, &needed, &count))
        return 1; // nothing to list
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return 0;
    pPortBlock = zor_malloc(needed);
    if (!pPortBlock ||
        !EnumPortsW(nullptr, 1, static_cast<BYTE*>(pPortBlock), needed, &needed, &count)) {
        release_snapshot();
        return 0;
    }
    dwPortsLeft = count;
    if (count == 0)
        release_snapshot(); // no step would ever release it
    else
        pPortCurrent = static_cast<PORT_INFO_1W*>(pPortBlock);
    return 1;
}

int32_t GetNextPortInfo(void)
{
    if (dwPortsLeft == 0)
        return 0;
    if (--dwPortsLeft == 0)
        release_snapshot();
    else
        ++pPortCurrent;
    return 1;
}

uint32_t GetCurrentPortName(wchar_t* name, uint32_t nameLen)
{
    const wchar_t* current = pPortCurrent ? pPortCurrent->pName : L"";
    uint32_t units = pPortCurrent ? uint32_t(wcslen(current) + 1) : 0;
    if (nameLen > 0)
        wcscpy(name, units <= nameLen ? current : L"");
    return units;
}
