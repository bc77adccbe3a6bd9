//===- platform/crt_number.h - Microsoft C-runtime number calls -*- C++ -*-===//
//
// Provides: wcstol, wcstoul, _wcstoi64, _wcstoui64, wcstod and the
// "%*.*e/f/g" conversions of swprintf, with the Microsoft runtime's
// contracts. The runtime's LC_NUMERIC locale name and decimal point, on
// which they depend, are read in platform/crt_locale.h (included here).
//
// The integer parsers have Windows' widths: `long` and `unsigned long` are
// 32 bits there, so wcstol saturates at 2147483647 / -2147483648 and wcstoul
// at 4294967295 (with errno ERANGE) although `long` is 64 bits here; the
// 64-bit parsers saturate the same way. They skip leading white space
// (iswspace of the runtime), take one sign, the "0x" prefix for radix 16
// and 0, and read the digits of the runtime's digit scripts (ASCII, Arabic-
// Indic, ..., fullwidth) and the ASCII letters. When no digit is read the
// end pointer is the start of the text (even after "0x") and the result 0.
// A bad radix or a null text returns 0 with errno EINVAL.
//
// wcstod is correctly rounded and gives the same value, end and errno as
// glibc's wcstod in the "C" locale (hexadecimal, "inf", "nan" spellings
// included), except that the decimal point is the runtime locale's. Plain
// decimal text takes a fast path (an exact product of at most 2^53 and a
// power of ten up to 10^22, or std::from_chars); anything else, and any
// result near the overflow or underflow bounds, goes to glibc.
//
// These names collide with glibc's, whose contracts differ, so they live in
// qx::crt and are always called qualified.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CRT_NUMBER_H
#define QXUTIL_PLATFORM_CRT_NUMBER_H

#include "platform/crt_locale.h"

#include <cstddef>
#include <cstdint>

namespace qx::crt {

/// wcstol - a signed 32-bit value (returned widened to `long`).
long wcstol(const wchar_t* text, wchar_t** end, int radix);
/// wcstoul - an unsigned 32-bit value; a leading "-" negates modulo 2^32
/// (L"-1" => 4294967295).
unsigned long wcstoul(const wchar_t* text, wchar_t** end, int radix);
long long _wcstoi64(const wchar_t* text, wchar_t** end, int radix);
unsigned long long _wcstoui64(const wchar_t* text, wchar_t** end, int radix);

/// wcstod - see the header comment. errno is ERANGE after an overflow (the
/// result is +-HUGE_VAL) or an inexact underflow, as glibc sets it.
double wcstod(const wchar_t* text, wchar_t** end);
/// WcstodWithPoint - wcstod for a caller that already knows the runtime
/// locale's decimal point (L'.' in the "C" locale). With another point the
/// text is read from a copy: up to 512 units on the stack, longer text on
/// the platform heap; when that fails the result is 0 with no text read
/// and errno ENOMEM.
double WcstodWithPoint(const wchar_t* text, wchar_t** end, wchar_t point);

/// ReadPlainDecimal - wcstod in the "C" locale for plain decimal text
/// ([blanks][sign]digits[.digits][e[sign]digits]) whose value is well inside
/// the range of a double: the same value and end, errno untouched. False,
/// storing nothing, for anything else (no digit, hexadecimal, inf, nan, a
/// result near the range bounds, more than 400 digits); wcstod decides those.
bool ReadPlainDecimal(const wchar_t* text, double* value, wchar_t** end);

/// FormatDouble - what swprintf(out, size, L"%*.*<conversion>", width,
/// precision, value) writes, `conversion` being 'e', 'f' or 'g': the text
/// of the C runtime (glibc's digits, "inf", "-nan"), with the runtime
/// locale's decimal point, which the caller passes (CrtDecimalPoint(), or
/// L'.' when it knows the locale is "C"). A negative precision means 6; a
/// negative width pads on the right. Returns the length, or -1 (with `out`
/// emptied when `size` > 0) when the text and its terminator do not fit in
/// `size` units.
int FormatDouble(wchar_t* out, size_t size, char conversion, int width, int precision, double value,
                 wchar_t point);

} // namespace qx::crt

#endif // QXUTIL_PLATFORM_CRT_NUMBER_H
