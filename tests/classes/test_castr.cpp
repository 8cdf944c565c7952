#include <doctest/doctest.h>

#include <string.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "alloc_check.h"
#include "classes/castr.h"
#include "classes/cutf8str.h"
#include "classes/cwstr.h"
#include "classes_support.h"
#include "wide_text.h"

using namespace zorlib;
using std::string;

namespace {

int sign(int v) { return (v > 0) - (v < 0); }

int model_compare(const string& a, const string& b)
{
    return sign(a.compare(b));
}

}

TEST_CASE("narrow editing and comparison against a plain model, sources from the object's own block")
{
    NoLeak leak;
    Random rnd(7);
    const string alphabet = "abxy \x01\xE9";
    auto word = [&](int most) { return random_word(rnd, alphabet, most); };
    CAStr s;
    string m;
    for (int step = 0; step < 20000; ++step) {
        string w1 = word(4), w2 = word(3);
        const char* a = pick_argument(rnd, s, m, w1);
        int op = rnd.below(12);
        CAPTURE(step);
        CAPTURE(m);
        switch (op) {
        case 0: s = a; m = w1; break;
        case 1: s += a; m += w1; break;
        case 2: s << s; m += m; break;
        case 3: {
            int start = rnd.below(6), count = rnd.below(4);
            s.Delete(start, count);
            if (size_t(start) < m.size()) m.erase(size_t(start), size_t(count));
            break;
        }
        case 4: s.RemoveChar('a'); m.erase(std::remove(m.begin(), m.end(), 'a'), m.end()); break;
        case 5: s.ReplaceChar('x', 'y'); std::replace(m.begin(), m.end(), 'x', 'y'); break;
        case 6: s.TrimRight("y\x01"); m.erase(m.find_last_not_of("y\x01") + 1); break;
        case 7: s.Replace(a, w2.c_str());
            if (!m.empty() && !w1.empty()) {
                string out;
                size_t at = 0;
                for (size_t hit; (hit = m.find(w1, at)) != string::npos; at = hit + w1.size())
                    out += m.substr(at, hit - at) + w2;
                m = out + m.substr(at);
            }
            break;
        case 8: {
            CAStr other(w2.c_str());
            CHECK(sign(s.Compare(a)) == model_compare(m, w1));
            CHECK((s == other) == (m == w2));
            CHECK((s < a) == (model_compare(m, w1) < 0));
            size_t shorter = std::min(m.size(), w2.size());
            CHECK((s.Compare(other) == 0) == (m.compare(0, shorter, w2, 0, shorter) == 0 && !m.empty() == !w2.empty()));
            break;
        }
        case 9: CHECK(text_of(s.SpanIncluding("ab")) == m.substr(0, m.find_first_not_of("ab"))); break;
        case 10: {
            int start = rnd.below(5);
            const char* hit = s.FindChar('b', start);
            size_t expected = size_t(start) < m.size() ? m.find('b', size_t(start)) : string::npos;
            CHECK((hit ? size_t(hit - s.buffer) : string::npos) == expected);
            break;
        }
        default: s = s + w2.c_str() + 'q'; m += w2 + "q"; break;
        }
        REQUIRE(text_of(s) == m);
        REQUIRE(s.length <= s.capacity);
    }
}

TEST_CASE("the operators against null and empty texts, comparisons over the shorter length")
{
    CAStr empty, a("a"), ab("ab"), abc("abc");
    const char* const none = nullptr;
    struct Row { const CAStr* s; const char* x; bool eq; bool lt; bool gt; };
    const Row rows[] = {
        {&empty, none, true, false, false}, {&empty, "", true, false, false}, {&a, none, false, false, true},
        {&a, "", false, false, true},      {&a, "b", false, true, false},    {&ab, "abc", false, true, false},
        {&abc, "ab", false, false, true},  {&a, "\xE9", false, true, false}, {&empty, "a", false, true, false},
    };
    for (const Row& r : rows) {
        CAPTURE(text_of(*r.s));
        CAPTURE(r.x ? r.x : "(null)");
        CHECK((*r.s == r.x) == r.eq);
        CHECK((*r.s != r.x) == !r.eq);
        CHECK((*r.s < r.x) == r.lt);
        CHECK((*r.s > r.x) == r.gt);
    }
    CHECK(a.Compare("\xE9") == -1);
    CHECK(CAStr("\xE9").Compare("a") == 1);
    CHECK(ab.Compare(abc) == 0);
    CHECK_FALSE(ab == abc);
    CHECK(ab < abc);
    CHECK(CAStr("AB").CompareNoCase(abc) == 0);
    CHECK(empty.CompareNoCase("") == 0);
    CHECK(empty.CompareNoCase("a") == -1);
    CHECK(text_of(ab + abc + 'z' + "!") == "ababcz!");
    CHECK(text_of(CAStr('c')) == "c");
}

