// Helpers of the wide-string tests: running in a chosen mode, and output
// buffers with a sentinel tail.
#ifndef QXUTIL_TESTS_TEXT_WIDE_TEST_SUPPORT_H
#define QXUTIL_TESTS_TEXT_WIDE_TEST_SUPPORT_H

#include "common/thread_runner.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

/// SentinelBuffer - `size` units for the function under test and a tail
/// of sentinels after them, all pre-filled with the sentinel.
class SentinelBuffer {
public:
  explicit SentinelBuffer(unsigned int size, const wchar_t* init = nullptr)
      : size_(size), units_(size + kTail, kSentinel) {
    if (init)
      for (unsigned int i = 0; init[i] && i < size_; ++i)
        units_[i] = init[i];
    if (init && std::wstring(init).size() < size_)
      units_[std::wstring(init).size()] = 0;
  }
  wchar_t* data() { return units_.data(); }
  /// Text - the string written (up to the terminator, or all `size` units).
  std::wstring Text() const {
    size_t n = 0;
    while (n < size_ && units_[n])
      ++n;
    return std::wstring(units_.data(), n);
  }
  /// Written - how many units differ from the sentinel, from the start.
  size_t TouchedUpTo() const {
    size_t last = 0;
    for (size_t i = 0; i < units_.size(); ++i)
      if (units_[i] != kSentinel)
        last = i + 1;
    return last;
  }
  /// TailIntact - nothing written past the size.
  bool TailIntact() const {
    for (size_t i = size_; i < units_.size(); ++i)
      if (units_[i] != kSentinel)
        return false;
    return true;
  }

private:
  static constexpr unsigned int kTail = 8;
  unsigned int size_;
  std::vector<wchar_t> units_;
};

} // namespace qxtest

#endif // QXUTIL_TESTS_TEXT_WIDE_TEST_SUPPORT_H
