// Locale information: refresh from the thread locale, fallbacks, callbacks.
#include "common/thread_runner.h"
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <string>

using qxtest::RunOnNewThread;

namespace {

bool gNeutral = false;
bool AskNeutral() { return gNeutral; }

TEST(LocaleInfo, SeparatorsFollowTheThreadLocale) {
  RunOnNewThread([] {
    SetThreadLocale(1031); // de-DE: decimal ",", thousands "."
    EXPECT_EQ(GetDecimalSeparator(), L',');
    EXPECT_EQ(GetThousandsSeparator(), L'.');
    EXPECT_EQ(GetThousandsGroupSize(), 3);
    EXPECT_EQ(GetDateOrder(), 1);
    EXPECT_EQ(GetDateDelim(), L'.');
    SetThreadLocale(1033);
    EXPECT_EQ(GetDecimalSeparator(), L'.');
    EXPECT_EQ(GetDateOrder(), 0);
    EXPECT_EQ(GetLocaleIdentifier(), 1033u);
    SetThreadLocale(1041);
    EXPECT_EQ(GetLocaleIdentifier(), 1041u);
    EXPECT_EQ(GetDateOrder(), 2);
  });
}

TEST(LocaleInfo, CallbacksForceTheNeutralSettings) {
  RunOnNewThread([] {
    SetThreadLocale(1031);
    gNeutral = true;
    EXPECT_TRUE(SetNumberFormatCallback(AskNeutral));
    EXPECT_EQ(GetNumberFormatCallback(), &AskNeutral);
    EXPECT_EQ(GetDecimalSeparator(), L'.');
    EXPECT_EQ(GetThousandsSeparator(), L',');
    EXPECT_EQ(GetDateOrder(), 1); // the date callback is separate
    EXPECT_TRUE(SetDateFormatCallback(AskNeutral));
    EXPECT_EQ(GetDateOrder(), 0);
    EXPECT_EQ(GetDateDelim(), L'/');
    gNeutral = false; // the host may switch at any time
    EXPECT_EQ(GetDecimalSeparator(), L',');
    EXPECT_EQ(GetDateDelim(), L'.');
  });
}

TEST(LocaleInfo, NoBreakSpaceThousandsSeparatorIsOneUnit) {
  RunOnNewThread([] {
    SetThreadLocale(1036); // fr-FR: decimal ",", thousands U+00A0
    EXPECT_EQ(GetDecimalSeparator(), L',');
    EXPECT_EQ(GetThousandsSeparator(), L'\u00A0');
    wchar_t decimal = 0, thousands = 0;
    GetQXLocaleNumInfo(false, &decimal, &thousands, nullptr);
    EXPECT_EQ(decimal, L'.');
    EXPECT_EQ(thousands, L',');
  });
}

TEST(LocaleInfo, FormatsAndTimeInfo) {
  RunOnNewThread([] {
    SetThreadLocale(1031);
    NUMBERFMTW number{};
    ASSERT_TRUE(GetNumberFmt(&number));
    EXPECT_EQ(number.NumDigits, 2u);
    EXPECT_EQ(number.Grouping, 3u);
    EXPECT_STREQ(number.lpDecimalSep, L",");
    EXPECT_EQ(GetNumberFmtPtr()->lpDecimalSep, number.lpDecimalSep); // the object's own
    CURRENCYFMTW currency{};
    ASSERT_TRUE(GetCurrentFmt(&currency));
    EXPECT_STREQ(currency.lpCurrencySymbol, L"\u20AC");
    EXPECT_STREQ(GetCurrencySymbol(), L"\u20AC");
    EXPECT_EQ(currency.LeadingZero, number.LeadingZero);

    bool twelve = true;
    short position = -1;
    const wchar_t *am = nullptr, *pm = nullptr, *sep = nullptr, *sep2 = nullptr;
    GetQXLocaleTimeInfo(true, &twelve, &position, &am, &pm, &sep, &sep2);
    EXPECT_FALSE(twelve);
    EXPECT_STREQ(sep, L":");
    EXPECT_STREQ(sep2, L":");
    EXPECT_STREQ(am, L""); // 24-hour locale: empty designators
    GetQXLocaleTimeInfo(false, &twelve, &position, &am, &pm, &sep, &sep2);
    EXPECT_TRUE(twelve);
    EXPECT_EQ(position, 0);
    EXPECT_STREQ(am, L"AM");
    GetQXLocaleTimeInfo(false, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);

    wchar_t format[8];
    GetQXLocaleTimeFormat(false, format, 8);
    EXPECT_STREQ(format, L"h:mm:ss"); // bounded copy: 7 units and the terminator
    wchar_t full[36];
    GetQXLocaleTimeFormat(true, full, 36);
    EXPECT_STREQ(full, L"HH:mm:ss");
  });
}

TEST(LocaleInfo, LocaleStringExactFitAndOneLess) {
  RunOnNewThread([] {
    SetThreadLocale(1033);
    ResetQXLocaleInfo();
    // en-US short date "M/d/yyyy": 8 units and the terminator.
    wchar_t buf[16];
    std::fill(std::begin(buf), std::end(buf), L'#');
    EXPECT_FALSE(GetLocaleString(LOCALE_SSHORTDATE, buf, 8));
    EXPECT_EQ(buf[0], L'#');
    EXPECT_TRUE(GetLocaleString(LOCALE_SSHORTDATE, buf, 9));
    EXPECT_STREQ(buf, L"M/d/yyyy");
    EXPECT_EQ(buf[9], L'#');
    unsigned int value = 0;
    EXPECT_TRUE(GetLocaleInt(LOCALE_SGROUPING, &value));
    EXPECT_EQ(value, 3u);
    EXPECT_FALSE(GetLocaleInt(0xFFFF, &value));
  });
}

TEST(LocaleInfo, IndicGroupingReadsAsItsFirstGroup) {
  RunOnNewThread([] {
    SetThreadLocale(1081); // hi-IN: "3;2;0"
    EXPECT_EQ(GetThousandsGroupSize(), 3);
  });
}

} // namespace
