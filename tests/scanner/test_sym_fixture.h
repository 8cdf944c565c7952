// A scanner in the test's storage and a compact printout of what it reads,
// so that a whole line of expectations fits into one string.
#pragma once

#include <doctest/doctest.h>

#include <string>

#include "zor_sym.h"

// Units from 0x7F up print as <hex>.
inline std::string printable(const wchar_t* text, uint32_t len)
{
    std::string out;
    for (uint32_t i = 0; i < len; ++i) {
        unsigned c = uint16_t(text[i]);
        if (c >= 0x20 && c < 0x7F) {
            out += char(c);
        } else {
            char hex[16];
            snprintf(hex, sizeof hex, "<%x>", c);
            out += hex;
        }
    }
    return out;
}

struct Scanner {
    SymScanner sc;

    explicit Scanner(int32_t mode, uint32_t maxIdent = 64, uint32_t bufLen = 64, int32_t ignoreCase = 0)
    {
        REQUIRE(SymInit(&sc, maxIdent, bufLen, ignoreCase, mode) == ZOR_S_OK);
    }
    ~Scanner() { SymRelease(&sc); }
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    std::string alpha() const { return printable(sc.alpha, sc.alphaLen); }
    std::string upper() const { return printable(sc.alphaUpper, sc.alphaLen); }
    std::string raw() const { return printable(sc.raw, sc.rawLen); }

    // "code:alpha" for each token of `text` up to the end of the text, or up
    // to an error token that ran into it; `all` keeps comment tokens.
    std::string tokens(const wchar_t* text, bool all = false)
    {
        SymNewLine(&sc, text);
        return more(all);
    }

    std::string more(bool all = false)
    {
        std::string out;
        for (int n = 0; n < 200; ++n) {
            int32_t token = all ? SymGetNextSymAll(&sc) : SymGetNextSym(&sc);
            CHECK(token == sc.sym);
            CHECK(sc.alpha[sc.alphaLen] == 0);
            out += (out.empty() ? "" : " ") + std::to_string(token);
            if (token == SYM_EOL)
                return out;
            out += ":" + alpha();
            if ((token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) && sc.text[sc.column] == 0)
                return out;
        }
        return out + " ...";
    }
};
