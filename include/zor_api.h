/* Export and import decoration of the flat interface. Every public header
   includes this one; it is the only place that knows how a symbol crosses
   the DLL boundary. */
#ifndef ZOR_API_H
#define ZOR_API_H

#include <stdint.h>
#include <stddef.h>
#include <wchar.h>

#if defined(ZORBASE_BUILD)
#  define ZOR_EXPORT __declspec(dllexport)
#elif defined(ZORBASE_STATIC)
#  define ZOR_EXPORT
#else
#  define ZOR_EXPORT __declspec(dllimport)
#endif

#ifdef __cplusplus
#  define ZOR_API extern "C" ZOR_EXPORT
#  define ZOR_DATA extern "C" ZOR_EXPORT
#else
#  define ZOR_API extern ZOR_EXPORT
#  define ZOR_DATA extern ZOR_EXPORT
#endif

/* Status of the families that report by code: HRESULT layout, 0 is success. */
typedef uint32_t ZORStatus;

#endif
