// The compiler: one pass of recursive descent over the token stream, emitting
// postfix instructions as it goes. All typing happens here, so the run loop
// never inspects a value: every instruction gets its result storage, and
// operands of mixed type get conversion instructions.
#include "zor_expr.h"

#include <string.h>

#include "expr_internal.h"
#include "expr_link.h"
#include "expr_op_facts.h"
#include "expr_ops.h"

namespace {

constexpr uint32_t kNoConversion = 1;  // lower than every conversion opcode

// Conversion opcode by [from][to] over the types 0 to 7; kNoConversion where
// there is none.
constexpr uint32_t kConversion[8][8] = {
    {1, 1, 1, 1, 1, 1, 1, 1},
    {1, 1, EOP_TO_LONG, EOP_TO_ULONG, EOP_TO_DOUBLE, EOP_TO_BITFIELD, EOP_TO_STRING, 1},
    {1, EOP_TO_CHAR, 1, EOP_TO_ULONG, EOP_TO_DOUBLE, EOP_TO_BITFIELD, 1, 1},
    {1, EOP_TO_CHAR, EOP_TO_LONG, 1, EOP_TO_DOUBLE, EOP_TO_BITFIELD, 1, 1},
    {1, EOP_TO_CHAR, EOP_TO_LONG, EOP_TO_ULONG, 1, EOP_TO_BITFIELD, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1},
};

const wchar_t* const kTypeNames[8] = {L"EXT_Void",   L"EXT_Char",     L"EXT_Long",   L"EXT_ULong",
                                      L"EXT_Double", L"EXT_BitField", L"EXT_String", L"EXT_Date"};

// Shared by all objects: the text of the last type mismatch.
wchar_t g_mismatchText[64];

// The binary operator written with `token`, or null.
const ExprOpFacts* binary_operator(int32_t token)
{
    static constexpr ExprOpsOfForm<ExprOpForm::Binary> kBinary;
    for (uint8_t op : kBinary.opcodes)
        if (kExprOpFacts[op].token == token)
            return &kExprOpFacts[op];
    return nullptr;
}

// The assignment or prefix operator written with `token`, or EOP_END.
template <ExprOpForm Form>
uint32_t opcode_of(int32_t token)
{
    static constexpr ExprOpsOfForm<Form> kOps;
    for (uint8_t op : kOps.opcodes)
        if (kExprOpFacts[op].token == token)
            return op;
    return EOP_END;
}

class Compiler {
public:
    explicit Compiler(ExprContext* expr) : m_expr(expr) {}

    ZORStatus compile(const wchar_t* text, uint32_t* firstInstr, uint32_t wantedType,
                      uint32_t* isConst, uint32_t* resultType);

private:
    ExprContext* m_expr;
    int32_t      m_depth = -1;  // the formula itself is no nesting
    // Set behind a call of a function that is not called (EXT_Void or a type
    // above EXT_Date): it leaves its arguments and no value on the stack, so
    // nothing may be compiled on top of it.
    bool         m_valueless = false;

    // The token stream: a lent one where the caller set it, else our own.
    void advance()
    {
        if (m_expr->nextSymFn)
            m_expr->nextSymFn(m_expr->callbackContext, m_expr->externalScanner);
        else
            SymGetNextSym(&m_expr->scanner);
    }
    int32_t token()
    {
        return m_expr->getSymFn ? m_expr->getSymFn(m_expr->callbackContext, m_expr->externalScanner)
                                : SymGetSym(&m_expr->scanner);
    }
    const wchar_t* token_text()
    {
        return m_expr->getAlphaFn
                   ? m_expr->getAlphaFn(m_expr->callbackContext, m_expr->externalScanner)
                   : SymGetAlpha(&m_expr->scanner);
    }
    // Numbers and string texts come from the lent scanner when there is one.
    const SymScanner& values() const
    {
        return m_expr->externalScanner ? *m_expr->externalScanner : m_expr->scanner;
    }

    ZORStatus fail_at_token(ZORStatus status)
    {
        m_expr->errorText = token_text();
        return status;
    }

    ZORStatus enter()
    {
        return ++m_depth > EXPR_MAX_NESTING ? fail_at_token(EXPR_E_TOO_DEEP) : ZOR_S_OK;
    }

    DA*      code() const { return m_expr->code; }
    uint32_t size() const { return uint32_t(DAGetSize(m_expr->code)); }

