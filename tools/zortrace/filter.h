// What show, follow and listen keep: level letters, a span of time and a
// text, all of which a record must pass.
#pragma once

#include <string>

#include "trace_line.h"

struct Filter {
    std::wstring levels;     // letters of "?DIWEA"; empty keeps every level
    bool hasSince = false;
    TDDate since{};          // first moment kept
    bool hasUntil = false;
    TDDate until{};          // first moment no longer kept
    std::wstring grep;       // lower case; empty keeps every text

    // Level and time can only be judged on a line with a prefix: a line
    // without one (a fragment left by a trim, a hand-edited line) passes
    // them and is judged by its text alone.
    bool keeps(const Record& record) const;
};

// Reads a moment as "yyyy-MM-dd", "yyyy-MM-dd HH:mm[:ss]" (or with T
// between date and time) or "HH:mm[:ss]" of today. `end` is the moment
// just after the span that the text names, so that an --until of a day,
// minute or second takes in all of it. False when no form fits.
bool read_moment(const std::wstring& text, TDDate& start, TDDate& end);

// Letters of the level table, checked and in upper case; false on any
// other letter.
bool read_levels(const std::wstring& text, std::wstring& levels);

std::wstring lower(std::wstring text);
