/* Expr: the formula engine. An application defines variables, constants and
   functions by name, compiles lines of text against them into one growing
   array of postfix instructions, and evaluates any compiled expression as
   often as it likes with fresh values in its variables.

   The ExprContext lives in the caller's storage: ExprInit fills it,
   ExprRelease empties it. Names given to the Define functions are borrowed
   and must outlive the object; a variable's storage stays the caller's and is
   read and written in place (an EXT_String variable is a TSString, an
   EXT_Date variable a TDDate). Functions that report by code return a
   ZORStatus (zor_status.h); the library's own compile codes have catalogue
   texts through ZORBaseFormatMessage. */
#ifndef ZOR_EXPR_H
#define ZOR_EXPR_H

#include "zor_api.h"
#include "zor_bt.h"
#include "zor_da.h"
#include "zor_status.h"
#include "zor_sym.h"
#include "zor_td.h"
#include "zor_ts.h"

/* Value types. The names appear in the text of type-mismatch errors. */
enum {
    EXT_Void     = 0,
    EXT_Char     = 1, /* one unsigned 16-bit code unit, a number */
    EXT_Long     = 2, /* signed 32-bit */
    EXT_ULong    = 3, /* unsigned 32-bit */
    EXT_Double   = 4,
    EXT_BitField = 5, /* ExprBitField, a block of its own */
    EXT_String   = 6, /* TSString */
    EXT_Date     = 7, /* TDDate */
    EXT_Unknown  = 8  /* argument lists of ExprDefineFn only: any type, unconverted */
};

/* Opcodes of the postfix stream. The six conversions are in promotion order:
   when two types are balanced, the conversion with the higher code wins. */
enum {
    EOP_END = 0, EOP_NOP = 1,
    EOP_ASS = 2, EOP_MULASS = 3, EOP_DIVASS = 4, EOP_MODASS = 5, EOP_ADDASS = 6,
    EOP_SUBASS = 7, EOP_SHLASS = 8, EOP_SHRASS = 9, EOP_ANDASS = 10, EOP_XORASS = 11,
    EOP_ORASS = 12,
    EOP_LOR = 13, EOP_LAND = 14, EOP_OR = 15, EOP_XOR = 16, EOP_AND = 17,
    EOP_EQU = 18, EOP_NEQ = 19, EOP_LT = 20, EOP_GT = 21, EOP_LEQ = 22, EOP_GEQ = 23,
    EOP_SHL = 24, EOP_SHR = 25, EOP_ADD = 26, EOP_SUB = 27, EOP_MUL = 28, EOP_DIV = 29,
    EOP_MOD = 30,
    EOP_PREINC = 31, EOP_PREDEC = 32, EOP_POS = 33, EOP_NEG = 34, EOP_LNOT = 35,
    EOP_NOT = 36, EOP_DRF = 37, EOP_ADR = 38, EOP_POSTINC = 39, EOP_POSTDEC = 40,
    EOP_IDX = 41, EOP_PAR = 42, EOP_DFA = 43, EOP_IFA = 44,
    EOP_TO_CHAR = 45, EOP_TO_LONG = 46, EOP_TO_ULONG = 47, EOP_TO_BITFIELD = 48,
    EOP_TO_DOUBLE = 49, EOP_TO_STRING = 50
};

/* Who owns an operand's value, and so what ExprRelease does with it. */
enum {
    EXS_Plain    = 0, /* a caller's variable or a slot of the data arena */
    EXS_String   = 1, /* a TSString made for the instruction: TSFree */
    EXS_BitField = 2, /* an 8-byte block made for the instruction: freed */
    EXS_Date     = 3, /* a TDDate made for the instruction: TDFree */
    EXS_Function = 4, /* a user function */
    EXS_Const    = 5  /* a caller's constant; also the compiler's "no L-value" */
};

/* Start marks of ExprEvaluate. ExprCompile gives EXPR_EMPTY for a text
   without an expression; EXPR_RUN_ALL runs the whole array, passing over
   (and pushing) every EOP_END. */
