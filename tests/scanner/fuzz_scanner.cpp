#include <doctest/doctest.h>

#include <string>

#include "fenced.h"
#include "fuzz.h"
#include "guard_heap.h"
#include "wide_text.h"
#include "zor_fsc.h"
#include "zor_sym.h"

namespace {

// Every allocation of this program, the scanners' buffers included, ends at
// a no-access page.
[[maybe_unused]] const bool guarded = guard_this_program();

const wchar_t kTokenUnits[] = L"\"'\\x0b.eE+-*/=<>!&|^~%()[]{},;:?#@$_aZ19 \t\r\n\xE4\xA0\xFFFF\xD800";

}

TEST_CASE("fuzz: Sym on random units in all four dialects with tiny and huge buffers")
{
    fuzz_loop(2500, [](FuzzRng& rng) {
        SymScanner sc;
        const uint32_t bufLen = rng.chance(50) ? rng.below(8) : rng.pick({64u, 4096u, 100000u});
        const uint32_t maxIdent = rng.chance(50) ? rng.below(10) : rng.pick({64u, 0xFFFFFFFFu});
        const int32_t mode = int32_t(rng.below(4));
        REQUIRE(SymInit(&sc, maxIdent, bufLen, int32_t(rng.below(2)), mode) == ZOR_S_OK);
        const SymKeyword keyword = {L"kw", 77};
        SymSetKeyword(&sc, &keyword);
        for (int line = rng.between(1, 3); line > 0; --line) {
            const Fenced<wchar_t> text(rng.text(rng.chance(10) ? 2000 : 40, kTokenUnits));
            const size_t length = wcslen(text.data());
            CAPTURE(std::wstring(text.data()));
            CAPTURE(mode);
            CAPTURE(bufLen);
            SymNewLine(&sc, text.data());
            for (size_t steps = 0;; ++steps) {
                REQUIRE(steps <= length + 2);
                const int32_t token = rng.chance(50) ? SymGetNextSymAll(&sc) : SymGetNextSym(&sc);
                REQUIRE(sc.column <= length);
                REQUIRE(sc.alphaLen <= bufLen);
                REQUIRE(sc.rawLen <= bufLen);
                CHECK(sc.alpha[sc.alphaLen] == 0);
                CHECK(sc.raw[sc.rawLen] == 0);
                CHECK(token == sc.sym);
                CHECK(SymGetSymDescription(token) != nullptr);
                // A string open at the end repeats its error until reset, or
                // goes on into the next line.
                const bool open = (token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) && !text.data()[sc.column];
                if (token == SYM_EOL || (open && rng.chance(50)))
                    break;
                if (open)
                    SymReset(&sc);
            }
        }
        SymRelease(&sc);
    });
}

TEST_CASE("fuzz: FSc cuts random masks into pieces that cover the line")
{
    fuzz_loop(10000, [](FuzzRng& rng) {
        const std::wstring mask = rng.text(rng.chance(10) ? 1000 : 40, L"#$*,.+-&/^ \\x0n7a19Ab\t", true);
        const bool counted = rng.chance(50);
        const Fenced<wchar_t> line(mask);
        FScScanner fsc;
        REQUIRE(FScInit(&fsc, uint32_t(mask.size()) + 1) == ZOR_S_OK);
        if (counted)
            FScSetLineLen(&fsc, line.data(), uint32_t(mask.size()));
        else
            FScSetLine(&fsc, line.data());
        CAPTURE(mask);
        // The line ends at its length, or at the first zero unit from there on.
        const size_t end = counted ? mask.size() : mask.find(L'\0');
        uint32_t column = 0;
        for (size_t steps = 0;; ++steps) {
            REQUIRE(steps <= mask.size() + 1);
            const int32_t sym = FScGetNextSym(&fsc);
            REQUIRE(fsc.alphaLen <= mask.size());
            CHECK(fsc.alpha[fsc.alphaLen] == 0);
            CHECK(FScGetSymDescription(sym) != nullptr);
            if (sym == FSC_EOL)
                break;
            // Placeholders are the very units of the line; constant text only gets shorter.
            CHECK(fsc.column > column);
            if (FScIsPlaceholder(sym))
                CHECK(std::wstring(fsc.alpha, fsc.alphaLen) == mask.substr(column, fsc.column - column));
            else
                CHECK(fsc.alphaLen <= fsc.column - column);
            column = fsc.column;
        }
        CHECK(column <= (end == std::wstring::npos ? mask.size() : end));
        FScRelease(&fsc);
    });
}
