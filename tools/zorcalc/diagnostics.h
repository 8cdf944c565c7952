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

// A text of the workbench in its two languages.
struct Wording {
    const wchar_t* english;
    const wchar_t* german;
};

class Diagnostics {
public:
    explicit Diagnostics(uint32_t language) : language_(language) {}

    const wchar_t* say(const Wording& text) const { return language_ == 1031 ? text.german : text.english; }

    // `start` is the unit index of the failing token in the line, `length`
    // its length in units (0 for the end of the line).
    void report(const SourceLine& at, size_t start, size_t length, const std::wstring& message);
    // A message about a whole file or the command line, with no position.
    void report(const std::wstring& where, const std::wstring& message);
    // Like report, but no error: the exit status stays as it is.
    void warn(const SourceLine& at, size_t start, size_t length, const std::wstring& message);

    // A status code as text in the chosen language: the library's catalogue
    // for its own codes, the workbench's texts and the code's name for the
    // platform codes the engine returns.
    std::wstring status_text(ZORStatus code) const;

    int count() const { return count_; }

private:
    void show(const SourceLine& at, size_t start, size_t length, const std::wstring& message);

    uint32_t language_;
    int count_ = 0;
};
