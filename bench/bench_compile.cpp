// Compile time against the length of a formula and against the number of
// symbols defined, each compile into a fresh object and timed alone; the
// best of several, since one preemption on a busy machine costs more than
// a whole compile of the short ones.
#include <stdio.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "expr_bench.h"

namespace {

struct Object {
    ExprContext expr;
    double value = 1.5;
    Object() { ExprInit(&expr, 64, 256, 0, 0, nullptr, 1, nullptr, nullptr, nullptr, nullptr, nullptr); }
    ~Object() { ExprRelease(&expr); }
};

// A chain of the suite's kind, `length` characters long.
std::wstring chain(size_t length)
{
    std::wstring text = L"a";
    while (text.size() + 4 <= length)
        text += text.size() % 8 == 1 ? L"+b*c" : L"-d/a";
    return text;
}

void by_length()
{
    for (size_t length : {100, 1000, 10000, 100000}) {
        const std::wstring text = chain(length);
        const int reps = 3 + int(100000 / length);
        double best = 1e300;
        for (int n = 0; n < reps; ++n) {
            Object o;
            for (const wchar_t* name : {L"a", L"b", L"c", L"d"})
                ExprDefineVar(&o.expr, &o.value, name, EXT_Double);
            uint32_t start = 0;
            const double t0 = now_seconds();
            const ZORStatus status = ExprCompile(&o.expr, text.c_str(), &start, 0, nullptr, nullptr);
            best = std::min(best, now_seconds() - t0);
            if (status != 0)
                fprintf(stderr, "a chain of %u characters does not compile\n", unsigned(length));
        }
        printf("compile\tlength\t%u\t%.1f\n", unsigned(text.size()), best * 1e6);
    }
}

// A sum of 100 names spread over all that are defined; the definitions and
// the compile are timed apart.
void by_symbols()
{
    for (int count : {10, 100, 1000, 10000, 100000}) {
        std::vector<std::wstring> names;
        for (int i = 0; i < count; ++i)
            names.push_back(L"v" + std::to_wstring(i));
        std::wstring text = names[0];
        for (int i = 1; i < 100; ++i)
            text += L"+" + names[size_t(i) * size_t(count) / 100];
        const int reps = count >= 10000 ? 3 : 30;
        double defining = 1e300, compiling = 1e300;
        for (int n = 0; n < reps; ++n) {
            Object o;
            const double t0 = now_seconds();
            for (const std::wstring& name : names)
                ExprDefineVar(&o.expr, &o.value, name.c_str(), EXT_Double);
            const double t1 = now_seconds();
            uint32_t start = 0;
            ExprCompile(&o.expr, text.c_str(), &start, 0, nullptr, nullptr);
            compiling = std::min(compiling, now_seconds() - t1);
            defining = std::min(defining, t1 - t0);
        }
        printf("compile\tsymbols\t%d\t%.3f\t%.1f\n", count, defining * 1e6 / count, compiling * 1e6);
    }
}
}

void print_compile_table()
{
    by_length();
    by_symbols();
}
