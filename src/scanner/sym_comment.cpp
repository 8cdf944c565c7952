#include "sym_internal.h"

namespace sym {

bool scan_c_comment(SymScanner* sc)
{
    const wchar_t* text = sc->text;
    uint32_t col = sc->column + 1;
    for (wchar_t c; (c = text[col]) != 0; ++col) {
        if (c == L'*' && text[col + 1] == L'/') {
            sc->column = col + 2;
            return true;
        }
        put_raw(sc, c);
        put_alpha(sc, c);
    }
    sc->column = col;
    return false;
}

}

ZOR_API int SymScanCComment(SymScanner* sc)
{
    bool closed = sym::scan_c_comment(sc);
    sym::terminate_alpha_and_raw(sc);
    return closed ? 1 : 0;
}

ZOR_API void SymScanCPPComment(SymScanner* sc)
{
    const wchar_t* text = sc->text;
    uint32_t col = sc->column + 1;
    for (wchar_t c; (c = text[col]) != 0 && c != L'\r' && c != L'\n'; ++col) {
        sym::put_raw(sc, c);
        sym::put_alpha(sc, c);
    }
    sc->column = col;
    sym::terminate_alpha_and_raw(sc);
}
