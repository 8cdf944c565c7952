// Every exported function that allocates, run with each of its allocations
// failing in turn: each row calls the function on fresh objects, checks the
// result that the headers promise for exhaustion and releases what it made.
#include <doctest/doctest.h>

#include <functional>
#include <string>

#include "alloc_check.h"
#include "private_key.h"
#include "temp_dir.h"
#include "zor_bt.h"
#include "zor_da.h"
#include "zor_dl.h"
#include "zor_expr.h"
#include "zor_file.h"
#include "zor_fm.h"
#include "zor_fsc.h"
#include "zor_ll.h"
#include "zor_mp.h"
#include "zor_reg.h"
#include "zor_sym.h"
#include "zor_td.h"
#include "zor_trace.h"
#include "zor_ts.h"

namespace {

struct Ts {
    TSString s;
    explicit Ts(const wchar_t* text = L"old") { TSSetStr(TSClear(&s), text); }
    ~Ts() { TSInit(&s); }
};

// A setter of the object: on exhaustion null and the object empty.
bool sets(TSString* result, Ts& ts)
{
    return result == &ts.s || (!result && TSEmpty(&ts.s));
}

// A writer into `dst`: the same, for the destination.
template <class Write>
bool writes(Write write)
{
    Ts src(L"  abcdef  "), dst;
    return sets(write(&dst.s, &src.s), dst);
}

// A function with a scratch block: on exhaustion null, and the object as it
// was when the scratch block failed, or empty when its own block did.
template <class Call>
bool keeps(Call call)
{
    Ts ts;
    const std::wstring before = TSGetStr(&ts.s);
    TSString* result = call(&ts.s);
    return result == &ts.s || (!result && (before == TSGetStr(&ts.s) || TSEmpty(&ts.s)));
}

// An edit in place: it always returns the object and, where the text could
// be set up, edits it.
template <class Edit>
bool edits(const wchar_t* text, Edit edit, const wchar_t* edited)
{
    Ts ts(text);
    const std::wstring before = TSGetStr(&ts.s);
    return edit(&ts.s) == &ts.s && (before.empty() || TSGetStr(&ts.s) == std::wstring(edited));
}

int compare_ints(const void* a, const void* b)
{
    return *static_cast<const int*>(a) - *static_cast<const int*>(b);
}

// An object that the Expr rows start from; it may not come into being.
struct Sheet {
    ExprContext e;
    int32_t     a = 1;
    bool        made, ok;
    Sheet() : made(ExprInit(&e, 64, 256, 0, 0, nullptr, 1, nullptr, nullptr, nullptr, nullptr, nullptr) == 0)
    {
        ok = made && ExprDefineVar(&e, &a, L"a", EXT_Long) == 0;
    }
    ~Sheet()
    {
        if (made)
            ExprRelease(&e);
    }
};

bool out_of_memory_or(ZORStatus status, ZORStatus success = ZOR_S_OK)
{
    return status == success || status == ZOR_E_OUTOFMEMORY;
}

const TDDate kDate = {2026, 3, 0, 7, 13, 45, 0, 0};
const int    kValue = 42;

struct Row {
    const char*           name;
    std::function<bool()> run;
};

// Runs each row with its 1st, 2nd, ... allocation failing until one run is
// clean; each run must keep the row's promise and leave no block behind.
template <size_t N>
void walk(const Row (&rows)[N])
{
    for (const Row& row : rows) {
        CAPTURE(std::string(row.name));
        NoLeak leak;
        long failures = 0;
        const long requests = fail_each_allocation([&] { failures += !row.run(); });
        CHECK(failures == 0);
        CHECK(requests > 0);
    }
}

const Row kRows[] = {
    {"TSNew", [] { TSString* t = TSNew(); return !t || (TSFree(t), true); }},
    {"TSClone", [] { TSString* t = TSClone(L"abc"); return !t || (TSFree(t), true); }},
    {"TSCloneN", [] { TSString* t = TSCloneN(L"abc", 2); return !t || (TSFree(t), true); }},
    {"TSCopy", [] { Ts t, u(L"copied"); return sets(TSCopy(&t.s, &u.s), t); }},
    {"TSSetStr", [] { Ts t; return sets(TSSetStr(&t.s, L"new text"), t); }},
    {"TSSetStrN", [] { Ts t; return sets(TSSetStrN(&t.s, L"new text", 3), t); }},
    {"TSSetLen", [] { Ts t; return sets(TSSetLen(&t.s, 10), t); }},
    {"TSFromCh", [] { Ts t; return sets(TSFromCh(&t.s, L'x'), t); }},
    {"TSCStr", [] { return keeps([](TSString* t) { return TSCStr(t, 1.5, L"%.2f"); }); }},
    {"TSStr", [] { Ts t; return sets(TSStr(&t.s, 1.5, 8, 2), t); }},
    {"TSAdd", [] { Ts t, u(L"more"); return sets(TSAdd(&t.s, &u.s), t); }},
    {"TSAddStr", [] { Ts t; return sets(TSAddStr(&t.s, L"more"), t); }},
    {"TSAddStrN", [] { Ts t; return sets(TSAddStrN(&t.s, L"more", 2), t); }},
    {"TSLeft", [] { return writes([](TSString* d, TSString* s) { return TSLeft(d, s, 4); }); }},
    {"TSRight", [] { return writes([](TSString* d, TSString* s) { return TSRight(d, s, 4); }); }},
    {"TSMid", [] { return writes([](TSString* d, TSString* s) { return TSMid(d, s, 2, 3); }); }},
    {"TSSubStr", [] { return writes([](TSString* d, TSString* s) { return TSSubStr(d, s, 2, 3); }); }},
    {"TSLTrim", [] { Ts t(L"  a "); return TSLTrim(&t.s) == &t.s; }},
    {"TSRTrim", [] { Ts t(L"  a "); return TSRTrim(&t.s) == &t.s; }},
    {"TSATrim", [] { Ts t(L"  a "); return TSATrim(&t.s) == &t.s; }},
    {"TSUpper", [] { return edits(L"old", TSUpper, L"OLD"); }},
    {"TSLower", [] { return edits(L"OLD", TSLower, L"old"); }},
    {"TSInvert", [] { Ts t; return sets(TSInvert(&t.s, L"abc"), t); }},
    {"TSRep", [] { return keeps([](TSString* t) { return TSRep(t, L"ab", 3); }); }},
    {"TSChrSubst", [] { Ts t(L"a,b"); return TSChrSubst(&t.s, L",", L";;") == &t.s; }},
    {"TSStrSubst", [] { Ts t(L"a,b"); return TSStrSubst(&t.s, L",", L";;") == &t.s; }},
    {"TSFromInt", [] { Ts t; return sets(TSFromInt(&t.s, -5), t); }},
    {"TSFromLong", [] { Ts t; return sets(TSFromLong(&t.s, -5), t); }},
    {"TSFromULong", [] { Ts t; return sets(TSFromULong(&t.s, 5), t); }},
    {"TSFromDouble", [] { Ts t; return sets(TSFromDouble(&t.s, 1.5), t); }},
    {"TSFromDoubleFmt", [] { Ts t; return sets(TSFromDoubleFmt(&t.s, 1.5, 3), t); }},
    {"TSFromDate", [] { Ts t; return sets(TSFromDate(&t.s, &kDate), t); }},
    {"DACreate", [] { DA* da = DACreate(4, 2); return !da || (DADestroy(da), true); }},
    {"DAAddElem, DASetElem, DAInsertElem", [] {
         DA* da = DACreate(4, 1);
         if (!da)
             return true;
         const bool added = DAAddElem(da, &kValue) || da->count == 0;
         const int32_t count = da->count;
         const bool set = DASetElem(da, 5, &kValue) || da->count == count;
         const int32_t before = da->count;
         const bool inserted = before == 0 || DAInsertElem(da, 0, &kValue) || da->count == before;
         DADestroy(da);
         return added && set && inserted;
     }},
    {"BTCreate, BTInsert", [] {
         BT* tree = BTCreate(compare_ints, sizeof(int));
         if (!tree)
             return true;
         const bool inserted = BTInsert(tree, &kValue) || BTCount(tree) == 0;
         BTDestroy(tree, nullptr);
         return inserted;
     }},
    {"DLCreateHeader, DLCreateElement", [] {
         DLHeader* header = DLCreateHeader(sizeof(int));
         if (!header)
             return true;
         if (DLElement* element = DLCreateElement(header, &kValue))
             DLInsertLastElement(header, element);
         DLRemoveHeader(header);
         return true;
     }},
    {"LLCreate, LLPushFront, LLPushBack", [] {
         LLHeader* list = LLCreate(sizeof(int));
         if (!list)
             return true;
         const bool front = LLPushFront(list, &kValue) || LLCount(list) == 0;
         const int32_t count = LLCount(list);
         const bool back = LLPushBack(list, &kValue) || LLCount(list) == count;
         LLDestroy(list);
         return front && back;
     }},
    {"MPCreate, MPAlloc", [] {
         MPPool* pool = MPCreate(64);
         if (!pool)
             return true;
         static const unsigned char big[200] = {};
         void* small = MPAlloc(pool, &kValue, sizeof kValue);
         const bool copied = !small || *static_cast<int*>(small) == kValue;
         void* large = MPAlloc(pool, big, sizeof big);
         MPDestroy(pool);
         return copied && (!large || small != large);
     }},
    {"SymInit, SymSetKeyword", [] {
         SymScanner sc;
         const ZORStatus status = SymInit(&sc, 32, 64, 0, 1);
         if (status != ZOR_S_OK)
             return status == ZOR_E_OUTOFMEMORY && !sc.alpha && !sc.keywords;
         const SymKeyword keyword = {L"kw", 7};
         const bool set = out_of_memory_or(SymSetKeyword(&sc, &keyword));
         SymRelease(&sc);
         return set;
     }},
    {"FScInit", [] {
         FScScanner fsc;
         const ZORStatus status = FScInit(&fsc, 40);
         FScRelease(&fsc);
         return out_of_memory_or(status);
     }},
    {"ExprInit, ExprDefineVar", [] { Sheet s; return true; }},
    {"ExprDefineConst, ExprDefineFn", [] {
         Sheet s;
         return !s.ok || (out_of_memory_or(ExprDefineConst(&s.e, &kValue, L"k", EXT_Long)) &&
                          out_of_memory_or(ExprDefineFn(&s.e, nullptr, L"f", EXT_Long, 1, EXT_Long)));
     }},
    {"ExprCompile, ExprEvaluate", [] {
         Sheet s;
         if (!s.ok)
             return true;
         uint32_t first = 0;
         const ZORStatus compiled = ExprCompile(&s.e, L"a = a + \"x\"[0] * 2.5", &first, 0, nullptr, nullptr);
         if (compiled != ZOR_S_OK)
             return compiled == ZOR_E_OUTOFMEMORY;
         const ZORStatus run = ExprEvaluate(&s.e, first, 0);
         if (run == ZOR_S_OK)
             ExprPopResult(&s.e);
         return out_of_memory_or(run);
     }},
    {"ExprXRefOn, ExprXRef", [] {
         Sheet s;
         if (!s.ok)
             return true;
         const ZORStatus on = ExprXRefOn(&s.e);
         uint32_t first = 0;
         const ZORStatus compiled = ExprCompile(&s.e, L"a = 2", &first, 0, nullptr, nullptr);
         const ZORStatus linked = ExprXRef(&s.e);
         return out_of_memory_or(on) && out_of_memory_or(compiled) && out_of_memory_or(linked);
     }},
    {"TDNew", [] { TDDate* d = TDNew(); return !d || (TDFree(d), true); }},
    {"FMFormatDouble, FMFormatStr", [] {
         wchar_t out[16] = {L'x'};
         int32_t complete = -1;
         const int32_t n = FMFormatDouble(nullptr, L"##.##", 5, 1.5, out, &complete);
         const bool doubled = n == 5 || (n == 0 && complete == 0 && out[0] == 0);
         const int32_t m = FMFormatStr(L"##.##", 5, L"1.5", out);
         return doubled && (m == 5 || (m == 0 && out[0] == 0));
     }},
};

}

