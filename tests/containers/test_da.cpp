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

TEST_CASE("the array grows in steps of its creation count and hands out slots up to the capacity")
{
    NoLeak leak;
    DA* da = filled(10, 10);
    int32_t v = 7;
    CHECK((da->capacity == 10 && *static_cast<int32_t*>(DAAddElem(da, &v)) == 7));
    CHECK((da->capacity == 20 && DAGetElem(da, 19) != nullptr && DAGetElem(da, 20) == nullptr));
    CHECK((DAGetElem(da, -1) == nullptr && DASetElem(da, -1, &v) == nullptr));
    CHECK(DAInsertElem(da, -1, &v) == nullptr);
    DASetElem(da, 30, &v);  // exactly one step past the capacity needs two steps
    DADeleteLast(da);
    CHECK((da->capacity == 40 && DAGetSize(da) == 30 && *static_cast<int32_t*>(DAGetElem(da, 30)) == 7));
    DADestroy(da);

    DA* fresh = DACreate(4, 10);
    DADeleteLast(fresh);
    CHECK((DAGetSize(fresh) == 0 && *static_cast<int32_t*>(DAGetElem(fresh, 5)) == 0));
    DADestroy(fresh);
}

TEST_CASE("insertion shifts the tail, sets at or behind the end, and grows one slot early")
{
    NoLeak leak;
    DA* da = filled(10, 3);
    int32_t v = 42;
    DAInsertElem(da, 3, &v);  // at the count: a set
    DAInsertElem(da, 5, &v);  // behind it: a set that leaves a gap
    v = 9;
    CHECK(DAInsertElem(da, 1, &v) == DAGetElem(da, 1));
    CHECK(contents(da) == std::vector<int32_t>{0, 9, 1, 2, 42, 0, 42});
    DADestroy(da);

    for (int32_t n : {8, 9}) {
        DA* a = filled(10, n);
        CHECK((DAInsertElem(a, 0, &v) && a->capacity == (n == 9 ? 20 : 10)));
        DADestroy(a);
    }

    // The array's own elements as sources: through a reallocation, from the
    // tail that moves, and from before the insertion point.
    DA* own = filled(3, 3);
    DAAddElem(own, DAGetElem(own, 1));
    DAInsertElem(own, 0, DAGetElem(own, 2));
    DAInsertElem(own, 3, DAGetElem(own, 1));
    CHECK(contents(own) == std::vector<int32_t>{2, 0, 1, 0, 2, 1});
    DADestroy(own);
}

// Every byte offset of the block as the source, before, inside and behind
// the tail, in arrays that do and do not grow: the stored element is always
// the one that stood there before the call.
TEST_CASE("insertion takes a source from anywhere in the array's own block as it stood")
{
    NoLeak leak;
    for (int32_t size : {1, 3, 4})
        for (int32_t count = 1; count < 6; ++count)
            for (int32_t index = 0; index < count; ++index)
                for (int32_t offset = 0; offset + size <= 6 * size; ++offset) {
                    DA* da = DACreate(size, 6);
                    for (int32_t i = 0; i < 6 * size; ++i)
                        da->data[i] = static_cast<unsigned char>(i + 1);
                    da->count = count;
                    std::vector<unsigned char> expected(da->data, da->data + count * size);
                    expected.insert(expected.begin() + index * size, da->data + offset, da->data + offset + size);
                    CAPTURE(size);
                    CAPTURE(count);
                    CAPTURE(index);
                    CAPTURE(offset);
                    void* stored = DAInsertElem(da, index, da->data + offset);  // may move the block
                    REQUIRE(stored == da->data + index * size);
                    CHECK(std::vector<unsigned char>(da->data, da->data + (count + 1) * size) == expected);
                    DADestroy(da);
                }
}

TEST_CASE("a refused allocation leaves the array as it was")
{
    NoLeak leak;
    CHECK((DACreate(0, 10) == nullptr && DACreate(4, 0) == nullptr && DACreate(1 << 16, 1 << 15) == nullptr));
    CHECK(fail_each_allocation([]() {
              if (DA* da = DACreate(8, 2))
                  DADestroy(da);
          }) == 2);

    DA* da = filled(4, 4);
    unsigned char* block = da->data;
    int32_t v = 5;
    {
        AllAllocationsFail fail;
        CHECK((DAAddElem(da, &v) == nullptr && DASetElem(da, 9, &v) == nullptr));
        CHECK(DAInsertElem(da, 0, &v) == nullptr);
    }
    CHECK(DASetElem(da, 1 << 29, &v) == nullptr);  // 2^31 bytes and more
    CHECK((da->data == block && da->capacity == 4 && contents(da) == std::vector<int32_t>{0, 1, 2, 3}));
    DADestroy(da);
}
