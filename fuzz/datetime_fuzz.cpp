// Fuzz target for the time and date-time readers: ParseTimeString,
// CreateTimeSpanFromString, CreateTimeFromString and
// CreateDateTimeFromString. Checks the ranges of every result and that a
// span read back from its own text (with the day separator) is the same.
// The first bytes also make spans, a time of day and a date-time, whose
// parts, literals and order must agree with their ticks, and parts and
// counts for every factory, whose results must be the exact sums (null out
// of range), and a span whose default text must be the reference one.
#include "platform/time32.h"
#include "qxutil/locale.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

constexpr long long kSecond = 10000000, kMinute = 60 * kSecond, kHour = 60 * kMinute;
constexpr long long kDay = 24 * kHour, kMaxDateTime = 3155378975999999999LL;

// Sign - -1, 0 or 1.
int Sign(long long v) { return (v > 0) - (v < 0); }

// CheckParts - a span's parts truncate toward zero: each has the span's sign
// (or is 0), stays within its unit, and together they make the ticks.
void CheckParts(const qxTimeSpan& s) {
  const long long t = s.Ticks();
  const int parts[] = {s.Days(), s.Hours(), s.Minutes(), s.Seconds(), s.FractionTicks()};
  for (int part : parts)
    Check(Sign(part) == 0 || Sign(part) == Sign(t));
  Check(std::abs(parts[1]) < 24 && std::abs(parts[2]) < 60 && std::abs(parts[3]) < 60 &&
        std::abs(parts[4]) < kSecond && s.Milliseconds() == parts[4] / 10000);
  // In unsigned arithmetic: LLONG_MIN's days times kDay alone would overflow.
  Check(static_cast<unsigned long long>(parts[0]) * kDay + parts[1] * kHour + parts[2] * kMinute +
            parts[3] * kSecond + parts[4] ==
        static_cast<unsigned long long>(t));
}

// CheckObjects - a span, a time of day and a date-time made from ticks
// `a` (and a span from `b`): parts, literals read back, and order.
void CheckObjects(long long a, long long b) {
  std::unique_ptr<qxTimeSpan> span(CreateTimeSpan(a)), other(CreateTimeSpan(b));
  CheckParts(*span);
  int days = 0;
  long long clock = 0;
  Check(span->Literal(&days, &clock) && days == a / kDay &&
        clock == (a % kDay / kHour * 100 + a % kHour / kMinute) * 1000000000LL + a % kMinute);
  std::unique_ptr<qxTimeSpan> back(CreateTimeSpanFromLiteral(days, clock));
  Check(back && back->Ticks() == a);
  Check(qxTimeSpan::Compare(span.get(), other.get()) == (a < b   ? QX_CMP_LESS
                                                         : a > b ? QX_CMP_GREATER
                                                                 : QX_CMP_EQUAL));
  const long long inDay = static_cast<long long>(static_cast<unsigned long long>(a) % kDay);
  // The tick factories refuse what lies outside the day or the calendar.
  std::unique_ptr<qxTime> any(CreateTime(a));
  std::unique_ptr<qxDateTime> anyDateTime(CreateDateTime(a));
  Check((any != nullptr) == (a >= 0 && a < kDay) &&
        (anyDateTime != nullptr) == (a >= 0 && a <= kMaxDateTime));
  std::unique_ptr<qxTime> time(CreateTime(inDay));
  Check(time && time->Hours() * kHour + time->Minutes() * kMinute + time->Seconds() * kSecond +
                        time->FractionTicks() ==
                    inDay);
  std::unique_ptr<qxTime> timeBack(CreateTimeFromLiteral(time->Literal()));
  Check(timeBack && timeBack->Ticks() == inDay);
  const long long at =
      static_cast<long long>(static_cast<unsigned long long>(a) % (kMaxDateTime + 1));
  std::unique_ptr<qxDateTime> dateTime(CreateDateTime(at));
  Check(dateTime && IsValidDate(dateTime->Date()));
  long date = 0;
  Check(dateTime->Literal(&date, &clock));
  std::unique_ptr<qxDateTime> dateTimeBack(CreateDateTimeFromLiteral(date, clock));
  Check(dateTimeBack && dateTimeBack->Ticks() == at);
  Check(dateTime->DayNumber() * kDay + dateTime->Hours() * kHour == at - at % kHour);
}