TEST_CASE("every allocating export gives its documented result and leaks nothing, whichever allocation fails")
{
    walk(kRows);
}

// A trace object of its own writing today's file of `stem`, limited to 1 KiB.
struct Tracer {
    TraceObject obj;
    explicit Tracer(const std::wstring& stem)
    {
        memset(&obj, 0, sizeof obj);
        for (auto& entry : obj.aFacility)
            entry = 1;
        InitializeCriticalSection(&obj.cs);
        SYSTEMTIME now;
        GetLocalTime(&now);
        wchar_t day[16];
        swprintf(day, 16, L"%04u%02u%02u", now.wYear, now.wMonth, now.wDay);
        wcscpy(obj.szBaseName, stem.c_str());
        wcscpy(obj.szFile, (stem + day + L".log").c_str());
        wcscpy(obj.szLastFile, obj.szFile);
        obj.dwLevelMask = 0x1F;
        obj.nSizeKB = 1;
        obj.bFile = 1;
    }
    ~Tracer() { DeleteCriticalSection(&obj.cs); }
    Tracer(const Tracer&) = delete;
    Tracer& operator=(const Tracer&) = delete;
};

// The same for the families that work on files, keys and the spooler, on a
// private folder and key made once for all their rows.
TEST_CASE("the exports on files and keys and the spooler give their documented results under exhaustion")
{
    // Current too: a trim puts its temporary file there.
    TempDir dir(true);
    PrivateKey key;
    key.set_text(L"text", L"value");
    key.set_dword(L"number", 7);
    const std::wstring lines = dir.file(L"lines.txt"), written = dir.file(L"written.txt");
    const std::wstring exported = dir.file(L"export.reg"), imported = dir.file(L"import.reg");
    const std::wstring keyPath = L"HKEY_CURRENT_USER\\" + key.path();
    write_bytes(lines, "first\r\nsecond\r\n");
    write_bytes(dir.file(L"REGSVR32.EXE"), "no program");
    write_bytes(imported, "REGEDIT4\r\n\r\n[" + std::string(keyPath.begin(), keyPath.end()) +
                              "\\sub]\r\n\"name\"=\"text\"\r\n");
    const Row rows[] = {
        {"ZORFileOpen, ZORFileGetLine", [&] {
             ZORFileRec rec;
             const ZORStatus opened = ZORFileOpen(&rec, 64, lines.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                  OPEN_EXISTING, 0, nullptr, ZOR_FILE_NARROW);
             wchar_t line[32] = {};
             ZORStatus got = ZORFileGetLine(&rec, line, 32);
             // A line whose working area failed is not lost: the next call has it.
             if (opened == ZOR_S_OK && got == ZOR_E_OUTOFMEMORY)
                 got = ZORFileGetLine(&rec, line, 32);
             ZORFileClose(&rec);
             return opened == ZOR_E_OUTOFMEMORY ? got == ZOR_E_OUTOFMEMORY
                                                : opened == ZOR_S_OK && got == ZOR_S_OK && wcscmp(line, L"first") == 0;
         }},
        {"ZORFileWriteLine", [&] {
             ZORFileRec rec;
             const ZORStatus opened = ZORFileOpen(&rec, 64, written.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                  0, nullptr, ZOR_FILE_NARROW);
             const ZORStatus wrote = ZORFileWriteLine(&rec, L"abc", 3);
             ZORFileClose(&rec);
             const std::string bytes = read_bytes(written);
             return out_of_memory_or(opened) &&
                    (wrote == ZOR_S_OK ? bytes == "abc" : wrote == ZOR_E_OUTOFMEMORY && bytes.empty());
         }},
        {"ZOR_RegExport", [&] {
             const ZORRegExportArgs args = {0, 1, 0, keyPath.c_str(), exported.c_str()};
             return out_of_memory_or(ZOR_RegExport(&args));
         }},
        {"ZOR_RegImport", [&] {
             const std::vector<std::wstring> files = {imported};
             return out_of_memory_or(ZOR_RegImport(&files));
         }},
        {"Trace past the size limit", [&] {
             // Today's file over its 1 KiB limit: the check after the line
             // trims it, or gives up the file sink when the trim can't run.
             Tracer t(dir.file(L"big"));
             write_bytes(t.obj.szFile, std::string(3000, 'x'));
             Trace(&t.obj, 5, L"line", nullptr);
             const size_t size = read_bytes(t.obj.szFile).size();
             return t.obj.bFile == 1 ? size < 1100 : t.obj.dwLevelMask == 0;
         }},
        {"TraceHex to the event log", [&] {
             // A line whose insertion string can't be copied is left out of
             // the event record; the dump itself goes on.
             Tracer t(dir.file(L"dump"));
             t.obj.bEventLog = 1;
             wcscpy(t.obj.szEventSource, L"ZORExhaustion");
             static const unsigned char bytes[100] = {1, 2, 3};
             TraceHex(&t.obj, 5, L"bytes", bytes, sizeof bytes);
             return read_bytes(t.obj.szFile).find("HEX Dump: bytes (100 Bytes)") != std::string::npos;
         }},
        {"ZOR_OCXRegister", [&] {
             // The tool found first in the current folder is no program, so
             // nothing is started: the command line's block is all it takes.
             const ZOROCXRegisterArgs args = {0, 1, {L"a.ocx"}};
             const ZORStatus status = ZOR_OCXRegister(&args);
             return status == ZOR_E_OUTOFMEMORY || status == ZOR_STATUS_FROM_WIN32(ERROR_BAD_EXE_FORMAT);
         }},
        {"GetLocalPorts, GetNextPortInfo", [] {
             const int32_t taken = GetLocalPorts();
             wchar_t name[64];
             for (int steps = 0; GetCurrentPortName(name, 64) && steps < 1000; ++steps)
                 GetNextPortInfo();
             return taken == 0 || taken == 1;
         }},
    };
    walk(rows);
}
