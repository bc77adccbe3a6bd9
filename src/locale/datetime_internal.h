//===- locale/datetime_internal.h - Shared pieces of the tick classes -*- C++ -*-===//
//
// Tick arithmetic with overflow checks, clock literals, the fraction digits
// of the time pictures, and the readers of the string factories, shared by
// qxTimeSpan, qxTime and qxDateTime.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_LOCALE_DATETIME_INTERNAL_H
#define QXUTIL_LOCALE_DATETIME_INTERNAL_H

#include "locale/date_internal.h"

namespace qx::date {

/// The last tick of a day and of 31 December 9999.
constexpr long long kTimeMaxTicks = kTicksPerDay - 1;
constexpr long long kDateTimeMaxTicks = (kLastDayNumber + 1) * kTicksPerDay - 1;

/// AddTicks, MulTicks - a + b and a * b; false when the result leaves the
/// signed 64-bit range.
inline bool AddTicks(long long a, long long b, long long* out) {
  return !__builtin_add_overflow(a, b, out);
}
inline bool MulTicks(long long a, long long b, long long* out) {
  return !__builtin_mul_overflow(a, b, out);
}

/// Compose - days, hours, minutes, seconds, milliseconds and ticks summed
/// as ticks; false on overflow.
bool Compose(long long days, long long hours, long long minutes, long long seconds,
             long long milliseconds, long long ticks, long long* out);

/// ClockParts - the parts of a clock literal HHMMSSfffffff (truncating, so
/// a negative clock has parts <= 0).
struct ClockParts {
  long long hours, minutes, seconds, ticks;
};
ClockParts SplitClock(long long clock);
/// ClockOfDay - a clock literal as ticks since midnight; false for a part
/// out of range (hours 0..23, minutes and seconds 0..59, a negative clock).
bool ClockOfDay(long long clock, long long* ticks);
/// MakeClock - the clock literal of parts.
long long MakeClock(long long hours, long long minutes, long long seconds, long long ticks);

/// ScaleToTicks - value * unit truncated toward zero, when it is a number
/// within min..max.
bool ScaleToTicks(double value, long long unit, long long min, long long max, long long* out);

/// PutFractionDigits - replaces each "f" of `text`, left to right, by the
/// next digit of `fraction` printed with "%07d"; an eighth "f" receives the
/// terminator and so ends the text.
void PutFractionDigits(wchar_t* text, int fraction);

/// DateTicks - the first tick of `date`; false unless it is a valid date
/// of year 1 or later.
bool DateTicks(const qxDATE* date, long long* ticks);

/// Readers of the string factories (and the Parse operations).
bool ReadTimeText(const wchar_t* text, long long* ticks);
bool ReadSpanText(const wchar_t* text, long long* ticks);
bool ReadDateTimeText(const wchar_t* text, long long* ticks);

/// CompareTicks - QX_CMP of two objects by their tick counts, null first.
template <class T> QX_CMP CompareTicks(const T* a, const T* b) {
  if (!a || !b)
    return a == b ? QX_CMP_EQUAL : QX_CMP_NULL;
  long long x = a->Ticks(), y = b->Ticks();
  return x > y ? QX_CMP_GREATER : x < y ? QX_CMP_LESS : QX_CMP_EQUAL;
}

} // namespace qx::date

#endif // QXUTIL_LOCALE_DATETIME_INTERNAL_H
