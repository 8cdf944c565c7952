#include "zor_fsc.h"
#include "zor_status.h"

#include "../frame/zor_alloc.h"
#include "fsc_scanner.h"
#include "scanner_shared.h"

namespace {

constexpr scanner::CodeDescription kDescriptions[] = {
    {FSC_EOL, L"EOL"},
    {FSC_CONSTANT, L"STRING/CHAR constant"},
    {FSC_CHAR, L"CHAR placeholder"},
    {FSC_STRING, L"STRING placeholder"},
    {FSC_VARIANT, L"VARIANT placeholder "},
    {FSC_INTEGER, L"INTEGER placeholder"},
    {FSC_DOUBLE, L"DOUBLE placeholder"},
    {scanner::kEndOfDescriptions, nullptr},
};

}

ZORStatus FScInit(FScScanner* fsc, uint32_t bufLen)
{
    fsc->sym = FSC_EOL;
    fsc->bufLen = bufLen;
    fsc->text = nullptr;
    fsc->column = 0;
    fsc->alphaLen = 0;
    fsc->lineLen = zor_fsc::kNoLineLen;
    // Room for the terminator even at 0, so that alpha is always text.
    fsc->alpha = static_cast<wchar_t*>(zor_calloc(bufLen ? bufLen : 1, sizeof(wchar_t)));
    return fsc->alpha ? ZOR_S_OK : ZOR_E_OUTOFMEMORY;
}

void FScRelease(FScScanner* fsc)
{
    zor_free(fsc->alpha);
    fsc->alpha = nullptr;
    fsc->alphaLen = 0;
}

void FScSetLine(FScScanner* fsc, const wchar_t* text)
{
    FScSetLineLen(fsc, text, zor_fsc::kNoLineLen);
}

void FScSetLineLen(FScScanner* fsc, const wchar_t* text, uint32_t len)
{
    fsc->text = text;
    fsc->column = 0;
    fsc->lineLen = len;
}

int32_t FScGetSym(const FScScanner* fsc)
{
    return fsc->sym;
}

wchar_t* FScGetAlpha(const FScScanner* fsc)
{
    return fsc->alpha;
}

uint32_t FScGetAlphaLen(const FScScanner* fsc)
{
    return fsc->alphaLen;
}

uint32_t FScGetColumnNo(const FScScanner* fsc)
{
    return fsc->column;
}

const wchar_t* FScGetSymDescription(int32_t sym)
{
    return scanner::find_description(kDescriptions, sym);
}

int32_t FScIsPlaceholder(int32_t sym)
{
    return sym >= FSC_DOUBLE && sym <= FSC_CHAR;
}
