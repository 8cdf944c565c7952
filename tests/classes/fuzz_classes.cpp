#include <doctest/doctest.h>

#include <algorithm>
#include <string>

#include "alloc_check.h"
#include "classes/castr.h"
#include "classes/cutf8str.h"
#include "classes/cwstr.h"
#include "classes_support.h"
#include "fenced.h"
#include "fuzz.h"
#include "wide_text.h"

using namespace zorlib;
using std::string;
using std::wstring;

namespace {

// Bytes from hostile wide text: the low byte of each unit, zeros kept out.
string bytes_of(const wstring& text)
{
    string out;
    for (wchar_t unit : text)
        out += char(unit & 0xFF ? unit : 0x80);
    return out;
}

}

TEST_CASE("fuzz: wide class editing with extreme positions and fenced arguments")
{
    NoLeak leak;
    fuzz_loop(1500, [](FuzzRng& rng) {
        CWStr s(rng.text(12).c_str());
        for (int op = 0; op < 10; ++op) {
            const wstring text = rng.text(6, nullptr, rng.chance(20));
            Fenced<wchar_t> arg(text);
            const int32_t a = rng.extreme(), b = rng.extreme();
            const wstring before(s.GetStr(), s.length);
            const size_t first = size_t(std::clamp<int64_t>(a, 0, int64_t(before.size())));
            CAPTURE(op);
            CAPTURE(a);
            CAPTURE(b);
            switch (rng.below(9)) {
            case 0: s.Assign(arg.data(), int(rng.below(uint32_t(text.size()) + 1))); break;
            case 1: s.Append(arg.data(), int(rng.below(uint32_t(text.size()) + 1))); break;
            case 2:
                CHECK(text_of(s.Mid(a, b)) == (a >= int64_t(before.size()) ? wstring()
                      : before.substr(first, size_t(std::max(b, 0)))));
                break;
            case 3:
                CHECK(text_of(s.Left(a)) == before.substr(0, size_t(std::max(a, 0))));
                CHECK(s.GetCharAt(a) == (a >= 0 && uint32_t(a) < before.size() ? before[size_t(a)] : 0));
                break;
            case 4: {
                const wchar_t* hit = s.Find(arg.data(), a);
                CHECK((!hit || (hit >= s.buffer + first && hit < s.buffer + s.length)));
                break;
            }
            case 5: s.Replace(arg.data(), rng.chance(50) ? s.GetStr() + first : arg.data()); break;
            case 6: s.Unescape(); break;
            case 7: {
                // Sizes beyond a few pages are refused here rather than granted.
                AllAllocationsFail fail;
                CHECK(s.Reserve(a > 100000 || a < 0 ? a : 100001, 1) == 0);
                CHECK(text_of(s) == before);
                break;
            }
            default: s.ReleaseBuffer(a > 0 ? std::min(a, 64) : -1); break;
            }
            REQUIRE((s.buffer == nullptr || s.buffer[s.length] == 0));
            REQUIRE((s.buffer != nullptr || s.length == 0));
        }
    });
}

TEST_CASE("fuzz: conversions into fenced rooms from fenced, unterminated sources")
{
    fuzz_loop(2000, [](FuzzRng& rng) {
        const wstring wide = rng.text(10, nullptr, rng.chance(20));
        const string narrow = bytes_of(rng.text(10));
        const int room = int(rng.below(24));
        CAPTURE(room);
        Fenced<wchar_t> wideSource{wide.size()}, wideOut{size_t(room)};
        Fenced<char> narrowSource{narrow.size()}, narrowOut{size_t(room)};
        std::copy(wide.begin(), wide.end(), wideSource.data());
        std::copy(narrow.begin(), narrow.end(), narrowSource.data());
        // Each result is checked before the next call writes the same room.
        auto terminated = [room](int r, const auto* out) { return r >= 0 && r <= room && (r == 0 || out[r - 1] == 0); };
        CHECK(terminated(AnsiToWide(wideOut.data(), narrowSource.data(), room, int(narrow.size())), wideOut.data()));
        CHECK(terminated(Utf8ToWide(wideOut.data(), narrowSource.data(), room, int(narrow.size())), wideOut.data()));
        CHECK(terminated(WideToAnsi(narrowOut.data(), wideSource.data(), room, int(wide.size())), narrowOut.data()));
        CHECK(terminated(WideToUtf8(narrowOut.data(), wideSource.data(), room, int(wide.size())), narrowOut.data()));
        CWStr w;
        w.FromUtf8(narrowSource.data(), int(narrow.size()));
        CHECK(w.length <= narrow.size());
        CAStr a;
        a.FromWide(wideSource.data(), int(wide.size()));
        CHECK(a.length <= wide.size() + 1);
    });
}

TEST_CASE("fuzz: UTF-8 walks and hexadecimal decoding over hostile bytes")
{
    NoLeak leak;
    fuzz_loop(2000, [](FuzzRng& rng) {
        const string bytes = bytes_of(rng.text(14));
        Fenced<char> set(bytes_of(rng.text(4)));
        CUtf8Str s(bytes.c_str());
        const uint32_t chars = s.GetLength();
        const int32_t a = rng.extreme(), b = rng.extreme();
        CHECK(chars <= s.length);
        CHECK(s.Mid(a, b).length <= s.length);
        CHECK(s.Right(a).length <= s.length);
        CHECK(s.FindOneOf(set.data()) < int(chars));
        const char* hit = s.Find(set.data(), a);
        CHECK((!hit || (hit >= s.buffer && hit <= s.buffer + s.length)));
        CHECK((s.GetCodePoint(a) == 0 || (a >= 0 && uint32_t(a) < chars)));
        CUtf8Str kept(s);
        CHECK(kept.KeepChars(set.data()).length <= s.length);
        CAStr hex(bytes.c_str());
        const char* error = nullptr;
        hex.HexDecode(&error);
        if (error)
            CHECK(text_of(hex) == bytes);
        else
            CHECK(hex.length <= (bytes.size() + 1) / 2);
        CHECK((!error || (error >= hex.buffer && error < hex.buffer + hex.length)));
    });
}
