// Values of the engine's types as text: plain for print masks, and marked
// (quotes around texts and characters) where a value is shown with its type.
#pragma once

#include <string>

#include "zorbase.h"

const wchar_t* type_name(uint32_t type);
// The type codes by their names in a sheet; false for other names.
bool type_by_name(const std::wstring& name, uint32_t& type);

std::wstring value_text(const void* value, uint32_t type, const std::wstring& datePicture);
std::wstring value_literal(const void* value, uint32_t type, const std::wstring& datePicture);

// Copies a result into a variable's storage of the same type; false when a
// string copy runs out of memory.
bool store_value(void* target, const void* value, uint32_t type);
