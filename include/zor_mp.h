/* MP: the memory pool, an arena for byte strings. Items are copied into
   large blocks, back to back, with no alignment and no header, and are
   released all at once by MPDestroy. An item never moves: a block, once
   taken, never grows. The blocks are kept in a DA, in the order taken. */
#ifndef ZOR_MP_H
#define ZOR_MP_H

#include "zor_api.h"
#include "zor_da.h"

typedef struct MPBlock {
    void*   pData; /* the block */
    int32_t nUsed; /* bytes taken from its start */
} MPBlock;

typedef struct MPPool {
    DA*     pBlocks;    /* MPBlock entries; the last one is in use */
    int32_t nBlockSize; /* bytes of a normal block */
    int32_t nCurrent;   /* index of the block in use, -1 before the first */
} MPPool;

/* Takes no block yet. A block size below 1 gives null. */
ZOR_API MPPool* MPCreate(int32_t blockSize);

/* Copies `size` bytes of `data` into the pool and returns the copy's
   address, valid until MPDestroy. The item goes behind the last one when it
   fits the rest of the current block; otherwise a new block of the greater
   of the block size and `size` is taken and the old rest is never used
   again. A size of 0 copies nothing but is placed by the same rule. A
   negative size, or exhaustion, gives null; the pool stays usable. */
ZOR_API void*   MPAlloc(MPPool* pool, const void* data, int32_t size);

/* Releases every block, the array and the pool. */
ZOR_API void    MPDestroy(MPPool* pool);

#endif
