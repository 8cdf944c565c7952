// What the registry text files share between export and import: key paths
// of the form root name, backslash, subkey; the fixed name areas; file names
// made full; failures of system calls in status form.
#pragma once

#include <stddef.h>

#include "zor_reg.h"

namespace zor_reg {

// A key's full path, which is also its section name (255 units and the
// terminator). Longer paths are refused, never cut.
constexpr size_t kPathUnits = 256;
// One subkey name as the export enumerates it.
constexpr size_t kSubkeyNameUnits = 128;
// A file's full name.
constexpr size_t kFileNameUnits = 264;

struct KeyPath {
    HKEY root;
    const wchar_t* rootName; // as the caller spelled it, not terminated
    int rootLen;
    const wchar_t* subkey;   // behind the first backslash, to the end
};

// False for a path without a backslash or with an unknown root.
bool split_key_path(const wchar_t* path, KeyPath* out);

// `parent`\`name` into `path`; a backslash that ends the parent (a root
// written alone) is not doubled. False when it does not fit.
bool join_path(wchar_t (&path)[kPathUnits], const wchar_t* parent, int parentLen,
               const wchar_t* name);

// The full name of `name`: the profile functions would look for a bare
// name in the Windows directory. False when it does not fit.
bool full_file_name(const wchar_t* name, wchar_t (&area)[kFileNameUnits]);

// GetLastError in status form; a failure that left no error code is still
// a failure.
ZORStatus last_error_status();

inline ZORStatus status_of(LONG rc)
{
    return ZOR_STATUS_FROM_WIN32(rc);
}

}
