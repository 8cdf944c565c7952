#include "zor_sym.h"

#include "../frame/zor_platform.h"
#include "scanner_shared.h"

namespace {

const scanner::CodeDescription kDescriptions[] = {
    {SYM_SHORT, L"SHORT number"},
    {SYM_USHORT, L"UNSIGNED SHORT number"},
    {SYM_LONG, L"LONG number"},
    {SYM_ULONG, L"UNSIGNED LONG number"},
    {SYM_DOUBLE, L"DOUBLE number"},
    {SYM_STRING, L"STRING"},
    {SYM_CHARACTER, L"CHARACTER"},
    {SYM_IDENT, L"identifier"},
    {SYM_EQ, L"=="},
    {SYM_NE, L"!="},
    {SYM_LE, L"<="},
    {SYM_GE, L">="},
    {SYM_DIV_ASSIGN, L"/="},
    {SYM_MUL_ASSIGN, L"*="},
    {SYM_ADD_ASSIGN, L"+="},
    {SYM_SUB_ASSIGN, L"-="},
    {SYM_AND_ASSIGN, L"&="},
    {SYM_OR_ASSIGN, L"|="},
    {SYM_XOR_ASSIGN, L"^="},
    {SYM_MOD_ASSIGN, L"%="},
    {SYM_NOT_ASSIGN, L"!="},
    {SYM_SHL_ASSIGN, L"<<="},
    {SYM_SHR_ASSIGN, L">>="},
    {SYM_INC, L"++"},
    {SYM_DEC, L"--"},
    {SYM_SHL, L"<<"},
    {SYM_SHR, L">>"},
    {SYM_SCOPE, L"::"},
    {SYM_AND, L"&&"},
    {SYM_OR, L"||"},
    {SYM_ARROW, L"->"},
    {SYM_COMMENT_OPEN, L"/*"},
    {SYM_COMMENT_CLOSE, L"*/"},
    {SYM_LINE_COMMENT, L"//"},
    {SYM_EOL, L"EOL"},
    {SYM_EOF, L"EOF"},
    {SYM_ERR_NUMBER, L"*error* in number"},
    {SYM_ERR_STRING, L"*error* in string"},
    {SYM_ERR_CHARACTER, L"*error* in character"},
    {SYM_ERR_COMMENT_EOF, L"*error* unexpected eof in comment"},
    {SYM_ERR_COMMENT_END, L"*error* unexpected end of comment"},
    {scanner::kEndOfDescriptions, nullptr},
};

wchar_t g_unlistedCode[32];

}

ZOR_API const wchar_t* SymGetSymDescription(int32_t code)
{
    if (const wchar_t* text = scanner::find_description(kDescriptions, code))
        return text;
    zor::counted_swprintf(g_unlistedCode, 32, L"%d", code);
    return g_unlistedCode;
}
