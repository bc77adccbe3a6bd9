// qxTimeSpan, qxTime, qxDateTime and ParseTimeString.
#include "locale/date_test_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cwchar>
#include <memory>

using qxtest::OnPinnedThread;
using qxtest::UtcSeconds;

namespace {

template <class T> std::unique_ptr<T> Own(T* p) { return std::unique_ptr<T>(p); }

constexpr long long kDay = 864000000000LL;
constexpr long long kHour = 36000000000LL;
constexpr long long kMinute = 600000000LL;

// -- qxTimeSpan

TEST(TimeSpan, PartsTruncateTowardZero) {
  struct Case {
    long long ticks;
    int days, hours, minutes, seconds, milliseconds, fraction;
  } cases[] = {
      {-90 * kMinute, 0, -1, -30, 0, 0, 0},
      {kDay + 10 * kHour + 20 * kMinute + 304000005LL, 1, 10, 20, 30, 400, 4000005},
      {-1, 0, 0, 0, 0, 0, -1},
      {LLONG_MAX, 10675199, 2, 48, 5, 477, 4775807},
      {LLONG_MIN, -10675199, -2, -48, -5, -477, -4775808},
  };
  for (const Case& c : cases) {
    auto s = Own(CreateTimeSpan(c.ticks));
    ASSERT_TRUE(s);
    EXPECT_EQ(s->Days(), c.days) << c.ticks;
    EXPECT_EQ(s->Hours(), c.hours) << c.ticks;
    EXPECT_EQ(s->Minutes(), c.minutes) << c.ticks;
    EXPECT_EQ(s->Seconds(), c.seconds) << c.ticks;
    EXPECT_EQ(s->Milliseconds(), c.milliseconds) << c.ticks;
    EXPECT_EQ(s->FractionTicks(), c.fraction) << c.ticks;
  }
  auto s = Own(CreateTimeSpan(-90 * kMinute));
  EXPECT_DOUBLE_EQ(s->TotalHours(), -1.5);
  EXPECT_DOUBLE_EQ(s->TotalMinutes(), -90);
  EXPECT_DOUBLE_EQ(s->TotalDays(), -1.5 / 24);
}

TEST(TimeSpan, CompositionIsOverflowGuarded) {
  EXPECT_TRUE(Own(CreateTimeSpan(10675199, 0, 0, 0)));
  EXPECT_FALSE(Own(CreateTimeSpan(10675200, 0, 0, 0)));
  EXPECT_FALSE(Own(CreateTimeSpan(-10675200, 0, 0, 0)));
  EXPECT_FALSE(Own(CreateTimeSpan(10675199, 2, 48, 6)));
  EXPECT_TRUE(Own(CreateTimeSpan(10675199, 2, 48, 5, 477)));
  EXPECT_FALSE(Own(CreateTimeSpan(10675199, 2, 48, 5, 478)));
  auto s = Own(CreateTimeSpan(1, -1, 0)); // parts may have mixed signs
  EXPECT_EQ(s->Ticks(), kHour - kMinute);
  EXPECT_EQ(Own(CreateTimeSpan(1, 2, 3, 4, 5))->Ticks(),
            kDay + 2 * kHour + 3 * kMinute + 40000000LL + 50000LL);
  EXPECT_FALSE(s->Set(10675200, 0, 0, 0, 0));
  EXPECT_EQ(s->Ticks(), kHour - kMinute); // unchanged
  EXPECT_TRUE(s->Set(0, 0, 0, 1, 0));
  EXPECT_EQ(s->Ticks(), 10000000LL);
}

TEST(TimeSpan, DoubleFactories) {
  EXPECT_EQ(Own(CreateTimeSpanFromHours(1.5))->Ticks(), 54000000000LL);
  EXPECT_EQ(Own(CreateTimeSpanFromDays(-0.5))->Ticks(), -kDay / 2);
  EXPECT_EQ(Own(CreateTimeSpanFromMinutes(1))->Ticks(), kMinute);
  EXPECT_EQ(Own(CreateTimeSpanFromSeconds(0.00000015))->Ticks(), 1); // truncated
  EXPECT_EQ(Own(CreateTimeSpanFromMilliseconds(-2.5))->Ticks(), -25000);
  EXPECT_FALSE(Own(CreateTimeSpanFromDays(NAN)));
  EXPECT_FALSE(Own(CreateTimeSpanFromDays(1e7 * 1.1)));
  EXPECT_FALSE(Own(CreateTimeSpanFromMilliseconds(INFINITY)));
}

TEST(TimeSpan, Literals) {
  auto s = Own(CreateTimeSpanFromLiteral(1, 1020304000005LL));
  ASSERT_TRUE(s);
  EXPECT_EQ(s->Days(), 1);
  EXPECT_EQ(s->Hours(), 10);
  EXPECT_EQ(s->Minutes(), 20);
  EXPECT_EQ(s->Seconds(), 30);
  EXPECT_EQ(s->FractionTicks(), 4000005);
  int days = 0;
  long long clock = 0;
  EXPECT_TRUE(s->Literal(&days, &clock));
  EXPECT_EQ(days, 1);
  EXPECT_EQ(clock, 1020304000005LL);
  auto n = Own(CreateTimeSpan(-(kDay + 90 * kMinute)));
  n->Literal(&days, &clock);
  EXPECT_EQ(days, -1);
  EXPECT_EQ(clock, -130000000000LL); // hours -1, minutes -30
  EXPECT_EQ(Own(CreateTimeSpanFromLiteral(days, clock))->Ticks(), n->Ticks());
}

TEST(TimeSpan, FromString) {
  OnPinnedThread(1033, [] {
    struct Case {
      const wchar_t* text;
      bool ok;
      long long ticks;
    } cases[] = {
        {L"00000000000000", true, 0},
        {L"-00000000000001", true, -1},
        {L"+00011020304000005", true, kDay + 10 * kHour + 20 * kMinute + 304000005LL},
        {L"1020304000005", true, 10 * kHour + 20 * kMinute + 304000005LL}, // a time of day
        {L"2500000000000", false, 0}, // 13 digits are not the span literal: 25 hours fail
        {L"00002500000000000", true, 25 * kHour},
        {L"99999999999999999999999", false, 0}, // days beyond 32 bits
        {L"0010675200"
         L"0000000000000",
         false, 0}, // beyond 64-bit ticks
        {L"12:30", true, 12 * kHour + 30 * kMinute},
        {L"  -1.12:30", true, -(kDay + 12 * kHour + 30 * kMinute)},
        {L"-0.01:30:00.0000000", true, -90 * kMinute},
        {L"3 1:00", true, 3 * kDay + kHour},
        {L"1.", false, 0},
        {L"x", false, 0},
        {L"", false, 0},
    };
    for (const Case& c : cases) {
      auto s = Own(CreateTimeSpanFromString(c.text));
      EXPECT_EQ(s != nullptr, c.ok) << c.text;
      if (s && c.ok) {
        EXPECT_EQ(s->Ticks(), c.ticks) << c.text;
      }
    }
  });
}

TEST(TimeSpan, Text) {
  struct Case {
    long long ticks;
    const wchar_t* picture;
    bool daySeparator;
    unsigned int size;
    const wchar_t* expected; // null: false
  } cases[] = {
      {-90 * kMinute, nullptr, true, 40, L"-0.01:30:00.0000000"},
      {-90 * kMinute, nullptr, false, 40, L"-001:30:00.0000000"},
      {2 * kDay + 5 * kHour + 1234567, nullptr, true, 40, L"2.05:00:00.1234567"},
      {kHour + 4 * kMinute, L"H:mm", true, 40, L"0.1:04"},
      {3456789, L"ss.fff", false, 40, L"000.345"},
      {3456789, L"ss.ffffffffff", false, 40, L"000.3456789"},     // an eighth f ends the text
      {-90 * kMinute, nullptr, false, 19, L"-001:30:00.0000000"}, // exactly fits
      {-90 * kMinute, nullptr, false, 18, nullptr},
      {90 * kMinute, nullptr, true, 19, L"0.01:30:00.0000000"},
      {90 * kMinute, nullptr, true, 18, nullptr}, // the separator is not counted: too small
  };
  OnPinnedThread(1033, [&] {
    for (const Case& c : cases) {
      wchar_t buffer[48];
      std::wmemset(buffer, 0x7F7F, 48);
      auto s = Own(CreateTimeSpan(c.ticks));
      EXPECT_EQ(s->Format(buffer, c.size, c.picture, c.daySeparator), c.expected != nullptr)
          << c.ticks << " " << c.size;
      if (c.expected) {
        EXPECT_STREQ(buffer, c.expected);
      }
      for (unsigned int i = c.size; i < 48; ++i)
        ASSERT_EQ(buffer[i], 0x7F7F) << i;
    }
  });
}

TEST(TimeSpan, Arithmetic) {
  auto a = Own(CreateTimeSpan(5 * kHour));
  auto b = Own(CreateTimeSpan(-7 * kHour));
  EXPECT_TRUE(a->Add(b.get()));
  EXPECT_EQ(a->Ticks(), -2 * kHour);
  EXPECT_TRUE(a->Duration());
  EXPECT_EQ(a->Ticks(), 2 * kHour);
  EXPECT_TRUE(a->Subtract(b.get()));
  EXPECT_EQ(a->Ticks(), 9 * kHour);
  EXPECT_TRUE(a->Multiply(-0.5));
  EXPECT_EQ(a->Ticks(), -4.5 * kHour);
  EXPECT_TRUE(a->Divide(-3));
  EXPECT_EQ(a->Ticks(), 1.5 * kHour);
  EXPECT_FALSE(a->Divide(0));
  EXPECT_FALSE(a->Multiply(NAN));
  EXPECT_FALSE(a->Multiply(1e300));
  EXPECT_FALSE(a->Add(nullptr));
  EXPECT_EQ(a->Ticks(), 1.5 * kHour);
  auto max = Own(CreateTimeSpan(LLONG_MAX));
  auto min = Own(CreateTimeSpan(LLONG_MIN));
  auto one = Own(CreateTimeSpan(1LL));
  EXPECT_FALSE(max->Add(one.get()));
  EXPECT_FALSE(min->Subtract(one.get()));
  EXPECT_FALSE(min->Negate());
  EXPECT_FALSE(min->Duration());
  EXPECT_EQ(min->Ticks(), LLONG_MIN);
  EXPECT_TRUE(max->Negate());
  EXPECT_EQ(max->Ticks(), -LLONG_MAX);
  EXPECT_TRUE(a->Parse(L"1:00"));
  EXPECT_EQ(a->Ticks(), kHour);
  EXPECT_FALSE(a->Parse(L"nonsense"));
  EXPECT_EQ(a->Ticks(), kHour);
  auto t = Own(a->ToTime());
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Hours(), 1);
  EXPECT_FALSE(Own(b->ToTime()));
  auto day = Own(CreateTimeSpan(kDay));
  EXPECT_FALSE(Own(day->ToTime()));
}

