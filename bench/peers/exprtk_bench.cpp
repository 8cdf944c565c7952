// Native benchmark of exprtk on the shared suite, one line per formula
// (peer_common.h). Its own program, because the library compiles slowly:
// bench/run.sh builds it once per build tree, from the copy it finds.
#include <string>

#include <exprtk.hpp>

#include "peer_common.h"

namespace {

using Expression = exprtk::expression<double>;

// exprtk spells the logical operators as words.
std::string exprtk_text(std::string text)
{
    for (const auto& [from, to] : {std::pair<std::string, std::string>{"&&", " and "}, {"||", " or "}})
        for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at))
            text.replace(at, from.size(), to);
    return text;
}

struct ExprtkVars {
    double a, b, c, d, e, i, j;
    void load(const BenchVars& v) { a = v.a; b = v.b; c = v.c; d = v.d; e = v.e; i = double(v.i); j = double(v.j); }
};

// One symbol table, expression and parser per compile, as a caller would set
// them up; the set-up is measured apart and taken off.
struct Compiled {
    exprtk::symbol_table<double> symbols;
    Expression expression;
    exprtk::parser<double> parser;
    bool ok = false;

    Compiled(ExprtkVars& m, const std::string& text, bool compile)
    {
        symbols.add_variable("a", m.a); symbols.add_variable("b", m.b); symbols.add_variable("c", m.c);
        symbols.add_variable("d", m.d); symbols.add_variable("e", m.e); symbols.add_variable("i", m.i);
        symbols.add_variable("j", m.j);
        symbols.add_function("hyp", bench_hyp);
        symbols.add_function("half", bench_half);
        expression.register_symbol_table(symbols);
        if (compile)
            ok = parser.compile(text, expression);
    }
};

void bench_exprtk(const BenchFormula& f)
{
    ExprtkVars m{};
    const std::string text = exprtk_text(f.peer);
    const double usPerCompile = microseconds_per_compile([&](bool compile) {
        Compiled compiled(m, text, compile);
        g_benchSink = compiled.ok;
    }, kCompiles);
    Compiled compiled(m, text, true);
    if (!compiled.ok) {
        std::fprintf(stderr, "exprtk: %s does not compile\n", f.name);
        return;
    }
    const BenchTiming timing = peer_time(kEvaluations, [&](const BenchVars& v) {
        m.load(v);
        return compiled.expression.value();
    });
    report("exprtk", f.name, timing, usPerCompile);
}

}

int main()
{
    for (const BenchFormula& f : kBenchSuite)
        if (f.peer)
            bench_exprtk(f);
    return 0;
}
