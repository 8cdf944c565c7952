#include <doctest/doctest.h>

#include <algorithm>
#include <string>

#include "alloc_check.h"
#include "fenced.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "wide_text.h"
#include "zor_ts.h"

namespace {

// Every allocation of this program ends at a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

std::wstring whole(const TSString* ts)
{
    return std::wstring(TSGetStr(ts), size_t(TSGetLen(ts)));
}

// The text as terminated string functions see it.
std::wstring terminated(const std::wstring& text)
{
    return text.substr(0, text.find(L'\0'));
}

void check_shape(const TSString* ts)
{
    CHECK((ts->size == 0) == (ts->data == nullptr));
    CHECK(ts->size != 1);
    CHECK((ts->size == 0 || ts->data[ts->size - 1] == 0));
}

// The clipping extraction, step by step as the header describes it.
std::wstring mid(const std::wstring& s, int64_t start, int64_t count)
{
    const int64_t length = int64_t(s.size());
    if (start < 0)
        start += length;
    if (start < 0) {
        if (count > 0 && (count += start) <= 0)
            return L"";
        start = 0;
    }
    if (start > length)
        return L"";
    if (count < 0 || start + count > length)
        count = length - start;
    return s.substr(size_t(start), size_t(count));
}

struct Str {
    TSString s;
    explicit Str(const std::wstring& text) { TSSetStrN(TSClear(&s), text.c_str(), int32_t(text.size())); }
    ~Str() { TSInit(&s); }
    TSString* operator&() { return &s; }
};

}

TEST_CASE("fuzz: TS extraction and search at extreme positions against a reference")
{
    NoLeak leak;
    fuzz_loop(10000, [](FuzzRng& rng) {
        const std::wstring text = rng.text(rng.chance(5) ? 600 : 12, L"ab ", true);
        Str src(text), dst(rng.text(3));
        const int32_t start = rng.extreme(), count = rng.extreme();
        const int64_t length = int64_t(text.size());
        CAPTURE(text);
        CAPTURE(start);
        CAPTURE(count);
        CHECK(whole(TSMid(&dst, &src, start, count)) == mid(text, start, count));
        const bool strict = start >= 0 && count >= 0 && int64_t(start) + count <= length;
        CHECK(whole(TSSubStr(&dst, &src, start, count)) == (strict ? text.substr(size_t(start), size_t(count)) : L""));
        CHECK(whole(TSLeft(&dst, &src, start)) == (start < 0 ? L"" : text.substr(0, size_t(start))));
        CHECK(whole(TSRight(&dst, &src, start)) ==
              (start < 0 ? L"" : text.substr(size_t(std::max<int64_t>(0, length - start)))));
        check_shape(&dst);
        const int32_t index = rng.chance(50) ? rng.between(-1, int32_t(length) + 1) : start;
        CHECK(TSGetChar(&src, index) == (index >= 0 && index < length ? text[size_t(index)] : 0));

        const Fenced<wchar_t> needle(rng.text(3, L"ab "));
        const std::wstring n = needle.data();
        // Searched from `start` up to the next zero unit, unless the text starts with one.
        const bool searched = start >= 0 && start <= length && !n.empty() && length && text[0];
        const size_t hit = searched ? terminated(text.substr(size_t(start))).find(n) : std::wstring::npos;
        CHECK(TSStrPos(&src, needle.data(), start) == (hit == std::wstring::npos ? -1 : start + int32_t(hit)));
        int32_t last = -1;
        for (int64_t i = length - int64_t(n.size()); last < 0 && i >= std::max(start, 0); --i)
            if (text.compare(size_t(i), n.size(), n) == 0)
                last = int32_t(i);
        CHECK(TSStrRPos(&src, needle.data(), start) == last);
    });
}

