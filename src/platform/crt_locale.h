//===- platform/crt_locale.h - The C runtime's locale name ------*- C++ -*-===//
//
// Provides: the runtime-locale queries (what setlocale(LC_CTYPE, NULL) and
// setlocale(LC_NUMERIC, NULL) report, as the host set them, and the
// numeric locale's decimal point). Functions with Microsoft C-runtime
// contracts that depend on the runtime locale ask here, and only here: the
// answers are process-wide and a concurrent setlocale may overwrite them,
// so every read is made under one lock and copied out. A name is the "C"
// locale when it is "C" or "POSIX" (or cannot be read).
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

/// CrtNumericLocaleIsC - true while the runtime's LC_NUMERIC locale is the
/// "C" locale by the same rule.
bool CrtNumericLocaleIsC();

/// CrtDecimalPoint - the runtime numeric locale's decimal point (localeconv),
/// one wide character decoded from UTF-8; '.' when the locale gives none.
wchar_t CrtDecimalPoint();

/// SetThreadNumericLocaleOverride - a test seam: until cleared (null name),
/// the calling thread sees `name` as the LC_NUMERIC locale name and
/// `decimalPoint` as the runtime decimal point, so that the behaviour under
/// a runtime locale that this machine does not have installed can be
/// exercised. Only this thread is affected.
void SetThreadNumericLocaleOverride(const char* name, wchar_t decimalPoint);

/// IsCLocaleName - the rule above: null, "C" or "POSIX".
bool IsCLocaleName(const char* name);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_CRT_LOCALE_H
