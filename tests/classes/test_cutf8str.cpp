#include <doctest/doctest.h>

#include <string>
#include <vector>

#include "alloc_check.h"
#include "classes/castr.h"
#include "classes/cutf8str.h"
#include "classes/cwstr.h"
#include "classes_support.h"
#include "wide_text.h"

using namespace zorlib;
using std::string;

namespace {

// The reference: code points and their encoding, written independently.
string encode(uint32_t cp)
{
    if (cp < 0x80)
        return string(1, char(cp));
    if (cp < 0x800)
        return {char(0xC0 | cp >> 6), char(0x80 | (cp & 63))};
    if (cp < 0x10000)
        return {char(0xE0 | cp >> 12), char(0x80 | (cp >> 6 & 63)), char(0x80 | (cp & 63))};
    return {char(0xF0 | cp >> 18), char(0x80 | (cp >> 12 & 63)), char(0x80 | (cp >> 6 & 63)), char(0x80 | (cp & 63))};
}

string encode(const std::vector<uint32_t>& cps, size_t from = 0, size_t to = SIZE_MAX)
{
    string out;
    for (size_t i = from; i < cps.size() && i < to; ++i)
        out += encode(cps[i]);
    return out;
}

uint32_t random_code_point(Random& rnd)
{
    static const uint32_t tops[] = {0x7F, 0x7FF, 0xFFFF, 0x10FFFF};
    uint32_t top = tops[rnd.below(4)];
    uint32_t cp = 1 + rnd.next() % top;
    return cp >= 0xD800 && cp <= 0xDFFF ? cp - 0x800 : cp;
}

}

TEST_CASE("characters of random valid UTF-8 against a reference: lengths, code points, cuts, searches")
{
    NoLeak leak;
    Random rnd(5);
    for (int round = 0; round < 400; ++round) {
        std::vector<uint32_t> cps;
        for (int n = rnd.below(12); n > 0; --n)
            cps.push_back(rnd.below(3) ? random_code_point(rnd) : uint32_t('a' + rnd.below(3)));
        const string bytes = encode(cps);
        CUtf8Str s(bytes.c_str());
        const size_t n = cps.size();
        CAPTURE(bytes);
        REQUIRE(s.GetLength() == n);
        CHECK(s.length == bytes.size());
        for (size_t i = 0; i < n; ++i)
            CHECK(s.GetCodePoint(int(i)) == cps[i]);
        CHECK(s.GetCodePoint(int(n)) == 0);
        CHECK(s.GetCodePoint(-1) == 0);
        int k = rnd.below(int(n) + 3) - 1, c = rnd.below(int(n) + 2) - 1;
        size_t kk = size_t(std::max(k, 0)), cc = size_t(std::max(c, 0));
        CHECK(text_of(s.Left(k)) == encode(cps, 0, kk));
        CHECK(text_of(s.Right(k)) == encode(cps, kk >= n ? 0 : n - kk));
        CHECK(text_of(s.Mid(k, c)) == encode(cps, kk, kk + cc));
        CHECK(text_of(s.Mid(k)) == encode(cps, kk));
        if (n) {
            string needle = encode(cps[size_t(rnd.below(int(n)))]);
            size_t from = encode(cps, 0, kk).size();
            const char* hit = s.Find(needle.c_str(), k);
            size_t expected = kk < n ? bytes.find(needle, from) : string::npos;
            CHECK((hit ? size_t(hit - s.buffer) : string::npos) == expected);
            uint32_t x = cps[size_t(rnd.below(int(n)))], y = random_code_point(rnd);
            size_t first = 0;
            while (first < n && cps[first] != x && cps[first] != y)
                ++first;
            CHECK(s.FindOneOf((encode(y) + encode(x)).c_str()) == int(first));
            std::vector<uint32_t> kept, removed;
            for (uint32_t cp : cps)
                (cp == x || cp == y ? kept : removed).push_back(cp);
            CUtf8Str keep(s), remove(s);
            CHECK(text_of(keep.KeepChars((encode(x) + encode(y)).c_str())) == encode(kept));
            CHECK(text_of(remove.RemoveChars((encode(x) + encode(y)).c_str())) == encode(removed));
        }
    }
}

TEST_CASE("random invalid bytes: every walk ends and stays inside the text")
{
    Random rnd(9);
    for (int round = 0; round < 2000; ++round) {
        string bytes;
        for (int n = 1 + rnd.below(10); n > 0; --n)
            bytes += char(rnd.below(2) ? 0x80 + rnd.below(0x80) : 1 + rnd.below(0xFF));
        CUtf8Str s(bytes.data(), int(bytes.size()));
        uint32_t n = s.GetLength();
        CHECK(n <= s.length);
        for (int i = -1; i <= int(n) + 1; ++i) {
            CHECK(s.Left(i).length <= s.length);
            CHECK(s.Right(i).length <= s.length);
            CHECK(s.Mid(i, 2).length <= s.length);
            const char* hit = s.Find("", i);
            CHECK((!hit || (hit >= s.buffer && hit < s.buffer + s.length)));
            uint32_t cp = s.GetCodePoint(i);
            CHECK((i >= 0 && uint32_t(i) < n ? true : cp == 0));
        }
        CHECK(s.FindOneOf(bytes.c_str() + bytes.size() - 1) < int(n));
        CUtf8Str t(s);
        CHECK(t.KeepChars("\xF8\xFF\x80").length <= s.length);
        CHECK(t.RemoveChars("\xC3").length <= s.length);
    }
    // A lead byte that promises more than the text holds.
    CUtf8Str cut("a\xE2\x82");
    CHECK(cut.GetLength() == 2);
    CHECK(cut.GetCodePoint(1) == 0xFFFD);
    CHECK(text_of(cut.Right(1)) == "\xE2\x82");
    CHECK(CUtf8Str("\x80\x80").GetLength() == 2);
    CHECK(CUtf8Str("\xFC\x84\x80\x80\x80\x80").GetCodePoint(0) == 0x4000000);
    CHECK(CUtf8Str("\xF8\x88\x80\x80\x80").GetCodePoint(0) == 0x200000);
}

