// Provides: CharUpper/LowerW (+Buff), IsCharUpper/Lower/Alpha/AlphaNumericW, CharNextW, CharPrevW.
#include "platform/unicode.h"

#include <cstdint>

namespace {

// One entry of the generated tables: type bits and the distances (modulo
// 0x10000) from a code point to its upper- and lower-case forms.
struct CharRecord {
  uint16_t bits;
  uint16_t upper;
  uint16_t lower;
};

#include "platform/unicode_tables.inc"

bool InBmp(wchar_t c) { return static_cast<uint32_t>(c) < 0x10000; }

// Lookup - the record of a BMP code point.
const CharRecord& Lookup(uint32_t c) {
  return kCharRecords[kCharStage2[(static_cast<uint32_t>(kCharStage1[c >> kCharBlockShift])
                                   << kCharBlockShift) |
                                  (c & kCharBlockMask)]];
}

uint32_t Upper16(uint32_t c) { return (c + Lookup(c).upper) & 0xFFFF; }
uint32_t Lower16(uint32_t c) { return (c + Lookup(c).lower) & 0xFFFF; }

bool IsNonSpacing(wchar_t c) {
  return InBmp(c) && qx::platform::IsNonSpacingMark(static_cast<uint32_t>(c));
}

// The single-character form of CharUpperW/CharLowerW: a pointer-sized value
// whose high part is zero.
bool IsSingleChar(LPWSTR p) { return (reinterpret_cast<uintptr_t>(p) >> 16) == 0; }

LPWSTR AsPointer(uint32_t c) { return reinterpret_cast<LPWSTR>(static_cast<uintptr_t>(c)); }

template <wchar_t (*Map)(wchar_t)> LPWSTR MapString(LPWSTR s) {
  if (IsSingleChar(s))
    return AsPointer(
        static_cast<uint32_t>(Map(static_cast<wchar_t>(reinterpret_cast<uintptr_t>(s)))));
  for (LPWSTR p = s; *p; ++p)
    *p = Map(*p);
  return s;
}

template <wchar_t (*Map)(wchar_t)> DWORD MapBuffer(LPWSTR s, DWORD n) {
  if (n == 0)
    return 0;
  if (!s) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  for (DWORD i = 0; i < n; ++i)
    s[i] = Map(s[i]);
  return n;
}

BOOL HasBits(WCHAR ch, unsigned mask) {
  return (qx::platform::CharTypeBits(ch) & mask) ? TRUE : FALSE;
}

} // namespace

namespace qx::platform {

// Declared in unicode.h: the conversions and CharNextW test marks inline.
#include "platform/unicode_marks.inc"

unsigned CharTypeBits(wchar_t c) { return InBmp(c) ? Lookup(static_cast<uint32_t>(c)).bits : 0; }

wchar_t CharToUpper(wchar_t c) {
  return InBmp(c) ? static_cast<wchar_t>(Upper16(static_cast<uint32_t>(c))) : c;
}

wchar_t CharToLower(wchar_t c) {
  return InBmp(c) ? static_cast<wchar_t>(Lower16(static_cast<uint32_t>(c))) : c;
}

const char* UnicodeTablesVersion() { return kUnicodeVersion; }

} // namespace qx::platform

LPWSTR qx::win::CharUpperW(LPWSTR lpsz) { return MapString<qx::platform::CharToUpper>(lpsz); }

LPWSTR qx::win::CharLowerW(LPWSTR lpsz) { return MapString<qx::platform::CharToLower>(lpsz); }

DWORD qx::win::CharUpperBuffW(LPWSTR lpsz, DWORD cchLength) {
  return MapBuffer<qx::platform::CharToUpper>(lpsz, cchLength);
}

DWORD qx::win::CharLowerBuffW(LPWSTR lpsz, DWORD cchLength) {
  return MapBuffer<qx::platform::CharToLower>(lpsz, cchLength);
}

BOOL qx::win::IsCharUpperW(WCHAR ch) { return HasBits(ch, qx::platform::kCharUpper); }

BOOL qx::win::IsCharLowerW(WCHAR ch) { return HasBits(ch, qx::platform::kCharLower); }

BOOL qx::win::IsCharAlphaW(WCHAR ch) { return HasBits(ch, qx::platform::kCharAlpha); }

BOOL qx::win::IsCharAlphaNumericW(WCHAR ch) {
  return HasBits(ch, qx::platform::kCharAlpha | qx::platform::kCharDigit);
}

LPWSTR qx::win::CharNextW(LPCWSTR lpsz) {
  if (!lpsz || !*lpsz)
    return const_cast<LPWSTR>(lpsz);
  ++lpsz;
  while (IsNonSpacing(*lpsz)) // the terminator is not a mark
    ++lpsz;
  return const_cast<LPWSTR>(lpsz);
}

LPWSTR qx::win::CharPrevW(LPCWSTR lpszStart, LPCWSTR lpszCurrent) {
  if (!lpszStart || !lpszCurrent || lpszCurrent <= lpszStart)
    return const_cast<LPWSTR>(lpszCurrent);
  --lpszCurrent;
  while (lpszCurrent > lpszStart && IsNonSpacing(*lpszCurrent))
    --lpszCurrent;
  return const_cast<LPWSTR>(lpszCurrent);
}
