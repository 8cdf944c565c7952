// Helpers over the allocation probe: leak counting and exhaustive failure
// injection, where a scenario is run again with its 1st, 2nd, ... allocation
// failing until a run makes fewer requests than the one that was to fail.
#pragma once

#include <doctest/doctest.h>

#include "frame/zor_alloc.h"

// Checks on destruction that the scope left no block alive.
class NoLeak {
public:
    NoLeak() : m_before(zor_alloc_probe::live_blocks()) {}
    ~NoLeak() { CHECK(zor_alloc_probe::live_blocks() == m_before); }
    NoLeak(const NoLeak&) = delete;
    NoLeak& operator=(const NoLeak&) = delete;

private:
    long m_before;
};

// Makes every allocation fail while it lives.
class AllAllocationsFail {
public:
    AllAllocationsFail() { zor_alloc_probe::fail_all(true); }
    ~AllAllocationsFail() { zor_alloc_probe::fail_all(false); }
    AllAllocationsFail(const AllAllocationsFail&) = delete;
    AllAllocationsFail& operator=(const AllAllocationsFail&) = delete;
};

// Runs the scenario with its nth request failing for n = 1, 2, ... until a
// run makes fewer than n requests, i.e. ran clean. Returns that run's count.
template <class Scenario>
long fail_each_allocation(Scenario scenario)
{
    for (long n = 1;; ++n) {
        long before = zor_alloc_probe::requests();
        zor_alloc_probe::fail_nth(n);
        scenario();
        long made = zor_alloc_probe::requests() - before;
        zor_alloc_probe::fail_nth(0);
        if (made < n)
            return made;
        REQUIRE(n < 100000);
    }
}
