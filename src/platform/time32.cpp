// Provides: _time32, _localtime32 (Microsoft's 32-bit time calls) and the local time now.
#include "platform/time32.h"

#include "platform/clock.h"

#include <climits>
#include <ctime>

using namespace qx::win;

namespace {

struct ThreadClock {
  bool overridden = false;
  qx::platform::TimeSource source{};
};

thread_local ThreadClock gClock;
thread_local struct tm gLocal; // _localtime32's per-thread result, as the runtime's

// Now - seconds and nanoseconds since 1970 (UTC) from the source in force.
bool Now(long long* seconds, long* nanoseconds) {
  if (gClock.overridden) {
    *seconds = gClock.source.utcSeconds;
    *nanoseconds = gClock.source.nanoseconds;
    return true;
  }
  timespec ts{};
  if (clock_gettime(CLOCK_REALTIME, &ts) != 0)
    return false;
  *seconds = ts.tv_sec;
  *nanoseconds = ts.tv_nsec;
  return true;
}

// ToLocal - `seconds` as local time in the zone in force.
bool ToLocal(long long seconds, struct tm* out) {
  if (gClock.overridden) {
    time_t shifted = static_cast<time_t>(seconds + gClock.source.utcOffsetSeconds);
    return gmtime_r(&shifted, out) != nullptr;
  }
  time_t t = static_cast<time_t>(seconds);
  return localtime_r(&t, out) != nullptr;
}

} // namespace

__time32_t qx::win::_time32(__time32_t* out) {
  long long seconds = 0;
  long nanoseconds = 0;
  __time32_t result = -1;
  if (Now(&seconds, &nanoseconds) && seconds >= 0 && seconds <= INT32_MAX)
    result = static_cast<__time32_t>(seconds);
  if (out)
    *out = result;
  return result;
}

struct tm* qx::win::_localtime32(const __time32_t* time) {
  if (!time || *time < 0)
    return nullptr;
  return ToLocal(*time, &gLocal) ? &gLocal : nullptr;
}

namespace qx::platform {

void SetThreadTimeSource(const TimeSource* source) {
  gClock.overridden = source != nullptr;
  gClock.source = source ? *source : TimeSource{};
}

bool CurrentLocalTime(SYSTEMTIME* out) {
  long long seconds = 0;
  long nanoseconds = 0;
  struct tm local {};
  if (!out || !Now(&seconds, &nanoseconds) || !ToLocal(seconds, &local))
    return false;
  if (local.tm_year + 1900 < 1 || local.tm_year + 1900 > 30827)
    return false;
  FillSystemTime(local, nanoseconds, out);
  return true;
}

} // namespace qx::platform
