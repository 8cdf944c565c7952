/* Registry work: thin wrappers over the platform's registry calls, keys
   exported to and imported from text files, component registration, update
   files, and the local print ports.

   The wrappers keep no state and return the platform's registry code as it
   comes (0 for success, e.g. 2 for a missing key or value, 234 for data
   that does not fit, 259 past the last item), not a ZORStatus. Text is wide;
   text lengths count units, data lengths bytes. */
#ifndef ZOR_REG_H
#define ZOR_REG_H

#include "zor_api.h"
#include "zor_status.h"

#ifndef _WINDOWS_
#include <windows.h>
#endif

/* Options 0. */
ZOR_API int32_t OpenRegKey(HKEY key, const wchar_t* subKey, uint32_t access, HKEY* result);
/* Empty class, options 0, no security attributes; whether the key was made or
   found is not told. */
ZOR_API int32_t CreateRegKey(HKEY key, const wchar_t* subKey, uint32_t access, HKEY* result);
ZOR_API int32_t CloseRegKey(HKEY key);
/* One key without its subkeys: a key that has subkeys is refused by the
   platform (5) and stays as it is. */
ZOR_API int32_t DeleteRegKey(HKEY key, const wchar_t* subKey);

/* `*nameLen`: units of `name` on entry, units of the name on success, and
   name[*nameLen] is then 0. */
ZOR_API int32_t EnumRegKey(HKEY key, uint32_t index, wchar_t* name, uint32_t* nameLen);
/* As EnumRegKey for the name; `*dataLen` bytes of `data` on entry, bytes
   stored on success, and data[*dataLen] is then a zero byte: `data` must
   have one byte beyond the size given. `type`, `data` and `dataLen` may be
   null as the platform allows. */
ZOR_API int32_t EnumRegValue(HKEY key, uint32_t index, wchar_t* name, uint32_t* nameLen,
                             uint32_t* type, uint8_t* data, uint32_t* dataLen);

/* The three number readers are one routine. Up to 4 stored bytes, least
   significant first, of whatever type, make `*value`; the number comes
   through unchanged (a flag of 5 stays 5). Fewer than 4 stored bytes leave
   the missing high bytes 0 (a text "A" reads as 65). On any failure, more
   than 4 stored bytes among them, `*value` is `defaultValue` and the
   platform's code is returned, so a caller can tell a stored value from the
   default. */
ZOR_API int32_t QueryRegEntryBool(HKEY key, const wchar_t* name, uint32_t* value,
                                  uint32_t defaultValue);
ZOR_API int32_t QueryRegEntryDWord(HKEY key, const wchar_t* name, uint32_t* value,
                                   uint32_t defaultValue);
ZOR_API int32_t QueryRegEntryLong(HKEY key, const wchar_t* name, uint32_t* value,
                                  uint32_t defaultValue);

/* `*dataLen`: units of `data` on entry, terminator included. On success the
   stored text, whatever its type, and `*dataLen` its units with the
   terminator. A stored text without a terminator gets one in the next unit
   (counted in `*dataLen`); when that unit is beyond the buffer the call
   fails with 234 like a text too long. On any failure `data` receives
   `defaultValue`, whose length is not tested against the buffer, and
   `*dataLen` its units with the terminator; the platform's code is
   returned. */
ZOR_API int32_t QueryRegEntryString(HKEY key, const wchar_t* name, wchar_t* data,
                                    uint32_t* dataLen, const wchar_t* defaultValue);

/* Registry text files. A file opens with the head line "REGEDIT4", then
   holds one section a key that has values, named by the key's full path
   (root name as written, backslash, subkeys), and one entry a value:
   "name"="text" for texts and expandable texts (read back as texts), or
   "name"=digits for 32-bit numbers. Other types and values without data are
   not written. Nothing is escaped: a quote inside a text survives the round
   trip, an equals sign in a name does not. The body is read and written by
   the platform's profile functions, which store text in the ANSI code page.

   Key paths: a root name (HKEY_CLASSES_ROOT, HKEY_CURRENT_USER,
   HKEY_LOCAL_MACHINE, HKEY_USERS, HKEY_CURRENT_CONFIG,
   HKEY_PERFORMANCE_DATA, any case), a backslash, the subkey; a root alone is
   written with a trailing backslash. A key's full path may have 255 units,
   a subkey name met on the way down 127, a value name 255, a file's full
   name 263; the calls refuse longer names as described below, and never cut
   them. File names are made full paths before use.

   Both calls return 0, ZOR_E_INVALIDARG, ZOR_E_OUTOFMEMORY or the system
   error in status form (ZOR_STATUS_FROM_WIN32). Neither is atomic: what
   was written before a failure stays. */

/* The export's arguments, in this field order. */
typedef struct ZORRegExportArgs {
    int32_t        bAppend;    /* 0: the file is made anew; else it is added to */
    int32_t        bRecursive; /* not 0: subkeys too */
    int32_t        bNoHeader;  /* not 0: no head line */
    const wchar_t* pszKey;     /* full key path, root name first */
    const wchar_t* pszFile;
} ZORRegExportArgs;

