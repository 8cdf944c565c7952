#include <doctest/doctest.h>

#include <string.h>
#include <wctype.h>

#include "locale_scope.h"
#include "td_reference.h"

using namespace td_reference;

namespace {

const TDDate kMarker = {0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA};
const TDDate kFailed = make(1, 1, 1, 1, 1, 1, 1);  // stands for "no result" in the tables

bool same(const TDDate& a, const TDDate& b) { return memcmp(&a, &b, sizeof a) == 0; }

// The record read, or kFailed after checking that a failure left it alone.
TDDate read(const wchar_t* text, const wchar_t* picture)
{
    TDDate date = kMarker;
    TDDate* result = TDFromString(text, picture, &date);
    CHECK((result == &date || (result == nullptr && same(date, kMarker))));
    return result ? date : kFailed;
}

// The text copied to end just before a page the process may not read, so
// that a reader going past the terminator faults at once.
const wchar_t* fenced(const std::wstring& text)
{
    static char* const fence = [] {
        char* base = static_cast<char*>(VirtualAlloc(nullptr, 8192, MEM_COMMIT, PAGE_READWRITE));
        DWORD old;
        REQUIRE((base && VirtualProtect(base + 4096, 4096, PAGE_NOACCESS, &old)));
        return base + 4096;
    }();
    size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    return static_cast<const wchar_t*>(memcpy(fence - bytes, text.c_str(), bytes));
}

}

// Plain fields of every size and full names are left to the round trip below.
TEST_CASE("reading by a picture: limits, literals, repetitions, the clock and names")
{
    struct Row { const wchar_t *text, *picture; TDDate expected; };
    const Row rows[] = {
        {L"31-12-2012", L"dd.MM.yyyy", kFailed},  {L"30.02.2012", L"dd.MM.yyyy", kFailed},
        {L"31.02", L"dd.MM", make(0, 2, 31)},     {L"at 7:05", L"H:mm", make(0, 0, 0, 7, 5)},
        {L"123", L"dd", make(0, 0, 12)},          {L"\u0661\uFF12", L"dd", make(0, 0, 12)},
        {L"5", L"y", make(2005, 0, 0)},           {L"123456", L"yyyy", make(1234, 0, 0)},
        {L"", L"yy", make(2000, 0, 0)},           {L"", L"d", kFailed},
        {L"32", L"d", kFailed},                   {L"0", L"d", kFailed},
        {L"13", L"M", kFailed},                   {L"0", L"MM", kFailed},
        {L"24", L"H", kFailed},                   {L"12", L"h", kFailed},
        {L"60", L"m", kFailed},                   {L"60", L"s", kFailed},
        {L"5/", L"d/d", make(0, 0, 5)},           {L"05:", L"hh:HH", make(0, 0, 0, 5)},
        {L"2012", L"yyyyyy", make(2012, 0, 0)},   {L"3.", L"dd.dddd", make(0, 0, 3)},
        {L"'7'", L"'d'", make(0, 0, 7)},          {L"7", L"'d'", kFailed},
        {L" 2012", L"gg yyyy", make(2012, 0, 0)}, {L"AD 2012", L"gg yyyy", kFailed},
        {L"31", L"dd.", kFailed},                 {L"3 p", L"h t", make(0, 0, 0, 15)},
        {L"12:00 PM", L"HH:mm tt", kFailed},      {L"11:00 PM", L"HH:mm tt", make(0, 0, 0, 23)},
        {L"4", L"ht", make(0, 0, 0, 4)},          {L"4", L"htt", kFailed},
        {L"4 P", L"h tt", kFailed},               {L"4 X", L"h t", kFailed},
        {L"4 pm.", L"h tt.", make(0, 0, 0, 16)},  {L"Nomonth", L"MMMM", kFailed},
        {L"Noday 5", L"dddd d", make(0, 0, 0)},  // the number is a repetition
    };
    for (const Row& row : rows) {
        CAPTURE(row.picture);
        CHECK(same(read(row.text, row.picture), row.expected));
    }
    LocaleSetting shortDate(LOCALE_SSHORTDATE, L"yyyy/MM/dd");
    CHECK(same(read(L"2012/12/31", nullptr), make(2012, 12, 31)));
    for (int i = 0; i < 12; ++i) {
        std::wstring abbreviated = locale_text(LOCALE_SABBREVMONTHNAME1 + LCTYPE(i));
        CHECK(read(abbreviated.c_str(), L"MMM").month == (abbreviated.size() == 3 ? i + 1 : 1));
    }
}

