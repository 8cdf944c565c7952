// The expression object: creation and release, the symbol table and the
// accessors. Compiling and running live in their own files.
#include "zor_expr.h"

#include <stdarg.h>
#include <string.h>

#include "../frame/zor_alloc.h"
#include "expr_internal.h"
#include "expr_link.h"
#include "expr_ops.h"

namespace {

int compare_names_exact(const void* key, const void* elem)
{
    return wcscmp(static_cast<const ExprSymbol*>(key)->name,
                  static_cast<const ExprSymbol*>(elem)->name);
}

int compare_names_blind(const void* key, const void* elem)
{
    return _wcsicmp(static_cast<const ExprSymbol*>(key)->name,
                    static_cast<const ExprSymbol*>(elem)->name);
}

ZORStatus add_symbol(ExprContext* expr, const wchar_t* name, const ExprOperand& operand)
{
    const ExprSymbol symbol = {name, operand};
    return BTInsert(expr->symbols, &symbol) ? ZOR_S_OK : ZOR_E_OUTOFMEMORY;
}

ZORStatus define(ExprContext* expr, void* value, const wchar_t* name, uint32_t type, uint32_t storage)
{
    if (expr_find_symbol(expr, name))
        return ZOR_TYPE_E_NAMECONFLICT;
    return add_symbol(expr, name, ExprOperand{value, type, storage, -1, 0});
}

// Everything but the scanner, in reverse order of making; null parts are
// skipped so that a half-made object can be taken apart too.
void destroy_tables(ExprContext* expr)
{
    if (expr->xrefList)
        DADestroy(expr->xrefList);
    if (expr->xrefTree)
        BTDestroy(expr->xrefTree, nullptr);
    if (expr->argTypes)
        DADestroy(expr->argTypes);
    if (expr->code) {
        expr_link_release(expr);
        DADestroy(expr->code);
    }
    if (expr->symbols)
        BTDestroy(expr->symbols, nullptr);
}

}

ExprSymbol* expr_find_symbol(ExprContext* expr, const wchar_t* name)
{
    ExprSymbol key = {name, {}};
    return static_cast<ExprSymbol*>(BTSearch(expr->symbols, &key));
}

ZORStatus ExprInit(ExprContext* expr, uint32_t maxIdentLen, uint32_t bufferLen, uint32_t ignoreCase,
                   uint32_t mode, const wchar_t* terminators, uint32_t autoFetch,
                   ExprNextSymFn nextSymFn, ExprGetSymFn getSymFn, ExprGetAlphaFn getAlphaFn,
                   void* callbackContext, SymScanner* externalScanner)
{
    memset(expr, 0, sizeof(*expr));
    expr->symbols =
        BTCreate(ignoreCase ? compare_names_blind : compare_names_exact, sizeof(ExprSymbol));
    if (expr->symbols) {
        expr->code = da_create_with_tail(sizeof(ExprInstr), 10, sizeof(ExprLinkHome));
        expr->argTypes = DACreate(sizeof(uint32_t), 10);
    }
    if (!expr->code || !expr->argTypes || !expr_xref_new_tables(expr)) {
        destroy_tables(expr);
        return ZOR_E_OUTOFMEMORY;
    }
    const ZORStatus scanner =
        SymInit(&expr->scanner, maxIdentLen, bufferLen, int32_t(ignoreCase), int32_t(mode));
    if (scanner != ZOR_S_OK) {
        destroy_tables(expr);
        return ZOR_E_OUTOFMEMORY;
    }
    if (terminators) {
        const size_t bytes = (wcslen(terminators) + 1) * sizeof(wchar_t);
        expr->terminators = static_cast<wchar_t*>(zor_malloc(bytes));
        if (expr->terminators)
            memcpy(expr->terminators, terminators, bytes);
    }
    expr->autoFetch = autoFetch;
    expr->nextSymFn = nextSymFn;
    expr->getSymFn = getSymFn;
    expr->getAlphaFn = getAlphaFn;
    expr->callbackContext = callbackContext;
    expr->externalScanner = externalScanner;
    expr->actExpr = EXPR_EMPTY;
    return ZOR_S_OK;
}

