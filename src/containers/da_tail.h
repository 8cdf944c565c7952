// An array whose header block carries some bytes of its owner's behind it:
// state that belongs with the array and lives exactly as long, reached from
// the array's pointer alone. DADestroy releases it with the header.
#pragma once

#include <stddef.h>

#include "zor_da.h"

// Behind the header, aligned for any type the owner keeps there.
constexpr size_t kTailOffset = (sizeof(DA) + 15) & ~size_t(15);

// As DACreate, with `tailBytes` zeroed bytes behind the header.
DA* da_create_with_tail(int32_t elemSize, int32_t initialCount, size_t tailBytes);

inline void* da_tail(DA* da)
{
    return reinterpret_cast<unsigned char*>(da) + kTailOffset;
}
