//===- locale/time.cpp - qxTime -------------------------------------------===//
#include "locale/datetime_internal.h"
#include "platform/date_format.h"
#include "platform/time32.h"

#include <cwchar>

using namespace qx::win;

using namespace qx::date;

namespace {

class qxTimeImpl final : public qxTime {
public:
  explicit qxTimeImpl(long long ticks) { SetTicks(ticks); }

  int Hours() const override { return hours_; }
  int Minutes() const override { return minutes_; }
  int Seconds() const override { return seconds_; }
  int Milliseconds() const override { return fraction_ / 10000; }
  int FractionTicks() const override { return fraction_; }
  long long Ticks() const override { return ticks_; }
  double TotalHours() const override { return static_cast<double>(ticks_) / kTicksPerHour; }
  double TotalMinutes() const override { return static_cast<double>(ticks_) / kTicksPerMinute; }
  double TotalSeconds() const override { return static_cast<double>(ticks_) / kTicksPerSecond; }
  double TotalMilliseconds() const override {
    return static_cast<double>(ticks_) / kTicksPerMillisecond;
  }
  QX_CMP CompareTo(const qxTime* other) const override { return Compare(this, other); }
  bool Set(int hours, int minutes, int seconds, int milliseconds) override {
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 59 ||
        milliseconds < 0 || milliseconds > 999)
      return false;
    long long ticks = 0;
    return Compose(0, hours, minutes, seconds, milliseconds, 0, &ticks) && SetTicks(ticks);
  }
  bool SetTicks(long long ticks) override {
    if (ticks < 0 || ticks > kTimeMaxTicks)
      return false;
    ticks_ = ticks;
    hours_ = static_cast<int>(ticks / kTicksPerHour);
    minutes_ = static_cast<int>(ticks % kTicksPerHour / kTicksPerMinute);
    seconds_ = static_cast<int>(ticks % kTicksPerMinute / kTicksPerSecond);
    fraction_ = static_cast<int>(ticks % kTicksPerSecond);
    return true;
  }
  bool Add(const qxTimeSpan* span) override {
    long long ticks = 0;
    return span && AddTicks(ticks_, span->Ticks(), &ticks) && SetTicks(ticks);
  }
  bool Subtract(const qxTimeSpan* span) override {
    long long ticks = 0;
    return span && !__builtin_sub_overflow(ticks_, span->Ticks(), &ticks) && SetTicks(ticks);
  }
  qxTimeSpan* Difference(const qxTime* other) const override {
    return other ? CreateTimeSpan(ticks_ - other->Ticks()) : nullptr;
  }
  qxTimeSpan* ToTimeSpan() const override { return CreateTimeSpan(ticks_); }
  bool Equals(const qxTime* other) const override { return other && other->Ticks() == ticks_; }
  bool IsBetween(const qxTime* start, const qxTime* end) const override {
    if (!start || !end)
      return false;
    long long s = start->Ticks(), e = end->Ticks();
    return s <= e ? (s <= ticks_ && ticks_ < e) : (ticks_ >= s || ticks_ < e);
  }
  bool Parse(const wchar_t* text) override {
    long long ticks = 0;
    return ReadTimeText(text, &ticks) && SetTicks(ticks);
  }
  qxDateTime* OnDate(const qxDATE* date) const override {
    long long day = 0;
    return DateTicks(date, &day) ? CreateDateTime(day + ticks_) : nullptr;
  }
  long long Literal() const override { return MakeClock(hours_, minutes_, seconds_, fraction_); }
  bool Format(wchar_t* buffer, unsigned int size, const wchar_t* picture) const override {
    if (!buffer || size == 0)
      return false;
    SYSTEMTIME st{};
    st.wHour = static_cast<WORD>(hours_);
    st.wMinute = static_cast<WORD>(minutes_);
    st.wSecond = static_cast<WORD>(seconds_);
    st.wMilliseconds = static_cast<WORD>(fraction_ / 10000);
    DWORD flags = picture && !std::wcschr(picture, L't') ? TIME_FORCE24HOURFORMAT : 0;
    if (GetTimeFormatW(LOCALE_SYSTEM_DEFAULT, flags, &st, picture, buffer,
                       static_cast<int>(size > 0x7FFFFFFF ? 0x7FFFFFFF : size)) == 0)
      return false;
    PutFractionDigits(buffer, fraction_);
    return true;
  }

private:
  int hours_ = 0, minutes_ = 0, seconds_ = 0, fraction_ = 0;
  long long ticks_ = 0;
};

qxTime* Make(long long ticks) {
  if (ticks < 0 || ticks > kTimeMaxTicks)
    return nullptr;
  return new (std::nothrow) qxTimeImpl(ticks);
}

qxTime* MakeScaled(double value, long long unit) {
  long long ticks = 0;
  return ScaleToTicks(value, unit, 0, kTimeMaxTicks, &ticks) ? Make(ticks) : nullptr;
}

} // namespace

qxTime::~qxTime() = default;

qxTime* qxTime::MinValue() { return Make(0); }
qxTime* qxTime::MaxValue() { return Make(kTimeMaxTicks); }
QX_CMP qxTime::Compare(const qxTime* a, const qxTime* b) { return CompareTicks(a, b); }

qxTime* CreateTime(long long ticks) { return Make(ticks); }
qxTime* CreateTime(const qxTime* time) { return time ? Make(time->Ticks()) : nullptr; }
qxTime* CreateTime(int hours, int minutes, int seconds) {
  return CreateTime(hours, minutes, seconds, 0);
}
qxTime* CreateTime(int hours, int minutes, int seconds, int milliseconds) {
  qxTime* time = Make(0);
  if (time && !time->Set(hours, minutes, seconds, milliseconds))
    delete time, time = nullptr;
  return time;
}
qxTime* CreateTimeFromHours(double hours) { return MakeScaled(hours, kTicksPerHour); }
qxTime* CreateTimeFromMinutes(double minutes) { return MakeScaled(minutes, kTicksPerMinute); }
qxTime* CreateTimeFromSeconds(double seconds) { return MakeScaled(seconds, kTicksPerSecond); }
qxTime* CreateTimeFromMilliseconds(double milliseconds) {
  return MakeScaled(milliseconds, kTicksPerMillisecond);
}
qxTime* CreateTimeFromLiteral(long long clock) {
  long long ticks = 0;
  return ClockOfDay(clock, &ticks) ? Make(ticks) : nullptr;
}
qxTime* CreateTimeFromString(const wchar_t* text) {
  long long ticks = 0;
  return ReadTimeText(text, &ticks) ? Make(ticks) : nullptr;
}
qxTime* CreateTimeFromSystemTime() {
  SYSTEMTIME now{};
  if (!qx::platform::CurrentLocalTime(&now))
    return nullptr;
  return CreateTime(now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}
