//===- platform/unicode.h - Unicode character services ---------*- C++ -*-===//
//
// Provides: CharUpperW, CharLowerW, CharUpperBuffW, CharLowerBuffW,
// IsCharUpperW, IsCharLowerW, IsCharAlphaW, IsCharAlphaNumericW, CharNextW,
// CharPrevW (user32's character services), and the table lookups behind them
// for the rest of the platform layer.
//
// Every answer comes from tables generated from the Unicode data
// (unicode_tables.inc, see docs/unicode.md), never from the machine's C
// locale. Case mapping is Windows' locale-independent mapping: simple
// one-to-one mappings that go both ways, no Turkish rules.
//
// Wide text here holds BMP code units only (wchar_t is 32 bits, values stay
// below 0x10000). A value of 0x10000 or more (or a negative wchar_t) is not a
// character: case mapping passes it through unchanged and every
// classification is false for it. Nothing here sets the last error except
// CharUpperBuffW and CharLowerBuffW given a null buffer.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_UNICODE_H
#define QXUTIL_PLATFORM_UNICODE_H

#include "qxutil/wintypes.h"

#include <cstdint>

namespace qx::win {

/// CharUpperW - upper-cases a string in place and returns it. If the
/// pointer's value is below 0x10000 it is not a string but one character,
/// returned converted in the same form:
///   CharUpperW(buf) with buf = L"stra\u00dfe" => buf, now L"STRA\u00dfE"
///   (LPWSTR)(ULONG_PTR)L'a' => (LPWSTR)(ULONG_PTR)L'A'
/// A null pointer is the character 0 and comes back null.
LPWSTR CharUpperW(LPWSTR lpsz);

/// CharLowerW - the lower-case counterpart of CharUpperW.
LPWSTR CharLowerW(LPWSTR lpsz);

/// CharUpperBuffW - upper-cases exactly `cchLength` units of `lpsz` in place
/// (a terminator among them does not stop it) and returns `cchLength`.
/// 0 units: returns 0. A null buffer with a nonzero length returns 0 and sets
/// ERROR_INVALID_PARAMETER.
DWORD CharUpperBuffW(LPWSTR lpsz, DWORD cchLength);

/// CharLowerBuffW - the lower-case counterpart of CharUpperBuffW.
DWORD CharLowerBuffW(LPWSTR lpsz, DWORD cchLength);

/// IsCharUpperW - true for upper-case and titlecase letters (U+01C5 is both
/// upper and lower case).
BOOL IsCharUpperW(WCHAR ch);

/// IsCharLowerW - true for lower-case and titlecase letters, and for the
/// ordinal indicators U+00AA, U+00BA and superscript i and n.
BOOL IsCharLowerW(WCHAR ch);

/// IsCharAlphaW - true for letters of every kind and letter numbers
/// (Roman numerals); false for digits, marks and symbols.
BOOL IsCharAlphaW(WCHAR ch);

/// IsCharAlphaNumericW - IsCharAlphaW or a decimal digit of any script, and
/// the Latin-1 superscripts one, two and three.
BOOL IsCharAlphaNumericW(WCHAR ch);

/// CharNextW - the next character after `lpsz`: one unit on, then past every
/// nonspacing mark (IsNonSpacingMark) that follows, so a base letter and its combining marks
/// are one character (L"a\u030ab" from its start => the "b"). At the
/// terminator it returns `lpsz` itself. A null pointer comes back null.
LPWSTR CharNextW(LPCWSTR lpsz);

/// CharPrevW - the character before `lpszCurrent`, never before
/// `lpszStart`: one unit back, then back over nonspacing marks to their base
/// character. When `lpszCurrent` is at or before `lpszStart`, or either is
/// null, it returns `lpszCurrent` unchanged.
LPWSTR CharPrevW(LPCWSTR lpszStart, LPCWSTR lpszCurrent);

} // namespace qx::win

namespace qx::platform {

/// Character-type bits of CharTypeBits. The values are the C runtime's
/// _UPPER, _LOWER, ... bits (and Windows' C1_ bits), so a Microsoft
/// classification is `CharTypeBits(c) & mask`.
enum CharTypeBit : unsigned {
  kCharUpper = 0x0001,
  kCharLower = 0x0002,
  kCharDigit = 0x0004,
  kCharSpace = 0x0008,
  kCharPunct = 0x0010,
  kCharBlank = 0x0040,
  kCharAlpha = 0x0100,
};

/// CharTypeBits - the type bits of `c`; 0 for values outside the BMP.
unsigned CharTypeBits(wchar_t c);

/// CharToUpper, CharToLower - Windows' simple case mapping of one unit;
/// values outside the BMP come back unchanged.
wchar_t CharToUpper(wchar_t c);
wchar_t CharToLower(wchar_t c);

/// The nonspacing marks as a two-level bitmap (generated, unicode_marks.inc):
/// kMarkBlockOf[u >> 8] selects a 256-bit block of kMarkBlocks.
extern const uint8_t kMarkBlockOf[256];
extern const uint64_t kMarkBlocks[][4];

/// IsNonSpacingMark - true for the BMP characters of general category Mn,
/// the one definition of a nonspacing mark: CharNextW and CharPrevW step
/// over them, WideCharToMultiByte's WC_COMPOSITECHECK composes and groups
/// them. Enclosing marks (Me, e.g. U+20DD) are not nonspacing marks. The
/// first mark is U+0300.
inline bool IsNonSpacingMark(uint32_t c) {
  return c <= 0xFFFF && (kMarkBlocks[kMarkBlockOf[c >> 8]][(c >> 6) & 3] >> (c & 63) & 1) != 0;
}

/// UnicodeTablesVersion - the Unicode version the tables were made from.
const char* UnicodeTablesVersion();

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_UNICODE_H
