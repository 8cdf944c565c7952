#include "disasm.h"

#include <stdio.h>

#include "values.h"

namespace {

const wchar_t* const kOpcodeNames[] = {
    L"EOP_END",     L"EOP_NOP",     L"EOP_ASS",      L"EOP_MULASS",      L"EOP_DIVASS",    L"EOP_MODASS",
    L"EOP_ADDASS",  L"EOP_SUBASS",  L"EOP_SHLASS",   L"EOP_SHRASS",      L"EOP_ANDASS",    L"EOP_XORASS",
    L"EOP_ORASS",   L"EOP_LOR",     L"EOP_LAND",     L"EOP_OR",          L"EOP_XOR",       L"EOP_AND",
    L"EOP_EQU",     L"EOP_NEQ",     L"EOP_LT",       L"EOP_GT",          L"EOP_LEQ",       L"EOP_GEQ",
    L"EOP_SHL",     L"EOP_SHR",     L"EOP_ADD",      L"EOP_SUB",         L"EOP_MUL",       L"EOP_DIV",
    L"EOP_MOD",     L"EOP_PREINC",  L"EOP_PREDEC",   L"EOP_POS",         L"EOP_NEG",       L"EOP_LNOT",
    L"EOP_NOT",     L"EOP_DRF",     L"EOP_ADR",      L"EOP_POSTINC",     L"EOP_POSTDEC",   L"EOP_IDX",
    L"EOP_PAR",     L"EOP_DFA",     L"EOP_IFA",      L"EOP_TO_CHAR",     L"EOP_TO_LONG",   L"EOP_TO_ULONG",
    L"EOP_TO_BITFIELD", L"EOP_TO_DOUBLE", L"EOP_TO_STRING"};

const wchar_t* const kStorageNames[] = {L"plain", L"string", L"bitfield", L"date", L"function", L"constant"};

std::wstring operand_text(const ExprInstr& instr, const std::map<const void*, std::wstring>& names,
                          const std::wstring& datePicture)
{
    const ExprOperand& op = instr.operand;
    if (!op.value)
        return L"-";
    auto named = names.find(op.value);
    if (named != names.end())
        return named->second;
    // Only a pushed operand has a value before the run: the slots of
    // operators are filled when they execute.
    uint32_t type = op.type;
    if (instr.opcode != EOP_NOP || type == EXT_Void || type > EXT_Date)
        return L"-";
    return value_literal(op.value, type, datePicture);
}

} // namespace

std::wstring disassemble(ExprContext* expr, uint32_t start, const std::map<const void*, std::wstring>& names,
                         const std::wstring& datePicture)
{
    std::wstring listing;
    int32_t size = DAGetSize(expr->code);
    for (int32_t index = int32_t(start); index < size; ++index) {
        const ExprInstr& instr = *static_cast<const ExprInstr*>(DAGetElem(expr->code, index));
        const wchar_t* opcode = instr.opcode < sizeof kOpcodeNames / sizeof kOpcodeNames[0]
                                    ? kOpcodeNames[instr.opcode] : L"?";
        const wchar_t* storage = instr.operand.storage < sizeof kStorageNames / sizeof kStorageNames[0]
                                     ? kStorageNames[instr.operand.storage] : L"?";
        wchar_t row[96];
        swprintf(row, 96, L"%6d  %-16ls %-13ls %-9ls ", index, opcode, type_name(instr.operand.type), storage);
        listing += row + operand_text(instr, names, datePicture) + L"\n";
        if (instr.opcode == EOP_END)
            break;
    }
    return listing;
}
