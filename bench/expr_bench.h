// What the engine's benchmark files share.
#pragma once

#include "suite.h"
#include "zorbase.h"

// The compile-time table: lines of
//   compile <TAB> length <TAB> characters <TAB> us per compile
//   compile <TAB> symbols <TAB> count <TAB> us per definition <TAB> us per compile
void print_compile_table();
