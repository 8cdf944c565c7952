#include <doctest/doctest.h>

#include <vector>

#include "alloc_check.h"
#include "walk.h"
#include "zor_dl.h"
#include "zor_ll.h"
#include "zor_mp.h"

namespace {
using Values = std::vector<int64_t>;

Values dl_values(const DLHeader* h)
{
    Values values;
    for (DLElement* e : walk_both_ways(DLGetFirstElement(h), DLGetNextElement, DLGetLastElement(h),
                                       DLGetPrevElement, 100))
        values.push_back(*static_cast<int64_t*>(DLGetElementValue(e)));
    return values;
}
}

TEST_CASE("a double list with an end missing counts as empty, and unlinked elements stay the caller's")
{
    NoLeak leak;
    DLHeader* h = DLCreateHeader(8);
    int64_t one = 1, two = 2;
    DLElement* lost = DLInsertFirstElement(h, DLCreateElement(h, &one));
    h->pLast = nullptr;
    DLElement* only = DLInsertNextElement(h, lost, DLCreateElement(h, &two));
    CHECK(h->nCount == 2);  // counted, as every insertion is
    CHECK(dl_values(h) == Values{2});
    CHECK(only->pPrev == nullptr);
    DLRemoveElement(h, lost);  // neither linked nor first any more: released alone
    CHECK(dl_values(h) == Values{2});

    // The list releases what it holds and no more.
    DLElement* kept = DLCreateElement(h, &one);
    long before = zor_alloc_probe::live_blocks();
    DLRemoveHeader(h);
    CHECK(zor_alloc_probe::live_blocks() == before - 3);
    CHECK(*static_cast<int64_t*>(DLGetElementValue(kept)) == 1);
    DLHeader* other = DLCreateHeader(8);
    DLRemoveElement(other, kept);
    CHECK(other->nCount == 0);
    DLRemoveHeader(other);
}

TEST_CASE("refused allocations leave the lists and the pool as they were, and usable")
{
    NoLeak leak;
    // A second try after each refusal must work on what the first one left.
    // One pool block an item: the array of blocks grows at the eleventh, so
    // that its refusal comes after that block was taken.
    CHECK(fail_each_allocation([]() {
              DLHeader* h = DLCreateHeader(8);
              LLHeader* list = LLCreate(8);
              MPPool* pool = MPCreate(8);
              for (int64_t i = 1; h && list && pool && i <= 11; ++i) {
                  DLElement* e = DLCreateElement(h, &i);
                  DLInsertLastElement(h, e ? e : DLCreateElement(h, &i));
                  auto push = i % 2 ? LLPushFront : LLPushBack;
                  if (!push(list, &i))
                      push(list, &i);
                  void* item = MPAlloc(pool, &i, 8);
                  CHECK(*static_cast<int64_t*>(item ? item : MPAlloc(pool, &i, 8)) == i);
                  CHECK(DAGetSize(pool->pBlocks) == i);
              }
              if (h && list && pool) {
                  CHECK(dl_values(h) == Values{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
                  Values values;
                  for (void* v : walk(LLFirst(list), LLNext, 11))
                      values.push_back(*static_cast<int64_t*>(v));
                  CHECK(values == Values{11, 9, 7, 5, 3, 1, 2, 4, 6, 8, 10});
                  CHECK(*static_cast<int64_t*>(LLLast(list)) == 10);
                  CHECK(LLCount(list) == 11);
              }
              if (h)
                  DLRemoveHeader(h);
              if (list)
                  LLDestroy(list);
              if (pool)
                  MPDestroy(pool);
          }) == 5 + 11 * 4 + 1);
}
