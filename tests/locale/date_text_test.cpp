// Dates as text: the numeric layouts, the system's pictures, and the
// database pictures in both directions.
#include "locale/date_test_support.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

using qxtest::OnPinnedThread;

namespace {

constexpr wchar_t kSentinel = 0x7F7F;
constexpr unsigned int kBuffer = 40;

// Untouched - nothing at or after `from` was written.
bool Untouched(const wchar_t* buffer, size_t from) {
  for (size_t i = from; i < kBuffer; ++i)
    if (buffer[i] != kSentinel)
      return false;
  return true;
}

TEST(MakeDateString, Layouts) {
  struct Case {
    short order;
    wchar_t delimiter;
    unsigned int size;
    const wchar_t* expected; // null: nothing written
  } cases[] = {
      {0, L'/', kBuffer, L"03/05/2024"},
      {1, L'.', kBuffer, L"05.03.2024"},
      {2, L'-', kBuffer, L"2024-03-05"},
      {5, L'-', kBuffer, L"2024-05-03"},
      {0, 0, kBuffer, L"03052024"},
      {2, 0, kBuffer, L"20240305"},
      {3, L'/', kBuffer, nullptr},
      {4, L'/', kBuffer, nullptr},
      {-1, L'/', kBuffer, nullptr},
      {0, L'/', 11, L"03/05/2024"},
      {0, L'/', 10, L""}, // too small: the empty text
      {0, L'/', 0, nullptr},
  };
  for (const Case& c : cases) {
    wchar_t buffer[kBuffer];
    std::wmemset(buffer, kSentinel, kBuffer);
    qxDATE d{2024, 3, 5};
    MakeDateString(buffer, c.size, &d, c.order, c.delimiter);
    if (!c.expected) {
      EXPECT_TRUE(Untouched(buffer, 0)) << c.order;
      continue;
    }
    EXPECT_STREQ(buffer, c.expected) << c.order << " " << c.size;
    EXPECT_TRUE(Untouched(buffer, c.size)) << c.order;
  }
}

TEST(MakeDateString, SeparatorStrings) {
  struct Case {
    short order;
    const wchar_t *s1, *s2;
    unsigned int size;
    bool ok;
    const wchar_t* expected; // null: nothing written
  } cases[] = {
      {1, L". ", L". ", kBuffer, true, L"05. 03. 2024"},
      {2, L"\u5e74", L"\u6708", kBuffer, true, L"2024\u5e7403\u670805"},
      {5, nullptr, L"/", kBuffer, true, L"202405/03"},
      {3, L"/", L"/", kBuffer, false, nullptr},
      {6, L"/", L"/", kBuffer, false, nullptr},
      {0, L"--", L"--", 12, false, L""},
      {0, L"--", L"--", 13, true, L"03--05--2024"},
  };
  for (const Case& c : cases) {
    wchar_t buffer[kBuffer];
    std::wmemset(buffer, kSentinel, kBuffer);
    qxDATE d{2024, 3, 5};
    EXPECT_EQ(MakeDateStringEx(buffer, c.size, &d, c.order, c.s1, c.s2), c.ok) << c.order;
    if (!c.expected) {
      EXPECT_TRUE(Untouched(buffer, 0));
      continue;
    }
    EXPECT_STREQ(buffer, c.expected);
    EXPECT_TRUE(Untouched(buffer, c.size));
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
      wchar_t buffer[kBuffer];
      std::wmemset(buffer, kSentinel, kBuffer);
      wchar_t picture[64] = {};
      if (c.picture)
        std::wcscpy(picture, c.picture);
      EXPECT_EQ(FormatDateString(buffer, c.size, c.date, c.picture ? picture : nullptr), c.ok)
          << c.picture;
      EXPECT_STREQ(buffer, c.expected);
      EXPECT_TRUE(Untouched(buffer, c.size));
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

TEST(SQLDate, Writing) {
  OnPinnedThread(1033, [] {
    struct Case {
      const wchar_t* picture;
      const wchar_t* expected; // null: false with ""
    } cases[] = {
        {L"yyyy-mm-dd", L"2024-03-05"},
        {L"YYYY/MM/DD", L"2024/03/05"},
        {L"dd-mmm-yyyy", L"05-Mar-2024"},
        {L"dddd, d mmmm yyyy", L"Tuesday, 5 March 2024"},
        {L"ddd yy.m.d", L"Tue 24.3.5"},
        {L"'Day' d 'of' mmmm", L"Day 5 of March"},
        {L"\"It's\" yyyy", L"It's 2024"},
        {L"(yyyy)", L"(2024)"},
        {L"  yyyy  --  mm  ", L"  2024  --  03  "},
        {L"week yyyy", L"week 2024"},
        {L"yyyymmdd", L"yyyymmdd"}, // one token, not a field: a literal
        {L"", L""},
    };
    for (const Case& c : cases) {
      wchar_t buffer[kBuffer];
      std::wmemset(buffer, kSentinel, kBuffer);
      EXPECT_EQ(qxSQLDateToString(qxDATE{2024, 3, 5}, c.picture, buffer, kBuffer),
                c.expected != nullptr)
          << c.picture;
      EXPECT_STREQ(buffer, c.expected ? c.expected : L"") << c.picture;
    }
    wchar_t buffer[kBuffer];
    std::wmemset(buffer, kSentinel, kBuffer);
    EXPECT_FALSE(qxSQLDateToString(qxDATE{2024, 3, 5}, L"yyyy-mm-dd", buffer, 10));
    EXPECT_EQ(buffer[0], 0);
    EXPECT_TRUE(Untouched(buffer, 1));
    EXPECT_TRUE(qxSQLDateToString(qxDATE{2024, 3, 5}, L"yyyy-mm-dd", buffer, 11));
    EXPECT_FALSE(qxSQLDateToString(qxDATE{0, 0, 0}, L"yyyy", buffer, kBuffer));
    EXPECT_FALSE(qxSQLDateToString(qxDATE{2023, 2, 29}, L"yyyy", buffer, kBuffer));
  });
}

TEST(SQLDate, Reading) {
  OnPinnedThread(1033, [] {
    struct Case {
      const wchar_t* text;
      const wchar_t* picture;
      long expected; // -1: false and the null date
    } cases[] = {
        {L"2024-03-05", L"yyyy-mm-dd", 20240305},
        {L"2024/3/5", L"yyyy-mm-dd", 20240305}, // which separator is not compared
        {L"05-MAR-2024", L"dd-mmm-yyyy", 20240305},
        {L"5 march 2024", L"d mmmm yyyy", 20240305},
        {L"Tuesday, 5 March 2024", L"dddd, d mmmm yyyy", 20240305},
        {L"Monday, 5 March 2024", L"dddd, d mmmm yyyy", -1}, // not that weekday
        {L"Tue 5 Mar 2024", L"ddd d mmm yyyy", 20240305},
        {L"Tuesday 5 Mar 2024", L"ddd d mmm yyyy", -1},
        {L"24.3.5", L"yy.m.d", 20240305},
        {L"99.3.5", L"yy.m.d", 20990305},
        {L"Day 5 of March", L"'Day' d 'of' mmmm", 20260305}, // no year: this year
        {L"day 5 of March", L"'Day' d 'of' mmmm", -1},       // literals are exact
        {L"3/2024", L"mm/yyyy", 20240301},                   // no day: the first
        {L"2024-03-05 extra", L"yyyy-mm-dd", -1},            // text left over
        {L"2024-03", L"yyyy-mm-dd", -1},                     // text missing
        {L"2024--03--05", L"yyyy-mm-dd", 20240305},
        {L"2024-02-30", L"yyyy-mm-dd", -1},
        {L"2024-13-01", L"yyyy-mm-dd", -1},
        {L"12024-01-01", L"yyyy-mm-dd", -1},
        {L"2024-003-01", L"yyyy-mm-dd", -1},
        {L"2024-3-5-2024", L"yyyy-m-d-yyyy", 20240305},
        {L"2024-3-5-2023", L"yyyy-m-d-yyyy", -1}, // a field given twice must agree
        {L"", L"", 20260101},
    };
    for (const Case& c : cases) {
      qxDATE d{1, 1, 1};
      bool ok = qxSQLStringToDate(c.text, c.picture, &d);
      EXPECT_EQ(ok ? DateToLiteral(&d) : -1, c.expected) << c.text << " " << c.picture;
      if (!ok) {
        EXPECT_TRUE(NullDate(&d));
      }
    }
  });
  OnPinnedThread(1031, [] {
    qxDATE d{};
    EXPECT_TRUE(qxSQLStringToDate(L"5. M\u00e4rz 2024", L"d. mmmm yyyy", &d));
    EXPECT_EQ(DateToLiteral(&d), 20240305);
    wchar_t buffer[kBuffer];
    EXPECT_TRUE(qxSQLDateToString(d, L"dddd, d. mmmm yyyy", buffer, kBuffer));
    EXPECT_STREQ(buffer, L"Dienstag, 5. M\u00e4rz 2024");
  });
}

} // namespace
