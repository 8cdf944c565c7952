// Stream output of the string classes. <ostream> rather than <iostream>, so
// that the library gets no static initialiser.
#include <ostream>

#include "castr.h"
#include "cutf8str.h"
#include "cwstr.h"

namespace zorlib {

namespace {

std::ostream& quoted(std::ostream& out, const char* bytes, uint32_t n)
{
    out.put('"');
    out.write(bytes, std::streamsize(n));
    return out.put('"');
}

}

std::ostream& operator<<(std::ostream& out, const CAStr& text)
{
    return quoted(out, text.GetStr(), text.length);
}

std::ostream& operator<<(std::ostream& out, const CUtf8Str& text)
{
    return quoted(out, text.GetStr(), text.length);
}

std::ostream& operator<<(std::ostream& out, const CWStr& text)
{
    CAStr narrow(text);
    return quoted(out, narrow.GetStr(), narrow.length);
}

}
