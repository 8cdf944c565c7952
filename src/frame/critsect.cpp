#include "zor_frame.h"

#include <new>

ZORCritSect::ZORCritSect() { InitializeCriticalSection(&m_section); }
ZORCritSect::~ZORCritSect() { DeleteCriticalSection(&m_section); }
void ZORCritSect::Lock() { EnterCriticalSection(&m_section); }
void ZORCritSect::UnLock() { LeaveCriticalSection(&m_section); }

ZORCritSect& ZORCritSect::operator=(const ZORCritSect& other)
{
    m_section = other.m_section;
    return *this;
}

// Entry points under the names an MSVC-built caller links against. Their
// constructor returns `this`, which a GCC constructor does not, so the
// constructor needs a shim; the other members share their ABI and are aliased
// in the module definition file.
extern "C" ZORCritSect* zor_critsect_construct(ZORCritSect* self)
{
    return new (self) ZORCritSect;
}
