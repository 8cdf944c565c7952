#include "values.h"

#include <stdio.h>

namespace {

const wchar_t* const kTypeNames[] = {L"EXT_Void",   L"EXT_Char",   L"EXT_Long",
                                     L"EXT_ULong",  L"EXT_Double", L"EXT_BitField",
                                     L"EXT_String", L"EXT_Date",   L"EXT_Unknown"};

struct SheetType {
    const wchar_t* name;
    uint32_t type;
};
const SheetType kSheetTypes[] = {{L"char", EXT_Char},         {L"long", EXT_Long},     {L"ulong", EXT_ULong},
                                 {L"double", EXT_Double},     {L"bitfield", EXT_BitField},
                                 {L"string", EXT_String},     {L"date", EXT_Date}};

std::wstring printed(const wchar_t* format, ...)
{
    wchar_t buffer[64];
    va_list args;
    va_start(args, format);
    vswprintf(buffer, 64, format, args);
    va_end(args);
    return buffer;
}

// A date through `picture`; a record the platform can't format (an interval
// such as days(30)) is shown field by field as year-month-day.
std::wstring date_text(const TDDate* date, const std::wstring& picture)
{
    wchar_t buffer[256];
    int32_t length = 256;
    std::wstring text;
    if (TDToString(date, picture.c_str(), nullptr, buffer, &length)) {
        text = buffer;
    } else if (length > 256) {
        std::wstring large(size_t(length), L'\0');
        if (TDToString(date, picture.c_str(), nullptr, &large[0], &length))
            text = large.c_str();
    }
    if (!text.empty())
        return text;
    text = printed(L"%04u-%02u-%02u", date->year, date->month, date->day);
    if (date->hour || date->minute || date->second || date->milliSeconds)
        text += printed(L" %02u:%02u:%02u.%03u", date->hour, date->minute, date->second, date->milliSeconds);
    return text;
}

} // namespace

const wchar_t* type_name(uint32_t type)
{
    return type < sizeof kTypeNames / sizeof kTypeNames[0] ? kTypeNames[type] : L"?";
}

bool type_by_name(const std::wstring& name, uint32_t& type)
{
    for (const SheetType& known : kSheetTypes) {
        if (name == known.name) {
            type = known.type;
            return true;
        }
    }
    return false;
}

std::wstring value_text(const void* value, uint32_t type, const std::wstring& datePicture)
{
    switch (type) {
    case EXT_Char:
        return std::wstring(1, *static_cast<const wchar_t*>(value));
    case EXT_Long:
        return printed(L"%ld", long(*static_cast<const int32_t*>(value)));
    case EXT_ULong:
        return printed(L"%lu", static_cast<unsigned long>(*static_cast<const uint32_t*>(value)));
    case EXT_Double:
        return printed(L"%.15g", *static_cast<const double*>(value));
    case EXT_BitField: {
        const ExprBitField* bits = static_cast<const ExprBitField*>(value);
        return printed(L"0x%08X%08X", bits->hi, bits->lo);
    }
    case EXT_String:
        return TSGetStr(static_cast<const TSString*>(value));
    case EXT_Date:
        return date_text(static_cast<const TDDate*>(value), datePicture);
    default:
        return L"";
    }
}

std::wstring value_literal(const void* value, uint32_t type, const std::wstring& datePicture)
{
    std::wstring text = value_text(value, type, datePicture);
    if (type == EXT_String)
        return L"\"" + text + L"\"";
    if (type == EXT_Char)
        return L"'" + text + L"' " + printed(L"%u", unsigned(*static_cast<const wchar_t*>(value)));
    return text;
}

bool store_value(void* target, const void* value, uint32_t type)
{
    switch (type) {
    case EXT_Char:
        *static_cast<wchar_t*>(target) = *static_cast<const wchar_t*>(value);
        return true;
    case EXT_Long:
    case EXT_ULong:
        *static_cast<uint32_t*>(target) = *static_cast<const uint32_t*>(value);
        return true;
    case EXT_Double:
        *static_cast<double*>(target) = *static_cast<const double*>(value);
        return true;
    case EXT_BitField:
        *static_cast<ExprBitField*>(target) = *static_cast<const ExprBitField*>(value);
        return true;
    case EXT_String:
        return TSCopy(static_cast<TSString*>(target), static_cast<const TSString*>(value)) != nullptr;
    case EXT_Date:
        TDCopy(static_cast<TDDate*>(target), static_cast<const TDDate*>(value));
        return true;
    default:
        return true;
    }
}
