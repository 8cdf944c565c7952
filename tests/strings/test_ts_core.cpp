#include <doctest/doctest.h>

#include <string>

#include "alloc_check.h"
#include "dll_image.h"
#include "ts_local.h"
#include "zor_ts.h"

TEST_CASE("an empty string owns nothing and reads as the shared empty text")
{
    NoLeak leak;
    long before = zor_alloc_probe::live_blocks();
    TSString* ts = TSNew();
    REQUIRE(ts);
    CHECK(zor_alloc_probe::live_blocks() == before + 1);  // the object only
    CHECK(TSEmpty(ts) == 1);
    CHECK(TSGetLen(ts) == 0);
    CHECK(TSGetStr(ts)[0] == 0);
    CHECK(TSGetStr(ts) == TSGetStr(ts));
    Local other;
    CHECK(TSGetStr(&other) == TSGetStr(ts));
    TSFree(ts);

    Local s(L"abc");
    CHECK(TSSetStr(&s, L"") == &s);
    check_shape(&s);
    CHECK(s.s.data == nullptr);
    TSSetStr(&s, L"abc");
    CHECK(TSSetStrN(&s, L"xyz", 0) == &s);
    CHECK(s.s.size == 0);
    TSSetStr(&s, L"abc");
    CHECK(TSSetLen(&s, 0) == &s);
    CHECK(s.s.size == 0);
    TSString* clone = TSClone(L"");
    REQUIRE(clone);
    CHECK(TSEmpty(clone));
    TSFree(clone);
}

TEST_CASE("appending joins exactly and allocates nothing for two empties")
{
    NoLeak leak;
    Local a, b;
    long requests = zor_alloc_probe::requests();
    CHECK(TSAdd(&a, &b) == &a);
    CHECK(TSAddStr(&a, L"") == &a);
    CHECK(zor_alloc_probe::requests() == requests);
    CHECK(TSEmpty(&a));

    Local xy(L"xy");
    TSAddStrN(&xy, L"abcdef", 3);
    CHECK(xy.text() == L"xyabc");
    CHECK(TSGetLen(&xy) == 5);
    CHECK(xy.s.data[5] == 0);

    Local ab(L"ab");
    CHECK(TSAdd(&ab, &ab) == &ab);
    CHECK(ab.text() == L"abab");
    CHECK(ab.s.size == 5);
    TSAdd(&ab, &b);
    CHECK(ab.text() == L"abab");
    check_shape(&ab);
    TSAdd(&b, &ab);
    CHECK(b.text() == L"abab");
}

TEST_CASE("copy and counted set carry zero units; string functions stop at them")
{
    NoLeak leak;
    const wchar_t withZero[] = {L'a', 0, L'b'};
    Local s;
    TSSetStrN(&s, withZero, 3);
    CHECK(TSGetLen(&s) == 3);
    CHECK(TSGetChar(&s, 2) == L'b');
    CHECK(wcslen(TSGetStr(&s)) == 1);
    Local a(L"a");
    CHECK(TSCmp(&s, &a) == 0);

    Local copy;
    TSCopy(&copy, &s);
    CHECK(copy.s.size == 4);
    CHECK(TSGetChar(&copy, 2) == L'b');
    TSCopy(&copy, &copy);
    CHECK(copy.s.size == 4);
    Local empty;
    TSCopy(&copy, &empty);
    CHECK(copy.s.data == nullptr);

    TSString* clone = TSCloneN(withZero, 3);
    REQUIRE(clone);
    CHECK(TSGetLen(clone) == 3);
    TSFree(clone);

    Local ch;
    TSFromCh(&ch, 0);
    CHECK(ch.s.size == 2);
    CHECK(TSEmpty(&ch) == 0);
    CHECK(TSGetStr(&ch)[0] == 0);
    CHECK(TSCmp(&ch, &empty) == 1);
    TSFromCh(&ch, L'Q');
    CHECK(ch.text() == L"Q");
}

