//===- locale/datetime.cpp - qxDateTime -----------------------------------===//
#include "locale/datetime_internal.h"
#include "platform/time32.h"

#include <cwchar>
#include <new>

using namespace qx::date;

namespace {

class qxDateTimeImpl final : public qxDateTime {
public:
  /// eCreateError - the time of day could not be allocated.
  struct eCreateError {};

  explicit qxDateTimeImpl(long long ticks) : time_(CreateTime(0LL)) {
    if (!time_)
      throw eCreateError{};
    SetTicks(ticks);
  }
  ~qxDateTimeImpl() override { delete time_; }

  int Year() const override { return date_.year; }
  int Month() const override { return date_.month; }
  int Day() const override { return date_.day; }
  int Hours() const override { return time_->Hours(); }
  int Minutes() const override { return time_->Minutes(); }
  int Seconds() const override { return time_->Seconds(); }
  int Milliseconds() const override { return time_->Milliseconds(); }
  int FractionTicks() const override { return time_->FractionTicks(); }
  long long Ticks() const override { return ticks_; }
  double TotalDays() const override { return static_cast<double>(ticks_) / kTicksPerDay; }
  double TotalHours() const override { return static_cast<double>(ticks_) / kTicksPerHour; }
  double TotalMinutes() const override { return static_cast<double>(ticks_) / kTicksPerMinute; }
  double TotalSeconds() const override { return static_cast<double>(ticks_) / kTicksPerSecond; }
  double TotalMilliseconds() const override {
    return static_cast<double>(ticks_) / kTicksPerMillisecond;
  }
  const qxDATE* Date() const override { return &date_; }
  const qxTime* Time() const override { return time_; }
  long DayNumber() const override { return static_cast<long>(ticks_ / kTicksPerDay); }
  QX_CMP CompareTo(const qxDateTime* other) const override { return Compare(this, other); }
  bool Equals(const qxDateTime* other) const override { return other && other->Ticks() == ticks_; }
  bool Add(const qxTimeSpan* span) override {
    long long ticks = 0;
    return span && AddTicks(ticks_, span->Ticks(), &ticks) && SetTicks(ticks);
  }
  bool Subtract(const qxTimeSpan* span) override {
    long long ticks = 0;
    return span && !__builtin_sub_overflow(ticks_, span->Ticks(), &ticks) && SetTicks(ticks);
  }
  bool AddMonths(int months) override {
    long long index = date_.year * 12LL + (date_.month - 1) + months;
    if (index < 12 || index > 9999 * 12LL + 11)
      return false;
    long year = static_cast<long>(index / 12);
    int month = static_cast<int>(index % 12) + 1;
    int day = date_.day;
    if (day > MonthLength(year, month))
      day = MonthLength(year, month);
    qxDATE date{static_cast<int16_t>(year), static_cast<int8_t>(month), static_cast<int8_t>(day)};
    long long start = 0;
    return DateTicks(&date, &start) && SetTicks(start + time_->Ticks());
  }
  bool SetTicks(long long ticks) override {
    if (ticks < 0 || ticks > kDateTimeMaxTicks)
      return false;
    ticks_ = ticks;
    Days2MDY(static_cast<long>(ticks / kTicksPerDay), &date_);
    time_->SetTicks(ticks % kTicksPerDay);
    return true;
  }
  qxTimeSpan* Difference(const qxDateTime* other) const override {
    return other ? CreateTimeSpan(ticks_ - other->Ticks()) : nullptr;
  }
  int DayOfWeek() const override { return ::DayOfWeek(DayNumber()); }
  int DayOfYear() const override {
    qxDATE first{date_.year, 1, 1};
    return static_cast<int>(DayNumber() - MDY2Days(&first) + 1);
  }
  qxTimeSpan* TimeOfDay() const override { return CreateTimeSpan(time_->Ticks()); }
  bool Parse(const wchar_t* text) override {
    long long ticks = 0;
    return ReadDateTimeText(text, &ticks) && SetTicks(ticks);
  }
  bool Literal(long* date, long long* clock) const override {
    if (date)
      *date = DateToLiteral(&date_);
    if (clock)
      *clock = time_->Literal();
    return true;
  }
  bool Format(wchar_t* buffer, unsigned int size, short order, const wchar_t* separator1,
              const wchar_t* separator2, const wchar_t* timePicture, bool withTime) const override {
    qxDATE date = date_;
    if (!MakeDateStringEx(buffer, size, &date, order, separator1, separator2))
      return false;
    size_t length = std::wcslen(buffer);
    if ((!withTime && time_->Ticks() == 0) || length + 2 >= size)
      return true;
    buffer[length] = L' ';
    if (time_->Format(buffer + length + 1, static_cast<unsigned int>(size - length - 1),
                      timePicture))
      return true;
    buffer[length] = 0; // the date stays
    return false;
  }

private:
  qxDATE date_{};
  qxTime* time_;
  long long ticks_ = 0;
};

qxDateTime* Make(long long ticks) {
  if (ticks < 0 || ticks > kDateTimeMaxTicks)
    return nullptr;
  try {
    return new qxDateTimeImpl(ticks); // a throwing constructor releases the block
  } catch (const qxDateTimeImpl::eCreateError&) {
    return nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

qxDateTime* MakeScaled(double value, long long unit) {
  long long ticks = 0;
  return ScaleToTicks(value, unit, 0, kDateTimeMaxTicks, &ticks) ? Make(ticks) : nullptr;
}

// MakeParts - a valid date of year 1 or later and a time of day in range.
qxDateTime* MakeParts(int year, int month, int day, int hours, int minutes, int seconds,
                      int milliseconds) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31)
    return nullptr;
  qxDATE date{static_cast<int16_t>(year), static_cast<int8_t>(month), static_cast<int8_t>(day)};
  long long start = 0;
  if (!DateTicks(&date, &start) || hours < 0 || hours > 23 || minutes < 0 || minutes > 59 ||
      seconds < 0 || seconds > 59 || milliseconds < 0 || milliseconds > 999)
    return nullptr;
  long long ticks = 0;
  return Compose(0, hours, minutes, seconds, milliseconds, start, &ticks) ? Make(ticks) : nullptr;
}

} // namespace

