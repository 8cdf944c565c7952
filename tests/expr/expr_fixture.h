// An expression object for one test, with helpers to compile a line, to look
// at what it laid down and to run it; Sheet adds variables of every type.
#pragma once

#include <doctest/doctest.h>

#include <stdio.h>
#include <string.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "wide_text.h"
#include "zor_expr.h"

using Ops = std::vector<uint32_t>;

// A value as one line: its type's letter, then the value ("L -3", "B 1:80000000").
inline std::wstring show(uint32_t type, const void* v)
{
    const auto* bits = static_cast<const ExprBitField*>(v);
    const auto* date = static_cast<const TDDate*>(v);
    if (type == EXT_String)
        return L"S " + std::wstring(TSGetStr(static_cast<const TSString*>(v)));
    char text[64] = "V";
    if (type == EXT_Char) snprintf(text, 64, "C %u", *static_cast<const uint16_t*>(v));
    if (type == EXT_Long) snprintf(text, 64, "L %d", *static_cast<const int32_t*>(v));
    if (type == EXT_ULong) snprintf(text, 64, "U %u", *static_cast<const uint32_t*>(v));
    if (type == EXT_Double) snprintf(text, 64, "D %.17g", *static_cast<const double*>(v));
    if (type == EXT_BitField) snprintf(text, 64, "B %x:%x", bits->hi, bits->lo);
    if (type == EXT_Date) snprintf(text, 64, "T %d-%d-%d", date->year, date->month, date->day);
    return std::wstring(text, text + strlen(text));
}

// A line to run and what it must give: a shown value, or a failure code.
struct Case {
    Case(const wchar_t* text, const wchar_t* want) : text(text), want(want) {}
    Case(const wchar_t* text, ZORStatus code) : text(text), code(code) {}
    const wchar_t *text, *want = nullptr;
    ZORStatus code = 0;
};

class Expr {
public:
    explicit Expr(uint32_t mode = 0, uint32_t ignoreCase = 0, const wchar_t* terminators = nullptr)
    {
        REQUIRE(ExprInit(&ctx, 64, 256, ignoreCase, mode, terminators, 1, nullptr, nullptr, nullptr,
                         nullptr, nullptr) == 0);
    }
    ~Expr() { ExprRelease(&ctx); }
    Expr(const Expr&) = delete;

    operator ExprContext*() { return &ctx; }
    ExprContext* operator->() { return &ctx; }

    // Compiles `text`; first, isConst and resultType keep what it gave.
    ZORStatus compile(const wchar_t* text, uint32_t wantedType = 0)
    {
        first = isConst = resultType = 0xDEADBEEF;
        return ExprCompile(&ctx, text, &first, wantedType, &isConst, &resultType);
    }
    uint32_t size() const { return uint32_t(ctx.code->count); }
    const ExprInstr& at(uint32_t i) const
    {
        REQUIRE(i < size());
        return reinterpret_cast<const ExprInstr*>(ctx.code->data)[i];
    }
    // Opcodes of the last compile, up to the end of the array.
    Ops opcodes() const
    {
        Ops result;
        for (uint32_t i = first; i < size(); ++i)
            result.push_back(at(i).opcode);
        return result;
    }
    // Compiles and runs `text`; on success `result` gets the popped value.
    ZORStatus eval(const wchar_t* text, void** result = nullptr)
    {
        CAPTURE(std::wstring(text));
        REQUIRE(compile(text) == 0);
        const ZORStatus status = ExprEvaluate(&ctx, first, 0);
        void* value = status == 0 ? ExprPopResult(&ctx) : nullptr;
        if (result)
            *result = value;
        return status;
    }
    std::wstring error_text() const { return ctx.errorText ? ctx.errorText : L"(null)"; }
    // Runs the lines in order, so that a line may set up the next ones.
    void check(std::initializer_list<Case> cases)
    {
        for (const Case& c : cases) {
            void* value = nullptr;
            const ZORStatus status = eval(c.text, &value);
            CAPTURE(std::wstring(c.text));
            CHECK(status == c.code);
            if (status == 0 && c.want)
                CHECK(show(resultType, value) == c.want);
            ctx.stackDepth = 0;
        }
    }

    ExprContext ctx;
    uint32_t    first = 0, isConst = 0, resultType = 0;
};

// Two variables of each value type, arrays of the numbers, a constant `c`
// and functions that are compiled but never run.
struct Sheet : Expr {
    explicit Sheet(uint32_t mode = 0, uint32_t ignoreCase = 0, const wchar_t* terminators = nullptr)
        : Expr(mode, ignoreCase, terminators)
    {
        TSClear(&s), TSClear(&s2), TDInit(&dt), TDInit(&dt2);
        const struct { void* value; const wchar_t* name; uint32_t type; } vars[] = {
            {&vv, L"vv", EXT_Void},    {&ch, L"ch", EXT_Char},       {&ch2, L"ch2", EXT_Char},
            {ca, L"ca", EXT_Char},     {&a, L"a", EXT_Long},         {&b, L"b", EXT_Long},
            {la, L"la", EXT_Long},     {&u, L"u", EXT_ULong},        {&u2, L"u2", EXT_ULong},
            {&d, L"d", EXT_Double},    {&d2, L"d2", EXT_Double},     {da, L"da", EXT_Double},
            {&bf, L"bf", EXT_BitField}, {&bf2, L"bf2", EXT_BitField}, {&s, L"s", EXT_String},
            {&s2, L"s2", EXT_String},  {&dt, L"dt", EXT_Date},       {&dt2, L"dt2", EXT_Date}};
        for (const auto& v : vars)
            REQUIRE(ExprDefineVar(&ctx, v.value, v.name, v.type) == 0);
        REQUIRE(ExprDefineConst(&ctx, &c, L"c", EXT_Long) == 0);
        ExprDefineFn(&ctx, nullptr, L"f", EXT_Long, 1, EXT_Long);
        ExprDefineFn(&ctx, nullptr, L"g", EXT_Long, 0);
        ExprDefineFn(&ctx, nullptr, L"f2", EXT_Double, 2, EXT_Double, EXT_Long);
        ExprDefineFn(&ctx, nullptr, L"anyfn", EXT_Long, 1, EXT_Unknown);
    }
    ~Sheet() { TSInit(&s), TSInit(&s2); }

    int32_t      vv = 0, a = 0, b = 0, la[4] = {}, c = 0;
    uint16_t     ch = 0, ch2 = 0, ca[3] = {};
    uint32_t     u = 0, u2 = 0;
    double       d = 0, d2 = 0, da[3] = {};
    ExprBitField bf = {}, bf2 = {};
    TSString     s, s2;
    TDDate       dt, dt2;
};
