#include <doctest/doctest.h>

#include <string.h>

#include <string>

#include <windows.h>

#include "classes/cwstr.h"
#include "classes_support.h"
#include "frame/zor_platform.h"
#include "wide_text.h"

using namespace zorlib;

namespace {

int narrow_format(char* out, size_t count, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    int n = zor::counted_vsprintf(out, count, format, args);
    va_end(args);
    return n;
}

}

TEST_CASE("the routines count the terminator, add one behind counted text and cut at the room")
{
    struct Row { const char* src; int srcLen; int room; int result; const wchar_t* text; };
    const Row rows[] = {
        {"abc", 3, 10, 4, L"abc"}, {"abc", 3, 3, 3, L"ab"},   {"ab\0", 3, 3, 3, L"ab"},
        {"abc", -1, 10, 4, L"abc"}, {"abc", -1, 4, 4, L"abc"}, {"abc", 3, 0, 0, L""},
        {"abc", 3, 4, 4, L"abc"},   {"", 0, 5, 0, L""},
    };
    for (const Row& row : rows) {
        CAPTURE(row.src);
        CAPTURE(row.room);
        wchar_t wide[16] = {};
        CHECK(AnsiToWide(wide, row.src, row.room, row.srcLen) == row.result);
        CHECK(std::wstring(wide) == row.text);
        char narrow[16] = {}, utf8[16] = {};
        std::wstring src(row.text);
        int srcUnits = row.srcLen < 0 ? -1 : int(src.size());
        CHECK(WideToAnsi(narrow, src.c_str(), 16, srcUnits) == int(src.size()) + (src.empty() ? 0 : 1));
        CHECK(WideToUtf8(utf8, src.c_str(), 16, srcUnits) == WideToAnsi(narrow, src.c_str(), 16, srcUnits));
        CHECK(std::string(utf8) == narrow);
    }
    // A null destination measures what the platform needs and writes nothing.
    CHECK(AnsiToWide(nullptr, "abc", 10, 3) == 3);
    CHECK(Utf8ToWide(nullptr, "abc", 10, -1) == 4);
    CHECK(WideToUtf8(nullptr, L"\u00e9", 10, -1) == 3);
}

TEST_CASE("UTF-8 carries every BMP unit and every surrogate pair; bad input becomes U+FFFD")
{
    std::wstring all;
    for (unsigned u = 1; u < 0x10000; ++u)
        if (u < 0xD800 || u > 0xDFFF)
            all += wchar_t(u);
    for (unsigned high = 0xD800; high < 0xDC00; high += 0x3F)
        for (unsigned low = 0xDC00; low < 0xE000; low += 0x55)
            all += std::wstring{wchar_t(high), wchar_t(low)};
    std::string utf8(all.size() * 3 + 1, '\0');
    int bytes = WideToUtf8(&utf8[0], all.c_str(), int(utf8.size()), int(all.size()));
    REQUIRE(bytes > 0);
    std::wstring back(size_t(bytes), L'\0');
    int units = Utf8ToWide(&back[0], utf8.c_str(), bytes, bytes - 1);
    REQUIRE(units > 0);
    back.resize(size_t(units - 1));
    CHECK(back == all);

    wchar_t wide[8] = {};
    char out[8] = {};
    CHECK(WideToUtf8(out, L"a\xD800", 8, 2) == 5);
    CHECK(std::string(out) == "a\xEF\xBF\xBD");
    CHECK(Utf8ToWide(wide, "\xC3x\xFF", 8, 3) == 4);
    CHECK(std::wstring(wide) == L"\xFFFDx\xFFFD");
}

TEST_CASE("the narrow code page: 1252, a double-byte page set for a scope, and its chooser")
{
    wchar_t wide[8] = {};
    char narrow[8] = {};
    CHECK(AnsiToWide(wide, "\xE9\x80", 8, 2) == 3);
    CHECK(std::wstring(wide) == L"\u00e9\u20ac");
    CHECK(CWStr("\xE9").GetCharAt(0) == L'\u00e9');
    {
        NarrowCodePage page(932);
        CHECK(AnsiToWide(wide, "\x82\xA0z", 8, 3) == 3);
        CHECK(std::wstring(wide) == L"\u3042z");
        // Two bytes for one unit: room for units + 1 bytes is not enough.
        CHECK(WideToAnsi(narrow, L"\u3042\u3044", 3, 3) == 0);
        CHECK(WideToAnsi(narrow, L"\u3042\u3044", 5, 3) == 5);
        CHECK(std::string(narrow) == "\x82\xA0\x82\xA2");
        CHECK(CWStr("\x82\xA0").GetCharAt(0) == L'\u3042');
    }
    CHECK(NarrowCodePageFor(65001) == 1252);
    for (uint32_t page : {0u, 1252u, 932u, 1200u})
        CHECK(NarrowCodePageFor(page) == 0);
    ChooseNarrowCodePage();
    CHECK(narrowCodePage == NarrowCodePageFor(GetACP()));
}

TEST_CASE("the narrow counted formatter leaves no terminator when the text fills the count")
{
    char out[8];
    memset(out, '#', sizeof out);
    CHECK(narrow_format(out, 8, "%s-%d", "ab", 42) == 5);
    CHECK(std::string(out) == "ab-42");
    memset(out, '#', sizeof out);
    CHECK(narrow_format(out, 3, "%d", 123) == 3);
    CHECK(out[3] == '#');
    CHECK(narrow_format(out, 3, "%d", 12345) < 0);
    CHECK(narrow_format(out, 8, "%S|%ls", L"w", L"v") == 3);
    CHECK(std::string(out) == "w|v");
}
