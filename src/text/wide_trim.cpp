//===- text/wide_trim.cpp - White space and trimming -----------------------===//
#include "platform/codepage.h"
#include "text/wide_internal.h"

#include <cwchar>

using namespace qx::win;

using qx::text::IsTrimmable;
using qx::text::IsWhite;

namespace {

// ShiftLeft - drops the first `count` units of `s`, terminator included in
// the move.
void ShiftLeft(wchar_t* s, size_t count) {
  size_t rest = std::wcslen(s + count);
  std::wmemmove(s, s + count, rest + 1);
}

} // namespace

const wchar_t* skipwhite(const wchar_t* s) {
  if (!s)
    return nullptr;
  while (IsWhite(*s))
    ++s;
  return *s ? s : nullptr;
}

unsigned int ltrim(wchar_t* s) {
  if (!s)
    return 0;
  size_t count = 0;
  while (s[count] && IsTrimmable(s[count]))
    ++count;
  if (count == 0 || !s[count])
    return 0; // nothing to remove, or nothing but such units: left as it is
  ShiftLeft(s, count);
  return static_cast<unsigned int>(count);
}

unsigned int ltrim2(wchar_t* s) {
  if (!s)
    return 0;
  size_t count = 0;
  while (s[count] == L' ')
    ++count;
  if (count)
    ShiftLeft(s, count);
  return static_cast<unsigned int>(count);
}

unsigned int rtrim(wchar_t* s) {
  if (!s)
    return 0;
  size_t n = std::wcslen(s);
  while (n > 0 && IsTrimmable(s[n - 1]))
    s[--n] = 0;
  return static_cast<unsigned int>(n);
}

unsigned int rtrimA(char* s) {
  if (!s)
    return 0;
  // Walk by characters; remember where the current run of white-space or
  // unprintable single-byte characters began. A double-byte character is
  // printable and ends any run.
  char* run = nullptr;
  char* p = s;
  while (*p) {
    char* next = CharNextA(p);
    if (next == p)
      break;
    bool trimmable = next - p == 1 && IsTrimmable(static_cast<unsigned char>(*p));
    if (!trimmable)
      run = nullptr;
    else if (!run)
      run = p;
    p = next;
  }
  char* end = run ? run : p;
  *end = 0;
  return static_cast<unsigned int>(end - s);
}
