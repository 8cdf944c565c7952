#include <doctest/doctest.h>

#include <string.h>

#include <limits>
#include <string>

#include "alloc_check.h"
#include "expr_fixture.h"

namespace {

// One variable of every type, twice, plus arrays, all defined in one object.
struct Sheet : Expr {
    uint16_t c = 0, c2 = 0, ca[3] = {};
    int32_t l = 0, l2 = 0, la[4] = {};
    uint32_t u = 0, u2 = 0;
    double d = 0, d2 = 0, da[3] = {};
    ExprBitField b = {}, b2 = {};
    TSString s, s2;
    TDDate t, t2;

    Sheet()
    {
        TSClear(&s), TSClear(&s2), TDInit(&t), TDInit(&t2);
        define(&c, L"c", EXT_Char), define(&c2, L"c2", EXT_Char), define(ca, L"ca", EXT_Char);
        define(&l, L"l", EXT_Long), define(&l2, L"l2", EXT_Long), define(la, L"la", EXT_Long);
        define(&u, L"u", EXT_ULong), define(&u2, L"u2", EXT_ULong);
        define(&d, L"d", EXT_Double), define(&d2, L"d2", EXT_Double), define(da, L"da", EXT_Double);
        define(&b, L"b", EXT_BitField), define(&b2, L"b2", EXT_BitField);
        define(&s, L"s", EXT_String), define(&s2, L"s2", EXT_String);
        define(&t, L"t", EXT_Date), define(&t2, L"t2", EXT_Date);
    }
    ~Sheet() { TSInit(&s), TSInit(&s2); }
    void define(void* value, const wchar_t* name, uint32_t type)
    {
        REQUIRE(ExprDefineVar(&ctx, value, name, type) == 0);
    }

    // Compiles and runs `text`, popping the result on success.
    ZORStatus eval(const wchar_t* text, void** result = nullptr)
    {
        CAPTURE(std::wstring(text));
        REQUIRE(compile(text) == 0);
        ZORStatus status = ExprEvaluate(&ctx, first, 0);
        void* value = status == 0 ? ExprPopResult(&ctx) : nullptr;
        if (result)
            *result = value;
        return status;
    }
    template <class T>
    T get(const wchar_t* text, uint32_t type)
    {
        void* value = nullptr;
        REQUIRE(eval(text, &value) == 0);
        CHECK(resultType == type);
        return *static_cast<T*>(value);
    }
    int32_t num(const wchar_t* text) { return get<int32_t>(text, EXT_Long); }
    std::wstring str(const wchar_t* text)
    {
        TSString ts = get<TSString>(text, EXT_String);
        return std::wstring(TSGetStr(&ts), size_t(TSGetLen(&ts)));
    }
};

const int32_t kMin = std::numeric_limits<int32_t>::min();

}

// The random formulas of the differential test cover the arithmetic of the
// number types; these cases hold what they leave out.
TEST_CASE("steps wrap in their own width; bit fields shift as one 64-bit word")
{
    Sheet e;
    e.l = kMin;  // the one quotient that does not fit wraps; the process goes on
    CHECK((e.num(L"l / -1") == kMin && e.num(L"l % -1") == 0 && e.num(L"'A' + 1") == 66));
    e.c = 65535;
    CHECK((e.get<uint16_t>(L"++c", EXT_Char) == 0 && e.get<uint16_t>(L"c--", EXT_Char) == 0));
    CHECK(e.c == 65535);
    e.b = {0, 0x80000001u};
    ExprBitField r = e.get<ExprBitField>(L"b << 1", EXT_BitField);
    CHECK((r.hi == 1 && r.lo == 2));
    e.b = {0x80000000u, 0};
    r = e.get<ExprBitField>(L"b >> 63", EXT_BitField);
    CHECK((r.hi == 0 && r.lo == 1));
    CHECK((e.eval(L"b <<= 64") == ZOR_DISP_E_OVERFLOW && e.eval(L"b >> -1") == ZOR_DISP_E_OVERFLOW));
    CHECK((e.b.hi == 0x80000000u && e.b.lo == 0));
}

TEST_CASE("division by zero leaves the target alone; a character becomes a string")
{
    Sheet e;
    for (const wchar_t* text : {L"1.0 / 0.0", L"1.0 / -0.0", L"1 / 0", L"1 % 0", L"1.5 % -0.0",
                                L"l /= 0", L"l %= 0", L"d /= -0.0", L"c / c2", L"u % u2"}) {
        e.l = 5, e.d = 2.0;
        CHECK(e.eval(text) == ZOR_DISP_E_DIVBYZERO);
        CHECK((e.l == 5 && e.d == 2.0));
    }
    CHECK((e.eval(L"s = 'A'") == 0 && e.str(L"s") == L"A"));
}

