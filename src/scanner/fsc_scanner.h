// Shared between the scanner object and the piece reader.
#pragma once

#include <stdint.h>

namespace zor_fsc {

// lineLen when the line ends at its first zero unit.
constexpr uint32_t kNoLineLen = 0xFFFFFFFFu;

}
