#include <doctest/doctest.h>

#include "alloc_check.h"
#include "ts_local.h"

TEST_CASE("TSMid clips, TSSubStr is strict, TSLeft and TSRight stop at the ends")
{
    NoLeak leak;
    Local src(L"abcdef"), dst, empty;
    struct Row { int32_t start, count; const wchar_t *mid, *sub, *left, *right; };
    const Row rows[] = {
        {2, 3, L"cde", L"cde", L"ab", L"ef"},   {2, 100, L"cdef", L"", L"ab", L"ef"},
        {2, -1, L"cdef", L"", L"ab", L"ef"},    {-2, -1, L"ef", L"", L"", L""},
        {-8, 3, L"a", L"", L"", L""},           {-8, 2, L"", L"", L"", L""},
        {-8, -1, L"abcdef", L"", L"", L""},     {6, 3, L"", L"", L"abcdef", L"abcdef"},
        {7, 1, L"", L"", L"abcdef", L"abcdef"}, {0, 6, L"abcdef", L"abcdef", L"", L""},
        {1, 0x7FFFFFFF, L"bcdef", L"", L"a", L"f"}};
    using Extract = TSString* (*)(TSString*, const TSString*, int32_t, int32_t);
    auto left = [](TSString* d, const TSString* s, int32_t n, int32_t) { return TSLeft(d, s, n); };
    auto right = [](TSString* d, const TSString* s, int32_t n, int) { return TSRight(d, s, n); };
    for (const Row& row : rows) {
        CAPTURE(row.start);
        CAPTURE(row.count);
        const std::pair<Extract, const wchar_t*> cases[] = {
            {TSMid, row.mid}, {TSSubStr, row.sub}, {left, row.left}, {right, row.right}};
        for (const auto& c : cases) {
            TSSetStr(&dst, L"stale");
            CHECK((c.first(&dst, &src, row.start, row.count) == &dst && dst.text() == c.second));
            check_shape(&dst);
        }
    }
    CHECK((TSMid(&dst, &empty, 0, 1) == &dst && TSEmpty(&dst)));
}

TEST_CASE("trimming removes spaces only, by length; TSInvert and TSRep build")
{
    NoLeak leak;
    const std::pair<TSString* (*)(TSString*), std::wstring> trims[] = {
        {TSLTrim, {L"a \0 ", 4}}, {TSRTrim, {L"  a \0", 5}}, {TSATrim, {L"a \0", 3}}};
    for (const auto& trim : trims) {
        Local t(L"  a \0 ", 6);
        CHECK((trim.first(&t) == &t && t.text() == trim.second));
    }
    Local s(L"\ta\r\n");
    CHECK(TSATrim(&s)->size == 5);
    CHECK(TSInvert(&s, L"x\xD83D\xDE00")->data == std::wstring(L"\xDE00\xD83Dx"));
    CHECK((TSInvert(&s, L"") == &s && TSEmpty(&s)));
    CHECK(TSRep(&s, L"ab", 3)->data == std::wstring(L"ababab"));
    CHECK((TSRep(&s, L"ab", -1) == &s && TSEmpty(&s)));
    TSSetStr(&s, L"old");
    CHECK((TSRep(&s, L"abcd", 0x7FFFFFFF) == nullptr && s.text() == L"old"));  // too long
    CHECK((TSRep(&s, nullptr, 1000000) == &s && TSEmpty(&s)));
}

TEST_CASE("substitution never searches what it inserted; searches differ on an empty needle")
{
    NoLeak leak;
    struct Row { const wchar_t *text, *pattern, *replacement, *chr, *str; };
    const Row rows[] = {{L"a,b;c", L",;", L"--", L"a--b--c", L"a,b;c"},
                        {L"a,b;c", L",;", nullptr, L"abc", L"a,b;c"},
                        {L"aaa", L"aa", L"b", L"bbb", L"ba"},
                        {L"aaa", L"aa", L"aa", L"aaaaaa", L"aaa"},
                        {L"abc", L"", L"x", L"abc", L"abc"},
                        {L"", L"a", L"x", L"", L""}};
    for (const Row& row : rows) {
        Local chr(row.text), str(row.text);
        CHECK((TSChrSubst(&chr, row.pattern, row.replacement) == &chr && chr.text() == row.chr));
        CHECK((TSStrSubst(&str, row.pattern, row.replacement) == &str && str.text() == row.str));
    }
    Local s(L"abcabc"), empty;
    const int32_t search[][3] = {{0, 1, 4}, {2, 4, 4}, {5, -1, -1}, {7, -1, -1}, {-1, -1, 4}};
    for (const auto& row : search)
        CHECK((TSStrPos(&s, L"bc", row[0]) == row[1] && TSStrRPos(&s, L"bc", row[0]) == row[2]));
    CHECK((TSStrRPos(&s, L"abcabcx", 0) == -1 && TSStrPos(&s, L"", 0) == -1));
    CHECK((TSStrRPos(&s, L"", 0) == 6 && TSStrRPos(&s, L"", 7) == -1));
    CHECK(TSStrRPos(&empty, nullptr, 0) == 0);
}
