#include "scanner_test_support.h"

TEST_CASE("numbers: classes by value, the limits, the switch to floating point")
{
    const struct { int32_t mode; const wchar_t* text; const char* number; } rows[] = {
        {0, L"32767", "-1=32767"}, {0, L"32768", "-2=32768"}, {0, L"65535", "-2=65535"}, {0, L"65536", "-3=65536"},
        {0, L"2147483647", "-3=2147483647"}, {0, L"2147483648", "-4=2147483648"}, {0, L"4294967290", "-4=4294967290"},
        {0, L"4294967291", "-200"}, {1, L"4294967296", "-200"}, {2, L"4294967296", "-200"},
        {3, L"4294967296", "-5=4294967296"}, {3, L"99999999999999999999", "-5=1e+20"},
        {0, L"0x7FFFFFFF", "-3=2147483647"}, {0, L"0x10000000", "-3=268435456"}, {0, L"0xFFFFFFFF", "-200"},
        {0, L"0b1111111111111111111111111111111", "-3=2147483647"},
        {0, L"0b11111111111111111111111111111111", "-200"},
        {0, L"0.00000000012", "-5=1.2e-10"}, {0, L"123456.7890123456789", "-5=123456.789012346"},
        {0, L"4294967295.5", "-5=4294967295.5"}, {1, L".t.", "-3=1"}, {3, L".F. x", "-3=0@3"},
    };
    for (const auto& row : rows)
        CHECK(Scanner(row.mode).number(row.text) == row.number);
    // Only the field a token names is written; the dotted constants write all.
    Scanner s(1);
    s.tokens(L"5 70000");
    CHECK(s.sc.shortVal == 5);
    CHECK(s.sc.longVal == 70000);
    s.tokens(L".T.");
    CHECK(s.sc.shortVal == 1);
    CHECK(s.sc.ushortVal == 1);
    CHECK(s.sc.ulongVal == 1);
    CHECK(s.sc.doubleVal == 1.0);
}

TEST_CASE("escape sequences: named, octal, decimal, hexadecimal, the rest")
{
    Scanner s(0);
    CHECK(s.number(L"\"\\a\\b\\f\\n\\r\\t\\v\\0\\0101\\0109\\08\\65\\101\\999\\1234"
                   L"\\x4g\\xZ\\x4a\\xAb\\\\\\q\"") == "-6");
    CHECK(s.alpha() == "<7><8><c><a><d><9><b><0>A<8>9<0>8Ae<3e7>{4<4>g<0>ZJ<ab>\\q");
    CHECK(s.raw() == "\\a\\b\\f\\n\\r\\t\\v\\0\\0101\\0109\\08\\65\\101\\999\\1234\\x4g\\xZ\\x4a\\xab\\\\\\q");
}

TEST_CASE("an open string goes on over SymNewLine until its delimiter")
{
    Scanner s(0);
    CHECK(s.tokens(L"x \"ab") == "-8:x -201:ab");
    CHECK(s.sc.openQuote == L'"');
    CHECK(s.tokens(L"") == "-201:ab");
    CHECK(s.tokens(L"cd\\") == "-201:abcd");
    CHECK(s.raw() == "abcd\\");
    CHECK(s.tokens(L"n\" y") == "-6:abcdn -8:y -98");
    CHECK(s.sc.openQuote == 0);
    CHECK(s.tokens(L"'") == "-202:");
    CHECK(s.tokens(L"a' z") == "-7:a -8:z -98");
    // 'ab' is closed but stays open: what follows continues it.
    CHECK(s.tokens(L"'ab' + 'c") == "-202:ab -202:ab +  -202:ab + c");
    SymReset(&s.sc);
    CHECK(s.tokens(L"q") == "-8:q -98");
}

TEST_CASE("the filter drops nested comments in modes 0 and 2, whole comments in mode 3")
{
    // Lines in order: a comment left open goes on into the next line.
    const std::pair<const wchar_t*, const char*> lines[] = {
        {L"/* /* */ */ a", "-8:a -98"}, {L"x /* a", "-8:x -98"}, {L"b */ c", "-8:c -98"},
        {L"a // b /* c\n d", "-8:a -98"}, {L"c", "-8:c -98"}, {L"*/ x", "-71:*/ -8:x -98"},
        {L"/* // */ x // */ y", "-8:x -98"}, {L"/* 0x 0b */ y \"*/\"", "-8:y -6:*/ -98"},
        {L"/* \"*/\" */ w", "-8:w -98"},
        // A lone quote in a comment ends at the end of its text.
        {L"/* it's", "-98"}, {L"*/ z", "-8:z -98"}, {L"a // don't", "-8:a -98"}, {L"b", "-8:b -98"},
    };
    for (int32_t mode : {0, 2}) {
        Scanner s(mode);
        for (const auto& line : lines)
            CHECK(s.tokens(line.first) == line.second);
    }
    Scanner three(3);
    CHECK(three.tokens(L"a /* b */ c // d") == "-8:a -8:c -98");
    CHECK(three.tokens(L"*/ a /* b") == "-204:*/ -8:a -203:/* b -98");
}

TEST_CASE("the scanning routines called directly start and stop where they say")
{
    Scanner s(3);
    auto at = [&s](const wchar_t* text, uint32_t column) {
        SymNewLine(&s.sc, text);
        s.sc.column = column, s.sc.alphaLen = s.sc.rawLen = 0;
    };
    at(L"x12.5y", 1);
    SymScanNumber(&s.sc);
    CHECK(s.sc.sym == SYM_DOUBLE);
    CHECK(s.sc.column == 5);
    CHECK(s.alpha() == "12.5");
    at(L"x'y\\'z' w", 1);
    s.sc.openQuote = L'\'';
    SymScanString(&s.sc);
    CHECK(s.sc.column == 7);
    CHECK(s.alpha() == "y'z");
    CHECK(s.raw() == "y\\'z");
    at(L"\\x41z\\", 0);
    CHECK(SymEscapeSeq(&s.sc) == 'A');
    CHECK(s.sc.column == 3);
    CHECK(s.raw() == "x41");
    at(L"\\x41z\\", 5);
    CHECK(SymEscapeSeq(&s.sc) == 0);
    CHECK(s.sc.column == 5);
    at(L"x*y*/z", 1);
    CHECK(SymScanCComment(&s.sc) == 1);
    CHECK(s.sc.column == 5);
    CHECK(s.alpha() == "y");
    at(L"/*y*", 1);
    CHECK(SymScanCComment(&s.sc) == 0);
    CHECK(s.sc.column == 4);
    CHECK(s.raw() == "y*");
    at(L"//ab\ncd", 1);
    SymScanCPPComment(&s.sc);
    CHECK(s.sc.column == 4);
    CHECK(s.raw() == "ab");
}
