// Reads the export and import tables of the built DLL, so that tests can
// check what the module really offers and what it depends on.
#pragma once

#include <set>
#include <string>
#include <utility>

#include <windows.h>

// Loads ZORBaseUx64.dll from the test's directory; null when it is missing.
HMODULE zor_load_dll();

std::set<std::string> dll_export_names(HMODULE module);
std::set<std::string> dll_import_modules(HMODULE module);

// Major and minor image version from the DLL's optional header.
std::pair<WORD, WORD> dll_image_version(HMODULE module);

// Names of `expected` that the DLL does not export, joined for a message.
std::string missing_exports(const std::set<std::string>& expected);

// An export of the DLL as a typed function pointer; null when it is missing.
template <class Fn>
Fn dll_proc(const char* name)
{
    return reinterpret_cast<Fn>(reinterpret_cast<void*>(GetProcAddress(zor_load_dll(), name)));
}
