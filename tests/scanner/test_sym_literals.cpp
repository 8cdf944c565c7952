#include "test_sym_fixture.h"

#include <vector>

TEST_CASE("numbers: bases, classes by value, the limits, the switch to floating point")
{
    Scanner s(0);
    CHECK(s.tokens(L"0x 0xFF 0XfF 0b101 0b 0b2 012 1e5 1.5 0.25 1. .5 1.2.3") ==
          "-200:0x -1:0xFF -1:0XfF -1:0b101 -200:0b -200:0b -1:2 -1:0 -1:12 -1:1 -8:e5 "
          "-5:1.5 -5:0.25 -5:1. 46:. -1:5 -5:1.2 46:. -1:3 -98");
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"0b2", "-200@2"}, {L"32767", "-1=32767"}, {L"32768", "-2=32768"}, {L"65535", "-2=65535"},
        {L"65536", "-3=65536"}, {L"2147483647", "-3=2147483647"}, {L"2147483648", "-4=2147483648"},
        {L"4294967290", "-4=4294967290"}, {L"4294967291", "-200"}, {L"4294967296", "-200"},
        {L"0x7FFFFFFF", "-3=2147483647"}, {L"0x10000000", "-3=268435456"}, {L"0xFFFFFFFF", "-200"},
        {L"0b1111111111111111111111111111111", "-3=2147483647"},
        {L"0b11111111111111111111111111111111", "-200"},
        {L"0.00000000012", "-5=1.2e-10"}, {L"123456.7890123456789", "-5=123456.789012346"},
        {L"4294967295.5", "-5=4294967295.5"}, {L"7.", "-5=7"},
    };
    for (const auto& c : cases)
        CHECK(s.number(c.first) == c.second);
    // Only the field a token names is written.
    s.tokens(L"5 70000");
    CHECK((s.sc.shortVal == 5 && s.sc.longVal == 70000));

    for (int32_t mode : {1, 2})
        CHECK(Scanner(mode).number(L"4294967296") == "-200");
    Scanner three(3);
    CHECK(three.number(L"4294967296") == "-5=4294967296");
    CHECK(three.number(L"99999999999999999999") == "-5=1e+20");
}

TEST_CASE("a number longer than the buffer is an error, read up to the failing unit")
{
    Scanner s(0, 64, 5);
    CHECK(s.tokens(L"12345 123456 1234.5 0x1234 123.4") ==
          "-1:12345 -200:12345 -200:1234. -200:0x123 -5:123.4 -98");
    CHECK(s.number(L"12345.6") == "-200@5");
    CHECK(s.tokens(nullptr) == "46:. -1:6 -98");
}

TEST_CASE("strings and characters: translated alpha, raw as written, the buffer bound")
{
    Scanner s(0);
    CHECK(s.tokens(L"\"ab\\x41\\n\" 'a' \"\" '\\'' \"\\\"\"") == "-6:abA<a> -7:a -6: -7:' -6:\" -98");
    CHECK(s.tokens(L"''") == "-202:");
    SymReset(&s.sc);
    CHECK(s.tokens(L"'ab'") == "-202:ab");
    SymReset(&s.sc);
    CHECK(s.number(L"\"\\x4a\\xAb\\q\"") == "-6");
    CHECK((s.alpha() == "J<ab>q" && s.sc.openQuote == 0));
    CHECK(printable(SymGetAlphaUnTranslated(&s.sc), SymGetAlphaLenUnTranslated(&s.sc)) == "\\x4a\\xab\\q");

    Scanner narrow(0, 64, 5);
    CHECK(narrow.tokens(L"\"abcdefgh\"") == "-6:abcde -98");
    CHECK((narrow.number(L"\"abcdefgh\"") == "-6" && narrow.raw() == "abcde"));
}

TEST_CASE("escape sequences: named, octal, decimal, hexadecimal, the rest")
{
    Scanner s(0);
    SymNewLine(&s.sc, L"\"\\a\\b\\f\\n\\r\\t\\v\\0\\0101\\0109\\08\\65\\101\\999\\1234\\x4g\\xZ\\x123\\\\\"");
    CHECK(SymGetNextSym(&s.sc) == SYM_STRING);
    const std::vector<unsigned> expected = {7, 8, 12, 10, 13, 9, 11, 0, 65, 8, '9', 0, '8', 65, 101,
                                            999, 123, '4', 4, 'g', 0, 'Z', 0x12, '3', '\\'};
    CHECK(std::vector<unsigned>(s.sc.alpha, s.sc.alpha + s.sc.alphaLen) == expected);
}

