// Value storage of compiled expressions. Numbers share one arena so that a
// run allocates nothing for them; strings, dates and bit fields are objects
// of their own.
#include "expr_internal.h"

#include <string.h>

#include "../frame/zor_alloc.h"

ExprOperand g_exprNoLValue = {nullptr, EXT_Void, EXS_Const, 0, 0};

namespace {

constexpr uint64_t kArenaStep = 1024;

uint32_t number_size(uint32_t type)
{
    switch (type) {
    case EXT_Char: return 2;
    case EXT_Long:
    case EXT_ULong: return 4;
    case EXT_Double: return 8;
    default: return 0;
    }
}

// A new value holds its initial bytes or zeroes, and the rounding behind it
// zeroes too, so that an arena's used bytes depend on nothing but its
// contents.
void fill(void* slot, const void* init, size_t size, size_t rounded)
{
    memset(slot, 0, rounded);
    if (init)
        memcpy(slot, init, size);
}

// Grows the arena by one step. Instructions that point into the used part
// of the old block are carried along; nothing else can point there, because
// the arena is only handed out through instructions.
bool grow_arena(ExprContext* expr)
{
    const uintptr_t oldBase = reinterpret_cast<uintptr_t>(expr->dataArena);
    void* block = zor_realloc(expr->dataArena, size_t(expr->dataArenaSize + kArenaStep));
    if (!block)
        return false;
    expr->dataArena = static_cast<uint8_t*>(block);
    expr->dataArenaSize += kArenaStep;
    const uintptr_t newBase = reinterpret_cast<uintptr_t>(block);
    if (oldBase && newBase != oldBase) {
        const uintptr_t oldEnd = oldBase + uintptr_t(expr->dataArenaUsed);
        ExprInstr* code = reinterpret_cast<ExprInstr*>(expr->code->data);
        for (int32_t i = 0, n = expr->code->count; i < n; ++i) {
            const uintptr_t at = reinterpret_cast<uintptr_t>(code[i].operand.value);
            if (at >= oldBase && at < oldEnd)
                code[i].operand.value = reinterpret_cast<void*>(at - oldBase + newBase);
        }
    }
    return true;
}

ZORStatus new_number(ExprContext* expr, uint32_t type, const void* init, ExprOperand* out)
{
    const uint32_t size = number_size(type);
    const uint64_t rounded = (uint64_t(size) + 7) & ~uint64_t(7);
    if (expr->dataArenaUsed + rounded >= expr->dataArenaSize && !grow_arena(expr))
        return ZOR_E_OUTOFMEMORY;
    uint8_t* slot = expr->dataArena + expr->dataArenaUsed;
    expr->dataArenaUsed += rounded;
    fill(slot, init, size, size_t(rounded));
    out->value = slot;
    out->storage = EXS_Plain;
    return ZOR_S_OK;
}

}

ZORStatus expr_new_value(ExprContext* expr, uint32_t type, const void* init, ExprOperand* out)
{
    out->type = type;
    out->xrefIndex = -1;
    out->useCount = 0;
    switch (type) {
    case EXT_String: {
        TSString* ts = TSNew();
        if (!ts)
            return ZOR_E_OUTOFMEMORY;
        if (init && !TSSetStr(ts, static_cast<const wchar_t*>(init))) {
            TSFree(ts);
            return ZOR_E_OUTOFMEMORY;
        }
        out->value = ts;
        out->storage = EXS_String;
        return ZOR_S_OK;
    }
    case EXT_Date: {
        TDDate* date = TDNew();
        if (!date)
            return ZOR_E_OUTOFMEMORY;
        if (init)
            TDCopy(date, static_cast<const TDDate*>(init));
        out->value = date;
        out->storage = EXS_Date;
        return ZOR_S_OK;
    }
    case EXT_BitField: {
        void* block = zor_malloc(sizeof(ExprBitField));
        if (!block)
            return ZOR_E_OUTOFMEMORY;
        fill(block, init, sizeof(ExprBitField), sizeof(ExprBitField));
        out->value = block;
        out->storage = EXS_BitField;
        return ZOR_S_OK;
    }
    default:
        return new_number(expr, type, init, out);
    }
}

void expr_release_value(const ExprOperand& operand)
{
    switch (operand.storage) {
    case EXS_String: TSFree(static_cast<TSString*>(operand.value)); break;
    case EXS_BitField: zor_free(operand.value); break;
    case EXS_Date: TDFree(static_cast<TDDate*>(operand.value)); break;
    default: break;
    }
}
