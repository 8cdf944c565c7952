#include "test_sym_fixture.h"

#include <string.h>

TEST_CASE("descriptions come from the table, other codes print in decimal")
{
    const std::pair<int32_t, const char*> rows[] = {
        {SYM_SHORT, "SHORT number"}, {SYM_USHORT, "UNSIGNED SHORT number"}, {SYM_IDENT, "identifier"},
        {SYM_NE, "!="}, {SYM_NOT_ASSIGN, "!="}, {SYM_OR_ASSIGN, "|="}, {SYM_OR, "||"},
        {SYM_COMMENT_OPEN, "/*"}, {SYM_EOL, "EOL"}, {SYM_EOF, "EOF"},
        {SYM_ERR_COMMENT_END, "*error* unexpected end of comment"}, {SYM_C_COMMENT, "-73"},
        {-9, "-9"}, {40, "40"}, {31333, "31333"}, {-2147483647 - 1, "-2147483648"},
    };
    for (const auto& row : rows) {
        const wchar_t* text = SymGetSymDescription(row.first);
        CHECK(printable(text, wcslen(text)) == row.second);
    }
}

TEST_CASE("the C-like operators take the longest match")
{
    for (int32_t mode : {0, 2}) {
        Scanner s(mode);
        CHECK(s.tokens(L"! != % %= & && &= * */ *= + ++ += - -- -= -> / /* // /= : ::", true) ==
              "33:! -11:!= 37:% -27:%= 38:& -50:&& -24:&= 42:* -71:*/ -21:*= 43:+ -40:++ -22:+= "
              "45:- -41:-- -23:-= -60:-> 47:/ -70:/* -72:// -20:/= 58:: -44::: -98");
        CHECK(s.tokens(L"< << <<= <= = == > >= >> >>= ^ ^= | || |= ~ ~= . <<<== ---> $ @", true) ==
              "60:< -42:<< -29:<<= -12:<= 61:= -10:== 62:> -13:>= -43:>> -30:>>= 94:^ -26:^= "
              "124:| -51:|| -25:|= 126:~ -28:~= 46:. -42:<< -12:<= 61:= -41:-- -60:-> 36:$ 64:@ -98");
    }
}

TEST_CASE("the dotted dialects: few operators, dotted words up to their closing dot")
{
    Scanner one(1);
    CHECK(one.tokens(L"= == <> < <= > >= ! != && || */ // + - % ^ ~ : << a*b", true) ==
          "-10:= -10:== -11:<> 60:< -12:<= 62:> -13:>= 33:! -11:!= 38:& 38:& 124:| 124:| 42:* 47:/ "
          "47:/ 47:/ 43:+ 45:- 37:% 94:^ 126:~ 58:: 60:< 60:< -8:a 42:* -8:b -98");
    CHECK(one.tokens(L".and. .OR. .Not. .xOr. .an .andx. . .5 a.b .t") ==
          "-50:.and. -51:.OR. 33:.Not. 94:.xOr. 46:. -8:an 46:. -8:andx 46:. 46:. 46:. -1:5 "
          "-8:a 46:. -8:b 46:. -8:t -98");
    CHECK(one.number(L".t.") == "-3=1");
    CHECK((one.sc.shortVal == 1 && one.sc.ushortVal == 1 && one.sc.ulongVal == 1 && one.sc.doubleVal == 1.0));
    CHECK(one.number(L".F. x") == "-3=0@3");
    CHECK((one.sc.shortVal == 0 && one.sc.ushortVal == 0 && one.sc.ulongVal == 0 && one.sc.doubleVal == 0.0));

    Scanner three(3);
    CHECK(three.tokens(L"& && | || * */ === :: $", true) ==
          "38:& -50:&& 124:| -51:|| 42:* -204:*/ -10:== -10:= 58:: 58:: 36:$ -98");
    Scanner zero(0);
    CHECK(zero.tokens(L"a.b .and.") == "-8:a 46:. -8:b 46:. -8:and 46:. -98");
}

TEST_CASE("identifiers: characters by dialect, length limit, upper-case copy")
{
    Scanner short3(0, 3);
    CHECK(short3.tokens(L"abcdefg") == "-8:abcd -8:efg -98");
    CHECK(short3.number(L"aB_cd") == "-8@4");
    CHECK(printable(short3.sc.alphaUpper, 5) == "AB_C<0>");
    Scanner bounded(0, 100, 6);
    CHECK(bounded.tokens(L"abcdefghij") == "-8:abcdef -8:ghij -98");

    Scanner one(1);
    CHECK(one.tokens(L"a$b @x_1$y a@\xE4\xDF \xC4x") == "-8:a$ -8:b -8:@x_1$ -8:y -8:a@<e4><df> 196:<c4> -8:x -98");
    Scanner two(2);
    CHECK(two.tokens(L"a\xE4\xFC\xDC \xE4" L"a a@ a$") == "-8:a<e4><fc><dc> 228:<e4> -8:a -8:a 64:@ -8:a 36:$ -98");
    Scanner zero(0);
    CHECK(zero.tokens(L"a\xE4 _1 1a") == "-8:a 228:<e4> -8:_1 -1:1 -8:a -98");
    Scanner three(3);
    CHECK(three.tokens(L"a\xE4 @a") == "-8:a 228:<e4> 64:@ -8:a -98");
}

TEST_CASE("keywords: built-in words of the dotted dialects, the case rule, own words")
{
    Scanner exact(1);
    CHECK(exact.tokens(L"and AND And or xor not OR") == "-50:and -50:AND -8:And -51:or 94:xor 33:not -51:OR -98");
    Scanner blind(3, 64, 64, 1);
    CHECK(blind.tokens(L"And nOt Xor oR") == "-50:And 33:nOt 94:Xor -51:oR -98");

    const SymKeyword kIf = {L"IF", 300}, kPlus = {L"PLUS", 43};
    Scanner plain(0, 64, 64, 1), cased(0);
    CHECK(plain.tokens(L"and") == "-8:and -98");
    REQUIRE((SymSetKeyword(&plain.sc, &kIf) == ZOR_S_OK && SymSetKeyword(&plain.sc, &kPlus) == ZOR_S_OK));
    REQUIRE(SymSetKeyword(&cased.sc, &kIf) == ZOR_S_OK);
    CHECK(plain.tokens(L"if Plus iff") == "300:if 43:Plus -8:iff -98");
    CHECK(cased.tokens(L"if IF") == "-8:if 300:IF -98");
}

TEST_CASE("white space, the end of the text, an unknown dialect")
{
    Scanner s(0);
    CHECK(s.tokens(L"\t a\xA0\x200B\x1A b\r\n") == "-8:a -8:b -98");
    CHECK(SymGetColumnNo(&s.sc) == 10);
    CHECK((SymGetNextSym(&s.sc) == SYM_EOL && SymGetColumnNo(&s.sc) == 10));
    CHECK(s.tokens(L"") == "-98");
    CHECK((SymGetColumnNo(&s.sc) == 0 && SymGetAlphaLen(&s.sc) == 0));
    CHECK(s.tokens(L"\x01\x7F\x80") == "1:<1> 127:<7f> 128:<80> -98");

    Scanner odd(7);
    SymNewLine(&odd.sc, L"abc");
    CHECK((SymGetNextSymAll(&odd.sc) == 0 && SymGetNextSym(&odd.sc) == 0));
    CHECK((odd.sc.column == 0 && SymGetSym(&odd.sc) == SYM_EOL));
}