// CheckArithmetic - span, time-of-day and date-time arithmetic on ticks `a`
// and `b` against exact 128-bit sums: a result out of range is refused and
// leaves the object as it was; AddMonths keeps the day or the month's last.
void CheckArithmetic(long long a, long long b, int months) {
  using int128 = __int128;
  auto fits = [](int128 v, int128 high) {
    return v >= (high == LLONG_MAX ? LLONG_MIN : 0) && v <= high;
  };
  // Step - one call on a fresh object of ticks `from`: it must give the
  // exact result `to` when that lies in the object's range (up to `high`,
  // from the most negative span or from 0), else refuse.
  auto step = [&](auto make, long long from, int128 to, int128 high, auto call) {
    std::unique_ptr<std::remove_pointer_t<decltype(make(0LL))>> x(make(from));
    Check(x != nullptr);
    const bool ok = fits(to, high);
    Check(call(x.get()) == ok && x->Ticks() == (ok ? static_cast<long long>(to) : from));
  };
  std::unique_ptr<qxTimeSpan> span(CreateTimeSpan(b));
  auto makeSpan = [](long long t) { return CreateTimeSpan(t); };
  step(makeSpan, a, int128{a} + b, LLONG_MAX, [&](qxTimeSpan* x) { return x->Add(span.get()); });
  step(makeSpan, a, int128{a} - b, LLONG_MAX,
       [&](qxTimeSpan* x) { return x->Subtract(span.get()); });
  step(makeSpan, a, -int128{a}, LLONG_MAX, [](qxTimeSpan* x) { return x->Negate(); });
  step(makeSpan, a, a < 0 ? -int128{a} : a, LLONG_MAX, [](qxTimeSpan* x) { return x->Duration(); });

  // A span of at most two days either way, so that times of day often stay.
  const long long shortTicks = b % (2 * kDay);
  std::unique_ptr<qxTimeSpan> shortSpan(CreateTimeSpan(shortTicks));
  const long long inDay = static_cast<long long>(static_cast<unsigned long long>(a) % kDay);
  auto makeTime = [](long long t) { return CreateTime(t); };
  step(makeTime, inDay, int128{inDay} + shortTicks, kDay - 1,
       [&](qxTime* x) { return x->Add(shortSpan.get()); });
  step(makeTime, inDay, int128{inDay} - shortTicks, kDay - 1,
       [&](qxTime* x) { return x->Subtract(shortSpan.get()); });

  const long long at =
      static_cast<long long>(static_cast<unsigned long long>(a) % (kMaxDateTime + 1));
  auto makeDateTime = [](long long t) { return CreateDateTime(t); };
  step(makeDateTime, at, int128{at} + b, kMaxDateTime,
       [&](qxDateTime* x) { return x->Add(span.get()); });
  step(makeDateTime, at, int128{at} - b, kMaxDateTime,
       [&](qxDateTime* x) { return x->Subtract(span.get()); });
  using namespace std::chrono;
  static const sys_days epoch{year{1} / January / 1};
  const year_month_day ymd{epoch + days{at / kDay}};
  const long long target = int{ymd.year()} * 12LL + unsigned{ymd.month()} - 1 + months;
  const year_month last =
      year{static_cast<int>(target / 12)} / month{static_cast<unsigned>(target % 12 + 1)};
  const unsigned day = std::min(unsigned{ymd.day()}, unsigned{(last / std::chrono::last).day()});
  const long long moved = (sys_days{last / day} - epoch).count() * kDay + at % kDay;
  step(makeDateTime, at, target >= 12 && target < 120000 ? int128{moved} : int128{-1}, kMaxDateTime,
       [&](qxDateTime* x) { return x->AddMonths(months); });
}