TEST(Compare, NullsAndOrder) {
  auto a = Own(CreateTimeSpan(-1LL)), b = Own(CreateTimeSpan(1LL));
  EXPECT_EQ(qxTimeSpan::Compare(a.get(), b.get()), QX_CMP_LESS);
  EXPECT_EQ(qxTimeSpan::Compare(b.get(), a.get()), QX_CMP_GREATER);
  EXPECT_EQ(a->CompareTo(a.get()), QX_CMP_EQUAL);
  EXPECT_EQ(a->CompareTo(nullptr), QX_CMP_NULL);
  EXPECT_EQ(qxTimeSpan::Compare(nullptr, nullptr), QX_CMP_EQUAL);
  auto t = Own(qxTime::MinValue()), u = Own(qxTime::MaxValue());
  EXPECT_EQ(qxTime::Compare(t.get(), u.get()), QX_CMP_LESS);
  EXPECT_EQ(qxTime::Compare(nullptr, u.get()), QX_CMP_NULL);
  auto d = Own(qxDateTime::MinValue()), e = Own(qxDateTime::MaxValue());
  EXPECT_EQ(qxDateTime::Compare(e.get(), d.get()), QX_CMP_GREATER);
  EXPECT_EQ(qxDateTime::Compare(nullptr, d.get()), QX_CMP_NULL);
  EXPECT_EQ(qxDateTime::Compare(nullptr, nullptr), QX_CMP_EQUAL);
  EXPECT_TRUE(d->Equals(Own(CreateDateTime(1, 1, 1)).get()));
  EXPECT_FALSE(d->Equals(nullptr));
}

