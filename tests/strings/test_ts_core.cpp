#include <doctest/doctest.h>

#include <string>

#include "alloc_check.h"
#include "ts_local.h"

TEST_CASE("an empty string owns nothing and reads as the shared empty text")
{
    NoLeak leak;
    long before = zor_alloc_probe::live_blocks();
    TSString* ts = TSNew();
    REQUIRE(ts);
    CHECK(zor_alloc_probe::live_blocks() == before + 1);  // the object only
    Local other, s;
    CHECK((TSEmpty(ts) == 1 && TSGetLen(ts) == 0 && TSGetStr(ts)[0] == 0));
    CHECK(TSGetStr(&other) == TSGetStr(ts));
    TSFree(ts);
    using Op = TSString* (*)(TSString*);
    const Op emptying[] = {[](TSString* t) { return TSSetStr(t, L""); },
                           [](TSString* t) { return TSSetStrN(t, L"xyz", 0); },
                           [](TSString* t) { return TSSetLen(t, 0); },
                           [](TSString* t) { return TSLTrim(TSSetStr(t, L"   ")); }};
    for (Op op : emptying) {
        TSSetStr(&s, L"abc");
        CHECK((op(&s) == &s && s.s.data == nullptr && s.s.size == 0));
    }
    TSString* clone = TSClone(L"");
    REQUIRE(clone);
    CHECK(TSEmpty(clone));
    TSFree(clone);
}

TEST_CASE("appending joins exactly, also to itself, and allocates nothing for two empties")
{
    NoLeak leak;
    Local a, b, xy(L"xy"), ab(L"ab");
    long requests = zor_alloc_probe::requests();
    CHECK((TSAdd(&a, &b) == &a && TSAddStr(&a, L"") == &a && TSEmpty(&a)));
    CHECK(zor_alloc_probe::requests() == requests);
    TSAddStrN(&xy, L"abcdef", 3);
    CHECK(xy.text() == L"xyabc");
    check_shape(&xy);
    CHECK((TSAdd(&ab, &ab) == &ab && ab.text() == L"abab"));
    CHECK((TSAdd(&ab, &b)->size == 5 && TSAdd(&b, &ab) == &b && b.text() == L"abab"));
}

TEST_CASE("counted sets and copies carry zero units; string functions stop at them")
{
    NoLeak leak;
    const wchar_t withZero[] = {L'a', 0, L'b'};
    Local s(withZero, 3), a(L"a"), copy, empty, ch;
    CHECK((TSGetLen(&s) == 3 && TSGetChar(&s, 2) == L'b' && wcslen(TSGetStr(&s)) == 1));
    CHECK(TSCmp(&s, &a) == 0);
    TSCopy(&copy, &s);
    TSCopy(&copy, &copy);
    CHECK((copy.s.size == 4 && TSGetChar(&copy, 2) == L'b'));
    TSCopy(&copy, &empty);
    CHECK(copy.s.data == nullptr);
    TSString* clone = TSCloneN(withZero, 3);
    REQUIRE(clone);
    CHECK(TSGetLen(clone) == 3);
    TSFree(clone);
    TSFromCh(&ch, 0);
    CHECK((ch.s.size == 2 && !TSEmpty(&ch) && TSGetStr(&ch)[0] == 0 && TSCmp(&ch, &empty) == 1));
    TSFromCh(&ch, L'Q');
    CHECK(ch.text() == L"Q");
}

TEST_CASE("TSSetLen reserves or cuts and keeps the terminator; TSGetChar reads inside only")
{
    Local s(L"abc"), e;
    for (int32_t at : {3, 4, -1, 0x7FFFFFFF})
        CHECK(TSGetChar(&s, at) == 0);
    CHECK((TSGetChar(&s, 0) == L'a' && TSGetChar(&e, 0) == 0));
    TSSetLen(&s, 10);
    CHECK((TSGetLen(&s) == 10 && s.s.data[10] == 0 && s.s.data[3] == 0 && s.s.data[0] == L'a'));
    TSSetLen(&s, 2);
    CHECK((s.text() == L"ab" && s.s.size == 3));
}

TEST_CASE("TSCmp orders by unsigned units and is exactly -1, 0 or 1")
{
    Local e1, e2, a(L"a"), b(L"b"), abc(L"abc"), abcd(L"abcd"), high(L"\xE000"), upper(L"A");
    CHECK(TSCmp(&e1, &e2) == 0);
    const std::pair<TSString*, TSString*> ordered[] = {
        {&e1, &a}, {&a, &b}, {&abc, &abcd}, {&upper, &high}};
    for (const auto& pair : ordered)
        CHECK((TSCmp(pair.first, pair.second) == -1 && TSCmp(pair.second, pair.first) == 1));
}

TEST_CASE("number formatting rounds on the exact binary value and cuts at 512 units")
{
    Local s;
    struct Row { double value; int32_t width, decimals; const wchar_t* text; };
    const Row rows[] = {{3.14159, 8, 2, L"    3.14"}, {1500.0, 0, -2, L"1.50e+03"},
                        {2.675, 0, 2, L"2.67"},  // 2.67499999... in binary
                        {0.125, 0, 2, L"0.12"},  // exact tie: to even
                        {0.375, 0, 2, L"0.38"},     {2.5, 0, 0, L"2"}, {-0.0, 0, 1, L"-0.0"}};
    for (const Row& row : rows)
        CHECK(TSStr(&s, row.value, row.width, row.decimals)->data == std::wstring(row.text));
    CHECK((TSGetLen(TSStr(&s, 1.0, 600, 0)) == 512 && s.text().back() == L' '));
    CHECK(TSGetLen(TSCStr(&s, 1.0, L"%0700.1f")) == 512);
    CHECK(TSCStr(&s, 42.5, L"<%.1f>")->data == std::wstring(L"<42.5>"));
}

TEST_CASE("exhaustion leaves the object valid and empty, TSCStr untouched, no leak")
{
    NoLeak leak;
    Local s(L"keep");
    {
        AllAllocationsFail fail;
        CHECK((TSCStr(&s, 1.0, L"%f") == nullptr && TSStr(&s, 1.0, 3, 1) == nullptr));
        CHECK(s.text() == L"keep");
        CHECK((TSAddStr(&s, L"more") == nullptr && TSEmpty(&s)));
        check_shape(&s);
        CHECK((TSNew() == nullptr && TSClone(L"x") == nullptr));
    }
    // Every single failing request of each operation, one after another.
    fail_each_allocation([](bool) {
        Local t(L"abc"), u(L"defg");
        if (!TSAdd(&t, &u))
            CHECK(TSEmpty(&t));
        if (!TSCopy(&u, &t))
            CHECK(TSEmpty(&u));
        if (!TSSetLen(&t, 9))
            CHECK(TSEmpty(&t));
        if (!TSFromCh(&t, L'z'))
            CHECK(TSEmpty(&t));
        TSString* c = TSCloneN(L"hello", 5);
        if (c)
            TSFree(c);
        check_shape(&t);
        check_shape(&u);
    });
    // The scratch block is taken first: the text survives; a later failure
    // of the text block itself empties the string.
    long n = fail_each_allocation([](bool) {
        Local t(L"old");
        TSString* r = TSCStr(&t, 2.0, L"%.1f");
        CHECK(((r && t.text() == L"2.0") || (!r && (t.text() == L"old" || TSEmpty(&t)))));
    });
    CHECK(n >= 2);
}