/* Writes the key's values, and with bRecursive those of its subkeys, in the
   platform's order. ZOR_E_INVALIDARG without touching the file: a path
   without backslash, an unknown root, a file name too long. The file is then
   made (or opened, with bAppend) and gets the head line at its start unless
   bNoHeader. With bAppend the head line is only written into an empty file;
   a file that begins with "REGEDIT4" keeps its own, and any other non-empty
   file is refused with ZOR_E_INVALID_DATA and keeps every byte. A value of
   more than 512 bytes or a name of more than 255 units ends its key's values
   quietly (status 0) while the subkeys go on; a key whose full path passes
   255 units ends the export with ZOR_E_INVALIDARG, a subkey name of more
   than 127 units with 0x800700EA. The first failure ends the walk. */
ZOR_API ZORStatus ZOR_RegExport(const ZORRegExportArgs* args);

#ifdef __cplusplus
#include <string>
#include <vector>
/* Imports the files in order; the first failure ends the list, an empty list
   gives 0. A missing file is a failure (0x80070002). Sections in file order:
   each key is created with KEY_WRITE, also for a section without entries;
   a section name of more than 255 units or with an unknown root gives
   ZOR_E_INVALIDARG. An entry "name"="text" sets a text, the text ending at
   the last quote; a bare value is read as a 64-bit integer of which the low
   32 bits make a number. An entry without equals sign, or a value with one
   quote alone: ZOR_E_INVALIDARG. The head line is no section and is passed
   over.
   The argument is a standard library object: a caller must be built with
   this build's compiler and standard library (mingw-w64 g++ and its
   libstdc++), or the layouts will not match. */
ZOR_API ZORStatus ZOR_RegImport(const std::vector<std::wstring>* files);

/* The registration's arguments, in this field order; C++ callers only, as
   for ZOR_RegImport. */
typedef struct ZOROCXRegisterArgs {
    int32_t                   bUnregister; /* not 0: " /u" */
    int32_t                   bSilent;     /* not 0: " /s" */
    std::vector<std::wstring> files;
} ZOROCXRegisterArgs;

/* Starts "REGSVR32.EXE [/u] [/s] file" for each file in order, the name
   unquoted (a blank in it splits it in two arguments), the tool found on
   the platform's search path (the program's directory, the current one,
   then the system's). It does not wait: 0 says only that every tool could
   be started, several may run side by side, and their exit codes are not
   seen. The first start that fails ends the list with its system error in
   status form; ZOR_E_OUTOFMEMORY when no command line could be made. */
ZOR_API ZORStatus ZOR_OCXRegister(const ZOROCXRegisterArgs* args);
#endif

/* Sets the text `value` (null: an empty text) under the existing key
   HKEY_LOCAL_MACHINE\`subKey`, opened with KEY_WRITE. Returns the
   platform's code: that of the opening, which does not create the key, or
   that of the write. */
ZOR_API int32_t UpdateRegistry(const wchar_t* subKey, const wchar_t* name, const wchar_t* value);

/* Applies an update file, read as text line by line:
     a line beginning with "REGEDIT" (exact case), or an empty one: passed over;
     [root\SOFTWARE\path]: creates HKEY_LOCAL_MACHINE\SOFTWARE\path and
       makes SOFTWARE\path the current key; the root is not looked at, so
       every key lands under HKEY_LOCAL_MACHINE;
     "name"="text": UpdateRegistry on the current key.
   The last unit of a line is taken for its line feed, also on a last line
   without one, and the first and last units of name and text for their
   quotes. Returns 0 at the end of the file, and also when the file can't be
   opened; otherwise the code of the first failing registry call, with the
   earlier writes kept. A line of another shape ends the walk with
   ERROR_INVALID_DATA (13), earlier writes kept: a key line with fewer than
   two backslashes or a path of more than 255 units, a value line without
   '=', with a name side (quotes included) of 100 units or more or of fewer
   than 2, with a text side of fewer than 2 units, or ahead of the first key
   line, and a line of 1000 units or more with its line feed. */
ZOR_API int32_t UpdateRegistryWithFile(const wchar_t* fileName);

/* The local print ports, one walk per process at a time (no lock).
   GetLocalPorts takes a snapshot from the spooler: 1, or 0 when it can't;
   a snapshot taken during a walk replaces the old one. GetNextPortInfo steps
   past the record at the cursor: 1 for each of n records, then 0 for good;
   the last step releases the snapshot, and so does a snapshot without
   records at once.
   GetCurrentPortName copies the name of the record at the cursor (the first
   record after GetLocalPorts, the next after each step) into `name` and
   returns its units with the terminator; 0 and an empty text when the
   cursor has no record. When the name needs more than `nameLen` units it
   returns that number and writes an empty text; `nameLen` 0 writes nothing.
       for (GetLocalPorts(); GetCurrentPortName(name, 64); GetNextPortInfo()) */
ZOR_API int32_t  GetLocalPorts(void);
ZOR_API int32_t  GetNextPortInfo(void);
ZOR_API uint32_t GetCurrentPortName(wchar_t* name, uint32_t nameLen);

#endif
