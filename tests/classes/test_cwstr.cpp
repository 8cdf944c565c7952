#include <doctest/doctest.h>

#include <string>

#include "alloc_check.h"
#include "classes/cwstr.h"
#include "classes_support.h"
#include "locale_scope.h"
#include "wide_text.h"

using namespace zorlib;
using std::wstring;

namespace {

// What holds between any two calls.
void check_shape(const CWStr& s)
{
    CHECK((s.buffer == nullptr) == (s.capacity == 0));
    if (s.buffer) {
        CHECK(s.buffer[s.length] == 0);
        CHECK(s.length <= s.capacity / 2 - 1);
        CHECK(zor_alloc_probe::block_bytes(s.buffer) == s.capacity);
    } else {
        CHECK(s.length == 0);
    }
}

// The model's editing passes, written the plain way.
wstring model_replace(const wstring& text, const wstring& from, const wstring& to)
{
    wstring out;
    size_t at = 0;
    for (size_t hit; (hit = text.find(from, at)) != wstring::npos; at = hit + from.size())
        out += text.substr(at, hit - at) + to;
    return out + text.substr(at);
}

wstring model_filter(const wstring& text, const wstring& set, bool keep)
{
    wstring out;
    for (wchar_t c : text)
        if ((set.find(c) != wstring::npos) == keep)
            out += c;
    return out;
}

wstring model_unescape(const wstring& t)
{
    auto hex = [](wchar_t c) { return iswxdigit(c) ? int(c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10) : -1; };
    wstring out;
    for (size_t i = 0; i < t.size(); ++i) {
        if (t[i] != '\\') { out += t[i]; continue; }
        if (++i == t.size()) break;
        if (t[i] == 'x' && i + 2 < t.size() + 0 && hex(t[i + 1]) >= 0 && hex(t[i + 2]) >= 0) {
            out += wchar_t(hex(t[i + 1]) * 16 + hex(t[i + 2]));
            i += 2;
        } else if (t[i] >= '0' && t[i] <= '7') {
            size_t n = 0;
            unsigned v = 0;
            for (; n < 3 && i + n < t.size() && t[i + n] >= '0' && t[i + n] <= '7'; ++n)
                v = v * 8 + unsigned(t[i + n] - '0');
            if (v < 256) { out += wchar_t(v); i += n - 1; } else { --i; }
        } else {
            const wstring from = L"bfnrtv", to = L"\b\f\n\r\t\v";
            size_t k = from.find(t[i]);
            out += k == wstring::npos ? t[i] : to[k];
        }
    }
    return out;
}

}

TEST_CASE("random editing against a plain model, sources from the object's own block half the time")
{
    NoLeak leak;
    Random rnd(12);
    const wstring alphabet = L"ab \\x17";
    auto word = [&](int most) { return random_word(rnd, alphabet, most); };
    CWStr s;
    wstring m;
    for (int step = 0; step < 20000; ++step) {
        wstring w1 = word(4), w2 = word(3);
        const wchar_t *a = pick_argument(rnd, s, m, w1), *b = w2.c_str();
        int op = rnd.below(14);
        CAPTURE(step);
        CAPTURE(m);
        switch (op) {
        case 0: s.Assign(a, int(w1.size())); m = w1; break;
        case 1: s.Append(a, -1); m += w1; break;
        case 2: s.Remove(a); if (!w1.empty()) m = model_replace(m, w1, L""); break;
        case 3: s.RemoveChars(a); m = model_filter(m, w1, false); break;
        case 4: s.KeepChars(a); if (!w1.empty()) m = model_filter(m, w1, true); break;
        case 5: s.RemoveRepeats(L'a');
            for (size_t p; (p = m.find(L"aa")) != wstring::npos;) m.erase(p, 1);
            break;
        case 6: s.Replace(a, b);
            if (!m.empty() && !w1.empty()) m = model_replace(m, w1, w2);
            break;
        case 7: s.ReplaceChars(a, L'b');
            for (wchar_t& c : m) if (w1.find(c) != wstring::npos) c = L'b';
            break;
        case 8: s.Trim();
            m.erase(0, m.find_first_not_of(L' '));
            m.erase(m.find_last_not_of(L' ') + 1);
            break;
        case 9: s.TrimLeft(L'a'); m.erase(0, m.find_first_not_of(L'a')); break;
        case 10: {
            int i = rnd.below(8) - 2, n = rnd.below(8) - 2;
            CHECK(text_of(s.Left(i)) == m.substr(0, size_t(std::max(i, 0))));
            CHECK(text_of(s.Right(n)) == m.substr(m.size() - std::min(m.size(), size_t(std::max(n, 0)))));
            size_t from = size_t(std::max(i, 0));
            CHECK(text_of(s.Mid(i, n)) == (from >= m.size() ? L"" : m.substr(from, size_t(std::max(n, 0)))));
            break;
        }
        case 11: {
            int start = rnd.below(6);
            const wchar_t* hit = s.Find(a, start);
            size_t expected = w1.empty() || size_t(start) >= m.size() ? wstring::npos : m.find(w1, size_t(start));
            CHECK((hit ? size_t(hit - s.buffer) : wstring::npos) == expected);
            break;
        }
        case 12: s.Unescape(); m = model_unescape(m); break;
        default: s.Assign(b, -1); m = w2; break;
        }
        REQUIRE(text_of(s) == m);
        check_shape(s);
    }
}

