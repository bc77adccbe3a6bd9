//===- platform/utf8.h - Wide text to and from the kernel's UTF-8 -*- C++ -*-===//
//
// Provides: the conversion of the library's wide text (paths, module and
// symbol names) into the UTF-8 that Linux calls take, and back.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_UTF8_H
#define QXUTIL_PLATFORM_UTF8_H

#include <string>

namespace qx::platform {

/// WideToUtf8 - encodes `text` (null reads as empty). Units that are not
/// Unicode scalar values (lone surrogates, values above 0x10FFFF) become
/// U+FFFD.
std::string WideToUtf8(const wchar_t* text);

/// Utf8ToWide - decodes `text` (null reads as empty); malformed sequences
/// become U+FFFD, one per offending byte.
std::wstring Utf8ToWide(const char* text);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_UTF8_H
