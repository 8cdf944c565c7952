// The random formulas of the differential test cover the arithmetic of the
// number types; these cases hold what they leave out.
#include <doctest/doctest.h>

#include <string.h>

#include "alloc_check.h"
#include "expr_fixture.h"

TEST_CASE("integers wrap in their own width, division included; bit fields shift as 64 bits")
{
    Sheet e;
    e.a = INT32_MIN;  // the one quotient that does not fit wraps; the process goes on
    CHECK((e.get<int32_t>(L"a / -1") == INT32_MIN && e.get<int32_t>(L"a %= -1") == 0));
    e.ch = 65535;
    CHECK((e.get<uint16_t>(L"++ch", EXT_Char) == 0 && e.get<uint16_t>(L"ch--", EXT_Char) == 0));
    CHECK(e.ch == 65535);
    e.bf = {0, 0x80000001u};
    ExprBitField r = e.get<ExprBitField>(L"bf << 1", EXT_BitField);
    CHECK((r.hi == 1 && r.lo == 2));
    e.bf = {0x80000000u, 0};
    r = e.get<ExprBitField>(L"bf >> 63", EXT_BitField);
    CHECK((r.hi == 0 && r.lo == 1));
    CHECK((e.eval(L"bf <<= 64") == ZOR_DISP_E_OVERFLOW && e.eval(L"bf >> -1") == ZOR_DISP_E_OVERFLOW));
    CHECK((e.bf.hi == 0x80000000u && e.bf.lo == 0));
}

TEST_CASE("bit fields: two words for logic and ordering; conversions into fields and strings")
{
    Sheet e;
    e.bf = {0, 1}, e.bf2 = {0, 0};
    // One word zero: false for && and !; all four words zero: false for ||.
    CHECK((e.get<int32_t>(L"bf && bf") == 0 && e.get<int32_t>(L"bf || bf2") == 1));
    CHECK((e.get<int32_t>(L"!bf") == 1 && e.get<int32_t>(L"bf2 || bf2") == 0));
    e.bf = {1, 5}, e.bf2 = {2, 3};  // an ordering holds only when both words agree
    CHECK((e.get<int32_t>(L"bf && bf2") == 1 && e.get<int32_t>(L"bf < bf2") == 0));
    CHECK((e.get<int32_t>(L"bf >= bf2") == 0 && e.get<int32_t>(L"bf != bf2") == 1));
    e.bf2 = {2, 6};
    CHECK(e.get<int32_t>(L"bf <= bf2") == 1);
    const ExprBitField r = e.get<ExprBitField>(L"bf ^ ~bf2", EXT_BitField);
    CHECK((r.hi == (1u ^ ~2u) && r.lo == (5u ^ ~6u)));
    REQUIRE(e.eval(L"bf = -1") == 0);
    CHECK((e.bf.hi == 0 && e.bf.lo == 0xFFFFFFFFu));
    REQUIRE(e.eval(L"bf2 = ch + 'A'") == 0);  // a character zero-extends
    CHECK((e.bf2.hi == 0 && e.bf2.lo == 65));
    REQUIRE(e.eval(L"bf = 1.0") == 0);  // a double keeps its bytes
    const double one = 1.0;
    CHECK(memcmp(&e.bf, &one, 8) == 0);
    REQUIRE(e.eval(L"s = 'A'") == 0);
    CHECK(std::wstring(TSGetStr(&e.s)) == L"A");
}

