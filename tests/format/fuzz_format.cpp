#include <doctest/doctest.h>

#include <math.h>
#include <stdio.h>

#include <algorithm>
#include <string>

#include "fenced.h"
#include "frame/zor_platform.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "wide_text.h"
#include "zor_fm.h"

namespace {

// Every allocation of this program ends at a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

// The readers as the header tells them, over 16-bit units.
template <class Integer, bool Signed>
Integer read_integer(const std::wstring& text)
{
    uint32_t value = 0;
    bool negative = false;
    for (wchar_t unit : text) {
        if (unit >= L'0' && unit <= L'9')
            value = value * 10u + uint32_t(unit - L'0');
        else if (Signed && (unit == L'+' || unit == L'-'))
            negative = unit == L'-';
    }
    return Integer(negative ? 0u - value : value);
}

double read_double(const std::wstring& text)
{
    double value = 0, sign = 1, scale = 1;
    int decimals = 0;
    bool fraction = false;
    for (wchar_t unit : text) {
        if (unit == L'+' || unit == L'-')
            sign = unit == L'-' ? -1 : 1;
        else if (unit == L'.' || unit == L',')
            fraction = true, decimals = 0;
        else if (unit >= L'0' && unit <= L'9' && !(fraction && decimals == 19))
            value = value * 10 + double(unit) - 48, decimals += fraction;  // the code first, then 48 off, as the reader sums
    }
    for (int i = 0; i < decimals; ++i)
        scale *= 10;
    return sign * value / scale;
}

}

TEST_CASE("fuzz: FM pictures of any letters over extreme values into fields that end at a no-access page")
{
    fuzz_loop(10000, [](FuzzRng& rng) {
        const std::wstring picture = rng.text(rng.chance(10) ? 400 : 24, L"#$*<.,+-&/^ xA#$$");
        const double value = rng.chance(30) ? double(int32_t(rng.next())) : rng.number();
        static wchar_t mine[8];
        for (wchar_t& unit : mine)
            unit = rng.pick({L'#', L'$', L'*', L'.', L',', L'+', L'-', L'<', L'x'});
        const wchar_t* const formats[] = {nullptr, GetLLDblFormat(), mine};
        const wchar_t* format = rng.pick(formats);
        const int32_t whole = int32_t(picture.size());
        const int32_t length = rng.chance(5) ? std::min(rng.extreme(), whole) : whole;
        const Fenced<wchar_t> in(picture);
        Fenced<wchar_t> out(picture.size());
        int32_t complete = -1;
        CAPTURE(picture);
        CAPTURE(value);
        const int32_t n = FMFormatDouble(format, in.data(), length, value, out.data(), &complete);
        CHECK(n >= 0);
        CHECK(size_t(n) <= picture.size());
        CHECK((complete == 0 || complete == 1));
        // Forced digits and a point print the low digits of a whole number exactly.
        if (!format && value == floor(value) && fabs(value) < 1e15) {
            const int32_t digits = rng.between(1, 18), decimals = rng.between(0, 3);
            const std::wstring forced = std::wstring(size_t(digits), L'$') + (decimals ? L"." : L"") +
                                        std::wstring(size_t(decimals), L'$');
            wchar_t expected[64];
            zor::counted_swprintf(expected, 64, L"%0*.*f", digits + (decimals ? decimals + 1 : 0), decimals,
                                  fabs(value));
            const std::wstring all = expected;
            Fenced<wchar_t> field(forced.size());
            const int32_t m = FMFormatDouble(nullptr, forced.c_str(), int32_t(forced.size()), value, field.data(), nullptr);
            CHECK(std::wstring(field.data(), size_t(m)) == all.substr(all.size() - forced.size()));
        }
    });
}

TEST_CASE("fuzz: FMFormatStr fills fields of exactly their size from any text")
{
    fuzz_loop(10000, [](FuzzRng& rng) {
        const std::wstring picture =
            std::wstring(1, rng.pick({L'#', L'$', L'*', L'+', L',', L'-', L'.', L'&', L'/', L'^', L'x'})) +
            rng.text(20, L"#$*<.,+-/ ");
        const int32_t length = rng.chance(10) ? rng.between(-3, 0) : int32_t(picture.size());
        const Fenced<wchar_t> in(picture), text(rng.text(rng.chance(10) ? 300 : 30));
        const size_t textLength = wcslen(text.data());
        const wchar_t kind = length > 0 ? picture[0] : 0;
        const size_t room = kind == L'^' ? textLength + 1 : kind == L'&' ? 2 : kind == L'x' || !kind ? 1
                                                                                          : picture.size() + 1;
        Fenced<wchar_t> out(room);
        CAPTURE(picture);
        const wchar_t* given = rng.chance(5) ? nullptr : text.data();
        const int32_t n = FMFormatStr(in.data(), length, given, out.data());
        REQUIRE(n >= 0);
        REQUIRE(size_t(n) < room);
        CHECK(out.data()[n] == 0);
        if (kind == L'/')
            CHECK(std::wstring(out.data(), size_t(n)) ==
                  (std::wstring(given ? given : L"") + std::wstring(picture.size(), L' ')).substr(0, picture.size()));
    });
}

TEST_CASE("fuzz: the five FM readers on any text against a reference")
{
    fuzz_loop(20000, [](FuzzRng& rng) {
        const Fenced<wchar_t> text(rng.text(rng.chance(10) ? 200 : 30, L"0123456789+-.,e x\x0661\xA0"));
        const std::wstring t = text.data();
        CAPTURE(t);
        CHECK(FMToInt(text.data()) == read_integer<int32_t, true>(t));
        CHECK(FMToLong(text.data()) == read_integer<int32_t, true>(t));
        CHECK(FMToUInt(text.data()) == read_integer<uint32_t, false>(t));
        CHECK(FMToULong(text.data()) == read_integer<uint32_t, false>(t));
        const double read = FMToDouble(text.data()), expected = read_double(t);
        CHECK((read == expected || (isinf(read) && isinf(expected))));
    });
}