    ZORStatus reserve_end_slot();
    ZORStatus append(const ExprInstr& instr);
    ZORStatus emit_operand(uint32_t opcode, const ExprOperand& operand);
    ZORStatus emit(uint32_t opcode, uint32_t type, const ExprOperand* target);
    ZORStatus emit_constant(uint32_t type, const void* init);
    ZORStatus convert(uint32_t position, uint32_t other, bool forced);
    ZORStatus mismatch(uint32_t a, uint32_t b);

    ZORStatus assignment();
    ZORStatus binary(uint8_t minPriority);
    ZORStatus unary();
    ZORStatus postfix();
    ZORStatus call(const ExprOperand& function);
    ZORStatus arguments(int32_t typeIndex);
    ZORStatus index();
    ZORStatus member(uint32_t opcode);
    ZORStatus primary(const ExprOperand** symbol);
};

// The array always keeps one free slot behind the last instruction, so that
// the closing EOP_END can be appended even when the heap is exhausted.
ZORStatus Compiler::reserve_end_slot()
{
    DA* da = code();
    if (da->count < da->capacity)
        return ZOR_S_OK;
    const ExprInstr end = {};
    if (!DAAddElem(da, &end))
        return ZOR_E_OUTOFMEMORY;
    DADeleteLast(da);
    return ZOR_S_OK;
}

ZORStatus Compiler::append(const ExprInstr& instr)
{
    if (m_valueless)
        return fail_at_token(ZOR_DISP_E_TYPEMISMATCH);
    if (!DAAddElem(code(), &instr))
        return ZOR_E_OUTOFMEMORY;
    if (reserve_end_slot() != ZOR_S_OK) {
        DADeleteLast(code());
        return ZOR_E_OUTOFMEMORY;
    }
    return ZOR_S_OK;
}

// Appends an instruction owning `operand`; on failure the value goes too.
ZORStatus Compiler::emit_operand(uint32_t opcode, const ExprOperand& operand)
{
    const ExprInstr instr = {opcode, operand};
    const ZORStatus status = append(instr);
    if (status != ZOR_S_OK)
        expr_release_value(operand);
    return status;
}

ZORStatus Compiler::emit(uint32_t opcode, uint32_t type, const ExprOperand* target)
{
    ExprOperand operand;
    if (target) {
        // An index records the element type even where its base has no
        // variable behind it and the target is the "no L-value" record.
        operand = *target;
        if (type)
            operand.type = type;
    } else {
        const uint32_t valueType = type ? type : m_expr->curType;
        const ZORStatus status = expr_new_value(m_expr, valueType, nullptr, &operand);
        if (status != ZOR_S_OK)
            return status;
    }
    if (type)
        m_expr->curType = type;
    return emit_operand(opcode, operand);
}

ZORStatus Compiler::emit_constant(uint32_t type, const void* init)
{
    ExprOperand operand;
    const ZORStatus status = expr_new_value(m_expr, type, init, &operand);
    if (status != ZOR_S_OK)
        return status;
    m_expr->curType = type;
    m_expr->lvalue = &g_exprNoLValue;
    return emit_operand(EOP_NOP, operand);
}

ZORStatus Compiler::mismatch(uint32_t a, uint32_t b)
{
    wcscpy(g_mismatchText, kTypeNames[a]);
    wcscat(g_mismatchText, L" <-> ");
    wcscat(g_mismatchText, kTypeNames[b]);
    m_expr->errorText = g_mismatchText;
    return ZOR_DISP_E_TYPEMISMATCH;
}

// Balances what was compiled last (of curType) with the other side (of type
// `other`). Forced, or when the last operand is the one to widen, a
// conversion is appended; otherwise one is inserted at `position`, right
// behind the left operand's code.
ZORStatus Compiler::convert(uint32_t position, uint32_t other, bool forced)
{
    const uint32_t current = m_expr->curType;
    if (other == current)
        return ZOR_S_OK;
    if (other >= EXT_Unknown || current >= EXT_Unknown)
        return ZOR_DISP_E_TYPEMISMATCH;
    const uint32_t towardCurrent = kConversion[other][current];
    const uint32_t towardOther = kConversion[current][other];
    const bool convertLast = forced || towardCurrent < towardOther;
    const uint32_t opcode = convertLast ? towardOther : towardCurrent;
    if (opcode == kNoConversion)
        return mismatch(other, current);
    ExprOperand operand;
    const ZORStatus status = expr_new_value(m_expr, convertLast ? other : current, nullptr, &operand);
    if (status != ZOR_S_OK)
        return status;
    operand.type = convertLast ? current : other;
    if (convertLast) {
        m_expr->curType = other;
        return emit_operand(opcode, operand);
    }
    const ExprInstr instr = {opcode, operand};
    if (!DAInsertElem(code(), int32_t(position), &instr)) {
        expr_release_value(operand);
        return ZOR_E_OUTOFMEMORY;
    }
    return ZOR_S_OK;
}

ZORStatus Compiler::compile(const wchar_t* text, uint32_t* firstInstr, uint32_t wantedType,
                            uint32_t* isConst, uint32_t* resultType)
{
    ExprContext* expr = m_expr;
    *firstInstr = expr->actExpr = size();
    expr->lvalue = nullptr;
    if (resultType)
        *resultType = 0;
    SymReset(&expr->scanner);
    SymNewLine(&expr->scanner, text);
    if (expr->autoFetch)
        advance();
    expr->curType = 0;
    expr->constFlag = isConst;
    if (isConst)
        *isConst = 1;
    int32_t tok = token();
    if (tok == SYM_EOL || tok == SYM_EOF) {
        *firstInstr = EXPR_EMPTY;
        return ZOR_S_OK;
    }
    ZORStatus status = reserve_end_slot();
    if (status != ZOR_S_OK)
        return status;
    status = assignment();
    if (status == ZOR_S_OK && wantedType)
        status = convert(size(), wantedType, true);
    if (status == ZOR_S_OK) {
        tok = token();
        const bool terminator = tok > 0 && tok <= 0xFFFF && expr->terminators &&
                                wcschr(expr->terminators, wchar_t(tok));
        if (tok == SYM_ERR_COMMENT_EOF)
            status = fail_at_token(ZOR_E_COMMENT_NOT_CLOSED);
        else if (tok != SYM_EOL && tok != SYM_EOF && !terminator)
            status = fail_at_token(ZOR_E_SYNTAX_ERROR);
        else if (resultType)
            *resultType = expr->curType;
    }
    const ExprInstr end = {};
    DAAddElem(code(), &end);
    return status;
}

ZORStatus Compiler::assignment()
{
    ZORStatus status = enter();
    if (status == ZOR_S_OK)
        status = binary(0);
    const uint32_t opcode = opcode_of<ExprOpForm::Assignment>(token());
    if (status != ZOR_S_OK || opcode == EOP_END) {
        --m_depth;
        return status;
    }
    ExprOperand* target = m_expr->lvalue;
    const uint32_t leftType = m_expr->curType;
    if (target->storage == EXS_Const)
        return ZOR_E_LVALUE_REQUIRED;
    advance();
    status = assignment();
    if (status != ZOR_S_OK)
        return status;
    const bool shift = opcode == EOP_SHLASS || opcode == EOP_SHRASS;
    status = convert(size(), shift ? uint32_t(EXT_Long) : leftType, true);
    if (status != ZOR_S_OK)
        return status;
    m_expr->curType = leftType;
    status = emit(opcode, 0, target);
    if (status != ZOR_S_OK)
        return status;
    m_expr->lvalue = target;
    expr_record_assignment(m_expr, target);
    --m_depth;
    return ZOR_S_OK;
}

// All binary levels in one: an operator binds the operand to its right up to
// the next operator of no higher priority, so each level's loop runs here
// with the priority as its bound. A single operand passes through unchanged,
// L-value included.
ZORStatus Compiler::binary(uint8_t minPriority)
{
    ZORStatus status = unary();
    for (;;) {
        if (status != ZOR_S_OK)
            return status;
        const ExprOpFacts* op = binary_operator(token());
        if (!op || op->priority < minPriority)
            return ZOR_S_OK;
        if (m_valueless)
            return fail_at_token(ZOR_DISP_E_TYPEMISMATCH);
        const uint32_t position = size();
        const uint32_t leftType = m_expr->curType;
        advance();
        status = binary(uint8_t(op->priority + 1));
        if (status != ZOR_S_OK)
            return status;
        uint32_t resultType = 0;
        if (op->result == ExprOpResult::Left) {
            status = convert(position, EXT_Long, true);
            m_expr->curType = resultType = leftType;
        } else {
            status = convert(position, leftType, false);
            if (op->result == ExprOpResult::Long)
                resultType = EXT_Long;
        }
        if (status == ZOR_S_OK)
            status = emit(op->opcode, resultType, nullptr);
        m_expr->lvalue = &g_exprNoLValue;
    }
}

ZORStatus Compiler::unary()
{
    const uint32_t opcode = opcode_of<ExprOpForm::Prefix>(token());
    if (opcode == EOP_END)
        return postfix();
    ZORStatus status = enter();
    if (status != ZOR_S_OK)
        return status;
    advance();
    status = unary();
    if (status != ZOR_S_OK)
        return status;
    if (opcode == EOP_PREINC || opcode == EOP_PREDEC) {
        ExprOperand* target = m_expr->lvalue;
        if (target->storage == EXS_Const)
            return ZOR_E_LVALUE_REQUIRED;
        status = emit(opcode, 0, target);
        if (status == ZOR_S_OK)
            expr_record_assignment(m_expr, target);
    } else {
        status = emit(opcode, opcode == EOP_LNOT ? EXT_Long : 0, nullptr);
        m_expr->lvalue = &g_exprNoLValue;
    }
    --m_depth;
    return status;
}

ZORStatus Compiler::postfix()
{
    const ExprOperand* symbol = nullptr;
    ZORStatus status = primary(&symbol);
    if (status == ZOR_S_OK && symbol && symbol->storage == EXS_Function)
        status = call(*symbol);
    while (status == ZOR_S_OK) {
        const uint32_t opcode = opcode_of<ExprOpForm::Postfix>(token());
        const ExprOpClass kind = kExprOpFacts[opcode].kind;
        if (kind == ExprOpClass::PostStep) {
            ExprOperand* target = m_expr->lvalue;
            m_expr->lvalue = &g_exprNoLValue;
            if (target->storage == EXS_Const)
                return ZOR_E_LVALUE_REQUIRED;
            status = emit(opcode, 0, nullptr);
            if (status != ZOR_S_OK)
                return status;
            advance();
            expr_record_assignment(m_expr, target);
        } else if (kind == ExprOpClass::Refused) {
            status = member(opcode);
        } else if (kind == ExprOpClass::Call) {
            return fail_at_token(ZOR_E_FUNCTION_REQUIRED);
        } else if (kind == ExprOpClass::Index) {
            status = index();
        } else {
            break;
        }
    }
    return status;
}

// The function's name was emitted as an operand; it moves behind the
// arguments, where EOP_PAR finds it on top of them.
ZORStatus Compiler::call(const ExprOperand& function)
{
    if (token() != '(')
        return fail_at_token(ZOR_E_LPAREN_REQUIRED);
    const ExprInstr name = *static_cast<const ExprInstr*>(DAGetElem(code(), int32_t(size()) - 1));
    DADeleteLast(code());
    advance();
    ZORStatus status = arguments(function.xrefIndex);
    if (status != ZOR_S_OK)
        return status;
    if (token() != ')')
        return fail_at_token(ZOR_E_RPAREN_REQUIRED);
    status = append(name);
    if (status != ZOR_S_OK)
        return status;
    m_expr->curType = function.type;
    status = emit(EOP_PAR, 0, nullptr);
    if (status != ZOR_S_OK)
        return status;
    m_valueless = function.type == EXT_Void || function.type > EXT_Date;
    advance();
    m_expr->lvalue = &g_exprNoLValue;
    return ZOR_S_OK;
}

ZORStatus Compiler::arguments(int32_t typeIndex)
{
    auto declared = [this, &typeIndex]() {
        return *static_cast<const uint32_t*>(DAGetElem(m_expr->argTypes, typeIndex));
    };
    for (int32_t tok = token(); tok != ')' && tok != SYM_EOL && tok != SYM_EOF; tok = token()) {
        const uint32_t type = declared();
        if (type == 0)
            return fail_at_token(ZOR_DISP_E_BADPARAMCOUNT);
        m_expr->curType = 0;
        ZORStatus status = assignment();
        if (status == ZOR_S_OK && type != EXT_Unknown)
            status = convert(size(), type, true);
        if (status != ZOR_S_OK)
            return status;
        ++typeIndex;
        if (token() == ')')
            break;
        if (token() != ',')
            return fail_at_token(ZOR_E_COMMA_REQUIRED);
        advance();
    }
    return declared() == 0 ? ZOR_S_OK : fail_at_token(ZOR_DISP_E_BADPARAMCOUNT);
}

ZORStatus Compiler::index()
{
    const uint32_t baseType = m_expr->curType;
    ExprOperand* base = m_expr->lvalue;
    advance();
    ZORStatus status = assignment();
    if (status != ZOR_S_OK)
        return status;
    if (token() != ']')
        return fail_at_token(ZOR_E_RBRACKET_REQUIRED);
    status = convert(size(), EXT_Long, true);
    if (status != ZOR_S_OK)
        return status;
    m_expr->curType = baseType;
    if (baseType == EXT_String) {
        status = emit(EOP_IDX, EXT_Char, nullptr);
        base = &g_exprNoLValue;
    } else if (baseType == EXT_BitField) {
        status = emit(EOP_IDX, EXT_Long, nullptr);
    } else {
        status = emit(EOP_IDX, baseType, base);
    }
    if (status != ZOR_S_OK)
        return status;
    advance();
    m_expr->lvalue = base;
    return ZOR_S_OK;
}

ZORStatus Compiler::member(uint32_t opcode)
{
    advance();
    if (token() != SYM_IDENT)
        return fail_at_token(ZOR_E_IDENTIFIER_REQUIRED);
    const ExprSymbol* symbol = expr_find_symbol(m_expr, token_text());
    ZORStatus status = symbol ? emit_operand(EOP_NOP, symbol->operand) : ZOR_S_OK;
    if (status == ZOR_S_OK)
        status = emit(opcode, 0, nullptr);
    if (status == ZOR_S_OK)
        advance();
    return status;
}

ZORStatus Compiler::primary(const ExprOperand** symbol)
{
    const int32_t tok = token();
    const SymScanner& sc = values();
    ZORStatus status;
    switch (tok) {
    case SYM_IDENT: {
        if (m_expr->constFlag)
            *m_expr->constFlag = 0;
        ExprOperand* operand = ExprLookUp(m_expr, token_text());
        if (!operand)
            return ZOR_DISP_E_UNKNOWNNAME;
        ++operand->useCount;
        m_expr->lvalue = operand;
        m_expr->curType = operand->type;
        *symbol = operand;
        status = emit_operand(EOP_NOP, *operand);
        break;
    }
    case SYM_SHORT: {
        const int32_t value = sc.shortVal;
        status = emit_constant(EXT_Long, &value);
        break;
    }
    case SYM_USHORT: {
        const uint32_t value = sc.ushortVal;
        status = emit_constant(EXT_ULong, &value);
        break;
    }
    case SYM_LONG: status = emit_constant(EXT_Long, &sc.longVal); break;
    case SYM_ULONG: status = emit_constant(EXT_ULong, &sc.ulongVal); break;
    case SYM_DOUBLE: status = emit_constant(EXT_Double, &sc.doubleVal); break;
    case SYM_STRING: status = emit_constant(EXT_String, sc.alpha); break;
    case SYM_CHARACTER: status = emit_constant(EXT_Char, sc.alpha); break;
    case '(': {
        advance();
        status = assignment();
        if (status == ZOR_S_OK && token() != ')')
            status = fail_at_token(ZOR_E_RPAREN_REQUIRED);
        break;
    }
    case SYM_ERR_NUMBER: return fail_at_token(ZOR_E_ILLEGAL_NUMBER);
    case SYM_ERR_STRING: return fail_at_token(ZOR_E_ILLEGAL_STRING);
    case SYM_ERR_CHARACTER: return fail_at_token(ZOR_E_ILLEGAL_CHARACTER);
    case SYM_ERR_COMMENT_EOF: return fail_at_token(ZOR_E_COMMENT_NOT_CLOSED);
    case SYM_ERR_COMMENT_END: return fail_at_token(ZOR_E_COMMENT_END_OUTSIDE);
    default: return fail_at_token(ZOR_E_OPERAND_REQUIRED);
    }
    if (status == ZOR_S_OK)
        advance();
    return status;
}

}

ZORStatus ExprCompile(ExprContext* expr, const wchar_t* text, uint32_t* firstInstr, uint32_t wantedType,
                      uint32_t* isConst, uint32_t* resultType)
{
    // Appending moves the array and the arena: the linked forms go.
    expr_link_drop(expr);
    return Compiler(expr).compile(text, firstInstr, wantedType, isConst, resultType);
}
