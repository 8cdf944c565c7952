#include "test_sym_fixture.h"

#include <vector>

TEST_CASE("integers: bases, classes by value, the limits of each base")
{
    Scanner s(0);
    CHECK(s.tokens(L"0x 0xFF 0XfF 0b101 0b 0b2 012 1e5") ==
          "-200:0x -1:0xFF -1:0XfF -1:0b101 -200:0b -200:0b -1:2 -1:0 -1:12 -1:1 -8:e5 -98");
    SymNewLine(&s.sc, L"0b2");
    CHECK(SymGetNextSym(&s.sc) == SYM_ERR_NUMBER);
    CHECK(SymGetColumnNo(&s.sc) == 2);

    struct Case {
        const wchar_t* text;
        int32_t        sym;
        uint32_t       value;
    };
    const Case cases[] = {
        {L"32767", SYM_SHORT, 32767},           {L"32768", SYM_USHORT, 32768},
        {L"65535", SYM_USHORT, 65535},          {L"65536", SYM_LONG, 65536},
        {L"2147483647", SYM_LONG, 2147483647u}, {L"2147483648", SYM_ULONG, 2147483648u},
        {L"4294967290", SYM_ULONG, 4294967290u}, {L"4294967291", SYM_ERR_NUMBER, 0},
        {L"0x7FFFFFFF", SYM_LONG, 0x7FFFFFFFu},  {L"0x10000000", SYM_LONG, 0x10000000u},
        {L"0xFFFFFFFF", SYM_ERR_NUMBER, 0},      {L"0b1111111111111111111111111111111", SYM_LONG, 0x7FFFFFFFu},
        {L"0b11111111111111111111111111111111", SYM_ERR_NUMBER, 0},
    };
    for (const Case& c : cases) {
        CAPTURE(printable(c.text, uint32_t(wcslen(c.text))));
        SymNewLine(&s.sc, c.text);
        CHECK(SymGetNextSym(&s.sc) == c.sym);
        CHECK(SymGetColumnNo(&s.sc) == wcslen(c.text));
        if (c.sym == SYM_ERR_NUMBER)
            continue;
        CHECK(SymGetULong(&s.sc) == c.value);
        if (c.sym == SYM_SHORT)
            CHECK(SymGetShort(&s.sc) == int16_t(c.value));
        if (c.sym == SYM_USHORT)
            CHECK(SymGetUShort(&s.sc) == uint16_t(c.value));
        if (c.sym == SYM_LONG)
            CHECK(SymGetLong(&s.sc) == int32_t(c.value));
    }
    // Only the field a token names is written.
    s.tokens(L"5 70000");
    CHECK(s.sc.shortVal == 5);
    CHECK(s.sc.longVal == 70000);
}

TEST_CASE("floating point: fractions, the switch on large integers, mode 3")
{
    Scanner s(0);
    CHECK(s.tokens(L"1.5 0.25 1. .5 1.2.3") == "-5:1.5 -5:0.25 -5:1. 46:. -1:5 -5:1.2 46:. -1:3 -98");
    const std::pair<const wchar_t*, double> values[] = {
        {L"1.5", 1.5}, {L"0.25", 0.25}, {L"7.", 7.0}, {L"0.00000000012", 1.2e-10},
        {L"123456.7890123456789", 123456.7890123456789}, {L"4294967295.5", 4294967295.5},
    };
    for (const auto& v : values) {
        SymNewLine(&s.sc, v.first);
        CHECK(SymGetNextSym(&s.sc) == SYM_DOUBLE);
        CHECK(SymGetDouble(&s.sc) == doctest::Approx(v.second).epsilon(1e-15));
    }
    for (int32_t mode : {0, 1, 2}) {
        Scanner m(mode);
        CHECK(m.tokens(L"4294967296") == "-200:4294967296 -98");
    }
    Scanner three(3);
    CHECK(three.tokens(L"4294967296 99999999999999999999") == "-5:4294967296 -5:99999999999999999999 -98");
    SymNewLine(&three.sc, L"4294967296");
    SymGetNextSym(&three.sc);
    CHECK(SymGetDouble(&three.sc) == 4294967296.0);
}

TEST_CASE("a number longer than the buffer is an error, read up to the failing unit")
{
    Scanner s(0, 64, 5);
    CHECK(s.tokens(L"12345 123456 1234.5 0x1234 123.4") ==
          "-1:12345 -200:12345 -200:1234. -200:0x123 -5:123.4 -98");
    SymNewLine(&s.sc, L"12345.6");
    CHECK(SymGetNextSym(&s.sc) == SYM_ERR_NUMBER);
    CHECK(SymGetColumnNo(&s.sc) == 5);
    CHECK(s.more() == "46:. -1:6 -98");
}

