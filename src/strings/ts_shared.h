// Helpers shared by the TS sources; not part of the exported interface.
#pragma once

#include "zor_ts.h"

// Formats through the runtime's counted formatter into a scratch area; text
// beyond 512 units is cut. `ts` is untouched when the scratch area cannot be
// had (result null).
TSString* ts_set_formatted(TSString* ts, const wchar_t* format, ...);

// Null text arguments read as the empty text.
inline const wchar_t* ts_or_empty(const wchar_t* text) { return text ? text : L""; }
