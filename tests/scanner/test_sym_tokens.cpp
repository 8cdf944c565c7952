#include "scanner_test_support.h"

#include <string.h>

TEST_CASE("descriptions come from the table, other codes print in decimal")
{
    const std::pair<int32_t, const char*> rows[] = {
        {SYM_SHORT, "SHORT number"}, {SYM_IDENT, "identifier"}, {SYM_NE, "!="}, {SYM_NOT_ASSIGN, "!="},
        {SYM_OR, "||"}, {SYM_EOF, "EOF"}, {SYM_ERR_COMMENT_END, "*error* unexpected end of comment"},
        {SYM_C_COMMENT, "-73"}, {40, "40"}, {31333, "31333"}, {-2147483647 - 1, "-2147483648"},
    };
    for (const auto& row : rows)
        CHECK(printable(SymGetSymDescription(row.first), wcslen(SymGetSymDescription(row.first))) == row.second);
}

TEST_CASE("each dialect's operators, words, numbers, strings and whole comments")
{
    const struct { int32_t mode; const wchar_t* text; const char* tokens; } rows[] = {
        {0, L"! != % %= & && &= * */ *= + ++ += - -- -= -> / /* // /= : ::",
         "33:! -11:!= 37:% -27:%= 38:& -50:&& -24:&= 42:* -71:*/ -21:*= 43:+ -40:++ -22:+= "
         "45:- -41:-- -23:-= -60:-> 47:/ -70:/* -72:// -20:/= 58:: -44::: -98"},
        {2, L"< << <<= <= = == > >= >> >>= ^ ^= | || |= ~ ~= . <<<== ---> $ @",
         "60:< -42:<< -29:<<= -12:<= 61:= -10:== 62:> -13:>= -43:>> -30:>>= 94:^ -26:^= "
         "124:| -51:|| -25:|= 126:~ -28:~= 46:. -42:<< -12:<= 61:= -41:-- -60:-> 36:$ 64:@ -98"},
        {1, L"= == <> < <= > >= ! != && || */ // + - % ^ ~ : << a*b",
         "-10:= -10:== -11:<> 60:< -12:<= 62:> -13:>= 33:! -11:!= 38:& 38:& 124:| 124:| 42:* 47:/ "
         "47:/ 47:/ 43:+ 45:- 37:% 94:^ 126:~ 58:: 60:< 60:< -8:a 42:* -8:b -98"},
        {1, L".and. .OR. .Not. .xOr. .an .andx. . .5 a.b .t",
         "-50:.and. -51:.OR. 33:.Not. 94:.xOr. 46:. -8:an 46:. -8:andx 46:. 46:. 46:. -1:5 "
         "-8:a 46:. -8:b 46:. -8:t -98"},
        {3, L"& && | || * */ === :: $", "38:& -50:&& 124:| -51:|| 42:* -204:*/ -10:== -10:= 58:: 58:: 36:$ -98"},
        {0, L"a.b .and. and", "-8:a 46:. -8:b 46:. -8:and 46:. -8:and -98"},
        {1, L"a$b @x_1$y a@\xE4\xDF \xC4x", "-8:a$ -8:b -8:@x_1$ -8:y -8:a@<e4><df> 196:<c4> -8:x -98"},
        {2, L"a\xE4\xFC\xDC \xE4" L"a a@ a$", "-8:a<e4><fc><dc> 228:<e4> -8:a -8:a 64:@ -8:a 36:$ -98"},
        {0, L"a\xE4 _1 1a", "-8:a 228:<e4> -8:_1 -1:1 -8:a -98"}, {3, L"a\xE4 @a", "-8:a 228:<e4> 64:@ -8:a -98"},
        {1, L"and AND And or xor not OR", "-50:and -50:AND -8:And -51:or 94:xor 33:not -51:OR -98"},
        {0, L"\t a\xA0\x200B\x1A b\r\n \x01\x7F\x80", "-8:a -8:b 1:<1> 127:<7f> 128:<80> -98"},
        {0, L"0x 0xFF 0XfF 0b101 0b 0b2 012 1e5 1.5 0.25 1. .5 1.2.3",
         "-200:0x -1:0xFF -1:0XfF -1:0b101 -200:0b -200:0b -1:2 -1:0 -1:12 -1:1 -8:e5 "
         "-5:1.5 -5:0.25 -5:1. 46:. -1:5 -5:1.2 46:. -1:3 -98"},
        {0, L"\"ab\\x41\\n\" 'a' \"\" '\\'' \"\\\"\"", "-6:abA<a> -7:a -6: -7:' -6:\" -98"}, {0, L"''", "-202:"},
        {3, L"a /* b * c */d // e /* f\r\n g", "-8:a -73:/* b * c  -8:d -74:// e /* f -8:g -98"},
        {3, L"/*/ x", "-203:/*/ x -98"}, {0, L"/* x /* y */ */", "-70:/* -8:x -70:/* -8:y -71:*/ -71:*/ -98"},
    };
    for (const auto& row : rows)
        CHECK(Scanner(row.mode).tokens(row.text, true) == row.tokens);
}

TEST_CASE("limits of a scanner: identifier length, buffer, case rule, own keywords, the end, the dialect")
{
    Scanner short3(0, 3);
    CHECK(short3.tokens(L"abcdefg") == "-8:abcd -8:efg -98");
    CHECK(short3.number(L"aB_cd") == "-8@4");
    CHECK(printable(short3.sc.alphaUpper, 5) == "AB_C<0>");
    Scanner bounded(0, 100, 6);
    CHECK(bounded.tokens(L"abcdefghij \"abcdefgh\"") == "-8:abcdef -8:ghij -6:abcdef -98");
    // A number cannot outgrow the buffer; the unit that does not fit is read.
    CHECK(bounded.tokens(L"123456 1234567 12345.6 0x12345 0x1234 12345678") ==
          "-3:123456 -200:123456 -200:12345. -200:0x1234 -1:0x1234 -200:123456 -1:8 -98");

    Scanner blind(3, 64, 64, 1);
    CHECK(blind.tokens(L"And nOt Xor oR") == "-50:And 33:nOt 94:Xor -51:oR -98");
    const SymKeyword kIf = {L"IF", 300}, kPlus = {L"PLUS", 43};
    Scanner plain(0, 64, 64, 1), cased(0);
    REQUIRE(SymSetKeyword(&plain.sc, &kIf) == ZOR_S_OK);
    REQUIRE(SymSetKeyword(&plain.sc, &kPlus) == ZOR_S_OK);
    REQUIRE(SymSetKeyword(&cased.sc, &kIf) == ZOR_S_OK);
    CHECK(plain.tokens(L"if Plus iff") == "300:if 43:Plus -8:iff -98");
    CHECK(cased.tokens(L"if IF") == "-8:if 300:IF -98");

    CHECK(cased.tokens(L" a ") == "-8:a -98");
    CHECK(SymGetColumnNo(&cased.sc) == 3);
    CHECK(SymGetNextSym(&cased.sc) == SYM_EOL);
    CHECK(SymGetColumnNo(&cased.sc) == 3);
    CHECK(cased.tokens(L"") == "-98");
    CHECK(SymGetColumnNo(&cased.sc) == 0);
    CHECK(SymGetAlphaLen(&cased.sc) == 0);
    Scanner odd(7);
    SymNewLine(&odd.sc, L"abc");
    CHECK(SymGetNextSymAll(&odd.sc) == 0);
    CHECK(SymGetNextSym(&odd.sc) == 0);
    CHECK(odd.sc.column == 0);
    CHECK(SymGetSym(&odd.sc) == SYM_EOL);
}