#define EXPR_EMPTY   0x80000000u
#define EXPR_RUN_ALL 0xFFFFFFFFu

/* The compiler nests once per parenthesis, bracket, argument, right side of
   an assignment and prefix operator; the formula itself is no nesting, so
   "((1))" is nested 2 deep. Text nested deeper than this fails with
   EXPR_E_TOO_DEEP (the platform's stack-overflow code in failure form), at
   the token that went too deep, instead of exhausting the thread's stack:
   the deepest text accepted needs at most about 400 KB of it. */
#define EXPR_MAX_NESTING 256
#define EXPR_E_TOO_DEEP  0x800703E9u

typedef struct ExprContext ExprContext;

/* A value: shared by symbols and instructions, so that compiling a variable
   is a copy of the record. */
typedef struct ExprOperand {
    void*    value;     /* arena slot, TSString, TDDate, 8-byte block, caller's storage, function */
    uint32_t type;      /* EXT_ code; in a conversion the type converted from */
    uint32_t storage;   /* EXS_ code */
    int32_t  xrefIndex; /* -1, or the variable's run in xrefList; a function's list in argTypes */
    uint32_t useCount;  /* symbols: how often the compiler met the name */
} ExprOperand;

/* Element of the symbol tree. `name` is borrowed. */
typedef struct ExprSymbol {
    const wchar_t* name;
    ExprOperand    operand;
} ExprSymbol;

/* Element of the instruction array: EOP_NOP pushes its operand; an operator's
   operand is where its result goes; EOP_END is all zero. */
typedef struct ExprInstr {
    uint32_t    opcode;
    ExprOperand operand;
} ExprInstr;

/* Element of xrefTree: one assignment to a variable, ordered by variable
   address, then sequence. */
typedef struct ExprXRefRecord {
    ExprOperand* variable;  /* the symbol's own operand */
    uint32_t     sequence;  /* xrefCounter when recorded */
    uint32_t     exprStart; /* actExpr when recorded */
} ExprXRefRecord;

/* The value of an EXT_BitField: bits 32 to 63 first, bits 0 to 31 second. */
typedef struct ExprBitField {
    uint32_t hi;
    uint32_t lo;
} ExprBitField;

/* A user function is called as fn(expr, userArg) on the evaluating thread.
   It pops its arguments with ExprPopArgument, last argument first, stops the
   run with ExprSetEvalErr, and returns its result by the result type it was
   defined with; it is registered through the generic ExprUserFn and called
   through the matching typed form:
     EXT_Char, EXT_Long, EXT_ULong  ExprIntFn       (EXT_Char keeps the low 16 bits)
     EXT_Double                     ExprDoubleFn
     EXT_BitField                   ExprBitFieldFn  (8 bytes by value)
     EXT_String                     ExprStringFn    (copied; the function keeps its object)
     EXT_Date                       ExprDateFn      (copied; the function keeps its object)
   A function defined with EXT_Void or a type above EXT_Date is not called:
   its EOP_PAR leaves the arguments on the stack and pushes itself, with no
   value behind it. Such a call may therefore only end a formula: ExprCompile
   refuses any operator, index, member, argument, assignment or conversion
   applied to its result with DISP_E_TYPEMISMATCH, at the token where it met
   that use, so that no operator ever runs on an operand without a value. */
typedef void (*ExprUserFn)(void);
typedef int32_t (*ExprIntFn)(ExprContext* expr, intptr_t userArg);
typedef double (*ExprDoubleFn)(ExprContext* expr, intptr_t userArg);
typedef ExprBitField (*ExprBitFieldFn)(ExprContext* expr, intptr_t userArg);
typedef TSString* (*ExprStringFn)(ExprContext* expr, intptr_t userArg);
typedef TDDate* (*ExprDateFn)(ExprContext* expr, intptr_t userArg);

/* A lent token stream: each takes (callbackContext, externalScanner). A null
   one is served by the object's own scanner. */
