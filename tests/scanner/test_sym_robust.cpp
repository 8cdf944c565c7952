#include "scanner_test_support.h"

#include <random>
#include <utility>

#include "alloc_check.h"
#include "dll_image.h"

TEST_CASE("the DLL exports the whole family")
{
    CHECK(missing_exports({"SymInit", "SymRelease", "SymReset", "SymSetKeyword", "SymNewLine", "SymGetNextSym",
                           "SymGetNextSymAll", "SymGetSym", "SymGetSymDescription", "SymGetColumnNo", "SymGetAlpha",
                           "SymGetAlphaLen", "SymGetAlphaUnTranslated", "SymGetAlphaLenUnTranslated", "SymGetShort",
                           "SymGetUShort", "SymGetLong", "SymGetULong", "SymGetDouble", "SymScanNumber",
                           "SymScanString", "SymEscapeSeq", "SymScanCComment", "SymScanCPPComment"}) == "");
}

TEST_CASE("random lines end in bounded steps and never write behind the buffers")
{
    const wchar_t* const pieces[] = {
        L"\"", L"'", L"\\", L"\\x", L"\\0", L"0x", L"0b", L"1", L"9", L"0", L".", L"..", L".and.", L".T",
        L"/*", L"*/", L"//", L"/", L"*", L" ", L"\r\n", L"ab", L"Z_", L"@$", L"\xE4", L"\xA0", L"<<=",
        L">>", L"=", L"|", L"&", L"4294967296", L"\xFFFF", L"\\\\",
    };
    std::mt19937 rng(20261122);
    for (int32_t mode = 0; mode < 4; ++mode)
        for (uint32_t bufLen : {5u, 6u, 9u, 64u}) {
            Scanner s(mode, 3, bufLen);
            // The scanner writes into the test's buffers, guarded behind bufLen + 1.
            std::wstring guarded[3];
            wchar_t** fields[3] = {&s.sc.alpha, &s.sc.alphaUpper, &s.sc.raw};
            wchar_t* own[3];
            for (int i = 0; i < 3; ++i)
                own[i] = std::exchange(*fields[i], &guarded[i].assign(bufLen + 9, 0xFDFD)[0]);
            for (int line = 0; line < 1500; ++line) {
                std::wstring text;
                for (int n = int(rng() % 40); n > 0; --n)
                    text += pieces[rng() % (sizeof pieces / sizeof pieces[0])];
                SymNewLine(&s.sc, text.c_str());
                for (size_t steps = 0;; ++steps) {
                    REQUIRE(steps <= text.size() + 2);
                    int32_t token = line % 2 ? SymGetNextSymAll(&s.sc) : SymGetNextSym(&s.sc);
                    REQUIRE(s.sc.column <= text.size());
                    REQUIRE(s.sc.alphaLen <= bufLen);
                    REQUIRE(s.sc.rawLen <= bufLen);
                    // Now and then an open string goes on into the next line.
                    bool open = (token == SYM_ERR_STRING || token == SYM_ERR_CHARACTER) && text[s.sc.column] == 0;
                    if (token == SYM_EOL || (open && line % 3 == 0))
                        break;
                    if (open)
                        SymReset(&s.sc);
                }
                for (const auto& units : guarded)
                    REQUIRE(units.find_first_not_of(wchar_t(0xFDFD), bufLen + 1) == std::wstring::npos);
            }
            for (int i = 0; i < 3; ++i)
                *fields[i] = own[i];
        }
}

TEST_CASE("exhaustion in SymInit leaves nothing allocated; SymSetKeyword keeps the table")
{
    NoLeak leak;
    for (int32_t mode : {0, 1}) {
        long made = fail_each_allocation([mode]() {
            SymScanner sc;
            if (ZORStatus status = SymInit(&sc, 16, 16, 0, mode)) {
                CHECK(status == ZOR_E_OUTOFMEMORY);
                CHECK(!sc.alpha);
                CHECK(!sc.alphaUpper);
                CHECK(!sc.raw);
                CHECK(!sc.keywords);
            } else {
                SymNewLine(&sc, L"a and");
                CHECK(SymGetNextSym(&sc) == SYM_IDENT);
                CHECK(SymGetNextSym(&sc) == (mode ? SYM_AND : SYM_IDENT));
            }
            SymRelease(&sc);
        });
        CHECK(made > 1);
    }
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
