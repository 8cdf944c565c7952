#include <doctest/doctest.h>

#include <string.h>

#include <algorithm>
#include <vector>

#include "alloc_check.h"
#include "fenced.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "walk.h"
#include "zor_da.h"
#include "zor_dl.h"
#include "zor_ll.h"
#include "zor_mp.h"

namespace {

// Every allocation of this program ends at a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

using Bytes = std::vector<unsigned char>;

Bytes random_bytes(FuzzRng& rng, Fenced<unsigned char>& fenced)
{
    for (size_t i = 0; i < fenced.size(); ++i)
        fenced.data()[i] = static_cast<unsigned char>(rng.next());
    return Bytes(fenced.data(), fenced.data() + fenced.size());
}

}

TEST_CASE("fuzz: DA writers with sources anywhere in the array's own block")
{
    NoLeak leak;
    fuzz_loop(3000, [](FuzzRng& rng) {
        const int32_t size = rng.between(1, 12);
        DA* da = DACreate(size, rng.between(1, 5));
        REQUIRE(da != nullptr);
        // The whole block as bytes, -1 where nothing defined was written yet.
        std::vector<int> model(size_t(da->capacity) * size_t(size), 0);
        int32_t count = 0;
        for (int op = 0; op < 12; ++op) {
            // A source inside the block at any byte offset, or a fenced one outside.
            const bool own = rng.chance(70);
            const int64_t offset = own ? rng.below(uint32_t(int64_t(da->capacity) * size - size + 1)) : 0;
            Fenced<unsigned char> outside{size_t(size)};
            const Bytes bytes = random_bytes(rng, outside);
            std::vector<int> value(bytes.begin(), bytes.end());
            if (own)
                value.assign(model.begin() + offset, model.begin() + offset + size);
            const void* source = own ? static_cast<const void*>(da->data + offset) : outside.data();
            // Far indexes either fit in a few pages or pass 2^31 bytes, which is refused.
            const int32_t index = rng.chance(5) ? rng.pick({INT32_MIN, -2, 4000, INT32_MAX})
                                                : rng.between(-1, da->count + 3);
            const int kind = int(rng.below(4));
            INFO("kind ", kind, ", index ", index, ", offset ", offset);
            void* stored = kind == 0 ? DAInsertElem(da, index, source)
                         : kind == 1 ? DASetElem(da, index, source)
                         : kind == 2 ? DAAddElem(da, source)
                                     : (DADeleteLast(da), nullptr);
            const int32_t at = kind == 2 ? count : index;
            if (kind != 3)
                CHECK((stored != nullptr) == (at >= 0 && at != INT32_MAX));
            if (kind == 3) {
                count -= count > 0;
            } else if (stored && at >= 0) {
                CHECK(stored == da->data + int64_t(at) * size);
                model.resize(size_t(da->capacity) * size_t(size), -1);
                const auto place = model.begin() + int64_t(at) * size;
                if (kind == 0 && at < count) {
                    // The tail moves up one slot over the spare slot behind it.
                    model.erase(model.begin() + int64_t(count) * size, model.begin() + int64_t(count + 1) * size);
                    model.insert(place, value.begin(), value.end());
                } else {
                    std::copy(value.begin(), value.end(), place);
                }
                count = kind == 0 && at < count ? count + 1 : std::max(count, at + 1);
            }
            REQUIRE(da->count == count);
            REQUIRE(model.size() == size_t(da->capacity) * size_t(size));
            const auto differs = std::mismatch(model.begin(), model.begin() + int64_t(count) * size, da->data,
                                               [](int m, unsigned char b) { return m < 0 || m == b; });
            CHECK(differs.first - model.begin() == int64_t(count) * size);
        }
        DADestroy(da);
    });
}

namespace {

std::vector<void*> g_seen;
int32_t note(void* value)
{
    g_seen.push_back(value);
    return 0;
}
int32_t note_until(void* stop, void* value)
{
    g_seen.push_back(value);
    return g_seen.size() == *static_cast<size_t*>(stop) ? -1 : 0;  // any non-zero answer stops
}

// Where each value is, with the bytes that it must hold, in list order.
template <class T>
using Model = std::vector<std::pair<T, Bytes>>;

// The places of the model, whose values are checked on the way.
template <class T, class Value>
std::vector<T> places(const Model<T>& model, Value value)
{
    std::vector<T> result;
    for (const auto& item : model) {
        result.push_back(item.first);
        CHECK(memcmp(value(item.first), item.second.data(), item.second.size()) == 0);
    }
    return result;
}

void* itself(void* value)
{
    return value;
}

// Both lists and the pool against their models: walks in every direction,
// counts, ends, stored bytes, and both list visitors, the second stopped at
// the `stop`th value (0 never).
void check_lists(const DLHeader* h, const Model<DLElement*>& dl, const LLHeader* list, const Model<void*>& ll,
                 const Model<void*>& mp, size_t stop)
{
    REQUIRE(walk_both_ways(DLGetFirstElement(h), DLGetNextElement, DLGetLastElement(h), DLGetPrevElement,
                           dl.size()) == places(dl, DLGetElementValue));
    CHECK(h->nCount == int32_t(dl.size()));
    const std::vector<void*> values = places(ll, itself);
    REQUIRE(walk(LLFirst(list), LLNext, ll.size()) == values);
    CHECK(LLCount(list) == int32_t(ll.size()));
    CHECK(LLLast(list) == (ll.empty() ? nullptr : ll.back().first));
    places(mp, itself);
    g_seen.clear();
    CHECK(LLApply(list, note) == nullptr);
    CHECK(g_seen == values);
    g_seen.clear();
    const bool stops = stop != 0 && stop <= ll.size();
    CHECK(LLApplyPar(list, note_until, &stop) == (stops ? values[stop - 1] : nullptr));
    CHECK(g_seen.size() == (stops ? stop : ll.size()));
}

// Whether `make` gives an object for `size`, which is then released.
template <class Make, class Release>
bool makes(Make make, Release release, int32_t size)
{
    auto* made = make(size);
    if (made)
        release(made);
    return made != nullptr;
}

}

