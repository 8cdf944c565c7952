#include <random>

#include "alloc_check.h"
#include "expr_fixture.h"

TEST_CASE("balancing converts the narrower side where it stands and names failures")
{
    const wchar_t* const var[] = {L"vv", L"ch", L"a", L"u", L"d", L"bf", L"s", L"dt"};
    const wchar_t* const name[] = {L"EXT_Void",     L"EXT_Char",   L"EXT_Long",  L"EXT_ULong",
                                   L"EXT_Double",   L"EXT_BitField", L"EXT_String", L"EXT_Date"};
    const uint32_t to[] = {0, EOP_TO_CHAR, EOP_TO_LONG, EOP_TO_ULONG, EOP_TO_DOUBLE, EOP_TO_BITFIELD, EOP_TO_STRING, 0};
    for (uint32_t l = 0; l <= EXT_Date; ++l)
        for (uint32_t r = 0; r <= EXT_Date; ++r) {
            Sheet e;
            const std::wstring text = std::wstring(var[l]) + L" + " + var[r];
            CAPTURE(text);
            const uint32_t lo = l < r ? l : r, hi = l < r ? r : l;
            const bool fits = l == r || !(lo == EXT_Void || hi == EXT_Date || (hi == EXT_String && lo != EXT_Char));
            const uint32_t at = l == hi ? 2 : 1;  // behind the side that is converted
            Ops ops = fits ? Ops{EOP_NOP, EOP_NOP, EOP_ADD, EOP_END} : Ops{EOP_NOP, EOP_NOP, EOP_END};
            if (fits && l != r)
                ops.insert(ops.begin() + at, to[hi]);
            CHECK((e.compile(text.c_str()) == (fits ? 0 : ZOR_DISP_E_TYPEMISMATCH) && e.opcodes() == ops));
            if (!fits)
                CHECK(e.error_text() == std::wstring(name[l]) + L" <-> " + name[r]);
            else
                CHECK((e.resultType == hi && (l == r || (e.at(e.first + at).operand.type == (at == 1 ? l : r) &&
                                                         e.at(e.first + 3).operand.type == hi))));
        }
}

TEST_CASE("instruction shapes: calls, indexes, assignments, members, precedence and dialects")
{
    Sheet e, dotted(3);
    const uint32_t N = EOP_NOP;
    const struct { Expr* e; const wchar_t* text; Ops ops; uint32_t resultType; } rows[] = {
        {&e, L"f2(a, 2)", {N, EOP_TO_DOUBLE, N, N, EOP_PAR, EOP_END}, EXT_Double},
        {&e, L"f(1,)", {N, N, EOP_PAR, EOP_END}, EXT_Long},
        {&e, L"anyfn(d)", {N, N, EOP_PAR, EOP_END}, EXT_Long},
        {&e, L"s[d]", {N, N, EOP_TO_LONG, EOP_IDX, EOP_END}, EXT_Char},
        {&e, L"(a = b) = 1", {N, N, EOP_ASS, N, EOP_ASS, EOP_END}, EXT_Long},
        {&e, L"++ ++a", {N, EOP_PREINC, EOP_PREINC, EOP_END}, EXT_Long},
        {&e, L"a.b->nosuch", {N, N, EOP_DFA, EOP_IFA, EOP_END}, EXT_Long},
        {&e, L"a || b && a | b ^ a & b == a < b << a + b * a", {N, N, N, N, N, N, N, N, N, N, N, EOP_MUL, EOP_ADD,
             EOP_SHL, EOP_LT, EOP_EQU, EOP_AND, EOP_XOR, EOP_OR, EOP_LAND, EOP_LOR, EOP_END}, EXT_Long},
        {&dotted, L"a .AND. b or .NOT. a xor b = a", {N, N, EOP_LAND, N, EOP_LNOT, N, N, EOP_EQU, EOP_XOR, EOP_LOR,
             EOP_END}, EXT_Long},
    };
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.text));
        REQUIRE(row.e->compile(row.text) == 0);
        CHECK((row.e->opcodes() == row.ops && row.e->resultType == row.resultType));
    }
    CHECK((e.compile(L"1.5", EXT_Long) == 0 && e.opcodes() == Ops{EOP_NOP, EOP_TO_LONG, EOP_END}));
    CHECK((e.compile(L"1.5", EXT_Date) == ZOR_DISP_E_TYPEMISMATCH && e.error_text() == L"EXT_Date <-> EXT_Double"));
    CHECK((e.compile(L"1 + 2") == 0 && e.isConst == 1 && e.compile(L"a + 2") == 0 && e.isConst == 0));
}

