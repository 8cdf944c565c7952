// Hostile-input loops. Every family keeps one file of them,
// tests/<family>/fuzz_<family>.cpp, all in this form:
//
//   TEST_CASE("fuzz: TS editing with extreme positions")
//   {
//       fuzz_loop(3000, [](FuzzRng& rng) {
//           ... draw everything from rng, call the family, CHECK the result ...
//       });
//   }
//
// - The name starts with "fuzz:", which is how `./build.sh fuzz` finds it.
// - The count is the iterations of the regular test run: about a second under
//   Wine. Keep iterations cheap and many; check invariants and compare with a
//   small reference instead of restating the code.
// - Each iteration has its own seed. A failing check or a crash prints it with
//   the command that replays that one iteration, and the loop stops there.
// - Inputs and outputs go into Fenced buffers (fenced.h), whose last unit
//   touches a no-access page, so that a read or write past them faults.
// - The file puts its program under the guard heap with one line at
//   namespace scope (guard_heap.h), so that the library's own blocks fault
//   on overruns and use after free too, and crashes name the loop's seed:
//     [[maybe_unused]] const bool guarded = guard_this_program();
// - Environment: ZOR_FUZZ_SECONDS=S runs each loop for S seconds from a fresh
//   base seed instead of the fixed count and prints its iterations;
//   ZOR_FUZZ_SEED=x runs only the iteration with seed x. `./build.sh fuzz
//   [SECONDS] [FAMILY] [SEED]` sets both.
#pragma once

#include <doctest/doctest.h>

#include <stdint.h>

#include <functional>
#include <string>

// splitmix64: small, fast, and every seed gives a full-quality stream.
class FuzzRng {
public:
    explicit FuzzRng(uint64_t seed) : m_state(seed) {}

    uint64_t next()
    {
        uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // 0 .. n-1; 0 for n = 0.
    uint32_t below(uint32_t n) { return n ? uint32_t(next() % n) : 0; }
    int32_t  between(int32_t lo, int32_t hi) { return lo + int32_t(below(uint32_t(hi - lo) + 1)); }
    bool     chance(uint32_t percent) { return below(100) < percent; }
    template <class T, size_t N>
    const T& pick(const T (&items)[N])
    {
        return items[below(N)];
    }

    // A count or position: mostly small, often at a boundary, now and then
    // anything a 32-bit signed value can hold.
    int32_t extreme();
    // Any double: specials, boundaries, round numbers and raw bit patterns.
    double number();
    // Up to `maxLength` units drawn from `alphabet`, or from a hostile mix
    // (signs, digits, separators, blanks, marks, surrogates, U+FFFF, and
    // zero units where `zeros` allows) when `alphabet` is null.
    std::wstring text(uint32_t maxLength, const wchar_t* alphabet = nullptr, bool zeros = false);

private:
    uint64_t m_state;
};

// Runs `iteration` with a fresh seed each time; see the head of this file.
void fuzz_loop(long iterations, const std::function<void(FuzzRng&)>& iteration);

// The name of the running test case and, inside a fuzz loop, the seed of the
// running iteration with the command that replays it; empty outside a loop.
const char* fuzz_test_case();
std::string fuzz_replay();
