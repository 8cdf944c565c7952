#include "test_sym_fixture.h"

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
constexpr uint32_t kGuardUnits = 8;
constexpr wchar_t kGuard = 0xFDFD;

// Buffers with guard units behind bufLen + 1, swapped in for the scanner's
// own so that a write past the end shows.
struct GuardedBuffers {
    std::vector<wchar_t> units[3];
    wchar_t* own[3];
    SymScanner* sc;

    explicit GuardedBuffers(SymScanner* scanner) : sc(scanner)
    {
        wchar_t** fields[3] = {&sc->alpha, &sc->alphaUpper, &sc->raw};
        for (int i = 0; i < 3; ++i) {
            units[i].assign(sc->bufLen + 1 + kGuardUnits, kGuard);
            own[i] = *fields[i];
            *fields[i] = units[i].data();
        }
    }
    ~GuardedBuffers()
    {
        sc->alpha = own[0];
        sc->alphaUpper = own[1];
        sc->raw = own[2];
    }
    bool intact() const
    {
        for (const auto& u : units)
            for (uint32_t i = sc->bufLen + 1; i < u.size(); ++i)
                if (u[i] != kGuard)
                    return false;
        return true;
    }
};

std::wstring random_line(std::mt19937& rng)
{
    static const wchar_t* const kPieces[] = {
        L"\"", L"'", L"\\", L"\\x", L"\\0", L"0x", L"0b", L"1", L"9", L"0", L".", L"..", L".and.",
        L".T", L"/*", L"*/", L"//", L"/", L"*", L" ", L"\t", L"\r\n", L"ab", L"Z_", L"@$", L"\xE4",
        L"\xA0", L"<<=", L">>", L"=", L"|", L"&", L"4294967296", L"\x200B", L"\xFFFF", L"\\\\",
    };
    std::uniform_int_distribution<size_t> piece(0, sizeof kPieces / sizeof kPieces[0] - 1);
    std::uniform_int_distribution<int> count(0, 40);
    std::wstring line;
    for (int n = count(rng); n > 0; --n)
        line += kPieces[piece(rng)];
    return line;
}
}

TEST_CASE("random lines end in bounded steps and never write behind the buffers")
{
    std::mt19937 rng(20261122);
    for (int32_t mode = 0; mode < 4; ++mode) {
        for (uint32_t bufLen : {5u, 6u, 9u, 64u}) {
            Scanner s(mode, 3, bufLen);
            GuardedBuffers guard(&s.sc);
            for (int line = 0; line < 1500; ++line) {
                std::wstring text = random_line(rng);
                SymNewLine(&s.sc, text.c_str());
                bool filtered = line % 2 == 0;
                size_t steps = 0;
                for (;; ++steps) {
                    REQUIRE(steps <= text.size() + 2);
                    int32_t token = filtered ? SymGetNextSym(&s.sc) : SymGetNextSymAll(&s.sc);
                    REQUIRE(s.sc.column <= text.size());
                    REQUIRE(s.sc.alphaLen <= bufLen);
                    REQUIRE(s.sc.rawLen <= bufLen);
                    if (token == SYM_EOL)
                        break;
                    // Carry an open string into the next line now and then,
                    // as a caller that reads on after the error does.
                    if ((token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) &&
                        s.sc.text[s.sc.column] == 0) {
                        if (line % 3 == 0)
                            break;
                        SymReset(&s.sc);
                    }
                }
                REQUIRE(guard.intact());
            }
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
                CHECK(status == ZOR_E_OUTOFMEMORY);
                CHECK((!sc.alpha && !sc.alphaUpper && !sc.raw && !sc.keywords));
                SymRelease(&sc);
                return;
            }
            SymNewLine(&sc, L"a and");
            CHECK(SymGetNextSym(&sc) == SYM_IDENT);
            CHECK(SymGetNextSym(&sc) == (mode == 1 ? SYM_AND : SYM_IDENT));
            SymRelease(&sc);
        });
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
    CHECK(SymSetKeyword(&s.sc, &kEnd) == ZOR_S_OK);
    CHECK(s.tokens(L"end") == "400:end -98");
}
