#include <doctest/doctest.h>

#include <algorithm>

#include "alloc_check.h"
#include "ts_local.h"

TEST_CASE("an empty string owns nothing and reads as the one shared empty text")
{
    NoLeak leak;
    long before = zor_alloc_probe::live_blocks();
    TSString* ts = TSNew();
    REQUIRE(ts);
    CHECK(zor_alloc_probe::live_blocks() == before + 1);  // the object only
    Local s;
    CHECK((TSEmpty(ts) && TSGetStr(ts)[0] == 0 && TSGetStr(&s) == TSGetStr(ts)));
    using Op = TSString* (*)(TSString*, TSString*);
    for (Op op : {+[](TSString* t, TSString*) { return TSSetStr(t, L""); },
                  +[](TSString* t, TSString*) { return TSSetLen(t, 0); },
                  +[](TSString* t, TSString* empty) { return TSCopy(t, empty); }}) {
        TSSetStr(&s, L"abc");
        CHECK((op(&s, ts) == &s && s.s.data == nullptr && s.s.size == 0));
    }
    TSFree(ts);
    TSString* clone = TSClone(L"");
    CHECK((clone && TSEmpty(clone)));
    TSFree(clone);
}

TEST_CASE("sets, appends and copies fit the block exactly and carry zero units")
{
    NoLeak leak;
    Local a, b, s(L"xy");
    long requests = zor_alloc_probe::requests();
    CHECK((TSAdd(&a, &b) == &a && TSAddStr(&a, L"") == &a && TSEmpty(&a)));
    CHECK((zor_alloc_probe::requests() == requests && TSCmp(&a, &b) == 0));
    TSAddStrN(&s, L"abcdef", 3);
    CHECK(s.text() == L"xyabc");
    CHECK((TSAdd(&s, &s) == &s && s.text() == L"xyabcxyabc"));
    // Blocks this large are mapped on their own; the one left behind is unmapped.
    std::wstring text(400000, L'q');
    Local big(text.c_str());
    TSAdd(&big, &big);
    CHECK(big.text() == text + text);
    check_shape(&s);
    CHECK((TSAdd(&b, &s) == &b && TSAdd(&b, &a) == &b && b.text() == L"xyabcxyabc"));
    check_shape(&b);

    const wchar_t withZero[] = {L'a', 0, L'b'};
    Local z(withZero, 3), one(L"a"), copy;
    CHECK((TSGetLen(&z) == 3 && TSGetChar(&z, 2) == L'b' && TSCmp(&z, &one) == 0));
    TSCopy(&copy, &z);
    TSCopy(&copy, &copy);
    CHECK((copy.text() == z.text() && TSAdd(&copy, &z)->size == 7 && TSGetChar(&copy, 5) == L'b'));
    for (int32_t at : {-1, 7, 0x7FFFFFFF})
        CHECK(TSGetChar(&copy, at) == 0);
    TSSetLen(&copy, 10);
    CHECK((copy.s.data[10] == 0 && copy.s.data[5] == L'b'));
    check_shape(&copy);
    TSFromCh(&copy, 0);
    CHECK((copy.s.size == 2 && TSCmp(&copy, &a) == 1));

    // By unsigned units, and exactly -1 or 1.
    Local abc(L"abc"), abcd(L"abcd"), high(L"\xE000"), upper(L"A");
    const std::pair<TSString*, TSString*> ordered[] = {{&a, &one}, {&abc, &abcd}, {&upper, &high}};
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

// The whole family's allocation seam, the editing functions included.
TEST_CASE("exhaustion leaves the object valid and empty, scratch failures untouched, no leak")
{
    NoLeak leak;
    Local s(L"  keep  ");
    {
        AllAllocationsFail fail;
        CHECK((TSCStr(&s, 1.0, L"%f") == nullptr && TSStr(&s, 1.0, 3, 1) == nullptr));
        CHECK((TSATrim(&s) == &s && TSRep(&s, L"x", 3) == nullptr && s.text() == L"  keep  "));
        CHECK((TSAddStr(&s, L"more") == nullptr && TSEmpty(&s)));
        CHECK((TSNew() == nullptr && TSClone(L"x") == nullptr));
    }
    long requests = fail_each_allocation([](bool) {
        // The object on success; on failure null and an empty object.
        auto held = [](TSString* result, TSString* ts) {
            CHECK((result == ts || (!result && TSEmpty(ts))));
            check_shape(ts);
        };
        Local t(L" a,bc,d "), u(L"defg"), dst(L"old");
        held(TSAdd(&u, &t), &u);
        held(TSCopy(&dst, &t), &dst);
        held(TSSetLen(&u, 9), &u);
        held(TSFromCh(&u, L'z'), &u);
        held(TSMid(&dst, &t, 1, 3), &dst);
        held(TSLeft(&dst, &t, 99), &dst);
        held(TSFromInt(&u, 12), &u);
        TDDate date = {2026, 3, 0, 7, 0, 0, 0, 0};
        held(TSFromDate(&u, &date), &u);
        if (TSString* c = TSCloneN(L"hello", 5))
            TSFree(c);
        // The scratch block is taken first and its failure keeps the text.
        std::wstring before = dst.text();
        TSString* r = TSCStr(&dst, 2.0, L"%.1f");
        CHECK(((r && dst.text() == L"2.0") || (!r && (dst.text() == before || TSEmpty(&dst)))));
        // Edits always return ts; a trim whose copy failed keeps its spaces.
        CHECK(TSStrSubst(TSChrSubst(TSATrim(&t), L",", L";"), L"bc", L"BC") == &t);
        check_shape(&t);
        std::wstring text = t.text();
        text.erase(std::remove(text.begin(), text.end(), L' '), text.end());
        CHECK((text.empty() || text == L"a;BC;d"));
    });
    CHECK(requests > 15);
}
