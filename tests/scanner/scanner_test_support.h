// What the scanner tests share: tokens and pieces printed into one string,
// so that a whole line of expectations reads as one row.
#pragma once

#include <doctest/doctest.h>

#include <stdio.h>

#include <string>

#include "zor_sym.h"

// Units outside printable ASCII print as <hex>.
inline std::string printable(const wchar_t* text, size_t len)
{
    std::string out;
    for (char unit[16]; len--; out += unit, ++text)
        snprintf(unit, sizeof unit, *text >= 0x20 && *text < 0x7F ? "%c" : "<%x>", unsigned(uint16_t(*text)));
    return out;
}

struct Scanner {
    SymScanner sc;

    explicit Scanner(int32_t mode, uint32_t maxIdent = 64, uint32_t bufLen = 64, int32_t ignoreCase = 0)
    {
        REQUIRE(SymInit(&sc, maxIdent, bufLen, ignoreCase, mode) == ZOR_S_OK);
    }
    ~Scanner() { SymRelease(&sc); }

    std::string alpha() const { return printable(sc.alpha, sc.alphaLen); }
    std::string raw() const { return printable(sc.raw, sc.rawLen); }

    // "code:alpha" for each token up to the end of `text`, or up to a string
    // error that ran into it; `all` keeps comment tokens.
    std::string tokens(const wchar_t* text, bool all = false)
    {
        SymNewLine(&sc, text);
        std::string out;
        for (int n = 0; n < 200; ++n) {
            int32_t token = all ? SymGetNextSymAll(&sc) : SymGetNextSym(&sc);
            CHECK(token == sc.sym);
            CHECK(sc.alpha[sc.alphaLen] == 0);
            CHECK(sc.raw[sc.rawLen] == 0);
            out += (out.empty() ? "" : " ") + std::to_string(token);
            if (token == SYM_EOL)
                return out;
            out += ":" + alpha();
            if ((token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) && sc.text[sc.column] == 0)
                return out;
        }
        return out + " ...";
    }

    // The first token of `text`, comments included, as "code=value" with the
    // field a number's code names, and "@column" when it ends early.
    std::string number(const wchar_t* text)
    {
        SymNewLine(&sc, text);
        int32_t token = SymGetNextSymAll(&sc);
        const double values[] = {SymGetDouble(&sc), double(SymGetULong(&sc)), double(SymGetLong(&sc)),
                                 double(SymGetUShort(&sc)), double(SymGetShort(&sc))};
        bool valued = token >= SYM_DOUBLE && token < 0;
        char out[64];
        int n = snprintf(out, sizeof out, valued ? "%d=%.15g" : "%d", token, valued ? values[token + 5] : 0.0);
        if (text[SymGetColumnNo(&sc)] != 0)
            snprintf(out + n, sizeof out - size_t(n), "@%u", SymGetColumnNo(&sc));
        return out;
    }
};
