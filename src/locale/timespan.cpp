//===- locale/timespan.cpp - qxTimeSpan -----------------------------------===//
#include "locale/datetime_internal.h"
#include "platform/date_format.h"

#include <cstdio>
#include <cstdlib>
#include <cwchar>

using namespace qx::win;

using namespace qx::date;

namespace {

class qxTimeSpanImpl final : public qxTimeSpan {
public:
  /// eCreateError - a value that does not fit; the factories answer null.
  struct eCreateError {};

  explicit qxTimeSpanImpl(long long ticks) : ticks_(ticks) {}

  /// Composed - the sum of the parts, or eCreateError on overflow.
  static long long Composed(long long days, long long hours, long long minutes, long long seconds,
                            long long milliseconds, long long ticks) {
    long long total = 0;
    if (!Compose(days, hours, minutes, seconds, milliseconds, ticks, &total))
      throw eCreateError{};
    return total;
  }

  int Days() const override { return static_cast<int>(ticks_ / kTicksPerDay); }
  int Hours() const override { return static_cast<int>(ticks_ % kTicksPerDay / kTicksPerHour); }
  int Minutes() const override {
    return static_cast<int>(ticks_ % kTicksPerHour / kTicksPerMinute);
  }
  int Seconds() const override {
    return static_cast<int>(ticks_ % kTicksPerMinute / kTicksPerSecond);
  }
  int Milliseconds() const override { return FractionTicks() / 10000; }
  int FractionTicks() const override { return static_cast<int>(ticks_ % kTicksPerSecond); }
  long long Ticks() const override { return ticks_; }
  double TotalDays() const override { return static_cast<double>(ticks_) / kTicksPerDay; }
  double TotalHours() const override { return static_cast<double>(ticks_) / kTicksPerHour; }
  double TotalMinutes() const override { return static_cast<double>(ticks_) / kTicksPerMinute; }
  double TotalSeconds() const override { return static_cast<double>(ticks_) / kTicksPerSecond; }
  double TotalMilliseconds() const override {
    return static_cast<double>(ticks_) / kTicksPerMillisecond;
  }
  bool Set(int days, int hours, int minutes, int seconds, int milliseconds) override {
    long long total = 0;
    if (!Compose(days, hours, minutes, seconds, milliseconds, 0, &total))
      return false;
    SetTicks(total);
    return true;
  }
  void SetTicks(long long ticks) override { ticks_ = ticks; }
  QX_CMP CompareTo(const qxTimeSpan* other) const override { return Compare(this, other); }
  bool Add(const qxTimeSpan* other) override {
    long long total = 0;
    if (!other || !AddTicks(ticks_, other->Ticks(), &total))
      return false;
    SetTicks(total);
    return true;
  }
  bool Subtract(const qxTimeSpan* other) override {
    long long total = 0;
    if (!other || __builtin_sub_overflow(ticks_, other->Ticks(), &total))
      return false;
    SetTicks(total);
    return true;
  }
  bool Negate() override {
    if (ticks_ == INT64_MIN)
      return false;
    SetTicks(-ticks_);
    return true;
  }
  bool Duration() override { return ticks_ >= 0 || Negate(); }
  bool Multiply(double factor) override { return Scale(static_cast<double>(ticks_) * factor); }
  bool Divide(double divisor) override {
    return divisor != 0 && Scale(static_cast<double>(ticks_) / divisor);
  }
  bool Equals(const qxTimeSpan* other) const override { return other && other->Ticks() == ticks_; }
  qxTime* ToTime() const override { return CreateTime(ticks_); }
  bool Parse(const wchar_t* text) override {
    long long ticks = 0;
    if (!ReadSpanText(text, &ticks))
      return false;
    SetTicks(ticks);
    return true;
  }
  bool Format(wchar_t* buffer, unsigned int size, const wchar_t* picture,
              bool daySeparator) const override;
  bool Literal(int* days, long long* clock) const override {
    if (days)
      *days = Days();
    if (clock)
      *clock = MakeClock(Hours(), Minutes(), Seconds(), FractionTicks());
    return true;
  }

private:
  bool Scale(double ticks) {
    long long t = 0;
    if (!ScaleToTicks(ticks, 1, INT64_MIN, INT64_MAX, &t))
      return false;
    SetTicks(t);
    return true;
  }

