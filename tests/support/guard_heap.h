// Puts the guard heap of the allocation seam (frame/zor_alloc.h) under the
// whole test program, and turns a fault on its pages, or any crash, into a
// report that names the test case and, inside a fuzz loop, the replay.
// One line in any source of the program switches it on before main:
//   static const bool guarded = guard_this_program();
#pragma once

bool guard_this_program();
