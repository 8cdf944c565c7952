// The guard heap of the allocation seam, built into the static core only: a
// test program switches it on, the DLL never carries it. Blocks are carved
// from one large reservation, each on pages of its own followed by a page that
// is never committed, and placed so that the block's last byte is the last
// byte before that page; a block is thus aligned as far as its size allows,
// which is all its elements need. The start of its first
// page holds the block's record and a canary up to the block, checked when the
// block is resized or freed. Freed pages are decommitted and never reused.
#include "zor_alloc.h"

#include <malloc.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

namespace {

constexpr size_t        kPage = 4096;
constexpr size_t        kReservation = size_t(64) << 30;  // address space only
// Freed pages are never handed out again; a long run takes further
// reservations, up to 1 TiB in all.
constexpr int           kMaxReservations = 16;
constexpr unsigned char kCanary = 0xCB;
// Each live block costs the process two mappings; past this many, blocks come
// from the runtime's heap again, so that the mapping limit is never reached.
constexpr long kMaxLiveBlocks = 20000;
// Larger blocks come from the runtime's heap too: arrays that grow by small
// steps would otherwise copy themselves into fresh pages at every step.
constexpr size_t kMaxGuardedBytes = size_t(256) << 10;

struct Record {
    size_t bytes;
    size_t pages;  // committed pages, the guard page not counted
};

SRWLOCK g_lock = SRWLOCK_INIT;
char*        g_reservations[kMaxReservations];
volatile int g_reserved;  // reservations made; only the last one is carved
size_t       g_used;      // bytes carved from the last one
long    g_live;

// The record lies right in front of the block, unaligned where the block is.
Record record_of(const void* block)
{
    Record record;
    memcpy(&record, static_cast<const char*>(block) - sizeof record, sizeof record);
    return record;
}

char* first_page(const void* block, const Record& record)
{
    return static_cast<char*>(const_cast<void*>(block)) + record.bytes - record.pages * kPage;
}

void check_canary(const void* block, const Record& record)
{
    const char* page = first_page(block, record);
    const char* end = static_cast<const char*>(block) - sizeof record;
    for (const char* p = page; p < end; ++p)
        if (static_cast<unsigned char>(*p) != kCanary)
            RaiseException(zor_alloc_probe::kCanaryDamaged, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

void* allocate(size_t bytes)
{
    const size_t pages = (sizeof(Record) + 16 + bytes + kPage - 1) / kPage;
    char* page = nullptr;
    AcquireSRWLockExclusive(&g_lock);
    const size_t need = (pages + 1) * kPage;
    if (bytes <= kMaxGuardedBytes && g_live < kMaxLiveBlocks) {
        if ((!g_reserved || g_used + need > kReservation) && g_reserved < kMaxReservations) {
            if (char* more = static_cast<char*>(VirtualAlloc(nullptr, kReservation, MEM_RESERVE, PAGE_NOACCESS))) {
                g_reservations[g_reserved] = more;
                g_reserved = g_reserved + 1;
                g_used = 0;
            }
        }
        char* base = g_reserved ? g_reservations[g_reserved - 1] : nullptr;
        if (base && g_used + need <= kReservation &&
            VirtualAlloc(base + g_used, pages * kPage, MEM_COMMIT, PAGE_READWRITE)) {
            page = base + g_used;
            g_used += need;
            ++g_live;
        }
    }
    ReleaseSRWLockExclusive(&g_lock);
    if (!page)
        return malloc(bytes);
    char* block = page + pages * kPage - bytes;
    const Record record = {bytes, pages};
    memset(page, kCanary, size_t(block - page) - sizeof record);
    memcpy(block - sizeof record, &record, sizeof record);
    return block;
}

void release(void* block)
{
    if (!zor_alloc_probe::guard_heap_owns(block)) {
        free(block);
        return;
    }
    const Record record = record_of(block);
    check_canary(block, record);
    VirtualFree(first_page(block, record), record.pages * kPage, MEM_DECOMMIT);
    AcquireSRWLockExclusive(&g_lock);
    --g_live;
    ReleaseSRWLockExclusive(&g_lock);
}

void* resize(void* block, size_t bytes)
{
    if (block && !zor_alloc_probe::guard_heap_owns(block))
        return realloc(block, bytes);
    void* moved = allocate(bytes);
    if (moved && block) {
        const Record record = record_of(block);
        check_canary(block, record);
        memcpy(moved, block, record.bytes < bytes ? record.bytes : bytes);
        release(block);
    }
    return moved;
}

size_t measure(const void* block)
{
    return zor_alloc_probe::guard_heap_owns(block) ? record_of(block).bytes : _msize(const_cast<void*>(block));
}

const zor_alloc_probe::Heap kGuardHeap = {allocate, resize, release, measure};

}

namespace zor_alloc_probe {
const Heap& guard_heap() { return kGuardHeap; }

bool guard_heap_owns(const void* address)
{
    const char* p = static_cast<const char*>(address);
    for (int i = 0; i < g_reserved; ++i)
        if (p >= g_reservations[i] && p < g_reservations[i] + kReservation)
            return true;
    return false;
}
}
