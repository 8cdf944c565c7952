/* FM: numbers printed through pictures, and numbers read back from text.

   A format descriptor is eight units naming the letters of a picture:
     0 zero-suppressing digit   1 forced digit        2 digit, asterisk fill
     3 digit, own letter fill   4 decimal point       5 group separator
     6 plus sign                7 minus sign
   `<` is a further zero-suppressing digit, fixed in the routine, that takes
   no room while it has nothing to show. Any other unit of a picture is
   printed as it stands.

   The output has one unit per picture unit, except that a point or a group
   separator writes the text of the runtime's current locale (widened from
   its narrow fields, or read from the user's and then the system's locale
   when the runtime gives none), which may be empty or longer than one unit,
   and that a `<` with nothing to show writes nothing. All rounding is that
   of the runtime's _fcvt_s at the picture's decimals. Integer digits beyond
   the picture's positions are dropped without notice. */
#ifndef ZOR_FM_H
#define ZOR_FM_H

#include "zor_api.h"

/* The two dialects, writable and lying one behind the other:
   "#$**.,+-" followed directly by "#&*$.,+-" and one terminator, so that
   DefaultDblFormat read as text runs on into LLDblFormat. In the default,
   positions 2 and 3 share `*` and position 2 wins. */
ZOR_DATA wchar_t DefaultDblFormat[8];
ZOR_DATA wchar_t LLDblFormat[9];

ZOR_API wchar_t* GetDefaultDblFormat(void);
ZOR_API wchar_t* GetLLDblFormat(void);

/* Prints `value` through the first `pictureLen` units of `picture` into
   `out` and returns the units written; no terminator is written. A null
   `format` means DefaultDblFormat. `complete`, if given, is set to 1 when
   the walk reached the last significant digit, which fails only when the
   runtime could not convert the value. A `pictureLen` of 0 or below writes
   nothing. Positions behind the digits the runtime delivered show `0`.
   The single failure, an exhausted heap, returns 0 with `*complete` 0 and
   a terminator in out[0]. */
ZOR_API int32_t FMFormatDouble(const wchar_t* format, const wchar_t* picture, int32_t pictureLen,
                               double value, wchar_t* out, int32_t* complete);
ZOR_API int32_t FMFormatInt(const wchar_t* format, const wchar_t* picture, int32_t pictureLen,
                            int32_t value, wchar_t* out, int32_t* complete);
ZOR_API int32_t FMFormatUInt(const wchar_t* format, const wchar_t* picture, int32_t pictureLen,
                             uint32_t value, wchar_t* out, int32_t* complete);

/* Fills the field that `picture` describes from `text`, terminates `out`
   and returns the units written before the terminator. The first unit
   chooses the kind:
     # $ * + , - .   the text read by FMToDouble, printed with DefaultDblFormat
     &               the first unit of the text (1, even for an empty text)
     /               the text cut or blank-filled to exactly pictureLen units
     ^               the whole text
   Any other first unit, and a `pictureLen` of 0 or below, give an empty
   field. A null `text` reads as empty. */
ZOR_API int32_t FMFormatStr(const wchar_t* picture, int32_t pictureLen, const wchar_t* text,
                            wchar_t* out);

/* Forgiving readers: every unit they do not name is passed over, so padded,
   signed, grouped or decorated fields read back as they are. A null or
   empty text, or one without digits, gives 0.
   FMToDouble: digits, `+` and `-` (the last sign wins, wherever it stands),
     and `.` or `,`, each of which starts the fraction afresh, so the last one
     is the decimal point. No exponent. Fraction digits beyond the 19th are
     passed over, so such a text reads as if cut after 19 decimals.
   FMToInt, FMToLong: digits and the last sign, in 32-bit arithmetic that
     wraps; `.` and `,` are passed over.
   FMToUInt, FMToULong: digits only, wrapping; signs are passed over. */
ZOR_API double   FMToDouble(const wchar_t* text);
ZOR_API int32_t  FMToInt(const wchar_t* text);
ZOR_API int32_t  FMToLong(const wchar_t* text);
ZOR_API uint32_t FMToUInt(const wchar_t* text);
ZOR_API uint32_t FMToULong(const wchar_t* text);

#endif
