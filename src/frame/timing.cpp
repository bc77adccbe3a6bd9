//===- frame/timing.cpp - Hundredths of a second, local date and time -----===//
//
// time_100 follows the 32-bit millisecond tick count, so it wraps with it
// (after 429,496,729 hundredths). Sleep100 is a deliberate busy-wait: its
// callers want the processor kept, not a scheduler delay.
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

#include "platform/clock.h"

#include <cmath>

using namespace qx::win;

namespace {
// time_100 runs from 0 to this value and then starts again at 0.
constexpr long kTime100Period = 0xFFFFFFFFL / 10 + 1;
} // namespace

long time_100() { return static_cast<long>(GetTickCount() / 10); }

long DoubleClickTime_100() { return static_cast<long>(GetDoubleClickTime() / 10); }

void Sleep100(double hundredths) {
  if (!(hundredths >= 1))
    return; // zero, negative or NaN
  const double whole = std::trunc(hundredths);
  const long wait = whole >= kTime100Period ? kTime100Period - 1 : static_cast<long>(whole);
  const long start = time_100();
  for (;;) {
    long elapsed = time_100() - start;
    if (elapsed < 0)
      elapsed += kTime100Period; // the tick count wrapped
    if (elapsed >= wait)
      return;
  }
}

void GetDateTime(SYSTEMTIME* time) { GetLocalTime(time); }

BOOL SetDateTime(SYSTEMTIME* time) {
  // Windows applies the daylight-saving adjustment of the new time only on
  // the second call, so both are needed.
  SetLocalTime(time);
  return SetLocalTime(time);
}
