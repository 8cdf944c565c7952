#include <doctest/doctest.h>

#include <string.h>
#include <vector>

#include "alloc_check.h"
#include "zor_mp.h"

TEST_CASE("items go behind the last one while they fit, else into a block of their own size or more")
{
    struct Place {
        int32_t size, block, offset;
    };
    // Every row on a pool of 8-byte blocks.
    const std::vector<Place> rows[] = {
        {{5, 0, 0}, {3, 0, 5}, {1, 1, 0}},                        // an exact fit
        {{5, 0, 0}, {4, 1, 0}, {2, 1, 4}},                        // an abandoned rest
        {{3, 0, 0}, {20, 1, 0}, {1, 2, 0}},                       // an oversized item
        {{0, 0, 0}, {8, 0, 0}, {0, 0, 8}, {9, 1, 0}, {0, 2, 0}},  // empty items
    };
    const char bytes[] = "abcdefghijklmnopqrstuvwxyz";
    for (const auto& row : rows) {
        NoLeak leak;
        MPPool* pool = MPCreate(8);
        CHECK(MPAlloc(pool, bytes, -1) == nullptr);
        CHECK(pool->nCurrent == -1);  // no block before the first item
        std::vector<const char*> stored;
        for (const Place& item : row) {
            // Each item starts at its own letter, so that an overlap shows.
            stored.push_back(static_cast<const char*>(MPAlloc(pool, bytes + stored.size(), item.size)));
            REQUIRE(pool->nCurrent == item.block);
            const MPBlock& b = *static_cast<const MPBlock*>(DAGetElem(pool->pBlocks, item.block));
            CHECK(stored.back() == static_cast<const char*>(b.pData) + item.offset);
            CHECK(b.nUsed == item.offset + item.size);
            CHECK(zor_alloc_probe::block_bytes(b.pData) == size_t(item.size > 8 ? item.size : 8));
        }
        // Every item keeps its place and bytes until the pool goes.
        for (size_t i = 0; i < row.size(); ++i)
            CHECK(memcmp(stored[i], bytes + i, size_t(row[i].size)) == 0);
        MPDestroy(pool);
    }
}
