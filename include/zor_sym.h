/* Sym: the line-oriented token scanner. The caller hands it one text after
   the other with SymNewLine and asks for tokens until SYM_EOL; what spans
   lines (an open string, the depth of a comment) stays in the object.

   The dialect (`mode`) picks one of two scanners:
     0  C-like: the full operator set, comment markers are tokens that
        SymGetNextSym filters out; block comments nest.
     1  dotted: .AND. .OR. .NOT. .XOR. .T. .F., the words and/or/not/xor,
        identifiers also with @ $ and the German letters.
     2  as 0, and identifiers continue with the German letters.
     3  as 1 without @ $ and German letters, plus && ||, and whole comments
        as one token each (SYM_C_COMMENT, SYM_CPP_COMMENT).

   A character without a token of its own is returned as its code-unit value
   (positive, "(" is 40); every other token has a negative code below.
   Lexical errors are tokens, never status codes, and the scanner stays
   usable after them.

   Call order: SymInit, any SymSetKeyword, then per text SymNewLine and
   SymGetNextSym until SYM_EOL, in the end SymRelease. After an error token
   a caller that starts a fresh text calls SymReset first: an open string
   (SYM_ERR_STRING, SYM_ERR_CHARACTER) otherwise goes on into the next
   text, and asking again on the same text repeats the error token. */
#ifndef ZOR_SYM_H
#define ZOR_SYM_H

#include "zor_api.h"
#include "zor_status.h"

struct BT;

/* Token codes. The numbers are part of the interface. */
enum {
    SYM_SHORT          = -1,   /* integer up to 32767: shortVal */
    SYM_USHORT         = -2,   /* 32768 to 65535: ushortVal */
    SYM_LONG           = -3,   /* 65536 to 2147483647, .T. and .F.: longVal */
    SYM_ULONG          = -4,   /* above 2147483647: ulongVal */
    SYM_DOUBLE         = -5,   /* with a dot, or too large (mode 3): doubleVal */
    SYM_STRING         = -6,
    SYM_CHARACTER      = -7,
    SYM_IDENT          = -8,
    SYM_EQ             = -10,  /* == (also = and == in modes 1 and 3) */
    SYM_NE             = -11,  /* != (also <> in modes 1 and 3) */
    SYM_LE             = -12,
    SYM_GE             = -13,
    SYM_DIV_ASSIGN     = -20,
    SYM_MUL_ASSIGN     = -21,
    SYM_ADD_ASSIGN     = -22,
    SYM_SUB_ASSIGN     = -23,
    SYM_AND_ASSIGN     = -24,
    SYM_OR_ASSIGN      = -25,
    SYM_XOR_ASSIGN     = -26,
    SYM_MOD_ASSIGN     = -27,
    SYM_NOT_ASSIGN     = -28,  /* ~= ; described as "!=" */
    SYM_SHL_ASSIGN     = -29,
    SYM_SHR_ASSIGN     = -30,
    SYM_INC            = -40,
    SYM_DEC            = -41,
    SYM_SHL            = -42,
    SYM_SHR            = -43,
    SYM_SCOPE          = -44,
    SYM_AND            = -50,  /* &&, .AND., and */
    SYM_OR             = -51,  /* ||, .OR., or */
    SYM_ARROW          = -60,
    SYM_COMMENT_OPEN   = -70,  /* modes 0 and 2 */
    SYM_COMMENT_CLOSE  = -71,
    SYM_LINE_COMMENT   = -72,
    SYM_C_COMMENT      = -73,  /* mode 3: a whole comment, no description */
    SYM_CPP_COMMENT    = -74,
    SYM_EOL            = -98,  /* end of the current text */
    SYM_EOF            = -99,  /* never made here; for callers' own scanners */
    SYM_ERR_NUMBER     = -200,
    SYM_ERR_STRING     = -201,
    SYM_ERR_CHARACTER  = -202,
    SYM_ERR_COMMENT_EOF = -203,
    SYM_ERR_COMMENT_END = -204
};

/* An entry of the keyword table. The table keeps the `name` pointer, not
   the text: the text must outlive the scanner. */
typedef struct SymKeyword {
    const wchar_t* name;
    int32_t        sym;
} SymKeyword;

/* Lives in the caller's storage; the fields are read by callers directly.
   The three buffers hold bufLen + 1 units each and are always terminated
   after a token; no scan writes behind bufLen units of text. */
typedef struct SymScanner {
    const wchar_t* text;         /* borrowed current text */
    int32_t        sym;          /* current token */
    uint32_t       maxIdent;     /* min(maxIdentLen, bufferLen) */
    uint32_t       bufLen;       /* units per buffer, terminator excluded */
    int16_t        shortVal;     /* only the field the token names is set */
    uint16_t       ushortVal;
    int32_t        longVal;
    uint32_t       ulongVal;     /* every integer while it is scanned */
    double         doubleVal;
    uint32_t       column;       /* index of the next unit to read */
    uint32_t       alphaLen;
    uint32_t       rawLen;
    wchar_t*       alpha;        /* token text; strings with escapes translated */
    wchar_t*       alphaUpper;   /* identifiers only, in upper case */
    wchar_t*       raw;          /* strings and comments as written */
    int32_t        commentDepth; /* open block comments seen by the filter */
    int32_t        lineComment;  /* the filter is inside a // comment */
    struct BT*     keywords;     /* SymKeyword elements, exact name order */
    int32_t        ignoreCase;   /* look keywords up by alphaUpper */
    int32_t        mode;         /* dialect 0 to 3 */
    wchar_t        openQuote;    /* delimiter of a string still open, or 0 */
} SymScanner;

