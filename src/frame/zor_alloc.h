// The one seam through which the library takes heap memory. Production code
// calls these instead of malloc and friends, so that tests can make the Nth
// allocation fail and count the blocks that are still alive.
#pragma once

#include <stddef.h>

void* zor_malloc(size_t bytes);
void* zor_calloc(size_t count, size_t bytes);
void* zor_realloc(void* block, size_t bytes);
void  zor_free(void* block);

// Test control. Not exported from the DLL; tests link the static core.
namespace zor_alloc_probe {
// The nth allocation request from now on fails (1 = the next one); 0 never.
void fail_nth(long n);
// Every allocation request fails while set.
void fail_all(bool on);
// Allocation requests made since the process started.
long requests();
// Blocks handed out and not yet freed.
long live_blocks();

// Another heap behind the seam for the rest of the process, for hostile-input
// tests. It must take blocks of the runtime's heap handed out before it came
// in, and hand them back to free and realloc; there is no way back.
struct Heap {
    void*  (*allocate)(size_t bytes);
    void*  (*resize)(void* block, size_t bytes);
    void   (*release)(void* block);
    size_t (*measure)(const void* block);  // bytes asked for the block
};
void use_heap(const Heap& heap);
// The size of a block of the seam, under whichever heap is in use.
size_t block_bytes(const void* block);

// The guard heap (static core only): every block ends at a no-access page,
// the rest of its first page is a checked canary, and a freed block's pages
// are decommitted, so that overruns, underruns and use after free fault.
// Blocks over 256 KiB, and any beyond 20,000 live ones, come from the
// runtime's heap, which keeps growing arrays and the process's mappings
// within bounds.
// Returns the heap for use_heap.
const Heap& guard_heap();
// Whether `address` lies in the guard heap's pages, live or freed.
bool guard_heap_owns(const void* address);
// Exception code raised when a block's canary was found damaged.
constexpr unsigned long kCanaryDamaged = 0xE0A1C0DEul;
}
