// Helpers of the text tests: running on a new thread in a chosen locale or
// mode, and output buffers pre-filled with a sentinel (common/scaffold.h).
#ifndef QXUTIL_TESTS_TEXT_TEXT_SUPPORT_H
#define QXUTIL_TESTS_TEXT_TEXT_SUPPORT_H

#include "common/scaffold.h"
#include "common/thread_runner.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <string>

namespace qxtest {

/// InLocale - runs `fn` on a new thread whose services are built under
/// `lcid` (1033: WindowsLatin1, CR LF; 1041: WindowsJapanese, DBCS).
template <class Fn> void InLocale(LCID lcid, Fn&& fn) {
  RunOnNewThread([&] {
    ASSERT_TRUE(SetThreadLocale(lcid));
    fn();
  });
}

/// The two modes of the wide-string functions: en-US and ja-JP (DBCS).
enum class Mode { kSingleByte, kDbcs };
inline const char* ModeName(Mode m) { return m == Mode::kDbcs ? "DBCS" : "single-byte"; }
template <class Fn> void InMode(Mode mode, Fn&& fn) {
  InLocale(mode == Mode::kDbcs ? 1041 : 1033, fn);
}

/// Buffer - `size` units (holding `init`, when given) and a guard, the rest
/// pre-filled with a noncharacter no case uses.
inline Guarded<wchar_t> Buffer(size_t size, const wchar_t* init = nullptr) {
  return Guarded<wchar_t>(size, L'\uFDD0', init);
}

inline std::wstring Repeat(const std::wstring& s, int n) {
  std::wstring out;
  while (n-- > 0)
    out += s;
  return out;
}

} // namespace qxtest

#endif // QXUTIL_TESTS_TEXT_TEXT_SUPPORT_H