TEST_CASE("UTF-8 rows: characters for positions, bytes for the rest")
{
    CUtf8Str s("a\xC3\xA9\xE2\x82\xAC");
    CHECK(s.GetLength() == 3);
    CHECK(s.length == 6);
    CHECK(text_of(s.Left(2)) == "a\xC3\xA9");
    CHECK(text_of(s.Right(1)) == "\xE2\x82\xAC");
    CHECK(text_of(s.Mid(1, 1)) == "\xC3\xA9");
    CHECK(text_of(s.Left(0)) == "");
    CHECK(text_of(s.Right(0)) == "");
    CHECK(s.GetCodePoint(2) == 0x20AC);
    for (const char* tail : {"\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC", "a\xC3\xA9\xE2\x82\xAC"})
        CHECK(s.EndsWith(tail) == 1);
    CHECK(s.EndsWith("\xC3\xA9") == 0);
    CHECK(s.Find("\xE2\x82\xAC", 1) == s.buffer + 3);
    CHECK(s.Find("a", 1) == nullptr);
    CHECK(s.Find("", 2) == s.buffer + 3);
    CHECK(s.FindOneOf("\xE2\x82\xACx") == 2);
    CUtf8Str removed(s), kept(s), replaced(s);
    CHECK(text_of(removed.RemoveChars("\xC3\xA9")) == "a\xE2\x82\xAC");
    CHECK(text_of(kept.KeepChars("\xC3\xA9")) == "\xC3\xA9");
    CHECK(text_of(replaced.ReplaceChars("\xC3\xA9", '?')) == "a??\xE2\x82\xAC");
    CHECK(text_of(replaced.ReplaceChars("?", 0)) == "a\xE2\x82\xAC");
    CHECK(text_of(CUtf8Str("xaax").RemoveRepeats('a').Trim('x')) == "a");
    CHECK(text_of(CUtf8Str("a\\x41").Unescape().Replace("A", "\xC3\xA9")) == "a\xC3\xA9");
    CHECK(text_of(CUtf8Str().FromInt(-12)) == "-12");
}

TEST_CASE("routes between the three: the reserved room, round trips, a double-byte page, no block for nothing")
{
    NoLeak leak;
    CUtf8Str e(L"\u00e9");
    CHECK(e.length == 2);
    CHECK(e.capacity == 11);
    CHECK(CUtf8Str("").buffer == nullptr);
    CUtf8Str one("", 0);
    CHECK(one.capacity == 1);
    CHECK(CUtf8Str("abc", 2).capacity == 3);
    // Every character of the Western page: narrow -> UTF-8 -> wide -> narrow.
    string page;
    for (int b = 0x20; b < 0x100; ++b)
        if (b != 0x81 && b != 0x8D && b != 0x8F && b != 0x90 && b != 0x9D)
            page += char(b);
    CAStr narrow(page.c_str());
    CUtf8Str utf8(narrow);
    CWStr wide(utf8);
    CHECK(wide.length == page.size());
    CHECK(text_of(CAStr(wide)) == page);
    CHECK(text_of(CUtf8Str(wide)) == text_of(utf8));
    CHECK(text_of(CWStr().FromUtf8(utf8.GetStr(), -3)) == text_of(wide));
    CHECK(text_of(CUtf8Str().FromAnsi("\xE9", 1)) == "\xC3\xA9");
    CHECK(text_of(CUtf8Str().FromWide(L"\u20ac", 1)) == "\xE2\x82\xAC");
    {
        NarrowCodePage dbcs(932);
        CHECK(text_of(CUtf8Str(CAStr("\x82\xA0"))) == "\xE3\x81\x82");
        CHECK(text_of(CAStr(CUtf8Str("\xE3\x81\x82\xE3\x81\x84"))) == "");
    }
    CHECK(text_of(CAStr(CUtf8Str("\xE3\x81\x82"))) == "?");
    CUtf8Str kept("abc");
    {
        AllAllocationsFail fail;
        kept = L"wide";
        CHECK(text_of(kept) == "");
        CUtf8Str none("abc", 3);
        CHECK(none.buffer == nullptr);
        CWStr w(L"abc");
        CHECK(w.length == 0);
    }
    // A wide target whose reservation fails keeps its text.
    CWStr w(L"abc");
    CUtf8Str longer("a longer text");
    {
        AllAllocationsFail fail;
        w = longer;
    }
    CHECK(text_of(w) == L"abc");
}
