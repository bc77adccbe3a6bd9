// Dates as text: the numeric layouts, the system's pictures, and the
// database pictures in both directions.
#include "common/locale_support.h"
#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <functional>
#include <string>

using qxtest::OnPinnedThread;

namespace {

constexpr wchar_t kSentinel = 0x7F7F;
constexpr unsigned int kBuffer = 40;
const wchar_t kNothing[] = L"(nothing written)";

// Written - what `write` left in a sentinel-filled buffer of `size` units
// (kNothing when it wrote nothing at all, and its result in `ok`); a unit
// written past `size` is a failure.
std::wstring Written(unsigned int size, const std::function<bool(wchar_t*)>& write,
                     bool* ok = nullptr) {
  qxtest::Guarded<wchar_t> b(size, kSentinel);
  bool result = write(b.data());
  if (ok)
    *ok = result;
  EXPECT_TRUE(b.UntouchedFrom(size)) << "written past " << size;
  return b.UntouchedFrom(0) ? kNothing : b.data();
}

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

TEST(SQLDate, Writing) {
  OnPinnedThread(1033, [] {
    struct Case {
      const wchar_t* picture;
      unsigned int size;
      const wchar_t* expected;
    } cases[] = {
        {L"yyyy-mm-dd", kBuffer, L"2024-03-05"},
        {L"YYYY/MM/DD", kBuffer, L"2024/03/05"},
        {L"dd-mmm-yyyy", kBuffer, L"05-Mar-2024"},
        {L"dddd, d mmmm yyyy", kBuffer, L"Tuesday, 5 March 2024"},
        {L"ddd yy.m.d", kBuffer, L"Tue 24.3.5"},
        {L"'Day' d 'of' mmmm", kBuffer, L"Day 5 of March"},
        {L"\"It's\" yyyy", kBuffer, L"It's 2024"},
        {L"(yyyy)", kBuffer, L"(2024)"},
        {L"  yyyy  --  mm  ", kBuffer, L"  2024  --  03  "},
        {L"week yyyy", kBuffer, L"week 2024"},
        {L"yyyymmdd", kBuffer, L"yyyymmdd"}, // one token, not a field: a literal
        {L"", kBuffer, L""},
        {L"yyyy-mm-dd", 11, L"2024-03-05"},
    };
    for (const Case& c : cases) {
      bool ok = false;
      EXPECT_EQ(Written(
                    c.size,
                    [&](wchar_t* buffer) {
                      return qxSQLDateToString(qxDATE{2024, 3, 5}, c.picture, buffer, c.size);
                    },
                    &ok),
                c.expected)
          << c.picture;
      EXPECT_TRUE(ok) << c.picture;
    }
    // Too small: the terminator alone.
    qxtest::Guarded<wchar_t> small(10, kSentinel);
    EXPECT_FALSE(qxSQLDateToString(qxDATE{2024, 3, 5}, L"yyyy-mm-dd", small.data(), 10));
    EXPECT_EQ(small.units[0], 0);
    EXPECT_TRUE(small.UntouchedFrom(1));
    wchar_t buffer[kBuffer];
    EXPECT_FALSE(qxSQLDateToString(qxDATE{0, 0, 0}, L"yyyy", buffer, kBuffer));
    EXPECT_FALSE(qxSQLDateToString(qxDATE{2023, 2, 29}, L"yyyy", buffer, kBuffer));
  });
}

TEST(SQLDate, Reading) {
  OnPinnedThread(1033, [] {
    // The separator between fields is not compared, literals are; a field
    // given twice must agree; no year is this year, no day the first.
    struct Case {
      const wchar_t* text;
      const wchar_t* picture;
      long expected; // -1: false and the null date
    } cases[] = {
        {L"2024-03-05", L"yyyy-mm-dd", 20240305},
        {L"2024/3/5", L"yyyy-mm-dd", 20240305},
        {L"05-MAR-2024", L"dd-mmm-yyyy", 20240305},
        {L"5 march 2024", L"d mmmm yyyy", 20240305},
        {L"Tuesday, 5 March 2024", L"dddd, d mmmm yyyy", 20240305},
        {L"Monday, 5 March 2024", L"dddd, d mmmm yyyy", -1}, // not that weekday
        {L"Tue 5 Mar 2024", L"ddd d mmm yyyy", 20240305},
        {L"Tuesday 5 Mar 2024", L"ddd d mmm yyyy", -1},
        {L"24.3.5", L"yy.m.d", 20240305},
        {L"99.3.5", L"yy.m.d", 20990305},
        {L"Day 5 of March", L"'Day' d 'of' mmmm", 20260305},
        {L"day 5 of March", L"'Day' d 'of' mmmm", -1},
        {L"3/2024", L"mm/yyyy", 20240301},
        {L"2024-03-05 extra", L"yyyy-mm-dd", -1}, // text left over
        {L"2024-03", L"yyyy-mm-dd", -1},          // text missing
        {L"2024--03--05", L"yyyy-mm-dd", 20240305},
        {L"2024-02-30", L"yyyy-mm-dd", -1},
        {L"2024-13-01", L"yyyy-mm-dd", -1},
        {L"12024-01-01", L"yyyy-mm-dd", -1},
        {L"2024-003-01", L"yyyy-mm-dd", -1},
        {L"2024-3-5-2024", L"yyyy-m-d-yyyy", 20240305},
        {L"2024-3-5-2023", L"yyyy-m-d-yyyy", -1},
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
