// Dates as text: the numeric layouts, the system's pictures, the database
// pictures in both directions, and Str2Date: literals, the locale form of
// every order, the neutral form, two-digit years and the end pointer.
#include "common/guarded_write.h"
#include "common/locale_support.h"
#include "locale/date_order_override.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

using qxtest::OnPinnedThread;
using qxtest::UtcSeconds;

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
    Reads(L"yyyy-mm-dd",
          {{L"2024-03-05", 20240305}, {L"2024/3/5", 20240305}, {L"2024--03--05", 20240305}});
    Refuses(L"yyyy-mm-dd", {L"2024-03-05 extra", L"2024-03", L"2024-02-30", L"2024-13-01",
                            L"12024-01-01", L"2024-003-01"});
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

bool gNeutral = false;
bool AskNeutral() { return gNeutral; }

// Parse - Str2Date as a literal; -1 for a failure (which must leave the
// null date).
long Parse(const wchar_t* text) {
  qxDATE d{1234, 5, 6};
  qxDATE* r = Str2Date(text, &d);
  if (!r) {
    EXPECT_TRUE(NullDate(&d)) << text;
    return -1;
  }
  EXPECT_EQ(r, &d);
  return DateToLiteral(&d);
}

struct Case {
  const wchar_t* text;
  long expected; // literal, -1 for failure
};

// The date callback a Check installs, if any, and its answer.
enum Callback { kNoCallback, kLocaleSettings, kNeutralSettings };

// Check - Str2Date on a thread of `lcid` whose clock reads 15 March 2026.
void Check(LCID lcid, std::initializer_list<Case> cases, Callback callback = kNoCallback) {
  OnPinnedThread(lcid, [&] {
    gNeutral = callback == kNeutralSettings;
    if (callback != kNoCallback)
      SetDateFormatCallback(AskNeutral);
    for (const Case& c : cases)
      EXPECT_EQ(Parse(c.text), c.expected) << lcid << " " << c.text;
  });
}

TEST(Str2Date, DayMonthYearWithFullStops) { // de-DE: order 1, "."
  // No year: this year; two digits: the current century, no pivot.
  Check(1031, {{L"5.3.24", 20240305}, {L"5.3", 20260305}, {L" 5 . 3 . 2024 ", 20240305}});
  Check(1031, {{L"5.3.99", 20990305}, {L"5.3.0", 20000305}, {L"5.3.100", 1000305}});
  Check(1031, {{L"5.3.10000", -1}, {L"5.3.-1", -1}, {L"29.2.2023", -1}, {L"29.2.2024", 20240229}});
  Check(1031, {{L"31.4.2024", -1}, {L"5.13.2024", -1}, {L"0.3.2024", -1}, {L"", -1}});
  // Text after the date, another delimiter, a delimiter without a number.
  Check(1031, {{L"5.3.24x", -1}, {L"5/3/2024", -1}, {L"5.3.", -1}, {L".3.2024", -1}});
  // Eight digits are a literal ("00000000" the null date, read successfully);
  // a failed literal is not read further.
  Check(1031, {{L"20240229", 20240229}, {L"00000000", 0}, {L"20230229", -1}, {L"2024022", -1}});
  Check(1031, {{L"99999999999.1.2024", -1}});
}

TEST(Str2Date, EveryOrder) {
  Check(1033, {{L"3/5/2024", 20240305}, {L"3/5", 20260305}, {L"12/31/24", 20241231}});
  Check(1041, {{L"2024/3/5", 20240305}, {L"3/5", 20260305}, {L"24/3/5", 20240305}});
  for (short order : {short(5), short(3)}) {
    OnPinnedThread(1033, [order] {
      cLocaleInfo::Instance(new qx::date::DateOrderOverride(cLocaleInfo::Instance(), order, L'-'));
      EXPECT_EQ(Parse(L"2024-5-3"), order == 5 ? 20240305 : -1);
      EXPECT_EQ(Parse(L"5-3"), order == 5 ? 20260305 : -1);
    });
  }
  // A clock past 2038 gives that year.
  OnPinnedThread(
      1031, [] { EXPECT_EQ(Parse(L"5.3"), 20380305); }, UtcSeconds(2040, 1, 1));
}

TEST(Str2Date, NeutralFormUnderTheCallback) {
  // Month first; one separator, "/" or "-", used twice.
  Check(1031, {{L"3/5/2024", 20240305}, {L"3-5-24", 20240305}, {L"3/5", 20260305}},
        kNeutralSettings);
  Check(1031, {{L"3 / 5 / 24 ", 20240305}, {L"3-5/24", -1}, {L"3.5.24", -1}, {L"13/5/24", -1}},
        kNeutralSettings);
  Check(1031, {{L"2/30/24", -1}, {L"20240229", 20240229}}, kNeutralSettings);
  Check(1031, {{L"3/5/2024", -1}, {L"3.5.2024", 20240503}}, kLocaleSettings); // de-DE
}

TEST(Str2Date, NullArguments) {
  qxDATE d{2024, 1, 1};
  EXPECT_EQ(Str2Date(nullptr, &d), nullptr);
  EXPECT_TRUE(NullDate(&d));
  EXPECT_EQ(Str2Date(L"20240101", nullptr), nullptr);
  wchar_t* end = reinterpret_cast<wchar_t*>(&d);
  EXPECT_EQ(Str2DateEx(nullptr, &d, &end), nullptr);
  EXPECT_EQ(end, nullptr);
}

TEST(Str2DateEx, EndPointer) {
  OnPinnedThread(1031, [] {
    // Without a year the end is one past the unit that ends the date (the
    // terminator included), also after blanks.
    struct ExCase {
      const wchar_t* text;
      long expected;
      long endOffset; // from the text; -1 for a null end
    } cases[] = {{L"5.3.2024 rest", 20240305, 9},
                 {L"5.3.2024", 20240305, 8},
                 {L"5.3.24x", 20240305, 6},
                 {L"5.3", 20260305, 4},
                 {L"5.3  ", 20260305, 6},
                 {L"5.3 x", 20260305, 5},
                 {L"5.3-2024", 20260305, 4},
                 {L"20240229", 20240229, 8},
                 {L"5.3.x", -1, -1},
                 {L"5 x", -1, -1},
                 {L"x", -1, -1}};
    for (const ExCase& c : cases) {
      qxDATE d{};
      wchar_t* end = nullptr;
      qxDATE* r = Str2DateEx(c.text, &d, &end);
      EXPECT_EQ(r ? DateToLiteral(&d) : -1, c.expected) << c.text;
      EXPECT_EQ(end ? end - c.text : -1, c.endOffset) << c.text;
    }
    qxDATE d{};
    EXPECT_EQ(Str2DateEx(L"5.3.24x", &d, nullptr), nullptr); // strict without end
    EXPECT_TRUE(NullDate(&d));
    EXPECT_NE(Str2DateEx(L"5.3", &d, nullptr), nullptr);
    // The callback chooses neutral settings, never the neutral form's "-".
    gNeutral = true;
    SetDateFormatCallback(AskNeutral);
    EXPECT_NE(Str2DateEx(L"3/5/2024", &d, nullptr), nullptr);
    EXPECT_EQ(DateToLiteral(&d), 20240305);
    EXPECT_EQ(Str2DateEx(L"3-5-2024", &d, nullptr), nullptr);
    gNeutral = false;
  });
}

} // namespace
