// The decimal point and group separator texts that a picture's point and
// separator positions print.
#pragma once

#include <stdint.h>

namespace zor_fm {

struct MarkText {
    static constexpr int32_t kCapacity = 32;
    wchar_t text[kCapacity];
    int32_t len;
};

// Fetched at the first point or separator of a call and kept for the rest of
// it, so that one field never mixes two locales and a picture without either
// costs no locale lookup.
class LocaleMarks {
public:
    const MarkText& point() { return fetched().m_point; }
    const MarkText& separator() { return fetched().m_separator; }

private:
    LocaleMarks& fetched();

    bool m_fetched = false;
    MarkText m_point;
    MarkText m_separator;
};

}
