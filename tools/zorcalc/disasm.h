// The listing of compiled instructions, so that a user can see what the
// compiler made of a formula: index, opcode, operand type, storage, value.
#pragma once

#include <map>
#include <string>

#include "zorbase.h"

// Lists the instructions from `start` up to and including its EOP_END.
// `names` gives the names of the sheet's variables, constants and functions
// by their storage address.
std::wstring disassemble(ExprContext* expr, uint32_t start, const std::map<const void*, std::wstring>& names,
                         const std::wstring& datePicture);