/* Creates the keyword table and the three buffers, and in modes 1 and 3
   the words not/or/xor/and in lower and in upper case. bufferLen should
   leave room for the longest operator (5 units, ".NOT."); with less, token
   texts are cut short, but nothing is written behind the buffers.
   maxIdentLen limits identifiers to maxIdentLen + 1 units; the rest of a
   longer word makes the next token. On ZOR_E_OUTOFMEMORY
   nothing stays allocated: the buffer and table pointers are null, the
   object must not be scanned with, and SymRelease on it does nothing. */
ZOR_API ZORStatus SymInit(SymScanner* sc, uint32_t maxIdentLen, uint32_t bufferLen,
                          int32_t ignoreCase, int32_t mode);
/* Releases buffers and table, not the keyword names; nulls the pointers. */
ZOR_API void      SymRelease(SymScanner* sc);
/* Forgets an open string (openQuote), nothing else. */
ZOR_API void      SymReset(SymScanner* sc);
/* Inserts a copy of the record. A name given twice keeps both entries and
   a lookup finds either. Any code may be given, also an operator's; the
   word then comes back with that code and its own text in alpha. On
   ZOR_E_OUTOFMEMORY the table is as it was. */
ZOR_API ZORStatus SymSetKeyword(SymScanner* sc, const SymKeyword* keyword);
/* Borrows `text` and starts at its first unit; fetches no token and keeps
   the open string and comment state. */
ZOR_API void      SymNewLine(SymScanner* sc, const wchar_t* text);

/* The next token with comments filtered out. In modes 0 and 2 block
   comments nest and span texts; a // comment runs to the end of the text
   given to SymNewLine. A quote inside a comment of modes 0 and 2 still
   opens a string, so that a quoted comment marker does not count; if that
   string reaches the end of the text, the filter drops it (openQuote is
   cleared), and the call ends with SYM_EOL with the comment depth kept.
   Comment text never carries a string into the next text. In modes 1 and 3
   whole comments are dropped and -203, -204 come back. An unknown mode
   gives 0. */
ZOR_API int32_t   SymGetNextSym(SymScanner* sc);
/* The next token, comments included. An unknown mode gives 0 and changes
   nothing. At the end of the text SYM_EOL, again on every further call. */
ZOR_API int32_t   SymGetNextSymAll(SymScanner* sc);

/* Accessors of the current token; the texts are valid until the next one. */
ZOR_API int32_t        SymGetSym(const SymScanner* sc);
ZOR_API uint32_t       SymGetColumnNo(const SymScanner* sc);
ZOR_API const wchar_t* SymGetAlpha(const SymScanner* sc);
ZOR_API uint32_t       SymGetAlphaLen(const SymScanner* sc);
ZOR_API const wchar_t* SymGetAlphaUnTranslated(const SymScanner* sc);
ZOR_API uint32_t       SymGetAlphaLenUnTranslated(const SymScanner* sc);
ZOR_API int16_t        SymGetShort(const SymScanner* sc);
ZOR_API uint16_t       SymGetUShort(const SymScanner* sc);
ZOR_API int32_t        SymGetLong(const SymScanner* sc);
ZOR_API uint32_t       SymGetULong(const SymScanner* sc);
ZOR_API double         SymGetDouble(const SymScanner* sc);

/* The scanning routines behind SymGetNextSymAll, for callers with a token
   loop of their own. Each appends to alpha and raw from their current
   lengths, leaves them terminated and never writes behind bufLen.

   SymScanNumber: `column` on the first digit, leaves it behind the last
   unit read; sets sym and the value field it names. Numbers read ASCII
   digits only (other digits of the runtime's class end a number and are
   tokens of their own); no octal, no exponent, no sign. Integers past
   4294967290 switch to floating point, which only mode 3 accepts; a number
   longer than bufLen is SYM_ERR_NUMBER. Not on a digit: SYM_ERR_NUMBER
   and nothing read. */
ZOR_API void SymScanNumber(SymScanner* sc);
/* `column` one before the string's text, openQuote its delimiter; leaves
   `column` behind the closing delimiter or on the terminator. Units beyond
   bufLen are dropped silently; a backslash ending the text keeps the string
   open. Does not change openQuote or sym. */
ZOR_API void SymScanString(SymScanner* sc);
/* `column` on the backslash; returns the translated unit (low 16 bits) and
   leaves `column` on the last unit of the sequence: \a \b \f \n \r \t \v,
   \0 and up to three octal digits, \1 to \999 decimal, \x and up to two
   hexadecimal digits (kept in raw in lower case), any other unit itself.
   A backslash that ends the text gives 0 and `column` stays on it. */
ZOR_API int  SymEscapeSeq(SymScanner* sc);
/* `column` on the `*` of the opener; 1 and `column` behind the closing
   marker, or 0 and `column` on the terminator. No nesting. */
ZOR_API int  SymScanCComment(SymScanner* sc);
/* `column` on the second slash; copies up to the first CR, LF or the
   terminator, which stays unread. */
ZOR_API void SymScanCPPComment(SymScanner* sc);

/* Token descriptions. A code without a row (a plain character, the whole
   comments -73 and -74) is printed in decimal into one static area shared
   by all threads. Needs no scanner. */
ZOR_API const wchar_t* SymGetSymDescription(int32_t code);

#endif
