// An expression object for one test, with helpers to compile a line and to
// look at what it laid down.
#pragma once

#include <doctest/doctest.h>

#include <string>
#include <vector>

#include "wide_text.h"
#include "zor_expr.h"

struct ExprOptions {
    uint32_t       mode = 0;
    uint32_t       ignoreCase = 0;
    const wchar_t* terminators = nullptr;
    uint32_t       autoFetch = 1;
    uint32_t       bufferLen = 256;
};

class Expr {
public:
    explicit Expr(const ExprOptions& options = {})
    {
        REQUIRE(ExprInit(&ctx, 64, options.bufferLen, options.ignoreCase, options.mode,
                         options.terminators, options.autoFetch, nullptr, nullptr, nullptr,
                         nullptr, nullptr) == 0);
    }
    ~Expr() { ExprRelease(&ctx); }
    Expr(const Expr&) = delete;

    ExprContext* operator->() { return &ctx; }
    operator ExprContext*() { return &ctx; }

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
    std::vector<uint32_t> opcodes() const
    {
        std::vector<uint32_t> result;
        for (uint32_t i = first; i < size(); ++i)
            result.push_back(at(i).opcode);
        return result;
    }

    // Runs the last compile and pops its result.
    void* run(ZORStatus expected = 0, intptr_t userArg = 0)
    {
        REQUIRE(ExprEvaluate(&ctx, first, userArg) == expected);
        return expected == 0 ? ExprPopResult(&ctx) : nullptr;
    }

    std::wstring error_text() const { return ctx.errorText ? ctx.errorText : L"(null)"; }

    ExprContext ctx;
    uint32_t    first = 0, isConst = 0, resultType = 0;
};

using Ops = std::vector<uint32_t>;

// Failure messages show opcode lists readably.
namespace doctest {
template <>
struct StringMaker<Ops> {
    static String convert(const Ops& ops)
    {
        std::string text;
        for (uint32_t op : ops)
            text += std::to_string(op) + " ";
        return text.c_str();
    }
};
}
