// The random formulas of the differential test cover the arithmetic of the
// number types; these cases hold what they leave out.
#include "alloc_check.h"
#include "expr_fixture.h"

TEST_CASE("integers wrap in their own width; bit fields are two words, converted by their bits")
{
    Sheet e;
    e.a = INT32_MIN, e.ch = 65535;
    e.check({
        {L"a / -1", L"L -2147483648"}, {L"a %= -1", L"L 0"},  // the quotient that does not fit wraps
        {L"++ch", L"C 0"}, {L"ch--", L"C 0"}, {L"ch", L"C 65535"},
        {L"bf = -1", L"B 0:ffffffff"}, {L"bf << 1", L"B 1:fffffffe"}, {L"bf <<= 63", L"B 80000000:0"},
        {L"bf >> 63", L"B 0:1"}, {L"bf <<= 64", ZOR_DISP_E_OVERFLOW}, {L"bf >> -1", ZOR_DISP_E_OVERFLOW},
        {L"bf", L"B 80000000:0"},
        {L"bf2 = ch", L"B 0:ffff"}, {L"bf = 1.0", L"B 0:3ff00000"}, {L"s = 'A'", L"S A"},
        // One word zero: false for && and !; all four words zero: false for ||.
        {L"bf = 1", L"B 0:1"}, {L"bf2 = 0", L"B 0:0"}, {L"bf && bf", L"L 0"}, {L"!bf", L"L 1"},
        {L"bf || bf2", L"L 1"}, {L"bf2 || bf2", L"L 0"},
    });
    e.bf = {1, 5}, e.bf2 = {2, 3};  // an ordering holds only when both words agree
    e.check({{L"bf && bf2", L"L 1"}, {L"bf < bf2", L"L 0"}, {L"bf >= bf2", L"L 0"}, {L"bf != bf2", L"L 1"},
             {L"bf2 |= 4", L"B 2:7"}, {L"bf <= bf2", L"L 1"}, {L"bf ^ ~bf2", L"B fffffffc:fffffffd"}});
}

TEST_CASE("an operator that has no meaning for a type fails at run time")
{
    // Columns: Char Long ULong Double BitField String Date; F marks a failure.
    static const struct { const wchar_t* form; const char* fails; } rows[] = {
        {L"X = Y", "......."},  {L"X *= Y", "....FFF"}, {L"X /= Y", "....FFF"},  {L"X %= Y", "...FFFF"},
        {L"X += Y", "....F.."}, {L"X -= Y", "....FFF"}, {L"X <<= 1", "...F.FF"}, {L"X >>= 1", "...F.FF"},
        {L"X &= Y", "...F.FF"}, {L"X ^= Y", "...F.FF"}, {L"X |= Y", "...F.FF"},  {L"X || Y", ".....FF"},
        {L"X && Y", ".....FF"}, {L"X | Y", "...F.FF"},  {L"X ^ Y", "...F.FF"},   {L"X & Y", "...F.FF"},
        {L"X == Y", "......."}, {L"X != Y", "......."}, {L"X < Y", "......."},   {L"X > Y", "......."},
        {L"X <= Y", "......."}, {L"X >= Y", "......."}, {L"X << 1", "...F.FF"},  {L"X >> 1", "...F.FF"},
        {L"X + Y", "....F.."},  {L"X - Y", "....FF."},  {L"X * Y", "....FFF"},   {L"X / Y", "....FFF"},
        {L"X % Y", "....FFF"},  {L"++X", "....FFF"},    {L"--X", "....FFF"},     {L"+X", "....FFF"},
        {L"-X", "....FFF"},     {L"!X", ".....FF"},     {L"~X", "...F.FF"},      {L"X++", "....FFF"},
        {L"X--", "....FFF"},
    };
    static const wchar_t* const pairs[7][2] = {{L"ch", L"ch2"}, {L"a", L"b"},     {L"u", L"u2"}, {L"d", L"d2"},
                                               {L"bf", L"bf2"}, {L"s", L"s2"}, {L"dt", L"dt2"}};
    Sheet e;
    e.ch2 = 2, e.b = 2, e.u2 = 2, e.d2 = 2.0;  // divisors
    TSSetStr(&e.s, L"x"), TSSetStr(&e.s2, L"y");
    TDSetTime(&e.dt, 2020, 1, 2, 0, 0, 0, 0), TDSetTime(&e.dt2, 1, 1, 1, 0, 0, 0, 0);
    for (int col = 0; col < 7; ++col)
        for (const auto& row : rows) {
            std::wstring text;
            for (const wchar_t* p = row.form; *p; ++p)
                text += *p == L'X' ? pairs[col][0] : *p == L'Y' ? pairs[col][1] : std::wstring(1, *p);
            CHECK(e.eval(text.c_str()) == (row.fails[col] == 'F' ? ZOR_E_UNEXPECTED : 0));
        }
    for (const wchar_t* text : {L"*a", L"&a", L"a.a", L"a->a", L"1 + *a"})
        CHECK(e.eval(text) == ZOR_E_NOTIMPL);
}