TEST_CASE("inspection, comparison and extraction at their edges")
{
    CWStr abc(L"abc"), ab(L"ab"), empty, abcdef(L"abcdef"), abcb(L"abcb");
    CHECK(abc.GetCharAt(3) == 0);
    CHECK(abc.GetCharAt(-1) == 0);
    CHECK(abc.GetCharAt(2) == L'c');
    CHECK(empty.GetCharAt(0) == 0);
    CHECK(empty.GetStr()[0] == 0);
    struct Cmp { const CWStr* s; const wchar_t* x; int n; int compare; int compareN; int starts; int ends; };
    const Cmp rows[] = {
        {&ab, L"abc", -1, -1, 0, 1, 0},  {&ab, L"cab", -1, -1, -1, 0, 0}, {&ab, L"", -1, 1, 1, 1, 1},
        {&ab, nullptr, -1, 1, 1, 1, 1},  {&empty, L"a", -1, -1, -1, 0, 0}, {&empty, L"", -1, 0, 0, 1, 1},
        {&empty, nullptr, -1, 0, 0, 1, 1}, {&abc, L"bc", -1, -1, -1, 0, 1}, {&abc, L"abd", 2, -1, 0, 0, 0},
        {&abc, L"ABC", 0, 1, 1, 0, 0},
    };
    for (const Cmp& r : rows) {
        CAPTURE(text_of(*r.s));
        CAPTURE(r.x ? r.x : L"(null)");
        CHECK((r.s->Compare(r.x) > 0) - (r.s->Compare(r.x) < 0) == r.compare);
        CHECK((r.s->CompareN(r.x, r.n) > 0) - (r.s->CompareN(r.x, r.n) < 0) == r.compareN);
        CHECK(r.s->StartsWith(r.x) == r.starts);
        CHECK(r.s->EndsWith(r.x) == r.ends);
    }
    CHECK(abc.CompareNoCase(L"ABC") == 0);
    CHECK(abc.CompareNoCaseN(L"ABx", 2) == 0);
    CHECK(abc.Compare(abc.GetStr()) == 0);
    CHECK(abc.Compare(CWStr(L"abc")) == 0);
    CHECK(abcb.Find(L"b", 1) == abcb.buffer + 1);
    CHECK(abcb.Find(L"b", 2) == abcb.buffer + 3);
    CHECK(abcb.Find(L"b", 4) == nullptr);
    CHECK(abcb.Find(L"", 0) == nullptr);
    CHECK(abcb.FindOneOf(L"cb") == 1);
    CHECK(abcb.FindOneOf(nullptr) == -1);
    CHECK(empty.FindOneOf(L"a") == -1);
    struct Mid { int start; int count; const wchar_t* text; };
    for (const Mid& r : {Mid{-2, 3, L"abc"}, Mid{2, 100, L"cdef"}, Mid{6, 1, L""}, Mid{7, 1, L""},
                         Mid{2, -1, L""}, Mid{0, 6, L"abcdef"}})
        CHECK(text_of(abcdef.Mid(r.start, r.count)) == r.text);
    CHECK(text_of(abcdef.Mid(4)) == L"ef");
    CHECK(text_of(abcdef.Left(-1)) == L"");
    CHECK(text_of(abcdef.Right(99)) == L"abcdef");
}

