#include "module.h"

HMODULE g_zorModule;

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
        g_zorModule = module;
    return TRUE;
}
