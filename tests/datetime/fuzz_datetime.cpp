#include <doctest/doctest.h>

#include <stdint.h>

#include <string>

#include "fenced.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "wide_text.h"
#include "zor_td.h"

namespace {

// Every allocation of this program ends at a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

// Days since 1 March of year 0, the proleptic Gregorian way, and back: an
// independent count against which the field-by-field walks are checked.
int64_t day_number(int64_t y, int64_t m, int64_t d)
{
    y -= m <= 2;
    const int64_t era = y / 400, yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    return era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy;
}

void civil(int64_t n, TDDate* date)
{
    const int64_t era = n / 146097, doe = n - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153, m = mp < 10 ? mp + 3 : mp - 9;
    date->year = uint16_t(yoe + era * 400 + (m <= 2));
    date->month = uint16_t(m);
    date->day = uint16_t(doy - (153 * mp + 2) / 5 + 1);
}

int days_in(int64_t y, int64_t m)
{
    return int(day_number(m == 12 ? y + 1 : y, m == 12 ? 1 : m + 1, 1) - day_number(y, m, 1));
}

// The point in time moved by a count of days and time units, then by whole
// months with the day clipped to the month's length.
TDDate moved(const TDDate& at, const TDDate& by, int sign)
{
    const int64_t perDay = 86400000;
    int64_t ms = (day_number(at.year, at.month, at.day) * perDay + at.hour * 3600000ll + at.minute * 60000ll +
                  at.second * 1000ll + at.milliSeconds) +
                 sign * (by.day * perDay + by.hour * 3600000ll + by.minute * 60000ll + by.second * 1000ll +
                         by.milliSeconds);
    TDDate r = {};
    civil(ms / perDay, &r);
    ms %= perDay;
    r.hour = uint16_t(ms / 3600000), r.minute = uint16_t(ms / 60000 % 60);
    r.second = uint16_t(ms / 1000 % 60), r.milliSeconds = uint16_t(ms % 1000);
    const int64_t months = r.year * 12ll + (r.month - 1) + sign * (by.year * 12ll + by.month);
    r.year = uint16_t(months / 12), r.month = uint16_t(months % 12 + 1);
    if (r.day > days_in(r.year, r.month))
        r.day = uint16_t(days_in(r.year, r.month));
    return r;
}

std::string shown(const TDDate& d)
{
    char text[80];
    snprintf(text, sizeof text, "%u-%u-%u %u:%u:%u.%u", d.year, d.month, d.day, d.hour, d.minute, d.second,
             d.milliSeconds);
    return text;
}

TDDate any_fields(FuzzRng& rng)
{
    TDDate d;
    uint16_t* fields[] = {&d.year, &d.month, &d.dayOfWeek, &d.day, &d.hour, &d.minute, &d.second, &d.milliSeconds};
    for (uint16_t* field : fields)
        *field = uint16_t(rng.chance(30) ? rng.pick({0, 1, 12, 13, 31, 59, 60, 999, 1000, 65535}) : rng.next());
    return d;
}

}

TEST_CASE("fuzz: TDAdd and TDSubst against a day count, and on any fields at all")
{
    fuzz_loop(50000, [](FuzzRng& rng) {
        TDDate at = {uint16_t(rng.between(300, 9000)), uint16_t(rng.between(1, 12)), 0, 1,
                     uint16_t(rng.below(24)), uint16_t(rng.below(60)), uint16_t(rng.below(60)), uint16_t(rng.below(1000))};
        at.day = uint16_t(rng.between(1, days_in(at.year, at.month)));
        const TDDate by = {uint16_t(rng.below(50)), uint16_t(rng.below(1000)), 0, uint16_t(rng.below(20000)),
                           uint16_t(rng.below(5000)), uint16_t(rng.below(5000)), uint16_t(rng.below(5000)),
                           uint16_t(rng.below(50000))};
        CAPTURE(shown(at));
        CAPTURE(shown(by));
        TDDate sum = at, difference = at;
        CHECK(shown(*TDAdd(&sum, &by)) == shown(moved(at, by, 1)));
        CHECK(shown(*TDSubst(&difference, &by)) == shown(moved(at, by, -1)));
        // Any fields at all: the walks end and give a record.
        TDDate wild = any_fields(rng);
        const TDDate interval = any_fields(rng);
        CHECK(TDAdd(&wild, &interval) == &wild);
        CHECK(TDSubst(&wild, &interval) == &wild);
        TDGetDayOfYear(&wild);
        TDGetWeekOfYear(&wild);
    });
}

TEST_CASE("fuzz: TD text both ways with random pictures, texts and buffers down to nothing")
{
    fuzz_loop(6000, [](FuzzRng& rng) {
        const Fenced<wchar_t> picture(rng.text(16, L"dMyHhmstg '/.:-,x"));
        const Fenced<wchar_t> text(rng.text(30, L"0123456789 /.:-,APMampJanFebMonday\x0661\x0662"));
        TDDate date = any_fields(rng), kept = date;
        CAPTURE(std::wstring(picture.data()));
        CAPTURE(std::wstring(text.data()));
        const wchar_t* format = rng.chance(10) ? nullptr : picture.data();
        TDDate* read = TDFromString(text.data(), format, &date);
        CHECK((read == &date || (!read && shown(date) == shown(kept))));
        if (rng.chance(50))
            date = {uint16_t(rng.between(1601, 9999)), uint16_t(rng.between(1, 12)), 0, uint16_t(rng.between(1, 28)),
                    uint16_t(rng.below(24)), uint16_t(rng.below(60)), uint16_t(rng.below(60)), 0};
        const size_t room = rng.chance(30) ? rng.below(3) : rng.below(200);
        Fenced<wchar_t> out(room);
        int32_t length = int32_t(room);
        // Wine's date formatter looks past the terminator of a picture in
        // which a month name is followed by anything, so the pictures are
        // given to it from ordinary memory.
        const std::wstring padded = std::wstring(picture.data()) + std::wstring(8, L'\0');
        const wchar_t* dateFormat = format ? padded.c_str() : nullptr;
        const wchar_t* timeFormat = rng.chance(50) ? nullptr : padded.c_str();
        const wchar_t* written = TDToString(&date, dateFormat, timeFormat, room ? out.data() : nullptr, &length);
        if (written) {
            CHECK(written == out.data());
            CHECK(wcslen(written) < room);
        } else {
            CHECK((length > int32_t(room) || length == 0 || !room));
            if (room)
                CHECK(out.data()[0] == 0);
        }
    });
}
