// zormsg: prints the library's message catalogue in English and German, or
// the texts of the status codes given as arguments (hexadecimal).
#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

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

static const char kUsage[] =
    "usage: zormsg [CODE...]\n"
    "  without codes   print the library's message catalogue in English and German\n"
    "  CODE            print the texts of a status code, hexadecimal with or without\n"
    "                  0x, at most 8 digits (e.g. C0040406 or 0x80020012)\n"
    "exit status: 0 done, 2 a code that is not hexadecimal\n";

// Up to eight hexadecimal digits and nothing else, so that a typo is refused
// instead of printing the text of whatever number its first digits make.
static bool parse_code(const char* text, uint32_t& code)
{
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text += 2;
    size_t digits = strlen(text);
    if (digits == 0 || digits > 8)
        return false;
    for (size_t i = 0; i < digits; ++i) {
        if (!isxdigit(static_cast<unsigned char>(text[i])))
            return false;
    }
    code = uint32_t(strtoul(text, nullptr, 16));
    return true;
}

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--help") == 0 || strcmp(argv[i], "-h") == 0) {
            fputs(kUsage, stdout);
            return 0;
        }
    }
    if (argc > 1) {
        uint32_t code = 0;
        for (int i = 1; i < argc; ++i) {
            if (!parse_code(argv[i], code)) {
                fprintf(stderr, "zormsg: \"%s\" is not a hexadecimal status code\n%s", argv[i], kUsage);
                return 2;
            }
        }
        for (int i = 1; i < argc; ++i) {
            parse_code(argv[i], code);
            print_code(code);
        }
        return 0;
    }
    for (uint32_t code = ZOR_CATALOGUE_FIRST; code <= ZOR_CATALOGUE_LAST; ++code)
        print_code(code);
    return 0;
}
