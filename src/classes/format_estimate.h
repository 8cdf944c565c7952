// The upper estimate of a formatted text's length, worked out from the format
// and its arguments before formatting, so that the block can be sized first.
#pragma once

#include <stdarg.h>
#include <stdint.h>

namespace zorlib {
namespace detail {

// Units that `format` with `args` is expected to need, terminator included;
// 0 for a null format. `args` is read through a copy and stays unconsumed.
// Every conversion takes its argument slots, also those that add nothing, and
// the length modifiers h, hh, l, ll, L, w, I, I32, I64, j, z and t are read,
// so that the walk keeps in step with the arguments. `%s` measures narrow or
// wide text as the formatter will read it (h narrow, l and w wide, `%S` the
// other width of the format's own). The estimate is no guarantee: what passes
// it is cut by the caller.
template <class U>
int64_t format_estimate(const U* format, va_list args);

}
}
