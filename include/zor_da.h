/* DA: the growable array of fixed-size elements. Elements are plain bytes,
   copied in and out. The array grows by `growth` slots at a time (the count
   it was created with), never by doubling, and never shrinks. Pointers to
   elements are valid until the next call that can grow the array.
   Exhaustion shows as a null result and leaves the array as it was. */
#ifndef ZOR_DA_H
#define ZOR_DA_H

#include "zor_api.h"

typedef struct DA {
    unsigned char* data;     /* all slots, contiguous, in index order */
    int32_t        count;    /* elements in use */
    int32_t        capacity; /* slots in `data` */
    int32_t        growth;   /* slots added per step: the initial capacity */
    int32_t        elemSize; /* bytes per element */
} DA;

/* Size first, then the initial count, which is also the growth step. The
   first block is zeroed; slots added later are not. Both values must be
   positive: otherwise the result is null. A block that would reach 2^31
   bytes is refused like an exhausted heap. */
ZOR_API DA*     DACreate(int32_t elemSize, int32_t initialCount);
ZOR_API void    DADestroy(DA* da);
ZOR_API int32_t DAGetSize(const DA* da);

/* The slot at `index`, bounded by the capacity, not the count: a slot behind
   the count is handed out with whatever it holds. Null outside 0..capacity-1. */
ZOR_API void*   DAGetElem(const DA* da, int32_t index);

/* The three writers return the stored copy. `elem` may point into the
   array's own block; the element is then copied as it stood before the call.
   DASetElem at or beyond the count extends the count to index + 1, leaving
   the slots in between as they were. DAInsertElem at or beyond the count is
   DASetElem; before it, it shifts the tail up by one and grows when count + 1
   reaches the capacity. A negative index gives null. */
ZOR_API void*   DAAddElem(DA* da, const void* elem);
ZOR_API void*   DASetElem(DA* da, int32_t index, const void* elem);
ZOR_API void*   DAInsertElem(DA* da, int32_t index, const void* elem);

/* Forgets the last element, if any; the block is not touched. */
ZOR_API void    DADeleteLast(DA* da);

#endif
