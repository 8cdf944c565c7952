#include <doctest/doctest.h>


#include <algorithm>

#include "alloc_check.h"
#include "dll_image.h"
#include "frame/zor_platform.h"
#include "locale_scope.h"
#include "wide_text.h"
#include "zor_ts.h"

namespace {

// A result as text; a null result shows as "(null)".
std::wstring text_of(const TSString* t)
{
    return t ? std::wstring(TSGetStr(t), TSGetLen(t)) : L"(null)";
}

// A TSString in the test's storage, released at scope end.
struct Local {
    TSString s;
    explicit Local(const wchar_t* text = L"") { TSSetStr(TSClear(&s), text); }
    Local(const wchar_t* text, int32_t n) { TSSetStrN(TSClear(&s), text, n); }
    ~Local() { TSInit(&s); }
    TSString* operator&() { return &s; }
};

// What holds between any two calls: no block when empty, else a terminated
// block of exactly `size` units.
void check_shape(const TSString* ts)
{
    CHECK((ts->size == 0) == (ts->data == nullptr));
    CHECK((!ts->size || (ts->size > 1 && ts->data[ts->size - 1] == 0 &&
                         zor_alloc_probe::block_bytes(ts->data) == size_t(ts->size) * sizeof(wchar_t))));
}

}

TEST_CASE("the empty text is shared, blocks fit exactly, appends take themselves, zeros are text")
{
    NoLeak leak;
    long before = zor_alloc_probe::live_blocks();
    TSString *ts = TSNew(), *clone = TSClone(L"");
    REQUIRE(ts);
    REQUIRE(clone);
    CHECK(TSEmpty(clone));
    CHECK(zor_alloc_probe::live_blocks() == before + 2);
    Local a, b, xy(L"xy"), s(L"abc"), t(L"abc"), u(L"abc");
    CHECK(TSEmpty(ts));
    CHECK(TSGetStr(ts)[0] == 0);
    CHECK(TSGetStr(&a) == TSGetStr(ts));
    CHECK(TSSetStr(&s, L"") == &s);
    CHECK(TSSetLen(&t, 0) == &t);
    CHECK(TSCopy(&u, ts) == &u);
    CHECK(!s.s.data);
    CHECK(!s.s.size);
    CHECK(!t.s.data);
    CHECK(!t.s.size);
    CHECK(!u.s.data);
    CHECK(!u.s.size);
    TSFree(ts);
    TSFree(clone);
    long requests = zor_alloc_probe::requests();
    CHECK(TSAdd(&a, &b) == &a);
    CHECK(TSAddStr(&a, L"") == &a);
    CHECK(TSEmpty(&a));
    CHECK(zor_alloc_probe::requests() == requests);
    CHECK(TSCmp(&a, &b) == 0);
    CHECK(TSAdd(TSAddStrN(&xy, L"abcdef", 3), &xy) == &xy);
    CHECK(text_of(&xy) == L"xyabcxyabc");
    check_shape(&xy);
    CHECK(TSAdd(&b, &xy) == &b);
    CHECK(TSAdd(&b, &a) == &b);
    CHECK(text_of(&b) == L"xyabcxyabc");
    // Blocks this large are mapped on their own, so the source of the append moves away.
    std::wstring text(400000, L'q');
    Local big(text.c_str());
    CHECK(TSAdd(&big, &big)->data == text + text);
    // Sources from the string's own block are taken as they stood, though the block moves.
    Local own(L"abcdef");
    CHECK(text_of(TSAddStrN(&own, TSGetStr(&own) + 1, 3)) == L"abcdefbcd");
    CHECK(text_of(TSSetStrN(&own, TSGetStr(&own) + 6, 3)) == L"bcd");
    CHECK(text_of(TSInvert(&own, TSGetStr(&own) + 1)) == L"dc");
    CHECK(text_of(TSSetStr(&own, TSGetStr(&own))) == L"dc");
    Local z(L"a\0b", 3), one(L"a"), copy;
    CHECK(TSGetLen(&z) == 3);
    CHECK(TSGetChar(&z, 2) == L'b');
    CHECK(TSCmp(&z, &one) == 0);
    TSCopy(&copy, TSCopy(&copy, &z));
    CHECK(text_of(&copy) == text_of(&z));
    CHECK(TSAdd(&copy, &z)->size == 7);
    CHECK(TSGetChar(&copy, 5) == L'b');
    CHECK(!TSGetChar(&copy, -1));
    CHECK(!TSGetChar(&copy, 0x7FFFFFFF));
    CHECK(TSSetLen(&copy, 10)->data[10] == 0);
    CHECK(copy.s.data[5] == L'b');
    check_shape(&copy);
    CHECK(TSFromCh(&copy, 0)->size == 2);
    CHECK(TSCmp(&copy, &a) == 1);
    // By unsigned units, and exactly -1 or 1.
    const wchar_t* ordered[][2] = {{L"", L"a"}, {L"abc", L"abcd"}, {L"A", L"\xE000"}};
    for (const auto& o : ordered) {
        CHECK(TSCmp(&Local(o[0]), &Local(o[1])) == -1);
        CHECK(TSCmp(&Local(o[1]), &Local(o[0])) == 1);
    }
}

