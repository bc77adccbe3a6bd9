// Provides: iswalpha/alnum/print/space, towupper/lower, _wcs[n]icmp, _wcsrev, wcstok, _wtoi, _wtol.
#include "platform/crt_string.h"

#include <cerrno>
#include <cstdint>

#include "platform/crt_locale.h"
#include "platform/unicode.h"

namespace qx::crt {

namespace {

using qx::platform::CharTypeBits;

// The C runtime's _ALPHA mask: a letter of any case.
constexpr unsigned kAlphaMask =
    qx::platform::kCharAlpha | qx::platform::kCharUpper | qx::platform::kCharLower;
constexpr unsigned kPrintMask =
    kAlphaMask | qx::platform::kCharDigit | qx::platform::kCharPunct | qx::platform::kCharBlank;

// Values above the BMP (WEOF among them) have no type bits.
unsigned Bits(wint_t c) { return c < 0x10000 ? CharTypeBits(static_cast<wchar_t>(c)) : 0; }

uint32_t AsciiLower(uint32_t c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }
uint32_t AsciiUpper(uint32_t c) { return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c; }
uint32_t TableLower(uint32_t c) {
  return static_cast<uint32_t>(qx::platform::CharToLower(static_cast<wchar_t>(c)));
}

// Unit - a wchar_t as the unsigned code unit Microsoft's runtime compares.
uint32_t Unit(wchar_t c) { return static_cast<uint32_t>(c); }

// FoldCompare - the loop of _wcsicmp/_wcsnicmp: both units folded to lower
// case, the difference of the first pair that differs (or of the pair
// holding a terminator). Kept clear of _NLSCMPERROR for values outside the
// BMP, which Microsoft's 16-bit units cannot hold.
int FoldCompare(const wchar_t* a, const wchar_t* b, size_t count) {
  uint32_t (*fold)(uint32_t) = qx::platform::CrtLocaleIsC() ? AsciiLower : TableLower;
  uint32_t f = 0;
  uint32_t l = 0;
  for (size_t i = 0; i < count; ++i) {
    f = fold(Unit(a[i]));
    l = fold(Unit(b[i]));
    if (f == 0 || f != l)
      break;
  }
  int64_t diff = static_cast<int64_t>(f) - static_cast<int64_t>(l);
  if (diff > kNlsCmpError - 1)
    return kNlsCmpError - 1;
  if (diff < -(kNlsCmpError - 1))
    return -(kNlsCmpError - 1);
  return static_cast<int>(diff);
}

bool IsDelimiter(wchar_t c, const wchar_t* delimiters) {
  for (const wchar_t* d = delimiters; *d; ++d) {
    if (*d == c)
      return true;
  }
  return false;
}

// ParseInt32 - the conversion of _wtoi and _wtol, saturating at the range of
// a 32-bit int.
int32_t ParseInt32(const wchar_t* s) {
  if (!s) {
    errno = EINVAL;
    return 0;
  }
  while (iswspace(static_cast<wint_t>(Unit(*s))))
    ++s;
  bool negative = false;
  if (*s == L'-' || *s == L'+') {
    negative = *s == L'-';
    ++s;
  }
  const uint64_t limit = negative ? uint64_t{0x80000000} : uint64_t{0x7FFFFFFF};
  uint64_t value = 0;
  bool overflow = false;
  for (int digit; (digit = DigitValue(*s)) >= 0; ++s) {
    if (!overflow) {
      value = value * 10 + static_cast<unsigned>(digit);
      overflow = value > limit;
    }
  }
  if (overflow) {
    errno = ERANGE;
    return negative ? INT32_MIN : INT32_MAX;
  }
  return negative ? static_cast<int32_t>(-static_cast<int64_t>(value))
                  : static_cast<int32_t>(value);
}

// The calling thread's wcstok position.
thread_local wchar_t* tTokenNext = nullptr;

} // namespace

namespace {
// The zeros of the digit scripts the runtime's wide number parsers read,
// ascending; each is followed by nine more digits.
constexpr uint32_t kDigitZeros[] = {
    0x0030, // ASCII
    0x0660, // Arabic-Indic
    0x06F0, // Extended Arabic-Indic
    0x0966, // Devanagari
    0x09E6, // Bengali
    0x0A66, // Gurmukhi
    0x0AE6, // Gujarati
    0x0B66, // Oriya
    0x0C66, // Telugu
    0x0CE6, // Kannada
    0x0D66, // Malayalam
    0x0E50, // Thai
    0x0ED0, // Lao
    0x0F20, // Tibetan
    0x1040, // Myanmar
    0x17E0, // Khmer
    0x1810, // Mongolian
    0xFF10, // fullwidth
};

} // namespace

int DigitValue(wchar_t c) {
  uint32_t u = static_cast<uint32_t>(c);
  for (uint32_t zero : kDigitZeros) {
    if (u < zero)
      return -1;
    if (u < zero + 10)
      return static_cast<int>(u - zero);
  }
  return -1;
}

int iswalpha(wint_t c) { return static_cast<int>(Bits(c) & kAlphaMask); }

int iswalnum(wint_t c) {
  return static_cast<int>(Bits(c) & (kAlphaMask | qx::platform::kCharDigit));
}

int iswprint(wint_t c) { return static_cast<int>(Bits(c) & kPrintMask); }

int iswspace(wint_t c) { return static_cast<int>(Bits(c) & qx::platform::kCharSpace); }

wint_t towupper(wint_t c) {
  if (c >= 0x10000)
    return c;
  if (qx::platform::CrtLocaleIsC())
    return AsciiUpper(c);
  return static_cast<wint_t>(qx::platform::CharToUpper(static_cast<wchar_t>(c)));
}

wint_t towlower(wint_t c) {
  if (c >= 0x10000)
    return c;
  if (qx::platform::CrtLocaleIsC())
    return AsciiLower(c);
  return TableLower(c);
}

int _wcsicmp(const wchar_t* string1, const wchar_t* string2) {
  if (!string1 || !string2) {
    errno = EINVAL;
    return kNlsCmpError;
  }
  return FoldCompare(string1, string2, SIZE_MAX);
}

int _wcsnicmp(const wchar_t* string1, const wchar_t* string2, size_t count) {
  if (!string1 || !string2) {
    errno = EINVAL;
    return kNlsCmpError;
  }
  if (count == 0)
    return 0;
  return FoldCompare(string1, string2, count);
}

wchar_t* _wcsrev(wchar_t* string) {
  if (!string) {
    errno = EINVAL;
    return nullptr;
  }
  wchar_t* end = string;
  while (*end)
    ++end;
  for (wchar_t* begin = string; begin + 1 < end; ++begin) {
    --end;
    wchar_t unit = *begin;
    *begin = *end;
    *end = unit;
  }
  return string;
}

wchar_t* wcstok(wchar_t* string, const wchar_t* delimiters) {
  if (!delimiters)
    return nullptr;
  wchar_t* p = string ? string : tTokenNext;
  if (!p)
    return nullptr;
  while (*p && IsDelimiter(*p, delimiters))
    ++p;
  wchar_t* token = p;
  while (*p && !IsDelimiter(*p, delimiters))
    ++p;
  if (*p)
    *p++ = L'\0';
  tTokenNext = p;
  return p != token ? token : nullptr;
}

int _wtoi(const wchar_t* string) { return ParseInt32(string); }

long _wtol(const wchar_t* string) { return ParseInt32(string); }

} // namespace qx::crt
