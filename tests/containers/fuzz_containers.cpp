#include <doctest/doctest.h>

#include <string.h>

#include <algorithm>
#include <vector>

#include "alloc_check.h"
#include "fenced.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "zor_da.h"

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
    fuzz_loop(1500, [](FuzzRng& rng) {
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
