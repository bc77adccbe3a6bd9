// Helpers of the wide-string tests: running in a chosen mode, and output
// buffers pre-filled with a sentinel (common/scaffold.h).
#ifndef QXUTIL_TESTS_TEXT_WIDE_TEST_SUPPORT_H
#define QXUTIL_TESTS_TEXT_WIDE_TEST_SUPPORT_H

#include "common/scaffold.h"
#include "common/thread_runner.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

namespace qxtest {

/// The two modes of the wide-string functions and the locale that gives
/// each: en-US (Windows Latin 1) and ja-JP (Windows Japanese, DBCS).
enum class Mode { kSingleByte, kDbcs };
inline const char* ModeName(Mode m) { return m == Mode::kDbcs ? "DBCS" : "single-byte"; }

/// InMode - runs `fn` on a new thread whose services are built under the
/// mode's locale, so the system charset is pinned whatever the machine's.
template <class Fn> void InMode(Mode mode, Fn&& fn) {
  RunOnNewThread([&] {
    ASSERT_TRUE(SetThreadLocale(mode == Mode::kDbcs ? 1041 : 1033));
    ASSERT_EQ(CharsetDBCS(system_charset()), mode == Mode::kDbcs);
    fn();
  });
}

/// The unit that pre-fills output buffers (a noncharacter no case uses).
constexpr wchar_t kSentinel = L'\uFDD0';

/// Buffer - `size` units (holding `init`, when given) and a guard, the rest
/// pre-filled with kSentinel.
inline Guarded<wchar_t> Buffer(size_t size, const wchar_t* init = nullptr) {
  return Guarded<wchar_t>(size, kSentinel, init);
}

} // namespace qxtest

#endif // QXUTIL_TESTS_TEXT_WIDE_TEST_SUPPORT_H
