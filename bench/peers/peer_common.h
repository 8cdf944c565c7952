// What the native peer programs share: the counts, the report line and the
// two measurements. A line is:
//   library <TAB> formula <TAB> ns per evaluation <TAB> us per compile
//           <TAB> ns per evaluation in the best burst
#pragma once

#include <chrono>
#include <cstdio>
#include <functional>

#include "../suite.h"
#include "../timing.h"

constexpr long kEvaluations = 2000000;
constexpr int kCompiles = 2000;

inline void report(const char* library, const char* formula, BenchTiming timing, double usPerCompile)
{
    std::printf("%s\t%s\t%.3f\t%.3f\t%.3f\n", library, formula, timing.ns, usPerCompile, timing.bestNs);
    std::fflush(stdout);
}

// Set-up plus compile, less set-up alone, per compile.
inline double microseconds_per_compile(const std::function<void(bool)>& build, int compiles)
{
    using Clock = std::chrono::steady_clock;
    double with = 0, without = 0;
    for (int n = 0; n < compiles; ++n) {
        auto t0 = Clock::now();
        build(true);
        auto t1 = Clock::now();
        build(false);
        with += std::chrono::duration<double>(t1 - t0).count();
        without += std::chrono::duration<double>(Clock::now() - t1).count();
    }
    return (with - without) * 1e6 / compiles;
}

// Every library sees the same values, varied per evaluation.
template <typename Evaluate>
BenchTiming peer_time(long evaluations, Evaluate evaluate)
{
    BenchVars v{};
    return bench_time(evaluations, [&](long k) {
        bench_vary(v, k);
        return evaluate(v);
    });
}
