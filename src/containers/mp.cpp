#include "zor_mp.h"

#include <string.h>

#include "../frame/zor_alloc.h"

namespace {

// The pool's array is made with this element size; callers that read the
// entries rely on it.
static_assert(sizeof(MPBlock) == 16, "a block entry takes 16 bytes");

constexpr int32_t kInitialEntries = 10;

MPBlock* current(const MPPool* pool)
{
    return static_cast<MPBlock*>(DAGetElem(pool->pBlocks, pool->nCurrent));
}

// A new block becomes the current one; on failure the pool is unchanged.
MPBlock* open_block(MPPool* pool, int32_t size)
{
    MPBlock entry;
    entry.pData = zor_malloc(static_cast<size_t>(size > pool->nBlockSize ? size : pool->nBlockSize));
    entry.nUsed = 0;
    if (!entry.pData)
        return nullptr;
    MPBlock* stored = static_cast<MPBlock*>(DAAddElem(pool->pBlocks, &entry));
    if (!stored) {
        zor_free(entry.pData);
        return nullptr;
    }
    ++pool->nCurrent;
    return stored;
}

}

MPPool* MPCreate(int32_t blockSize)
{
    if (blockSize <= 0)
        return nullptr;
    MPPool* pool = static_cast<MPPool*>(zor_malloc(sizeof(MPPool)));
    if (!pool)
        return nullptr;
    pool->pBlocks = DACreate(sizeof(MPBlock), kInitialEntries);
    if (!pool->pBlocks) {
        zor_free(pool);
        return nullptr;
    }
    pool->nBlockSize = blockSize;
    pool->nCurrent = -1;
    return pool;
}

void* MPAlloc(MPPool* pool, const void* data, int32_t size)
{
    if (size < 0)
        return nullptr;
    MPBlock* block = pool->nCurrent >= 0 ? current(pool) : nullptr;
    // nUsed passes the block size only in an oversized block, which then
    // takes nothing more.
    if (!block || pool->nBlockSize - block->nUsed < size)
        block = open_block(pool, size);
    if (!block)
        return nullptr;
    unsigned char* place = static_cast<unsigned char*>(block->pData) + block->nUsed;
    if (size > 0)
        memcpy(place, data, static_cast<size_t>(size));
    block->nUsed += size;
    return place;
}

void MPDestroy(MPPool* pool)
{
    for (int32_t i = 0; i < DAGetSize(pool->pBlocks); ++i)
        zor_free(static_cast<MPBlock*>(DAGetElem(pool->pBlocks, i))->pData);
    DADestroy(pool->pBlocks);
    zor_free(pool);
}
