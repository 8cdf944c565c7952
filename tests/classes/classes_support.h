// Helpers shared by the string class tests.
#pragma once

#include <doctest/doctest.h>

#include <malloc.h>

#include <string>

#include "classes/encodings.h"
#include "narrow_code_page.h"

// A class's text with its counted length, embedded zeros included.
template <class S>
auto text_of(const S& s)
{
    using Unit = std::remove_const_t<std::remove_pointer_t<decltype(s.GetStr())>>;
    return std::basic_string<Unit>(s.GetStr(), s.length);
}

// Small deterministic generator, so that a failing sequence can be replayed.
struct Random {
    uint64_t state;
    explicit Random(uint64_t seed) : state(seed) {}
    uint32_t next()
    {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return uint32_t(state >> 33);
    }
    int below(int n) { return int(next() % uint32_t(n)); }
};

// Up to `most` units drawn from `alphabet`.
template <class Char>
std::basic_string<Char> random_word(Random& rnd, const std::basic_string<Char>& alphabet, int most)
{
    std::basic_string<Char> word;
    for (int n = rnd.below(most + 1); n > 0; --n)
        word += alphabet[size_t(rnd.below(int(alphabet.size())))];
    return word;
}

// The text argument of one random step: `word`, or half the time a terminated
// tail of the object's own text, which `word` then mirrors.
template <class S, class Char>
const Char* pick_argument(Random& rnd, const S& s, const std::basic_string<Char>& model,
                          std::basic_string<Char>& word)
{
    if (model.empty() || !rnd.below(2))
        return word.c_str();
    size_t at = size_t(rnd.below(int(model.size())));
    word = model.substr(at);
    return s.buffer + at;
}