TEST_CASE("bit fields: two words for logic and ordering, bytes for doubles")
{
    Sheet e;
    e.b = {0, 1}, e.b2 = {0, 0};
    // One word zero: false for &&; all four words zero: false for ||.
    CHECK((e.num(L"b && b") == 0 && e.num(L"b || b2") == 1 && e.num(L"!b") == 1));
    CHECK(e.num(L"b2 || b2") == 0);
    e.b = {1, 5}, e.b2 = {2, 3};  // both words must agree
    CHECK(e.num(L"b && b2") == 1);
    CHECK((e.num(L"b < b2") == 0 && e.num(L"b >= b2") == 0 && e.num(L"b != b2") == 1));
    e.b2 = {2, 6};
    CHECK(e.num(L"b <= b2") == 1);
    ExprBitField r = e.get<ExprBitField>(L"b ^ ~b2", EXT_BitField);
    CHECK((r.hi == (1u ^ ~2u) && r.lo == (5u ^ ~6u)));
    REQUIRE(e.eval(L"b = -1") == 0);
    CHECK((e.b.hi == 0 && e.b.lo == 0xFFFFFFFFu));
    REQUIRE(e.eval(L"b = 1.0") == 0);
    uint32_t words[2];
    double one = 1.0;
    memcpy(words, &one, 8);
    CHECK((e.b.hi == words[0] && e.b.lo == words[1]));
}

TEST_CASE("an operator that has no meaning for a type fails at run time")
{
    // Columns: Char Long ULong Double BitField String Date. F marks a failure.
    static const struct {
        const wchar_t* form;
        const char* fails;
    } rows[] = {
        {L"a = b", "......."},    {L"a *= b", "....FFF"},  {L"a /= b", "....FFF"},
        {L"a %= b", "...FFFF"},   {L"a += b", "....F.."},  {L"a -= b", "....FFF"},
        {L"a <<= 1", "...F.FF"},  {L"a >>= 1", "...F.FF"}, {L"a &= b", "...F.FF"},
        {L"a ^= b", "...F.FF"},   {L"a |= b", "...F.FF"},  {L"a || b", ".....FF"},
        {L"a && b", ".....FF"},   {L"a | b", "...F.FF"},   {L"a ^ b", "...F.FF"},
        {L"a & b", "...F.FF"},    {L"a == b", "......."},  {L"a != b", "......."},
        {L"a < b", "......."},    {L"a > b", "......."},   {L"a <= b", "......."},
        {L"a >= b", "......."},   {L"a << 1", "...F.FF"},  {L"a >> 1", "...F.FF"},
        {L"a + b", "....F.."},    {L"a - b", "....FF."},   {L"a * b", "....FFF"},
        {L"a / b", "....FFF"},    {L"a % b", "....FFF"},   {L"++a", "....FFF"},
        {L"--a", "....FFF"},      {L"+a", "....FFF"},      {L"-a", "....FFF"},
        {L"!a", ".....FF"},       {L"~a", "...F.FF"},      {L"a++", "....FFF"},
        {L"a--", "....FFF"},
    };
    static const uint32_t types[] = {EXT_Char, EXT_Long, EXT_ULong, EXT_Double,
                                     EXT_BitField, EXT_String, EXT_Date};
    for (int col = 0; col < 7; ++col) {
        Expr e;
        alignas(8) unsigned char a[16] = {3, 0, 0, 0, 0, 0, 0, 0x40, 3};
        alignas(8) unsigned char b[16] = {2, 0, 0, 0, 0, 0, 0, 0x40, 2};
        TSString sa, sb;
        TDDate ta, tb;
        void *va = a, *vb = b;
        if (types[col] == EXT_String)
            va = TSSetStr(TSClear(&sa), L"x"), vb = TSSetStr(TSClear(&sb), L"y");
        if (types[col] == EXT_Date)
            va = TDSetTime(&ta, 2020, 1, 2, 0, 0, 0, 0), vb = TDSetTime(&tb, 1, 1, 1, 0, 0, 0, 0);
        REQUIRE(ExprDefineVar(e, va, L"a", types[col]) == 0);
        REQUIRE(ExprDefineVar(e, vb, L"b", types[col]) == 0);
        for (const auto& row : rows) {
            CAPTURE(col);
            CAPTURE(std::wstring(row.form));
            REQUIRE(e.compile(row.form) == 0);
            ZORStatus status = ExprEvaluate(e, e.first, 0);
            CHECK(status == (row.fails[col] == 'F' ? ZOR_E_UNEXPECTED : 0));
            if (status == 0)
                ExprPopResult(e);
        }
        if (types[col] == EXT_String)
            TSInit(&sa), TSInit(&sb);
    }
}

TEST_CASE("dereference, address-of and member access compile and refuse to run")
{
    Sheet e;
    for (const wchar_t* text : {L"*l", L"&l", L"l.l", L"l->l", L"1 + *l"})
        CHECK(e.eval(text) == ZOR_E_NOTIMPL);
}

