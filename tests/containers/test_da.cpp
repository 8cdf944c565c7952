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
    DA* da = filled(10, 5);
    int32_t v = 7, ten = 10;
    CHECK(*static_cast<int32_t*>(DAGetElem(da, 7)) == 0);  // behind the count: zeroed
    CHECK((DAGetElem(da, 10) == nullptr && DAGetElem(da, -1) == nullptr));
    for (int32_t i = 5; i < 10; ++i)
        DAAddElem(da, &i);
    CHECK(da->capacity == 10);
    CHECK((*static_cast<int32_t*>(DAAddElem(da, &ten)) == 10 && da->capacity == 20));
    CHECK((DAGetElem(da, 19) != nullptr && DAGetElem(da, 20) == nullptr));
    CHECK((DASetElem(da, -1, &v) == nullptr && DAInsertElem(da, -1, &v) == nullptr));
    DASetElem(da, 35, &v);  // far behind the end: whole steps, count follows
    CHECK((da->capacity == 40 && DAGetSize(da) == 36));
    DADeleteLast(da);
    CHECK(DAGetSize(da) == 35);
    DADestroy(da);
    DA* empty = DACreate(4, 1);
    DADeleteLast(empty);
    CHECK(DAGetSize(empty) == 0);
    DADestroy(empty);
}

TEST_CASE("insertion shifts the tail, sets at or behind the end, and grows one slot early")
{
    NoLeak leak;
    DA* da = filled(10, 3);
    int32_t v = 42;
    DAInsertElem(da, 3, &v);
    DAInsertElem(da, 5, &v);
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 42, 0, 42});
    v = 9;
    CHECK(DAInsertElem(da, 1, &v) == DAGetElem(da, 1));
    CHECK(contents(da) == std::vector<int32_t>{0, 9, 1, 2, 42, 0, 42});
    DADestroy(da);

    for (int32_t n : {8, 9}) {
        DA* a = filled(10, n);
        DAInsertElem(a, 0, &v);
        CHECK(a->capacity == (n == 9 ? 20 : 10));
        DADestroy(a);
    }

    // The array's own elements as sources, through a reallocation and a shift.
    DA* own = filled(3, 3);
    DAAddElem(own, DAGetElem(own, 1));
    DAInsertElem(own, 0, DAGetElem(own, 2));
    CHECK(contents(own) == std::vector<int32_t>{2, 0, 1, 2, 1});
    DADestroy(own);
}

TEST_CASE("a refused allocation leaves the array as it was")
{
    NoLeak leak;
    CHECK((DACreate(0, 10) == nullptr && DACreate(4, 0) == nullptr));
    CHECK(fail_each_allocation([](bool) {
              if (DA* da = DACreate(8, 2))
                  DADestroy(da);
          }) == 2);

    DA* da = filled(4, 4);
    unsigned char* block = da->data;
    int32_t v = 5;
    {
        AllAllocationsFail fail;
        CHECK(DAAddElem(da, &v) == nullptr);
        CHECK((DASetElem(da, 9, &v) == nullptr && DAInsertElem(da, 0, &v) == nullptr));
    }
    CHECK(DASetElem(da, 1 << 29, &v) == nullptr);  // 2^31 bytes and more
    CHECK((da->data == block && da->capacity == 4));
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 3});
    DADestroy(da);
}