qxDateTime::~qxDateTime() = default;

qxDateTime* qxDateTime::MinValue() { return Make(0); }
qxDateTime* qxDateTime::MaxValue() { return Make(kDateTimeMaxTicks); }
QX_CMP qxDateTime::Compare(const qxDateTime* a, const qxDateTime* b) { return CompareTicks(a, b); }

qxDateTime* CreateDateTime(long long ticks) { return Make(ticks); }
qxDateTime* CreateDateTime(const qxDateTime* dateTime) {
  return dateTime ? Make(dateTime->Ticks()) : nullptr;
}
qxDateTime* CreateDateTime(qxDATE* date) { return CreateDateTime(date, nullptr); }
qxDateTime* CreateDateTime(qxDATE* date, qxTime* time) {
  long long start = 0;
  if (!DateTicks(date, &start))
    return nullptr;
  return Make(start + (time ? time->Ticks() : 0));
}
qxDateTime* CreateDateTime(int year, int month, int day) {
  return MakeParts(year, month, day, 0, 0, 0, 0);
}
qxDateTime* CreateDateTime(int year, int month, int day, int hours, int minutes, int seconds) {
  return MakeParts(year, month, day, hours, minutes, seconds, 0);
}
qxDateTime* CreateDateTime(int year, int month, int day, int hours, int minutes, int seconds,
                           int milliseconds) {
  return MakeParts(year, month, day, hours, minutes, seconds, milliseconds);
}
qxDateTime* CreateDateTimeFromDays(double days) { return MakeScaled(days, kTicksPerDay); }
qxDateTime* CreateDateTimeFromHours(double hours) { return MakeScaled(hours, kTicksPerHour); }
qxDateTime* CreateDateTimeFromMinutes(double minutes) {
  return MakeScaled(minutes, kTicksPerMinute);
}
qxDateTime* CreateDateTimeFromSeconds(double seconds) {
  return MakeScaled(seconds, kTicksPerSecond);
}
qxDateTime* CreateDateTimeFromMilliseconds(double milliseconds) {
  return MakeScaled(milliseconds, kTicksPerMillisecond);
}
qxDateTime* CreateDateTimeFromLiteral(int date, long long clock) {
  qxDATE day;
  long long start = 0, time = 0;
  if (!LiteralFields(date, &day, true) || !DateTicks(&day, &start) || !ClockOfDay(clock, &time))
    return nullptr;
  return Make(start + time);
}
qxDateTime* CreateDateTimeFromString(const wchar_t* text) {
  long long ticks = 0;
  return ReadDateTimeText(text, &ticks) ? Make(ticks) : nullptr;
}
qxDateTime* CreateDateTimeFromSystemTime() {
  SYSTEMTIME now{};
  if (!qx::platform::CurrentLocalTime(&now))
    return nullptr;
  return MakeParts(now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond,
                   now.wMilliseconds);
}
