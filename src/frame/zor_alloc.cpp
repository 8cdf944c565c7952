#include "zor_alloc.h"

#include <malloc.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

namespace {
volatile LONG g_requests;
volatile LONG g_live;
volatile LONG g_failAt;    // request number that fails, 0 for none
volatile LONG g_failAll;

void* crt_resize(void* block, size_t bytes) { return realloc(block, bytes); }
size_t crt_measure(const void* block) { return _msize(const_cast<void*>(block)); }
const zor_alloc_probe::Heap kRuntimeHeap = {malloc, crt_resize, free, crt_measure};
const zor_alloc_probe::Heap* volatile g_heap = &kRuntimeHeap;

bool next_request_fails()
{
    LONG n = InterlockedIncrement(&g_requests);
    return g_failAll || (g_failAt != 0 && n == g_failAt);
}

void* counted(void* block)
{
    if (block)
        InterlockedIncrement(&g_live);
    return block;
}
}

void* zor_malloc(size_t bytes)
{
    return next_request_fails() ? nullptr : counted(g_heap->allocate(bytes));
}

void* zor_calloc(size_t count, size_t bytes)
{
    if (next_request_fails() || (bytes && count > SIZE_MAX / bytes))
        return nullptr;
    void* block = g_heap->allocate(count * bytes);
    if (block)
        memset(block, 0, count * bytes);
    return counted(block);
}

void* zor_realloc(void* block, size_t bytes)
{
    if (next_request_fails())
        return nullptr;
    void* moved = g_heap->resize(block, bytes);
    // A block that is resized was counted when it was first handed out.
    return block ? moved : counted(moved);
}

void zor_free(void* block)
{
    if (!block)
        return;
    InterlockedDecrement(&g_live);
    g_heap->release(block);
}

namespace zor_alloc_probe {
void fail_nth(long n) { g_failAt = n > 0 ? g_requests + n : 0; }
void fail_all(bool on) { g_failAll = on; }
long requests() { return g_requests; }
long live_blocks() { return g_live; }
void use_heap(const Heap& heap) { g_heap = &heap; }
size_t block_bytes(const void* block) { return g_heap->measure(block); }
}
