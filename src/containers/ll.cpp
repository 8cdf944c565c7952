#include "zor_ll.h"

#include <string.h>

#include "../frame/zor_alloc.h"

namespace {

void* value_of(const LLNode* node)
{
    return const_cast<LLNode*>(node) + 1;
}

LLNode* node_of(const void* value)
{
    return const_cast<LLNode*>(static_cast<const LLNode*>(value)) - 1;
}

LLNode* make_node(const LLHeader* list, const void* data)
{
    size_t bytes = sizeof(LLNode) + static_cast<size_t>(list->nElemSize);
    LLNode* node = static_cast<LLNode*>(zor_malloc(bytes));
    if (node)
        memcpy(value_of(node), data, static_cast<size_t>(list->nElemSize));
    return node;
}

// The walk of both visitor forms; the link is read after the call.
template <class Visit>
void* first_answering(const LLHeader* list, Visit visit)
{
    for (LLNode* node = list->pHead; node; node = node->pNext) {
        if (visit(value_of(node)) != 0)
            return value_of(node);
    }
    return nullptr;
}

}

LLHeader* LLCreate(int32_t elemSize)
{
    if (elemSize <= 0)
        return nullptr;
    LLHeader* list = static_cast<LLHeader*>(zor_malloc(sizeof(LLHeader)));
    if (!list)
        return nullptr;
    list->nStamp = LL_STAMP;
    list->nElemSize = elemSize;
    list->nCount = 0;
    list->pHead = nullptr;
    list->pTail = nullptr;
    return list;
}

void LLDestroy(LLHeader* list)
{
    for (LLNode* node = list->pHead; node;) {
        LLNode* next = node->pNext;
        zor_free(node);
        node = next;
    }
    list->nStamp = LL_STAMP_DESTROYED;
    zor_free(list);
}

int32_t LLCount(const LLHeader* list)
{
    return list->nCount;
}

void* LLFirst(const LLHeader* list)
{
    return list->pHead ? value_of(list->pHead) : nullptr;
}

void* LLLast(const LLHeader* list)
{
    return list->pTail ? value_of(list->pTail) : nullptr;
}

void* LLNext(const void* value)
{
    LLNode* next = node_of(value)->pNext;
    return next ? value_of(next) : nullptr;
}

void* LLPushFront(LLHeader* list, const void* data)
{
    LLNode* node = make_node(list, data);
    if (!node)
        return nullptr;
    node->pNext = list->pHead;
    list->pHead = node;
    if (!list->pTail)
        list->pTail = node;
    ++list->nCount;
    return value_of(node);
}

void* LLPushBack(LLHeader* list, const void* data)
{
    if (!list->pTail)
        return LLPushFront(list, data);
    LLNode* node = make_node(list, data);
    if (!node)
        return nullptr;
    node->pNext = nullptr;
    list->pTail->pNext = node;
    list->pTail = node;
    ++list->nCount;
    return value_of(node);
}

void* LLRemove(LLHeader* list, const void* value)
{
    // Only addresses are compared, so a stray pointer is never read.
    LLNode* prev = nullptr;
    LLNode* node = list->pHead;
    while (node && value_of(node) != value) {
        prev = node;
        node = node->pNext;
    }
    if (!node)
        return nullptr;
    if (prev)
        prev->pNext = node->pNext;
    else
        list->pHead = node->pNext;
    if (list->pTail == node)
        list->pTail = prev;
    --list->nCount;
    zor_free(node);
    return const_cast<void*>(value);
}

void* LLApply(const LLHeader* list, LLVisitFn visit)
{
    return first_answering(list, [visit](void* value) { return visit(value); });
}

void* LLApplyPar(const LLHeader* list, LLVisitParFn visit, void* parameter)
{
    return first_answering(list, [visit, parameter](void* value) { return visit(parameter, value); });
}
