// Print masks: constant text with placeholders, cut by the library's format
// scanner, each placeholder filled from one value.
#pragma once

#include <string>
#include <vector>

#include "zorbase.h"

struct MaskPiece {
    int32_t kind; // the scanner's piece code
    std::wstring text;
};

// False when the scanner can't be made.
bool cut_mask(const std::wstring& mask, std::vector<MaskPiece>& pieces);

bool is_placeholder(const MaskPiece& piece);

// Number pictures take numbers (and texts, read as numbers); the text
// placeholders take any value through its text.
bool placeholder_takes(const MaskPiece& piece, uint32_t type);

// False when a number picture has too few integer positions for the value
// rounded to its decimals: the library then drops the leading digits.
bool fits_placeholder(const MaskPiece& piece, const void* value, uint32_t type);

std::wstring fill_placeholder(const MaskPiece& piece, const void* value, uint32_t type,
                              const std::wstring& datePicture);
