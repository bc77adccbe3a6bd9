//===- platform/clock.h - Tick count, local time, double-click time -*- C++ -*-===//
//
// Provides: GetTickCount (CLOCK_MONOTONIC in milliseconds, truncated to 32
// bits so that it wraps after 49.7 days as Windows' does), GetLocalTime and
// SetLocalTime (the realtime clock through localtime_r / mktime /
// clock_settime), and GetDoubleClickTime (no pointer device here: Windows'
// default of 500 milliseconds).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CLOCK_H
#define QXUTIL_PLATFORM_CLOCK_H

#include "qxutil/wintypes.h"

namespace qx::win {

/// GetTickCount - milliseconds since an arbitrary start, modulo 2^32.
DWORD GetTickCount();

/// GetLocalTime - the current local date and time (the process's time
/// zone); wDayOfWeek 0 is Sunday. Null does nothing.
void GetLocalTime(SYSTEMTIME* time);

/// SetLocalTime - sets the system clock to a local date and time.
/// wDayOfWeek is ignored. FALSE with ERROR_INVALID_PARAMETER for a null
/// pointer or a field out of range (years 1601..30827, a real calendar
/// day), with ERROR_PRIVILEGE_NOT_HELD when the process may not set the
/// clock.
BOOL SetLocalTime(const SYSTEMTIME* time);

/// GetDoubleClickTime - the double-click interval in milliseconds: 500,
/// Windows' default, as there is no pointer device to ask.
UINT GetDoubleClickTime();

} // namespace qx::win

struct tm;

namespace qx::platform {

/// FillSystemTime - a SYSTEMTIME from a broken-down local time and the
/// nanoseconds of its second (a leap second reads as second 59).
void FillSystemTime(const struct tm& local, long nanoseconds, SYSTEMTIME* out);

/// ClockSetHook - a test seam: while installed on the calling thread,
/// SetLocalTime hands the seconds and nanoseconds since 1970 (UTC) to the
/// hook instead of the kernel and treats its result as clock_settime's (0
/// success, else an errno value). Null restores the kernel call. Tests use
/// it so that the machine's clock is never changed.
using ClockSetHook = int (*)(long long seconds, long nanoseconds);
void SetThreadClockSetHook(ClockSetHook hook);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_CLOCK_H
