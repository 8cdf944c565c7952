// The cross-reference: which earlier expressions assign a variable, laid out
// as runs of start indexes. The run loop re-runs them before a read.
#include <algorithm>

#include "expr_link.h"
#include "expr_ops.h"
#include "../frame/zor_alloc.h"
#include "zor_status.h"

namespace {

constexpr int32_t kRunEnd = -1;

// Every instruction that copied a variable's operand at compile time gets the
// variable's link. One pass over the code with a sorted look-up; should the
// look-up table not be had, one pass per variable does the same, slower.
bool by_value(const ExprOperand* a, const ExprOperand* b) { return a->value < b->value; }

void link_instructions(ExprContext* expr, ExprOperand* const* variables, int32_t count)
{
    ExprInstr* code = reinterpret_cast<ExprInstr*>(expr->code->data);
    int32_t size = expr->code->count;
    for (int32_t i = 0; i < size; ++i) {
        ExprOperand key = code[i].operand;
        ExprOperand* const* end = variables + count;
        ExprOperand* const* hit = std::lower_bound(variables, end, &key, by_value);
        if (hit != end && (*hit)->value == key.value)
            code[i].operand.xrefIndex = (*hit)->xrefIndex;
    }
}

void link_one_by_one(ExprContext* expr, ExprOperand* const* variables, int32_t count)
{
    for (int32_t v = 0; v < count; ++v)
        link_instructions(expr, variables + v, 1);
}

struct Layout {
    ExprContext* expr;
    ExprOperand* previous;
    int32_t lastStart;
    bool haveStart;
    ExprOperand** variables;  // null when the table could not be had
    int32_t count;
};

// Behind the last record of a variable: close its run and keep it for linking.
void close_run(Layout& walk)
{
    DAAddElem(walk.expr->xrefList, &kRunEnd);
    if (walk.variables)
        walk.variables[walk.count++] = walk.previous;
    else
        link_one_by_one(walk.expr, &walk.previous, 1);
}

int lay_out_record(void* arg, void* elem)
{
    Layout& walk = *static_cast<Layout*>(arg);
    const ExprXRefRecord& record = *static_cast<const ExprXRefRecord*>(elem);
    DA* list = walk.expr->xrefList;
    if (record.variable != walk.previous) {
        if (walk.previous)
            close_run(walk);
        walk.previous = record.variable;
        walk.previous->xrefIndex = DAGetSize(list);
        walk.haveStart = false;
    }
    int32_t start = int32_t(record.exprStart);
    if (!walk.haveStart || start != walk.lastStart) {
        DAAddElem(list, &start);
        walk.lastStart = start;
        walk.haveStart = true;
    }
    return 0;
}

// Links into a list that is about to be replaced would point into the new
// one, so they go with it. A function keeps its xrefIndex: there it is the
// start of its argument types.
int unlink_symbol(void*, void* elem)
{
    ExprOperand& operand = static_cast<ExprSymbol*>(elem)->operand;
    if (operand.storage != EXS_Function)
        operand.xrefIndex = -1;
    return 0;
}

void unlink_all(ExprContext* expr)
{
    BTForEach(expr->symbols, unlink_symbol, nullptr);
    ExprInstr* code = reinterpret_cast<ExprInstr*>(expr->code->data);
    for (int32_t i = 0, n = expr->code->count; i < n; ++i)
        if (code[i].operand.storage != EXS_Function)
            code[i].operand.xrefIndex = -1;
}

// By variable address, then sequence.
int compare_records(const void* key, const void* elem)
{
    const ExprXRefRecord* a = static_cast<const ExprXRefRecord*>(key);
    const ExprXRefRecord* b = static_cast<const ExprXRefRecord*>(elem);
    if (a->variable != b->variable)
        return a->variable < b->variable ? -1 : 1;
    return int32_t(a->sequence - b->sequence);
}

}

bool expr_xref_new_tables(ExprContext* expr)
{
    if (expr->xrefTree)
        BTDestroy(expr->xrefTree, nullptr);
    if (expr->xrefList)
        DADestroy(expr->xrefList);
    expr->xrefTree = BTCreate(compare_records, sizeof(ExprXRefRecord));
    expr->xrefList = DACreate(sizeof(int32_t), 10);
    return expr->xrefTree && expr->xrefList;
}

ZORStatus ExprXRefOn(ExprContext* expr)
{
    expr_link_drop(expr);
    unlink_all(expr);
    expr->xrefOn = expr_xref_new_tables(expr) ? 1 : 0;
    return expr->xrefOn ? ZOR_S_OK : ZOR_E_OUTOFMEMORY;
}

void ExprXRefOff(ExprContext* expr)
{
    expr->xrefOn = 0;
}

void expr_record_assignment(ExprContext* expr, ExprOperand* target)
{
    if (!expr->xrefOn || !expr->xrefTree)
        return;
    ExprXRefRecord record = {target, expr->xrefCounter, expr->actExpr};
    BTInsert(expr->xrefTree, &record);
    ++expr->xrefCounter;
}

ZORStatus ExprXRef(ExprContext* expr)
{
    expr_link_drop(expr);
    if (!expr->xrefTree || !expr->xrefList)
        return ZOR_S_OK;
    uint32_t records = BTCount(expr->xrefTree);
    Layout walk = {expr, nullptr, 0, false, nullptr, 0};
    if (records)
        walk.variables = static_cast<ExprOperand**>(zor_malloc(records * sizeof(ExprOperand*)));
    BTForEach(expr->xrefTree, lay_out_record, &walk);
    if (walk.previous)
        close_run(walk);
    else
        DAAddElem(expr->xrefList, &kRunEnd);
    if (walk.variables) {
        std::sort(walk.variables, walk.variables + walk.count, by_value);
        link_instructions(expr, walk.variables, walk.count);
        zor_free(walk.variables);
    }
    return ZOR_S_OK;
}
