//===- text/quote.cpp - Quoting and unquoting -------------------------------===//
#include "qxutil/text.h"

#include <cwchar>

namespace {

// QuoteInPlace - quotes the string in `s` (capacity `size`, at least 3):
// cut to size - 3 units, shifted right past the opening quote, each quote
// character doubled by shifting the tail right while room remains, and
// after that by shifting it right over the content's last unit.
void QuoteInPlace(wchar_t* s, unsigned int size, wchar_t quote) {
  size_t room = size - 3;
  size_t len = 0; // read no further than the room
  while (len < room && s[len])
    ++len;
  std::wmemmove(s + 1, s, len);
  s[0] = quote;
  room -= len;
  size_t end = 1 + len; // one past the content
  for (size_t i = 1; i < end; ++i) {
    if (s[i] != quote)
      continue;
    if (room > 0) {
      std::wmemmove(s + i + 1, s + i, end - i);
      ++end;
      --room;
    } else {
      std::wmemmove(s + i + 1, s + i, end - i - 1);
    }
    ++i; // past the copy
  }
  s[end] = quote;
  s[end + 1] = 0;
}

} // namespace

wchar_t* quotestring(wchar_t* dst, const wchar_t* src, unsigned int size, const wchar_t* quote) {
  if (!dst)
    return nullptr;
  if (!src)
    src = L"";
  if (!quote || !quote[0])
    return strcpyn(dst, src, size);
  if (size < 3) {
    if (size > 0)
      dst[0] = 0;
    return dst;
  }
  const wchar_t q = quote[0];
  if (dst == src) {
    QuoteInPlace(dst, size, q);
    return dst;
  }
  size_t room = size - 3, w = 0;
  dst[w++] = q;
  for (; *src; ++src) {
    size_t need = *src == q ? 2 : 1;
    if (need > room)
      break;
    dst[w++] = *src;
    if (need == 2)
      dst[w++] = q;
    room -= need;
  }
  dst[w++] = q;
  dst[w] = 0;
  return dst;
}

wchar_t* unquotestring(wchar_t* dst, const wchar_t* src, unsigned int size, const wchar_t* quote) {
  if (!dst)
    return nullptr;
  if (!src)
    src = L"";
  if (!quote || !quote[0] || src[0] != quote[0])
    return strcpyn(dst, src, size);
  if (size == 0)
    return dst;
  const wchar_t q = quote[0];
  size_t w = 0;
  // Reading runs at least one unit ahead of writing, so dst may be src.
  for (const wchar_t* p = src + 1; w + 1 < size && *p;) {
    if (*p == q) {
      if (p[1] != q)
        break; // the closing quote
      ++p;
    }
    dst[w++] = *p++;
  }
  dst[w] = 0;
  return dst;
}
