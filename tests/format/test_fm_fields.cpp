#include <doctest/doctest.h>

#include "dll_image.h"
#include "fm_test_support.h"

namespace {

// Fills through a guarded buffer: the field is terminated right behind the
// reported count, and nothing lies beyond the terminator.
std::wstring fill(const wchar_t* picture, int32_t pictureLen, const wchar_t* text)
{
    wchar_t buffer[64];
    wmemset(buffer, kGuard, 64);
    int32_t n = FMFormatStr(picture, pictureLen, text, buffer);
    REQUIRE((n >= 0 && n < 63));
    CHECK((buffer[n] == 0 && buffer[n + 1] == kGuard));
    return std::wstring(buffer, size_t(n));
}

}

TEST_CASE("FMFormatStr: the first unit of the picture chooses the kind of field")
{
    RuntimeLocale english(kEnglishLocale);
    CHECK(fill(L"##,###.##", 9, L"EUR 1.234,5-") == L"-1,234.5 ");
    CHECK(fill(L"*,***", 5, L"12") == L"*,*12");
    CHECK(fill(L"+###", 4, L"5") == L"  +5");
    CHECK(fill(L".##", 3, L"0.25") == L".25");
    CHECK(fill(L"#&", 2, L"5") == L"5&");  // the other dialect's letters are text

    CHECK(fill(L"&", 1, L"xyz") == L"x");
    CHECK(fill(L"&", 1, L"") == std::wstring(1, L'\0'));
    CHECK(fill(L"/       /", 9, L"abc") == L"abc      ");
    CHECK(fill(L"/       /", 9, L"abcdefghijkl") == L"abcdefghi");
    CHECK(fill(L"^", 1, L"the whole text, however long") == L"the whole text, however long");

    for (const wchar_t* picture : {L"x###", L" ##", L"<<<"})
        CHECK(fill(picture, 3, L"123").empty());
    CHECK(fill(L"/  /", 0, L"abc").empty());
    CHECK(fill(L"^", -1, L"abc").empty());
}

TEST_CASE("the descriptors are exported one behind the other and are writable")
{
    CHECK(missing_exports({"DefaultDblFormat", "LLDblFormat", "GetDefaultDblFormat",
                           "GetLLDblFormat", "FMFormatDouble", "FMFormatInt", "FMFormatUInt",
                           "FMFormatStr", "FMToDouble", "FMToInt", "FMToLong", "FMToUInt",
                           "FMToULong"}) == "");
    auto data = [](const char* name) {
        return reinterpret_cast<const wchar_t*>(GetProcAddress(zor_load_dll(), name));
    };
    const wchar_t* defaults = data("DefaultDblFormat");
    REQUIRE(defaults);
    CHECK((data("LLDblFormat") == defaults + 8 && std::wstring(defaults) == L"#$**.,+-#&*$.,+-"));
    CHECK(dll_proc<wchar_t* (*)()>("GetLLDblFormat")() == defaults + 8);
    CHECK(GetLLDblFormat() == GetDefaultDblFormat() + 8);
    wchar_t saved = DefaultDblFormat[1];
    DefaultDblFormat[1] = L'9';
    std::wstring printed = print(L"999", 5.0);
    DefaultDblFormat[1] = saved;
    CHECK(printed == L"005");
}