// -- qxTime

TEST(Time, RangesAndParts) {
  EXPECT_FALSE(Own(CreateTime(24, 0, 0)));
  EXPECT_FALSE(Own(CreateTime(0, 60, 0)));
  EXPECT_FALSE(Own(CreateTime(0, 0, 60)));
  EXPECT_FALSE(Own(CreateTime(-1, 0, 0)));
  EXPECT_FALSE(Own(CreateTime(0, 0, 0, 1000)));
  EXPECT_FALSE(Own(CreateTime(kDay)));
  EXPECT_FALSE(Own(CreateTime(-1LL)));
  EXPECT_FALSE(Own(CreateTimeFromHours(24)));
  EXPECT_FALSE(Own(CreateTimeFromMinutes(-1)));
  EXPECT_EQ(Own(CreateTimeFromHours(23.5))->Minutes(), 30);
  auto max = Own(qxTime::MaxValue());
  EXPECT_EQ(max->Hours(), 23);
  EXPECT_EQ(max->Minutes(), 59);
  EXPECT_EQ(max->Seconds(), 59);
  EXPECT_EQ(max->Milliseconds(), 999);
  EXPECT_EQ(max->FractionTicks(), 9999999);
  EXPECT_EQ(max->Ticks(), 863999999999LL);
  EXPECT_EQ(max->Literal(), 2359599999999LL);
  auto t = Own(CreateTime(13, 5, 7, 250));
  EXPECT_EQ(t->Literal(), 1305072500000LL);
  EXPECT_EQ(Own(CreateTimeFromLiteral(t->Literal()))->Ticks(), t->Ticks());
  EXPECT_FALSE(Own(CreateTimeFromLiteral(2400000000000LL)));
  EXPECT_FALSE(Own(CreateTimeFromLiteral(1060000000000LL)));
  EXPECT_FALSE(Own(CreateTimeFromLiteral(-1)));
  EXPECT_DOUBLE_EQ(t->TotalMinutes(), 13 * 60 + 5 + 7.25 / 60);
}

