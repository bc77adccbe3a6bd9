// Fuzz target for the Unicode character services. Once, before the first
// input, every BMP code point: the single-character form of CharUpperW and
// CharLowerW is the mapping CharToUpper and CharToLower give, every mapping
// goes both ways (which keeps the table one-to-one), the types relate as
// they must, and ASCII has exactly its well-known classes. Then random
// texts: the string and counted forms convert each unit as the
// single-character form does, stop where they must and write nothing past
// it, and CharNextW and CharPrevW step over exactly the nonspacing marks.
#include "platform/unicode.h"

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
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool everyCodePoint = (EveryBmpCodePoint(), true);
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
  return 0;
}