TEST_CASE("narrow rows: deletion, spans, trims in three forms, character replacement")
{
    struct Row { const char* text; CAStr& (*edit)(CAStr&); string result; };
    const Row rows[] = {
        {"abc", [](CAStr& s) -> CAStr& { return s.Delete(1, 99); }, "a"},
        {"abc", [](CAStr& s) -> CAStr& { return s.Delete(3, 1); }, "abc"},
        {"abc", [](CAStr& s) -> CAStr& { return s.Delete(4, 1); }, "abc"},
        {"axyx", [](CAStr& s) -> CAStr& { return s.TrimRight("xy"); }, "a"},
        {"xyx", [](CAStr& s) -> CAStr& { return s.TrimRight("xy"); }, ""},
        {"xax", [](CAStr& s) -> CAStr& { return s.Trim("x"); }, "a"},
        {"xax", [](CAStr& s) -> CAStr& { return s.Trim('x'); }, "a"},
        {" \ta\n", [](CAStr& s) -> CAStr& { return s.Trim(); }, "a"},
        {"abcb", [](CAStr& s) -> CAStr& { return s.Remove("b"); }, "ac"},
        {"abcb", [](CAStr& s) -> CAStr& { return s.RemoveChar('b'); }, "ac"},
        {"abab", [](CAStr& s) -> CAStr& { return s.ReplaceChar('a', 0); }, string("\0b\0b", 4)},
        {"\\x41\\n", [](CAStr& s) -> CAStr& { return s.Unescape(); }, "A\n"},
    };
    for (const Row& r : rows) {
        CAStr s(r.text);
        CAPTURE(r.text);
        r.edit(s);
        CHECK(text_of(s) == r.result);
    }
    CHECK(text_of(CAStr("abcab").SpanIncluding("ab")) == "ab");
    CAStr s("abc");
    CHECK(s.FindChar('c', 1) == s.buffer + 2);
    CHECK(s.FindChar('a', 1) == nullptr);
    CHECK(s.FindChar(0, 0) == nullptr);
    CHECK(s.GetAt(1) == 'b');
    s.SetAt(1, 'X');
    s[2] = 'Y';
    CHECK(text_of(s) == "aXY");
    CHECK(text_of(s.FormatV(nullptr, nullptr)) == "");
    s.Format("%s-%d-%S", "n", 7, L"w");
    CHECK(text_of(s) == "n-7-w");
    CHECK(text_of(s.FromDouble(2.50, 2, 1)) == "2.5");
    CHECK(text_of(s.FromUInt(4000000000u)) == "4000000000");
    std::ostringstream out;
    out << CAStr("a") << CAStr() << CUtf8Str("\xC3\xA9") << CWStr(L"\u00e9");
    CHECK(out.str() == "\"a\"\"\"\"\xC3\xA9\"\"\xE9\"");
}

TEST_CASE("hexadecimal coding: round trips over random bytes, accepted noise, the error position")
{
    Random rnd(3);
    for (int round = 0; round < 300; ++round) {
        string bytes;
        for (int n = rnd.below(20); n > 0; --n)
            bytes += char(rnd.below(256));
        int spaced = round & 1;
        CAStr s(bytes.data(), int(bytes.size()));
        s.HexEncode(spaced);
        CHECK(s.length == bytes.size() * (spaced ? 3 : 2));
        CHECK(text_of(s).find_first_not_of(spaced ? "0123456789ABCDEF " : "0123456789ABCDEF") == string::npos);
        const char* error = nullptr;
        s.MakeLower().HexDecode(&error);
        CHECK(error == nullptr);
        CHECK(text_of(s) == bytes);
    }
    CHECK(text_of(CAStr(string("\0\xFF", 2).c_str(), 2).HexEncode(0)) == "00FF");
    CHECK(text_of(CAStr(string("\0\xFF", 2).c_str(), 2).HexEncode(1)) == "00 FF ");
    struct Row { const char* hex; const char* bytes; int errorAt; };
    for (const Row& r : {Row{"41 42", "AB", -1}, Row{"4 1", "A", -1}, Row{"a", "\xA0", -1}, Row{"4\t\n1", "A", -1},
                         Row{"4G", "4G", 1}, Row{"41\xE9", "41\xE9", 2}, Row{"", "", -1}}) {
        CAStr s(r.hex);
        const char* error = nullptr;
        s.HexDecode(&error);
        CAPTURE(r.hex);
        CHECK(text_of(s) == r.bytes);
        CHECK((error ? int(error - s.buffer) : -1) == r.errorAt);
    }
    CAStr bad("zz");
    bad.HexDecode(nullptr);
    CHECK(text_of(bad) == "zz");
}

