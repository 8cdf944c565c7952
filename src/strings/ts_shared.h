// Helpers shared by the TS sources; not part of the exported interface.
#pragma once

#include "zor_ts.h"

#include <stdint.h>

// Scratch size of the number formatters: text beyond it is cut.
constexpr int32_t kFormatCut = 512;

// Precisions and field widths beyond these print the same first kFormatCut
// units as any larger ones: a double's exact expansion ends within 1074
// decimals (767 significant digits), so no rounding reaches back from further
// out, and a field this wide pads the longest such text beyond the cut.
// Clamping keeps the runtime from building fields of billions of units only
// to cut them.
constexpr int kMaxFormatPrecision = 1100;
constexpr int kMaxFormatWidth = 2000;
// The longest fixed text: a sign, 309 integer digits, the point, the digits.
static_assert(kMaxFormatWidth >= kFormatCut + 1 + 309 + 1 + kMaxFormatPrecision,
              "a clamped field must still pad the longest text beyond the cut");

// Formats through the runtime's counted formatter into a scratch area on the
// stack; text beyond kFormatCut units is cut. Fails only as TSSetStr does.
TSString* ts_set_formatted(TSString* ts, const wchar_t* format, ...);

// The same with the scratch area on the heap: null, `ts` untouched, when it
// cannot be had.
TSString* ts_set_formatted_on_heap(TSString* ts, const wchar_t* format, ...);

// Units of `text` that lie in the string's own block, or -1 when it lies
// elsewhere.
int32_t ts_offset_in_block(const TSString* ts, const wchar_t* text);

// `value` brought into -limit..limit.
int ts_clamp(int64_t value, int limit);

// Null text arguments read as the empty text.
inline const wchar_t* ts_or_empty(const wchar_t* text) { return text ? text : L""; }
