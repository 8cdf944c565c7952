#include <doctest/doctest.h>

#include <stdint.h>
#include <vector>

#include "alloc_check.h"
#include "dll_image.h"
#include "zor_da.h"

namespace {
int32_t at(DA* da, int32_t index)
{
    return *static_cast<int32_t*>(DAGetElem(da, index));
}

std::vector<int32_t> contents(DA* da)
{
    std::vector<int32_t> v;
    for (int32_t i = 0; i < DAGetSize(da); ++i)
        v.push_back(at(da, i));
    return v;
}

DA* filled(int32_t step, int32_t n)
{
    DA* da = DACreate(4, step);
    REQUIRE(da);
    for (int32_t i = 0; i < n; ++i)
        REQUIRE(DAAddElem(da, &i));
    return da;
}
}

TEST_CASE("the array grows by its creation count, one reallocation a step")
{
    NoLeak leak;
    DA* da = DACreate(4, 10);
    REQUIRE(da);
    CHECK(da->elemSize == 4);
    CHECK(da->growth == 10);
    CHECK(DAGetSize(da) == 0);
    for (int32_t i = 0; i < 10; ++i) {
        int32_t* stored = static_cast<int32_t*>(DAAddElem(da, &i));
        REQUIRE(stored);
        CHECK(*stored == i);
        CHECK(stored == DAGetElem(da, i));
    }
    CHECK(da->capacity == 10);
    long requests = zor_alloc_probe::requests();
    int32_t ten = 10;
    DAAddElem(da, &ten);
    CHECK(zor_alloc_probe::requests() == requests + 1);
    CHECK(da->capacity == 20);
    CHECK(da->growth == 10);
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    DADestroy(da);
}

TEST_CASE("slots are bounded by the capacity, not the count")
{
    NoLeak leak;
    DA* da = DACreate(4, 10);
    REQUIRE(da);
    REQUIRE(DAGetElem(da, 5));
    CHECK(at(da, 5) == 0);
    CHECK(at(da, 9) == 0);
    CHECK(DAGetElem(da, 10) == nullptr);
    CHECK(DAGetElem(da, -1) == nullptr);

    int32_t v = 7;
    CHECK(DASetElem(da, -1, &v) == nullptr);
    CHECK(DAInsertElem(da, -1, &v) == nullptr);
    CHECK(DAGetSize(da) == 0);

    // Setting far behind the end grows in whole steps and extends the count.
    int32_t* stored = static_cast<int32_t*>(DASetElem(da, 25, &v));
    REQUIRE(stored);
    CHECK(*stored == 7);
    CHECK(da->capacity == 30);
    CHECK(DAGetSize(da) == 26);
    CHECK(at(da, 5) == 0);  // the first block's zeroes survive
    v = 8;
    DASetElem(da, 25, &v);
    CHECK(DAGetSize(da) == 26);
    CHECK(at(da, 25) == 8);
    DASetElem(da, 30, &v);
    CHECK(da->capacity == 40);

    DA* empty = DACreate(4, 3);
    DADeleteLast(empty);
    CHECK(DAGetSize(empty) == 0);
    DAAddElem(empty, &v);
    DAAddElem(empty, &v);
    DADeleteLast(empty);
    CHECK(DAGetSize(empty) == 1);
    CHECK(empty->capacity == 3);
    DADestroy(empty);
    DADestroy(da);
}

TEST_CASE("insertion shifts the tail, sets behind the end, and grows one slot early")
{
    NoLeak leak;
    DA* da = filled(10, 3);
    int32_t v = 42;
    DAInsertElem(da, 3, &v);  // at the count: a set
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 42});
    DAInsertElem(da, 6, &v);  // behind it: extends, the gap keeps its zeroes
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 42, 0, 0, 42});
    v = 9;
    int32_t* stored = static_cast<int32_t*>(DAInsertElem(da, 1, &v));
    CHECK(stored == DAGetElem(da, 1));
    CHECK(contents(da) == std::vector<int32_t>{0, 9, 1, 2, 42, 0, 0, 42});
    DADestroy(da);

    DA* nine = filled(10, 9);
    DAInsertElem(nine, 0, &v);
    CHECK(nine->capacity == 20);
    CHECK(DAGetSize(nine) == 10);
    CHECK(contents(nine) == std::vector<int32_t>{9, 0, 1, 2, 3, 4, 5, 6, 7, 8});
    DADestroy(nine);

    DA* eight = filled(10, 8);
    DAInsertElem(eight, 0, &v);
    CHECK(eight->capacity == 10);
    DADestroy(eight);
}

TEST_CASE("an element of the array itself may be passed to a growing call")
{
    NoLeak leak;
    DA* da = filled(2, 2);  // full: every writer below reallocates
    DAAddElem(da, DAGetElem(da, 1));
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 1});
    DASetElem(da, 5, DAGetElem(da, 0));
    CHECK(at(da, 5) == 0);
    DA* tail = filled(4, 3);
    DAInsertElem(tail, 0, DAGetElem(tail, 2));  // source moves with the tail
    CHECK(contents(tail) == std::vector<int32_t>{2, 0, 1, 2});
    DADestroy(tail);
    DADestroy(da);
}

TEST_CASE("an exhausted heap leaves the array as it was")
{
    NoLeak leak;
    {
        AllAllocationsFail fail;
        CHECK(DACreate(4, 10) == nullptr);
    }
    CHECK(DACreate(0, 10) == nullptr);
    CHECK(DACreate(4, 0) == nullptr);
    CHECK(DACreate(1 << 16, 1 << 15) == nullptr);

    long made = fail_each_allocation([](bool) {
        DA* da = DACreate(8, 2);
        if (da)
            DADestroy(da);
    });
    CHECK(made == 2);

    // Each growing writer, refused its reallocation, keeps block, count and capacity.
    DA* da = filled(4, 4);
    unsigned char* block = da->data;
    int32_t v = 5;
    {
        AllAllocationsFail fail;
        CHECK(DAAddElem(da, &v) == nullptr);
        CHECK(DASetElem(da, 9, &v) == nullptr);
        CHECK(DAInsertElem(da, 0, &v) == nullptr);
    }
    CHECK(da->data == block);
    CHECK(da->capacity == 4);
    CHECK(contents(da) == std::vector<int32_t>{0, 1, 2, 3});
    DA* big = DACreate(1 << 20, 1);
    REQUIRE(big);
    CHECK(DASetElem(big, 2048, big->data) == nullptr);  // 2^31 bytes and more
    CHECK(DAInsertElem(big, 4096, big->data) == nullptr);
    CHECK(big->capacity == 1);
    CHECK(DASetElem(big, 10, big->data) != nullptr);
    CHECK(big->capacity == 11);
    DADestroy(big);
    DADestroy(da);
}

TEST_CASE("the DLL exports the array family")
{
    CHECK(missing_exports({"DACreate", "DADestroy", "DAGetSize", "DAGetElem", "DAAddElem",
                           "DASetElem", "DAInsertElem", "DADeleteLast"}) == "");
}
