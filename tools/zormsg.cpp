// zormsg: prints the library's message catalogue in English and German, or
// the texts of the status codes given as arguments (hexadecimal).
#include <stdio.h>
#include <stdlib.h>

#include <windows.h>

#include "zorbase.h"

const int kTextUnits = 512;

// Room for three bytes a unit, so that no text is too long to convert.
static void print_utf8(const wchar_t* text)
{
    char utf8[kTextUnits * 3];
    int n = WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, sizeof utf8, nullptr, nullptr);
    fwrite(utf8, 1, n > 0 ? size_t(n - 1) : 0, stdout);
}

static void print_code(uint32_t code)
{
    wchar_t english[kTextUnits], german[kTextUnits];
    ZORBaseFormatMessage(code, 1033, english, kTextUnits);
    ZORBaseFormatMessage(code, 1031, german, kTextUnits);
    printf("0x%08X  ", code);
    print_utf8(english);
    printf("\n            ");
    print_utf8(german);
    printf("\n");
}

int main(int argc, char** argv)
{
    if (argc > 1) {
        for (int i = 1; i < argc; ++i)
            print_code(uint32_t(strtoul(argv[i], nullptr, 16)));
        return 0;
    }
    for (uint32_t code = ZOR_CATALOGUE_FIRST; code <= ZOR_CATALOGUE_LAST; ++code)
        print_code(code);
    return 0;
}
