// The formula suite shared by the engine's benchmark and the peers'. Each
// entry has the formula in the engine's language and in the peers' (which
// know doubles only), and the formula written out by hand as the floor.
#pragma once

struct BenchVars {
    double a, b, c, d, e;
    long i, j;  // integers in the engine, doubles for the peers
};

// Two-argument and one-argument user functions, the same everywhere.
inline double bench_hyp(double x, double y) { return x * x + y * y; }
inline double bench_half(double x) { return x * 0.5; }

struct BenchFormula {
    const char* name;
    const wchar_t* engine;  // null: the peers have no such formula
    const char* peer;       // null: engine only
    double (*floor)(const BenchVars&);
};

#define BENCH_CHAIN "a+b*c-d/e+a*b-c+d*e-a/b+c*d-e+a*b*c-d+e*a-b+c"

inline const BenchFormula kBenchSuite[] = {
    {"short", L"a*b+c", "a*b+c",
     [](const BenchVars& v) { return v.a * v.b + v.c; }},
    {"chain20", L"" BENCH_CHAIN, BENCH_CHAIN,
     [](const BenchVars& v) {
         return v.a + v.b * v.c - v.d / v.e + v.a * v.b - v.c + v.d * v.e - v.a / v.b +
                v.c * v.d - v.e + v.a * v.b * v.c - v.d + v.e * v.a - v.b + v.c;
     }},
    {"mixed", L"i*a + j/2.5 - i*j*b + (i+j)*c", "i*a + j/2.5 - i*j*b + (i+j)*c",
     [](const BenchVars& v) {
         return v.i * v.a + v.j / 2.5 - double(v.i * v.j) * v.b + double(v.i + v.j) * v.c;
     }},
    {"logic", L"(a < b) && (c >= d) || (e != a) && (i > j)",
     "(a < b) && (c >= d) || (e != a) && (i > j)",
     [](const BenchVars& v) {
         return double(((v.a < v.b) && (v.c >= v.d)) || ((v.e != v.a) && (v.i > v.j)));
     }},
    {"calls", L"hyp(a, b) + half(c) * hyp(d, e)", "hyp(a, b) + half(c) * hyp(d, e)",
     [](const BenchVars& v) { return bench_hyp(v.a, v.b) + bench_half(v.c) * bench_hyp(v.d, v.e); }},
    {"concat", L"s + t + s", nullptr, nullptr},
    {"dateadd", L"day + span", nullptr, nullptr},
};

// Values change between evaluations: evaluation k uses these.
inline void bench_vary(BenchVars& v, long k)
{
    v.a = 1.0 + (k & 15) * 0.25;
    v.b = 2.0 + (k & 7) * 0.5;
    v.c = 3.0 - (k & 3);
    v.d = 0.5 + (k & 31) * 0.125;
    v.e = 1.5 + (k & 1);
    v.i = 3 + (k & 7);
    v.j = 11 - (k & 3);
}