TEST(Time, Arithmetic) {
  auto t = Own(CreateTime(23, 0, 0));
  auto hour = Own(CreateTimeSpan(kHour));
  EXPECT_FALSE(t->Add(hour.get())); // midnight is the next day: no wrap
  EXPECT_EQ(t->Hours(), 23);
  auto almost = Own(CreateTimeSpan(kHour - 1));
  EXPECT_TRUE(t->Add(almost.get()));
  EXPECT_EQ(t->Ticks(), 863999999999LL);
  EXPECT_TRUE(t->Subtract(hour.get()));
  EXPECT_EQ(t->Hours(), 22);
  auto early = Own(CreateTime(1, 0, 0));
  auto diff = Own(early->Difference(t.get()));
  EXPECT_EQ(diff->Ticks(), kHour - (863999999999LL - kHour));
  EXPECT_FALSE(early->Subtract(Own(CreateTimeSpan(2 * kHour)).get()));
  EXPECT_TRUE(early->IsBetween(Own(CreateTime(22, 0, 0)).get(), Own(CreateTime(2, 0, 0)).get()));
  EXPECT_FALSE(early->IsBetween(Own(CreateTime(2, 0, 0)).get(), Own(CreateTime(22, 0, 0)).get()));
  EXPECT_FALSE(early->IsBetween(early.get(), early.get()));
  EXPECT_TRUE(early->Set(4, 5, 6, 7));
  EXPECT_FALSE(early->Set(4, 5, 60, 7));
  EXPECT_EQ(early->Literal(), 405060070000LL);
  EXPECT_EQ(Own(early->ToTimeSpan())->Ticks(), early->Ticks());
  qxDATE d{2024, 2, 29};
  auto on = Own(early->OnDate(&d));
  ASSERT_TRUE(on);
  EXPECT_EQ(on->Day(), 29);
  EXPECT_EQ(on->Hours(), 4);
  qxDATE bad{2023, 2, 29}, year0{0, 3, 1};
  EXPECT_FALSE(Own(early->OnDate(&bad)));
  EXPECT_FALSE(Own(early->OnDate(&year0)));
}