TEST_CASE("every compile failure gives its code, column, token length and text")
{
    struct Row { const wchar_t* text; ZORStatus code; uint32_t col, len; const wchar_t* about; };
    const Row rows[] = {
        {L"1 = 2", ZOR_E_LVALUE_REQUIRED, 3, 1, L"kept"},    {L"a + b = 1", ZOR_E_LVALUE_REQUIRED, 7, 1, L"kept"},
        {L"-a = 1", ZOR_E_LVALUE_REQUIRED, 4, 1, L"kept"},   {L"g() = 1", ZOR_E_LVALUE_REQUIRED, 5, 1, L"kept"},
        {L"c = 1", ZOR_E_LVALUE_REQUIRED, 3, 1, L"kept"},    {L"s[1] = 'x'", ZOR_E_LVALUE_REQUIRED, 6, 1, L"kept"},
        {L"++c", ZOR_E_LVALUE_REQUIRED, 3, 0, L"kept"},      {L"a++ ++", ZOR_E_LVALUE_REQUIRED, 6, 2, L"kept"},
        {L"(a", ZOR_E_RPAREN_REQUIRED, 2, 0, L""},           {L"g(", ZOR_E_RPAREN_REQUIRED, 2, 0, L""},
        {L"f 1", ZOR_E_LPAREN_REQUIRED, 3, 1, L"1"},         {L"a[1;", ZOR_E_RBRACKET_REQUIRED, 4, 1, L";"},
        {L"a(1)", ZOR_E_FUNCTION_REQUIRED, 2, 1, L"("},      {L"a->+", ZOR_E_IDENTIFIER_REQUIRED, 4, 1, L"+"},
        {L"a + ", ZOR_E_OPERAND_REQUIRED, 4, 0, L""},        {L"a * ]", ZOR_E_OPERAND_REQUIRED, 5, 1, L"]"},
        {L"f(1 2)", ZOR_E_COMMA_REQUIRED, 5, 1, L"2"},       {L"f(1", ZOR_E_COMMA_REQUIRED, 3, 0, L""},
        {L"1 2", ZOR_E_SYNTAX_ERROR, 3, 1, L"2"},            {L"a ~= b", ZOR_E_SYNTAX_ERROR, 4, 2, L"~="},
        {L"zz + 1", ZOR_DISP_E_UNKNOWNNAME, 2, 2, L"zz"},    {L"f(", ZOR_DISP_E_BADPARAMCOUNT, 2, 0, L""},
        {L"f()", ZOR_DISP_E_BADPARAMCOUNT, 3, 1, L")"},      {L"f(1, 2)", ZOR_DISP_E_BADPARAMCOUNT, 6, 1, L"2"},
        {L"f(s)", ZOR_DISP_E_TYPEMISMATCH, 4, 1, L"EXT_Long <-> EXT_String"},
    };
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.text));
        Sheet e;
        e->errorText = L"kept";
        const uint32_t before = e.size();
        CHECK((e.compile(row.text) == row.code && ExprGetColNo(e) == row.col && ExprGetErrLen(e) == row.len));
        CHECK((e.error_text() == row.about && e.resultType == 0 && e.size() > before &&
               e.at(e.size() - 1).opcode == EOP_END));
    }
}

