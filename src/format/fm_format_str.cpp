#include "zor_fm.h"

#include <string.h>
#include <wchar.h>

int32_t FMFormatStr(const wchar_t* picture, int32_t pictureLen, const wchar_t* text, wchar_t* out)
{
    if (!text)
        text = L"";
    int32_t len = 0;
    switch (pictureLen > 0 ? picture[0] : 0) {
    case L'#': case L'$': case L'*': case L'+': case L',': case L'-': case L'.':
        len = FMFormatDouble(nullptr, picture, pictureLen, FMToDouble(text), out, nullptr);
        break;
    case L'&':
        out[0] = text[0];
        len = 1;
        break;
    case L'/': {
        int32_t textLen = static_cast<int32_t>(wcsnlen(text, static_cast<size_t>(pictureLen)));
        memcpy(out, text, static_cast<size_t>(textLen) * sizeof(wchar_t));
        wmemset(out + textLen, L' ', static_cast<size_t>(pictureLen - textLen));
        len = pictureLen;
        break;
    }
    case L'^':
        len = static_cast<int32_t>(wcslen(text));
        memcpy(out, text, static_cast<size_t>(len) * sizeof(wchar_t));
        break;
    default:
        break;
    }
    out[len] = 0;
    return len;
}
