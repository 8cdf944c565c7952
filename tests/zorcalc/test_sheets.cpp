// Sheets run through the real program, compared line for line with what a
// user must see. The locale is named, so that group separators are fixed; it
// is not the prefix's user locale, whose settings other tests change.
#include <doctest/doctest.h>

#include "zorcalc_run.h"

TEST_CASE("sheets print exactly what their print lines ask for")
{
    struct Row {
        std::vector<std::wstring> args;
        std::string out;
    };
    const Row rows[] = {
        // The built-in invoice runs when no sheet is given.
        {{L"--locale", L"en-GB"},
         "Invoice 20260042                 dated 15.03.2026\n"
         "To: M\xC3\xBCller & S\xC3\xB6hne GmbH, K\xC3\xB6ln\n"
         "\n"
         "Item                  Qty       Price      Amount\n"
         "Espresso machine        2    1,249.90    2,499.80\n"
         "Coffee beans, 1 kg     24       18.75      450.00\n"
         "Descaler                6        7.49       44.94\n"
         "                                       ==========\n"
         "Net                                      2,994.74\n"
         "VAT 19%                                    569.00\n"
         "Total EUR                                3,563.74\n"
         "\n"
         "Payable within 30 days, by 14.04.2026.\n"},
        // Every type reaches the placeholders that take it.
        {{L"--locale", L"en-GB", sheet(L"types.zc")},
         "char B B, code  66\n"
         "long [ -42] [  -42] [  42-]\n"
         "ulong 4000000000 and 4,000,000,000\n"
         "double 0.666666666666667 and 0.6667 and 000.67\n"
         "bits 0x0000000000000005, long from bits  2\n"
         "string [J\xC3\xBCrgen ] [J\xC3\xBCrgen \"JJ\" Gro\xC3\x9F] first J\n"
         "date 29.02.2024 and [29.02.]\n"
         "escaped # & ^ / \\ stay text: 3.14159265358979\n"
         "length  16 of J\xC3\xBCrgen \"JJ\" Gro\xC3\x9F\n"
         "number text read by a picture:  12.3\n"
         "a month later 2024-03-29, a year of days later 2025-03-01\n"},
        // Printing a value first runs the earlier formulas it depends on;
        // -e follows the sheet and sees its variables.
        {{L"--locale", L"en-GB", sheet(L"xref.zc"), L"-e", L"total", L"-e", L"runs"},
         "total 120.00 with tax  20.00\n"
         "total 120.00 (base = 200 stands below the total's formula)\n"
         "base 200\n"
         "total 240.00 (base now holds 200)\n"
         "runs 1 2 3\n"
         "240 (EXT_Double)\n4 (EXT_Long)\n"},
        // The locale decides the group separator and decimal point.
        {{L"--locale", L"de-DE", L"-e", L"picture(1234.5, \"#,###.$$\")"}, "\"1.234,50\" (EXT_String)\n"},
        {{L"--locale", L"C", L"-e", L"picture(1234.5, \"#,###.$$\")"}, "\"1234.50\" (EXT_String)\n"},
        // An empty text fills a character placeholder with nothing.
        {{L"-e", L"var string e", L"-e", L"print \"[&]\" e"}, "[]\n"},
    };
    for (const Row& row : rows) {
        Outcome run = run_zorcalc(row.args);
        CHECK(run.err == "");
        CHECK(run.status == 0);
        CHECK(run.out == row.out);
    }
}
