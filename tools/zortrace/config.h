// The trace's configuration key, read exactly as TraceInit reads it, and
// written one checked value at a time.
#pragma once

#include <string>
#include <vector>

// Prints what the trace would do with HKEY_LOCAL_MACHINE\`key` when the
// application passes `fileName` (empty: none). 0, or 1 when the key can't
// be opened.
int show_config(const std::wstring& key, const std::wstring& fileName);

// Writes each NAME=VALUE with the type that TraceInit reads; nothing is
// written when one of them is refused. 0, 1 when the registry refused, 2
// for a value that the trace can't take.
int set_config(const std::wstring& key, const std::vector<std::wstring>& sets);

// The size limit in bytes that the key gives, 0 for none; the default
// when the key or value is missing.
long long configured_limit(const std::wstring& key);
