// Native benchmark of muParser, muParserX and the hand-written floor on the
// shared suite, one line per library and formula (peer_common.h).
#include <cstring>
#include <string>

#include <muParser.h>
#include <muparserx/mpParser.h>

#include "peer_common.h"

namespace {

void bench_floor(const BenchFormula& f)
{
    report("floor", f.name, peer_time(kEvaluations, f.floor), 0);
}

// muParser binds doubles by address.
struct MuVars {
    double a, b, c, d, e, i, j;
    void load(const BenchVars& v) { a = v.a; b = v.b; c = v.c; d = v.d; e = v.e; i = double(v.i); j = double(v.j); }
};

void define_mu(mu::Parser& p, MuVars& m)
{
    p.DefineVar("a", &m.a); p.DefineVar("b", &m.b); p.DefineVar("c", &m.c);
    p.DefineVar("d", &m.d); p.DefineVar("e", &m.e); p.DefineVar("i", &m.i); p.DefineVar("j", &m.j);
    p.DefineFun("hyp", bench_hyp);
    p.DefineFun("half", bench_half);
}

void bench_muparser(const BenchFormula& f)
{
    MuVars m{};
    // muParser compiles lazily, on the first evaluation; the parser's own
    // set-up is measured apart and taken off.
    double usPerCompile = microseconds_per_compile([&](bool compile) {
        mu::Parser p;
        define_mu(p, m);
        if (compile) {
            p.SetExpr(f.peer);
            g_benchSink = p.Eval();
        }
    }, kCompiles);

    mu::Parser p;
    define_mu(p, m);
    p.SetExpr(f.peer);
    const BenchTiming timing = peer_time(kEvaluations, [&](const BenchVars& v) {
        m.load(v);
        return p.Eval();
    });
    report("muparser", f.name, timing, usPerCompile);
}

// muParserX binds its own value objects, and a function is an object of a
// callback class; one class serves both functions of the suite.
class MuxFunction : public mup::ICallback {
public:
    using Body = double (*)(const mup::ptr_val_type* args);
    MuxFunction(const char* name, int argc, Body body)
        : mup::ICallback(mup::cmFUNC, name, argc), name_(name), body_(body) {}
    void Eval(mup::ptr_val_type& ret, const mup::ptr_val_type* args, int) override { *ret = body_(args); }
    const mup::char_type* GetDesc() const override { return name_; }
    mup::IToken* Clone() const override { return new MuxFunction(*this); }

private:
    const char* name_;
    Body body_;
};

struct MuxVars {
    mup::Value a{0.0}, b{0.0}, c{0.0}, d{0.0}, e{0.0}, i{0.0}, j{0.0};
    void load(const BenchVars& v)
    {
        a = v.a; b = v.b; c = v.c; d = v.d; e = v.e; i = double(v.i); j = double(v.j);
    }
};

void define_mux(mup::ParserX& p, MuxVars& m)
{
    p.ClearConst();  // its built-in constant e would hide the variable e
    p.DefineVar("a", mup::Variable(&m.a)); p.DefineVar("b", mup::Variable(&m.b));
    p.DefineVar("c", mup::Variable(&m.c)); p.DefineVar("d", mup::Variable(&m.d));
    p.DefineVar("e", mup::Variable(&m.e)); p.DefineVar("i", mup::Variable(&m.i));
    p.DefineVar("j", mup::Variable(&m.j));
    p.DefineFun(new MuxFunction("hyp", 2, [](const mup::ptr_val_type* a) {
        return bench_hyp(a[0]->GetFloat(), a[1]->GetFloat());
    }));
    p.DefineFun(new MuxFunction("half", 1, [](const mup::ptr_val_type* a) {
        return bench_half(a[0]->GetFloat());
    }));
}

void bench_muparserx(const BenchFormula& f)
{
    MuxVars m;
    double usPerCompile = microseconds_per_compile([&](bool compile) {
        mup::ParserX p(mup::pckCOMMON | mup::pckNON_COMPLEX);
        define_mux(p, m);
        if (compile) {
            p.SetExpr(f.peer);
            g_benchSink = p.Eval().GetFloat();
        }
    }, kCompiles / 10);

    mup::ParserX p(mup::pckCOMMON | mup::pckNON_COMPLEX);
    define_mux(p, m);
    p.SetExpr(f.peer);
    const BenchTiming timing = peer_time(kEvaluations / 10, [&](const BenchVars& v) {
        m.load(v);
        return p.Eval().GetFloat();
    });
    report("muparserx", f.name, timing, usPerCompile);
}
}

int main(int argc, char** argv)
{
    const char* only = argc > 1 ? argv[1] : nullptr;  // floor, muparser or muparserx
    for (const BenchFormula& f : kBenchSuite) {
        if (!f.peer)
            continue;
        if (!only || !std::strcmp(only, "floor"))
            bench_floor(f);
        try {
            if (!only || !std::strcmp(only, "muparser"))
                bench_muparser(f);
        } catch (const mu::Parser::exception_type& e) {
            std::fprintf(stderr, "muparser: %s: %s\n", f.name, e.GetMsg().c_str());
        }
        try {
            if (!only || !std::strcmp(only, "muparserx"))
                bench_muparserx(f);
        } catch (const mup::ParserError& e) {
            std::fprintf(stderr, "muparserx: %s: %s\n", f.name, e.GetMsg().c_str());
        }
    }
    return 0;
}
