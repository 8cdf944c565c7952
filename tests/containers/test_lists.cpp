#include <doctest/doctest.h>

#include <iterator>
#include <list>
#include <random>
#include <vector>

#include "alloc_check.h"
#include "zor_dl.h"
#include "zor_ll.h"

namespace {
// Eight bytes with the serial in both halves, so that a short copy shows.
int64_t value_for(int32_t serial) { return serial * 0x100000001LL; }

void check_value(const void* stored)
{
    int64_t v = *static_cast<const int64_t*>(stored);
    CHECK(v == value_for(int32_t(v)));
}

template <class T>
T* at(std::list<T*>& model, size_t index) { return *std::next(model.begin(), ptrdiff_t(index)); }

// Both directions, bounded so that a broken link ends the walk; the walks
// also settle both ends.
void check_dl(const DLHeader* h, const std::list<DLElement*>& model)
{
    std::vector<DLElement*> expected(model.begin(), model.end()), forward, backward;
    for (DLElement* e = DLGetFirstElement(h); e && forward.size() <= expected.size(); e = DLGetNextElement(e))
        forward.push_back(e);
    for (DLElement* e = DLGetLastElement(h); e && backward.size() <= expected.size(); e = DLGetPrevElement(e))
        backward.insert(backward.begin(), e);
    REQUIRE(forward == expected);
    REQUIRE(backward == expected);
    CHECK(h->nCount == int32_t(expected.size()));
    for (DLElement* e : expected)
        check_value(DLGetElementValue(e));
}

struct Visits {
    std::vector<void*> seen;
    size_t stop_at;  // 1-based; 0 never
};
std::vector<void*> g_visited;

// By hand and through both visitors, the second stopped at a random place.
void check_ll(const LLHeader* list, const std::list<void*>& model, size_t stop_at)
{
    std::vector<void*> expected(model.begin(), model.end()), walked;
    for (void* v = LLFirst(list); v && walked.size() <= expected.size(); v = LLNext(v))
        walked.push_back(v);
    REQUIRE(walked == expected);
    CHECK(LLLast(list) == (expected.empty() ? nullptr : expected.back()));
    CHECK(LLCount(list) == int32_t(expected.size()));
    g_visited.clear();
    CHECK(LLApply(list, [](void* v) { g_visited.push_back(v); return int32_t(0); }) == nullptr);
    CHECK(g_visited == expected);
    Visits visits{{}, stop_at};
    void* found = LLApplyPar(list, [](void* p, void* v) {
        auto* visits = static_cast<Visits*>(p);
        visits->seen.push_back(v);
        return visits->seen.size() == visits->stop_at ? int32_t(-1) : 0;  // any non-zero stops
    }, &visits);
    bool stops = stop_at != 0 && stop_at <= expected.size();
    CHECK(found == (stops ? expected[stop_at - 1] : nullptr));
    CHECK(visits.seen.size() == (stops ? stop_at : expected.size()));
    for (void* v : expected)
        check_value(v);
}

// A second try after a refusal must work on what the first one left.
template <class Make>
auto twice(Make make) { auto made = make(); return made ? made : make(); }
}

