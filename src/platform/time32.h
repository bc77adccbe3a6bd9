//===- platform/time32.h - The 32-bit C-runtime clock -----------*- C++ -*-===//
//
// Provides: _time32 and _localtime32 with the Microsoft runtime's 32-bit
// contract (-1 and null past 03:14:07 UTC on 19 January 2038), and the
// local time now to the millisecond, with a per-thread test time source.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_TIME32_H
#define QXUTIL_PLATFORM_TIME32_H

#include "qxutil/wintypes.h"

#include <cstdint>
#include <ctime>

namespace qx::win {

/// _time32 - seconds since 1970-01-01 00:00:00 UTC, also stored in *out
/// when `out` is not null; -1 when the clock is outside 0..2147483647
/// (past 03:14:07 UTC on 19 January 2038).
__time32_t _time32(__time32_t* out);

/// _localtime32 - *time as local time in a buffer of the calling thread
/// (overwritten by the next call on it); null for a null pointer or a
/// negative time (which includes _time32's -1).
struct tm* _localtime32(const __time32_t* time);

} // namespace qx::win

namespace qx::platform {

/// TimeSource - a test seam: while installed on the calling thread, the
/// clock reads `utcSeconds` (and `nanoseconds`) since 1970 instead of the
/// system's, and local time is UTC plus `utcOffsetSeconds` (no daylight
/// saving) instead of the process's time zone. Tests use it so that they
/// depend on neither the machine's clock nor its zone.
struct TimeSource {
  long long utcSeconds;
  long nanoseconds;
  int utcOffsetSeconds;
};

/// SetThreadTimeSource - installs a copy of *source for the calling thread;
/// null restores the system clock and zone.
void SetThreadTimeSource(const TimeSource* source);

/// CurrentLocalTime - the local date and time now, to the millisecond
/// (wDayOfWeek 0 is Sunday). False when the local time cannot be had.
bool CurrentLocalTime(SYSTEMTIME* out);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_TIME32_H