TEST(Time, Text) {
  OnPinnedThread(1033, [] {
    struct Case {
      const wchar_t* picture;
      const wchar_t* expected;
    } cases[] = {
        {L"HH:mm:ss.fffffff", L"13:05:07.2500001"},
        {L"h:mm", L"13:05"}, // no "t": 24-hour clock forced
        {L"h:mm tt", L"1:05 PM"},
        {L"HH:mm:ss.ff", L"13:05:07.25"},
        {L"ss ffffffffff", L"07 2500001"}, // an eighth f ends the text
    };
    auto t = Own(CreateTime(13 * kHour + 5 * kMinute + 72500001LL));
    for (const Case& c : cases) {
      wchar_t buffer[32];
      EXPECT_TRUE(t->Format(buffer, 32, c.picture)) << c.picture;
      EXPECT_STREQ(buffer, c.expected);
    }
    wchar_t buffer[32];
    EXPECT_TRUE(t->Format(buffer, 32, nullptr));
    EXPECT_STREQ(buffer, L"1:05:07 PM");
    EXPECT_FALSE(t->Format(buffer, 5, L"HH:mm:ss"));
  });
}

TEST(ParseTimeString, Forms) {
  struct Case {
    const wchar_t* text;
    bool ok;
    int hours, minutes;
    double seconds;
  } cases[] = {
      {L"14:30", true, 14, 30, 0},
      {L" 14 : 30 : 15.25 ", true, 14, 30, 15.25},
      {L"14", true, 14, 0, 0},
      {L"1020304000005", true, 10, 20, 30.4000005},
      {L"2400000000000", false, 0, 0, 0},
      {L"2:30 PM", true, 14, 30, 0},
      {L"12:00 am", true, 0, 0, 0},
      {L"12 pm", true, 12, 0, 0},
      {L"PM 2:30", true, 14, 30, 0},
      {L"13:00 pm", false, 0, 0, 0},
      {L"14::30", false, 0, 0, 0}, // a separator run of another length
      {L"24:00", false, 0, 0, 0},
      {L"14:60", false, 0, 0, 0},
      {L"14:30:60", false, 0, 0, 0},
      {L"14:30:-1", false, 0, 0, 0},
      {L"14:30:nan", false, 0, 0, 0},
      {L"14:30x", false, 0, 0, 0},
      {L"14:", false, 0, 0, 0},
      {L":30", false, 0, 0, 0},
      {L"", false, 0, 0, 0},
  };
  OnPinnedThread(1033, [&] {
    for (const Case& c : cases) {
      int h = -1, m = -1;
      double s = -1;
      EXPECT_EQ(ParseTimeString(c.text, &h, &m, &s), c.ok) << c.text;
      if (c.ok) {
        EXPECT_EQ(h, c.hours) << c.text;
        EXPECT_EQ(m, c.minutes) << c.text;
        EXPECT_DOUBLE_EQ(s, c.seconds) << c.text;
      }
    }
    int h = 0, m = 0;
    double s = 0;
    EXPECT_FALSE(ParseTimeString(nullptr, &h, &m, &s));
    EXPECT_FALSE(ParseTimeString(L"1:00", nullptr, &m, &s));
  });
  OnPinnedThread(1041, [] { // ja-JP: the designator before the time
    int h = 0, m = 0;
    double s = 0;
    EXPECT_TRUE(ParseTimeString(L"\u5348\u5f8c 2:30", &h, &m, &s));
    EXPECT_EQ(h, 14);
  });
}

