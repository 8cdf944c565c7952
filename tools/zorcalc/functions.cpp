#include "functions.h"

#include <math.h>

namespace {

// Callbacks run inside the engine and must not throw: their buffers are fixed.
const int32_t kMaxPicture = 256;

CallResults* results(intptr_t userArg) { return reinterpret_cast<CallResults*>(userArg); }

// The engine checked the argument types at compile time.
template <typename T> T* pop(ExprContext* expr)
{
    uint32_t type;
    return static_cast<T*>(ExprPopArgument(expr, &type));
}

// A count of days or months must fit a date field; anything else stops the
// run rather than wrapping silently.
TDDate* interval(ExprContext* expr, intptr_t userArg, bool months)
{
    int32_t count = *pop<int32_t>(expr);
    TDDate* date = &results(userArg)->date;
    TDInit(date);
    if (count < 0 || count > 0xFFFF) {
        ExprSetEvalErr(expr, ZOR_E_INVALIDARG);
        return date;
    }
    const uint16_t field = uint16_t(count), none = 0;
    return TDSetInterval(date, 0, months ? field : none, months ? none : field, 0, 0, 0, 0);
}

TDDate* fn_today(ExprContext*, intptr_t userArg)
{
    TDDate* date = &results(userArg)->date;
    TDGetActTime(date);
    return TDSetTime(date, date->year, date->month, date->day, 0, 0, 0, 0);
}

TDDate* fn_days(ExprContext* expr, intptr_t userArg) { return interval(expr, userArg, false); }
TDDate* fn_months(ExprContext* expr, intptr_t userArg) { return interval(expr, userArg, true); }

// Commercial rounding, half away from zero, to 0 to 10 places.
double fn_round(ExprContext* expr, intptr_t)
{
    int32_t places = *pop<int32_t>(expr);
    double value = *pop<double>(expr);
    if (places < 0 || places > 10) {
        ExprSetEvalErr(expr, ZOR_E_INVALIDARG);
        return value;
    }
    double scale = pow(10.0, places);
    double rounded = floor(fabs(value) * scale + 0.5) / scale;
    return value < 0 ? -rounded : rounded;
}

int32_t fn_len(ExprContext* expr, intptr_t)
{
    return TSGetLen(pop<TSString>(expr));
}

TSString* fn_picture(ExprContext* expr, intptr_t userArg)
{
    TSString* picture = pop<TSString>(expr);
    double value = *pop<double>(expr);
    TSString* text = &results(userArg)->text;
    int32_t length = TSGetLen(picture);
    if (length > kMaxPicture) {
        ExprSetEvalErr(expr, ZOR_E_INVALIDARG);
        return text;
    }
    // Locale separators may be wider than the letter they stand for.
    wchar_t out[kMaxPicture * 8 + 1];
    int32_t written = FMFormatDouble(nullptr, TSGetStr(picture), length, value, out, nullptr);
    if (!TSSetStrN(text, out, written))
        ExprSetEvalErr(expr, ZOR_E_OUTOFMEMORY);
    return text;
}

struct FunctionDef {
    const wchar_t* name;
    ExprUserFn fn;
    uint32_t result;
    uint32_t argCount;
    uint32_t args[2];
};

const FunctionDef kFunctions[] = {
    {L"today", reinterpret_cast<ExprUserFn>(fn_today), EXT_Date, 0, {0, 0}},
    {L"days", reinterpret_cast<ExprUserFn>(fn_days), EXT_Date, 1, {EXT_Long, 0}},
    {L"months", reinterpret_cast<ExprUserFn>(fn_months), EXT_Date, 1, {EXT_Long, 0}},
    {L"round", reinterpret_cast<ExprUserFn>(fn_round), EXT_Double, 2, {EXT_Double, EXT_Long}},
    {L"len", reinterpret_cast<ExprUserFn>(fn_len), EXT_Long, 1, {EXT_String, 0}},
    {L"picture", reinterpret_cast<ExprUserFn>(fn_picture), EXT_String, 2, {EXT_Double, EXT_String}},
};

} // namespace

ZORStatus define_functions(ExprContext* expr, std::map<const void*, std::wstring>& names)
{
    for (const FunctionDef& def : kFunctions) {
        ZORStatus status = ExprDefineFn(expr, def.fn, def.name, def.result, def.argCount, def.args[0], def.args[1]);
        if (status != ZOR_S_OK)
            return status;
        names[reinterpret_cast<const void*>(def.fn)] = def.name;
    }
    return ZOR_S_OK;
}
