#include "sym_internal.h"

#include <wctype.h>

#include "zor_bt.h"

namespace {

// An operator by its first character: the code when it stands alone, and
// what a second (and for <<= and >>= a third) character makes of it.
struct Follower {
    wchar_t second = 0;
    int32_t code = 0;
    wchar_t third = 0;
    int32_t thirdCode = 0;
};

struct Operator {
    wchar_t  first;
    int32_t  alone;
    Follower followers[3];
};

constexpr Operator kCLikeOperators[] = {
    {L'!', 33, {{L'=', SYM_NE}}},
    {L'%', 37, {{L'=', SYM_MOD_ASSIGN}}},
    {L'&', 38, {{L'&', SYM_AND}, {L'=', SYM_AND_ASSIGN}}},
    {L'*', 42, {{L'/', SYM_COMMENT_CLOSE}, {L'=', SYM_MUL_ASSIGN}}},
    {L'+', 43, {{L'+', SYM_INC}, {L'=', SYM_ADD_ASSIGN}}},
    {L'-', 45, {{L'-', SYM_DEC}, {L'=', SYM_SUB_ASSIGN}, {L'>', SYM_ARROW}}},
    {L'/', 47, {{L'*', SYM_COMMENT_OPEN}, {L'/', SYM_LINE_COMMENT}, {L'=', SYM_DIV_ASSIGN}}},
    {L':', 58, {{L':', SYM_SCOPE}}},
    {L'<', 60, {{L'<', SYM_SHL, L'=', SYM_SHL_ASSIGN}, {L'=', SYM_LE}}},
    {L'=', 61, {{L'=', SYM_EQ}}},
    {L'>', 62, {{L'>', SYM_SHR, L'=', SYM_SHR_ASSIGN}, {L'=', SYM_GE}}},
    {L'^', 94, {{L'=', SYM_XOR_ASSIGN}}},
    {L'|', 124, {{L'|', SYM_OR}, {L'=', SYM_OR_ASSIGN}}},
    {L'~', 126, {{L'=', SYM_NOT_ASSIGN}}},
};

// In the dotted dialects a single or double "=" both compare. Mode 3 knows
// the rows behind the first four as well.
constexpr Operator kDottedOperators[] = {
    {L'!', 33, {{L'=', SYM_NE}}},
    {L'=', SYM_EQ, {{L'=', SYM_EQ}}},
    {L'<', 60, {{L'=', SYM_LE}, {L'>', SYM_NE}}},
    {L'>', 62, {{L'=', SYM_GE}}},
    {L'&', 38, {{L'&', SYM_AND}}},
    {L'|', 124, {{L'|', SYM_OR}}},
    {L'*', 42, {{L'/', SYM_ERR_COMMENT_END}}},
};
constexpr size_t kDottedOperatorsOfMode1 = 4;

// ASCII lookups built at compile time, so that dispatch costs one load.
struct AsciiTable {
    uint8_t entry[128];
};

template <size_t N>
constexpr AsciiTable index_operators(const Operator (&operators)[N], size_t count = N)
{
    AsciiTable table{};
    for (size_t i = 0; i < count; ++i)
        table.entry[operators[i].first] = uint8_t(i + 1);
    return table;
}

constexpr uint8_t kStartsWord = 1;
constexpr uint8_t kInWord = 2;

constexpr AsciiTable word_classes()
{
    AsciiTable table{};
    for (int c = 0; c < 128; ++c) {
        bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
        bool digit = c >= '0' && c <= '9';
        table.entry[c] = uint8_t((letter ? kStartsWord | kInWord : 0) | (digit ? kInWord : 0));
    }
    return table;
}

constexpr AsciiTable kCLikeIndex = index_operators(kCLikeOperators);
constexpr AsciiTable kDottedIndex = index_operators(kDottedOperators, kDottedOperatorsOfMode1);
constexpr AsciiTable kDottedCommentIndex = index_operators(kDottedOperators);
constexpr AsciiTable kWordClasses = word_classes();

struct Dialect {
    const Operator*   operators;
    const AsciiTable* operatorIndex;
    bool              dotted;         // dotted words; "." is no plain token
    bool              wholeComments;  // comments as single tokens, -203, -204
    bool              germanLetters;  // words continue with the seven letters
    bool              atAndDollar;    // "@" starts and continues, "$" ends a word
};

constexpr Dialect kDialects[4] = {
    {kCLikeOperators, &kCLikeIndex, false, false, false, false},
    {kDottedOperators, &kDottedIndex, true, false, true, true},
    {kCLikeOperators, &kCLikeIndex, false, false, true, false},
    {kDottedOperators, &kDottedCommentIndex, true, true, false, false},
};

bool is_german_letter(wchar_t c)
{
    switch (c) {
    case 0xC4: case 0xD6: case 0xDC: case 0xDF: case 0xE4: case 0xF6: case 0xFC:
        return true;
    default:
        return false;
    }
}

ZOR_FORCEINLINE bool is_blank(wchar_t c)
{
    // Blank, tab and line breaks are space, printable ASCII is not, in any
    // locale; only the rest needs the runtime's call.
    if (c == L' ' || (c >= 9 && c <= 13))
        return true;
    if (c > L' ' && c < 0x7F)
        return false;
    return c == 0x1A || c == 0xA0 || c == 0x200B || (c != 0 && iswspace(c));
}

bool continues_word(const Dialect& dialect, wchar_t c)
{
    if (c < 128)
        return (kWordClasses.entry[c] & kInWord) || (dialect.atAndDollar && (c == L'@' || c == L'$'));
    return dialect.germanLetters && is_german_letter(c);
}

// The runtime maps ASCII the same in every locale (its casing is not
// linguistic); sparing the call there nearly halves the time per identifier.
ZOR_FORCEINLINE wchar_t upper_case(wchar_t c)
{
    if (c < 0x80)
        return c >= L'a' && c <= L'z' ? wchar_t(c - 0x20) : c;
    return wchar_t(towupper(c));
}

void scan_identifier(SymScanner* sc, const Dialect& dialect, uint32_t col)
{
    const wchar_t* text = sc->text;
    for (;;) {
        wchar_t c = text[col++];
        if (ZOR_LIKELY(sc->alphaLen < sc->bufLen)) {
            sc->alphaUpper[sc->alphaLen] = upper_case(c);
            sc->alpha[sc->alphaLen++] = c;
        }
        if (dialect.atAndDollar && c == L'$')
            break;
        if (sc->alphaLen > sc->maxIdent || sc->alphaLen >= sc->bufLen)
            break;
        if (!continues_word(dialect, text[col]))
            break;
    }
    sc->column = col;
    sc->alpha[sc->alphaLen] = 0;
    sc->alphaUpper[sc->alphaLen] = 0;
    SymKeyword key = {sc->ignoreCase ? sc->alphaUpper : sc->alpha, 0};
    const SymKeyword* keyword = static_cast<const SymKeyword*>(BTSearch(sc->keywords, &key));
    sc->sym = keyword ? keyword->sym : SYM_IDENT;
}

void scan_operator(SymScanner* sc, const Operator& op, uint32_t col)
{
    const wchar_t* text = sc->text;
    sym::put_alpha(sc, text[col++]);
    int32_t code = op.alone;
    for (const Follower& f : op.followers) {
        if (f.second == 0 || text[col] != f.second)
            continue;
        sym::put_alpha(sc, text[col++]);
        code = f.code;
        if (f.third != 0 && text[col] == f.third) {
            sym::put_alpha(sc, text[col++]);
            code = f.thirdCode;
        }
        break;
    }
    sc->sym = code;
    sc->column = col;
}

struct DottedWord {
    const wchar_t* letters;  // upper case, without the dots
    int32_t        code;
    int            truth;    // value of .T. and .F., else -1
};

constexpr DottedWord kDottedWords[] = {
    {L"AND", SYM_AND, -1}, {L"OR", SYM_OR, -1}, {L"NOT", 33, -1},
    {L"XOR", 94, -1},      {L"T", SYM_LONG, 1}, {L"F", SYM_LONG, 0},
};

// `col` is on the dot. A word that does not match to its closing dot leaves
// the dot a token of its own.
void scan_dotted_word(SymScanner* sc, uint32_t col)
{
    const wchar_t* text = sc->text;
    for (const DottedWord& word : kDottedWords) {
        uint32_t i = 0;
        // Clearing 0x20 folds ASCII case and maps nothing else into A-Z.
        while (word.letters[i] != 0 && (text[col + 1 + i] & ~0x20) == word.letters[i])
            ++i;
        if (word.letters[i] != 0 || text[col + 1 + i] != L'.')
            continue;
        for (uint32_t k = 0; k < i + 2; ++k)
            sym::put_alpha(sc, text[col + k]);
        sc->column = col + i + 2;
        sc->sym = word.code;
        if (word.truth >= 0) {
            sc->shortVal = int16_t(word.truth);
            sc->ushortVal = uint16_t(word.truth);
            sc->longVal = word.truth;
            sc->ulongVal = uint32_t(word.truth);
            sc->doubleVal = word.truth;
        }
        return;
    }
    sym::put_alpha(sc, L'.');
    sc->column = col + 1;
    sc->sym = L'.';
}

// `col` is on the slash, and a "*" or "/" follows it.
void scan_whole_comment(SymScanner* sc, uint32_t col)
{
    const wchar_t* text = sc->text;
    sym::put_alpha(sc, text[col]);
    sym::put_alpha(sc, text[col + 1]);
    sc->column = col + 1;
    if (text[col + 1] == L'*') {
        sc->sym = sym::scan_c_comment(sc) ? SYM_C_COMMENT : SYM_ERR_COMMENT_EOF;
    } else {
        sc->sym = SYM_CPP_COMMENT;
        SymScanCPPComment(sc);
    }
}

// `column` is on the opening delimiter, or one before the text when an open
// string goes on.
void scan_quoted(SymScanner* sc, wchar_t quote)
{
    sc->openQuote = quote;
    bool closed = sym::scan_string(sc);
    if (quote == L'"')
        sc->sym = closed ? SYM_STRING : SYM_ERR_STRING;
    else
        sc->sym = closed && sc->alphaLen == 1 ? SYM_CHARACTER : SYM_ERR_CHARACTER;
    if (sc->sym == SYM_STRING || sc->sym == SYM_CHARACTER)
        sc->openQuote = 0;
}

}

