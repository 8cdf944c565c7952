#include "zor_da.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>

#include "../frame/zor_alloc.h"
#include "da_tail.h"

namespace {

constexpr int64_t kMaxBlockBytes = INT32_MAX;

unsigned char* slot(const DA* da, int32_t index)
{
    return da->data + static_cast<ptrdiff_t>(index) * da->elemSize;
}

// Byte offset of `elem` inside the block, or -1 when it lies elsewhere.
int64_t offset_in_block(const DA* da, const void* elem)
{
    uintptr_t p = reinterpret_cast<uintptr_t>(elem);
    uintptr_t begin = reinterpret_cast<uintptr_t>(da->data);
    uintptr_t bytes = static_cast<uintptr_t>(da->capacity) * static_cast<uintptr_t>(da->elemSize);
    return p >= begin && p < begin + bytes ? static_cast<int64_t>(p - begin) : -1;
}

// One reallocation to `capacity` slots; on failure the array is untouched.
// `elem` follows the block when it points into it, so that a caller may pass
// one of the array's own elements.
bool grow_to(DA* da, int64_t capacity, const void** elem)
{
    int64_t bytes = capacity * da->elemSize;
    if (bytes > kMaxBlockBytes)
        return false;
    int64_t offset = offset_in_block(da, *elem);
    void* block = zor_realloc(da->data, static_cast<size_t>(bytes));
    if (!block)
        return false;
    da->data = static_cast<unsigned char*>(block);
    da->capacity = static_cast<int32_t>(capacity);
    if (offset >= 0)
        *elem = da->data + offset;
    return true;
}

}

DA* da_create_with_tail(int32_t elemSize, int32_t initialCount, size_t tailBytes)
{
    if (elemSize <= 0 || initialCount <= 0
        || static_cast<int64_t>(elemSize) * initialCount > kMaxBlockBytes)
        return nullptr;
    DA* da = static_cast<DA*>(zor_malloc(kTailOffset + tailBytes));
    if (!da)
        return nullptr;
    da->data = static_cast<unsigned char*>(zor_calloc(static_cast<size_t>(initialCount),
                                                      static_cast<size_t>(elemSize)));
    if (!da->data) {
        zor_free(da);
        return nullptr;
    }
    da->count = 0;
    da->capacity = initialCount;
    da->growth = initialCount;
    da->elemSize = elemSize;
    memset(da_tail(da), 0, tailBytes);
    return da;
}

DA* DACreate(int32_t elemSize, int32_t initialCount)
{
    return da_create_with_tail(elemSize, initialCount, 0);
}

void DADestroy(DA* da)
{
    zor_free(da->data);
    zor_free(da);
}

int32_t DAGetSize(const DA* da)
{
    return da->count;
}

void* DAGetElem(const DA* da, int32_t index)
{
    if (index < 0 || index >= da->capacity)
        return nullptr;
    return slot(da, index);
}

void* DAAddElem(DA* da, const void* elem)
{
    return DASetElem(da, da->count, elem);
}

void* DASetElem(DA* da, int32_t index, const void* elem)
{
    if (index < 0)
        return nullptr;
    if (index >= da->capacity) {
        // Whole steps, as many as it takes to hold `index`.
        int64_t steps = (static_cast<int64_t>(index) - da->capacity) / da->growth + 1;
        if (!grow_to(da, da->capacity + steps * da->growth, &elem))
            return nullptr;
    }
    if (index >= da->count)
        da->count = index + 1;
    unsigned char* target = slot(da, index);
    memmove(target, elem, static_cast<size_t>(da->elemSize));
    return target;
}

void* DAInsertElem(DA* da, int32_t index, const void* elem)
{
    if (index >= da->count)
        return DASetElem(da, index, elem);
    if (index < 0)
        return nullptr;
    // One slot earlier than DAAddElem grows: callers rely on this step.
    if (da->count + 1 >= da->capacity
        && !grow_to(da, static_cast<int64_t>(da->capacity) + da->growth, &elem))
        return nullptr;
    unsigned char* target = slot(da, index);
    const size_t tailBytes = static_cast<size_t>(da->count - index) * static_cast<size_t>(da->elemSize);
    const int64_t offset = offset_in_block(da, elem);
    const int64_t tailBegin = static_cast<int64_t>(index) * da->elemSize;
    const int64_t tailEnd = tailBegin + static_cast<int64_t>(tailBytes) + da->elemSize;
    ++da->count;
    if (offset < 0 || offset + da->elemSize <= tailBegin || offset >= tailEnd) {
        memmove(target + da->elemSize, target, tailBytes);
        memmove(target, elem, static_cast<size_t>(da->elemSize));
        return target;
    }
    // The source lies in the tail that moves, or in the spare slot behind it
    // that the move overwrites: park it in that slot first, as it stands, and
    // rotate it to the front of the tail.
    unsigned char* spare = target + tailBytes;
    memmove(spare, elem, static_cast<size_t>(da->elemSize));
    std::rotate(target, spare, spare + da->elemSize);
    return target;
}

void DADeleteLast(DA* da)
{
    if (da->count > 0)
        --da->count;
}
