// Fuzz target for the Unicode character services and the runtime's case
// folding on them. Once, before the first input, every BMP code point: the
// single-character form of CharUpperW and CharLowerW is the mapping
// CharToUpper and CharToLower give, every mapping goes both ways (which keeps
// the table one-to-one), the types relate as they must, ASCII has exactly its
// well-known classes, and towupper and towlower fold ASCII only in the "C"
// locale and by that mapping in any other. Then random texts: the string and
// counted forms convert each unit as the single-character form does, stop
// where they must and write nothing past it; CharNextW and CharPrevW step
// over exactly the nonspacing marks; _wcsicmp and _wcsnicmp give the
// difference of the first folded units that differ.
#include "platform/crt_string.h"
#include "platform/unicode.h"

#include <cerrno>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace qx::win;

namespace {

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

uint32_t Upper1(uint32_t c) {
  return static_cast<uint32_t>(
      reinterpret_cast<uintptr_t>(CharUpperW(reinterpret_cast<LPWSTR>(uintptr_t{c}))));
}
uint32_t Lower1(uint32_t c) {
  return static_cast<uint32_t>(
      reinterpret_cast<uintptr_t>(CharLowerW(reinterpret_cast<LPWSTR>(uintptr_t{c}))));
}

void EveryBmpCodePoint() {
  for (uint32_t c = 1; c < 0x10000; ++c) {
    const WCHAR ch = static_cast<WCHAR>(c);
    const uint32_t up = Upper1(c), low = Lower1(c);
    Check(static_cast<uint32_t>(qx::platform::CharToUpper(ch)) == up);
    Check(static_cast<uint32_t>(qx::platform::CharToLower(ch)) == low);
    Check(up == c || Lower1(up) == c);
    Check(low == c || Upper1(low) == c);
    Check(up == c || low == c); // no unit maps both ways
    Check(IsCharAlphaW(ch) || !(IsCharUpperW(ch) || IsCharLowerW(ch)));
    Check(IsCharAlphaNumericW(ch) || !IsCharAlphaW(ch));
    Check(!(qx::platform::IsNonSpacingMark(c) && IsCharAlphaNumericW(ch)));
    if (c < 0x80) {
      const bool upper = c >= 'A' && c <= 'Z', lower = c >= 'a' && c <= 'z';
      Check((IsCharAlphaW(ch) != 0) == (upper || lower));
      Check((IsCharUpperW(ch) != 0) == upper && (IsCharLowerW(ch) != 0) == lower);
      Check((IsCharAlphaNumericW(ch) != 0) == (upper || lower || (c >= '0' && c <= '9')));
      Check(up == (lower ? c - 32 : c) && low == (upper ? c + 32 : c));
    }
  }
  Check(CharUpperW(nullptr) == nullptr && CharLowerW(nullptr) == nullptr); // the character 0
  SetLastError(ERROR_SUCCESS);
  Check(CharUpperBuffW(nullptr, 0) == 0 && GetLastError() == ERROR_SUCCESS);
  Check(CharLowerBuffW(nullptr, 5) == 0 && GetLastError() == ERROR_INVALID_PARAMETER);
}

// Fold - the unit _wcsicmp compares: ASCII A-Z to lower case in the "C"
// locale, the single-character form in any other; beyond the BMP unchanged.
uint32_t Fold(uint32_t c, bool cLocale) {
  if (cLocale || c > 0xFFFF) {
    return c >= 'A' && c <= 'Z' ? c + 32 : c;
  }
  return Lower1(c);
}

// RuntimeCase - towupper and towlower of every BMP code point, WEOF and one
// beyond, and the runtime's classes of ASCII, in the "C" locale and another.
void RuntimeCase() {
  for (const char* name : {"C", "C.UTF-8"}) {
    Check(std::setlocale(LC_ALL, name) != nullptr);
    const bool cLocale = name[1] == 0;
    for (uint32_t c = 0; c < 0x10000; ++c) {
      const uint32_t up = cLocale ? (c >= 'a' && c <= 'z' ? c - 32 : c) : Upper1(c);
      Check(qx::crt::towupper(c) == up && qx::crt::towlower(c) == Fold(c, cLocale));
      if (c < 0x80) {
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        Check((qx::crt::iswalpha(c) != 0) == letter);
        Check((qx::crt::iswalnum(c) != 0) == (letter || (c >= '0' && c <= '9')));
        Check((qx::crt::iswprint(c) != 0) == (c >= 0x20 && c <= 0x7E));
        Check((qx::crt::iswspace(c) != 0) == ((c >= 9 && c <= 13) || c == ' '));
      }
    }
    for (wint_t c : {WEOF, wint_t{0x10041}}) {
      Check(qx::crt::towupper(c) == c && qx::crt::towlower(c) == c);
    }
  }
  Check(std::setlocale(LC_ALL, "C") != nullptr);
  // A null string: _NLSCMPERROR and EINVAL, whatever the count.
  for (int k = 0; k < 3; ++k) {
    const wchar_t* a = k == 1 ? L"a" : nullptr;
    const wchar_t* b = k == 2 ? L"a" : nullptr;
    errno = 0;
    Check(qx::crt::_wcsicmp(a, b) == 0x7FFFFFFF && errno == EINVAL);
    errno = 0;
    Check(qx::crt::_wcsnicmp(a, b, static_cast<size_t>(k)) == _NLSCMPERROR && errno == EINVAL);
  }
}

// Compare - _wcsnicmp of `a` and `b` (each terminated) over `count` units,
// and _wcsicmp over all, against the difference of the folded units.
void Compare(const std::wstring& a, const std::wstring& b, size_t count, bool cLocale) {
  auto model = [&](size_t n) {
    int64_t diff = 0;
    for (size_t i = 0; i < n; ++i) {
      const int64_t f = Fold(static_cast<uint32_t>(a[i]), cLocale);
      diff = f - Fold(static_cast<uint32_t>(b[i]), cLocale);
      if (f == 0 || diff != 0) {
        break;
      }
    }
    return diff;
  };
  errno = 0;
  Check(qx::crt::_wcsnicmp(a.c_str(), b.c_str(), count) == model(count) && errno == 0);
  Check(qx::crt::_wcsicmp(a.c_str(), b.c_str()) == model(SIZE_MAX) && errno == 0);
}

// Forms - the string form (up to the terminator) and the counted form (all
// `text` units) against the single-character form, with a guard after.
void Forms(const std::wstring& text, bool upper) {
  constexpr wchar_t kGuard = 0x7777;
  std::wstring counted = text + kGuard;
  const DWORD n = static_cast<DWORD>(text.size());
  Check((upper ? CharUpperBuffW : CharLowerBuffW)(counted.data(), n) == n);
  std::wstring string = text + L'\0' + kGuard;
  Check((upper ? CharUpperW : CharLowerW)(string.data()) == string.data());
  bool ended = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const uint32_t c = static_cast<uint32_t>(text[i]);
    const uint32_t mapped = c > 0xFFFF ? c : upper ? Upper1(c) : Lower1(c);
    Check(static_cast<uint32_t>(counted[i]) == mapped);
    ended = ended || c == 0;
    Check(static_cast<uint32_t>(string[i]) == (ended ? c : mapped));
  }
  Check(counted[n] == kGuard && string[n + 1] == kGuard);
}

