// Provides: GetTickCount, GetLocalTime, SetLocalTime, GetDoubleClickTime (clock_gettime, mktime).
#include "platform/clock.h"

#include <cerrno>
#include <ctime>

namespace {
thread_local qx::platform::ClockSetHook tClockSetHook = nullptr;

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInMonth(int year, int month) {
  static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}
} // namespace

DWORD qx::win::GetTickCount() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  unsigned long long ms = static_cast<unsigned long long>(now.tv_sec) * 1000u +
                          static_cast<unsigned long long>(now.tv_nsec) / 1000000u;
  return static_cast<DWORD>(ms);
}

void qx::win::GetLocalTime(SYSTEMTIME* time) {
  if (!time)
    return;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  time_t seconds = now.tv_sec;
  localtime_r(&seconds, &local);
  qx::platform::FillSystemTime(local, now.tv_nsec, time);
}

BOOL qx::win::SetLocalTime(const SYSTEMTIME* time) {
  if (!time || time->wYear < 1601 || time->wYear > 30827 || time->wMonth < 1 || time->wMonth > 12 ||
      time->wDay < 1 || time->wDay > DaysInMonth(time->wYear, time->wMonth) || time->wHour > 23 ||
      time->wMinute > 59 || time->wSecond > 59 || time->wMilliseconds > 999) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  tm local{};
  local.tm_year = time->wYear - 1900;
  local.tm_mon = time->wMonth - 1;
  local.tm_mday = time->wDay;
  local.tm_hour = time->wHour;
  local.tm_min = time->wMinute;
  local.tm_sec = time->wSecond;
  local.tm_isdst = -1;
  time_t seconds = mktime(&local);
  if (seconds == static_cast<time_t>(-1)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  long nanoseconds = static_cast<long>(time->wMilliseconds) * 1000000L;
  int error;
  if (tClockSetHook) {
    error = tClockSetHook(static_cast<long long>(seconds), nanoseconds);
  } else {
    timespec value{seconds, nanoseconds};
    error = clock_settime(CLOCK_REALTIME, &value) == 0 ? 0 : errno;
  }
  if (error != 0) {
    SetLastError(error == EPERM ? ERROR_PRIVILEGE_NOT_HELD : ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  return TRUE;
}

UINT qx::win::GetDoubleClickTime() { return 500; }

namespace qx::platform {

void SetThreadClockSetHook(ClockSetHook hook) { tClockSetHook = hook; }

void FillSystemTime(const struct tm& local, long nanoseconds, SYSTEMTIME* out) {
  out->wYear = static_cast<WORD>(local.tm_year + 1900);
  out->wMonth = static_cast<WORD>(local.tm_mon + 1);
  out->wDayOfWeek = static_cast<WORD>(local.tm_wday);
  out->wDay = static_cast<WORD>(local.tm_mday);
  out->wHour = static_cast<WORD>(local.tm_hour);
  out->wMinute = static_cast<WORD>(local.tm_min);
  out->wSecond = static_cast<WORD>(local.tm_sec > 59 ? 59 : local.tm_sec);
  out->wMilliseconds = static_cast<WORD>(nanoseconds / 1000000);
}

} // namespace qx::platform
