// Helpers shared by the number tests: a runtime numeric locale for the
// calling thread, and sentinel-filled buffers.
#ifndef QXUTIL_TESTS_LOCALE_NUMBER_FIXTURE_H
#define QXUTIL_TESTS_LOCALE_NUMBER_FIXTURE_H

#include "platform/crt_number.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qxtest {

/// RuntimeNumericLocale - while alive, the calling thread's C runtime
/// numeric locale reads as `name` with decimal point `point` (the machine
/// need not have the locale installed).
class RuntimeNumericLocale {
public:
  RuntimeNumericLocale(const char* name, wchar_t point) {
    qx::platform::SetThreadNumericLocaleOverride(name, point);
  }
  ~RuntimeNumericLocale() { qx::platform::SetThreadNumericLocaleOverride(nullptr, 0); }
};

constexpr wchar_t kSentinel = L'\x7E57';

/// Sentinelled - a buffer of `size` units plus guard units, all sentinel.
struct Sentinelled {
  explicit Sentinelled(size_t size) : size(size), units(size + 8, kSentinel) {}
  wchar_t* data() { return units.data(); }
  unsigned int usable() const { return static_cast<unsigned int>(size); }
  /// True when nothing at or past `from` (default: the stated size) was
  /// touched.
  bool UntouchedFrom(size_t from) const {
    return std::all_of(units.begin() + static_cast<long>(from), units.end(),
                       [](wchar_t c) { return c == kSentinel; });
  }
  bool GuardIntact() const { return UntouchedFrom(size); }
  size_t size;
  std::vector<wchar_t> units;
};

} // namespace qxtest

#endif
