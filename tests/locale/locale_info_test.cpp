// Locale information: refresh from the thread locale, the neutral settings
// the callbacks force, formats and time settings, bounded strings.
#include "common/frame_call_table.h"
#include "common/locale_support.h"

#include <gtest/gtest.h>

#include <string>

using qxtest::ExpectCalls;
using qxtest::OnPinnedThread;

namespace {

bool gNeutral = false;
bool AskNeutral() { return gNeutral; }

TEST(LocaleInfo, SettingsFollowTheThreadLocale) {
  // The record refreshes when the thread's locale changes. fr-FR groups
  // with a no-break space (the system settings stay neutral); hi-IN's
  // grouping "3;2;0" reads as its first group.
  OnPinnedThread(1031, [] {
    ExpectCalls({CALL(GetDecimalSeparator(), L','), CALL(GetThousandsSeparator(), L'.'),
                 CALL(GetThousandsGroupSize(), 3), CALL(GetDateOrder(), 1),
                 CALL(GetDateDelim(), L'.')});
    SetThreadLocale(1033);
    ExpectCalls({CALL(GetDecimalSeparator(), L'.'), CALL(GetDateOrder(), 0),
                 CALL(GetLocaleIdentifier(), 1033)});
    SetThreadLocale(1041);
    ExpectCalls({CALL(GetLocaleIdentifier(), 1041), CALL(GetDateOrder(), 2)});
    SetThreadLocale(1036);
    wchar_t decimal = 0, thousands = 0;
    GetQXLocaleNumInfo(false, &decimal, &thousands, nullptr);
    ExpectCalls({CALL(GetDecimalSeparator(), L','), CALL(GetThousandsSeparator(), L'\u00A0'),
                 CALL(decimal, L'.'), CALL(thousands, L',')});
    SetThreadLocale(1081);
    EXPECT_EQ(GetThousandsGroupSize(), 3);
  });
}

TEST(LocaleInfo, CallbacksForceTheNeutralSettings) {
  OnPinnedThread(1031, [] {
    gNeutral = true;
    // The date callback is separate; the host may switch at any time.
    ExpectCalls({CALL(SetNumberFormatCallback(AskNeutral), true),
                 CALL(GetNumberFormatCallback() == &AskNeutral, true),
                 CALL(GetDecimalSeparator(), L'.'), CALL(GetThousandsSeparator(), L','),
                 CALL(GetDateOrder(), 1), CALL(SetDateFormatCallback(AskNeutral), true),
                 CALL(GetDateOrder(), 0), CALL(GetDateDelim(), L'/')});
    gNeutral = false;
    ExpectCalls({CALL(GetDecimalSeparator(), L','), CALL(GetDateDelim(), L'.')});
  });
}

TEST(LocaleInfo, FormatsAndTimeInfo) {
  OnPinnedThread(1031, [] {
    NUMBERFMTW number{};
    CURRENCYFMTW currency{};
    ASSERT_TRUE(GetNumberFmt(&number));
    ASSERT_TRUE(GetCurrentFmt(&currency));
    ExpectCalls({CALL(number.NumDigits, 2), CALL(number.Grouping, 3),
                 CALL(std::wstring(number.lpDecimalSep) == L",", true),
                 CALL(GetNumberFmtPtr()->lpDecimalSep == number.lpDecimalSep, true), // its own
                 CALL(std::wstring(currency.lpCurrencySymbol) == L"\u20AC", true),
                 CALL(std::wstring(GetCurrencySymbol()) == L"\u20AC", true),
                 CALL(currency.LeadingZero, number.LeadingZero)});
    // A 24-hour locale has empty designators; the system settings are
    // neutral.
    bool twelve = true;
    short position = -1;
    const wchar_t *am = nullptr, *pm = nullptr, *sep = nullptr, *sep2 = nullptr;
    GetQXLocaleTimeInfo(true, &twelve, &position, &am, &pm, &sep, &sep2);
    EXPECT_FALSE(twelve);
    EXPECT_STREQ(sep, L":");
    EXPECT_STREQ(sep2, L":");
    EXPECT_STREQ(am, L"");
    GetQXLocaleTimeInfo(false, &twelve, &position, &am, &pm, &sep, &sep2);
    EXPECT_TRUE(twelve);
    EXPECT_EQ(position, 0);
    EXPECT_STREQ(am, L"AM");
    GetQXLocaleTimeInfo(false, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    wchar_t format[8], full[36];
    GetQXLocaleTimeFormat(false, format, 8);
    EXPECT_STREQ(format, L"h:mm:ss"); // bounded copy: 7 units and the terminator
    GetQXLocaleTimeFormat(true, full, 36);
    EXPECT_STREQ(full, L"HH:mm:ss");
  });
}

TEST(LocaleInfo, LocaleStringExactFitAndOneLess) {
  OnPinnedThread(1033, [] {
    ResetQXLocaleInfo();
    // en-US short date "M/d/yyyy": 8 units and the terminator.
    qxtest::TextBuffer buf(8);
    EXPECT_FALSE(GetLocaleString(LOCALE_SSHORTDATE, buf.data(), 8));
    EXPECT_TRUE(buf.UntouchedFrom(0));
    qxtest::TextBuffer fits(9);
    EXPECT_TRUE(GetLocaleString(LOCALE_SSHORTDATE, fits.data(), 9));
    EXPECT_STREQ(fits.data(), L"M/d/yyyy");
    EXPECT_TRUE(fits.GuardIntact());
    unsigned int value = 0;
    ExpectCalls({CALL(GetLocaleInt(LOCALE_SGROUPING, &value), true), CALL(value, 3),
                 CALL(GetLocaleInt(0xFFFF, &value), false)});
  });
}

} // namespace
