// The engine's side of the formula benchmark: compiles and evaluates the
// shared suite and prints one line per formula:
//   zorbase <TAB> formula <TAB> ns per evaluation <TAB> us per compile
//           <TAB> ns per evaluation in the best burst
//           <TAB> bytes per compiled formula <TAB> allocations per evaluation
// and the hand-written floor, built by the same compiler and run under the
// same Wine, as "floor-wine" lines. With the argument "compile" it prints
// the compile-time table instead (bench_compile.cpp). It links the static
// core so that the allocation probe can count.
#include <stdio.h>
#include <string.h>

#include "bench_clock.h"
#include "expr_bench.h"
#include "frame/zor_alloc.h"
#include "timing.h"

namespace {

constexpr long kEvaluations = 2000000;
constexpr int kCompiles = 2000;

double pop_double(ExprContext* expr)
{
    uint32_t type;
    return *static_cast<double*>(ExprPopArgument(expr, &type));
}

double hyp(ExprContext* expr, intptr_t)
{
    double y = pop_double(expr);
    return bench_hyp(pop_double(expr), y);
}

double half(ExprContext* expr, intptr_t) { return bench_half(pop_double(expr)); }

// Every name the suite uses, bound to storage that the loop rewrites.
struct Sheet {
    ExprContext expr;
    BenchVars v{};
    int32_t i = 0, j = 0;
    TSString s, t;
    TDDate day{}, span{};

    Sheet()
    {
        ExprInit(&expr, 64, 256, 0, 0, nullptr, 1, nullptr, nullptr, nullptr, nullptr, nullptr);
        ExprDefineVar(&expr, &v.a, L"a", EXT_Double);
        ExprDefineVar(&expr, &v.b, L"b", EXT_Double);
        ExprDefineVar(&expr, &v.c, L"c", EXT_Double);
        ExprDefineVar(&expr, &v.d, L"d", EXT_Double);
        ExprDefineVar(&expr, &v.e, L"e", EXT_Double);
        ExprDefineVar(&expr, &i, L"i", EXT_Long);
        ExprDefineVar(&expr, &j, L"j", EXT_Long);
        ExprDefineVar(&expr, TSSetStr(TSClear(&s), L"abc"), L"s", EXT_String);
        ExprDefineVar(&expr, TSSetStr(TSClear(&t), L"defgh"), L"t", EXT_String);
        ExprDefineVar(&expr, &day, L"day", EXT_Date);
        ExprDefineVar(&expr, &span, L"span", EXT_Date);
        ExprDefineFn(&expr, reinterpret_cast<ExprUserFn>(hyp), L"hyp", EXT_Double, 2,
                     EXT_Double, EXT_Double);
        ExprDefineFn(&expr, reinterpret_cast<ExprUserFn>(half), L"half", EXT_Double, 1,
                     EXT_Double);
        day.year = 2026;
        day.month = 11;
        day.day = 22;
    }
    ~Sheet()
    {
        ExprRelease(&expr);
        TSInit(&s);
        TSInit(&t);
    }

    void vary(long k)
    {
        bench_vary(v, k);
        i = int32_t(v.i);
        j = int32_t(v.j);
        span.day = uint16_t(k & 31);
    }
};

// Reads a result of any numeric type as a double, so the loop cannot be
// optimised away and every formula is checked to produce something.
double as_double(const void* value, uint32_t type)
{
    switch (type) {
    case EXT_Char: return *static_cast<const uint16_t*>(value);
    case EXT_Long: return *static_cast<const int32_t*>(value);
    case EXT_ULong: return *static_cast<const uint32_t*>(value);
    case EXT_Double: return *static_cast<const double*>(value);
    case EXT_String: return TSGetLen(static_cast<const TSString*>(value));
    case EXT_Date: return static_cast<const TDDate*>(value)->day;
    default: return 0;
    }
}

// A compile into a fresh object each time, timed alone: compiles into one
// object would measure the arena's growth instead.
double microseconds_per_compile(const wchar_t* formula)
{
    double seconds = 0;
    for (int n = 0; n < kCompiles; ++n) {
        Sheet sheet;
        uint32_t start = 0;
        const double t0 = now_seconds();
        ExprCompile(&sheet.expr, formula, &start, 0, nullptr, nullptr);
        seconds += now_seconds() - t0;
    }
    return seconds * 1e6 / kCompiles;
}

bool bench_formula(const BenchFormula& f)
{
    Sheet sheet;
    int32_t instrBefore = DAGetSize(sheet.expr.code);
    uint64_t arenaBefore = sheet.expr.dataArenaUsed;
    uint32_t start = 0, resultType = 0;
    ZORStatus status = ExprCompile(&sheet.expr, f.engine, &start, 0, nullptr, &resultType);
    if (status != 0) {
        fprintf(stderr, "%s: compile failed 0x%08X at column %u\n", f.name, unsigned(status),
                unsigned(ExprGetColNo(&sheet.expr)));
        return false;
    }

    // Memory of one compiled formula: its instructions and its arena slots.
    double bytes = double(DAGetSize(sheet.expr.code) - instrBefore) * sizeof(ExprInstr) +
                   double(sheet.expr.dataArenaUsed - arenaBefore);
    double usPerCompile = microseconds_per_compile(f.engine);

    sheet.vary(0);  // the first run may allocate the stack and link
    if (ExprEvaluate(&sheet.expr, start, 0) != 0) {
        fprintf(stderr, "%s: evaluation failed\n", f.name);
        return false;
    }
    ExprPopResult(&sheet.expr);

    long requestsBefore = zor_alloc_probe::requests();
    const BenchTiming timing = bench_time(kEvaluations, [&](long k) {
        sheet.vary(k);
        ExprEvaluate(&sheet.expr, start, 0);
        return as_double(ExprPopResult(&sheet.expr), resultType);
    });
    double allocsPerEval = double(zor_alloc_probe::requests() - requestsBefore) / kEvaluations;

    printf("zorbase\t%s\t%.3f\t%.3f\t%.3f\t%.0f\t%.2f\n", f.name, timing.ns, usPerCompile,
           timing.bestNs, bytes, allocsPerEval);
    fflush(stdout);
    return true;
}

// The formula written out by hand, built by this compiler and run under this
// Wine: what no engine can beat here.
void bench_floor(const BenchFormula& f)
{
    BenchVars v{};
    const BenchTiming timing = bench_time(kEvaluations, [&](long k) {
        bench_vary(v, k);
        return f.floor(v);
    });
    printf("floor-wine\t%s\t%.3f\t0\t%.3f\n", f.name, timing.ns, timing.bestNs);
    fflush(stdout);
}

}

int main(int argc, char** argv)
{
    if (argc > 1 && strcmp(argv[1], "compile") == 0) {
        print_compile_table();
        return 0;
    }
    int failures = 0;
    for (const BenchFormula& f : kBenchSuite) {
        failures += !bench_formula(f);
        if (f.floor)
            bench_floor(f);
    }
    return failures;
}
