#include "sym_internal.h"

ZOR_API int32_t SymGetNextSym(SymScanner* sc)
{
    if (ZOR_UNLIKELY(uint32_t(sc->mode) > 3))
        return 0;
    for (;;) {
        bool skip = false;
        int32_t token = SymGetNextSymAll(sc);
        switch (token) {
        case SYM_EOL:
            sc->lineComment = 0;
            return SYM_EOL;
        case SYM_C_COMMENT:
        case SYM_CPP_COMMENT:
            skip = true;
            break;
        case SYM_LINE_COMMENT:
            if (sc->commentDepth == 0)
                sc->lineComment = 1;
            break;
        case SYM_COMMENT_CLOSE:
            if (!sc->lineComment && sc->commentDepth > 0) {
                --sc->commentDepth;
                skip = true;
            }
            break;
        case SYM_COMMENT_OPEN:
            if (!sc->lineComment)
                ++sc->commentDepth;
            break;
        case SYM_ERR_STRING:
        case SYM_ERR_CHARACTER:
            // A quote in a comment's text that runs to the end of the text
            // would be asked for again and again. Comment text carries no
            // string into the next text: drop it, and the end of the text
            // comes next.
            if ((sc->commentDepth != 0 || sc->lineComment) && sc->text[sc->column] == 0)
                sc->openQuote = 0;
            break;
        default:
            break;
        }
        if (sc->commentDepth != 0 || sc->lineComment || skip)
            continue;
        return token;
    }
}