TEST_CASE("narrow routes: wide length + 1 bytes, the double-byte limit, message formatting")
{
    NoLeak leak;
    CAStr s(L"caf\u00e9 \u20ac");
    CHECK(text_of(s) == "caf\xE9 \x80");
    CHECK(s.capacity == 7);
    CHECK(text_of(CWStr(s)) == L"caf\u00e9 \u20ac");
    CHECK(text_of(CAStr(CUtf8Str("\xC3\xA9"))) == "\xE9");
    CHECK(text_of(s.FromUtf8("\xE2\x82\xAC!", -5)) == "\x80!");
    CHECK(text_of(s.FromWide(L"abc", 2)) == "ab");
    CHECK(text_of(s.FromAnsi("abc", 0)) == "");
    CHECK(s.buffer != nullptr);
    CHECK(text_of(CAStr(CWStr())) == "");
    long before = zor_alloc_probe::requests();
    CAStr target;
    target = CWStr();
    CHECK(zor_alloc_probe::requests() == before);
    {
        NarrowCodePage page(932);
        CAStr dbcs("\x82\xA0z\x82\xA2");
        CHECK(dbcs.GetWideCharAt(1) == L'z');
        CHECK(dbcs.GetWideCharAt(2) == L'\u3044');
        CHECK(text_of(CAStr(L"\u3042")) == "\x82\xA0");
        CHECK(text_of(CAStr(L"\u3042\u3044")) == "");
        CHECK(text_of(CAStr(L"a\u3042\u3044")) == "");
    }
    CHECK(s.FormatMessage(L"%1 has %2!d! items", L"list", 3) == string("list has 3 items"));
    CHECK(text_of(s) == "list has 3 items");
    CHECK(s.FormatMessage(L"") == string(""));
    CHECK(s.length == 0);
}

TEST_CASE("narrow exhaustion: conversions leave an empty target, other setters the old text")
{
    NoLeak leak;
    using Edit = void (*)(CAStr&);
    const Edit conversions[] = {
        [](CAStr& s) { s = L"a longer wide text"; }, [](CAStr& s) { s.FromUtf8("a longer text", -1); },
        [](CAStr& s) { s = CWStr(L"a longer wide text"); },
    };
    const Edit setters[] = {
        [](CAStr& s) { s = "longer text"; },        [](CAStr& s) { s += s; },
        [](CAStr& s) { s.Replace("b", "xx"); },     [](CAStr& s) { s.HexEncode(1); },
        [](CAStr& s) { s.Format("%d", 12); },       [](CAStr& s) { s.Append(s.GetStr() + 1, 1); },
    };
    for (Edit edit : conversions) {
        CAStr s("abc");
        AllAllocationsFail fail;
        edit(s);
        CHECK(text_of(s) == "");
    }
    for (Edit edit : setters) {
        CAStr clean("abc");
        edit(clean);
        fail_each_allocation([edit, &clean] {
            CAStr s("abc");
            if (s.length != 3)
                return;
            edit(s);
            CHECK((text_of(s) == "abc" || text_of(s) == text_of(clean)));
        });
    }
    CAStr s("abc");
    long before = zor_alloc_probe::requests();
    CHECK(s.Reserve(10, 0) == 1);
    CHECK(s.length == 0);
    CHECK(s.capacity == 10);
    CHECK(s.Reserve(4, 1) == 1);
    CHECK(zor_alloc_probe::requests() == before + 1);
    s.Clear(1);
    CHECK(s.buffer == nullptr);
    CHECK(s.capacity == 0);
}
