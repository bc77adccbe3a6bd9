//===- platform/date_format.h - Date and time pictures ----------*- C++ -*-===//
//
// Provides: GetDateFormatW and GetTimeFormatW over the built-in locale
// database (declared with Windows' signatures below).
//
// Date pictures: d dd ddd dddd (day, day names), M MM MMM MMMM (month, month
// names), y (last digit of the year), yy (last two digits), yyy and longer
// (the whole year), g gg (era), 'quoted text' ('' is one quote). Time
// pictures: h hh (12-hour clock), H HH (24-hour), m mm, s ss, t (first
// character of the AM/PM designator), tt (the designator). Any other
// character is copied. A date picture copies time letters and the other way
// round.
//
// Failures as Windows: 0 with ERROR_INVALID_PARAMETER (unknown locale, a date
// outside 1601..30827 or not a calendar day, a time field out of range, a bad
// buffer argument), ERROR_INVALID_FLAGS (unknown or conflicting flags),
// ERROR_INSUFFICIENT_BUFFER (nothing is written then). A size of 0 returns
// the length needed, terminator included.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_DATE_FORMAT_H
#define QXUTIL_PLATFORM_DATE_FORMAT_H

#include "qxutil/wintypes.h"

namespace qx::win {

int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* date, LPCWSTR format, LPWSTR out,
                   int size);
int GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* time, LPCWSTR format, LPWSTR out,
                   int size);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_DATE_FORMAT_H
