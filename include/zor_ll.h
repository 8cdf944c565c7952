/* LL: the singly linked list of fixed-size values, each stored inline in its
   node directly behind the link. Callers never see a node: an element is
   named by the address of its value, which stays valid while it is linked.
   The list owns its nodes.

   Sizes must be positive: LLCreate gives null otherwise. Exhaustion shows as
   a null result. No function tests `list`. */
#ifndef ZOR_LL_H
#define ZOR_LL_H

#include "zor_api.h"

#define LL_STAMP           2412
#define LL_STAMP_DESTROYED (-2413)

typedef struct LLNode {
    struct LLNode* pNext; /* null at the tail */
    /* the value follows, aligned as a pointer is */
} LLNode;

typedef struct LLHeader {
    int32_t nStamp;    /* LL_STAMP; LL_STAMP_DESTROYED just before release */
    int32_t nElemSize; /* bytes of each value */
    int32_t nCount;    /* nodes */
    LLNode* pHead;     /* null when empty */
    LLNode* pTail;     /* null when empty */
} LLHeader;

/* Visitors answer 0 to go on; anything else stops the walk at that value.
   A visitor must not remove the value it is given: the walk reads that
   node's link after the call. */
typedef int32_t (*LLVisitFn)(void* value);
typedef int32_t (*LLVisitParFn)(void* parameter, void* value);

ZOR_API LLHeader* LLCreate(int32_t elemSize);
/* Releases the nodes from head to tail, stamps the header, releases it. */
ZOR_API void      LLDestroy(LLHeader* list);
ZOR_API int32_t   LLCount(const LLHeader* list);

/* Values of the head and the tail, or null when the list is empty; the
   value behind `value` (which must not be null), or null at the tail. */
ZOR_API void*     LLFirst(const LLHeader* list);
ZOR_API void*     LLLast(const LLHeader* list);
ZOR_API void*     LLNext(const void* value);

/* Copy nElemSize bytes of `data` into a new node at the head or the tail
   and return the stored value. */
ZOR_API void*     LLPushFront(LLHeader* list, const void* data);
ZOR_API void*     LLPushBack(LLHeader* list, const void* data);

/* Searches from the head for the node of `value`, unlinks and releases it,
   and returns `value` itself, which then no longer points to valid memory.
   An address of no node gives null and changes nothing. */
ZOR_API void*     LLRemove(LLHeader* list, const void* value);

/* Call the visitor on each value from the head and return the first value
   for which it answered non-zero, or null when none did (an empty list
   makes no call). LLApplyPar passes `parameter` first, the value second. */
ZOR_API void*     LLApply(const LLHeader* list, LLVisitFn visit);
ZOR_API void*     LLApplyPar(const LLHeader* list, LLVisitParFn visit, void* parameter);

#endif
