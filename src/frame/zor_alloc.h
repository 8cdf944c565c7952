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
}
