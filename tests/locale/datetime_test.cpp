// qxTimeSpan, qxTime, qxDateTime and ParseTimeString: ranges, parts, bounded
// arithmetic, literals and text both ways (random values: datetime_fuzz).
#include "common/frame_call_table.h"
#include "common/locale_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <memory>
#include <vector>

using qxtest::ExpectCalls;
using qxtest::OnPinnedThread;
using qxtest::UtcSeconds;

namespace {

template <class T> std::unique_ptr<T> Own(T* p) { return std::unique_ptr<T>(p); }

constexpr long long kDay = 864000000000LL;
constexpr long long kHour = 36000000000LL;
constexpr long long kMinute = 600000000LL;
constexpr long long kMaxDateTime = 3155378975999999999LL;
constexpr long long kNoObject = -999; // Ticks of a null object

// Ticks - the ticks of a new object, which it deletes; kNoObject for null.
template <class T> long long Ticks(T* p) { return p ? Own(p)->Ticks() : kNoObject; }
// Day - the date of a date-time as a literal.
template <class T> long Day(const T& d) { return DateToLiteral(d->Date()); }

TEST(TimeSpan, Totals) {
  auto s = Own(CreateTimeSpan(-90 * kMinute));
  EXPECT_DOUBLE_EQ(s->TotalHours(), -1.5);
  EXPECT_DOUBLE_EQ(s->TotalMinutes(), -90);
  EXPECT_DOUBLE_EQ(s->TotalDays(), -1.5 / 24);
}

TEST(TimeSpan, FromString) {
  // 14 digits or more are the span literal (13 are a time of day, so 25
  // hours fail); days beyond 32 bits or ticks beyond 64 fail.
  struct Case {
    const wchar_t* text;
    long long ticks;
  } cases[] = {{L"-00000000000001", -1},
               {L"+00011020304000005", kDay + 10 * kHour + 20 * kMinute + 304000005LL},
               {L"1020304000005", 10 * kHour + 20 * kMinute + 304000005LL},
               {L"00002500000000000", 25 * kHour},
               {L"12:30", 12 * kHour + 30 * kMinute},
               {L"  -1.12:30", -(kDay + 12 * kHour + 30 * kMinute)},
               {L"-0.01:30:00.0000000", -90 * kMinute},
               {L"3 1:00", 3 * kDay + kHour}};
  const wchar_t* failures[] = {
      L"2500000000000", L"99999999999999999999999", L"00106752000000000000000", L"1.", L"x", L""};
  OnPinnedThread(1033, [&] {
    for (const Case& c : cases)
      EXPECT_EQ(Ticks(CreateTimeSpanFromString(c.text)), c.ticks) << c.text;
    for (const wchar_t* text : failures)
      EXPECT_EQ(Ticks(CreateTimeSpanFromString(text)), kNoObject) << text;
  });
}

TEST(TimeSpan, Text) {
  // Pictures (the default one: datetime_fuzz). An eighth f ends the text.
  struct Case {
    long long ticks;
    const wchar_t* picture;
    bool daySeparator;
    unsigned int size;
    const wchar_t* expected; // null: false
  } cases[] = {
      {kHour + 4 * kMinute, L"H:mm", true, 40, L"0.1:04"},
      {3456789, L"ss.fff", false, 40, L"000.345"},
      {3456789, L"ss.ffffffffff", false, 40, L"000.3456789"},
  };
  OnPinnedThread(1033, [&] {
    for (const Case& c : cases) {
      qxtest::TextBuffer b(c.size);
      auto s = Own(CreateTimeSpan(c.ticks));
      EXPECT_EQ(s->Format(b.data(), c.size, c.picture, c.daySeparator), c.expected != nullptr)
          << c.ticks << " " << c.size;
      EXPECT_STREQ(c.expected ? b.data() : nullptr, c.expected);
      EXPECT_TRUE(b.GuardIntact()) << c.ticks << " " << c.size;
    }
  });
}

// Sums, negation and their overflow are compared exactly in datetime_fuzz.
TEST(TimeSpan, ScalingParsingAndTimesOfDay) {
  auto a = Own(CreateTimeSpan(9 * kHour));
  auto b = Own(CreateTimeSpan(-7 * kHour));
  auto day = Own(CreateTimeSpan(kDay));
  ExpectCalls(
      {CALL(a->Multiply(-0.5), true), CALL(a->Ticks(), -4.5 * kHour), CALL(a->Divide(-3), true),
       CALL(a->Ticks(), 1.5 * kHour), CALL(a->Divide(0), false), CALL(a->Multiply(NAN), false),
       CALL(a->Multiply(1e300), false), CALL(a->Add(nullptr), false), CALL(a->Ticks(), 1.5 * kHour),
       CALL(a->Parse(L"1:00"), true), CALL(a->Ticks(), kHour), CALL(a->Parse(L"nonsense"), false),
       CALL(a->Ticks(), kHour), CALL(Ticks(a->ToTime()), kHour),
       CALL(Ticks(b->ToTime()), kNoObject), CALL(Ticks(day->ToTime()), kNoObject)});
}

TEST(Compare, NullsAndOrder) {
  auto a = Own(CreateTimeSpan(-1LL));
  auto t = Own(qxTime::MinValue()), u = Own(qxTime::MaxValue());
  auto d = Own(qxDateTime::MinValue()), e = Own(qxDateTime::MaxValue());
  auto first = Own(CreateDateTime(1, 1, 1));
  ExpectCalls({CALL(a->CompareTo(a.get()), QX_CMP_EQUAL), CALL(a->CompareTo(nullptr), QX_CMP_NULL),
               CALL(qxTimeSpan::Compare(nullptr, nullptr), QX_CMP_EQUAL),
               CALL(qxTime::Compare(t.get(), u.get()), QX_CMP_LESS),
               CALL(qxTime::Compare(nullptr, u.get()), QX_CMP_NULL),
               CALL(qxDateTime::Compare(e.get(), d.get()), QX_CMP_GREATER),
               CALL(qxDateTime::Compare(nullptr, d.get()), QX_CMP_NULL),
               CALL(qxDateTime::Compare(nullptr, nullptr), QX_CMP_EQUAL),
               CALL(d->Equals(first.get()), true), CALL(d->Equals(nullptr), false)});
}

TEST(Time, MaxValueAndTotals) {
  auto max = Own(qxTime::MaxValue());
  auto t = Own(CreateTime(13, 5, 7, 250));
  ExpectCalls({CALL(max->Hours(), 23), CALL(max->Milliseconds(), 999),
               CALL(max->FractionTicks(), 9999999), CALL(max->Ticks(), 863999999999LL)});
  EXPECT_DOUBLE_EQ(t->TotalMinutes(), 13 * 60 + 5 + 7.25 / 60);
}

// Sums within the day against exact results: datetime_fuzz.
TEST(Time, DifferencesRangesAndDates) {
  auto t = Own(qxTime::MaxValue());
  auto early = Own(CreateTime(1, 0, 0));
  auto at22 = Own(CreateTime(22, 0, 0)), at2 = Own(CreateTime(2, 0, 0));
  qxDATE leap{2024, 2, 29}, bad{2023, 2, 29}, year0{0, 3, 1};
  // IsBetween crosses midnight when the end is before the start.
  ExpectCalls(
      {CALL(Ticks(early->Difference(t.get())), kHour - 863999999999LL),
       CALL(early->IsBetween(at22.get(), at2.get()), true),
       CALL(early->IsBetween(at2.get(), at22.get()), false),
       CALL(early->IsBetween(early.get(), early.get()), false), CALL(early->Set(4, 5, 6, 7), true),
       CALL(Ticks(early->ToTimeSpan()), early->Ticks()), CALL(Own(early->OnDate(&leap))->Day(), 29),
       CALL(Own(early->OnDate(&leap))->Hours(), 4), CALL(Ticks(early->OnDate(&bad)), kNoObject),
       CALL(Ticks(early->OnDate(&year0)), kNoObject)});
}

TEST(Time, Text) {
  OnPinnedThread(1033, [] {
    // Without a "t" the 24-hour clock is forced; an eighth f ends the text.
    struct Case {
      const wchar_t* picture;
      unsigned int size;
      const wchar_t* expected; // null: false
    } cases[] = {{L"HH:mm:ss.fffffff", 32, L"13:05:07.2500001"},
                 {L"h:mm", 32, L"13:05"},
                 {L"h:mm tt", 32, L"1:05 PM"},
                 {L"HH:mm:ss.ff", 32, L"13:05:07.25"},
                 {L"ss ffffffffff", 32, L"07 2500001"},
                 {nullptr, 32, L"1:05:07 PM"},
                 {L"HH:mm:ss", 5, nullptr}};
    auto t = Own(CreateTime(13 * kHour + 5 * kMinute + 72500001LL));
    for (const Case& c : cases) {
      wchar_t buffer[32];
      EXPECT_EQ(t->Format(buffer, c.size, c.picture), c.expected != nullptr) << c.picture;
      EXPECT_STREQ(c.expected ? buffer : nullptr, c.expected);
    }
  });
}

TEST(ParseTimeString, Forms) {
  // A designator before or after.
  struct Case {
    const wchar_t* text;
    int hours, minutes;
    double seconds;
  } cases[] = {{L"14:30", 14, 30, 0},   {L" 14 : 30 : 15.25 ", 14, 30, 15.25},
               {L"14", 14, 0, 0},       {L"1020304000005", 10, 20, 30.4000005},
               {L"2:30 PM", 14, 30, 0}, {L"12:00 am", 0, 0, 0},
               {L"12 pm", 12, 0, 0},    {L"PM 2:30", 14, 30, 0}};
  // Parts out of range, separator runs of another length, text left over.
  const wchar_t* failures[] = {L"2400000000000", L"13:00 pm", L"14::30",    L"24:00",  L"14:60",
                               L"14:30:60",      L"14:30:-1", L"14:30:nan", L"14:30x", L"14:",
                               L":30",           L"",         nullptr};
  OnPinnedThread(1033, [&] {
    int h = -1, m = -1;
    double s = -1;
    for (const Case& c : cases) {
      h = m = -1;
      s = -1;
      EXPECT_TRUE(ParseTimeString(c.text, &h, &m, &s)) << c.text;
      EXPECT_EQ(h, c.hours) << c.text;
      EXPECT_EQ(m, c.minutes) << c.text;
      EXPECT_DOUBLE_EQ(s, c.seconds) << c.text;
    }
    for (const wchar_t* text : failures)
      EXPECT_FALSE(ParseTimeString(text, &h, &m, &s)) << (text ? text : L"(null)");
    EXPECT_FALSE(ParseTimeString(L"1:00", nullptr, &m, &s));
  });
  OnPinnedThread(1041, [] { // ja-JP: the designator before the time
    int h = 0, m = 0;
    double s = 0;
    EXPECT_TRUE(ParseTimeString(L"\u5348\u5f8c 2:30", &h, &m, &s));
    EXPECT_EQ(h, 14);
  });
}

// The factories' ranges and literals: datetime_fuzz.
TEST(DateTime, Parts) {
  auto max = Own(qxDateTime::MaxValue());
  auto d = Own(CreateDateTime(2024, 3, 5, 14, 30, 15, 250));
  qxDATE day{2024, 3, 5};
  auto t = Own(CreateTime(14, 30, 15, 250));
  ExpectCalls({CALL(max->Ticks(), kMaxDateTime), CALL(max->Year(), 9999), CALL(max->Month(), 12),
               CALL(max->Day(), 31), CALL(max->DayOfYear(), 365), CALL(d->DayOfWeek(), 3),
               CALL(d->DayOfYear(), 65), CALL(d->Milliseconds(), 250), CALL(d->Time()->Hours(), 14),
               CALL(Ticks(CreateDateTime(&day, t.get())), d->Ticks()),
               CALL(Own(CreateDateTime(&day))->Hours(), 0)});
}

// Month steps and sums against exact results: datetime_fuzz.
TEST(DateTime, DifferencesAndTimeOfDay) {
  auto d = Own(CreateDateTime(2022, 12, 30, 0, 0, 0));
  auto other = Own(CreateDateTime(2022, 12, 29));
  auto min = Own(qxDateTime::MinValue());
  ExpectCalls({CALL(d->AddMonths(INT_MAX), false), CALL(Ticks(d->Difference(other.get())), kDay),
               CALL(Ticks(other->Difference(d.get())), -kDay), CALL(min->SetTicks(kDay * 59), true),
               CALL(Day(min), 10301), CALL(Ticks(min->TimeOfDay()), 0)});
}

TEST(DateTime, TextBothWays) {
  OnPinnedThread(1031, [] {
    auto d = Own(CreateDateTime(2024, 3, 5, 14, 30, 0));
    auto midnight = Own(CreateDateTime(2024, 3, 5));
    // The time follows when asked for or not midnight, and when it fits: 12
    // units leave no room, 14 are too few for it (the date stays).
    struct Case {
      const qxDateTime* value;
      unsigned int size;
      short order;
      bool withTime, ok;
      const wchar_t* expected;
    } cases[] = {{d.get(), 40, 1, false, true, L"05.03.2024 14:30"},
                 {midnight.get(), 40, 1, false, true, L"05.03.2024"},
                 {midnight.get(), 40, 1, true, true, L"05.03.2024 00:00"},
                 {d.get(), 12, 1, true, true, L"05.03.2024"},
                 {d.get(), 14, 1, true, false, L"05.03.2024"},
                 {d.get(), 40, 3, true, false, nullptr}};
    for (const Case& c : cases) {
      wchar_t buffer[40];
      EXPECT_EQ(c.value->Format(buffer, c.size, c.order, L".", L".", L"HH:mm", c.withTime), c.ok)
          << c.size;
      EXPECT_STREQ(c.expected ? buffer : nullptr, c.expected);
    }
    struct Parse {
      const wchar_t* text;
      long long expected;
    } parses[] = {{L"202403051430000000000", d->Ticks()},
                  {L" 5.3.2024\t14:30 ", d->Ticks()},
                  {L"5.3.2024", midnight->Ticks()},
                  {L"5.3 14:30", Ticks(CreateDateTime(2026, 3, 5, 14, 30, 0))}};
    for (const Parse& c : parses)
      EXPECT_EQ(Ticks(CreateDateTimeFromString(c.text)), c.expected) << c.text;
    for (const wchar_t* text :
         {L"20240305143000000000000", L"5.3.2024 25:00", L"31.2.2024 10:00", L""})
      EXPECT_EQ(Ticks(CreateDateTimeFromString(text)), kNoObject) << text;
    ExpectCalls({CALL(d->Parse(L"1.1.2000"), true), CALL(Day(d), 20000101),
                 CALL(d->Parse(L"x"), false), CALL(Day(d), 20000101)});
  });
}

TEST(DateTime, FromTheSystemClock) {
  qxtest::RunOnNewThread([] {
    qx::platform::TimeSource source{UtcSeconds(2026, 3, 15), 250000000, -3600};
    qx::platform::SetThreadTimeSource(&source);
    auto d = Own(CreateDateTimeFromSystemTime());
    ASSERT_TRUE(d);
    ExpectCalls({CALL(Day(d), 20260315), CALL(d->Hours(), 11), CALL(d->Milliseconds(), 250),
                 CALL(Ticks(CreateTimeFromSystemTime()), 11 * kHour + 2500000)});
  });
}

} // namespace
