#include "sheet_line.h"

#include <wctype.h>

#include "values.h"

namespace {

// Wine's date formatter overruns its own stack when the text it makes grows
// beyond about 290 units; four units of text a picture unit stays below.
const size_t kMaxDatePicture = 64;

const wchar_t* const kLineWords[] = {L"var", L"const", L"datepicture", L"print"};

bool is_blank(wchar_t c) { return c == L' ' || c == L'\t'; }
bool is_ident_start(wchar_t c) { return (c < 128 && iswalpha(c)) || c == L'_'; }
bool is_ident_char(wchar_t c) { return (c < 128 && iswalnum(c)) || c == L'_'; }

size_t skip_blanks(const std::wstring& line, size_t at)
{
    while (at < line.size() && is_blank(line[at]))
        ++at;
    return at;
}

size_t word_end(const std::wstring& line, size_t at)
{
    if (at >= line.size() || !is_ident_start(line[at]))
        return at;
    while (at < line.size() && is_ident_char(line[at]))
        ++at;
    return at;
}

bool is_line_word(const std::wstring& word)
{
    for (const wchar_t* known : kLineWords) {
        if (word == known)
            return true;
    }
    return false;
}

LineError error_at(size_t start, size_t length, std::wstring message)
{
    return LineError{start, length, std::move(message)};
}

std::wstring trim_right(std::wstring text)
{
    while (!text.empty() && is_blank(text.back()))
        text.pop_back();
    return text;
}

bool parse_declaration(const std::wstring& line, size_t at, SheetLine& out, LineError& error)
{
    const wchar_t* keyword = out.constant ? L"const" : L"var";
    size_t typeStart = skip_blanks(line, at);
    size_t typeEnd = word_end(line, typeStart);
    if (typeEnd == typeStart) {
        error = error_at(typeStart, 1, std::wstring(L"a type is expected after \"") + keyword + L"\"");
        return false;
    }
    std::wstring typeName = line.substr(typeStart, typeEnd - typeStart);
    if (!type_by_name(typeName, out.type)) {
        error = error_at(typeStart, typeEnd - typeStart,
                         L"unknown type \"" + typeName +
                             L"\" (types are char, long, ulong, double, bitfield, string, date)");
        return false;
    }
    size_t nameStart = skip_blanks(line, typeEnd);
    size_t nameEnd = word_end(line, nameStart);
    if (nameEnd == nameStart) {
        error = error_at(nameStart, 1, L"a name is expected after the type");
        return false;
    }
    out.name = SheetItem{line.substr(nameStart, nameEnd - nameStart), nameStart};
    if (is_line_word(out.name.text)) {
        error = error_at(nameStart, nameEnd - nameStart, L"\"" + out.name.text + L"\" is a word of the sheet and no name");
        return false;
    }
    size_t next = skip_blanks(line, nameEnd);
    if (next == line.size())
        return true;
    if (line[next] != L'=') {
        error = error_at(next, 1, L"\"=\" or the end of the line is expected after the name");
        return false;
    }
    size_t valueStart = skip_blanks(line, next + 1);
    if (valueStart == line.size()) {
        error = error_at(valueStart, 0, L"a value is expected after \"=\"");
        return false;
    }
    out.hasValue = true;
    out.value = SheetItem{trim_right(line.substr(valueStart)), valueStart};
    return true;
}

// The double-quoted text that `keyword` takes at `start`: its inner text and
// the index behind it. `noun` names it in the messages.
bool quoted_argument(const std::wstring& line, size_t start, const wchar_t* keyword, const wchar_t* noun,
                     std::wstring& inner, size_t& end, LineError& error)
{
    if (start == line.size() || line[start] != L'"') {
        error = error_at(start, 1, std::wstring(keyword) + L" needs a " + noun + L" in double quotes");
        return false;
    }
    if (!read_quoted(line, start, inner, end)) {
        error = error_at(start, line.size() - start,
                         std::wstring(L"the ") + noun + L" is not closed by a double quote");
        return false;
    }
    return true;
}

bool parse_date_picture(const std::wstring& line, size_t at, SheetLine& out, LineError& error)
{
    size_t start = skip_blanks(line, at);
    std::wstring inner;
    size_t end;
    if (!quoted_argument(line, start, L"datepicture", L"picture", inner, end, error))
        return false;
    size_t rest = skip_blanks(line, end);
    if (rest != line.size()) {
        error = error_at(rest, line.size() - rest, L"nothing may follow the picture");
        return false;
    }
    out.text = SheetItem{unescape(inner), start + 1};
    if (out.text.text.empty()) {
        error = error_at(start + 1, 0, L"the date picture is empty");
        return false;
    }
    if (out.text.text.size() > kMaxDatePicture) {
        error = error_at(start + 1, inner.size(),
                         L"the date picture is longer than " + std::to_wstring(kMaxDatePicture) + L" characters");
        return false;
    }
    return true;
}

// Items are separated by commas outside literals, parentheses and brackets,
// so that a function call with several arguments is one item. A line comment
// stays with the last item, where the engine's scanner drops it.
bool split_items(const std::wstring& line, size_t at, SheetLine& out, LineError& error)
{
    size_t itemStart = at;
    int depth = 0;
    wchar_t quote = 0;
    auto take = [&](size_t end) {
        size_t start = skip_blanks(line, itemStart);
        std::wstring text = trim_right(line.substr(start, end - start));
        if (text.empty()) {
            error = error_at(start, 0, L"a value is expected here");
            return false;
        }
        out.items.push_back(SheetItem{text, start});
        return true;
    };
    for (size_t i = at; i < line.size(); ++i) {
        wchar_t c = line[i];
        if (quote) {
            if (c == L'\\')
                ++i;
            else if (c == quote)
                quote = 0;
        } else if (c == L'"' || c == L'\'') {
            quote = c;
        } else if (c == L'(' || c == L'[') {
            ++depth;
        } else if ((c == L')' || c == L']') && depth > 0) {
            --depth;
        } else if (c == L'/' && i + 1 < line.size() && line[i + 1] == L'/') {
            break;
        } else if (c == L',' && depth == 0) {
            if (!take(i))
                return false;
            itemStart = i + 1;
        }
    }
    return take(line.size());
}

bool parse_print(const std::wstring& line, size_t at, SheetLine& out, LineError& error)
{
    size_t start = skip_blanks(line, at);
    if (start == line.size()) {
        out.text = SheetItem{L"", start};
        return true;
    }
    std::wstring inner;
    size_t end;
    if (!quoted_argument(line, start, L"print", L"mask", inner, end, error))
        return false;
    out.text = SheetItem{inner, start + 1};
    if (skip_blanks(line, end) == line.size())
        return true;
    return split_items(line, end, out, error);
}

} // namespace