TEST_CASE("editing rows: escapes, replacements, trims and the unit setters")
{
    struct Row { const wchar_t* text; CWStr& (*edit)(CWStr&); const wchar_t* result; };
    const Row rows[] = {
        {L"\\x41|\\101|\\n", [](CWStr& s) -> CWStr& { return s.Unescape(); }, L"A|A|\n"},
        {L"\\xZ\\777\\q\\18\\", [](CWStr& s) -> CWStr& { return s.Unescape(); }, L"xZ777q\x01" L"8"},
        {L"\\x4", [](CWStr& s) -> CWStr& { return s.Unescape(); }, L"x4"},
        {L"aaa", [](CWStr& s) -> CWStr& { return s.Replace(L"aa", L"b"); }, L"ba"},
        {L"aXa", [](CWStr& s) -> CWStr& { return s.Replace(L"a", L"bb"); }, L"bbXbb"},
        {L"axbx", [](CWStr& s) -> CWStr& { return s.Replace(L"x", L""); }, L"ab"},
        {L"baaab", [](CWStr& s) -> CWStr& { return s.RemoveRepeats(L'a'); }, L"bab"},
        {L"xaybz", [](CWStr& s) -> CWStr& { return s.KeepChars(L"ab"); }, L"ab"},
        {L"xaybz", [](CWStr& s) -> CWStr& { return s.ReplaceChars(L"ab", 0); }, L"xyz"},
        {L"   ", [](CWStr& s) -> CWStr& { return s.TrimRight(); }, L""},
        {L"  a ", [](CWStr& s) -> CWStr& { return s.TrimLeft(); }, L"a "},
        {L"xxaxx", [](CWStr& s) -> CWStr& { return s.Trim(L'x'); }, L"a"},
        {L"aBc", [](CWStr& s) -> CWStr& { return s.MakeUpper(); }, L"ABC"},
        {L"abcabc", [](CWStr& s) -> CWStr& { return s.Remove(L"bc"); }, L"aa"},
    };
    for (const Row& r : rows) {
        CWStr s(r.text);
        CAPTURE(text_of(s));
        CHECK(text_of(r.edit(s)) == r.result);
        check_shape(s);
    }
    CWStr s(L"abc");
    s.Assign(s.GetStr() + 1, -1);
    CHECK(text_of(s) == L"bc");
    s.Append(s.GetStr(), -1);
    CHECK(text_of(s) == L"bcbc");
    s.Replace(s.GetStr() + 2, s.GetStr());
    CHECK(text_of(s) == L"bcbcbcbc");
    s = L'z';
    CHECK(text_of(s) == L"z");
    CHECK(text_of(s.FromWide(L"", -1)) == L"");
    CHECK(s.buffer != nullptr);
    s = static_cast<const wchar_t*>(nullptr);
    CHECK(s.buffer == nullptr);
    CHECK(text_of(CWStr(L"a\0b", 3)) == wstring(L"a\0b", 3));
}

TEST_CASE("formatting is sized by the estimate and cut at its end")
{
    CWStr s;
    s.Format(L"%d", 5);
    CHECK(text_of(s) == L"5");
    CHECK(s.capacity == 2 * (24 + 1));
    s.Format(L"<%o>", 8);
    CHECK(text_of(s) == L"<1");
    s.Format(L"%s|%hs|%5.1f|%c%%", L"wide", "narrow", 2.25, L'x');
    CHECK(text_of(s) == L"wide|narrow|  2.2|x%");
    s.Format(L"%lld %I64x %s", 1ll << 40, 255ll, L"in step");
    CHECK(text_of(s) == L"1099511627776 ff in step");
    s.Format(L"%.2s%s", L"abcdef", static_cast<const wchar_t*>(nullptr));
    CHECK(text_of(s) == L"ab(null)");
    // The estimate is short for a wide field of few digits: the text is cut.
    s.Format(L"%030.1f", 1.0);
    CHECK(s.length < 30);
    s = L"%s!";
    s.Format(s.GetStr(), L"self");
    CHECK(text_of(s) == L"self!");
    s.Format(static_cast<const wchar_t*>(nullptr));
    CHECK(text_of(s) == L"");
    s.Format(L"%");
    CHECK(s.length == 0);
}

TEST_CASE("numbers: the integer writers and fixed-point text with trimmed zeros, also in German")
{
    struct Row { double value; int precision; int trim; const wchar_t* text; };
    const Row rows[] = {
        {2.5, 3, 1, L"2.5"},  {2.0, 3, 1, L"2"},       {2.5, 3, 0, L"2.500"}, {2.5, -1, 0, L"2.500000"},
        {0.0, 0, 1, L"0"},    {100.0, 0, 1, L"100"},   {-10.0, 2, 1, L"-10"}, {1e300 * 1e300, 2, 1, L"inf"},
        {0.05, 1, 1, L"0.1"}, {1234567.0, -1, 1, L"1234567"},
    };
    CWStr s;
    for (const Row& r : rows) {
        CAPTURE(r.value);
        CHECK(text_of(s.FromDouble(r.value, r.precision, r.trim)) == r.text);
    }
    CHECK(text_of(s.FromInt(-2147483647 - 1)) == L"-2147483648");
    CHECK(text_of(s.FromLong(-7)) == L"-7");
    CHECK(text_of(s.FromUInt(4294967295u)) == L"4294967295");
    CHECK(text_of(s.FromULong(0)) == L"0");

    RuntimeLocale german(L"German_Germany.1252");
    CHECK(text_of(s.FromDouble(2.5, 3, 1)) == L"2,5");
    CHECK(text_of(s.FromDouble(3.0, 2, 1)) == L"3");
    s = L"\xe4\xf6\xfc\xa0x";
    CHECK(text_of(s.MakeUpper()) == L"\xc4\xd6\xdc\xa0X");
    s = L"\x3000 a\x2003";
    CHECK(text_of(s.Trim()) == L"a");
}

