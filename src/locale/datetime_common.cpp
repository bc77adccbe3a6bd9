//===- locale/datetime_common.cpp - Ticks, clocks and the text readers ----===//
#include "locale/datetime_internal.h"
#include "qxutil/text.h"

#include <cmath>
#include <cstdio>
#include <cwchar>

namespace qx::date {

namespace {

constexpr size_t kTextCopy = 256; // units of text the string readers look at

// Trimmed - at most kTextCopy units of `text`, trimmed at both ends, into
// `work` (kTextCopy + 1 units).
void Trimmed(const wchar_t* text, wchar_t* work) {
  strcpyn(work, text, kTextCopy + 1);
  ltrim(work);
  rtrim(work);
}

// TimeTicks - hours, minutes and seconds (with a fraction) of a day
// as ticks, the fraction rounded to the nearest tick; false at 24:00.
bool TimeTicks(int hours, int minutes, double seconds, long long* ticks) {
  long long t = hours * kTicksPerHour + minutes * kTicksPerMinute + std::llround(seconds * 1e7);
  if (t < 0 || t > kTimeMaxTicks)
    return false;
  *ticks = t;
  return true;
}

} // namespace

bool Compose(long long days, long long hours, long long minutes, long long seconds,
             long long milliseconds, long long ticks, long long* out) {
  const long long parts[5][2] = {{days, kTicksPerDay},
                                 {hours, kTicksPerHour},
                                 {minutes, kTicksPerMinute},
                                 {seconds, kTicksPerSecond},
                                 {milliseconds, kTicksPerMillisecond}};
  long long sum = ticks;
  for (const auto& part : parts) {
    long long product = 0;
    if (!MulTicks(part[0], part[1], &product) || !AddTicks(sum, product, &sum))
      return false;
  }
  *out = sum;
  return true;
}

ClockParts SplitClock(long long clock) {
  return ClockParts{clock / 100000000000LL, (clock / 1000000000LL) % 100,
                    (clock / kTicksPerSecond) % 100, clock % kTicksPerSecond};
}

bool ClockOfDay(long long clock, long long* ticks) {
  if (clock < 0)
    return false;
  ClockParts p = SplitClock(clock);
  if (p.hours > 23 || p.minutes > 59 || p.seconds > 59)
    return false;
  return Compose(0, p.hours, p.minutes, p.seconds, 0, p.ticks, ticks);
}

long long MakeClock(long long hours, long long minutes, long long seconds, long long ticks) {
  return (hours * 100 + minutes) * 1000000000LL + seconds * kTicksPerSecond + ticks;
}

bool ScaleToTicks(double value, long long unit, long long min, long long max, long long* out) {
  double ticks = value * static_cast<double>(unit);
  // 2^63 is exact as a double; the comparisons are false for a NaN.
  if (!(ticks >= -9223372036854775808.0 && ticks < 9223372036854775808.0))
    return false;
  long long t = static_cast<long long>(ticks);
  if (t < min || t > max)
    return false;
  *out = t;
  return true;
}

void PutFractionDigits(wchar_t* text, int fraction) {
  wchar_t digits[16];
  std::swprintf(digits, 16, L"%07d", fraction);
  int used = 0;
  for (wchar_t* p = text; *p && used < 8; ++p) {
    if (*p != L'f')
      continue;
    *p = digits[used++];
    if (*p == 0)
      break;
  }
}

bool DateTicks(const qxDATE* date, long long* ticks) {
  if (!IsValidDate(date) || date->year < 1)
    return false;
  *ticks = MDY2Days(date) * kTicksPerDay;
  return true;
}

bool ReadTimeText(const wchar_t* text, long long* ticks) {
  int hours = 0, minutes = 0;
  double seconds = 0;
  return ParseTimeString(text, &hours, &minutes, &seconds) &&
         TimeTicks(hours, minutes, seconds, ticks);
}

bool ReadSpanText(const wchar_t* text, long long* ticks) {
  if (!text)
    return false;
  // [+|-] and 14 digits or more: days, then the clock literal.
  const wchar_t* digits = text + (text[0] == L'+' || text[0] == L'-');
  size_t n = std::wcslen(digits);
  if (n >= 14 && AllDigits(digits, n)) {
    wchar_t dayText[kTextCopy + 1];
    if (n - 13 > kTextCopy)
      return false;
    strcpyn(dayText, digits, static_cast<unsigned int>(n - 13 + 1));
    long days = 0;
    long long clock = 0;
    if (!StringToLong(dayText, &days, nullptr, -2147483647L - 1, 2147483647L) ||
        !StringToInt64(digits + n - 13, &clock))
      return false;
    if (text[0] == L'-')
      days = -days, clock = -clock;
    ClockParts p = SplitClock(clock);
    return Compose(days, p.hours, p.minutes, p.seconds, 0, p.ticks, ticks);
  }
  // [+|-][days. | days blanks]time
  wchar_t work[kTextCopy + 1];
  Trimmed(text, work);
  const wchar_t* p = work;
  bool negative = *p == L'-';
  if (*p == L'-' || *p == L'+')
    ++p;
  long long days = 0, time = 0;
  if (!ReadTimeText(p, &time)) {
    const wchar_t* q = p;
    while (*q >= L'0' && *q <= L'9')
      ++q;
    if (q == p || (*q != L'.' && !IsBlank(*q)) || q - p > 9)
      return false;
    days = std::wcstoll(p, nullptr, 10);
    if (!ReadTimeText(q + 1, &time))
      return false;
  }
  long long total = 0;
  if (!Compose(days, 0, 0, 0, 0, time, &total))
    return false;
  *ticks = negative ? -total : total;
  return true;
}

bool ReadDateTimeText(const wchar_t* text, long long* ticks) {
  if (!text)
    return false;
  wchar_t work[kTextCopy + 1];
  Trimmed(text, work);
  if (std::wcslen(work) == 21 && AllDigits(work, 21)) {
    wchar_t dateDigits[9];
    strcpyn(dateDigits, work, 9);
    long long date = std::wcstoll(dateDigits, nullptr, 10);
    long long clock = std::wcstoll(work + 8, nullptr, 10);
    qxDATE d;
    long long day = 0, time = 0;
    return LiteralFields(static_cast<long>(date), &d, true) && DateTicks(&d, &day) &&
           ClockOfDay(clock, &time) && AddTicks(day, time, ticks);
  }
  size_t split = std::wcscspn(work, L" \t");
  wchar_t datePart[kTextCopy + 1];
  strcpyn(datePart, work, static_cast<unsigned int>(split + 1));
  qxDATE date;
  long long day = 0, time = 0;
  if (!Str2Date(datePart, &date) || !DateTicks(&date, &day))
    return false;
  if (work[split] != 0 && !ReadTimeText(work + split, &time))
    return false;
  return AddTicks(day, time, ticks);
}

} // namespace qx::date
