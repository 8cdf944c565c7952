#include "sym_internal.h"

#include "../frame/zor_alloc.h"
#include "zor_bt.h"
#include "zor_status.h"

namespace {

// Exact order by unsigned code unit: keywords are matched as written, and
// the case rule is applied by choosing alpha or alphaUpper as the key.
int compare_keywords(const void* key, const void* elem)
{
    const wchar_t* a = static_cast<const SymKeyword*>(key)->name;
    const wchar_t* b = static_cast<const SymKeyword*>(elem)->name;
    for (; *a != 0 && *a == *b; ++a, ++b) {
    }
    return int(uint16_t(*a)) - int(uint16_t(*b));
}

const SymKeyword kDottedKeywords[] = {
    {L"not", 33},  {L"or", SYM_OR},  {L"xor", 94},  {L"and", SYM_AND},
    {L"NOT", 33},  {L"OR", SYM_OR},  {L"XOR", 94},  {L"AND", SYM_AND},
};

void release_parts(SymScanner* sc)
{
    zor_free(sc->alphaUpper);
    zor_free(sc->alpha);
    zor_free(sc->raw);
    if (sc->keywords)
        BTDestroy(sc->keywords, nullptr);
    sc->alphaUpper = nullptr;
    sc->alpha = nullptr;
    sc->raw = nullptr;
    sc->keywords = nullptr;
}

}

ZOR_API ZORStatus SymInit(SymScanner* sc, uint32_t maxIdentLen, uint32_t bufferLen, int32_t ignoreCase,
                          int32_t mode)
{
    // Null first, so that a failed init leaves nothing that SymRelease
    // could mistake for a block.
    sc->alpha = nullptr;
    sc->alphaUpper = nullptr;
    sc->raw = nullptr;
    sc->keywords = BTCreate(compare_keywords, sizeof(SymKeyword));
    if (!sc->keywords)
        return ZOR_E_OUTOFMEMORY;

    sc->bufLen = bufferLen;
    sc->maxIdent = maxIdentLen < bufferLen ? maxIdentLen : bufferLen;
    sc->column = 0;
    sc->sym = SYM_EOL;
    sc->commentDepth = 0;
    sc->lineComment = 0;
    sc->text = nullptr;
    sc->alphaLen = 0;
    sc->rawLen = 0;
    sc->ignoreCase = ignoreCase;
    sc->mode = mode;

    size_t units = size_t(bufferLen) + 1;
    sc->alpha = static_cast<wchar_t*>(zor_calloc(units, sizeof(wchar_t)));
    sc->alphaUpper = static_cast<wchar_t*>(zor_calloc(units, sizeof(wchar_t)));
    sc->raw = static_cast<wchar_t*>(zor_calloc(units, sizeof(wchar_t)));
    ZORStatus status = sc->alpha && sc->alphaUpper && sc->raw ? ZOR_S_OK : ZOR_E_OUTOFMEMORY;

    if (status == ZOR_S_OK && (mode == 1 || mode == 3)) {
        for (const SymKeyword& keyword : kDottedKeywords) {
            status = SymSetKeyword(sc, &keyword);
            if (status != ZOR_S_OK)
                break;
        }
    }
    if (status != ZOR_S_OK)
        release_parts(sc);
    SymReset(sc);
    return status;
}

ZOR_API void SymRelease(SymScanner* sc)
{
    release_parts(sc);
}

ZOR_API void SymReset(SymScanner* sc)
{
    sc->openQuote = 0;
}

ZOR_API ZORStatus SymSetKeyword(SymScanner* sc, const SymKeyword* keyword)
{
    return BTInsert(sc->keywords, keyword) ? ZOR_S_OK : ZOR_E_OUTOFMEMORY;
}

ZOR_API void SymNewLine(SymScanner* sc, const wchar_t* text)
{
    sc->text = text;
    sc->column = 0;
}

ZOR_API int32_t SymGetSym(const SymScanner* sc) { return sc->sym; }
ZOR_API uint32_t SymGetColumnNo(const SymScanner* sc) { return sc->column; }
ZOR_API const wchar_t* SymGetAlpha(const SymScanner* sc) { return sc->alpha; }
ZOR_API uint32_t SymGetAlphaLen(const SymScanner* sc) { return sc->alphaLen; }
ZOR_API const wchar_t* SymGetAlphaUnTranslated(const SymScanner* sc) { return sc->raw; }
ZOR_API uint32_t SymGetAlphaLenUnTranslated(const SymScanner* sc) { return sc->rawLen; }
ZOR_API int16_t SymGetShort(const SymScanner* sc) { return sc->shortVal; }
ZOR_API uint16_t SymGetUShort(const SymScanner* sc) { return sc->ushortVal; }
ZOR_API int32_t SymGetLong(const SymScanner* sc) { return sc->longVal; }
ZOR_API uint32_t SymGetULong(const SymScanner* sc) { return sc->ulongVal; }
ZOR_API double SymGetDouble(const SymScanner* sc) { return sc->doubleVal; }