typedef int32_t (*ExprNextSymFn)(void* context, SymScanner* scanner); /* result ignored */
typedef int32_t (*ExprGetSymFn)(void* context, SymScanner* scanner);
typedef const wchar_t* (*ExprGetAlphaFn)(void* context, SymScanner* scanner);

struct ExprContext {
    uint8_t*       dataArena;     /* number constants and temporaries; grows by 1024 bytes */
    uint64_t       dataArenaSize;
    uint64_t       dataArenaUsed;
    BT*            symbols;       /* ExprSymbol */
    DA*            code;          /* ExprInstr */
    DA*            argTypes;      /* uint32_t, each function's list closed by 0 */
    uint32_t       curType;
    const wchar_t* errorText;     /* what the last compile error is about */
    uint32_t*      constFlag;
    ExprOperand*   lvalue;
    uint32_t       xrefOn;
    uint32_t       xrefCounter;
    BT*            xrefTree;      /* ExprXRefRecord */
    DA*            xrefList;      /* int32_t runs closed by -1 */
    int32_t*       stack;         /* value stack of instruction indexes */
    int32_t        stackDepth;
    int32_t        stackSize;
    uint32_t       actExpr;
    SymScanner     scanner;
    uint32_t       evalErr;
    void*          userPtr;
    wchar_t*       terminators;   /* owned copy, may be null */
    uint32_t       autoFetch;
    void*          callbackContext;
    SymScanner*    externalScanner;
    ExprNextSymFn  nextSymFn;
    ExprGetSymFn   getSymFn;
    ExprGetAlphaFn getAlphaFn;
};

/* Object. ExprInit gives 0 or E_OUTOFMEMORY; on failure it releases what it
   had made, so the object needs no ExprRelease. A terminators copy that
   can't be made is no failure: the object works without terminators. */
ZOR_API ZORStatus ExprInit(ExprContext* expr, uint32_t maxIdentLen, uint32_t bufferLen,
                           uint32_t ignoreCase, uint32_t mode, const wchar_t* terminators,
                           uint32_t autoFetch, ExprNextSymFn nextSymFn, ExprGetSymFn getSymFn,
                           ExprGetAlphaFn getAlphaFn, void* callbackContext,
                           SymScanner* externalScanner);
ZOR_API ZORStatus ExprRelease(ExprContext* expr);

/* Symbols. Each gives 0, TYPE_E_NAMECONFLICT when the name is taken by any
   kind of symbol (case-blind with ignoreCase), or E_OUTOFMEMORY. ExprDefineFn
   takes argCount EXT_ codes as further arguments. */
ZOR_API ZORStatus ExprDefineVar(ExprContext* expr, void* value, const wchar_t* name, uint32_t type);
ZOR_API ZORStatus ExprDefineConst(ExprContext* expr, const void* value, const wchar_t* name,
                                  uint32_t type);
ZOR_API ZORStatus ExprDefineFn(ExprContext* expr, ExprUserFn fn, const wchar_t* name,
                               uint32_t resultType, uint32_t argCount, ...);

/* Look-ups; on null errorText is set to `name`. ExprVarLookUp finds
   variables only. */
ZOR_API ExprOperand* ExprLookUp(ExprContext* expr, const wchar_t* name);
ZOR_API ExprOperand* ExprVarLookUp(ExprContext* expr, const wchar_t* name);

/* Walks all symbols in name order, constants and functions included. The
   result is the name, null at the end (then `iter` is null and `operand` is
   left alone). */
ZOR_API const wchar_t* ExprGetFirstVar(ExprContext* expr, ExprOperand* operand, void** iter);
ZOR_API const wchar_t* ExprGetNextVar(ExprContext* expr, ExprOperand* operand, void** iter);

/* Compiles one line onto the end of the array. `firstInstr` gets the start
   for ExprEvaluate, EXPR_EMPTY for a text without an expression. `wantedType`
   (0 for none) converts the result, forced. `isConst` (may be null) is 1 when
   no identifier occurred; `resultType` (may be null) the result's type, 0 on
   failure. On failure ExprGetColNo stands behind the failing token and
   ExprGetErrLen gives its length; errorText says what it is about. Every
   non-empty compile, failed or not, ends with an EOP_END. */
