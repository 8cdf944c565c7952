/* ZORBaseUx64 from C: a dynamic string, a number picture, and a status code
   turned into German text.

   Build: link ZORBaseUx64.lib and put ZORBaseUx64.dll beside the program.
   Every text of the library is wide (wchar_t); lengths count wchar_t units. */
#include <fcntl.h>
#include <io.h>
#include <locale.h>
#include <stdio.h>

#include <zorbase.h>

int main(void)
{
    TSString* title;
    wchar_t field[64];
    wchar_t message[256];
    int32_t written;

    /* Wide output as UTF-8, whatever the console's code page. */
    _setmode(_fileno(stdout), _O_U8TEXT);
    /* Decimal point and group separator of number pictures follow the C
       runtime's locale; choose one instead of inheriting the user's. */
    TSSetLocale(LC_ALL, L"en-US");

    /* A TSString owns an exact-fit block. Functions that edit return the
       string, or null when the heap is exhausted, so calls can be chained. */
    title = TSClone(L"   invoice 2026-0042   ");
    if (!title || !TSUpper(TSATrim(title)))
        return 1;
    wprintf(L"title: [%ls], %d characters\n", TSGetStr(title), (int)TSGetLen(title));
    TSFree(title);

    /* A picture: # is a digit that stays blank while it has nothing to show,
       $ always shows its digit, the comma groups and the point separates.
       FMFormatDouble writes one unit per picture unit and no terminator. */
    written = FMFormatDouble(NULL, L"###,###.$$", 10, 12345.678, field, NULL);
    field[written] = L'\0';
    wprintf(L"total: [%ls]\n", field);

    /* Any status, the library's own or the platform's, as text: 1031 is
       German, 1033 English, 0 lets Windows choose. The function always
       leaves text in the buffer, a fallback naming the code at worst. */
    ZORBaseFormatMessage(ZOR_E_ILLEGAL_NUMBER, 1031, message, 256);
    wprintf(L"status %08lX: %ls\n", (unsigned long)ZOR_E_ILLEGAL_NUMBER, message);

    wprintf(L"library version %hs\n", ZORBASE_VERSION_STRING);
    return 0;
}