ZOR_API int32_t SymGetNextSymAll(SymScanner* sc)
{
    if (ZOR_UNLIKELY(uint32_t(sc->mode) > 3))
        return 0;
    const Dialect& dialect = kDialects[sc->mode];
    const wchar_t* text = sc->text;
    uint32_t col;
    wchar_t c;
    if (sc->openQuote) {
        col = sc->column - 1;
        c = sc->openQuote;
    } else {
        sc->alphaLen = 0;
        sc->rawLen = 0;
        col = sc->column;
        while (is_blank(text[col]))
            ++col;
        c = text[col];
    }

    if (c < 128 && (kWordClasses.entry[c] & kStartsWord)) {
        scan_identifier(sc, dialect, col);
    } else if (sym::is_digit(c)) {
        sc->column = col;
        SymScanNumber(sc);
    } else if (c == L'"' || c == L'\'') {
        sc->column = col;
        scan_quoted(sc, c);
    } else if (c == 0) {
        sc->sym = SYM_EOL;
        sc->column = col;
    } else if (dialect.atAndDollar && c == L'@') {
        scan_identifier(sc, dialect, col);
    } else if (dialect.dotted && c == L'.') {
        scan_dotted_word(sc, col);
    } else if (dialect.wholeComments && c == L'/' && (text[col + 1] == L'*' || text[col + 1] == L'/')) {
        scan_whole_comment(sc, col);
    } else if (c < 128 && dialect.operatorIndex->entry[c]) {
        scan_operator(sc, dialect.operators[dialect.operatorIndex->entry[c] - 1], col);
    } else {
        sym::put_alpha(sc, c);
        sc->sym = c;
        sc->column = col + 1;
    }
    sym::terminate_texts(sc);
    return sc->sym;
}