bool read_quoted(const std::wstring& line, size_t start, std::wstring& inner, size_t& end)
{
    for (size_t i = start + 1; i < line.size(); ++i) {
        if (line[i] == L'\\') {
            ++i;
        } else if (line[i] == L'"') {
            inner = line.substr(start + 1, i - start - 1);
            end = i + 1;
            return true;
        }
    }
    return false;
}

std::wstring unescape(const std::wstring& inner)
{
    std::wstring text;
    for (size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] == L'\\' && i + 1 < inner.size())
            ++i;
        text += inner[i];
    }
    return text;
}

bool parse_sheet_line(const std::wstring& line, SheetLine& out, LineError& error)
{
    out = SheetLine();
    if (line.size() > kMaxLineLength) {
        error = error_at(kMaxLineLength, line.size() - kMaxLineLength,
                         L"the line is longer than " + std::to_wstring(kMaxLineLength) + L" characters");
        return false;
    }
    size_t start = skip_blanks(line, 0);
    if (start == line.size() || line[start] == L'#')
        return true;
    size_t end = word_end(line, start);
    std::wstring word = line.substr(start, end - start);
    bool wordAlone = end == line.size() || is_blank(line[end]);
    if (wordAlone && (word == L"var" || word == L"const")) {
        out.kind = SheetLine::Declaration;
        out.constant = word == L"const";
        return parse_declaration(line, end, out, error);
    }
    if (wordAlone && word == L"datepicture") {
        out.kind = SheetLine::DatePicture;
        return parse_date_picture(line, end, out, error);
    }
    if (wordAlone && word == L"print") {
        out.kind = SheetLine::Print;
        return parse_print(line, end, out, error);
    }
    out.kind = SheetLine::Formula;
    out.formula = SheetItem{trim_right(line.substr(start)), start};
    return true;
}