TEST_CASE("indexes: strings and bit fields are bounded, number variables are arrays")
{
    Sheet e;
    CHECK(e.eval(L"s[0]") == ZOR_DISP_E_BADINDEX);  // empty: not even the terminator
    TSSetStr(&e.s, L"abc");
    CHECK((e.get<uint16_t>(L"s[2]", EXT_Char) == L'c' && e.eval(L"t[0]") == ZOR_E_UNEXPECTED));
    e.b = {1, 0x80000000u};
    CHECK(e.num(L"b[31] + b[32] * 2 + b[0] * 4") == 3);
    for (const wchar_t* outside : {L"s[3]", L"s[-1]", L"b[64]", L"b[-1]", L"(l + 1)[1]", L"5[-1]"})
        CHECK(e.eval(outside) == ZOR_DISP_E_BADINDEX);
    // A single bit has no address: the assignment fails and the field stays.
    for (const wchar_t* text : {L"b[3] = 1", L"b[31] |= 1", L"b[32]++", L"--b[0]"})
        CHECK(e.eval(text) == ZOR_E_UNEXPECTED);
    CHECK((e.b.hi == 1 && e.b.lo == 0x80000000u));

    int32_t la[4] = {10, 20, 30, 40};
    memcpy(e.la, la, sizeof la);
    CHECK((e.num(L"la[2]") == 30 && e.num(L"(la[1] = 9) + 1") == 10));
    CHECK((e.num(L"la[3]++") == 40 && e.num(L"la[0] += la[2]") == 40));
    CHECK((e.la[0] == 40 && e.la[1] == 9 && e.la[2] == 30 && e.la[3] == 41));
    e.da[1] = 1.5;
    CHECK(e.get<double>(L"da[2] = da[1] * 2", EXT_Double) == 3.0);
    CHECK((e.da[0] == 0.0 && e.da[2] == 3.0));
    CHECK((e.eval(L"ca[1] = 'z'") == 0 && e.ca[0] == 0 && e.ca[1] == L'z' && e.ca[2] == 0));

    // Without a variable behind it only the value's own slot is there.
    e.l = 41;
    CHECK((e.num(L"(l + 1)[0]") == 42 && e.num(L"(l + 1)[0] == 42") == 1));
}

namespace {
int g_calls;
int32_t count_call(ExprContext*, intptr_t) { return ++g_calls; }
}

TEST_CASE("operands are read when their operator runs, and both logical sides always run")
{
    Sheet e;
    REQUIRE(ExprDefineFn(e, reinterpret_cast<ExprUserFn>(count_call), L"g", EXT_Long, 0) == 0);
    e.l = 1;
    CHECK(e.num(L"l + (l = 5)") == 10);
    e.l = 2;
    CHECK(e.num(L"(l = 3) * l") == 9);
    CHECK((e.num(L"1 || g()") == 1 && e.num(L"0 && g()") == 0 && g_calls == 2));
    CHECK((e.num(L"l = l2 = 7") == 7 && e.l == 7 && e.l2 == 7));
}

TEST_CASE("strings and dates: joined, compared, and out of memory reported")
{
    Sheet e;
    TSSetStr(&e.s, L"ab");
    TSSetStr(&e.s2, L"b");
    CHECK((e.str(L"s + 'c'") == L"abc" && e.str(L"'c' + s") == L"cab"));
    CHECK(e.str(L"s += s") == L"abab");
    CHECK((e.num(L"s < s2") == 1 && e.num(L"s2 <= s") == 0));
    CHECK((e.num(L"s != s") == 0 && e.num(L"s2 >= s2") == 1));

    TDSetTime(&e.t, 2024, 1, 31, 0, 0, 0, 0);
    TDSetInterval(&e.t2, 0, 1, 0, 0, 0, 0, 0);
    REQUIRE(e.eval(L"t += t2") == 0);
    CHECK((e.t.month == 2 && e.t.day == 29));
    void* r = nullptr;
    REQUIRE(e.eval(L"t - t2", &r) == 0);
    CHECK((static_cast<TDDate*>(r)->month == 1 && e.t.month == 2));
    CHECK((e.num(L"t > t2") == 1 && e.num(L"t == t") == 1));

    REQUIRE(e.compile(L"s2 = s + s2") == 0);
    {
        AllAllocationsFail fail;
        CHECK(ExprEvaluate(e, e.first, 0) == ZOR_E_OUTOFMEMORY);
    }
    CHECK(e.str(L"s2") == L"b");
    REQUIRE(e.compile(L"s = 'x'") == 0);
    AllAllocationsFail fail;
    CHECK(ExprEvaluate(e, e.first, 0) == ZOR_E_OUTOFMEMORY);
}

TEST_CASE("numeric formulas allocate nothing once the stack has grown")
{
    Sheet e;
    REQUIRE(e.compile(L"d = (l * 3 + u) / 2.5 - la[l & 3] % 7 + (c << 2) + !d") == 0);
    REQUIRE(ExprEvaluate(e, e.first, 0) == 0);
    ExprPopResult(e);
    long requests = zor_alloc_probe::requests();
    for (int i = 0; i < 1000; ++i) {
        e.l = i, e.u = uint32_t(i * 7), e.c = uint16_t(i);
        REQUIRE(ExprEvaluate(e, e.first, 0) == 0);
        ExprPopResult(e);
    }
    CHECK(zor_alloc_probe::requests() == requests);
}