TEST_CASE("numbers round on the exact binary value and cut at 512 units; the locales apply")
{
    Local s, word(L"\x00E4x");
    struct Row { double value; int32_t width, decimals; const wchar_t* text; };
    const Row rows[] = {{3.14159, 8, 2, L"    3.14"}, {1500.0, 0, -2, L"1.50e+03"},
                        {2.675, 0, 2, L"2.67"},  // 2.67499999... in binary
                        {0.125, 0, 2, L"0.12"}, {0.375, 0, 2, L"0.38"},  // exact ties: to even
                        {2.5, 0, 0, L"2"}, {-0.0, 0, 1, L"-0.0"}};
    for (const Row& row : rows)
        CHECK(text_of(TSStr(&s, row.value, row.width, row.decimals)) == row.text);
    CHECK(text_of(TSCStr(&s, 42.5, L"<%.1f>")) == L"<42.5>");
    CHECK(text_of(TSFromDoubleFmt(&s, 1.0, -3)) == L"1.000000");
    CHECK(text_of(TSFromInt(&s, INT32_MIN)) == L"-2147483648");
    CHECK(text_of(TSFromLong(&s, INT32_MAX)) == L"2147483647");
    CHECK(text_of(TSFromULong(&s, 4294967295u)) == L"4294967295");
    CHECK(TSGetLen(TSStr(&s, 1.0, 600, 0)) == 512);
    CHECK(text_of(&s).back() == L' ');
    CHECK(TSGetLen(TSCStr(&s, 1.0, L"%0700.1f")) == 512);
    CHECK(TSGetLen(TSFromDouble(&s, -1.7976931348623157e308)) == 317);
    CHECK(TSVal(&Local(L"3.5abc")) == 3.5);
    CHECK(TSVal(&Local(L"")) == 0.0);
    CHECK(TSVal(&Local(L" \t-2e3x")) == -2000.0);
    CHECK(TSVal(&Local(L"1,5")) == 1.0);
    const std::wstring previous = TSSetLocale(LC_ALL, nullptr);
    REQUIRE(!TSSetLocale(LC_ALL, L"no such"));
    REQUIRE(TSSetLocale(LC_ALL, L"German_Germany.1252"));
    CHECK(TSVal(TSSetStr(&s, L"3,25")) == 3.25);
    CHECK(text_of(TSFromDoubleFmt(&s, 1.5, 2)) == L"1,50");
    CHECK(text_of(TSUpper(&word)) == L"\x00C4X");
    CHECK(text_of(TSLower(&word)) == L"\x00E4x");
    TSSetLocale(LC_ALL, previous.c_str());
    TDDate date = {2026, 3, 0, 7, 13, 45, 0, 0};
    const std::pair<const wchar_t*, const wchar_t*> patterns[] = {
        {L"dd.MM.yyyy", L"07.03.2026"}, {L"yyyy/M/d", L"2026/3/7"},
        {L"dddd dddd dddd dddd dddd dddd dddd dddd dddd dddd dddd dddd", L""}};  // 107 units
    for (const auto& pattern : patterns) {
        LocaleSetting setting(LOCALE_SSHORTDATE, pattern.first);
        CHECK(text_of(TSFromDate(&Local(L"old"), &date)) == pattern.second);
    }
}