TEST_CASE("fuzz: TS editing with sources in the object's own block and fenced texts")
{
    NoLeak leak;
    fuzz_loop(10000, [](FuzzRng& rng) {
        const std::wstring text = rng.text(rng.chance(5) ? 300 : 10, nullptr, true);
        Str ts(text);
        const int32_t length = int32_t(text.size());
        const int32_t from = rng.between(0, length), n = rng.between(0, length - from);
        const wchar_t* inside = TSGetStr(&ts) + from;
        const Fenced<wchar_t> set(rng.text(3)), replacement(rng.text(4));
        const wchar_t* repl = rng.chance(20) ? nullptr : replacement.data();
        std::wstring expected;
        TSString* result = &ts;
        CAPTURE(text);
        CAPTURE(from);
        CAPTURE(n);
        switch (rng.below(9)) {
        case 0:
            expected = text + text;
            result = TSAdd(&ts, &ts);
            break;
        case 1:
            expected = text;
            result = TSCopy(&ts, &ts);
            break;
        case 2:
            expected = text.substr(size_t(from), size_t(n));
            result = TSSetStrN(&ts, inside, n);
            break;
        case 3:
            expected = text + text.substr(size_t(from), size_t(n));
            result = TSAddStrN(&ts, inside, n);
            break;
        case 4:
            expected = terminated(text.substr(size_t(from)));
            std::reverse(expected.begin(), expected.end());
            result = TSInvert(&ts, inside);
            break;
        case 5: {
            const int32_t count = rng.chance(10) ? rng.extreme() % 50 : rng.between(-2, 5);
            const std::wstring unit = terminated(text.substr(size_t(from)));
            for (int32_t i = 0; i < count; ++i)
                expected += unit;
            result = TSRep(&ts, inside, count);
            break;
        }
        case 6: {
            const size_t first = text.find_first_not_of(L' ');
            const size_t last = text.find_last_not_of(L' ');
            expected = first == std::wstring::npos ? L"" : text.substr(first, last - first + 1);
            result = TSATrim(&ts);
            break;
        }
        case 7: {
            const std::wstring units = set.data();
            for (wchar_t unit : terminated(text))
                expected += units.find(unit) == std::wstring::npos ? std::wstring(1, unit) : repl ? repl : L"";
            if (terminated(text).empty())
                expected = text;
            result = TSChrSubst(&ts, set.data(), repl);
            break;
        }
        default: {
            const std::wstring needle = set.data(), seen = terminated(text);
            const bool untouched = needle.empty() || seen.empty();
            size_t at = 0;
            for (size_t hit; !untouched && (hit = seen.find(needle, at)) != std::wstring::npos;
                 at = hit + needle.size())
                expected += seen.substr(at, hit - at) + (repl ? repl : L"");
            expected = untouched ? text : expected + seen.substr(at);
            result = TSStrSubst(&ts, set.data(), repl);
            break;
        }
        }
        CHECK(result == &ts);
        CHECK(whole(&ts) == expected);
        check_shape(&ts);
    });
}

TEST_CASE("fuzz: TS number writers with extreme values, widths and precisions")
{
    NoLeak leak;
    fuzz_loop(10000, [](FuzzRng& rng) {
        Str ts(rng.text(5));
        const double value = rng.number();
        const int32_t width = rng.extreme(), precision = rng.extreme();
        CAPTURE(value);
        CAPTURE(width);
        CAPTURE(precision);
        switch (rng.below(4)) {
        case 0: CHECK(TSStr(&ts, value, width, precision) == &ts); break;
        case 1: CHECK(TSFromDoubleFmt(&ts, value, precision) == &ts); break;
        case 2: CHECK(TSFromDouble(&ts, value) == &ts); break;
        default: {
            const Fenced<wchar_t> text(rng.text(30, L"0123456789+-.eE xin"));
            Str parsed(text.data());
            const double read = TSVal(&parsed);
            CHECK((read == read || terminated(text.data()).find_first_of(L"nN") != std::wstring::npos));
            break;
        }
        }
        CHECK(TSGetLen(&ts) <= 512);
        check_shape(&ts);
    });
}