namespace {
// A lent token stream: the owner's scanner, or a fixed list of tokens naming "x".
const int32_t* g_tokens;
int g_at;
int32_t listed_next(void*, SymScanner*) { return ++g_at; }
int32_t listed_sym(void*, SymScanner*) { return g_at < 3 && g_tokens[g_at] ? g_tokens[g_at] : -98; }
const wchar_t* listed_alpha(void*, SymScanner*) { return L"x"; }
int32_t owner_next(void*, SymScanner* sc) { return SymGetNextSym(sc); }
int32_t owner_sym(void*, SymScanner* sc) { return SymGetSym(sc); }
const wchar_t* owner_alpha(void*, SymScanner* sc) { return SymGetAlpha(sc); }
}

TEST_CASE("a lent token stream feeds the compile; its error tokens map to their codes")
{
    // Each error token once where an operand belongs, once behind "x", where
    // only an open comment has a code of its own.
    const struct { int32_t tokens[3]; ZORStatus code; } rows[] = {
        {{-200}, ZOR_E_ILLEGAL_NUMBER},      {{-201}, ZOR_E_ILLEGAL_STRING}, {{-202}, ZOR_E_ILLEGAL_CHARACTER},
        {{-203}, ZOR_E_COMMENT_NOT_CLOSED},  {{-204}, ZOR_E_COMMENT_END_OUTSIDE}, {{-99}, 0},
        {{-8, -200}, ZOR_E_SYNTAX_ERROR},    {{-8, -203}, ZOR_E_COMMENT_NOT_CLOSED},
        {{-8, -204}, ZOR_E_SYNTAX_ERROR},    {{-8, -99}, 0}};
    ExprContext ctx;
    uint32_t first = 0;
    int32_t x = 0;
    for (const auto& row : rows) {
        g_tokens = row.tokens, g_at = 0;
        REQUIRE(ExprInit(&ctx, 16, 16, 0, 0, nullptr, 0, listed_next, listed_sym, listed_alpha, nullptr, nullptr) == 0);
        ExprDefineVar(&ctx, &x, L"x", EXT_Long);
        CAPTURE(row.tokens[0]);
        CHECK(ExprCompile(&ctx, L"", &first, 0, nullptr, nullptr) == row.code);
        ExprRelease(&ctx);
    }
    SymScanner own;
    REQUIRE(SymInit(&own, 32, 64, 0, 0) == 0);
    REQUIRE(ExprInit(&ctx, 32, 64, 0, 0, L";", 0, owner_next, owner_sym, owner_alpha, nullptr, &own) == 0);
    double d = 0;
    ExprDefineVar(&ctx, &d, L"d", EXT_Double);
    SymNewLine(&own, L"skip d = 2.5; more");
    SymGetNextSym(&own), SymGetNextSym(&own);  // positioned by its owner, not by the compile
    CHECK((ExprCompile(&ctx, L"ignored text", &first, 0, nullptr, nullptr) == 0 && ExprGetColNo(&ctx) == 13));
    CHECK((ExprEvaluate(&ctx, first, 0) == 0 && d == 2.5));
    ExprRelease(&ctx);
    SymRelease(&own);
}