ZORStatus ExprRelease(ExprContext* expr)
{
    zor_free(expr->stack);
    zor_free(expr->dataArena);
    SymRelease(&expr->scanner);
    const ExprInstr* code = static_cast<const ExprInstr*>(DAGetElem(expr->code, 0));
    for (int32_t i = 0, n = DAGetSize(expr->code); i < n; ++i)
        expr_release_value(code[i].operand);
    destroy_tables(expr);
    zor_free(expr->terminators);
    return ZOR_S_OK;
}

ZORStatus ExprDefineVar(ExprContext* expr, void* value, const wchar_t* name, uint32_t type)
{
    return define(expr, value, name, type, EXS_Plain);
}

ZORStatus ExprDefineConst(ExprContext* expr, const void* value, const wchar_t* name, uint32_t type)
{
    return define(expr, const_cast<void*>(value), name, type, EXS_Const);
}

ZORStatus ExprDefineFn(ExprContext* expr, ExprUserFn fn, const wchar_t* name, uint32_t resultType,
                       uint32_t argCount, ...)
{
    if (expr_find_symbol(expr, name))
        return ZOR_TYPE_E_NAMECONFLICT;
    const int32_t first = DAGetSize(expr->argTypes);
    va_list args;
    va_start(args, argCount);
    bool stored = true;
    for (uint32_t i = 0; i <= argCount && stored; ++i) {
        const uint32_t type = i < argCount ? va_arg(args, uint32_t) : 0;
        stored = DAAddElem(expr->argTypes, &type) != nullptr;
    }
    va_end(args);
    ExprOperand operand = {reinterpret_cast<void*>(fn), resultType, EXS_Function, first, 0};
    if (stored && add_symbol(expr, name, operand) == ZOR_S_OK)
        return ZOR_S_OK;
    while (DAGetSize(expr->argTypes) > first)
        DADeleteLast(expr->argTypes);
    return ZOR_E_OUTOFMEMORY;
}

ExprOperand* ExprLookUp(ExprContext* expr, const wchar_t* name)
{
    ExprSymbol* symbol = expr_find_symbol(expr, name);
    if (!symbol) {
        expr->errorText = name;
        return nullptr;
    }
    return &symbol->operand;
}

ExprOperand* ExprVarLookUp(ExprContext* expr, const wchar_t* name)
{
    ExprSymbol* symbol = expr_find_symbol(expr, name);
    if (!symbol || symbol->operand.storage != EXS_Plain) {
        expr->errorText = name;
        return nullptr;
    }
    return &symbol->operand;
}

namespace {

const wchar_t* walk_to(const ExprSymbol* symbol, ExprOperand* operand, void** iter)
{
    *iter = const_cast<ExprSymbol*>(symbol);
    if (!symbol)
        return nullptr;
    *operand = symbol->operand;
    return symbol->name;
}

}

const wchar_t* ExprGetFirstVar(ExprContext* expr, ExprOperand* operand, void** iter)
{
    return walk_to(static_cast<const ExprSymbol*>(BTFirst(expr->symbols)), operand, iter);
}

const wchar_t* ExprGetNextVar(ExprContext*, ExprOperand* operand, void** iter)
{
    if (!*iter)
        return nullptr;
    return walk_to(static_cast<const ExprSymbol*>(BTNext(*iter)), operand, iter);
}

uint32_t ExprGetActExpr(ExprContext* expr)
{
    return expr->actExpr;
}

uint32_t ExprGetColNo(ExprContext* expr)
{
    return expr->externalScanner ? expr->externalScanner->column : expr->scanner.column;
}

uint32_t ExprGetErrLen(ExprContext* expr)
{
    return expr->externalScanner ? expr->externalScanner->alphaLen : expr->scanner.alphaLen;
}

void* ExprGetUserPtr(ExprContext* expr)
{
    return expr->userPtr;
}

void* ExprSetUserPtr(ExprContext* expr, void* ptr)
{
    void* old = expr->userPtr;
    expr->userPtr = ptr;
    return old;
}
