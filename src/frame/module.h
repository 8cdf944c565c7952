// The module handle, written once by the module entry; it tells the message
// functions in whose resources the catalogue lies.
#pragma once

#include <windows.h>

extern HMODULE g_zorModule;
