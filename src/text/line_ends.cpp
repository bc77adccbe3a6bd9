//===- text/line_ends.cpp - Line ends and unit replacement -----------------===//
#include "qxutil/text.h"

#include <cstdint>
#include <cwchar>

unsigned int TextRemoveCrs(wchar_t* s) {
  if (!s)
    return 0;
  size_t w = 0;
  for (size_t r = 0; s[r]; ++r) {
    // s[r + 1] has not been overwritten yet: writing never passes reading.
    if (s[r] == L'\r' && s[r + 1] == L'\n')
      continue;
    s[w++] = s[r];
  }
  s[w] = 0;
  return static_cast<unsigned int>(w);
}

unsigned int TextAddCrs(wchar_t** out, const wchar_t* src, unsigned int n) {
  if (!out || (!src && n != 0))
    return 0;
  uint64_t lineFeeds = 0;
  for (unsigned int i = 0; i < n; ++i)
    lineFeeds += src[i] == L'\n';
  uint64_t units = n + lineFeeds + 1;
  uint64_t bytes = units * sizeof(wchar_t);
  wchar_t* copy = nullptr;
  if (units - 1 > 0xFFFFFFFFu || bytes > 0xFFFFFFFFu ||
      !falloc_(static_cast<unsigned int>(bytes), &copy, false, false))
    return 0;
  size_t w = 0;
  for (unsigned int i = 0; i < n; ++i) {
    if (src[i] == L'\n')
      copy[w++] = L'\r';
    copy[w++] = src[i];
  }
  copy[w] = 0;
  *out = copy;
  return static_cast<unsigned int>(w);
}

void TextReplaceChar(wchar_t* s, wchar_t from, wchar_t to) {
  if (!s || from == 0)
    return;
  // The length is taken first, so replacing with 0 still reaches every unit.
  size_t n = std::wcslen(s);
  for (size_t i = 0; i < n; ++i)
    if (s[i] == from)
      s[i] = to;
}

void FilterNewline(wchar_t* dst, const wchar_t* src, unsigned int n, bool decode) {
  if (!dst || !src)
    return;
  const wchar_t first = decode ? L'\\' : L'\r';
  const wchar_t second = decode ? L'n' : L'\n';
  const wchar_t out0 = decode ? L'\r' : L'\\';
  const wchar_t out1 = decode ? L'\n' : L'n';
  for (unsigned int i = 0; i < n;) {
    // Only the n units are read: a pair cut by the end is not a pair.
    if (src[i] == first && i + 1 < n && src[i + 1] == second) {
      dst[i] = out0;
      dst[i + 1] = out1;
      i += 2;
    } else {
      dst[i] = src[i];
      ++i;
    }
  }
}
