// Scaffolding shared by the test binaries: the list of code pages (from
// common/code_pages.h), scoped thread and runtime locales, and a
// sentinel-filled buffer.
#ifndef QXUTIL_TESTS_COMMON_SCAFFOLD_H
#define QXUTIL_TESTS_COMMON_SCAFFOLD_H

#include "common/code_pages.h"
#include "qxutil/winlocale.h"

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <string>
#include <vector>

namespace qxtest {

/// ScopedThreadLocale - the calling thread's locale is `lcid` while alive.
class ScopedThreadLocale {
public:
  explicit ScopedThreadLocale(LCID lcid) : saved_(GetThreadLocale()) { SetThreadLocale(lcid); }
  ~ScopedThreadLocale() { SetThreadLocale(saved_); }
  ScopedThreadLocale(const ScopedThreadLocale&) = delete;
  ScopedThreadLocale& operator=(const ScopedThreadLocale&) = delete;

private:
  LCID saved_;
};

/// ScopedRuntimeLocale - the C runtime's `category` (LC_CTYPE unless told)
/// locale is `name` while alive (ok() says whether the machine has it).
class ScopedRuntimeLocale {
public:
  explicit ScopedRuntimeLocale(const char* name, int category = LC_CTYPE) : category_(category) {
    const char* old = std::setlocale(category, nullptr);
    saved_ = old ? old : "C";
    ok_ = std::setlocale(category, name) != nullptr;
  }
  ~ScopedRuntimeLocale() { std::setlocale(category_, saved_.c_str()); }
  ScopedRuntimeLocale(const ScopedRuntimeLocale&) = delete;
  ScopedRuntimeLocale& operator=(const ScopedRuntimeLocale&) = delete;
  bool ok() const { return ok_; }

private:
  int category_;
  std::string saved_;
  bool ok_;
};

/// Guarded - `size` elements for the code under test followed by a guard,
/// all pre-filled with `sentinel` (and, when given, `init` at the start: cut
/// to the size, terminated when it fits).
template <typename T> struct Guarded {
  Guarded(size_t size, T sentinel, const T* init = nullptr)
      : size(size), sentinel(sentinel), units(size + 16, sentinel) {
    for (size_t i = 0; init && i < size; ++i)
      if ((units[i] = init[i]) == 0)
        break;
  }
  T* data() { return units.data(); }
  /// UntouchedFrom - nothing at or after `from` was written.
  bool UntouchedFrom(size_t from) const {
    return std::all_of(units.begin() + static_cast<std::ptrdiff_t>(from), units.end(),
                       [this](T c) { return c == sentinel; });
  }
  /// TouchedUpTo - one past the last element written (that differs from
  /// the sentinel).
  size_t TouchedUpTo() const {
    size_t n = units.size();
    while (n > 0 && units[n - 1] == sentinel)
      --n;
    return n;
  }
  /// Text - what was written as a string: up to the terminator, or all
  /// `size` elements.
  std::basic_string<T> Text() const {
    size_t n = 0;
    while (n < size && units[n] != 0)
      ++n;
    return std::basic_string<T>(units.data(), n);
  }
  size_t size;
  T sentinel;
  std::vector<T> units;
};

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_SCAFFOLD_H