// Fields far beyond the cut print what the runtime would print unclamped;
// the extremes come back at once instead of formatting billions of units.
TEST_CASE("number fields wider or more precise than the cut print as if unclamped")
{
    Local s;
    const double values[] = {1.5, -1.7976931348623157e308, 4.9406564584124654e-324, 1.0 / 3, -0.0};
    const int32_t fields[] = {-2100, -1200, -513, -512, -1, 0, 100, 511, 512, 513, 1075, 1200, 2100};
    std::wstring wide(4000, L'\0');
    for (double value : values)
        for (int32_t width : fields)
            for (int32_t precision : fields) {
                CAPTURE(value);
                CAPTURE(width);
                CAPTURE(precision);
                const int digits = precision < 0 ? -precision : precision;
                const int n = zor::counted_swprintf(&wide[0], wide.size(), precision < 0 ? L"%*.*e" : L"%*.*f", int(width),
                                       digits, value);
                REQUIRE(n > 0);
                CHECK(text_of(TSStr(&s, value, width, precision)) == wide.substr(0, std::min(n, 512)));
            }
    CHECK(text_of(TSStr(&s, 1.5, INT32_MAX, 2)) == std::wstring(512, L' '));
    CHECK(text_of(TSStr(&s, 1.5, INT32_MIN, 2)) == L"1.50" + std::wstring(508, L' '));
    CHECK(text_of(TSStr(&s, 1.5, 0, INT32_MAX)) == L"1.5" + std::wstring(509, L'0'));
    CHECK(text_of(TSStr(&s, 1.5, 0, INT32_MIN)) == L"1.5" + std::wstring(509, L'0'));
    CHECK(text_of(TSFromDoubleFmt(&s, 0.25, INT32_MAX)) == L"0.25" + std::wstring(508, L'0'));
    CHECK(text_of(TSFromDoubleFmt(&s, 0.25, 600)) == L"0.25" + std::wstring(508, L'0'));
}

// A write through the shared empty text must fault, not change every empty
// string of the process: its page is read-only, in the core and in the DLL.
TEST_CASE("the shared empty text lies on a read-only page")
{
    Local empty;
    auto dllGetStr = dll_proc<wchar_t* (*)(const TSString*)>("TSGetStr");
    REQUIRE(bool(dllGetStr));
    for (const wchar_t* text : {TSGetStr(&empty), dllGetStr(&empty)}) {
        MEMORY_BASIC_INFORMATION info = {};
        REQUIRE(VirtualQuery(text, &info, sizeof info) == sizeof info);
        CHECK(info.State == MEM_COMMIT);
        CHECK((info.Protect & (PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE |
                               PAGE_EXECUTE_WRITECOPY)) == 0);
        CHECK(*text == 0);
    }
}

TEST_CASE("extracts clip or refuse; trims take spaces only; substitutions skip their output")
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
    for (const Row& row : rows) {
        INFO(row.start, ", ", row.count);
        CHECK(text_of(TSMid(&dst, &src, row.start, row.count)) == row.mid);
        CHECK(text_of(TSSubStr(&dst, &src, row.start, row.count)) == row.sub);
        CHECK(text_of(TSLeft(&dst, &src, row.start)) == row.left);
        CHECK(text_of(TSRight(&dst, &src, row.start)) == row.right);
        check_shape(&dst);
    }
    CHECK(TSMid(&dst, &empty, 0, 1) == &dst);
    CHECK(TSEmpty(&dst));
    const std::pair<TSString* (*)(TSString*), std::wstring> trims[] = {
        {TSLTrim, {L"a \0 ", 4}}, {TSRTrim, {L"  a \0", 5}}, {TSATrim, {L"a \0", 3}}};
    for (const auto& trim : trims)
        CHECK(text_of(trim.first(&Local(L"  a \0 ", 6))) == trim.second);
    Local s(L"\ta\r\n");
    CHECK(TSATrim(&s)->size == 5);
    CHECK(text_of(TSInvert(&s, L"x\xD83D\xDE00")) == L"\xDE00\xD83Dx");
    CHECK(text_of(TSInvert(&s, L"")) == L"");
    CHECK(text_of(TSRep(&s, L"ab", 3)) == L"ababab");
    CHECK(text_of(TSRep(&s, L"ab", -1)) == L"");
    CHECK(TSRep(TSSetStr(&s, L"old"), L"ab", 0x7FFFFFFF) == nullptr);
    CHECK(text_of(&s) == L"old");
    CHECK(text_of(TSRep(&s, nullptr, 1000000)) == L"");
    struct Subst { const wchar_t *text, *pattern, *replacement, *chr, *str; };
    const Subst substs[] = {
        {L"a,b;c", L",;", L"--", L"a--b--c", L"a,b;c"}, {L"aaa", L"aa", L"b", L"bbb", L"ba"},
        {L"a,b;c", L",;", nullptr, L"abc", L"a,b;c"}, {L"aaa", L"aa", L"aa", L"aaaaaa", L"aaa"},
        {L"abc", L"", L"x", L"abc", L"abc"}, {L"", L"a", L"x", L"", L""}};
    for (const Subst& row : substs) {
        CHECK(text_of(TSChrSubst(&Local(row.text), row.pattern, row.replacement)) == row.chr);
        CHECK(text_of(TSStrSubst(&Local(row.text), row.pattern, row.replacement)) == row.str);
    }
    Local x(L"abcabc");
    const int32_t search[][3] = {{0, 1, 4}, {2, 4, 4}, {5, -1, -1}, {7, -1, -1}, {-1, -1, 4}};
    for (const auto& row : search) {
        CHECK(TSStrPos(&x, L"bc", row[0]) == row[1]);
        CHECK(TSStrRPos(&x, L"bc", row[0]) == row[2]);
    }
    CHECK(TSStrRPos(&x, L"abcabcx", 0) == -1);
    CHECK(TSStrPos(&x, L"", 0) == -1);
    CHECK(TSStrRPos(&x, L"", 0) == 6);
    CHECK(TSStrRPos(&x, L"", 7) == -1);
    CHECK(TSStrRPos(&Local(), nullptr, 0) == 0);
}

