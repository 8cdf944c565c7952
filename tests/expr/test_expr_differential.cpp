// Random formulas, run by the engine and by a small evaluator written here
// from the rules of the value types: the two must agree on the result code,
// the result type and the value.
#include <math.h>
#include <string.h>

#include "expr_fixture.h"
#include "fuzz.h"

namespace {

struct Val { uint32_t type, bits; double d; };  // bits: Char, Long, ULong

struct Random {
    uint64_t state;
    uint32_t next() { return state ^= state << 13, state ^= state >> 7, state ^= state << 17, uint32_t(state >> 16); }
    uint32_t below(uint32_t n) { return next() % n; }
};

const wchar_t* const kBinary[] = {L"+", L"-", L"*", L"/", L"%", L"<<", L">>", L"&", L"|",
                                  L"^", L"==", L"!=", L"<", L">", L"<=", L">=", L"&&", L"||"};
const wchar_t* const kUnary[] = {L"-", L"~", L"!"};
const wchar_t* const kAssign[] = {L"", L"+", L"-", L"*", L"/", L"%", L"<<", L">>", L"&", L"|", L"^"};

// Variables: two of each number type, named by type letter and number.
const uint32_t kVarTypes[] = {EXT_Char, EXT_Char, EXT_Long, EXT_Long, EXT_ULong, EXT_ULong, EXT_Double, EXT_Double};
const wchar_t* const kVarNames[] = {L"c0", L"c1", L"l0", L"l1", L"u0", L"u1", L"d0", L"d1"};

Val random_value(Random& rnd, uint32_t type)
{
    static const uint32_t ints[] = {0, 1, 2, 3, 7, 31, 32, 33, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000u,
                                    0xFFFFFFFFu, 0xFFFFFFF9u};
    static const double doubles[] = {0.0, -0.0, 1.0, -1.5, 2.5, 7.0, 1e10, -3e9, HUGE_VAL, NAN};
    if (type == EXT_Double)
        return {type, 0, doubles[rnd.below(10)]};
    uint32_t bits = rnd.below(4) ? ints[rnd.below(15)] : rnd.next();
    return {type, type == EXT_Char ? bits & 0xFFFF : bits, 0};
}

// Any number type into any other, as balancing and forced conversion do.
Val convert(Val v, uint32_t to)
{
    if (v.type == to)
        return v;
    if (to == EXT_Double)
        return {to, 0, v.type == EXT_Long ? double(int32_t(v.bits)) : double(v.bits)};
    uint32_t bits = v.bits;
    if (v.type == EXT_Double && to == EXT_ULong)
        bits = v.d >= -9223372036854775808.0 && v.d < 9223372036854775808.0 ? uint32_t(int64_t(v.d)) : 0;
    else if (v.type == EXT_Double)
        bits = v.d > -2147483649.0 && v.d < 2147483648.0 ? uint32_t(int32_t(v.d)) : 0x80000000u;
    return {to, to == EXT_Char ? bits & 0xFFFF : bits, 0};
}

struct Result { ZORStatus code; Val v; };

// Comparisons and logical operators, by the values' own ordering; false for
// any other operator.
template <class T>
bool compared(const std::wstring& op, T a, T b, Result* out)
{
    static const wchar_t* const ops[] = {L"&&", L"||", L"==", L"!=", L"<", L">", L"<=", L">="};
    const bool truths[] = {a != T(0) && b != T(0), a != T(0) || b != T(0), a == b, a != b, a < b, a > b, a <= b, a >= b};
    for (int i = 0; i < 8; ++i)
        if (op == ops[i])
            return *out = Result{0, {EXT_Long, uint32_t(truths[i]), 0}}, true;
    return false;
}

Result integer_op(const std::wstring& op, uint32_t t, uint32_t a, uint32_t b)
{
    const bool is_signed = t == EXT_Long;
    const int32_t sa = int32_t(a), sb = int32_t(b);
    auto num = [t](uint32_t v) { return Result{0, {t, t == EXT_Char ? v & 0xFFFF : v, 0}}; };
    Result r;
    if (is_signed ? compared(op, sa, sb, &r) : compared(op, a, b, &r))
        return r;
    if (op == L"+") return num(a + b);
    if (op == L"-") return num(a - b);
    if (op == L"*") return num(a * b);
    if ((op == L"/" || op == L"%") && b == 0) return {ZOR_DISP_E_DIVBYZERO, {}};
    if (op == L"/") return num(!is_signed ? a / b : sb == -1 ? 0u - a : uint32_t(sa / sb));
    if (op == L"%") return num(!is_signed ? a % b : sb == -1 ? 0u : uint32_t(sa % sb));
    if (op == L"<<") return num(a << (b & 31));
    if (op == L">>") return num(is_signed ? uint32_t(sa >> (b & 31)) : a >> (b & 31));
    if (op == L"&") return num(a & b);
    if (op == L"|") return num(a | b);
    return num(a ^ b);
}

Result double_op(const std::wstring& op, double a, double b)
{
    auto num = [](double v) { return Result{0, {EXT_Double, 0, v}}; };
    Result r;
    if (compared(op, a, b, &r))
        return r;
    if (op == L"+") return num(a + b);
    if (op == L"-") return num(a - b);
    if (op == L"*") return num(a * b);
    if (op == L"/" || op == L"%") return b == 0.0 ? Result{ZOR_DISP_E_DIVBYZERO, {}} : num(op == L"/" ? a / b : fmod(a, b));
    return {ZOR_E_UNEXPECTED, {}};  // bitwise and shifts
}

Result unary(const std::wstring& op, Val v)
{
    if (op == L"!")
        return {0, {EXT_Long, v.type == EXT_Double ? v.d == 0.0 : v.bits == 0, 0}};
    if (v.type == EXT_Double)
        return op == L"-" ? Result{0, {v.type, 0, -v.d}} : Result{ZOR_E_UNEXPECTED, {}};
    uint32_t bits = op == L"-" ? 0u - v.bits : ~v.bits;
    return {0, {v.type, v.type == EXT_Char ? bits & 0xFFFF : bits, 0}};
}

Result binary(const std::wstring& op, Val a, Val b)
{
    if (op == L"<<" || op == L">>") {  // the count becomes a Long, the left side stays
        b = convert(b, EXT_Long);
        return a.type == EXT_Double ? double_op(op, a.d, 0) : integer_op(op, a.type, a.bits, b.bits);
    }
    uint32_t type = a.type > b.type ? a.type : b.type;
    a = convert(a, type), b = convert(b, type);
    return type == EXT_Double ? double_op(op, a.d, b.d) : integer_op(op, type, a.bits, b.bits);
}

// A random formula's text, and in `out` what the rules say it gives: the
// first failure in the order the operands run, or the value.
std::wstring formula(Random& rnd, const Val* vars, bool mixed, int depth, Result* out)
{
    uint32_t pick = rnd.below(10);
    if (depth == 0 || pick < 3) {
        if (rnd.below(2)) {
            int v = int(rnd.below(mixed ? 8 : 6));
            *out = {0, vars[v]};
            return kVarNames[v];
        }
        if (mixed && rnd.below(3) == 0) {
            *out = {0, {EXT_Double, 0, double(rnd.below(20)) / 4}};
            return std::to_wstring(out->v.d);  // quarters: exact in six decimals
        }
        // Up to 0x7FFF a literal is a Long, up to 0xFFFF a ULong.
        uint32_t v = rnd.below(3) ? rnd.below(40) : 0x7FF0 + rnd.below(32);
        *out = {0, {v > 0x7FFF ? uint32_t(EXT_ULong) : uint32_t(EXT_Long), v, 0}};
        return std::to_wstring(v);
    }
    Result a, b;
    if (pick < 5) {
        const std::wstring op = kUnary[rnd.below(3)], text = op + L"(" + formula(rnd, vars, mixed, depth - 1, &a) + L")";
        return *out = a.code ? a : unary(op, a.v), text;
    }
    std::wstring op = kBinary[rnd.below(18)];
    std::wstring left = formula(rnd, vars, mixed, depth - 1, &a);
    std::wstring right = formula(rnd, vars, mixed, depth - 1, &b);
    *out = a.code ? a : b.code ? b : binary(op, a.v, b.v);
    return L"(" + left + L" " + op + L" " + right + L")";
}

bool same(const Val& want, uint32_t type, const void* value)
{
    if (want.type != type)
        return false;
    if (type == EXT_Double) {
        const double d = *static_cast<const double*>(value);
        return (isnan(d) && isnan(want.d)) || memcmp(&d, &want.d, 8) == 0;
    }
    return (type == EXT_Char ? *static_cast<const uint16_t*>(value) : *static_cast<const uint32_t*>(value)) == want.bits;
}

void run_random_formulas(uint64_t seed, int count, bool mixed)
{
    Random rnd{seed};
    alignas(8) unsigned char storage[8][8];
    Val vars[8];
    Expr e;
    for (int i = 0; i < 8; ++i)
        REQUIRE(ExprDefineVar(e, storage[i], kVarNames[i], kVarTypes[i]) == 0);
    for (int i = 0; i < count; ++i) {
        for (int v = 0; v < 8; ++v) {
            vars[v] = random_value(rnd, kVarTypes[v]);
            const bool isDouble = kVarTypes[v] == EXT_Double;
            memcpy(storage[v], isDouble ? (void*)&vars[v].d : &vars[v].bits, isDouble ? 8 : kVarTypes[v] == EXT_Char ? 2 : 4);
        }
        Result expected;
        std::wstring text = formula(rnd, vars, mixed, 1 + int(rnd.below(4)), &expected);
        int target = rnd.below(3) ? -1 : int(rnd.below(mixed ? 8 : 6));
        if (target >= 0) {
            // The right side is forced to the target's type, a shift count to Long.
            std::wstring op = kAssign[rnd.below(11)];
            text = std::wstring(kVarNames[target]) + L" " + op + L"= " + text;
            Val x = vars[target];
            if (expected.code == 0 && op.empty())
                expected.v = convert(expected.v, x.type);
            else if (expected.code == 0 && op == L"%" && x.type == EXT_Double)
                expected = {ZOR_E_UNEXPECTED, {}};
            else if (expected.code == 0)
                expected = binary(op, x, op == L"<<" || op == L">>" ? expected.v : convert(expected.v, x.type));
        }
        CAPTURE(text);
        REQUIRE(e.compile(text.c_str()) == 0);
        const ZORStatus status = ExprEvaluate(e, e.first, 0);
        REQUIRE(status == expected.code);
        if (status == 0)
            REQUIRE(same(expected.v, e.resultType, ExprPopResult(e)));
        e->stackDepth = 0;
        // A failed run leaves the target as it was.
        if (target >= 0)
            REQUIRE(same(status == 0 ? expected.v : vars[target], kVarTypes[target], storage[target]));
    }
}

}

TEST_CASE("random formulas, integer only and mixing characters, integers and doubles, agree with the reference")
{
    run_random_formulas(0x5EED1234u, 4000, false);
    run_random_formulas(0xC0FFEE77u, 4000, true);
}

TEST_CASE("fuzz: random formulas against the reference, integer only or mixed")
{
    fuzz_loop(600, [](FuzzRng& rng) { run_random_formulas(rng.next(), 1, rng.chance(50)); });
}