TEST_CASE("empty texts, comments across texts, terminators and symbol names that differ in case")
{
    Sheet e;
    for (const wchar_t* empty : {L"", L"   "}) {
        const uint32_t before = e.size();
        CHECK((e.compile(empty) == 0 && e.first == EXPR_EMPTY && e.isConst == 1 && e.resultType == 0 &&
               e.size() == before));
    }
    CHECK(e.compile(L"1;") == ZOR_E_SYNTAX_ERROR);
    // An open comment outlives its compile, and the next text starts inside it.
    CHECK((e.compile(L"1 /* open") == 0 && e.opcodes() == Ops{EOP_NOP, EOP_END}));
    CHECK((e.compile(L"2") == 0 && e.first == EXPR_EMPTY));
    e.check({{L"*/ 2", L"L 2"}});
    Sheet t(0, 0, L";,");
    CHECK(t.compile(L"a + 1; rest") == 0);
    CHECK((SymGetSym(&t->scanner) == ';' && ExprGetColNo(t) == 6 && ExprGetActExpr(t) == t.first));

    Sheet ci(0, 1), cs;
    CHECK(ExprDefineVar(ci, &ci.a, L"AbC", EXT_Long) == 0);
    CHECK(ExprDefineVar(ci, &ci.b, L"ABC", EXT_Long) == ZOR_TYPE_E_NAMECONFLICT);
    ci.a = 5;
    ci.check({{L"abc", L"L 5"}});
    CHECK((ExprDefineVar(cs, &cs.a, L"AbC", EXT_Long) == 0 && ExprDefineVar(cs, &cs.b, L"ABC", EXT_Long) == 0));
    CHECK(cs.compile(L"abc") == ZOR_DISP_E_UNKNOWNNAME);
}

TEST_CASE("deep nesting fails with a code instead of exhausting the stack")
{
    Sheet e;
    for (const wchar_t* unit : {L"(", L"- ", L"a[", L"f(", L"a = "}) {
        std::wstring deep;
        for (int i = 0; i < 100000; ++i)
            deep += unit;
        CAPTURE(std::wstring(unit));
        CHECK((e.compile((deep + L"1").c_str()) == EXPR_E_TOO_DEEP && e.at(e.size() - 1).opcode == EOP_END));
    }
    // Every form of nesting: exactly the limit fits, one more fails.
    const std::pair<const wchar_t*, const wchar_t*> forms[] = {
        {L"(", L")"}, {L"- ", L""}, {L"a[", L"]"}, {L"f(", L")"}, {L"a = ", L""}};
    for (const auto& form : forms)
        for (int depth : {EXPR_MAX_NESTING, EXPR_MAX_NESTING + 1}) {
            std::wstring text;
            for (int i = 0; i < depth; ++i)
                text += form.first;
            text += L"1";
            for (int i = 0; i < depth; ++i)
                text += form.second;
            CAPTURE(text);
            CHECK(e.compile(text.c_str()) == (depth > EXPR_MAX_NESTING ? EXPR_E_TOO_DEEP : 0));
        }
}

// A function that is not called leaves its arguments and no value on the
// stack, so nothing may be compiled on top of its call; variables of type
// EXT_Void have storage and stay usable.
TEST_CASE("a call without a value ends the formula; every use of it fails the compile")
{
    Sheet e;
    REQUIRE(ExprDefineFn(e, nullptr, L"fv", EXT_Void, 1, EXT_Long) == 0);
    REQUIRE(ExprDefineFn(e, nullptr, L"fx", 9, 0) == 0);
    CHECK(e.compile(L"fv(1) == fv(2)[0]") == ZOR_DISP_E_TYPEMISMATCH);
    std::vector<std::wstring> uses;
    for (const wchar_t* op : {L"||", L"&&", L"|", L"^", L"&", L"==", L"!=", L"<=", L">=", L"<", L">", L"<<", L">>",
                              L"+", L"-", L"*", L"/", L"%", L"=", L"+=", L"<<=", L"|="})
        for (std::wstring form : {L"X @ 1", L"a @ X", L"X @ X", L"s @ X", L"dt @ X"})
            uses.push_back(form.replace(form.find(L'@'), 1, op));
    for (const wchar_t* form : {L"-X", L"+X", L"!X", L"~X", L"*X", L"&X", L"++X", L"--X", L"X++", L"X--", L"X[0]",
                                L"la[X]", L"X.a", L"X->a", L"f(X)", L"anyfn(X)", L"f2(X, 1)", L"f2(1, X)", L"fv(X)"})
        uses.push_back(form);
    for (const wchar_t* call : {L"fv(1)", L"fx()", L"(fv(a))"})
        for (std::wstring text : uses) {
            for (size_t at = text.find(L'X'); at != std::wstring::npos; at = text.find(L'X'))
                text.replace(at, 1, call);
            CAPTURE(text);
            const ZORStatus status = e.compile(text.c_str());
            CHECK((status == ZOR_DISP_E_TYPEMISMATCH || status == ZOR_E_LVALUE_REQUIRED));
        }
    for (uint32_t wanted = EXT_Char; wanted <= EXT_Date; ++wanted)
        CHECK(e.compile(L"fv(1)", wanted) == ZOR_DISP_E_TYPEMISMATCH);
    // Alone, the call compiles and runs, leaving what the header says.
    for (const wchar_t* alone : {L"fv(7)", L"(fv(7))", L"fx()"}) {
        CAPTURE(std::wstring(alone));
        REQUIRE(e.compile(alone) == 0);
        CHECK((ExprEvaluate(e, e.first, 0) == 0 && e->stackDepth == (alone[0] == L'f' && alone[1] == L'x' ? 1 : 2)));
        e->stackDepth = 0;
    }
    for (const wchar_t* op : {L"==", L"<", L"&&", L"+", L"="}) {
        const std::wstring text = std::wstring(L"vv ") + op + L" vv";
        CAPTURE(text);
        REQUIRE(e.compile(text.c_str()) == 0);
        CHECK(ExprEvaluate(e, e.first, 0) == 0);
        e->stackDepth = 0;
    }
}

