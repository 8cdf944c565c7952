#include "mask.h"

#include <math.h>

#include "values.h"

namespace {

bool is_number_picture(int32_t kind) { return kind == FSC_INTEGER || kind == FSC_DOUBLE; }

double number_of(const void* value, uint32_t type)
{
    switch (type) {
    case EXT_String:
        return FMToDouble(TSGetStr(static_cast<const TSString*>(value)));
    case EXT_Char:
        return *static_cast<const wchar_t*>(value);
    case EXT_Long:
        return *static_cast<const int32_t*>(value);
    case EXT_ULong:
        return *static_cast<const uint32_t*>(value);
    default:
        return *static_cast<const double*>(value);
    }
}

} // namespace

bool cut_mask(const std::wstring& mask, std::vector<MaskPiece>& pieces)
{
    FScScanner scanner;
    if (FScInit(&scanner, uint32_t(mask.size() + 1)) != ZOR_S_OK)
        return false;
    FScSetLine(&scanner, mask.c_str());
    for (int32_t kind; (kind = FScGetNextSym(&scanner)) != FSC_EOL;)
        pieces.push_back(MaskPiece{kind, std::wstring(FScGetAlpha(&scanner), FScGetAlphaLen(&scanner))});
    FScRelease(&scanner);
    return true;
}

bool is_placeholder(const MaskPiece& piece) { return FScIsPlaceholder(piece.kind) != 0; }

bool placeholder_takes(const MaskPiece& piece, uint32_t type)
{
    if (is_number_picture(piece.kind))
        return type == EXT_Char || type == EXT_Long || type == EXT_ULong || type == EXT_Double ||
               type == EXT_String;
    return true;
}

bool fits_placeholder(const MaskPiece& piece, const void* value, uint32_t type)
{
    if (!is_number_picture(piece.kind))
        return true;
    const wchar_t* format = GetDefaultDblFormat();
    int positions = 0, decimals = 0;
    bool fraction = false;
    for (wchar_t unit : piece.text) {
        if (unit == format[4])
            fraction = true;
        else if (unit == format[0] || unit == format[1] || unit == format[2] || unit == format[3])
            ++(fraction ? decimals : positions);
    }
    double scale = pow(10.0, decimals);
    double whole = floor(floor(fabs(number_of(value, type)) * scale + 0.5) / scale);
    if (!isfinite(whole))
        return false;
    int digits = 0;
    for (; whole >= 1; whole = floor(whole / 10))
        ++digits;
    return digits <= positions;
}

std::wstring fill_placeholder(const MaskPiece& piece, const void* value, uint32_t type,
                              const std::wstring& datePicture)
{
    const int32_t length = int32_t(piece.text.size());
    if (is_number_picture(piece.kind) && type != EXT_String) {
        // Locale separators may be wider than the letter they stand for.
        std::wstring out(piece.text.size() * 8 + 1, L'\0');
        int32_t written = FMFormatDouble(nullptr, piece.text.c_str(), length, number_of(value, type), &out[0], nullptr);
        out.resize(size_t(written));
        return out;
    }
    std::wstring text = value_text(value, type, datePicture);
    std::wstring out((text.size() > piece.text.size() ? text.size() : piece.text.size()) * 8 + 1, L'\0');
    int32_t written = FMFormatStr(piece.text.c_str(), length, text.c_str(), &out[0]);
    out.resize(size_t(written));
    // A character placeholder reports the terminator of an empty text as its unit.
    size_t zero = out.find(L'\0');
    if (zero != std::wstring::npos)
        out.resize(zero);
    return out;
}
