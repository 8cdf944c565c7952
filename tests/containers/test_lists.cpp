#include <doctest/doctest.h>

#include <random>
#include <vector>

#include "alloc_check.h"
#include "zor_dl.h"
#include "zor_ll.h"

namespace {
using Seq = std::vector<const void*>;

// Eight bytes with the serial in both halves, so that a short copy shows.
int64_t value_for(int32_t serial) { return serial * 0x100000001LL; }
bool sound(const void* stored) { int64_t v = *static_cast<const int64_t*>(stored); return v == value_for(int32_t(v)); }

Seq g_seen;
int32_t note(void* value) { g_seen.push_back(value); return 0; }
int32_t note_until(void* stop, void* value)
{
    g_seen.push_back(value);
    return g_seen.size() == *static_cast<size_t*>(stop) ? -1 : 0;  // any non-zero answer stops
}

// Both lists against their models: walks in every direction, bounded so that
// a broken link ends them, the counts, the tail, and both visitors, the
// second stopped at the `stop`th value (0 never).
void check(const DLHeader* h, const std::vector<DLElement*>& dl, const LLHeader* list, const Seq& ll, size_t stop)
{
    Seq forward, backward, walked;
    for (DLElement* e = DLGetFirstElement(h); e && forward.size() <= dl.size(); e = DLGetNextElement(e))
        forward.push_back(e);
    for (DLElement* e = DLGetLastElement(h); e && backward.size() <= dl.size(); e = DLGetPrevElement(e))
        backward.insert(backward.begin(), e);
    for (void* v = LLFirst(list); v && walked.size() <= ll.size(); v = LLNext(v))
        walked.push_back(v);
    REQUIRE(forward == Seq(dl.begin(), dl.end()));
    REQUIRE(backward == forward);
    REQUIRE(walked == ll);
    for (DLElement* e : dl)
        CHECK(sound(DLGetElementValue(e)));
    for (const void* v : ll)
        CHECK(sound(v));
    CHECK(h->nCount == int32_t(dl.size()));
    CHECK(LLCount(list) == int32_t(ll.size()));
    CHECK(LLLast(list) == (ll.empty() ? nullptr : ll.back()));
    g_seen.clear();
    CHECK(LLApply(list, note) == nullptr);
    CHECK(g_seen == ll);
    g_seen.clear();
    bool stops = stop != 0 && stop <= ll.size();
    CHECK(LLApplyPar(list, note_until, &stop) == (stops ? ll[stop - 1] : nullptr));
    CHECK(g_seen.size() == (stops ? stop : ll.size()));
}
}

TEST_CASE("random runs of both lists match reference lists")
{
    NoLeak leak;
    std::mt19937 random(1402);
    DLHeader* h = DLCreateHeader(8);
    LLHeader* list = LLCreate(8);
    std::vector<DLElement*> dl;
    Seq ll;
    int64_t outside = 0;  // a reference that an empty double list must not read
    for (int32_t serial = 1; serial < 4000; ++serial) {
        // Phases lean to growing and to shrinking, so the lists empty often.
        bool grow = random() % 100 < ((serial / 500) % 2 ? 35u : 65u);
        unsigned how = random() % 4;
        size_t at = random() % (dl.size() + 1);
        int64_t v = value_for(serial);
        if (grow || dl.empty()) {
            DLElement* e = DLCreateElement(h, &v);
            DLElement* linked =
                dl.empty() ? DLInsertElement(h, reinterpret_cast<DLElement*>(&outside), e, int32_t(how % 2))
                : at == 0 ? (how % 2 ? DLInsertFirstElement(h, e) : DLInsertPrevElement(h, dl[0], e))
                : at == dl.size() ? (how % 2 ? DLInsertLastElement(h, e) : DLInsertElement(h, nullptr, e, 0))
                : how % 2 ? DLInsertNextElement(h, dl[at - 1], e) : DLInsertPrevElement(h, dl[at], e);
            CHECK(linked == e);
            dl.insert(dl.begin() + ptrdiff_t(at), e);
        } else {
            at %= dl.size();
            DLRemoveElement(h, dl[at]);
            dl.erase(dl.begin() + ptrdiff_t(at));
        }
        if (grow) {
            ll.insert(how < 2 ? ll.begin() : ll.end(), how < 2 ? LLPushFront(list, &v) : LLPushBack(list, &v));
        } else if (!ll.empty() && how != 0) {
            at = random() % ll.size();
            CHECK(LLRemove(list, ll[at]) == ll[at]);
            ll.erase(ll.begin() + ptrdiff_t(at));
        } else {
            // Addresses of no node: the caller's own, and one byte into a value.
            CHECK(LLRemove(list, &v) == nullptr);
            CHECK(LLRemove(list, ll.empty() ? nullptr : static_cast<const char*>(ll.back()) + 1) == nullptr);
        }
        if (serial % 7 == 0)  // made, then not linked after all
            DLRemoveElement(h, DLCreateElement(h, &v));
        check(h, dl, list, ll, random() % (ll.size() + 2));
    }
    LLDestroy(list);
    // The list releases what it holds and no more: an element never linked
    // outlives it and stays the caller's.
    int64_t v = value_for(99);
    DLElement* kept = DLCreateElement(h, &v);
    long before = zor_alloc_probe::live_blocks();
    DLRemoveHeader(h);
    CHECK(zor_alloc_probe::live_blocks() == before - 1 - 2 * long(dl.size()));
    CHECK(sound(DLGetElementValue(kept)));
    DLHeader* other = DLCreateHeader(8);
    DLRemoveElement(other, kept);
    CHECK(other->nCount == 0);
    DLRemoveHeader(other);
}

TEST_CASE("a double list with either end missing counts as empty and ignores the reference")
{
    NoLeak leak;
    DLHeader* h = DLCreateHeader(8);
    int64_t v = value_for(1);
    DLElement* lost = DLInsertFirstElement(h, DLCreateElement(h, &v));
    h->pLast = nullptr;
    DLElement* only = DLInsertNextElement(h, lost, DLCreateElement(h, &v));
    CHECK(h->nCount == 2);  // counted, as every insertion is
    CHECK(Seq{h->pFirst, h->pLast, only->pPrev, only->pNext} == Seq{only, only, nullptr, nullptr});
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
    // A second try after each refusal must work on what the first one left.
    CHECK(fail_each_allocation([]() {
              DLHeader* h = DLCreateHeader(8);
              LLHeader* list = LLCreate(8);
              std::vector<DLElement*> dl;
              Seq ll;
              for (int32_t i = 1; h && list && i <= 4; ++i) {
                  int64_t v = value_for(i);
                  DLElement* e = DLCreateElement(h, &v);
                  dl.push_back(DLInsertLastElement(h, e ? e : DLCreateElement(h, &v)));
                  auto push = i % 2 ? LLPushFront : LLPushBack;
                  void* stored = push(list, &v);
                  ll.insert(i % 2 ? ll.begin() : ll.end(), stored ? stored : push(list, &v));
                  check(h, dl, list, ll, 0);
              }
              if (h)
                  DLRemoveHeader(h);
              if (list)
                  LLDestroy(list);
          }) == 2 + 4 * 3);
}