TEST_CASE("an operator that has no meaning for a type fails at run time")
{
    // Columns: Char Long ULong Double BitField String Date; F marks a failure.
    static const struct { const wchar_t* form; const char* fails; } rows[] = {
        {L"X = Y", "......."},   {L"X *= Y", "....FFF"},  {L"X /= Y", "....FFF"},
        {L"X %= Y", "...FFFF"},  {L"X += Y", "....F.."},  {L"X -= Y", "....FFF"},
        {L"X <<= 1", "...F.FF"}, {L"X >>= 1", "...F.FF"}, {L"X &= Y", "...F.FF"},
        {L"X ^= Y", "...F.FF"},  {L"X |= Y", "...F.FF"},  {L"X || Y", ".....FF"},
        {L"X && Y", ".....FF"},  {L"X | Y", "...F.FF"},   {L"X ^ Y", "...F.FF"},
        {L"X & Y", "...F.FF"},   {L"X == Y", "......."},  {L"X != Y", "......."},
        {L"X < Y", "......."},   {L"X > Y", "......."},   {L"X <= Y", "......."},
        {L"X >= Y", "......."},  {L"X << 1", "...F.FF"},  {L"X >> 1", "...F.FF"},
        {L"X + Y", "....F.."},   {L"X - Y", "....FF."},   {L"X * Y", "....FFF"},
        {L"X / Y", "....FFF"},   {L"X % Y", "....FFF"},   {L"++X", "....FFF"},
        {L"--X", "....FFF"},     {L"+X", "....FFF"},      {L"-X", "....FFF"},
        {L"!X", ".....FF"},      {L"~X", "...F.FF"},      {L"X++", "....FFF"},
        {L"X--", "....FFF"},
    };
    static const wchar_t* const pairs[7][2] = {{L"ch", L"ch2"}, {L"a", L"b"}, {L"u", L"u2"},
                                               {L"d", L"d2"},   {L"bf", L"bf2"}, {L"s", L"s2"},
                                               {L"dt", L"dt2"}};
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

TEST_CASE("indexes: strings and bit fields are bounded, number variables are arrays")
{
    Sheet e;
    CHECK(e.eval(L"s[0]") == ZOR_DISP_E_BADINDEX);  // empty: not even the terminator
    TSSetStr(&e.s, L"abc");
    CHECK((e.get<uint16_t>(L"s[2]", EXT_Char) == L'c' && e.eval(L"dt[0]") == ZOR_E_UNEXPECTED));
    e.bf = {1, 0x80000000u};
    CHECK(e.get<int32_t>(L"bf[31] + bf[32] * 2 + bf[0] * 4 + bf[63] * 8") == 3);
    for (const wchar_t* outside : {L"s[3]", L"s[-1]", L"bf[64]", L"bf[-1]", L"(a + 1)[1]", L"5[-1]"})
        CHECK(e.eval(outside) == ZOR_DISP_E_BADINDEX);
    // A single bit has no address: the assignment fails and the field stays.
    for (const wchar_t* text : {L"bf[3] = 1", L"bf[31] |= 1", L"bf[32]++", L"--bf[0]"})
        CHECK(e.eval(text) == ZOR_E_UNEXPECTED);
    CHECK((e.bf.hi == 1 && e.bf.lo == 0x80000000u));

    const int32_t la[4] = {10, 20, 30, 40};
    memcpy(e.la, la, sizeof la);
    CHECK((e.get<int32_t>(L"la[2]") == 30 && e.get<int32_t>(L"(la[1] = 9) + 1") == 10));
    CHECK((e.get<int32_t>(L"la[3]++") == 40 && e.get<int32_t>(L"la[0] += la[2]") == 40));
    CHECK((e.la[0] == 40 && e.la[1] == 9 && e.la[2] == 30 && e.la[3] == 41));
    e.da[1] = 1.5;
    CHECK((e.get<double>(L"da[2] = da[1] * 2", EXT_Double) == 3.0 && e.da[0] == 0.0));
    CHECK((e.eval(L"ca[1] = 'z'") == 0 && e.ca[0] == 0 && e.ca[1] == L'z' && e.ca[2] == 0));
    e.a = 41;  // without a variable behind it only the value's own slot is there
    CHECK(e.get<int32_t>(L"(a + 1)[0] == 42") == 1);
}

namespace {
int g_calls;
int32_t count_call(ExprContext*, intptr_t) { return ++g_calls; }
}

TEST_CASE("operands are read when their operator runs, and both logical sides always run")
{
    Sheet e;
    REQUIRE(ExprDefineFn(e, reinterpret_cast<ExprUserFn>(count_call), L"counted", EXT_Long, 0) == 0);
    e.a = 1;
    CHECK(e.get<int32_t>(L"a + (a = 5)") == 10);
    e.a = 2;
    CHECK(e.get<int32_t>(L"(a = 3) * a") == 9);
    CHECK((e.get<int32_t>(L"1 || counted()") == 1 && e.get<int32_t>(L"0 && counted()") == 0));
    CHECK((g_calls == 2 && e.get<int32_t>(L"a = b = 7") == 7 && e.a == 7 && e.b == 7));
}

TEST_CASE("strings and dates: joined, compared, and out of memory reported")
{
    Sheet e;
    TSSetStr(&e.s, L"ab");
    TSSetStr(&e.s2, L"b");
    auto text = [&e](const wchar_t* formula) {
        TSString ts = e.get<TSString>(formula, EXT_String);
        return std::wstring(TSGetStr(&ts));
    };
    CHECK((text(L"s + 'c'") == L"abc" && text(L"'c' + s") == L"cab" && text(L"s += s") == L"abab"));
    CHECK((e.get<int32_t>(L"s < s2") == 1 && e.get<int32_t>(L"s2 <= s") == 0));
    CHECK((e.get<int32_t>(L"s != s") == 0 && e.get<int32_t>(L"s2 >= s2") == 1));

    TDSetTime(&e.dt, 2024, 1, 31, 0, 0, 0, 0);
    TDSetInterval(&e.dt2, 0, 1, 0, 0, 0, 0, 0);
    REQUIRE(e.eval(L"dt += dt2") == 0);
    CHECK((e.dt.month == 2 && e.dt.day == 29));
    CHECK((e.get<TDDate>(L"dt - dt2", EXT_Date).month == 1 && e.dt.month == 2));
    CHECK((e.get<int32_t>(L"dt > dt2") == 1 && e.get<int32_t>(L"dt == dt") == 1));

    for (const wchar_t* formula : {L"s2 = s + s2", L"s = 'x'"}) {
        REQUIRE(e.compile(formula) == 0);
        AllAllocationsFail fail;
        CHECK(ExprEvaluate(e, e.first, 0) == ZOR_E_OUTOFMEMORY);
    }
    CHECK(text(L"s2") == L"b");
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