TEST_CASE("random token soups always give a code and close what they appended")
{
    const wchar_t* const pieces[] = {L"a", L"d", L"s", L"ch", L"bf", L"dt", L"c", L"f", L"g", L"f2", L"zz", L"1",
                                     L"2.5", L"'x'", L"\"t\"", L"(", L")", L"[", L"]", L",", L"+", L"-", L"*", L"/",
                                     L"=", L"+=", L"<<=", L"++", L"--", L"&&", L"||", L"!", L"~", L"<", L"==", L".",
                                     L"->", L"?", L"/*", L"*/", L"\"", L"'", L" "};
    std::mt19937 random(20261122);
    for (uint32_t mode : {0u, 3u}) {
        Sheet e(mode);
        for (int line = 0; line < 3000; ++line) {
            std::wstring text;
            for (int n = random() % 12; n > 0; --n)
                text += pieces[random() % (sizeof(pieces) / sizeof(pieces[0]))];
            e->scanner.commentDepth = 0;
            const uint32_t before = e.size();
            const ZORStatus status = e.compile(text.c_str());
            CAPTURE(text);
            CHECK(((status >= ZOR_E_LVALUE_REQUIRED && status <= ZOR_E_COMMENT_END_OUTSIDE) || status == 0 ||
                   status == ZOR_DISP_E_TYPEMISMATCH || status == ZOR_DISP_E_UNKNOWNNAME ||
                   status == ZOR_DISP_E_BADPARAMCOUNT));
            CHECK((status == 0 && e.first == EXPR_EMPTY ? e.size() == before : e.at(e.size() - 1).opcode == EOP_END));
        }
    }
}

// Release frees each value the compile made (strings, dates, bit fields) once.
TEST_CASE("exhaustion while compiling gives E_OUTOFMEMORY and still closes the expression")
{
    NoLeak leak;
    Sheet e;
    fail_each_allocation([&e]() {
        for (const wchar_t* text : {L"s = s + 'x' + \"abc\"", L"d = f2(a, 2) + bf[1] + 1.5 + 2.5", L"dt = dt + dt",
                                    L"bf = bf + 1", L"s + 1"}) {
            const uint32_t before = e.size();
            const ZORStatus status = e.compile(text);
            CHECK((status == 0 || status == ZOR_E_OUTOFMEMORY || status == ZOR_DISP_E_TYPEMISMATCH));
            if (e.size() > before)
                CHECK(e.at(e.size() - 1).opcode == EOP_END);
        }
    });
}
