// Dates as text: the system's pictures and Str2Date: literals, the locale
// form of every order, the neutral form, two-digit years and the end pointer.
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

// The pictures themselves: GetDateFormatW's tests; the numeric layouts:
// date_fuzz; the database pictures: sql_date_fuzz.
TEST(FormatDateString, SystemPictures) {
  OnPinnedThread(1033, [] {
    struct Case {
      qxDATE date;
      const wchar_t* picture;
      unsigned int size;
      bool ok;
      const wchar_t* expected;
    } cases[] = {
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
