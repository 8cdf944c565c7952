/* Registry work: thin wrappers over the platform's registry calls.

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

#endif