TEST_CASE("blocks: none for empty text, exact growth, kept when emptied, released on null")
{
    NoLeak leak;
    long before = zor_alloc_probe::requests();
    {
        CWStr a, b(L""), c(static_cast<const char*>("")), d(L"abaab");
        d.Remove(L"b").KeepChars(L"a").RemoveChars(L"x").RemoveRepeats(L'a').Unescape();
        d.Replace(L"a", L"b");
        CHECK(text_of(d) == L"b");
        CHECK(zor_alloc_probe::requests() == before + 1);
    }
    CWStr s(L"abc");
    s = L"";
    wchar_t* block = s.buffer;
    CHECK(s.GetBuffer(3) == block);
    s.Append(L"abcd", 4);
    CHECK(s.capacity == 2 * 5);
    s.Append(L"e", 1);
    CHECK(s.capacity == 2 * 6);
    CHECK(s.Reserve(2, 1) == 1);
    CHECK(text_of(s) == L"ab");
    CHECK(s.capacity == 2 * 6);
    CHECK(s.Reserve(0x7FFFFFFF, 1) == 0);
    CHECK(s.Reserve(-1, 1) == 0);
    CHECK(text_of(s) == L"ab");
    wchar_t* out = s.GetBuffer(4);
    wcscpy(out, L"wxyz");
    s.ReleaseBuffer(2);
    CHECK(text_of(s) == L"wx");
    s.ReleaseBuffer(99);
    CHECK(s.length == 5);
    wchar_t* taken = s.Detach();
    CHECK(s.buffer == nullptr);
    CHECK(s.length == 0);
    zor_free(taken);
    s.Assign(L"q", 1);
    s.Assign(nullptr, 0);
    CHECK(s.buffer == nullptr);
}

TEST_CASE("exhaustion: text setters leave the text, number writers leave it empty, nothing leaks")
{
    NoLeak leak;
    using Edit = void (*)(CWStr&);
    const Edit setters[] = {
        [](CWStr& s) { s.Assign(L"longer text", -1); },   [](CWStr& s) { s.Append(L"more", 4); },
        [](CWStr& s) { s.Append(s.GetStr(), -1); },        [](CWStr& s) { s = "narrow text"; },
        [](CWStr& s) { s.FromAnsi("narrow text", -1); },   [](CWStr& s) { s.FromUtf8("utf8 text", 9); },
        [](CWStr& s) { s.Format(L"%d", 1); },              [](CWStr& s) { s.Replace(L"b", L"longer"); },
        [](CWStr& s) { s.Assign(s.GetStr() + 1, 1); },     [](CWStr& s) { s.Format(s.GetStr()); },
        [](CWStr& s) { s.Replace(L"c", s.GetStr()); },     [](CWStr& s) { s.Remove(s.GetStr() + 1); },
    };
    for (Edit edit : setters) {
        CWStr clean(L"abc");
        edit(clean);
        // Each failure point in turn: the edit happens entirely or not at all.
        fail_each_allocation([edit, &clean] {
            CWStr s(L"abc");
            if (s.length != 3)
                return;
            edit(s);
            CHECK((text_of(s) == L"abc" || text_of(s) == text_of(clean)));
            check_shape(s);
        });
        CWStr s(L"abc");
        AllAllocationsFail fail;
        edit(s);
        CHECK(text_of(s) == wstring(L"abc"));
    }
    const Edit writers[] = {
        [](CWStr& s) { s.FromInt(5); }, [](CWStr& s) { s.FromULong(5); }, [](CWStr& s) { s.FromDouble(1.5, 1, 0); },
    };
    for (Edit edit : writers) {
        CWStr s(L"abc");
        AllAllocationsFail fail;
        edit(s);
        CHECK(text_of(s) == L"");
    }
    CWStr s(L"abc");
    AllAllocationsFail fail;
    CHECK(text_of(s.Left(2)) == L"");
    CHECK(s.GetBuffer(10) == nullptr);
}
