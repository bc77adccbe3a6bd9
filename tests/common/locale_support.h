// Helpers of the locale tests: a fresh thread with a pinned locale and clock,
// the calling thread's runtime numeric locale, and a guarded text buffer.
#ifndef QXUTIL_TESTS_COMMON_LOCALE_SUPPORT_H
#define QXUTIL_TESTS_COMMON_LOCALE_SUPPORT_H

#include "common/scaffold.h"
#include "common/thread_runner.h"
#include "platform/crt_number.h"
#include "platform/time32.h"
#include "qxutil/locale.h"

#include <chrono>

namespace qxtest {

/// UtcSeconds - seconds since 1970 of a UTC date and time.
inline long long UtcSeconds(int y, unsigned m, unsigned d, int hour = 12) {
  using namespace std::chrono;
  return sys_days{year{y} / month{m} / day{d}}.time_since_epoch().count() * 86400LL + hour * 3600;
}

/// OnPinnedThread - runs `fn` on a new thread whose locale is `lcid` and
/// whose clock reads `now` (UTC, zone offset 0): by default 15 March 2026.
template <class Fn>
void OnPinnedThread(LCID lcid, Fn&& fn, long long now = UtcSeconds(2026, 3, 15)) {
  RunOnNewThread([&] {
    SetThreadLocale(lcid);
    qx::platform::TimeSource source{now, 0, 0};
    qx::platform::SetThreadTimeSource(&source);
    fn();
    qx::platform::SetThreadTimeSource(nullptr);
  });
}

/// RuntimeNumericLocale - while alive, the calling thread's C runtime
/// numeric locale reads as `name` with decimal point `point` (the machine
/// need not have the locale installed).
class RuntimeNumericLocale {
public:
  RuntimeNumericLocale(const char* name, wchar_t point) {
    qx::platform::SetThreadNumericLocaleOverride(name, point);
  }
  ~RuntimeNumericLocale() { qx::platform::SetThreadNumericLocaleOverride(nullptr, 0); }
  RuntimeNumericLocale(const RuntimeNumericLocale&) = delete;
  RuntimeNumericLocale& operator=(const RuntimeNumericLocale&) = delete;
};

/// TextBuffer - `size` units for the call, then a guard; all sentinel.
struct TextBuffer : Guarded<wchar_t> {
  explicit TextBuffer(size_t size) : Guarded(size, L'\x7E57') {}
  unsigned int usable() const { return static_cast<unsigned int>(size); }
  /// GuardIntact - nothing was written past the size.
  bool GuardIntact() const { return UntouchedFrom(size); }
};

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_LOCALE_SUPPORT_H
