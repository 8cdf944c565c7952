#include "scanner_test_support.h"

#include <random>
#include <vector>

#include "alloc_check.h"
#include "dll_image.h"

TEST_CASE("the DLL exports the whole family")
{
    CHECK(missing_exports({"SymInit", "SymRelease", "SymReset", "SymSetKeyword", "SymNewLine",
                           "SymGetNextSym", "SymGetNextSymAll", "SymGetSym", "SymGetSymDescription",
                           "SymGetColumnNo", "SymGetAlpha", "SymGetAlphaLen", "SymGetAlphaUnTranslated",
                           "SymGetAlphaLenUnTranslated", "SymGetShort", "SymGetUShort", "SymGetLong",
                           "SymGetULong", "SymGetDouble", "SymScanNumber", "SymScanString", "SymEscapeSeq",
                           "SymScanCComment", "SymScanCPPComment"}) == "");
}

namespace {
const wchar_t* const kPieces[] = {
    L"\"", L"'", L"\\", L"\\x", L"\\0", L"0x", L"0b", L"1", L"9", L"0", L".", L"..", L".and.", L".T",
    L"/*", L"*/", L"//", L"/", L"*", L" ", L"\r\n", L"ab", L"Z_", L"@$", L"\xE4", L"\xA0", L"<<=",
    L">>", L"=", L"|", L"&", L"4294967296", L"\xFFFF", L"\\\\",
};
}

TEST_CASE("random lines end in bounded steps and never write behind the buffers")
{
    constexpr wchar_t kGuard = 0xFDFD;
    std::mt19937 rng(20261122);
    std::uniform_int_distribution<size_t> piece(0, sizeof kPieces / sizeof kPieces[0] - 1);
    for (int32_t mode = 0; mode < 4; ++mode) {
        for (uint32_t bufLen : {5u, 6u, 9u, 64u}) {
            Scanner s(mode, 3, bufLen);
            // Buffers of the test's with guard units behind bufLen + 1.
            std::vector<wchar_t> guarded[3];
            wchar_t** fields[3] = {&s.sc.alpha, &s.sc.alphaUpper, &s.sc.raw};
            wchar_t* own[3];
            for (int i = 0; i < 3; ++i) {
                guarded[i].assign(bufLen + 9, kGuard);
                own[i] = *fields[i];
                *fields[i] = guarded[i].data();
            }
            for (int line = 0; line < 1500; ++line) {
                std::wstring text;
                for (int n = int(rng() % 40); n > 0; --n)
                    text += kPieces[piece(rng)];
                SymNewLine(&s.sc, text.c_str());
                bool filtered = line % 2 == 0;
                for (size_t steps = 0;; ++steps) {
                    REQUIRE(steps <= text.size() + 2);
                    int32_t token = filtered ? SymGetNextSym(&s.sc) : SymGetNextSymAll(&s.sc);
                    REQUIRE((s.sc.column <= text.size() && s.sc.alphaLen <= bufLen && s.sc.rawLen <= bufLen));
                    if (token == SYM_EOL)
                        break;
                    // Now and then an open string goes on into the next line,
                    // as for a caller that reads on after the error.
                    if ((token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) && text[s.sc.column] == 0) {
                        if (line % 3 == 0)
                            break;
                        SymReset(&s.sc);
                    }
                }
                for (const auto& units : guarded)
                    for (size_t i = bufLen + 1; i < units.size(); ++i)
                        REQUIRE(units[i] == kGuard);
            }
            for (int i = 0; i < 3; ++i)
                *fields[i] = own[i];
        }
    }
}

TEST_CASE("exhaustion in SymInit leaves nothing allocated; SymSetKeyword keeps the table")
{
    for (int32_t mode : {0, 1}) {
        NoLeak leak;
        long made = fail_each_allocation([mode](bool) {
            SymScanner sc;
            ZORStatus status = SymInit(&sc, 16, 16, 0, mode);
            if (status != ZOR_S_OK) {
                CHECK((status == ZOR_E_OUTOFMEMORY && !sc.alpha && !sc.alphaUpper && !sc.raw &&
                       !sc.keywords));
                SymRelease(&sc);
                return;
            }
            SymNewLine(&sc, L"a and");
            CHECK((SymGetNextSym(&sc) == SYM_IDENT &&
                   SymGetNextSym(&sc) == (mode == 1 ? SYM_AND : SYM_IDENT)));
            SymRelease(&sc);
        });
        // The table, three buffers, and in the dotted dialects eight words.
        CHECK(made == (mode == 1 ? 12 : 4));
    }

    NoLeak leak;
    Scanner s(1);
    const SymKeyword kEnd = {L"end", 400};
    {
        AllAllocationsFail fail;
        CHECK(SymSetKeyword(&s.sc, &kEnd) == ZOR_E_OUTOFMEMORY);
    }
    CHECK(s.tokens(L"end or") == "-8:end -51:or -98");
    CHECK((SymSetKeyword(&s.sc, &kEnd) == ZOR_S_OK && s.tokens(L"end") == "400:end -98"));
}
