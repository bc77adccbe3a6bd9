//===- locale/date_internal.h - Shared pieces of the date functions -*- C++ -*-===//
//
// Month lengths, the two-digit-year rule, blank skipping and the date
// settings in force, shared by the date parsers, the picture functions and
// the date-time objects.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_LOCALE_DATE_INTERNAL_H
#define QXUTIL_LOCALE_DATE_INTERNAL_H

#include "qxutil/locale.h"

namespace qx::date {

constexpr long long kTicksPerMillisecond = 10000;
constexpr long long kTicksPerSecond = 10000000;
constexpr long long kTicksPerMinute = 600000000;
constexpr long long kTicksPerHour = 36000000000;
constexpr long long kTicksPerDay = 864000000000;
/// The last day number of the calendar (31 December 9999).
constexpr long kLastDayNumber = 3652058;

inline bool IsLeapYear(long year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

/// MonthLength - days in `month` (1..12) of `year`.
int MonthLength(long year, int month);

/// IsBlank - the blanks skipped between the parts of a date or time: space
/// and tab.
inline bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t'; }
inline const wchar_t* SkipBlanks(const wchar_t* p) {
  while (IsBlank(*p))
    ++p;
  return p;
}

/// CurrentYear - SystemDate's year (2038 when the clock cannot say).
int CurrentYear();

/// ApplyTwoDigitYearRule - below 0 => 0, 0..99 in the current century (no
/// pivot), 100..9999 kept, above 9999 => 0.
long ApplyTwoDigitYearRule(long year);

/// DateSettingsSystemFlag - the system flag that the date format callback
/// chooses: true (the thread locale) without a callback, else the negation
/// of its answer.
bool DateSettingsSystemFlag();

/// LiteralFields - splits a date literal without checking or reporting;
/// true when it is a valid date (of year 1 or later when `fromYearOne`).
bool LiteralFields(long literal, qxDATE* date, bool fromYearOne);

/// AllDigits - true when `text` has exactly `count` units, all ASCII
/// digits.
bool AllDigits(const wchar_t* text, size_t count);

} // namespace qx::date

#endif // QXUTIL_LOCALE_DATE_INTERNAL_H