TEST_CASE("hostile text never leads the reader past its end")
{
    auto run = [](size_t n) { return std::wstring(n, L'z') + L"9 " + std::wstring(n, L'7'); };
    const std::wstring texts[] = {L"Monday January 2012", L"31.12.2012 23:59:59 PM", run(40),
                                  run(41), run(100)};
    for (const wchar_t* picture :
         {L"dddd MMMM yyyy", L"MMMM dddd", L"ddd MMM", L"dd.MM.yyyy HH:mm:ss tt", L"h:mm t"}) {
        for (const std::wstring& whole : texts) {
            for (size_t cut = 0; cut <= whole.size(); ++cut)
                read(fenced(whole.substr(0, cut)), picture);
        }
    }
    // A run longer than a name is cut at 39 units; its rest stays in the text.
    std::wstring january = locale_text(LOCALE_SMONTHNAME1) + std::wstring(40, L'q');
    CHECK(same(read(january.c_str(), L"MMMM"), kFailed));
    CHECK(same(read((std::wstring(40, L'b') + L"7").c_str(), L"ddddbH"), make(0, 0, 0, 7)));
}

TEST_CASE("writing measures first, reports a short buffer and joins the parts")
{
    TDDate date = make(2012, 12, 31, 13, 5, 7);
    wchar_t buffer[64];
    int32_t length = 64;
    auto text = [&](const wchar_t* datePicture, const wchar_t* timePicture) {
        wchar_t* result = TDToString(&date, datePicture, timePicture, buffer, &length);
        return std::wstring(result == buffer ? buffer : L"(null)");
    };
    std::wstring both = text(nullptr, nullptr);
    CHECK((both.find(L"2012") < both.find(L":05") && both.find(L":05") != both.npos));
    CHECK((text(nullptr, L"HH:mm:ss") == L"13:05:07" && length == 64));
    wmemset(buffer, L'#', 64);
    length = 0;
    CHECK((text(L"dd.MM.yyyy", L" HH") == L"(null)" && length == 14 && buffer[0] == L'#'));
    length = 13;
    CHECK((text(L"dd.MM.yyyy", L" HH") == L"(null)" && length == 14 && buffer[0] == 0));
    CHECK(text(L"dd.MM.yyyy", L" HH") == L"31.12.2012 13");
    CHECK((TDToString(&date, L"yyyy", nullptr, nullptr, &length) == nullptr && length == 5));
    CHECK(TDToString(&date, L"yyyy", nullptr, buffer, nullptr) == nullptr);
    // Each part looks only at its own fields; a part the platform refuses is left out.
    date = make(1500, 1, 1);
    length = 0;
    CHECK((text(L"yyyy", nullptr) == L"(null)" && length == 1 && text(L"yyyy", nullptr).empty()));
    date = make(2012, 1, 1, 25);
    length = 64;
    CHECK(text(L"yyyy", L"HH") == L"2012");
    CHECK(_wtoi(TDToString(nullptr, L"yyyy", nullptr, buffer, &length)) == TDGetYears(nullptr));
}

TEST_CASE("text written by a picture reads back to the same date, in any case")
{
    const wchar_t* pictures[2][2] = {{L"dd.MM.yyyy ", L"HH:mm:ss"},
                                     {L"dddd, MMMM yyyy, ", L"hh:mm:ss tt"}};
    Random r{47689};
    for (int i = 0; i < 1000; ++i) {
        TDDate date = r.date();
        const wchar_t** picture = pictures[i % 2];
        wchar_t text[100];
        int32_t length = 100;
        date.milliSeconds = 0;
        REQUIRE(TDToString(&date, picture[0], picture[1], text, &length) == text);
        if (i % 2) {  // a day name and a day number cannot share a picture
            for (wchar_t* unit = text; *unit; ++unit)
                *unit = wchar_t(i % 4 == 1 ? towupper(*unit) : towlower(*unit));
            date.dayOfWeek = uint16_t(weekday(day_number(date)));
            date.day = 0;
        }
        CAPTURE(std::string(text, text + wcslen(text)));
        // The 12-hour clock writes 12 for midnight and noon, which reading refuses.
        TDDate expected = i % 2 && date.hour % 12 == 0 ? kFailed : date;
        CHECK(same(read(text, (std::wstring(picture[0]) + picture[1]).c_str()), expected));
    }
}