TEST_CASE("fuzz: lists and pool against byte models, fed from fenced sources")
{
    NoLeak leak;
    fuzz_loop(200, [](FuzzRng& rng) {
        // Sizes from anywhere: only a positive one makes an object.
        const int32_t wild = rng.extreme();
        CHECK(makes(DLCreateHeader, DLRemoveHeader, wild) == (wild > 0));
        CHECK(makes(LLCreate, LLDestroy, wild) == (wild > 0));
        CHECK(makes(MPCreate, MPDestroy, wild) == (wild > 0));

        const int32_t size = rng.between(1, 24);
        DLHeader* h = DLCreateHeader(size);
        LLHeader* list = LLCreate(size);
        MPPool* pool = MPCreate(rng.between(1, 64));
        Model<DLElement*> dl;
        Model<void*> ll, mp;
        Fenced<unsigned char> nowhere{0};  // any read of it faults
        check_lists(h, dl, list, ll, mp, 1);
        for (int op = 0, ops = rng.between(1, 80); op < ops; ++op) {
            // The source ends at a no-access page: a copy of too many bytes faults.
            Fenced<unsigned char> source{size_t(size)};
            const Bytes bytes = random_bytes(rng, source);
            const uint32_t kind = rng.below(5);
            CAPTURE(kind);
            if (kind == 0) {
                // Before or behind a reference; a null one stands for an end,
                // and an empty list ignores whatever it is given.
                const int32_t before = int32_t(rng.below(2)), ref = rng.between(-1, int32_t(dl.size()) - 1);
                const size_t at = ref < 0 ? (before ? 0 : dl.size()) : size_t(ref + !before);
                DLElement* reference = ref >= 0 ? dl[size_t(ref)].first
                                     : dl.empty() && rng.chance(50) ? reinterpret_cast<DLElement*>(nowhere.data())
                                                                    : nullptr;
                DLElement* e = DLCreateElement(h, source.data());
                DLElement* linked = rng.chance(50) ? DLInsertElement(h, reference, e, before)
                                  : ref < 0 ? (before ? DLInsertFirstElement(h, e) : DLInsertLastElement(h, e))
                                  : before  ? DLInsertPrevElement(h, reference, e)
                                            : DLInsertNextElement(h, reference, e);
                CHECK(linked == e);
                dl.insert(dl.begin() + ptrdiff_t(at), {e, bytes});
            } else if (kind == 1) {
                // Past the end: an element made and then not linked after all.
                const size_t at = rng.below(uint32_t(dl.size()) + 1);
                DLRemoveElement(h, at < dl.size() ? dl[at].first : DLCreateElement(h, source.data()));
                if (at < dl.size())
                    dl.erase(dl.begin() + ptrdiff_t(at));
            } else if (kind == 2) {
                const bool front = rng.chance(50);
                void* stored = front ? LLPushFront(list, source.data()) : LLPushBack(list, source.data());
                ll.insert(front ? ll.begin() : ll.end(), {stored, bytes});
            } else if (kind == 3) {
                // Past the end: the caller's own address, or one byte into a value.
                const size_t at = rng.below(uint32_t(ll.size()) + 1);
                const void* stray = ll.empty() || rng.chance(50) ? static_cast<const void*>(source.data())
                                                                 : static_cast<const char*>(ll.back().first) + 1;
                const void* address = at < ll.size() ? ll[at].first : stray;
                CHECK(LLRemove(list, address) == (at < ll.size() ? address : nullptr));
                if (at < ll.size())
                    ll.erase(ll.begin() + ptrdiff_t(at));
            } else {
                // A tail of the source, up to all of it, or a negative size.
                const int32_t n = rng.chance(10) ? -1 - int32_t(rng.below(INT32_MAX)) : rng.between(0, size);
                void* stored = MPAlloc(pool, source.data() + size - std::max(n, 0), n);
                CHECK((stored != nullptr) == (n >= 0));
                if (stored)
                    mp.push_back({stored, Bytes(bytes.end() - n, bytes.end())});
            }
            check_lists(h, dl, list, ll, mp, rng.below(uint32_t(ll.size()) + 2));
        }
        DLRemoveHeader(h);
        LLDestroy(list);
        MPDestroy(pool);
    });
}