// Composed - days, hours, minutes, seconds and milliseconds summed in ticks
// in that order after `ticks`; false when a product or a sum leaves 64 bits.
bool Composed(long long ticks, const long long (&parts)[5], long long* out) {
  static const long long kUnits[] = {kDay, kHour, kMinute, kSecond, 10000};
  __int128 sum = ticks;
  for (int i = 0; i < 5; ++i) {
    const __int128 product = __int128{parts[i]} * kUnits[i];
    sum += product;
    if (product < LLONG_MIN || product > LLONG_MAX || sum < LLONG_MIN || sum > LLONG_MAX)
      return false;
  }
  *out = static_cast<long long>(sum);
  return true;
}

// Same - an object made by a factory has `ticks`, or there is none.
template <class T> void Same(T* made, bool ok, long long ticks) {
  std::unique_ptr<T> owned(made);
  Check(ok ? owned && owned->Ticks() == ticks : !owned);
}

// Clock - the clock literal HHMMSSfffffff of signed parts.
long long Clock(long long h, long long m, long long s, long long f) {
  return (h * 100 + m) * 1000000000LL + s * kSecond + f;
}

// CheckFactories - every factory on parts `p` (days, hours, minutes,
// seconds, milliseconds), a clock literal and a count `v`.
void CheckFactories(const long long (&p)[5], long long clock, double v) {
  long long t = 0;
  bool ok = Composed(0, p, &t);
  Same(CreateTimeSpan(int(p[0]), int(p[1]), int(p[2]), int(p[3]), int(p[4])), ok, t);
  std::unique_ptr<qxTimeSpan> span(CreateTimeSpan(7LL));
  Check(span->Set(int(p[0]), int(p[1]), int(p[2]), int(p[3]), int(p[4])) == ok &&
        span->Ticks() == (ok ? t : 7));
  ok = Composed(0, {p[0], p[1], p[2], p[3], 0}, &t);
  Same(CreateTimeSpan(int(p[0]), int(p[1]), int(p[2]), int(p[3])), ok, t);
  ok = Composed(0, {0, p[1], p[2], p[3], 0}, &t);
  Same(CreateTimeSpan(int(p[1]), int(p[2]), int(p[3])), ok, t);

  // A time of day takes parts within their units; a date-time a date of
  // year 1 on as well.
  const bool clockParts =
      p[1] >= 0 && p[1] < 24 && p[2] >= 0 && p[2] < 60 && p[3] >= 0 && p[3] < 60;
  const bool inDay = clockParts && p[4] >= 0 && p[4] < 1000;
  Composed(0, {0, p[1], p[2], p[3], 0}, &t);
  Same(CreateTime(int(p[1]), int(p[2]), int(p[3])), clockParts, t);
  t += p[4] * 10000;
  std::unique_ptr<qxTime> time(CreateTime(int(p[1]), int(p[2]), int(p[3]), int(p[4])));
  Check(inDay
            ? time && time->Ticks() == t && time->Literal() == Clock(p[1], p[2], p[3], p[4] * 10000)
            : !time);
  auto near = [](long long v, long long bound) { return v >= -1 && v <= bound ? v : v % bound; };
  const long long y = near(p[0], 10000), mo = near(p[1], 13), d = near(p[2], 32);
  using namespace std::chrono;
  const year_month_day ymd{year{int(y)}, month{unsigned(mo)}, day{unsigned(d)}};
  const bool date = y >= 1 && y <= 9999 && mo >= 1 && d >= 1 && ymd.ok();
  const long long midnight =
      date ? (sys_days{ymd} - sys_days{year{1} / January / 1}).count() * kDay : 0;
  const long long at = date && inDay ? midnight + t : 0;
  std::unique_ptr<qxDateTime> dateTime(
      CreateDateTime(int(y), int(mo), int(d), int(p[1]), int(p[2]), int(p[3]), int(p[4])));
  Check(date && inDay ? dateTime && dateTime->Ticks() == at : !dateTime);
  long literal = 0;
  long long clockBack = 0;
  if (dateTime)
    Check(dateTime->Literal(&literal, &clockBack) && literal == (y * 100 + mo) * 100 + d &&
          clockBack == Clock(p[1], p[2], p[3], p[4] * 10000));

  // Literals: HHMMSSfffffff, hours to 23, minutes and seconds to 59.
  const long long h = clock / 100000000000LL, m = clock / 1000000000LL % 100,
                  s = clock / kSecond % 100, f = clock % kSecond;
  ok = Composed(f, {p[0], h, m, s, 0}, &t);
  Same(CreateTimeSpanFromLiteral(int(p[0]), clock), ok, t);
  const bool clockOfDay = clock >= 0 && h < 24 && m < 60 && s < 60;
  Composed(f, {0, h, m, s, 0}, &t);
  Same(CreateTimeFromLiteral(clock), clockOfDay, t);
  Same(CreateDateTimeFromLiteral(int((y * 100 + mo) * 100 + d), clock), date && clockOfDay,
       midnight + t);

  // Counts: the count times the unit, truncated, within the class's range.
  static const long long kUnits[] = {kDay, kHour, kMinute, kSecond, 10000};
  for (long long unit : kUnits) {
    const double ticks = v * static_cast<double>(unit);
    const bool fits = ticks >= -9223372036854775808.0 && ticks < 9223372036854775808.0;
    const long long n = fits ? static_cast<long long>(ticks) : 0;
    Same(unit == kDay      ? CreateTimeSpanFromDays(v)
         : unit == kHour   ? CreateTimeSpanFromHours(v)
         : unit == kMinute ? CreateTimeSpanFromMinutes(v)
         : unit == kSecond ? CreateTimeSpanFromSeconds(v)
                           : CreateTimeSpanFromMilliseconds(v),
         fits, n);
    if (unit != kDay)
      Same(unit == kHour     ? CreateTimeFromHours(v)
           : unit == kMinute ? CreateTimeFromMinutes(v)
           : unit == kSecond ? CreateTimeFromSeconds(v)
                             : CreateTimeFromMilliseconds(v),
           fits && n >= 0 && n < kDay, n);
    Same(unit == kDay      ? CreateDateTimeFromDays(v)
         : unit == kHour   ? CreateDateTimeFromHours(v)
         : unit == kMinute ? CreateDateTimeFromMinutes(v)
         : unit == kSecond ? CreateDateTimeFromSeconds(v)
                           : CreateDateTimeFromMilliseconds(v),
         fits && n >= 0 && n <= kMaxDateTime, n);
  }
}

