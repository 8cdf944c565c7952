// Placeholder operator code: every operator and conversion answers that it
// has no code yet, and the cross-reference records and links nothing.
#include "expr_ops.h"

namespace {

ZORStatus not_implemented(ExprContext*, ExprInstr*, ExprInstr*, ExprInstr*)
{
    return ZOR_E_NOTIMPL;
}

}

const ExprOpHandler kExprOpHandlers[EOP_TO_STRING + 1] = {
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented, not_implemented, not_implemented, not_implemented, not_implemented,
    not_implemented,
};

void expr_record_assignment(ExprContext*, ExprOperand*) {}

ZORStatus expr_refresh_variable(ExprContext*, int32_t, uint32_t, intptr_t)
{
    return 0;
}

int expr_xref_compare(const void* key, const void* elem)
{
    const ExprXRefRecord* a = static_cast<const ExprXRefRecord*>(key);
    const ExprXRefRecord* b = static_cast<const ExprXRefRecord*>(elem);
    if (a->variable != b->variable)
        return a->variable < b->variable ? -1 : 1;
    return a->sequence == b->sequence ? 0 : (a->sequence < b->sequence ? -1 : 1);
}
