#include "zor_fm.h"

namespace {

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                   1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
constexpr int32_t kMaxDecimals = sizeof(kPowersOfTen) / sizeof(kPowersOfTen[0]) - 1;

bool is_digit(wchar_t unit)
{
    return unit >= L'0' && unit <= L'9';
}

// Digits in unsigned arithmetic, so that overflow wraps as the readers
// promise instead of being undefined; with signs, the last one wins.
template <bool Signed>
uint32_t read_integer(const wchar_t* text)
{
    uint32_t value = 0;
    bool negative = false;
    for (const wchar_t* p = text; p && *p; ++p) {
        if (is_digit(*p))
            value = value * 10u + static_cast<uint32_t>(*p - L'0');
        else if (Signed && (*p == L'+' || *p == L'-'))
            negative = *p == L'-';
    }
    return negative ? 0u - value : value;
}

}

double FMToDouble(const wchar_t* text)
{
    double value = 0.0;
    double sign = 1.0;
    int32_t decimals = 0;
    bool inFraction = false;
    for (const wchar_t* p = text; p && *p; ++p) {
        if (*p == L'+' || *p == L'-') {
            sign = *p == L'-' ? -1.0 : 1.0;
        } else if (*p == L'.' || *p == L',') {
            inFraction = true;
            decimals = 0;
        } else if (is_digit(*p) && !(inFraction && decimals == kMaxDecimals)) {
            value = value * 10.0 + static_cast<double>(*p) - 48.0;
            decimals += inFraction;
        }
    }
    return sign * value / kPowersOfTen[decimals];
}

int32_t FMToInt(const wchar_t* text)
{
    return static_cast<int32_t>(read_integer<true>(text));
}

int32_t FMToLong(const wchar_t* text)
{
    return static_cast<int32_t>(read_integer<true>(text));
}

uint32_t FMToUInt(const wchar_t* text)
{
    return read_integer<false>(text);
}

uint32_t FMToULong(const wchar_t* text)
{
    return read_integer<false>(text);
}