// CheckSpanText - the default text of a span: sign, days, "." when asked
// for, then HH:mm:ss and seven fraction digits; false, writing nothing past
// the size, when it does not fit.
void CheckSpanText(long long ticks, bool daySeparator, unsigned int size) {
  const unsigned long long a = ticks < 0 ? 0ULL - ticks : ticks;
  const unsigned long long day = static_cast<unsigned long long>(kDay);
  wchar_t days[32], clock[32], want[80];
  std::swprintf(days, 32, L"%llu", a / day);
  std::swprintf(clock, 32, L"%02llu:%02llu:%02llu.%07llu", a % day / kHour, a % kHour / kMinute,
                a % kMinute / kSecond, a % kSecond);
  std::swprintf(want, 80, L"%ls%ls%ls%ls", ticks < 0 ? L"-" : L"", days, daySeparator ? L"." : L"",
                clock);
  const bool fits = std::wcslen(want) < size;
  std::vector<wchar_t> out(size + 8, 0x7F7F);
  std::unique_ptr<qxTimeSpan> span(CreateTimeSpan(ticks));
  Check(span->Format(out.data(), size, nullptr, daySeparator) == fits);
  Check(!fits || std::wcscmp(out.data(), want) == 0);
  for (size_t i = size; i < out.size(); ++i)
    Check(out[i] == 0x7F7F);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  static const LCID kLocales[] = {1033, 1031, 1041, 1035};
  static bool once = [] {
    qx::platform::TimeSource source{1773576000, 0, 0};
    qx::platform::SetThreadTimeSource(&source);
    return true;
  }();
  (void)once;
  static const bool edges = [] {
    for (long long a :
         {-1LL, 0LL, kDay - 1, kDay, kMaxDateTime, kMaxDateTime + 1, LLONG_MIN, LLONG_MAX})
      CheckObjects(a, 0);
    return true;
  }();
  (void)edges;
  SetThreadLocale(kLocales[data[0] % 4]);
  std::vector<wchar_t> text;
  for (size_t i = 1; i < size; ++i)
    if (data[i] != 0)
      text.push_back(data[i] < 0x80 ? data[i] : static_cast<wchar_t>(0x3000 + data[i]));
  text.push_back(0);
  const wchar_t* s = text.data();
  if (size >= 17) {
    long long a, b;
    std::memcpy(&a, data + 1, sizeof a);
    std::memcpy(&b, data + 9, sizeof b);
    CheckObjects(a, b);
    CheckArithmetic(a, b, static_cast<int16_t>(data[1] | data[2] << 8));
    CheckSpanText(data[0] & 0x10 ? a : a % (400 * kDay), data[0] & 0x20, data[9] % 40);
  }
  {
    // Parts: any 32-bit ones, small ones, the edges of units and of the
    // calendar, or days near the end of the range (past the input: zeros).
    static const int kEdges[] = {-1, 0, 1, 12, 13, 23, 24, 31, 32, 59, 60, 999, 1000, 9999, 10000};
    uint8_t in[36] = {};
    std::memcpy(in, data, std::min(size, sizeof in));
    long long parts[5];
    for (int k = 0; k < 5; ++k) {
      int32_t raw;
      std::memcpy(&raw, in + 1 + 4 * k, sizeof raw);
      const int mode = (in[33] | in[34] << 8) >> (2 * k) & 3;
      parts[k] = mode == 0   ? raw
                 : mode == 1 ? (k == 0 ? 10675199 - raw % 3 : raw % 70 - 5)
                             : kEdges[static_cast<uint32_t>(raw) % 15];
    }
    long long clock;
    std::memcpy(&clock, in + 21, sizeof clock);
    if (in[35] & 1)
      clock %= 3000000000000LL;
    double count;
    std::memcpy(&count, in + 25, sizeof count);
    if (in[35] & 2)
      count = static_cast<double>(static_cast<int32_t>(clock)) / 8;
    CheckFactories(parts, clock, count);
  }

  int hours = -1, minutes = -1;
  double seconds = -1;
  if (ParseTimeString(s, &hours, &minutes, &seconds))
    Check(hours >= 0 && hours <= 23 && minutes >= 0 && minutes <= 59 && seconds >= 0 &&
          seconds < 60);

  std::unique_ptr<qxTimeSpan> span(CreateTimeSpanFromString(s));
  if (span) {
    wchar_t buffer[64];
    // Read back where the time separator is the picture's ":" (en-US).
    if (data[0] % 4 == 0 && span->Format(buffer, 64, nullptr, true)) {
      std::unique_ptr<qxTimeSpan> back(CreateTimeSpanFromString(buffer));
      Check(back && back->Ticks() == span->Ticks());
    }
  }
  std::unique_ptr<qxTime> time(CreateTimeFromString(s));
  if (time)
    Check(time->Ticks() >= 0 && time->Ticks() < 864000000000LL);
  std::unique_ptr<qxDateTime> dateTime(CreateDateTimeFromString(s));
  if (dateTime) {
    Check(dateTime->Ticks() >= 0 && dateTime->Ticks() <= 3155378975999999999LL);
    Check(IsValidDate(dateTime->Date()));
  }
  ClearErrors();
  return 0;
}