TEST_CASE("random runs of both lists match reference lists")
{
    NoLeak leak;
    std::mt19937 random(1402);
    DLHeader* h = DLCreateHeader(8);
    LLHeader* list = LLCreate(8);
    REQUIRE(h);
    REQUIRE(list);
    std::list<DLElement*> dl;
    std::list<void*> ll;
    int64_t outside = 0;  // a reference that an empty double list must not read
    for (int32_t serial = 1; serial < 4000; ++serial) {
        // Phases lean to growing and to shrinking, so the lists empty often.
        bool grow = random() % 100 < ((serial / 500) % 2 ? 35u : 65u);
        unsigned how = random() % 4;
        int64_t v = value_for(serial);
        if (grow || dl.empty()) {
            DLElement* e = DLCreateElement(h, &v);
            size_t index = random() % (dl.size() + 1);
            DLElement* linked =
                dl.empty() ? DLInsertElement(h, reinterpret_cast<DLElement*>(&outside), e, int32_t(how % 2))
                : index == 0 ? (how % 2 ? DLInsertFirstElement(h, e) : DLInsertPrevElement(h, dl.front(), e))
                : index == dl.size() ? (how % 2 ? DLInsertLastElement(h, e) : DLInsertElement(h, nullptr, e, 0))
                : how % 2 ? DLInsertNextElement(h, at(dl, index - 1), e) : DLInsertPrevElement(h, at(dl, index), e);
            CHECK(linked == e);
            dl.insert(std::next(dl.begin(), ptrdiff_t(index)), e);
        } else {
            auto victim = std::next(dl.begin(), ptrdiff_t(random() % dl.size()));
            DLRemoveElement(h, *victim);
            dl.erase(victim);
        }
        if (grow) {
            void* stored = how < 2 ? LLPushFront(list, &v) : LLPushBack(list, &v);
            how < 2 ? ll.push_front(stored) : ll.push_back(stored);
        } else if (!ll.empty() && how != 0) {
            auto victim = std::next(ll.begin(), ptrdiff_t(random() % ll.size()));
            CHECK(LLRemove(list, *victim) == *victim);
            ll.erase(victim);
        } else {
            // Addresses of no node: the caller's own, and one byte into a value.
            CHECK(LLRemove(list, &v) == nullptr);
            CHECK(LLRemove(list, ll.empty() ? nullptr : static_cast<char*>(ll.back()) + 1) == nullptr);
        }
        if (serial % 7 == 0)  // a created element that the caller decides not to link
            DLRemoveElement(h, DLCreateElement(h, &v));
        check_dl(h, dl);
        check_ll(list, ll, random() % (ll.size() + 2));
    }
    LLDestroy(list);
    // The list releases what it holds and no more: an element never linked
    // outlives it and stays the caller's.
    int64_t v = value_for(99);
    DLElement* kept = DLCreateElement(h, &v);
    long before = zor_alloc_probe::live_blocks();
    DLRemoveHeader(h);
    CHECK(zor_alloc_probe::live_blocks() == before - 1 - 2 * long(dl.size()));
    check_value(DLGetElementValue(kept));
    DLHeader* other = DLCreateHeader(8);
    DLRemoveElement(other, kept);
    CHECK(other->nCount == 0);
    DLRemoveHeader(other);
}

TEST_CASE("a list with either end missing counts as empty and ignores the reference")
{
    NoLeak leak;
    DLHeader* h = DLCreateHeader(8);
    int64_t v = value_for(1);
    DLElement* lost = DLInsertFirstElement(h, DLCreateElement(h, &v));
    h->pLast = nullptr;
    DLElement* only = DLInsertNextElement(h, lost, DLCreateElement(h, &v));
    CHECK(h->nCount == 2);  // counted, as every insertion is
    CHECK(h->pFirst == only);
    CHECK(h->pLast == only);
    CHECK(only->pPrev == nullptr);
    CHECK(only->pNext == nullptr);
    DLRemoveElement(h, lost);  // neither linked nor first any more: released alone
    CHECK(h->pFirst == only);
    DLRemoveHeader(h);
}

TEST_CASE("refused sizes and allocations leave the lists as they were")
{
    NoLeak leak;
    for (int32_t size : {0, -8}) {
        CHECK(DLCreateHeader(size) == nullptr);
        CHECK(LLCreate(size) == nullptr);
    }
    CHECK(fail_each_allocation([]() {
              DLHeader* h = DLCreateHeader(8);
              LLHeader* list = h ? LLCreate(8) : nullptr;
              if (!list) {
                  if (h)
                      DLRemoveHeader(h);
                  return;
              }
              std::list<DLElement*> dl;
              std::list<void*> ll;
              for (int32_t i = 1; i <= 4; ++i) {
                  int64_t v = value_for(i);
                  DLElement* e = twice([&]() { return DLCreateElement(h, &v); });
                  REQUIRE(e);
                  dl.push_back(DLInsertLastElement(h, e));
                  auto push = i % 2 ? LLPushFront : LLPushBack;
                  void* stored = twice([&]() { return push(list, &v); });
                  i % 2 ? ll.push_front(stored) : ll.push_back(stored);
                  check_dl(h, dl);
                  check_ll(list, ll, 0);
              }
              DLRemoveHeader(h);
              LLDestroy(list);
          }) == 2 + 4 * 3);
}
