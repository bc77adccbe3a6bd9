// GetDateFormatW and GetTimeFormatW as conformance tables.
#include "platform/date_format.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace qx::win;

namespace {

SYSTEMTIME Date(WORD y, WORD m, WORD d) { return SYSTEMTIME{y, m, 3, d, 0, 0, 0, 0}; }
SYSTEMTIME Time(WORD h, WORD min, WORD s) { return SYSTEMTIME{2024, 1, 0, 1, h, min, s, 0}; }

struct Case {
  LCID lcid;
  DWORD flags;
  SYSTEMTIME value;
  const wchar_t* picture;
  int size;
  const wchar_t* expected; // null: the call fails
  DWORD error;             // last error when it fails
};

// Check - runs one case with a sentinel-filled buffer and checks that
// nothing past the stated size (or the result) was written.
template <class Fn> void Check(Fn format, const Case& c, int line) {
  std::vector<wchar_t> buf(64, L'#');
  SetLastError(0xBEEF);
  int n = format(c.lcid, c.flags, &c.value, c.picture, c.size ? buf.data() : nullptr, c.size);
  if (!c.expected) {
    EXPECT_EQ(n, 0) << "line " << line;
    EXPECT_EQ(GetLastError(), c.error) << "line " << line;
    for (wchar_t w : buf)
      ASSERT_EQ(w, L'#') << "line " << line;
    return;
  }
  std::wstring expected = c.expected;
  ASSERT_EQ(n, static_cast<int>(expected.size()) + 1) << "line " << line;
  if (c.size) {
    EXPECT_EQ(std::wstring(buf.data()), expected) << "line " << line;
    for (size_t i = expected.size() + 1; i < buf.size(); ++i)
      ASSERT_EQ(buf[i], L'#') << "line " << line;
  }
}

TEST(GetDateFormatW, PicturesAndLocaleNames) {
  const SYSTEMTIME d = Date(2024, 3, 5); // a Tuesday
  const Case cases[] = {
      {1033, 0, d, L"d dd ddd dddd", 64, L"5 05 Tue Tuesday", 0},
      {1033, 0, d, L"M MM MMM MMMM", 64, L"3 03 Mar March", 0},
      {1033, 0, Date(2009, 1, 1), L"y yy yyy yyyy", 64, L"9 09 2009 2009", 0},
      {1033, 0, d, L"y", 64, L"4", 0}, // the last digit only
      {1033, 0, d, L"'Day' d 'o''clock' ''", 64, L"Day 5 o'clock '", 0},
      {1033, 0, d, L"hh:mm 'x", 64, L"hh:mm x", 0}, // time letters copied; open quote
      {1033, 0, d, L"gg yyyy", 64, L"A.D. 2024", 0},
      {1033, 0, d, nullptr, 64, L"3/5/2024", 0},
      {1033, DATE_LONGDATE, d, nullptr, 64, L"Tuesday, March 05, 2024", 0},
      {1033, DATE_YEARMONTH, d, nullptr, 64, L"March, 2024", 0},
      {1031, 0, d, nullptr, 64, L"05.03.2024", 0},
      {1031, DATE_LONGDATE, d, nullptr, 64, L"Dienstag, 5. M\u00E4rz 2024", 0},
      {1036, 0, d, L"dddd d MMMM", 64, L"mardi 5 mars", 0},
      {1041, 0, d, nullptr, 64, L"2024/03/05", 0},
      {LOCALE_USER_DEFAULT, 0, d, L"yyyy", 64, L"2024", 0},
      // The day of week in the record is ignored.
      {1033, 0, SYSTEMTIME{2024, 3, 0, 5, 0, 0, 0, 0}, L"ddd", 64, L"Tue", 0},
      // Buffers: probe, exact fit, one short.
      {1033, 0, d, L"yyyy", 0, L"2024", 0},
      {1033, 0, d, L"yyyy", 5, L"2024", 0},
      {1033, 0, d, L"yyyy", 4, nullptr, ERROR_INSUFFICIENT_BUFFER},
      // Refusals.
      {1033, 0, Date(1600, 12, 31), L"yyyy", 64, nullptr, ERROR_INVALID_PARAMETER},
      {1033, 0, Date(2023, 2, 29), L"yyyy", 64, nullptr, ERROR_INVALID_PARAMETER},
      {1033, 0, Date(2024, 13, 1), L"yyyy", 64, nullptr, ERROR_INVALID_PARAMETER},
      {0x12345, 0, d, L"yyyy", 64, nullptr, ERROR_INVALID_PARAMETER},
      {1033, DATE_SHORTDATE, d, L"yyyy", 64, nullptr, ERROR_INVALID_FLAGS},
      {1033, DATE_SHORTDATE | DATE_LONGDATE, d, nullptr, 64, nullptr, ERROR_INVALID_FLAGS},
      {1033, DATE_LTRREADING | DATE_RTLREADING, d, nullptr, 64, nullptr, ERROR_INVALID_FLAGS},
      {1033, 0x100, d, nullptr, 64, nullptr, ERROR_INVALID_FLAGS},
      {1033, 0, d, L"yyyy", -1, nullptr, ERROR_INVALID_PARAMETER},
  };
  for (const Case& c : cases)
    Check(GetDateFormatW, c, static_cast<int>(&c - cases));
  EXPECT_EQ(GetDateFormatW(1033, 0, nullptr, L"yyyy", nullptr, 0), 5); // today
}

TEST(GetTimeFormatW, PicturesAndFlags) {
  const SYSTEMTIME pm = Time(15, 4, 5);
  const SYSTEMTIME am = Time(0, 4, 5);
  const Case cases[] = {
      {1033, 0, pm, nullptr, 64, L"3:04:05 PM", 0},
      {1033, 0, am, nullptr, 64, L"12:04:05 AM", 0},
      {1033, 0, pm, L"hh HH h H m mm s ss t tt", 64, L"03 15 3 15 4 04 5 05 P PM", 0},
      {1033, TIME_NOSECONDS, pm, nullptr, 64, L"3:04 PM", 0},
      {1033, TIME_NOMINUTESORSECONDS, pm, nullptr, 64, L"3 PM", 0},
      {1033, TIME_NOTIMEMARKER, pm, nullptr, 64, L"3:04:05", 0},
      {1033, TIME_FORCE24HOURFORMAT, pm, nullptr, 64, L"15:04:05 PM", 0},
      {1033, TIME_FORCE24HOURFORMAT | TIME_NOTIMEMARKER, pm, nullptr, 64, L"15:04:05", 0},
      {1033, TIME_NOTIMEMARKER, pm, L"tt h:mm", 64, L"3:04", 0}, // marker first
      {1033, 0, pm, L"h 'h' d", 64, L"3 h d", 0},                // date letters copied
      {1031, 0, pm, nullptr, 64, L"15:04:05", 0},
      {1031, 0, pm, L"h:mm tt", 64, L"3:04 ", 0}, // de-DE has empty designators
      {1033, 0, pm, nullptr, 0, L"3:04:05 PM", 0},
      {1033, 0, pm, nullptr, 10, nullptr, ERROR_INSUFFICIENT_BUFFER},
      {1033, 0, Time(24, 0, 0), nullptr, 64, nullptr, ERROR_INVALID_PARAMETER},
      {1033, 0, Time(1, 60, 0), nullptr, 64, nullptr, ERROR_INVALID_PARAMETER},
      {1033, 0, SYSTEMTIME{2024, 1, 0, 1, 1, 0, 0, 1000}, nullptr, 64, nullptr,
       ERROR_INVALID_PARAMETER},
      {1033, 0x10, pm, nullptr, 64, nullptr, ERROR_INVALID_FLAGS},
      {1033, LOCALE_NOUSEROVERRIDE, pm, L"h", 64, nullptr, ERROR_INVALID_FLAGS},
  };
  for (const Case& c : cases)
    Check(GetTimeFormatW, c, static_cast<int>(&c - cases));
}

} // namespace
