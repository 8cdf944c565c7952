#include "zor_dl.h"

#include <string.h>

#include "../frame/zor_alloc.h"

namespace {

// Makes `prev` and `next` neighbours; a null side is the list's end there.
void join(DLHeader* header, DLElement* prev, DLElement* next)
{
    if (prev)
        prev->pNext = next;
    else
        header->pFirst = next;
    if (next)
        next->pPrev = prev;
    else
        header->pLast = prev;
}

void release(DLElement* element)
{
    zor_free(element->pValue);
    zor_free(element);
}

// A linked element has a neighbour, or is the only one and so the first.
// A created element has neither, and no list names it.
bool is_linked(const DLHeader* header, const DLElement* element)
{
    return element->pPrev || element->pNext || header->pFirst == element;
}

}

DLHeader* DLCreateHeader(int32_t elemSize)
{
    if (elemSize <= 0)
        return nullptr;
    DLHeader* header = static_cast<DLHeader*>(zor_malloc(sizeof(DLHeader)));
    if (!header)
        return nullptr;
    header->nStamp = DL_STAMP;
    header->pFirst = nullptr;
    header->pLast = nullptr;
    header->nCount = 0;
    header->nElemSize = elemSize;
    return header;
}

void DLRemoveHeader(DLHeader* header)
{
    for (DLElement* element = header->pFirst; element;) {
        DLElement* next = element->pNext;
        release(element);
        element = next;
    }
    zor_free(header);
}

DLElement* DLCreateElement(DLHeader* header, const void* value)
{
    DLElement* element = static_cast<DLElement*>(zor_malloc(sizeof(DLElement)));
    if (!element)
        return nullptr;
    element->pValue = zor_malloc(static_cast<size_t>(header->nElemSize));
    if (!element->pValue) {
        zor_free(element);
        return nullptr;
    }
    memcpy(element->pValue, value, static_cast<size_t>(header->nElemSize));
    element->pPrev = nullptr;
    element->pNext = nullptr;
    return element;
}

void* DLGetElementValue(const DLElement* element)
{
    return element->pValue;
}

DLElement* DLGetFirstElement(const DLHeader* header)
{
    return header->pFirst;
}

DLElement* DLGetLastElement(const DLHeader* header)
{
    return header->pLast;
}

DLElement* DLGetNextElement(const DLElement* element)
{
    return element->pNext;
}

DLElement* DLGetPrevElement(const DLElement* element)
{
    return element->pPrev;
}

DLElement* DLInsertElement(DLHeader* header, DLElement* reference, DLElement* element,
                           int32_t bBefore)
{
    DLElement* prev = nullptr;
    DLElement* next = nullptr;
    // With either end missing the list counts as empty, whatever it holds.
    if (header->pFirst && header->pLast) {
        if (bBefore) {
            next = reference ? reference : header->pFirst;
            prev = next->pPrev;
        } else {
            prev = reference ? reference : header->pLast;
            next = prev->pNext;
        }
    }
    element->pPrev = prev;
    element->pNext = next;
    join(header, prev, element);
    join(header, element, next);
    ++header->nCount;
    return element;
}

DLElement* DLInsertFirstElement(DLHeader* header, DLElement* element)
{
    return DLInsertElement(header, nullptr, element, 1);
}

DLElement* DLInsertLastElement(DLHeader* header, DLElement* element)
{
    return DLInsertElement(header, nullptr, element, 0);
}

DLElement* DLInsertNextElement(DLHeader* header, DLElement* reference, DLElement* element)
{
    return DLInsertElement(header, reference, element, 0);
}

DLElement* DLInsertPrevElement(DLHeader* header, DLElement* reference, DLElement* element)
{
    return DLInsertElement(header, reference, element, 1);
}

void DLRemoveElement(DLHeader* header, DLElement* element)
{
    if (is_linked(header, element)) {
        join(header, element->pPrev, element->pNext);
        --header->nCount;
    }
    release(element);
}
