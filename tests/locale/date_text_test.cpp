// Dates as text: the numeric layouts, the system's pictures, and the
// database pictures in both directions.
#include "common/guarded_write.h"
#include "common/locale_support.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

using qxtest::OnPinnedThread;

namespace {

using qxtest::Written;

constexpr unsigned int kBuffer = 40;
const wchar_t* const kNothing = qxtest::kNothingWritten;

TEST(MakeDateString, Layouts) {
  struct Case {
    short order;
    const wchar_t *s1, *s2;
    unsigned int size;
    bool ok;
    const wchar_t* expected;
  } cases[] = {
      // MakeDateString: one delimiter (0: none), orders 0..2 and 5.
      {0, L"/", nullptr, kBuffer, true, L"03/05/2024"},
      {1, L".", nullptr, kBuffer, true, L"05.03.2024"},
      {2, L"-", nullptr, kBuffer, true, L"2024-03-05"},
      {5, L"-", nullptr, kBuffer, true, L"2024-05-03"},
      {0, L"", nullptr, kBuffer, true, L"03052024"},
      {2, L"", nullptr, kBuffer, true, L"20240305"},
      {3, L"/", nullptr, kBuffer, false, kNothing},
      {4, L"/", nullptr, kBuffer, false, kNothing},
      {-1, L"/", nullptr, kBuffer, false, kNothing},
      {0, L"/", nullptr, 11, true, L"03/05/2024"},
      {0, L"/", nullptr, 10, false, L""}, // too small: the empty text
      {0, L"/", nullptr, 0, false, kNothing},
      // MakeDateStringEx: separator strings, null as none.
      {1, L". ", L". ", kBuffer, true, L"05. 03. 2024"},
      {2, L"\u5e74", L"\u6708", kBuffer, true, L"2024\u5e7403\u670805"},
      {5, nullptr, L"/", kBuffer, true, L"202405/03"},
      {3, L"/", L"/", kBuffer, false, kNothing},
      {6, L"/", L"/", kBuffer, false, kNothing},
      {0, L"--", L"--", 12, false, L""},
      {0, L"--", L"--", 13, true, L"03--05--2024"},
  };
  for (const Case& c : cases) {
    qxDATE d{2024, 3, 5};
    bool ok = false;
    EXPECT_EQ(Written(
                  c.size,
                  [&](wchar_t* buffer) {
                    if (c.s2)
                      return MakeDateStringEx(buffer, c.size, &d, c.order, c.s1, c.s2);
                    MakeDateString(buffer, c.size, &d, c.order, c.s1[0]);
                    return c.ok;
                  },
                  &ok),
              c.expected)
        << c.order << " " << c.size;
    EXPECT_EQ(ok, c.ok) << c.order << " " << c.size;
  }
}

TEST(FormatDateString, SystemPictures) {
  OnPinnedThread(1033, [] {
    struct Case {
      qxDATE date;
      const wchar_t* picture;
      unsigned int size;
      bool ok;
      const wchar_t* expected;
    } cases[] = {
        {{2024, 3, 5}, L"yyyy-MM-dd", kBuffer, true, L"2024-03-05"},
        {{2024, 3, 5}, L"dddd, MMMM d, yyyy", kBuffer, true, L"Tuesday, March 5, 2024"},
        {{2024, 3, 5}, nullptr, kBuffer, true, L"3/5/2024"},
        {{2024, 3, 5}, L"yyyy-MM-dd", 5, true, L"2024"}, // cut to the size
        {{1500, 3, 5}, L"yyyy", kBuffer, false, L""},    // before the system's calendar
        {{2023, 2, 29}, L"yyyy", kBuffer, false, L""},
        {{0, 0, 0}, L"yyyy", kBuffer, false, L""},
    };
    for (const Case& c : cases) {
      wchar_t picture[64] = {};
      if (c.picture)
        std::wcscpy(picture, c.picture);
      bool ok = false;
      EXPECT_EQ(Written(
                    c.size,
                    [&](wchar_t* buffer) {
                      return FormatDateString(buffer, c.size, c.date,
                                              c.picture ? picture : nullptr);
                    },
                    &ok),
                c.expected);
      EXPECT_EQ(ok, c.ok) << c.picture;
    }
    wchar_t buffer[kBuffer];
    EXPECT_TRUE(FormatDateString(buffer, kBuffer, qxDATE{2024, 3, 5}, short(LOCALE_SLONGDATE)));
    EXPECT_STREQ(buffer, L"Tuesday, March 05, 2024"); // the database's en-US long date
    EXPECT_FALSE(FormatDateString(buffer, kBuffer, qxDATE{2024, 3, 5}, short(0x7777)));
  });
  OnPinnedThread(1031, [] {
    wchar_t buffer[kBuffer];
    EXPECT_TRUE(FormatDateString(buffer, kBuffer, qxDATE{2024, 3, 5}, short(LOCALE_SSHORTDATE)));
    EXPECT_STREQ(buffer, L"05.03.2024");
  });
}

// SqlWritten - qxSQLDateToString of 5 March 2024 by `picture`, which must
// succeed.
std::wstring SqlWritten(const wchar_t* picture) {
  bool ok = false;
  std::wstring text = Written(
      kBuffer,
      [&](wchar_t* buffer) {
        return qxSQLDateToString(qxDATE{2024, 3, 5}, picture, buffer, kBuffer);
      },
      &ok);
  EXPECT_TRUE(ok) << picture;
  return text;
}

TEST(SQLDate, Writing) {
  OnPinnedThread(1033, [] {
    EXPECT_EQ(SqlWritten(L"yyyy-mm-dd"), L"2024-03-05");
    EXPECT_EQ(SqlWritten(L"YYYY/MM/DD"), L"2024/03/05");
    EXPECT_EQ(SqlWritten(L"dd-mmm-yyyy"), L"05-Mar-2024");
    EXPECT_EQ(SqlWritten(L"dddd, d mmmm yyyy"), L"Tuesday, 5 March 2024");
    EXPECT_EQ(SqlWritten(L"ddd yy.m.d"), L"Tue 24.3.5");
    EXPECT_EQ(SqlWritten(L"'Day' d 'of' mmmm"), L"Day 5 of March");
    EXPECT_EQ(SqlWritten(L"\"It's\" yyyy"), L"It's 2024");
    EXPECT_EQ(SqlWritten(L"(yyyy)"), L"(2024)");
    EXPECT_EQ(SqlWritten(L"  yyyy  --  mm  "), L"  2024  --  03  ");
    EXPECT_EQ(SqlWritten(L"week yyyy"), L"week 2024");
    EXPECT_EQ(SqlWritten(L"yyyymmdd"), L"yyyymmdd"); // one token, not a field: a literal
    EXPECT_EQ(SqlWritten(L""), L"");
  });
}

// Reads - qxSQLStringToDate of each text by `picture` gives the date (a
// literal); Refuses - it fails with the null date.
void Reads(const wchar_t* picture, std::initializer_list<std::pair<const wchar_t*, long>> cases) {
  for (const auto& [text, literal] : cases) {
    qxDATE d{1, 1, 1};
    EXPECT_TRUE(qxSQLStringToDate(text, picture, &d)) << text << " by " << picture;
    EXPECT_EQ(DateToLiteral(&d), literal) << text << " by " << picture;
  }
}
void Refuses(const wchar_t* picture, std::initializer_list<const wchar_t*> texts) {
  for (const wchar_t* text : texts) {
    qxDATE d{1, 1, 1};
    EXPECT_FALSE(qxSQLStringToDate(text, picture, &d)) << text << " by " << picture;
    EXPECT_TRUE(NullDate(&d)) << text;
  }
}

TEST(SQLDate, Reading) {
  OnPinnedThread(1033, [] {
    // The separator between fields is not compared; text left over or
    // missing fails.
    Reads(L"yyyy-mm-dd", {{L"2024-03-05", 20240305}, {L"2024/3/5", 20240305}});
    Reads(L"yyyy-mm-dd", {{L"2024--03--05", 20240305}});
    Refuses(L"yyyy-mm-dd", {L"2024-03-05 extra", L"2024-03", L"2024-02-30", L"2024-13-01"});
    Refuses(L"yyyy-mm-dd", {L"12024-01-01", L"2024-003-01"});
    // Names of months and days, the weekday checked.
    Reads(L"dd-mmm-yyyy", {{L"05-MAR-2024", 20240305}});
    Reads(L"d mmmm yyyy", {{L"5 march 2024", 20240305}});
    Reads(L"dddd, d mmmm yyyy", {{L"Tuesday, 5 March 2024", 20240305}});
    Refuses(L"dddd, d mmmm yyyy", {L"Monday, 5 March 2024"});
    Reads(L"ddd d mmm yyyy", {{L"Tue 5 Mar 2024", 20240305}});
    Refuses(L"ddd d mmm yyyy", {L"Tuesday 5 Mar 2024"});
    Reads(L"yy.m.d", {{L"24.3.5", 20240305}, {L"99.3.5", 20990305}});
    // Literals are exact; no year is this year, no day the first; a field
    // given twice must agree.
    Reads(L"'Day' d 'of' mmmm", {{L"Day 5 of March", 20260305}});
    Refuses(L"'Day' d 'of' mmmm", {L"day 5 of March"});
    Reads(L"mm/yyyy", {{L"3/2024", 20240301}});
    Reads(L"yyyy-m-d-yyyy", {{L"2024-3-5-2024", 20240305}});
    Refuses(L"yyyy-m-d-yyyy", {L"2024-3-5-2023"});
    Reads(L"", {{L"", 20260101}});
  });
  OnPinnedThread(1031, [] {
    Reads(L"d. mmmm yyyy", {{L"5. M\u00e4rz 2024", 20240305}});
    wchar_t buffer[kBuffer];
    EXPECT_TRUE(qxSQLDateToString(qxDATE{2024, 3, 5}, L"dddd, d. mmmm yyyy", buffer, kBuffer));
    EXPECT_STREQ(buffer, L"Dienstag, 5. M\u00e4rz 2024");
  });
}

} // namespace
