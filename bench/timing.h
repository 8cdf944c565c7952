// Timing shared by the engine's benchmark and the peers': a run of
// evaluations cut into bursts, so that each line tells both the mean over the
// whole run and the best burst, which a busy machine disturbs least.
#pragma once

#include <chrono>

struct BenchTiming {
    double ns;      // per evaluation, over the whole run
    double bestNs;  // per evaluation, in the fastest burst
};

constexpr int kBenchBursts = 20;

inline volatile double g_benchSink;

// `evaluate(k)` runs evaluation k and gives its result, which is summed so
// that no evaluation can be left out.
template <class Evaluate>
BenchTiming bench_time(long evaluations, Evaluate evaluate)
{
    using Clock = std::chrono::steady_clock;
    const long burst = evaluations / kBenchBursts;
    double sum = 0, total = 0, best = 1e300;
    for (long k = 0; k < burst * kBenchBursts;) {
        const auto start = Clock::now();
        for (const long end = k + burst; k < end; ++k)
            sum += evaluate(k);
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        total += seconds;
        if (seconds < best)
            best = seconds;
    }
    g_benchSink = sum;
    return {total * 1e9 / double(burst * kBenchBursts), best * 1e9 / double(burst)};
}
