//===- text/wide_edit.cpp - In-place edits of wide strings -----------------===//
#include "platform/crt_string.h"
#include "text/wide_internal.h"

#include <cwchar>

wchar_t* qxStrrev(wchar_t* s) { return s ? qx::crt::_wcsrev(s) : nullptr; }

void qxCharReplace(wchar_t* s, const wchar_t* set, wchar_t c) {
  if (!s || !set)
    return;
  // The length is taken first, so replacing with 0 still reaches every unit.
  size_t n = std::wcslen(s);
  for (size_t i = 0; i < n; ++i)
    if (qx::text::InSet(set, s[i]))
      s[i] = c;
}

void* memrev(void* p, unsigned int n) {
  if (!p || n < 2)
    return p;
  auto* lo = static_cast<unsigned char*>(p);
  auto* hi = lo + n - 1;
  for (; lo < hi; ++lo, --hi) {
    unsigned char t = *lo;
    *lo = *hi;
    *hi = t;
  }
  return p;
}

void concat_backslash(const wchar_t* src, wchar_t* dst, unsigned int n) {
  if (!dst)
    return;
  if (n != 0)
    strcpyn(dst, src, n);
  size_t len = std::wcslen(dst);
  if (len == 0 || dst[len - 1] == L'\\' || dst[len - 1] == L'/')
    return;
  dst[len] = L'\\';
  dst[len + 1] = 0;
}
