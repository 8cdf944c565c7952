#include <doctest/doctest.h>

#include <string.h>

#include <algorithm>
#include <vector>

#include "alloc_check.h"
#include "fenced.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "zor_da.h"
#include "zor_dl.h"
#include "zor_ll.h"
#include "zor_mp.h"

namespace {

// Every allocation of this program ends at a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

// The array's block as bytes, -1 where nothing defined was written yet.
struct Model {
    std::vector<int> bytes;
    int32_t          count = 0;

    std::vector<int> element(int64_t offset, int32_t size) const
    {
        return std::vector<int>(bytes.begin() + offset, bytes.begin() + offset + size);
    }
    void store(int64_t offset, const std::vector<int>& value)
    {
        std::copy(value.begin(), value.end(), bytes.begin() + offset);
    }
};

}

TEST_CASE("fuzz: DA writers with sources anywhere in the array's own block")
{
    NoLeak leak;
    fuzz_loop(3000, [](FuzzRng& rng) {
        const int32_t size = rng.between(1, 12), step = rng.between(1, 5);
        DA* da = DACreate(size, step);
        REQUIRE(da != nullptr);
        Model model;
        model.bytes.assign(size_t(size * step), 0);
        for (int op = 0; op < 12; ++op) {
            // A source inside the block at any byte offset, or a fenced one outside.
            const int64_t blockBytes = int64_t(da->capacity) * size;
            const bool own = rng.chance(70);
            const int64_t offset = own ? rng.below(uint32_t(blockBytes - size + 1)) : 0;
            Fenced<unsigned char> outside{size_t(size)};
            for (size_t i = 0; i < outside.size(); ++i)
                outside.data()[i] = static_cast<unsigned char>(rng.next());
            const void* source = own ? static_cast<const void*>(da->data + offset) : outside.data();
            std::vector<int> value(outside.data(), outside.data() + size);
            if (own)
                value = model.element(offset, size);
            // Far indexes either fit in a few pages or pass 2^31 bytes, which is refused.
            const int32_t index = rng.chance(5) ? rng.pick({INT32_MIN, -2, 4000, INT32_MAX})
                                                : rng.between(-1, da->count + 3);
            const int kind = int(rng.below(4));
            CAPTURE(kind);
            CAPTURE(index);
            CAPTURE(offset);
            void* stored = kind == 0 ? DAInsertElem(da, index, source)
                         : kind == 1 ? DASetElem(da, index, source)
                         : kind == 2 ? DAAddElem(da, source)
                                     : (DADeleteLast(da), nullptr);
            const int32_t at = kind == 2 ? model.count : index;
            if (kind == 3) {
                model.count -= model.count > 0;
            } else if (!stored) {
                CHECK((at < 0 || at == INT32_MAX));
            } else {
                CHECK(stored == da->data + int64_t(at) * size);
                model.bytes.resize(size_t(da->capacity) * size_t(size), -1);
                if (kind == 0 && at < model.count) {
                    const int64_t begin = int64_t(at) * size;
                    model.store(begin + size, model.element(begin, int32_t((model.count - at) * size)));
                    model.store(begin, value);
                    ++model.count;
                } else {
                    model.store(int64_t(at) * size, value);
                    model.count = std::max(model.count, at + 1);
                }
            }
            REQUIRE(da->count == model.count);
            REQUIRE(model.bytes.size() == size_t(da->capacity) * size_t(size));
            for (size_t i = 0; i < size_t(da->count) * size_t(size); ++i)
                if (model.bytes[i] >= 0 && model.bytes[i] != da->data[i]) {
                    CHECK(model.bytes[i] == int(da->data[i]));
                    break;
                }
        }
        DADestroy(da);
    });
}

namespace {

using Bytes = std::vector<unsigned char>;

std::vector<const void*> g_seen;
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

// Both lists and the pool against their models: walks in every direction,
// bounded so that a broken link ends them, counts, ends, stored bytes, and
// both list visitors, the second stopped at the `stop`th value (0 never).
void check_lists(const DLHeader* h, const std::vector<std::pair<DLElement*, Bytes>>& dl, const LLHeader* list,
                 const std::vector<std::pair<void*, Bytes>>& ll, const std::vector<std::pair<void*, Bytes>>& mp,
                 size_t stop)
{
    std::vector<const void*> forward, backward, walked, expected;
    for (DLElement* e = DLGetFirstElement(h); e && forward.size() <= dl.size(); e = DLGetNextElement(e))
        forward.push_back(e);
    for (DLElement* e = DLGetLastElement(h); e && backward.size() <= dl.size(); e = DLGetPrevElement(e))
        backward.insert(backward.begin(), e);
    for (const auto& item : dl)
        expected.push_back(item.first);
    REQUIRE(forward == expected);
    REQUIRE(backward == expected);
    CHECK(h->nCount == int32_t(dl.size()));
    for (const auto& item : dl)
        CHECK(memcmp(DLGetElementValue(item.first), item.second.data(), item.second.size()) == 0);
    for (void* v = LLFirst(list); v && walked.size() <= ll.size(); v = LLNext(v))
        walked.push_back(v);
    expected.clear();
    for (const auto& item : ll)
        expected.push_back(item.first);
    REQUIRE(walked == expected);
    CHECK(LLCount(list) == int32_t(ll.size()));
    CHECK(LLLast(list) == (ll.empty() ? nullptr : ll.back().first));
    for (const auto& item : ll)
        CHECK(memcmp(item.first, item.second.data(), item.second.size()) == 0);
    g_seen.clear();
    CHECK(LLApply(list, note) == nullptr);
    CHECK(g_seen == expected);
    g_seen.clear();
    const bool stops = stop != 0 && stop <= ll.size();
    CHECK(LLApplyPar(list, note_until, &stop) == (stops ? expected[stop - 1] : nullptr));
    CHECK(g_seen.size() == (stops ? stop : ll.size()));
    for (const auto& item : mp)
        CHECK(memcmp(item.first, item.second.data(), item.second.size()) == 0);
}

}

TEST_CASE("fuzz: lists and pool against byte models, fed from fenced sources")
{
    NoLeak leak;
    fuzz_loop(200, [](FuzzRng& rng) {
        // Sizes from anywhere: only a positive one makes an object.
        const int32_t wild = rng.extreme();
        DLHeader* wild_dl = DLCreateHeader(wild);
        LLHeader* wild_ll = LLCreate(wild);
        MPPool* wild_mp = MPCreate(wild);
        CHECK((wild_dl != nullptr) == (wild > 0));
        CHECK((wild_ll != nullptr) == (wild > 0));
        CHECK((wild_mp != nullptr) == (wild > 0));
        if (wild > 0) {
            DLRemoveHeader(wild_dl);
            LLDestroy(wild_ll);
            MPDestroy(wild_mp);
        }

        const int32_t size = rng.between(1, 24);
        DLHeader* h = DLCreateHeader(size);
        LLHeader* list = LLCreate(size);
        MPPool* pool = MPCreate(rng.between(1, 64));
        std::vector<std::pair<DLElement*, Bytes>> dl;
        std::vector<std::pair<void*, Bytes>> ll, mp;
        Fenced<unsigned char> nowhere{0};  // any read of it faults
        check_lists(h, dl, list, ll, mp, 1);
        for (int op = 0, ops = rng.between(1, 80); op < ops; ++op) {
            // The source ends at a no-access page: a copy of too many bytes faults.
            Fenced<unsigned char> source{size_t(size)};
            for (size_t i = 0; i < source.size(); ++i)
                source.data()[i] = static_cast<unsigned char>(rng.next());
            const Bytes bytes(source.data(), source.data() + size);
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
