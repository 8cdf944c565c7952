#include "disasm.h"

#include <stdio.h>

#include "values.h"
#include "../../src/expr/expr_op_facts.h"

namespace {

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
        const wchar_t* opcode = expr_op_name(instr.opcode) ? expr_op_name(instr.opcode) : L"?";
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