  long long ticks_;
};

bool qxTimeSpanImpl::Format(wchar_t* buffer, unsigned int size, const wchar_t* picture,
                            bool daySeparator) const {
  if (!buffer || size == 0)
    return false;
  bool negative = Ticks() < 0;
  wchar_t days[16];
  std::swprintf(days, 16, L"%d", std::abs(Days()));
  SYSTEMTIME st{};
  st.wHour = static_cast<WORD>(std::abs(Hours()));
  st.wMinute = static_cast<WORD>(std::abs(Minutes()));
  st.wSecond = static_cast<WORD>(std::abs(Seconds()));
  st.wMilliseconds = static_cast<WORD>(std::abs(FractionTicks()) / 10000);
  wchar_t time[33];
  if (GetTimeFormatW(LOCALE_SYSTEM_DEFAULT, TIME_NOTIMEMARKER | TIME_FORCE24HOURFORMAT, &st,
                     picture ? picture : L"hh:mm:ss.fffffff", time, 33) == 0)
    return false;
  if (std::wcschr(time, L'f'))
    PutFractionDigits(time, std::abs(FractionTicks()));
  // The room test counts the sign but not the separator.
  if (std::wcslen(days) + std::wcslen(time) + (negative ? 1 : 0) >= size)
    return false;
  int written = std::swprintf(buffer, size, L"%ls%ls%ls%ls", negative ? L"-" : L"", days,
                              daySeparator ? L"." : L"", time);
  if (written <= 0) { // only the uncounted separator can make it not fit
    buffer[0] = 0;
    return false;
  }
  return true;
}

qxTimeSpan* Make(long long ticks) { return new (std::nothrow) qxTimeSpanImpl(ticks); }

// MakeComposed - the span of the parts; null on overflow.
qxTimeSpan* MakeComposed(long long days, long long hours, long long minutes, long long seconds,
                         long long milliseconds, long long ticks) {
  try {
    return Make(qxTimeSpanImpl::Composed(days, hours, minutes, seconds, milliseconds, ticks));
  } catch (const qxTimeSpanImpl::eCreateError&) {
    return nullptr;
  }
}

qxTimeSpan* MakeScaled(double value, long long unit) {
  long long ticks = 0;
  return ScaleToTicks(value, unit, INT64_MIN, INT64_MAX, &ticks) ? Make(ticks) : nullptr;
}

} // namespace

qxTimeSpan::~qxTimeSpan() = default;

QX_CMP qxTimeSpan::Compare(const qxTimeSpan* a, const qxTimeSpan* b) { return CompareTicks(a, b); }

qxTimeSpan* CreateTimeSpan(long long ticks) { return Make(ticks); }
qxTimeSpan* CreateTimeSpan(const qxTimeSpan* span) { return span ? Make(span->Ticks()) : nullptr; }
qxTimeSpan* CreateTimeSpan(int hours, int minutes, int seconds) {
  return MakeComposed(0, hours, minutes, seconds, 0, 0);
}
qxTimeSpan* CreateTimeSpan(int days, int hours, int minutes, int seconds) {
  return MakeComposed(days, hours, minutes, seconds, 0, 0);
}
qxTimeSpan* CreateTimeSpan(int days, int hours, int minutes, int seconds, int milliseconds) {
  return MakeComposed(days, hours, minutes, seconds, milliseconds, 0);
}
qxTimeSpan* CreateTimeSpanFromDays(double days) { return MakeScaled(days, kTicksPerDay); }
qxTimeSpan* CreateTimeSpanFromHours(double hours) { return MakeScaled(hours, kTicksPerHour); }
qxTimeSpan* CreateTimeSpanFromMinutes(double minutes) {
  return MakeScaled(minutes, kTicksPerMinute);
}
qxTimeSpan* CreateTimeSpanFromSeconds(double seconds) {
  return MakeScaled(seconds, kTicksPerSecond);
}
qxTimeSpan* CreateTimeSpanFromMilliseconds(double milliseconds) {
  return MakeScaled(milliseconds, kTicksPerMillisecond);
}
qxTimeSpan* CreateTimeSpanFromLiteral(int days, long long clock) {
  ClockParts p = SplitClock(clock);
  return MakeComposed(days, p.hours, p.minutes, p.seconds, 0, p.ticks);
}
qxTimeSpan* CreateTimeSpanFromString(const wchar_t* text) {
  long long ticks = 0;
  return ReadSpanText(text, &ticks) ? Make(ticks) : nullptr;
}