// -- qxDateTime

TEST(DateTime, RangesAndParts) {
  auto max = Own(qxDateTime::MaxValue());
  EXPECT_EQ(max->Ticks(), 3155378975999999999LL);
  EXPECT_EQ(max->Year(), 9999);
  EXPECT_EQ(max->Month(), 12);
  EXPECT_EQ(max->Day(), 31);
  EXPECT_EQ(max->FractionTicks(), 9999999);
  EXPECT_EQ(max->DayNumber(), 3652058);
  EXPECT_EQ(max->DayOfYear(), 365);
  EXPECT_FALSE(Own(CreateDateTime(3155378976000000000LL)));
  EXPECT_FALSE(Own(CreateDateTime(-1LL)));
  EXPECT_FALSE(Own(CreateDateTime(2023, 2, 29)));
  EXPECT_FALSE(Own(CreateDateTime(0, 12, 31)));
  EXPECT_FALSE(Own(CreateDateTime(10000, 1, 1)));
  EXPECT_FALSE(Own(CreateDateTime(2024, 1, 1, 24, 0, 0)));
  EXPECT_FALSE(Own(CreateDateTimeFromDays(3652059)));
  EXPECT_FALSE(Own(CreateDateTimeFromDays(-0.5)));
  EXPECT_EQ(Own(CreateDateTimeFromDays(0.5))->Hours(), 12);
  auto d = Own(CreateDateTime(2024, 3, 5, 14, 30, 15, 250));
  ASSERT_TRUE(d);
  EXPECT_EQ(d->DayOfWeek(), 3); // a Tuesday
  EXPECT_EQ(d->DayOfYear(), 65);
  EXPECT_EQ(d->Milliseconds(), 250);
  EXPECT_EQ(DateToLiteral(d->Date()), 20240305);
  EXPECT_EQ(d->Time()->Hours(), 14);
  long date = 0;
  long long clock = 0;
  EXPECT_TRUE(d->Literal(&date, &clock));
  EXPECT_EQ(date, 20240305);
  EXPECT_EQ(clock, 1430152500000LL);
  EXPECT_EQ(Own(CreateDateTimeFromLiteral(date, clock))->Ticks(), d->Ticks());
  EXPECT_FALSE(Own(CreateDateTimeFromLiteral(20230229, 0)));
  EXPECT_FALSE(Own(CreateDateTimeFromLiteral(20240305, 2400000000000LL)));
  qxDATE day{2024, 3, 5};
  auto t = Own(CreateTime(14, 30, 15, 250));
  EXPECT_EQ(Own(CreateDateTime(&day, t.get()))->Ticks(), d->Ticks());
  EXPECT_EQ(Own(CreateDateTime(&day))->Hours(), 0);
}

TEST(DateTime, Arithmetic) {
  auto d = Own(CreateDateTime(2024, 1, 31, 10, 0, 0));
  EXPECT_TRUE(d->AddMonths(1));
  EXPECT_EQ(DateToLiteral(d->Date()), 20240229);
  EXPECT_EQ(d->Hours(), 10);
  EXPECT_TRUE(d->AddMonths(-14));
  EXPECT_EQ(DateToLiteral(d->Date()), 20221229);
  EXPECT_FALSE(d->AddMonths(-2022 * 12));
  EXPECT_FALSE(d->AddMonths(INT_MAX));
  auto span = Own(CreateTimeSpan(14 * kHour));
  EXPECT_TRUE(d->Add(span.get()));
  EXPECT_EQ(DateToLiteral(d->Date()), 20221230);
  EXPECT_EQ(d->Hours(), 0);
  auto other = Own(CreateDateTime(2022, 12, 29));
  auto diff = Own(d->Difference(other.get()));
  EXPECT_EQ(diff->Ticks(), kDay);
  auto back = Own(other->Difference(d.get()));
  EXPECT_EQ(back->Ticks(), -kDay);
  auto max = Own(qxDateTime::MaxValue());
  auto tick = Own(CreateTimeSpan(1LL));
  EXPECT_FALSE(max->Add(tick.get()));
  EXPECT_EQ(max->Ticks(), 3155378975999999999LL);
  auto min = Own(qxDateTime::MinValue());
  EXPECT_FALSE(min->Subtract(tick.get()));
  EXPECT_TRUE(min->SetTicks(kDay * 59));
  EXPECT_EQ(DateToLiteral(min->Date()), 10301);
  EXPECT_EQ(Own(min->TimeOfDay())->Ticks(), 0);
}

