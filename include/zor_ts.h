/* TS: the dynamic wide string. Two fields and an exact-fit block: `size`
   counts the units of the block, terminator included, and is 0 exactly when
   `data` is null. An empty string owns no memory. Functions that return the
   object return null when the heap is exhausted; the object is then valid
   and empty (TSCStr alone fails before touching it). */
#ifndef ZOR_TS_H
#define ZOR_TS_H

#include "zor_api.h"

typedef struct TSString {
    wchar_t* data;
    int32_t  size;
} TSString;

/* Creating and releasing. TSClear only zeroes the fields (first call on raw
   storage); TSInit releases the block. */
ZOR_API TSString* TSNew(void);
ZOR_API TSString* TSClear(TSString* ts);
ZOR_API TSString* TSInit(TSString* ts);
ZOR_API void      TSFree(TSString* ts);
ZOR_API TSString* TSClone(const wchar_t* text);
ZOR_API TSString* TSCloneN(const wchar_t* text, int32_t n);

/* Reading. TSGetStr never returns null; an empty string gives a shared,
   read-only empty text. */
ZOR_API int            TSEmpty(const TSString* ts);
ZOR_API int32_t        TSGetLen(const TSString* ts);
ZOR_API wchar_t*       TSGetStr(const TSString* ts);
ZOR_API wchar_t        TSGetChar(const TSString* ts, int32_t index);
ZOR_API int            TSCmp(const TSString* a, const TSString* b);

/* Setting. The source text must not lie inside the block being changed. */
ZOR_API TSString* TSCopy(TSString* dst, const TSString* src);
ZOR_API TSString* TSSetStr(TSString* ts, const wchar_t* text);
ZOR_API TSString* TSSetStrN(TSString* ts, const wchar_t* text, int32_t n);
ZOR_API TSString* TSSetLen(TSString* ts, int32_t n);
ZOR_API TSString* TSFromCh(TSString* ts, wchar_t ch);
/* Text beyond 512 units is cut; TSStr uses "%*.*f", or "%*.*e" with
   precision -precision when precision is negative. */
ZOR_API TSString* TSCStr(TSString* ts, double value, const wchar_t* format);
ZOR_API TSString* TSStr(TSString* ts, double value, int32_t width, int32_t precision);

/* Appending. TSAdd(x, x) doubles x. */
ZOR_API TSString* TSAdd(TSString* dst, const TSString* src);
ZOR_API TSString* TSAddStr(TSString* ts, const wchar_t* text);
ZOR_API TSString* TSAddStrN(TSString* ts, const wchar_t* text, int32_t n);

#endif