ZOR_API ZORStatus ExprCompile(ExprContext* expr, const wchar_t* text, uint32_t* firstInstr,
                              uint32_t wantedType, uint32_t* isConst, uint32_t* resultType);

/* Runs from `start` to its EOP_END (or the whole array for EXPR_RUN_ALL);
   a start at or beyond the array's end, or EXPR_EMPTY, runs nothing. A run
   leaves its result on the value stack, one entry per run: the caller pops
   it with ExprPopResult or the stack keeps growing. After a failure the
   stack keeps what was pending. When the stack can't grow, the run gives
   E_OUTOFMEMORY and the stack is left empty and usable. A start that is not
   the first instruction of an expression, whose operators would find too few
   operands or whose call would find no function on top, gives E_UNEXPECTED.
   The first run of a start index derives a linked form of its expression
   (one allocation; if it fails, the run goes on without) that later runs
   use; it changes nothing that a caller or a user function can see. It is
   dropped by ExprCompile, ExprXRef, ExprXRefOn and ExprRelease, and when the
   array's block or count or the arena's block changed. A caller who edits
   an instruction record by hand after its expression ran compiles next (an
   empty text will do) before the next run. */
ZOR_API ZORStatus ExprEvaluate(ExprContext* expr, uint32_t start, intptr_t userArg);

/* Operator answers where the value rules leave a choice:
   - EXT_Long -2147483648 / -1 wraps like every integer result: the quotient
     is -2147483648 and the remainder 0 (also for /= and %=), no failure.
   - An index on a number with no variable behind it ("(a+b)[i]", "5[i]",
     a function's result) has only that value's own slot: index 0 gives the
     value, any other index DISP_E_BADINDEX.
   - Assigning to one bit of a bit field ("b[3] = 1", "b[3] |= 1", "b[3]++")
     gives E_UNEXPECTED and leaves the field as it was: a bit has no address.
   - A conversion into the type it starts from is never compiled; run by hand
     it fails like a source type the conversion doesn't take: E_UNEXPECTED,
     into a string E_INVALID_DATA. */

/* Pop the top entry and give its value in place; the pointer is valid until
   a run passes that instruction again. ExprPopArgument also gives the
   instruction's type field (for a converted argument the type before
   conversion). Popping an empty stack gives null (and EXT_Void as the type)
   and changes nothing. */
ZOR_API void* ExprPopResult(ExprContext* expr);
ZOR_API void* ExprPopArgument(ExprContext* expr, uint32_t* type);

ZOR_API uint32_t ExprGetEvalErr(ExprContext* expr);
ZOR_API void     ExprSetEvalErr(ExprContext* expr, uint32_t code);

/* Cross-reference: record assignments while on, then ExprXRef links each
   variable to the earlier expressions that assign it, which a run then
   re-runs before reading it. ExprXRefOn also clears the links of the last
   ExprXRef (they would point into the new, empty list); on E_OUTOFMEMORY
   recording stays off until an ExprXRefOn succeeds. A re-run nests one run
   per link of a chain of dependencies; a re-run that would leave less than
   64 KiB of the thread's stack fails the run with EXPR_E_TOO_DEEP. */
ZOR_API ZORStatus ExprXRefOn(ExprContext* expr);
ZOR_API void      ExprXRefOff(ExprContext* expr);
ZOR_API ZORStatus ExprXRef(ExprContext* expr);

/* Accessors. */
ZOR_API uint32_t ExprGetActExpr(ExprContext* expr);
ZOR_API uint32_t ExprGetColNo(ExprContext* expr);
ZOR_API uint32_t ExprGetErrLen(ExprContext* expr);
ZOR_API void*    ExprGetUserPtr(ExprContext* expr);
ZOR_API void*    ExprSetUserPtr(ExprContext* expr, void* ptr);

#endif
