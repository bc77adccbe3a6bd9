//===- text/wide_internal.h - Helpers of the wide-string functions -*- C++ -*-===//
//
// What several wide-string files share: the mode test and the two
// character classes of trimming and tokenising.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TEXT_WIDE_INTERNAL_H
#define QXUTIL_TEXT_WIDE_INTERNAL_H

#include "qxutil/text.h"

namespace qx::text {

/// DbcsMode - true when the calling context's system charset is a
/// double-byte one; asked afresh on every call of a two-mode function.
inline bool DbcsMode() { return CharsetDBCS(system_charset()); }

/// IsWhite - TAB, LF, FF, CR or space; vertical tab is not white space.
inline bool IsWhite(wchar_t c) { return c == 9 || c == 10 || c == 12 || c == 13 || c == 32; }

/// IsTrimmable - white space or unprintable: what ltrim, rtrim and the
/// tokenisers skip.
inline bool IsTrimmable(wchar_t c) { return IsWhite(c) || !qxIsPrint(c); }

/// InSet - `c` is one of the units of `set` (never the terminator).
inline bool InSet(const wchar_t* set, wchar_t c) {
  for (; *set; ++set)
    if (*set == c)
      return true;
  return false;
}

} // namespace qx::text

#endif // QXUTIL_TEXT_WIDE_INTERNAL_H
