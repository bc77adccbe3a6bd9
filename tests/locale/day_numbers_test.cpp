// The inline MDY2Days and Days2MDY against the library's general forms:
// every day number, and every month and day byte over the years where the
// calendar turns (date_fuzz compares both with std::chrono).
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(DayNumbers, InlineFormsAgreeWithTheGeneralOnes) {
  for (int year : {-32768, -1, 0, 1, 3, 4, 99, 100, 399, 400, 1900, 2000, 9999, 32767}) {
    for (int month = -128; month < 128; ++month)
      for (int day = -128; day < 128; ++day) {
        const qxDATE d{static_cast<int16_t>(year), static_cast<int8_t>(month),
                       static_cast<int8_t>(day)};
        ASSERT_EQ(MDY2Days(&d), qx::detail::MDY2DaysGeneral(&d))
            << year << ' ' << month << ' ' << day;
      }
  }
  for (int year = 0; year < 32768; ++year)
    for (int month = 1; month <= 12; ++month)
      for (int day : {1, 28, 29, 31}) {
        const qxDATE d{static_cast<int16_t>(year), static_cast<int8_t>(month),
                       static_cast<int8_t>(day)};
        ASSERT_EQ(MDY2Days(&d), qx::detail::MDY2DaysGeneral(&d))
            << year << ' ' << month << ' ' << day;
      }
  EXPECT_EQ(MDY2Days(nullptr), -1);

  for (long n = -2; n <= 11967901; ++n) {
    qxDATE fast{1, 1, 1}, general{1, 1, 1};
    ASSERT_EQ(Days2MDY(n, &fast), qx::detail::Days2MDYGeneral(n, &general)) << n;
    ASSERT_EQ(std::memcmp(&fast, &general, sizeof fast), 0) << n;
  }
  EXPECT_FALSE(Days2MDY(0, nullptr));
  ClearErrors();
}

} // namespace