// The whole family's allocation seam, the editing functions included.
TEST_CASE("exhaustion leaves the object valid and empty, scratch failures untouched, no leak")
{
    NoLeak leak;
    Local s(L"  keep  ");
    long requests = fail_each_allocation([]() {
        // The object on success; on failure null and an empty object.
        auto held = [](TSString* result, TSString* ts) {
            CHECK((result == ts || (!result && TSEmpty(ts))));
            check_shape(ts);
        };
        Local t(L" a,bc,d "), u(L"defg"), dst(L"old");
        TDDate date = {2026, 3, 0, 7, 0, 0, 0, 0};
        held(TSAdd(&u, &t), &u);
        held(TSCopy(&dst, &t), &dst);
        held(TSSetLen(&u, 9), &u);
        held(TSFromCh(&u, L'z'), &u);
        held(TSMid(&dst, &t, 1, 3), &dst);
        held(TSFromInt(&u, 12), &u);
        held(TSFromDate(&u, &date), &u);
        if (TSString* c = TSCloneN(L"hello", 5))
            TSFree(c);
        // The scratch block is taken first and its failure keeps the text.
        std::wstring before = text_of(&dst);
        TSString* r = TSCStr(&dst, 2.0, L"%.1f");
        CHECK(((r && text_of(&dst) == L"2.0") ||
               (!r && (text_of(&dst) == before || TSEmpty(&dst)))));
        // Edits always return ts; a trim whose copy failed keeps its spaces.
        CHECK(TSStrSubst(TSChrSubst(TSATrim(&t), L",", L";"), L"bc", L"BC") == &t);
        check_shape(&t);
        const std::wstring edited = text_of(&t);
        CHECK((edited.empty() || edited == L"a;BC;d" || edited == L" a;BC;d " ||
               edited == L" a;BC;d" || edited == L"a;BC;d "));
    });
    CHECK(requests > 15);
    AllAllocationsFail fail;
    CHECK(TSCStr(&s, 1.0, L"%f") == nullptr);
    CHECK(TSATrim(&s) == &s);
    CHECK(TSRep(&s, L"x", 3) == nullptr);
    CHECK(text_of(&s) == L"  keep  ");
    // The other number writers format on the stack: only the string's block fails.
    TSString* (*const writers[])(TSString*) = {
        [](TSString* t) { return TSStr(t, 1.0, 3, 1); }, [](TSString* t) { return TSFromDouble(t, 2.0); },
        [](TSString* t) { return TSFromDoubleFmt(t, 2.0, 3); }, [](TSString* t) { return TSAddStr(t, L"x"); }};
    for (auto writer : writers) {
        Local kept(L"old");
        CHECK(writer(&kept) == nullptr);
        CHECK(TSEmpty(&kept));
    }
    CHECK(TSNew() == nullptr);
    CHECK(TSClone(L"x") == nullptr);
    CHECK(missing_exports({"TSNew", "TSClear", "TSInit", "TSFree", "TSClone", "TSCloneN", "TSEmpty",
                           "TSGetLen", "TSGetStr", "TSGetChar", "TSCmp", "TSCopy", "TSSetStr",
                           "TSSetStrN", "TSSetLen", "TSFromCh", "TSCStr", "TSStr", "TSAdd",
                           "TSAddStr", "TSAddStrN", "TSLeft", "TSRight", "TSMid", "TSSubStr",
                           "TSLTrim", "TSRTrim", "TSATrim", "TSUpper", "TSLower", "TSInvert",
                           "TSRep", "TSChrSubst", "TSStrSubst", "TSStrPos", "TSStrRPos", "TSVal",
                           "TSFromInt", "TSFromLong", "TSFromULong", "TSFromDouble",
                           "TSFromDoubleFmt", "TSFromDate", "TSSetLocale"}) == "");
}
