//===- platform/crt_wprintf.h - Microsoft wide formatting -------*- C++ -*-===//
//
// Provides: _vswprintf with the Microsoft runtime's reading of a wide format:
// "%s" and "%c" take a wide string and a wide character, "%S" and "%C" the
// narrow ones, "h" asks for narrow and "l" or "w" for wide whatever the
// letter, and "I64"/"I32" size a number as 64 or 32 bits. Everything else is
// the C library's vswprintf.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CRT_WPRINTF_H
#define QXUTIL_PLATFORM_CRT_WPRINTF_H

#include <cstdarg>
#include <cstddef>

namespace qx::crt {

/// _vswprintf - formats `format` with `args` into `out` (room for `count`
/// units, terminator included) and returns the units written before the
/// terminator. -1 when the result does not fit (what was written is then
/// cut and terminated), for a null pointer, a zero count or a format this
/// library does not take (a format longer than 4,095 units).
int _vswprintf(wchar_t* out, size_t count, const wchar_t* format, va_list args);

/// TranslateFormat - the format in the C library's reading, into `out` of
/// `room` units; false when it does not fit.
bool TranslateFormat(const wchar_t* format, wchar_t* out, size_t room);

} // namespace qx::crt

#endif // QXUTIL_PLATFORM_CRT_WPRINTF_H
