// The workbench's user functions, registered through ExprDefineFn so that
// sheets show the callback interface at work: today(), days(n), months(n),
// round(x, places), len(s), picture(x, "picture").
#pragma once

#include <map>
#include <string>

#include "zorbase.h"

// What the string and date functions hand back: the engine copies the value
// out, so one object per kind serves every call. Passed as the run's userArg.
struct CallResults {
    TSString text;
    TDDate date;
};

// Registers the functions, noting each one's address and name in `names`.
// Gives the first failing status, 0 when all are defined.
ZORStatus define_functions(ExprContext* expr, std::map<const void*, std::wstring>& names);
