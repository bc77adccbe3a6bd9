//===- platform/crt_string.h - Microsoft C-runtime string calls -*- C++ -*-===//
//
// Provides: the Microsoft C runtime's iswalpha, iswalnum, iswprint,
// iswspace, towupper, towlower, _wcsicmp, _wcsnicmp, _wcsrev, the
// two-argument wcstok, _wtoi and _wtol, with Microsoft's contracts.
//
// glibc has some of these names with other contracts (a three-argument
// wcstok, locale-dependent classification), so they live in qx::crt and are
// always called qualified. Classification and case come from the generated
// Unicode tables (platform/unicode.h), never from the machine's C locale;
// only the case folding of towupper, towlower, _wcsicmp and _wcsnicmp
// depends on the runtime locale (qx::platform::CrtLocaleIsC): while it is the
// unchanged "C" locale they fold ASCII A-Z only, as Microsoft's runtime does.
//
// Bad arguments never crash: where Microsoft's runtime would call its
// invalid-parameter handler these set errno to EINVAL and return the
// documented failure value (_NLSCMPERROR, null or 0).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CRT_STRING_H
#define QXUTIL_PLATFORM_CRT_STRING_H

#include <cstddef>
#include <cwchar>

/// _NLSCMPERROR - what _wcsicmp and _wcsnicmp return for a null argument
/// (INT_MAX), under the name Microsoft's headers give it.
#ifndef _NLSCMPERROR
#define _NLSCMPERROR 2147483647
#endif

namespace qx::crt {

inline constexpr int kNlsCmpError = 0x7FFFFFFF;

/// iswalpha - nonzero (the matching _UPPER, _LOWER, _ALPHA bits) for letters
/// and letter numbers; 0 for WEOF and values outside the BMP.
int iswalpha(wint_t c);

/// iswalnum - iswalpha or a digit (decimal digits of every script and the
/// Latin-1 superscripts one, two, three).
int iswalnum(wint_t c);

/// iswprint - nonzero for blanks (space, no-break space, not TAB),
/// punctuation (with the ASCII and Latin-1 symbols), letters and digits;
/// 0 for controls, unassigned code points and symbols above U+00FF.
int iswprint(wint_t c);

/// iswspace - nonzero for TAB..CR, space and the Unicode space separators
/// (U+00A0, U+2000..U+200A, U+3000, ...); 0 for U+0085 and U+001C..U+001F.
int iswspace(wint_t c);

/// towupper, towlower - one character's case: ASCII only in the "C" runtime
/// locale, Windows' simple case mapping otherwise. WEOF and values outside
/// the BMP come back unchanged.
wint_t towupper(wint_t c);
wint_t towlower(wint_t c);

/// _wcsicmp - compares two strings without regard to case. Both units are
/// folded to LOWER case first (so L"_" sorts before L"A": '_' < 'a'); in the
/// "C" runtime locale only A-Z fold. Returns the difference of the first
/// differing folded units (negative, 0, positive). A null argument returns
/// _NLSCMPERROR with errno EINVAL.
int _wcsicmp(const wchar_t* string1, const wchar_t* string2);

/// _wcsnicmp - _wcsicmp on at most `count` units. A null argument returns
/// _NLSCMPERROR with errno EINVAL even for a count of 0; otherwise a count of
/// 0 returns 0.
int _wcsnicmp(const wchar_t* string1, const wchar_t* string2, size_t count);

/// _wcsrev - reverses a string's units in place and returns it; null
/// returns null with errno EINVAL.
wchar_t* _wcsrev(wchar_t* string);

/// wcstok - Microsoft's two-argument form: the next token of `string` (or,
/// when `string` is null, of the string the calling thread tokenised last)
/// delimited by any unit of `delimiters`. Leading delimiters are skipped, the
/// delimiter after the token is overwritten with 0, and null is returned when
/// no token is left. The position is kept per thread. Null delimiters
/// return null and leave the position alone.
wchar_t* wcstok(wchar_t* string, const wchar_t* delimiters);

/// _wtoi - reads a decimal int: leading white space (iswspace), an optional
/// sign, then decimal digits of the runtime's digit scripts (ASCII, Arabic-
/// Indic, Devanagari, ..., fullwidth); stops at the first other unit
/// (L"3;2;0" => 3). Out of range it saturates at INT_MAX or INT_MIN and sets
/// errno to ERANGE. No digits => 0; null => 0 with errno EINVAL.
int _wtoi(const wchar_t* string);

/// DigitValue - 0..9 for a decimal digit of the scripts the runtime's wide
/// number parsers read (ASCII, Arabic-Indic, Devanagari, ..., Thai,
/// fullwidth), -1 for anything else.
int DigitValue(wchar_t c);

/// _wtol - _wtoi for `long`, with the range of Windows' 32-bit long.
long _wtol(const wchar_t* string);

} // namespace qx::crt

#endif // QXUTIL_PLATFORM_CRT_STRING_H
