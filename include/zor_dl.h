/* DL: the doubly linked list of fixed-size values. An element is made apart
   from the list by DLCreateElement and linked in by a separate call, so that
   the caller chooses its place. Each element owns a copy of its value in a
   block of its own. The list owns the elements linked into it; an element
   that was created and not yet linked is the caller's.

   Sizes must be positive: DLCreateHeader gives null otherwise. Exhaustion
   shows as a null result. No function tests its pointers. */
#ifndef ZOR_DL_H
#define ZOR_DL_H

#include "zor_api.h"

#define DL_STAMP 1402

typedef struct DLElement {
    struct DLElement* pPrev;  /* null at the front */
    struct DLElement* pNext;  /* null at the end */
    void*             pValue; /* the element's own copy, nElemSize bytes */
} DLElement;

typedef struct DLHeader {
    int32_t    nStamp;    /* DL_STAMP from creation on */
    DLElement* pFirst;    /* null when empty */
    DLElement* pLast;     /* null when empty */
    int32_t    nCount;    /* elements linked in */
    int32_t    nElemSize; /* bytes of each value */
} DLHeader;

ZOR_API DLHeader*  DLCreateHeader(int32_t elemSize);
/* Releases the linked elements with their values, first to last, then the
   header. Elements that were never linked are not reached. */
ZOR_API void       DLRemoveHeader(DLHeader* header);

/* A new, unlinked element with a copy of nElemSize bytes of `value`; it
   counts for nothing until it is linked. */
ZOR_API DLElement* DLCreateElement(DLHeader* header, const void* value);
/* The stored copy, which the caller may write through. */
ZOR_API void*      DLGetElementValue(const DLElement* element);

ZOR_API DLElement* DLGetFirstElement(const DLHeader* header);
ZOR_API DLElement* DLGetLastElement(const DLHeader* header);
ZOR_API DLElement* DLGetNextElement(const DLElement* element);
ZOR_API DLElement* DLGetPrevElement(const DLElement* element);

/* Links `element`, which must not be linked yet, and returns it. A list with
   either end null counts as empty: the element becomes the only one and
   `reference` is ignored. Otherwise a null `reference` stands for the front
   (bBefore set) or the end (bBefore 0), and a given one for the place
   directly before or behind it. */
ZOR_API DLElement* DLInsertElement(DLHeader* header, DLElement* reference, DLElement* element,
                                   int32_t bBefore);
ZOR_API DLElement* DLInsertFirstElement(DLHeader* header, DLElement* element);
ZOR_API DLElement* DLInsertLastElement(DLHeader* header, DLElement* element);
ZOR_API DLElement* DLInsertNextElement(DLHeader* header, DLElement* reference, DLElement* element);
ZOR_API DLElement* DLInsertPrevElement(DLHeader* header, DLElement* reference, DLElement* element);

/* Unlinks `element` and releases it with its value. An element that was
   created and never linked (no neighbours and not the first of the list) is
   released as well, and the list is left untouched: this is how a caller
   gets rid of an element it decided not to link. */
ZOR_API void       DLRemoveElement(DLHeader* header, DLElement* element);

/* Writes one line a element to the library's trace object at level 5,
   numbered from 1, with the first 32 bits of its value as a signed number;
   a value shorter than 4 bytes is read only as far as it goes, the missing
   high bytes counting as 0. Each line ends in a line break of its own, so
   that a trace file shows an empty line behind it. Silent until the trace
   object is started. */
ZOR_API void       DLListElements(const DLHeader* header);

#endif
