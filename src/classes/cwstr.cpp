#include "cwstr.h"

#include "castr.h"
#include "cutf8str.h"
#include "encodings.h"
#include "text_ops_impl.h"

namespace zorlib {

template class detail::TextOps<CWStr, wchar_t, detail::SizedBlock<wchar_t>>;

CWStr& CWStr::operator=(const char* narrow)
{
    return convert_from(narrow, -1, 1, 1, false, AnsiToWide);
}

CWStr& CWStr::operator=(const CAStr& narrow)
{
    return FromAnsi(narrow.GetStr(), int(narrow.length));
}

CWStr& CWStr::operator=(const CUtf8Str& utf8)
{
    return FromUtf8(utf8.GetStr(), int(utf8.length));
}

CWStr& CWStr::FromAnsi(const char* narrow, int n)
{
    return convert_from(narrow, n, 0, 1, false, AnsiToWide);
}

CWStr& CWStr::FromUtf8(const char* utf8, int n)
{
    return convert_from(utf8, n, 0, 1, false, Utf8ToWide);
}

CWStr& CWStr::FromWide(const wchar_t* text, int n)
{
    return set_counted(text, n);
}

wchar_t CWStr::GetCharAt(int i) const
{
    return i >= 0 && uint32_t(i) < length ? buffer[i] : 0;
}

}
