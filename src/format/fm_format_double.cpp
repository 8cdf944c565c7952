#include "zor_fm.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "../frame/zor_alloc.h"
#include "fm_locale_marks.h"

namespace {

// The widest double has 309 integer digits, which leaves room for about 40
// decimals behind them; a request beyond that makes the conversion fail
// rather than overrun.
constexpr size_t kDigitBufferBytes = 349;
constexpr wchar_t kLeftJustify = L'<';

enum Position { kZeroSuppress, kForced, kAsteriskFill, kOwnFill, kPoint, kSeparator, kPlus, kMinus };

bool is_digit_position(const wchar_t* format, wchar_t unit)
{
    return unit == format[kZeroSuppress] || unit == format[kForced] ||
           unit == format[kAsteriskFill] || unit == format[kOwnFill] || unit == kLeftJustify;
}

struct Walk {
    const char* digits;
    int32_t digitLen;
    int32_t cursor;
    int32_t lastSig;
    int32_t intLeft;
    int32_t signPos = -1;
    wchar_t signChar;
    wchar_t fill = L' ';
    bool seen = false;

    // Positions behind what the conversion delivered show 0 rather than
    // whatever lies behind the digit string.
    wchar_t digit() const { return cursor < digitLen ? static_cast<wchar_t>(digits[cursor]) : L'0'; }

    // The last integer position of a zero-suppressed run turns the fill into
    // 0, so that a digit always stands before the point.
    void count_integer_position()
    {
        if (--intLeft == 0) {
            fill = L'0';
            seen = true;
        }
    }
};

int32_t put_mark(wchar_t* out, const zor_fm::MarkText& mark)
{
    memcpy(out, mark.text, static_cast<size_t>(mark.len) * sizeof(wchar_t));
    return mark.len;
}

}

int32_t FMFormatDouble(const wchar_t* format, const wchar_t* picture, int32_t pictureLen,
                       double value, wchar_t* out, int32_t* complete)
{
    char* digits = static_cast<char*>(zor_malloc(kDigitBufferBytes));
    if (!digits) {
        if (complete)
            *complete = 0;
        if (out)
            out[0] = 0;
        return 0;
    }
    if (!format)
        format = DefaultDblFormat;

    int32_t digitCount = 0;
    int32_t decimals = 0;
    bool behindPoint = false;
    for (int32_t i = 0; i < pictureLen; ++i) {
        if (is_digit_position(format, picture[i])) {
            ++digitCount;
            decimals += behindPoint;
        } else if (picture[i] == format[kPoint]) {
            behindPoint = true;
        }
    }
    int32_t intPositions = digitCount - decimals;

    int decpt = 0;
    int negative = 0;
    bool converted = _fcvt_s(digits, kDigitBufferBytes, value, decimals, &decpt, &negative) == 0;
    if (!converted) {
        digits[0] = 0;
        decpt = 0;
        negative = signbit(value) ? 1 : 0;
    }

    Walk w;
    w.digits = digits;
    w.digitLen = static_cast<int32_t>(strnlen(digits, kDigitBufferBytes));
    w.cursor = decpt - intPositions;
    w.lastSig = decpt > 0 ? decpt : 0;
    for (int32_t i = w.lastSig; i < w.digitLen; ++i) {
        if (digits[i] != '0')
            w.lastSig = i;
    }
    w.intLeft = intPositions;
    w.signChar = negative ? L'-' : L' ';

    zor_fm::LocaleMarks marks;
    int32_t o = 0;
    for (int32_t i = 0; i < pictureLen; ++i) {
        wchar_t unit = picture[i];
        if (unit == format[kPlus]) {
            w.signPos = o;
            out[o++] = w.fill;
            if (!negative)
                w.signChar = L'+';
        } else if (unit == format[kMinus]) {
            w.signPos = o;
            out[o++] = w.fill;
        } else if (unit == format[kForced] || unit == format[kAsteriskFill] ||
                   unit == format[kOwnFill]) {
            wchar_t lead = unit == format[kForced] ? L'0' : unit == format[kAsteriskFill] ? L'*' : unit;
            out[o++] = w.cursor < 0 ? lead : w.digit();
            w.seen = true;
            ++w.cursor;
        } else if (unit == format[kZeroSuppress] || unit == kLeftJustify) {
            w.count_integer_position();
            if (w.cursor >= 0) {
                out[o++] = w.cursor <= w.lastSig ? w.digit() : L' ';
                w.seen = true;
            } else if (unit == format[kZeroSuppress] || w.fill != L' ') {
                // Each suppressed position pulls a floating sign up to itself.
                if (!w.seen)
                    w.signPos = o;
                out[o++] = w.fill;
            }
            ++w.cursor;
        } else if (unit == format[kPoint]) {
            o += put_mark(out + o, marks.point());
        } else if (unit == format[kSeparator]) {
            if (w.seen) {
                o += put_mark(out + o, marks.separator());
            } else {
                w.signPos = o;
                out[o++] = L' ';
            }
        } else {
            out[o++] = unit;
        }
    }
    if (w.signPos != -1)
        out[w.signPos] = w.signChar;
    if (complete)
        *complete = converted && w.cursor >= w.lastSig;
    zor_free(digits);
    return o;
}

int32_t FMFormatInt(const wchar_t* format, const wchar_t* picture, int32_t pictureLen,
                    int32_t value, wchar_t* out, int32_t* complete)
{
    return FMFormatDouble(format, picture, pictureLen, static_cast<double>(value), out, complete);
}

int32_t FMFormatUInt(const wchar_t* format, const wchar_t* picture, int32_t pictureLen,
                     uint32_t value, wchar_t* out, int32_t* complete)
{
    return FMFormatDouble(format, picture, pictureLen, static_cast<double>(value), out, complete);
}