TEST_CASE("strings and characters: translated alpha, raw as written")
{
    Scanner s(0);
    CHECK(s.tokens(L"\"ab\\x41\\n\" 'a'") == "-6:abA<a> -7:a -98");
    CHECK(s.tokens(L"''") == "-202:");
    SymReset(&s.sc);
    CHECK(s.tokens(L"'ab'") == "-202:ab");
    SymReset(&s.sc);
    SymNewLine(&s.sc, L"\"\\x4a\\xAb\\q\"");
    CHECK(SymGetNextSym(&s.sc) == SYM_STRING);
    CHECK(s.alpha() == "J<ab>q");
    CHECK(s.raw() == "\\x4a\\xab\\q");
    CHECK(SymGetAlphaLenUnTranslated(&s.sc) == 10);
    CHECK(SymGetAlphaUnTranslated(&s.sc)[10] == 0);
    CHECK(s.sc.openQuote == 0);
    CHECK(s.tokens(L"\"\" '\\'' \"\\\"\"") == "-6: -7:' -6:\" -98");

    Scanner narrow(0, 64, 5);
    CHECK(narrow.tokens(L"\"abcdefgh\" x") == "-6:abcde -8:x -98");
    CHECK(narrow.raw() == "");
    SymNewLine(&narrow.sc, L"\"abcdefgh\"");
    SymGetNextSym(&narrow.sc);
    CHECK(narrow.raw() == "abcde");
}

TEST_CASE("escape sequences: named, octal, decimal, hexadecimal, the rest")
{
    Scanner s(0);
    SymNewLine(&s.sc, L"\"\\a\\b\\f\\n\\r\\t\\v\\0\\0101\\0109\\08\\65\\101\\999\\1234\\x4g\\xZ\\x123\\\\\"");
    CHECK(SymGetNextSym(&s.sc) == SYM_STRING);
    const std::vector<unsigned> expected = {7, 8, 12, 10, 13, 9, 11, 0, 65, 8, '9', 0, '8', 65, 101,
                                            999, 123, '4', 4, 'g', 0, 'Z', 0x12, '3', '\\'};
    CHECK(std::vector<unsigned>(s.sc.alpha, s.sc.alpha + s.sc.alphaLen) == expected);

    // Directly: column from the backslash to the sequence's last unit.
    SymNewLine(&s.sc, L"\\x41z\\");
    s.sc.rawLen = 0;
    CHECK(SymEscapeSeq(&s.sc) == 'A');
    CHECK(s.sc.column == 3);
    CHECK(s.raw() == "x41");
    s.sc.column = 5;
    CHECK(SymEscapeSeq(&s.sc) == 0);
    CHECK(s.sc.column == 5);
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
    // 'ab' closes but stays open: what follows continues it.
    CHECK(s.tokens(L"'ab' + 'c") == "-202:ab -202:ab +  -202:ab + c");
    SymReset(&s.sc);
    CHECK(s.sc.openQuote == 0);
    CHECK(s.tokens(L"q") == "-8:q -98");
}

TEST_CASE("whole comments of mode 3, and their routines called directly")
{
    Scanner s(3);
    CHECK(s.tokens(L"a /* b * c */d // e /* f\r\n g", true) == "-8:a -73:/* b * c  -8:d -74:// e /* f -8:g -98");
    SymNewLine(&s.sc, L"/* b * c */");
    CHECK(SymGetNextSymAll(&s.sc) == SYM_C_COMMENT);
    CHECK(s.raw() == " b * c ");
    CHECK(s.tokens(L"/*/ x", true) == "-203:/*/ x -98");
    SymNewLine(&s.sc, L"/* x");
    CHECK(SymGetNextSym(&s.sc) == SYM_ERR_COMMENT_EOF);
    CHECK(SymGetColumnNo(&s.sc) == 4);
    CHECK(s.tokens(L"a /* b */ c // d") == "-8:a -8:c -98");
    CHECK(s.tokens(L"*/ a") == "-204:*/ -8:a -98");

    SymNewLine(&s.sc, L"x*y*/z");
    s.sc.column = 1;
    s.sc.alphaLen = s.sc.rawLen = 0;
    CHECK(SymScanCComment(&s.sc) == 1);
    CHECK(s.sc.column == 5);
    CHECK(s.alpha() == "y");
    SymNewLine(&s.sc, L"//ab\ncd");
    s.sc.column = 1;
    s.sc.alphaLen = s.sc.rawLen = 0;
    SymScanCPPComment(&s.sc);
    CHECK(s.sc.column == 4);
    CHECK(s.raw() == "ab");
}

TEST_CASE("the filter drops nested comments in modes 0 and 2")
{
    for (int32_t mode : {0, 2}) {
        Scanner s(mode);
        CHECK(s.tokens(L"/* /* */ */ a") == "-8:a -98");
        CHECK(s.tokens(L"x /* a") == "-8:x -98");
        CHECK(s.sc.commentDepth == 1);
        CHECK(s.tokens(L"b */ c") == "-8:c -98");
        CHECK(s.tokens(L"a // b /* c\n d") == "-8:a -98");
        CHECK(s.tokens(L"c") == "-8:c -98");
        CHECK(s.tokens(L"*/ x") == "-71:*/ -8:x -98");
        CHECK(s.tokens(L"/* // */ x // */ y") == "-8:x -98");
        CHECK(s.tokens(L"/* 0x 0b */ y") == "-8:y -98");
        CHECK(s.tokens(L"/* \"*/\" */ w") == "-8:w -98");
        // A lone quote in a comment ends at the end of its text.
        CHECK(s.tokens(L"/* it's") == "-98");
        CHECK((s.sc.openQuote == 0 && s.sc.commentDepth == 1));
        CHECK(s.tokens(L"*/ z") == "-8:z -98");
        CHECK(s.tokens(L"a // don't") == "-8:a -98");
        CHECK(s.tokens(L"b") == "-8:b -98");
        CHECK(s.tokens(L"/* x /* y */ */", true) == "-70:/* -8:x -70:/* -8:y -71:*/ -71:*/ -98");
    }
}