TEST_CASE("an open string goes on over SymNewLine until its delimiter")
{
    Scanner s(0);
    CHECK((s.tokens(L"x \"ab") == "-8:x -201:ab" && s.sc.openQuote == L'"'));
    CHECK(s.tokens(L"") == "-201:ab");
    CHECK((s.tokens(L"cd\\") == "-201:abcd" && s.raw() == "abcd\\"));
    CHECK((s.tokens(L"n\" y") == "-6:abcdn -8:y -98" && s.sc.openQuote == 0));
    CHECK(s.tokens(L"'") == "-202:");
    CHECK(s.tokens(L"a' z") == "-7:a -8:z -98");
    // 'ab' is closed but stays open: what follows continues it.
    CHECK(s.tokens(L"'ab' + 'c") == "-202:ab -202:ab +  -202:ab + c");
    SymReset(&s.sc);
    CHECK(s.tokens(L"q") == "-8:q -98");
}

TEST_CASE("whole comments of mode 3")
{
    Scanner s(3);
    CHECK(s.tokens(L"a /* b * c */d // e /* f\r\n g", true) == "-8:a -73:/* b * c  -8:d -74:// e /* f -8:g -98");
    CHECK((s.number(L"/* b * c */") == "-73" && s.raw() == " b * c "));
    CHECK(s.tokens(L"/*/ x", true) == "-203:/*/ x -98");
    CHECK((s.number(L"/* x") == "-203" && SymGetColumnNo(&s.sc) == 4));
    CHECK(s.tokens(L"a /* b */ c // d") == "-8:a -8:c -98");
    CHECK(s.tokens(L"*/ a") == "-204:*/ -8:a -98");
}

TEST_CASE("the filter drops nested comments in modes 0 and 2")
{
    // Lines in order: a comment left open goes on into the next line.
    const std::pair<const wchar_t*, const char*> lines[] = {
        {L"/* /* */ */ a", "-8:a -98"},
        {L"x /* a", "-8:x -98"},
        {L"b */ c", "-8:c -98"},
        {L"a // b /* c\n d", "-8:a -98"},
        {L"c", "-8:c -98"},
        {L"*/ x", "-71:*/ -8:x -98"},
        {L"/* // */ x // */ y", "-8:x -98"},
        {L"/* 0x 0b */ y \"*/\"", "-8:y -6:*/ -98"},
        {L"/* \"*/\" */ w", "-8:w -98"},
        {L"/* it's", "-98"},  // a lone quote in a comment ends at the end of its text
        {L"*/ z", "-8:z -98"},
        {L"a // don't", "-8:a -98"},
        {L"b", "-8:b -98"},
    };
    for (int32_t mode : {0, 2}) {
        Scanner s(mode);
        for (const auto& line : lines)
            CHECK(s.tokens(line.first) == line.second);
        CHECK(s.tokens(L"/* x /* y */ */", true) == "-70:/* -8:x -70:/* -8:y -71:*/ -71:*/ -98");
    }
}

TEST_CASE("the scanning routines called directly start and stop where they say")
{
    Scanner s(3);
    s.at(L"x12.5y", 1);
    SymScanNumber(&s.sc);
    CHECK((s.sc.sym == SYM_DOUBLE && s.sc.column == 5 && s.alpha() == "12.5"));
    s.at(L"x'y\\'z' w", 1);
    s.sc.openQuote = L'\'';
    SymScanString(&s.sc);
    CHECK((s.sc.column == 7 && s.alpha() == "y'z" && s.raw() == "y\\'z"));
    s.at(L"\\x41z\\", 0);
    CHECK((SymEscapeSeq(&s.sc) == 'A' && s.sc.column == 3 && s.raw() == "x41"));
    s.at(L"\\x41z\\", 5);
    CHECK((SymEscapeSeq(&s.sc) == 0 && s.sc.column == 5));
    s.at(L"x*y*/z", 1);
    CHECK((SymScanCComment(&s.sc) == 1 && s.sc.column == 5 && s.alpha() == "y"));
    s.at(L"/*y*", 1);
    CHECK((SymScanCComment(&s.sc) == 0 && s.sc.column == 4 && s.raw() == "y*"));
    s.at(L"//ab\ncd", 1);
    SymScanCPPComment(&s.sc);
    CHECK((s.sc.column == 4 && s.raw() == "ab"));
}