TEST_CASE("TSSetLen reserves or cuts and keeps the terminator")
{
    Local s(L"abc");
    TSSetLen(&s, 10);
    CHECK(TSGetLen(&s) == 10);
    CHECK(s.s.data[10] == 0);
    CHECK(s.s.data[3] == 0);
    CHECK(s.s.data[0] == L'a');
    TSSetLen(&s, 2);
    CHECK(s.text() == L"ab");
    CHECK(s.s.size == 3);
}

TEST_CASE("TSGetChar reads inside the block only")
{
    Local s(L"abc");
    CHECK(TSGetChar(&s, 0) == L'a');
    CHECK(TSGetChar(&s, 3) == 0);
    CHECK(TSGetChar(&s, 4) == 0);
    CHECK(TSGetChar(&s, -1) == 0);
    CHECK(TSGetChar(&s, 0x7FFFFFFF) == 0);
    Local e;
    CHECK(TSGetChar(&e, 0) == 0);
}

TEST_CASE("TSCmp orders by unsigned units and is exactly -1, 0 or 1")
{
    Local e1, e2, a(L"a"), b(L"b"), abc(L"abc"), abcd(L"abcd"), high(L"\xE000"), upper(L"A");
    CHECK(TSCmp(&e1, &e2) == 0);
    CHECK(TSCmp(&e1, &a) == -1);
    CHECK(TSCmp(&a, &e1) == 1);
    CHECK(TSCmp(&a, &b) == -1);
    CHECK(TSCmp(&b, &a) == 1);
    CHECK(TSCmp(&abc, &abcd) == -1);
    CHECK(TSCmp(&abcd, &abc) == 1);
    CHECK(TSCmp(&high, &upper) == 1);
    CHECK(TSCmp(&upper, &high) == -1);
}

TEST_CASE("number formatting rounds on the exact binary value and cuts at 512 units")
{
    Local s;
    TSStr(&s, 3.14159, 8, 2);
    CHECK(s.text() == L"    3.14");
    TSStr(&s, 1500.0, 0, -2);
    CHECK(s.text() == L"1.50e+03");
    TSStr(&s, 2.675, 0, 2);  // 2.67499999... in binary
    CHECK(s.text() == L"2.67");
    TSStr(&s, 0.125, 0, 2);  // exact tie: to even
    CHECK(s.text() == L"0.12");
    TSStr(&s, 0.375, 0, 2);
    CHECK(s.text() == L"0.38");
    TSStr(&s, 2.5, 0, 0);
    CHECK(s.text() == L"2");
    TSStr(&s, -0.0, 0, 1);
    CHECK(s.text() == L"-0.0");

    TSStr(&s, 1.0, 600, 0);
    CHECK(TSGetLen(&s) == 512);
    CHECK(s.text().back() == L' ');
    TSCStr(&s, 1.0, L"%0700.1f");
    CHECK(TSGetLen(&s) == 512);
    TSCStr(&s, 42.5, L"<%.1f>");
    CHECK(s.text() == L"<42.5>");
}

TEST_CASE("exhaustion leaves the object valid and empty, TSCStr untouched, no leak")
{
    NoLeak leak;
    Local s(L"keep");
    {
        AllAllocationsFail fail;
        CHECK(TSCStr(&s, 1.0, L"%f") == nullptr);
        CHECK(s.text() == L"keep");
        CHECK(TSStr(&s, 1.0, 3, 1) == nullptr);
        CHECK(s.text() == L"keep");
        CHECK(TSAddStr(&s, L"more") == nullptr);
        check_shape(&s);
        CHECK(TSEmpty(&s));
        CHECK(TSNew() == nullptr);
        CHECK(TSClone(L"x") == nullptr);
    }
    // Every single failing request of each operation, one after another.
    fail_each_allocation([](bool) {
        Local t(L"abc");
        Local u(L"defg");
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

TEST_CASE("the DLL exports the TS core")
{
    CHECK(missing_exports({"TSNew", "TSClear", "TSInit", "TSFree", "TSClone", "TSCloneN",
                           "TSEmpty", "TSGetLen", "TSGetStr", "TSGetChar", "TSCmp", "TSCopy",
                           "TSSetStr", "TSSetStrN", "TSSetLen", "TSFromCh", "TSCStr", "TSStr",
                           "TSAdd", "TSAddStr", "TSAddStrN"}) == "");
}
