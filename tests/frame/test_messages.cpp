// The message catalogue through the real DLL, whose resources hold it.
#include <doctest/doctest.h>

#include <string>

#include "dll_image.h"
#include "zor_frame.h"

namespace {
using FormatFn = uint32_t (*)(uint32_t, uint32_t, wchar_t*, uint32_t, ...);

std::wstring format(uint32_t code, uint32_t language, uint32_t bufferLen = 512)
{
    auto fn = dll_proc<FormatFn>("ZORBaseFormatMessage");
    REQUIRE((fn != nullptr) == true);
    std::wstring buffer(bufferLen, L'#');
    CHECK(fn(code, language, &buffer[0], bufferLen) == 0);
    return buffer.c_str();
}
}

TEST_CASE("catalogue texts come in both languages, without a line break")
{
    CHECK(format(0xC0040411, 1033) == L"No receipients specified.");
    CHECK(format(0xC0040411, 1031) == L"Keine Empf\u00e4nger angegeben.");
    CHECK(format(0xC0040401, 1031) == L"\")\" wird erwartet.");
    CHECK(format(0xC0040416, 1031) == L"Drucker - Druckkopf ist ge\u00f6ffnet.");
    CHECK(format(0xC0040419, 1031) == L"'*/' au\u00dferhalb eines Kommentars gefunden.");
    for (uint32_t code = ZOR_CATALOGUE_FIRST; code <= ZOR_CATALOGUE_LAST; ++code) {
        for (uint32_t language : {1033u, 1031u, 0u}) {
            std::wstring text = format(code, language);
            CAPTURE(code);
            REQUIRE(!text.empty());
            CHECK(text.back() == L'.');
            CHECK(text.find(L"Unknown") == std::wstring::npos);
        }
    }
}

TEST_CASE("codes outside the catalogue fall through to the system, then to a fallback cut to fit")
{
    // A language the catalogue lacks finds no catalogue text.
    CHECK(format(0xC0040400, 1036).find(L"L-Value") == std::wstring::npos);
    // The system knows E_OUTOFMEMORY; its text comes without the closing line break.
    std::wstring system = format(ZOR_E_OUTOFMEMORY, 1033);
    REQUIRE(system.size() > 1);
    CHECK(system.find(L"Unknown") == std::wstring::npos);
    CHECK(system.back() > L' ');
    CHECK(format(0xC00404FF, 1033) == L"Unknown Error Code: C00404FF");
    CHECK(format(0xC00404FF, 1033, 8) == L"Unknown");
    CHECK(format(0xC00404FF, 1033, 1) == L"");
    CHECK(format(0xC00404FF, 1033, 28) == L"Unknown Error Code: C00404F");
}
