// Helpers of the date tests: a pinned thread locale and clock.
#ifndef QXUTIL_TESTS_LOCALE_DATE_TEST_SUPPORT_H
#define QXUTIL_TESTS_LOCALE_DATE_TEST_SUPPORT_H

#include "common/thread_runner.h"
#include "platform/time32.h"
#include "qxutil/locale.h"

#include <chrono>
#include <string>

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

inline std::wstring DateText(const qxDATE& d) {
  return std::to_wstring(d.year) + L"-" + std::to_wstring(d.month) + L"-" + std::to_wstring(d.day);
}

} // namespace qxtest

#endif
