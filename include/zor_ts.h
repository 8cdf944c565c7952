/* TS: the dynamic wide string. Two fields and an exact-fit block: `size`
   counts the units of the block, terminator included, and is 0 exactly when
   `data` is null. An empty string owns no memory. Functions that return the
   object return null when the heap is exhausted; the object is then valid
   and empty (TSCStr alone fails before touching it). */
#ifndef ZOR_TS_H
#define ZOR_TS_H

#include "zor_api.h"
#include "zor_td.h"

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

/* Setting. A source text may lie inside the block being changed (TSSetStr,
   TSSetStrN, TSAddStr, TSAddStrN, and through them TSInvert): it is taken as
   it stood before the call; its `n` units must still lie in the block. */
ZOR_API TSString* TSCopy(TSString* dst, const TSString* src);
ZOR_API TSString* TSSetStr(TSString* ts, const wchar_t* text);
ZOR_API TSString* TSSetStrN(TSString* ts, const wchar_t* text, int32_t n);
ZOR_API TSString* TSSetLen(TSString* ts, int32_t n);
ZOR_API TSString* TSFromCh(TSString* ts, wchar_t ch);
/* Text beyond 512 units is cut; TSStr uses "%*.*f", or "%*.*e" with
   precision -precision when precision is negative. TSStr formats in a
   scratch area on the stack, so like any setter it fails only when the
   string's own block cannot be had (null, empty object); TSCStr's scratch
   block is on the heap, and its failure gives null with `ts` unchanged.
   Widths beyond 2,000 units and precisions beyond 1,100 digits are brought
   down to those: the first 512 units are the same either way, and the call
   stays fast. */
ZOR_API TSString* TSCStr(TSString* ts, double value, const wchar_t* format);
ZOR_API TSString* TSStr(TSString* ts, double value, int32_t width, int32_t precision);

/* Appending. TSAdd(x, x) doubles x. */
ZOR_API TSString* TSAdd(TSString* dst, const TSString* src);
ZOR_API TSString* TSAddStr(TSString* ts, const wchar_t* text);
ZOR_API TSString* TSAddStrN(TSString* ts, const wchar_t* text, int32_t n);

/* Editing and conversion. `dst` and `src` must be two different objects:
   `dst` is emptied first. Where a text argument has no meaning for null
   (set, needle, text), null reads as the empty text. */

/* Substrings. TSMid clips: a negative `start` counts from the end, a
   negative `count` runs to the end, and a range reaching outside the text
   keeps the part that lies inside. TSSubStr is strict: a range that is not
   wholly inside the text gives an empty `dst`. On exhaustion `dst` is empty
   and the result null. */
ZOR_API TSString* TSLeft(TSString* dst, const TSString* src, int32_t n);
ZOR_API TSString* TSRight(TSString* dst, const TSString* src, int32_t n);
ZOR_API TSString* TSMid(TSString* dst, const TSString* src, int32_t start, int32_t count);
ZOR_API TSString* TSSubStr(TSString* dst, const TSString* src, int32_t start, int32_t count);

/* Trimming removes U+0020 only; tabs and line ends stay. Trimming and case
   always return `ts`: when the private copy of a trim cannot be had the text
   stays, when the final reallocation fails the string is left empty. Case
   follows the runtime locale that TSSetLocale sets. */
ZOR_API TSString* TSLTrim(TSString* ts);
ZOR_API TSString* TSRTrim(TSString* ts);
ZOR_API TSString* TSATrim(TSString* ts);
ZOR_API TSString* TSUpper(TSString* ts);
ZOR_API TSString* TSLower(TSString* ts);

/* Building. TSInvert reverses unit by unit (a surrogate pair too). TSRep treats a negative count as 0 and
   leaves `ts` unchanged, returning null, when its scratch block fails or the
   repeated text would pass 2^31-2 units. */
ZOR_API TSString* TSInvert(TSString* ts, const wchar_t* text);
ZOR_API TSString* TSRep(TSString* ts, const wchar_t* text, int32_t count);

/* Substitution on the text up to its first zero unit; a null `replacement`
   deletes. Hits do not overlap and inserted text is never searched again.
   Both always return `ts`; the scratch string lives on the stack, so the
   only failure is a reallocation, after which `ts` is left empty. */
ZOR_API TSString* TSChrSubst(TSString* ts, const wchar_t* set, const wchar_t* replacement);
ZOR_API TSString* TSStrSubst(TSString* ts, const wchar_t* needle, const wchar_t* replacement);

/* Searching; positions count from the beginning of the text, -1 is no hit.
   An empty needle gives -1 in TSStrPos but the length of `ts` in TSStrRPos
   (when `lowest` allows it). A negative `lowest` counts as 0. */
ZOR_API int32_t TSStrPos(const TSString* ts, const wchar_t* needle, int32_t start);
ZOR_API int32_t TSStrRPos(const TSString* ts, const wchar_t* needle, int32_t lowest);

/* Conversion. Number text follows the runtime locale, rounds to nearest on
   the exact binary value with ties to even, and is cut at 512 units.
   TSFromDoubleFmt with negative `decimals` gives six decimals, as "%lf";
   more than 1,100 decimals print as 1,100 would, which reaches the cut
   anyway. TSFromDouble and TSFromDoubleFmt format on the stack and fail
   only as the setters do. 
   TSSetLocale passes both arguments to _wsetlocale and returns its result:
   the locale's name, or null when the request fails. */
ZOR_API double    TSVal(const TSString* ts);
ZOR_API TSString* TSFromInt(TSString* ts, int32_t value);
ZOR_API TSString* TSFromLong(TSString* ts, int32_t value);
ZOR_API TSString* TSFromULong(TSString* ts, uint32_t value);
ZOR_API TSString* TSFromDouble(TSString* ts, double value);
ZOR_API TSString* TSFromDoubleFmt(TSString* ts, double value, int32_t decimals);
/* The date in the user's short date pattern (the system's when the user has
   none; "yyyy-MM-dd" when neither can be read). A null `date` is the current
   local time. Text that does not fit in 100 units, and a date the platform
   refuses, give an empty `ts`, not a failure. */
ZOR_API TSString* TSFromDate(TSString* ts, const TDDate* date);
ZOR_API wchar_t*  TSSetLocale(int category, const wchar_t* locale);

#endif
