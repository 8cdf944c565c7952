// Conversion between wide text, narrow text in the narrow code page and
// UTF-8, the one path through which the string classes change encoding.
// Wide text is the hub: narrow text and UTF-8 never convert directly.
#pragma once

#include <stdint.h>

namespace zorlib {

// The code page of all narrow text; 0 is the system's ANSI code page. Read
// without a lock: set it before other threads convert.
extern uint32_t narrowCodePage;

constexpr uint32_t kUtf8CodePage = 65001;

// Each routine converts `srcLen` source elements (-1: up to and including the
// terminator) into at most `room` destination elements, and returns the
// elements written with the terminator counted, or 0 on failure. A null
// destination measures. Behind output from an unterminated source a
// terminator is added when there is room for it; when the output fills the
// room exactly, the terminator replaces its last element. Room 0 with a
// destination gives 0. Characters the target cannot hold and invalid input
// come out as the platform converts them with no flags and no default
// character.
int AnsiToWide(wchar_t* dst, const char* src, int dstUnits, int srcBytes);
int Utf8ToWide(wchar_t* dst, const char* src, int dstUnits, int srcBytes);
int WideToAnsi(char* dst, const wchar_t* src, int dstBytes, int srcUnits);
int WideToUtf8(char* dst, const wchar_t* src, int dstBytes, int srcUnits);

// The narrow code page that suits a system with the given ANSI code page: a
// system whose ANSI code page is UTF-8 gets single-byte Western text (1252),
// any other keeps its own (0).
uint32_t NarrowCodePageFor(uint32_t ansiCodePage);

// Sets `narrowCodePage` from the system's ANSI code page, on its first call
// only. The library's start-up does not call it, so that loading the library
// changes no process-wide state; a caller who wants single-byte narrow text
// on a UTF-8 system calls it once before other threads use the classes.
void ChooseNarrowCodePage();

}
