// The library's narrow code page set for a scope and put back after it.
#pragma once

#include <stdint.h>

#include "classes/encodings.h"

struct NarrowCodePage {
    explicit NarrowCodePage(uint32_t page) : old(zorlib::narrowCodePage) { zorlib::narrowCodePage = page; }
    ~NarrowCodePage() { zorlib::narrowCodePage = old; }
    NarrowCodePage(const NarrowCodePage&) = delete;
    uint32_t old;
};