namespace {
int g_calls;
int32_t count_call(ExprContext*, intptr_t) { return ++g_calls; }
}

TEST_CASE("indexes, strings, dates and the order operands are read in")
{
    Sheet e;
    REQUIRE(ExprDefineFn(e, reinterpret_cast<ExprUserFn>(count_call), L"counted", EXT_Long, 0) == 0);
    e.bf = {1, 0x80000000u}, e.a = 1;
    TDSetTime(&e.dt, 2024, 1, 31, 0, 0, 0, 0);
    TDSetInterval(&e.dt2, 0, 1, 0, 0, 0, 0, 0);
    e.check({
        {L"s[0]", ZOR_DISP_E_BADINDEX},  // empty: not even the terminator
        {L"s = \"ab\"", L"S ab"}, {L"s[1]", L"C 98"}, {L"dt[0]", ZOR_E_UNEXPECTED},
        {L"bf[31] + bf[32] * 2 + bf[0] * 4 + bf[63] * 8", L"L 3"},
        {L"s[2]", ZOR_DISP_E_BADINDEX}, {L"s[-1]", ZOR_DISP_E_BADINDEX}, {L"bf[64]", ZOR_DISP_E_BADINDEX},
        {L"bf[-1]", ZOR_DISP_E_BADINDEX}, {L"(a + 1)[1]", ZOR_DISP_E_BADINDEX}, {L"5[-1]", ZOR_DISP_E_BADINDEX},
        {L"(a + 1)[0]", L"L 2"},  // without a variable behind it only the value's own slot is there
        // A single bit has no address: the assignment fails and the field stays.
        {L"bf[3] = 1", ZOR_E_UNEXPECTED}, {L"bf[31] |= 1", ZOR_E_UNEXPECTED}, {L"bf[32]++", ZOR_E_UNEXPECTED},
        {L"--bf[0]", ZOR_E_UNEXPECTED}, {L"bf", L"B 1:80000000"},
        // Assigning through an index changes that element only.
        {L"la[2] = 30", L"L 30"}, {L"(la[1] = 9) + 1", L"L 10"}, {L"la[3]++", L"L 0"},
        {L"la[0] += la[2]", L"L 30"}, {L"la[0] * 1000 + la[1] * 100 + la[2] + la[3]", L"L 30931"},
        {L"da[2] = 1.5 * 2", L"D 3"}, {L"da[1] + da[3 - 1]", L"D 3"},
        {L"ca[1] = 'z'", L"C 122"}, {L"ca[0] + ca[2]", L"C 0"},
        {L"s2 = \"b\"", L"S b"}, {L"s + 'c'", L"S abc"}, {L"'c' + s", L"S cab"}, {L"s += s", L"S abab"},
        {L"s < s2", L"L 1"}, {L"s2 <= s", L"L 0"}, {L"s != s", L"L 0"}, {L"s2 >= s2", L"L 1"},
        {L"dt += dt2", L"T 2024-2-29"}, {L"dt - dt2", L"T 2024-1-29"}, {L"dt", L"T 2024-2-29"},
        {L"dt > dt2", L"L 1"}, {L"dt == dt", L"L 1"},
        {L"a + (a = 5)", L"L 10"}, {L"(a = 3) * a", L"L 9"}, {L"a = b = 7", L"L 7"}, {L"a * 10 + b", L"L 77"},
        {L"1 || counted()", L"L 1"}, {L"0 && counted()", L"L 0"},  // no short cut
    });
    CHECK(g_calls == 2);
    for (const wchar_t* formula : {L"s2 = s + s2", L"s = 'x'"}) {
        REQUIRE(e.compile(formula) == 0);
        AllAllocationsFail fail;
        CHECK(ExprEvaluate(e, e.first, 0) == ZOR_E_OUTOFMEMORY);
    }
    e.check({{L"s2", L"S b"}});
}

TEST_CASE("numeric formulas allocate nothing once the stack has grown")
{
    Sheet e;
    REQUIRE(e.compile(L"d = (a * 3 + u) / 2.5 - la[a & 3] % 7 + (ch << 2) + !d") == 0);
    REQUIRE(ExprEvaluate(e, e.first, 0) == 0);
    ExprPopResult(e);
    const long requests = zor_alloc_probe::requests();
    for (int i = 0; i < 1000; ++i) {
        e.a = i, e.u = uint32_t(i * 7), e.ch = uint16_t(i);
        REQUIRE(ExprEvaluate(e, e.first, 0) == 0);
        ExprPopResult(e);
    }
    CHECK(zor_alloc_probe::requests() == requests);
}
