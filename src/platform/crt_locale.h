//===- platform/crt_locale.h - The C runtime's locale name ------*- C++ -*-===//
//
// Provides: the runtime-locale name query (what setlocale(LC_CTYPE, NULL)
// reports, as the host set it). Functions with Microsoft C-runtime contracts
// that depend on whether the runtime locale is still the unchanged "C" locale
// ask here.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CRT_LOCALE_H
#define QXUTIL_PLATFORM_CRT_LOCALE_H

#include <cstddef>

namespace qx::platform {

/// CrtLocaleName - copies the runtime's LC_CTYPE locale name into `buf`
/// (at most `size` - 1 bytes and a terminator) and returns its full length.
/// "C" until the host calls setlocale.
size_t CrtLocaleName(char* buf, size_t size);

/// CrtLocaleIsC - true while the runtime's LC_CTYPE locale is the unchanged
/// "C" locale (the name is exactly "C" or "POSIX").
bool CrtLocaleIsC();

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_CRT_LOCALE_H
