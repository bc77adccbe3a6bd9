// Fuzz target for the time and date-time readers: ParseTimeString,
// CreateTimeSpanFromString, CreateTimeFromString and
// CreateDateTimeFromString. Checks the ranges of every result and that a
// span read back from its own text (with the day separator) is the same.
// The first bytes also make spans, a time of day and a date-time, whose
// parts, literals and order must agree with their ticks.
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
  Check(span->Literal(&days, &clock));
  std::unique_ptr<qxTimeSpan> back(CreateTimeSpanFromLiteral(days, clock));
  Check(back && back->Ticks() == a);
  Check(qxTimeSpan::Compare(span.get(), other.get()) == (a < b   ? QX_CMP_LESS
                                                         : a > b ? QX_CMP_GREATER
                                                                 : QX_CMP_EQUAL));
  const long long inDay = static_cast<long long>(static_cast<unsigned long long>(a) % kDay);
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
