#include <doctest/doctest.h>

#include <string>

#include "fm_test_support.h"
#include "zor_fsc.h"
#include "zor_ts.h"

namespace {

struct Value {
    double number;
    const wchar_t* text;
};

// Fills a mask the way an application does: the scanner cuts it, numbers
// go through FMFormatDouble and texts through FMFormatStr, in mask order.
std::wstring print_mask(const wchar_t* mask, const Value* values)
{
    FScScanner fsc;
    REQUIRE(FScInit(&fsc, 128) == 0);
    FScSetLine(&fsc, mask);
    wchar_t line[256];
    int32_t len = 0;
    for (int32_t sym; (sym = FScGetNextSym(&fsc)) != FSC_EOL;) {
        const wchar_t* piece = FScGetAlpha(&fsc);
        int32_t pieceLen = static_cast<int32_t>(FScGetAlphaLen(&fsc));
        if (sym == FSC_INTEGER || sym == FSC_DOUBLE) {
            len += FMFormatDouble(nullptr, piece, pieceLen, values++->number, line + len, nullptr);
        } else if (FScIsPlaceholder(sym)) {
            len += FMFormatStr(piece, pieceLen, values++->text, line + len);
        } else {
            wmemcpy(line + len, piece, size_t(pieceLen));
            len += pieceLen;
        }
    }
    FScRelease(&fsc);
    return std::wstring(line, size_t(len));
}

}

TEST_CASE("a print mask is filled column-true in two locales")
{
    const wchar_t* mask = L"No. $$$$ & /          / qty ### at #,###.## = ##,###.##- \\^^";
    const Value values[] = {{42, nullptr},     {0, L"B-grade"}, {0, L"Widget"},  {7, nullptr},
                            {1234.5, nullptr}, {-8641.5, nullptr}, {0, L"note"}};
    RuntimeLocale initial(L"C");  // put back after the application's own choices
    REQUIRE(TSSetLocale(LC_ALL, kEnglishLocale));
    CHECK(print_mask(mask, values) ==
          L"No. 0042 B Widget       qty   7 at 1,234.5  =  8,641.5 - ^note");
    REQUIRE(TSSetLocale(LC_ALL, kGermanLocale));
    CHECK(print_mask(mask, values) ==
          L"No. 0042 B Widget       qty   7 at 1.234,5  =  8.641,5 - ^note");
}
