#include <doctest/doctest.h>

#include <vector>

#include "alloc_check.h"
#include "zor_da.h"

namespace {
std::vector<int32_t> contents(DA* da)
{
    std::vector<int32_t> v;
    for (int32_t i = 0; i < DAGetSize(da); ++i)
        v.push_back(*static_cast<int32_t*>(DAGetElem(da, i)));
    return v;
}

DA* filled(int32_t step, int32_t n)
{
    DA* da = DACreate(4, step);
    for (int32_t i = 0; i < n; ++i)
        DAAddElem(da, &i);
    return da;
}
}

TEST_CASE("the array grows in whole steps of its creation count, insertion one slot early")
{
    // On the values 0..n-1 in an array made with 10 slots, one call stores 7.
    enum Call { kAdd, kSet, kInsert };
    struct Row {
        int32_t n;
        Call    call;
        int32_t index, capacity;
    };
    const Row rows[] = {{9, kAdd, 9, 10},  {10, kAdd, 10, 20}, {20, kSet, 29, 30},
                        {20, kSet, 30, 40}, {8, kInsert, 0, 10}, {9, kInsert, 0, 20}};
    int32_t seven = 7;
    for (const Row& row : rows) {
        INFO("n ", row.n, ", index ", row.index);
        NoLeak leak;
        DA* da = filled(10, row.n);
        void* stored = row.call == kAdd ? DAAddElem(da, &seven)
                     : row.call == kSet ? DASetElem(da, row.index, &seven)
                                        : DAInsertElem(da, row.index, &seven);
        REQUIRE(stored != nullptr);
        CHECK(stored == DAGetElem(da, row.index));
        CHECK(*static_cast<int32_t*>(stored) == 7);
        CHECK(da->capacity == row.capacity);
        CHECK(DAGetElem(da, row.capacity - 1) != nullptr);
        CHECK(DAGetElem(da, row.capacity) == nullptr);
        CHECK(DAGetElem(da, -1) == nullptr);
        DADestroy(da);
    }
}

TEST_CASE("a refused allocation leaves the array as it was")
{
    NoLeak leak;
    CHECK(DACreate(0, 10) == nullptr);
    CHECK(DACreate(4, 0) == nullptr);
    CHECK(DACreate(1 << 16, 1 << 15) == nullptr);
    DA* da = filled(4, 4);
    unsigned char* block = da->data;
    int32_t v = 5;
    {
        AllAllocationsFail fail;
        CHECK(DAAddElem(da, &v) == nullptr);
        CHECK(DASetElem(da, 9, &v) == nullptr);
        CHECK(DAInsertElem(da, 0, &v) == nullptr);
    }
    CHECK(DASetElem(da, 1 << 29, &v) == nullptr);  // 2^31 bytes and more
    CHECK(da->data == block);
    CHECK(da->capacity == 4);
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 3});
    DADestroy(da);
}