TEST(DateTime, TextBothWays) {
  OnPinnedThread(1031, [] {
    auto d = Own(CreateDateTime(2024, 3, 5, 14, 30, 0));
    wchar_t buffer[40];
    EXPECT_TRUE(d->Format(buffer, 40, 1, L".", L".", L"HH:mm", false));
    EXPECT_STREQ(buffer, L"05.03.2024 14:30");
    auto back = Own(CreateDateTimeFromString(buffer));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->Ticks(), d->Ticks());
    auto midnight = Own(CreateDateTime(2024, 3, 5));
    EXPECT_TRUE(midnight->Format(buffer, 40, 1, L".", L".", L"HH:mm", false));
    EXPECT_STREQ(buffer, L"05.03.2024");
    EXPECT_TRUE(midnight->Format(buffer, 40, 1, L".", L".", L"HH:mm", true));
    EXPECT_STREQ(buffer, L"05.03.2024 00:00");
    EXPECT_TRUE(d->Format(buffer, 12, 1, L".", L".", L"HH:mm", true)); // no room: the date
    EXPECT_STREQ(buffer, L"05.03.2024");
    EXPECT_FALSE(d->Format(buffer, 14, 1, L".", L".", L"HH:mm", true)); // the time cannot fit
    EXPECT_STREQ(buffer, L"05.03.2024");
    EXPECT_FALSE(d->Format(buffer, 40, 3, L".", L".", L"HH:mm", true));
    struct Case {
      const wchar_t* text;
      long long expected; // -1: null
    } cases[] = {
        {L"20240305143000000000000", -1},
        {L"202403051430000000000", d->Ticks()},
        {L" 5.3.2024\t14:30 ", d->Ticks()},
        {L"5.3.2024", midnight->Ticks()},
        {L"5.3 14:30", Own(CreateDateTime(2026, 3, 5, 14, 30, 0))->Ticks()},
        {L"5.3.2024 25:00", -1},
        {L"31.2.2024 10:00", -1},
        {L"", -1},
    };
    for (const Case& c : cases) {
      auto p = Own(CreateDateTimeFromString(c.text));
      EXPECT_EQ(p ? p->Ticks() : -1, c.expected) << c.text;
    }
    EXPECT_TRUE(d->Parse(L"1.1.2000"));
    EXPECT_EQ(DateToLiteral(d->Date()), 20000101);
    EXPECT_FALSE(d->Parse(L"x"));
    EXPECT_EQ(DateToLiteral(d->Date()), 20000101);
  });
}

TEST(DateTime, FromTheSystemClock) {
  qxtest::RunOnNewThread([] {
    qx::platform::TimeSource source{UtcSeconds(2026, 3, 15), 250000000, -3600};
    qx::platform::SetThreadTimeSource(&source);
    auto d = Own(CreateDateTimeFromSystemTime());
    ASSERT_TRUE(d);
    EXPECT_EQ(DateToLiteral(d->Date()), 20260315);
    EXPECT_EQ(d->Hours(), 11);
    EXPECT_EQ(d->Milliseconds(), 250);
    auto t = Own(CreateTimeFromSystemTime());
    EXPECT_EQ(t->Ticks(), 11 * kHour + 2500000);
  });
}

} // namespace
