/* BT: the ordered tree of fixed-size elements, height-balanced (AVL), with
   parent links. Each element lives by value in its node, directly behind the
   node header, and keeps its address for as long as it is in the tree:
   rebalancing relinks nodes and never moves element bytes. Callers work with
   element pointers; BTNext and BTPrev need nothing else, since they reach the
   node by stepping back over its header.

   Equal keys are kept: a new element goes before every element equal to it,
   so walking in order yields the newest of equals first. BTSearch and
   BTDelete stop at the first equal element on the way down from the root,
   which may be any of them. */
#ifndef ZOR_BT_H
#define ZOR_BT_H

#include "zor_api.h"

#define BT_SIGNATURE           4713
#define BT_SIGNATURE_DESTROYED (-4714)

/* Negative when `key` (always the caller's key or new element) sorts before
   `elem` (an element of the tree), 0 when equal, positive after. Only the
   sign counts, and only as much of `key` is read as the function reads. */
typedef int (*BTCompareFn)(const void* key, const void* elem);
/* Called on each element by BTDestroy; its result is ignored. */
typedef int (*BTDestroyFn)(void* elem);
/* Called by BTForEach with the caller's argument first; result ignored. */
typedef int (*BTVisitFn)(void* arg, void* elem);

typedef struct BTNode {
    int32_t        balance; /* height of right minus height of left subtree */
    struct BTNode* left;    /* elements sorting before or equal to this one */
    struct BTNode* right;   /* elements sorting after this one */
    struct BTNode* up;      /* parent; null at the root */
    /* the element follows, aligned as a pointer is */
} BTNode;

typedef struct BT {
    int32_t     signature; /* BT_SIGNATURE; BT_SIGNATURE_DESTROYED once BTDestroy began */
    uint32_t    elemSize;
    uint32_t    count;
    BTNode*     root;
    BTCompareFn compare;
} BT;

ZOR_API BT*      BTCreate(BTCompareFn compare, uint32_t elemSize);
/* Visits every node in post-order, calls `destroy` (if not null) on its
   element, releases it, then releases the tree. What elements point to is
   the caller's; `destroy` is where to release it. */
ZOR_API void     BTDestroy(BT* tree, BTDestroyFn destroy);

/* Copies elemSize bytes of `elem` into a new node; returns the stored copy,
   or null on exhaustion with the tree unchanged. Never refuses a key. */
ZOR_API void*    BTInsert(BT* tree, const void* elem);
/* Removes one element equal to `key` and returns `key` itself, or null when
   none is equal. Runs no callback: release what the element owns first. The
   other elements keep their addresses. */
ZOR_API void*    BTDelete(BT* tree, const void* key);
ZOR_API void*    BTSearch(const BT* tree, const void* key);
ZOR_API uint32_t BTCount(const BT* tree);

/* Walking in order. `elem` must be an element pointer that the tree handed
   out. Null past either end and on an empty tree. */
ZOR_API void*    BTFirst(const BT* tree);
ZOR_API void*    BTLast(const BT* tree);
ZOR_API void*    BTNext(const void* elem);
ZOR_API void*    BTPrev(const void* elem);
/* Calls fn(arg, element) on every element in order, with no early stop. fn
   must not insert into or delete from this tree. */
ZOR_API void     BTForEach(BT* tree, BTVisitFn fn, void* arg);

/* Writes the tree's shape to the library's trace object at level 5,
   facility 18: a line with the root and the count, then one line a node in
   pre-order with its depth, its side ("ROOT", "Left", "Rght"), an indent of
   two blanks a level, the low 32 bits of the node and its links, and its
   balance as "<", "-" or ">". Silent until the trace object is started. */
ZOR_API void     BTTrace(const BT* tree);

#endif