// Walk - CharNextW from every position steps over the marks after the
// character, and CharPrevW comes back to where that character starts.
void Walk(const std::wstring& text) {
  const wchar_t* s = text.c_str();
  const size_t n = text.size();
  for (size_t i = 0; i <= n; ++i) {
    size_t next = i;
    if (i < n && s[i] != 0) {
      next = i + 1;
      while (next < n && qx::platform::IsNonSpacingMark(static_cast<uint32_t>(s[next]))) {
        ++next;
      }
    }
    Check(CharNextW(s + i) == s + next);
  }
  for (size_t i = 1; i <= n; ++i) {
    size_t prev = i - 1;
    while (prev > 0 && qx::platform::IsNonSpacingMark(static_cast<uint32_t>(s[prev]))) {
      --prev;
    }
    Check(CharPrevW(s, s + i) == s + prev);
    // At the start, the start; before it, unchanged.
    Check(CharPrevW(s + i, s + i) == s + i && CharPrevW(s + i, s + i - 1) == s + i - 1);
  }
  Check(CharPrevW(s, s) == s && CharNextW(nullptr) == nullptr);
  Check(CharPrevW(nullptr, s) == s && CharPrevW(s, nullptr) == nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool everyCodePoint = (EveryBmpCodePoint(), RuntimeCase(), true);
  (void)everyCodePoint;
  if (size > 4096) {
    return 0;
  }
  // Pairs of bytes as units; a high byte of 0x03 or 0x20 gives marks, and
  // one of 0xFF a unit beyond the BMP.
  std::wstring text;
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint32_t u = static_cast<uint32_t>(data[i] | data[i + 1] << 8);
    if (data[i + 1] == 0xFF) {
      u = 0x10000u + data[i] * 0x100u;
      // Beyond the BMP a unit has no type: never the type of its low 16 bits.
      const WCHAR w = static_cast<WCHAR>(u);
      Check(!IsCharAlphaW(w) && !IsCharUpperW(w) && !IsCharLowerW(w) && !IsCharAlphaNumericW(w));
    }
    text.push_back(static_cast<wchar_t>(u));
  }
  Forms(text, (size & 1) != 0);
  std::wstring walked = text;
  for (wchar_t& c : walked) {
    if (c == 0 || static_cast<uint32_t>(c) > 0xFFFF) {
      c = L'x';
    }
  }
  Walk(walked);
  // The text against its second half, in the locale the size chooses.
  const bool cLocale = (size & 2) != 0;
  Check(std::setlocale(LC_ALL, cLocale ? "C" : "C.UTF-8") != nullptr);
  const size_t half = text.size() / 2;
  std::wstring a = text.substr(0, half), b = text.substr(half);
  Compare(a, b, half % 8 == 7 ? SIZE_MAX : half % 8, cLocale);
  Check(std::setlocale(LC_ALL, "C") != nullptr);
  return 0;
}
