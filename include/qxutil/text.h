//===- qxutil/text.h - Text: character sets and wide strings ----*- C++ -*-===//
//
// Wide strings are NUL-terminated runs of 16-bit code units held in wchar_t.
// A buffer's capacity is given in units and counts the terminator.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TEXT_H
#define QXUTIL_TEXT_H

#include "qxutil/frame.h"

// ---- Wide-string functions -------------------------------------------------

/// strcpyn - copies at most n - 1 units of `src` into `dst`, fills the rest
/// of the n units with zeros and returns `dst`; n = 0 writes nothing.
/// strcpyn(d, L"abc", 3) => "ab".
wchar_t* strcpyn(wchar_t* dst, const wchar_t* src, unsigned int n);

#endif // QXUTIL_TEXT_H
