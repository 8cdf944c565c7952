#include "text_ops.h"

#include <stdint.h>

namespace zorlib {
namespace detail {

// Ranges that merely touch count as overlapping: a source that ends where
// the block begins, or begins where it ends, is copied all the same.
bool blocks_overlap(const void* a, size_t asize, const void* b, size_t bsize)
{
    if (!a || !b)
        return false;
    uintptr_t blockFrom = reinterpret_cast<uintptr_t>(a), blockTo = blockFrom + asize;
    uintptr_t sourceFrom = reinterpret_cast<uintptr_t>(b), sourceTo = sourceFrom + bsize;
    auto inBlock = [&](uintptr_t p) { return p >= blockFrom && p <= blockTo; };
    return sourceFrom == blockFrom || inBlock(sourceFrom) || inBlock(sourceTo) ||
           (sourceFrom < blockFrom && sourceTo >= blockTo);
}

}
}
