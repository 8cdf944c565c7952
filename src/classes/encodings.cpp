// The four conversion routines over the platform's converters.
#include "encodings.h"

#include <windows.h>

namespace zorlib {

uint32_t narrowCodePage = 0;

namespace {

// The steps every routine shares around its platform call: room 0 refused,
// a null destination measured, and a terminator behind the output.
template <class Dst, class Src, class Convert>
int convert_terminated(Dst* dst, const Src* src, int room, int srcLen, Convert convert)
{
    if (room == 0 && dst)
        return 0;
    int result = convert(dst, src, dst ? room : 0, srcLen);
    if (result <= 0 || !dst)
        return result;
    if (srcLen > 0 && src[srcLen - 1] != 0 && result < room && dst[result - 1] != 0)
        ++result;
    dst[result - 1] = 0;
    return result;
}

int to_wide(UINT codePage, wchar_t* dst, const char* src, int room, int srcLen)
{
    return convert_terminated(dst, src, room, srcLen,
                              [codePage](wchar_t* d, const char* s, int r, int n) {
                                  return MultiByteToWideChar(codePage, 0, s, n, d, r);
                              });
}

int from_wide(UINT codePage, char* dst, const wchar_t* src, int room, int srcLen)
{
    return convert_terminated(dst, src, room, srcLen,
                              [codePage](char* d, const wchar_t* s, int r, int n) {
                                  return WideCharToMultiByte(codePage, 0, s, n, d, r, nullptr,
                                                             nullptr);
                              });
}

}

int AnsiToWide(wchar_t* dst, const char* src, int dstUnits, int srcBytes)
{
    return to_wide(narrowCodePage, dst, src, dstUnits, srcBytes);
}

int Utf8ToWide(wchar_t* dst, const char* src, int dstUnits, int srcBytes)
{
    return to_wide(kUtf8CodePage, dst, src, dstUnits, srcBytes);
}

int WideToAnsi(char* dst, const wchar_t* src, int dstBytes, int srcUnits)
{
    return from_wide(narrowCodePage, dst, src, dstBytes, srcUnits);
}

int WideToUtf8(char* dst, const wchar_t* src, int dstBytes, int srcUnits)
{
    return from_wide(kUtf8CodePage, dst, src, dstBytes, srcUnits);
}

uint32_t NarrowCodePageFor(uint32_t ansiCodePage)
{
    return ansiCodePage == kUtf8CodePage ? 1252 : 0;
}

void ChooseNarrowCodePage()
{
    static bool chosen = false;
    if (chosen)
        return;
    chosen = true;
    narrowCodePage = NarrowCodePageFor(GetACP());
}

}
