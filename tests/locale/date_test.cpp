// Calendar dates: day numbers, comparison, the clock (validity, literals
// and layouts against std::chrono: date_fuzz).
#include "common/frame_call_table.h"
#include "common/locale_support.h"
#include "frame/report.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>

using namespace qx::win;
using qxtest::ExpectCalls;
using qxtest::OnPinnedThread;
using qxtest::UtcSeconds;

namespace {

long Literal(qxDATE d) { return DateToLiteral(&d); }

// Year 0 counts back from day 0 (for day numbers only; Days2MDY refuses);
// fuzz/date_fuzz.cpp compares the calendar's days with std::chrono's.
TEST(Date, DayNumbersOfYearZeroAndBadDates) {
  using namespace std::chrono;
  const long epoch = sys_days{year{1} / January / 1}.time_since_epoch().count();
  for (qxDATE y0 : {qxDATE{0, 1, 1}, qxDATE{0, 2, 29}, qxDATE{0, 3, 1}, qxDATE{0, 12, 31}}) {
    long expected = sys_days{year{0} / y0.month / y0.day}.time_since_epoch().count() - epoch;
    EXPECT_EQ(MDY2Days(&y0), expected) << Literal(y0);
  }
  EXPECT_EQ(DayOfWeek(-1), 1);
  for (qxDATE bad : {qxDATE{2024, 0, 1}, qxDATE{2024, 1, 0}, qxDATE{-5, 1, 1}})
    EXPECT_EQ(MDY2Days(&bad), -1) << Literal(bad);
}

TEST(Date, DayNumbersOutsideTheCalendarAreReported) {
  qxtest::RunOnNewThread([] {
    qxDATE d{2024, 3, 5};
    EXPECT_FALSE(Days2MDY(-1, &d));
    EXPECT_TRUE(NullDate(&d));
    EXPECT_EQ(DateToLiteral(&d), 0);
    ASSERT_EQ(NumErrors(), 1);
    EXPECT_EQ(GetErrorNum(0), 5002);
    EXPECT_EQ(cErrorSystem::Instance()->GetResourceID(0), 9986);
    EXPECT_EQ(std::memcmp(&GetErrorGUID(0), &qx::kLibraryGuid, sizeof(GUID)), 0);
    ClearErrors();
    EXPECT_FALSE(Days2MDY(11967900, &d)); // past 31 December 32767
    ASSERT_TRUE(Days2MDY(11967899, &d));
    EXPECT_EQ(DateToLiteral(&d), 327671231);
  });
}

TEST(Date, CompareAddDiff) {
  // Exactly one null date (month or day 0) compares as -2.
  qxDATE a{2024, 3, 5}, b{2024, 3, 6}, c{2023, 12, 31}, n{0, 0, 0}, n2{2024, 0, 5}, d = c;
  ExpectCalls({CALL(DateCmp(&a, &b), -1), CALL(DateCmp(&b, &a), 1), CALL(DateCmp(&a, &a), 0),
               CALL(DateCmp(&c, &a), -1), CALL(DateCmp(&n, &a), -2), CALL(DateCmp(&a, &n2), -2),
               CALL(DateCmp(&n, &n2), 0), CALL(DateDiff(&a, &c), 65),
               CALL(DateToLiteral(DateAdd(60, &d)), 20240229),
               CALL(DateToLiteral(DateSubtract(366, &d)), 20230228)});
}

TEST(Date, SystemDateReadsTheLocalClockUntil2038) {
  // A zone east of UTC has already reached the next day.
  qxtest::RunOnNewThread([] {
    qx::platform::TimeSource source{UtcSeconds(2026, 3, 15, 23), 0, 3600};
    qx::platform::SetThreadTimeSource(&source);
    qxDATE d{};
    EXPECT_EQ(DateToLiteral(SystemDate(&d)), 20260316);
  });
  // Past the 32-bit clock (and before 1970) there is no local time: the
  // fixed answer.
  struct Case {
    long long now;
    long expected;
  } cases[] = {{UtcSeconds(2026, 3, 15), 20260315},
               {2147483647LL, 20380119}, // 03:14:07 UTC, the last second
               {2147483648LL, 20380119},
               {-1, 20380119}};
  for (const Case& c : cases) {
    OnPinnedThread(
        1033,
        [&] {
          qxDATE d{};
          EXPECT_EQ(DateToLiteral(SystemDate(&d)), c.expected) << c.now;
          __time32_t t = 7;
          EXPECT_EQ(_time32(&t), c.now >= 0 && c.now <= 2147483647LL ? c.now : -1);
        },
        c.now);
  }
}

} // namespace
