// What the scanner tests share: a printout of token and piece texts that
// puts a whole line of expectations into one string, and a symbol scanner in
// the test's storage.
#pragma once

#include <doctest/doctest.h>

#include <stdio.h>

#include <string>

#include "zor_sym.h"

// Units outside printable ASCII print as <hex>.
inline std::string printable(const wchar_t* text, size_t len)
{
    std::string out;
    char hex[16];
    for (size_t i = 0; i < len; ++i) {
        unsigned c = uint16_t(text[i]);
        snprintf(hex, sizeof hex, "<%x>", c);
        out += c >= 0x20 && c < 0x7F ? std::string(1, char(c)) : hex;
    }
    return out;
}

struct Scanner {
    SymScanner sc;

    explicit Scanner(int32_t mode, uint32_t maxIdent = 64, uint32_t bufLen = 64,
                     int32_t ignoreCase = 0)
    {
        REQUIRE(SymInit(&sc, maxIdent, bufLen, ignoreCase, mode) == ZOR_S_OK);
    }
    ~Scanner() { SymRelease(&sc); }

    std::string alpha() const { return printable(sc.alpha, sc.alphaLen); }
    std::string raw() const { return printable(sc.raw, sc.rawLen); }

    // Sets up a call of one scanning routine on `text` at `column`.
    void at(const wchar_t* text, uint32_t column)
    {
        SymNewLine(&sc, text);
        sc.column = column;
        sc.alphaLen = sc.rawLen = 0;
    }

    // "code:alpha" for each token of `text` (null: of the current text) up
    // to its end, or up to a string error that ran into it; `all` keeps
    // comment tokens.
    std::string tokens(const wchar_t* text, bool all = false)
    {
        if (text)
            SymNewLine(&sc, text);
        std::string out;
        for (int n = 0; n < 200; ++n) {
            int32_t token = all ? SymGetNextSymAll(&sc) : SymGetNextSym(&sc);
            CHECK((token == sc.sym && sc.alpha[sc.alphaLen] == 0 && sc.raw[sc.rawLen] == 0));
            out += (out.empty() ? "" : " ") + std::to_string(token);
            if (token == SYM_EOL)
                return out;
            out += ":" + alpha();
            if ((token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) && sc.text[sc.column] == 0)
                return out;
        }
        return out + " ...";
    }

    // The first token of `text`, comments included, as "code=value" with
    // the value field that a number's code names, and "@column" when the
    // token ends before the text.
    std::string number(const wchar_t* text)
    {
        SymNewLine(&sc, text);
        int32_t token = SymGetNextSymAll(&sc);
        const double values[] = {SymGetDouble(&sc), double(SymGetULong(&sc)), double(SymGetLong(&sc)),
                                 double(SymGetUShort(&sc)), double(SymGetShort(&sc))};
        char out[64];
        bool valued = token >= SYM_DOUBLE && token < 0;
        int n = valued ? snprintf(out, sizeof out, "%d=%.15g", token, values[token + 5])
                       : snprintf(out, sizeof out, "%d", token);
        if (text[SymGetColumnNo(&sc)] != 0)
            snprintf(out + n, sizeof out - size_t(n), "@%u", SymGetColumnNo(&sc));
        return out;
    }
};
