//===- frame/strcpyn.cpp - Bounded wide-string copy ------------------------===//
#include "qxutil/frame.h"

#include <cwchar>

wchar_t* strcpyn(wchar_t* dst, const wchar_t* src, unsigned int n) {
  if (n == 0 || !dst)
    return dst;
  unsigned int i = 0;
  if (src)
    for (; i + 1 < n && src[i]; ++i)
      dst[i] = src[i];
  std::wmemset(dst + i, 0, n - i);
  return dst;
}
