// Test helpers of the TS family.
#pragma once

#include <doctest/doctest.h>

#include <malloc.h>

#include <string>

#include "wide_text.h"
#include "zor_ts.h"

// A TSString in the test's storage, released at scope end.
struct Local {
    TSString s;
    Local() { TSClear(&s); }
    explicit Local(const wchar_t* text) { TSSetStr(TSClear(&s), text); }
    Local(const wchar_t* text, int32_t n) { TSSetStrN(TSClear(&s), text, n); }
    ~Local() { TSInit(&s); }
    Local(const Local&) = delete;
    Local& operator=(const Local&) = delete;
    TSString* operator&() { return &s; }
    std::wstring text() const { return std::wstring(TSGetStr(&s), size_t(TSGetLen(&s))); }
};

// The invariants that hold between any two calls: no block when empty, else
// a terminated block of exactly `size` units.
inline void check_shape(const TSString* ts)
{
    CHECK((ts->size == 0) == (ts->data == nullptr));
    if (ts->size)
        CHECK((ts->size > 1 && ts->data[ts->size - 1] == 0 &&
               _msize(ts->data) == size_t(ts->size) * sizeof(wchar_t)));
}
