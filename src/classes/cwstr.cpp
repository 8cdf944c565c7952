#include "cwstr.h"

#include "encodings.h"
#include "text_ops_impl.h"

namespace zorlib {

template class detail::TextOps<CWStr, wchar_t>;

CWStr& CWStr::operator=(const wchar_t* text)
{
    Assign(text, -1);
    return *this;
}

CWStr& CWStr::operator=(wchar_t unit)
{
    Assign(&unit, 1);
    return *this;
}

CWStr& CWStr::operator=(const char* narrow)
{
    return convert_from(narrow, -1, 1, 1, false, AnsiToWide);
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
    if (!text || n == 0 || (n < 0 && !*text))
        clear(false);
    else
        Assign(text, n);
    return *this;
}

wchar_t CWStr::GetCharAt(int i) const
{
    return i >= 0 && uint32_t(i) < length ? buffer[i] : 0;
}

}
