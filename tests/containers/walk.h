// Walks along a container's links, for the tests of every container.
#pragma once

#include <doctest/doctest.h>

#include <algorithm>
#include <vector>

// From `first` by `step` until null, but at most `bound` + 1 places, so that
// a broken link ends the walk with one place too many instead of looping.
template <class T, class Step>
std::vector<T> walk(T first, Step step, size_t bound)
{
    std::vector<T> places;
    for (T at = first; at && places.size() <= bound; at = step(at))
        places.push_back(at);
    return places;
}

// The walk from the front, which the walk from the back must mirror.
template <class T, class Next, class Prev>
std::vector<T> walk_both_ways(T first, Next next, T last, Prev prev, size_t bound)
{
    std::vector<T> forward = walk(first, next, bound), backward = walk(last, prev, bound);
    std::reverse(backward.begin(), backward.end());
    CHECK(backward == forward);
    return forward;
}
