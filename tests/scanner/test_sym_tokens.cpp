#include "test_sym_fixture.h"

#include <string>

namespace {
std::string description(int32_t code)
{
    const wchar_t* text = SymGetSymDescription(code);
    return printable(text, uint32_t(wcslen(text)));
}
}

TEST_CASE("descriptions come from the table, other codes print in decimal")
{
    CHECK(description(SYM_SHORT) == "SHORT number");
    CHECK(description(SYM_USHORT) == "UNSIGNED SHORT number");
    CHECK(description(SYM_IDENT) == "identifier");
    CHECK(description(SYM_NE) == "!=");
    CHECK(description(SYM_NOT_ASSIGN) == "!=");
    CHECK(description(SYM_OR_ASSIGN) == "|=");
    CHECK(description(SYM_OR) == "||");
    CHECK(description(SYM_COMMENT_OPEN) == "/*");
    CHECK(description(SYM_EOL) == "EOL");
    CHECK(description(SYM_EOF) == "EOF");
    CHECK(description(SYM_ERR_COMMENT_EOF) == "*error* unexpected eof in comment");
    CHECK(description(SYM_ERR_COMMENT_END) == "*error* unexpected end of comment");
    CHECK(description(SYM_C_COMMENT) == "-73");
    CHECK(description(-9) == "-9");
    CHECK(description(40) == "40");
    CHECK(description(31333) == "31333");
    CHECK(description(-2147483647 - 1) == "-2147483648");
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

TEST_CASE("the dotted dialects know few operators, mode 3 a few more")
{
    Scanner one(1);
    CHECK(one.tokens(L"= == <> < <= > >= ! != && || */ // + - % ^ ~ : << a*b", true) ==
          "-10:= -10:== -11:<> 60:< -12:<= 62:> -13:>= 33:! -11:!= 38:& 38:& 124:| 124:| 42:* 47:/ "
          "47:/ 47:/ 43:+ 45:- 37:% 94:^ 126:~ 58:: 60:< 60:< -8:a 42:* -8:b -98");
    Scanner three(3);
    CHECK(three.tokens(L"& && | || * */ === :: $", true) ==
          "38:& -50:&& 124:| -51:|| 42:* -204:*/ -10:== -10:= 58:: 58:: 36:$ -98");
}

TEST_CASE("dotted words match without case, up to their closing dot")
{
    Scanner s(1);
    CHECK(s.tokens(L".and. .OR. .Not. .xOr. .an .andx. . .5 a.b .t") ==
          "-50:.and. -51:.OR. 33:.Not. 94:.xOr. 46:. -8:an 46:. -8:andx 46:. 46:. 46:. -1:5 "
          "-8:a 46:. -8:b 46:. -8:t -98");
    SymNewLine(&s.sc, L".t. .F.");
    CHECK(SymGetNextSym(&s.sc) == SYM_LONG);
    CHECK((s.sc.shortVal == 1 && s.sc.ushortVal == 1 && s.sc.longVal == 1 && s.sc.ulongVal == 1));
    CHECK(s.sc.doubleVal == 1.0);
    CHECK(SymGetNextSym(&s.sc) == SYM_LONG);
    CHECK((s.sc.shortVal == 0 && s.sc.ushortVal == 0 && s.sc.longVal == 0 && s.sc.ulongVal == 0));
    CHECK(s.sc.doubleVal == 0.0);
    CHECK(SymGetColumnNo(&s.sc) == 7);

    Scanner c(0);
    CHECK(c.tokens(L"a.b .and.") == "-8:a 46:. -8:b 46:. -8:and 46:. -98");
}

TEST_CASE("identifiers: characters by dialect, length limit, upper-case copy")
{
    Scanner short3(0, 3);
    CHECK(short3.tokens(L"abcdefg") == "-8:abcd -8:efg -98");
    SymNewLine(&short3.sc, L"aBc_9x");
    SymGetNextSym(&short3.sc);
    CHECK(short3.upper() == "ABC_");
    CHECK(short3.alpha() == "aBc_");
    CHECK(SymGetColumnNo(&short3.sc) == 4);

    Scanner bounded(0, 100, 6);
    CHECK(bounded.sc.maxIdent == 6);
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

TEST_CASE("keywords: built-in words of the dotted dialects and the case rule")
{
    Scanner exact(1);
    CHECK(exact.tokens(L"and AND And or xor not OR") == "-50:and -50:AND -8:And -51:or 94:xor 33:not -51:OR -98");
    Scanner blind(3, 64, 64, 1);
    CHECK(blind.tokens(L"And nOt Xor oR") == "-50:And 33:nOt 94:Xor -51:oR -98");
    Scanner plain(0, 64, 64, 1);
    CHECK(plain.tokens(L"and") == "-8:and -98");

    const SymKeyword kIf = {L"IF", 300};
    const SymKeyword kPlus = {L"PLUS", 43};
    REQUIRE(SymSetKeyword(&plain.sc, &kIf) == ZOR_S_OK);
    REQUIRE(SymSetKeyword(&plain.sc, &kPlus) == ZOR_S_OK);
    CHECK(plain.tokens(L"if Plus iff") == "300:if 43:Plus -8:iff -98");
    Scanner cased(0);
    REQUIRE(SymSetKeyword(&cased.sc, &kIf) == ZOR_S_OK);
    CHECK(cased.tokens(L"if IF") == "-8:if 300:IF -98");
}

TEST_CASE("white space and the end of the text")
{
    Scanner s(0);
    CHECK(s.tokens(L"\t a\xA0\x200B\x1A b\r\n") == "-8:a -8:b -98");
    CHECK(SymGetColumnNo(&s.sc) == 10);
    CHECK(SymGetNextSym(&s.sc) == SYM_EOL);
    CHECK(SymGetColumnNo(&s.sc) == 10);
    CHECK(s.tokens(L"") == "-98");
    CHECK(SymGetColumnNo(&s.sc) == 0);
    CHECK(SymGetAlphaLen(&s.sc) == 0);
    CHECK(s.tokens(L"\x01\x7F\x80") == "1:<1> 127:<7f> 128:<80> -98");

    Scanner odd(7);
    SymNewLine(&odd.sc, L"abc");
    CHECK(SymGetNextSymAll(&odd.sc) == 0);
    CHECK(SymGetNextSym(&odd.sc) == 0);
    CHECK(odd.sc.column == 0);
    CHECK(odd.sc.sym == SYM_EOL);
}
