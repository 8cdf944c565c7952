// Error reports in the form compilers use, so that editors can jump to them:
// "file:line:column: message", the source line, and a caret under the token.
#pragma once

#include <string>

#include "zorbase.h"

struct SourceLine {
    const std::wstring* file;
    int number;
    const std::wstring* text;
};

class Diagnostics {
public:
    explicit Diagnostics(uint32_t language) : language_(language) {}

    // `start` is the unit index of the failing token in the line, `length`
    // its length in units (0 for the end of the line).
    void report(const SourceLine& at, size_t start, size_t length, const std::wstring& message);
    // A message about a whole file or the command line, with no position.
    void report(const std::wstring& where, const std::wstring& message);

    // The library's text for a status code in the chosen language, with the
    // code's name where the catalogue has no text of its own.
    std::wstring status_text(ZORStatus code) const;

    int count() const { return count_; }

private:
    uint32_t language_;
    int count_ = 0;
};
