// The built-in locale database (Windows 7's values): GetLocaleInfoW, the
// thread, user and system locales, locale names and validity, and the helpers
// other platform code uses. fuzz/locale_db_fuzz.cpp walks every locale.
#include "platform/locale_db.h"
#include "qxutil/winlocale.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <iterator>
#include <string>
#include <thread>

namespace {

constexpr WCHAR kSentinel = 0xBEEF;
constexpr int kBufChars = 64;
constexpr DWORD kUntouched = 0xDEADu;

// Every case runs with the runtime's LC_CTYPE locale "C" (user default
// en-US), and the thread locale is put back afterwards.
class LocaleDb : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(runtime_.ok()); }

private:
  qxtest::ScopedRuntimeLocale runtime_{"C"};
  qxtest::ScopedThreadLocale thread_{GetThreadLocale()};
};

struct InfoCase {
  LCID lcid;
  LCTYPE type;
  const wchar_t* text; // expected text when something is written, else nullptr
  int result;
  DWORD error = kUntouched;
  int cch = kBufChars; // 0 probes
};

// clang-format off
const InfoCase kInfoCases[] = {
    // Values of the requested locales (pictures, names and code pages: the
    // date formats, LocaleNames, LocaleCodePage and ReturnNumber read them).
    {1033, LOCALE_SDECIMAL, L".", 2}, {1031, LOCALE_SDECIMAL, L",", 2},
    {1031, LOCALE_STHOUSAND, L".", 2}, {1031, LOCALE_SCURRENCY, L"\u20AC", 2},
    {1036, LOCALE_STHOUSAND, L"\u00A0", 2}, // no-break space
    {1041, LOCALE_S1159, L"\u5348\u524D", 3},
    {1025, LOCALE_SCURRENCY, L"\u0631.\u0633.\u200F", 6}, // RLM kept
    {1081, LOCALE_SGROUPING, L"3;2;0", 6}, {1034, LOCALE_SNAME, L"es-ES_tradnl", 13},
    // The invariant locale: its name is empty.
    {LOCALE_INVARIANT, LOCALE_SNAME, L"", 1}, {LOCALE_INVARIANT, LOCALE_ILANGUAGE, L"007f", 5},
    {LOCALE_INVARIANT, LOCALE_SENGLANGUAGE, L"Invariant Language", 19},
    // Empty values return just the terminator.
    {1033, LOCALE_SMONTHNAME13, L"", 1},
    // Flags: no user overrides exist, so LOCALE_NOUSEROVERRIDE changes nothing.
    {1031, LOCALE_SDECIMAL | LOCALE_NOUSEROVERRIDE, L",", 2},
    {1031, LOCALE_SDECIMAL | LOCALE_USE_CP_ACP, L",", 2},
    {1045, LOCALE_SMONTHNAME1 | LOCALE_RETURN_GENITIVE_NAMES, L"stycze\u0144", 8}, // nominative
    {1045, LOCALE_SDECIMAL | LOCALE_RETURN_GENITIVE_NAMES, nullptr, 0, ERROR_INVALID_FLAGS},
    {1033, LOCALE_SDECIMAL | LOCALE_RETURN_NUMBER, nullptr, 0, ERROR_INVALID_FLAGS},
    {1033, LOCALE_SDECIMAL | 0x01000000, nullptr, 0, ERROR_INVALID_FLAGS},
    // Unknown LCTYPEs, including Windows ones this database does not hold.
    {1033, 0x7777, nullptr, 0, ERROR_INVALID_FLAGS}, {1033, 0, nullptr, 0, ERROR_INVALID_FLAGS},
    {1033, LOCALE_SLANGUAGE, nullptr, 0, ERROR_INVALID_FLAGS},
    // LCID mapping: sort bits ignored, neutral sublanguages to the default locale.
    {0x10407, LOCALE_SNAME, L"de-DE", 6}, {0x0007, LOCALE_SNAME, L"de-DE", 6},
    {0x0009, LOCALE_SNAME, L"en-US", 6}, {0x000A, LOCALE_SNAME, L"es-ES", 6},
    {0x0004, LOCALE_SNAME, L"zh-CN", 6}, {0x0014, LOCALE_SNAME, L"nb-NO", 6},
    // Unknown LCIDs (sr-Cyrl-CS is left out); the LCID is checked before the LCTYPE.
    {0x0C1A, LOCALE_SDECIMAL, nullptr, 0, ERROR_INVALID_PARAMETER},
    {LOCALE_CUSTOM_UNSPECIFIED, LOCALE_SDECIMAL, nullptr, 0, ERROR_INVALID_PARAMETER},
    {0x1234, 0x7777, nullptr, 0, ERROR_INVALID_PARAMETER},
};
// clang-format on

// ExpectWritten - `buf` holds `text` and its terminator (nothing for null),
// and nothing after them was written.
void ExpectWritten(qxtest::Guarded<WCHAR>& buf, const wchar_t* text) {
  size_t written = text ? std::wcslen(text) + 1 : 0;
  if (text) {
    EXPECT_EQ(std::wstring(buf.data(), written), std::wstring(text, written));
  }
  EXPECT_TRUE(buf.UntouchedFrom(written));
}

TEST_F(LocaleDb, GetLocaleInfoW) {
  for (const InfoCase& c : kInfoCases) {
    SCOPED_TRACE(testing::Message() << "lcid " << c.lcid << " type 0x" << std::hex << c.type
                                    << std::dec << " cch " << c.cch);
    qxtest::Guarded<WCHAR> buf(kBufChars, kSentinel);
    SetLastError(kUntouched);
    EXPECT_EQ(GetLocaleInfoW(c.lcid, c.type, buf.data(), c.cch), c.result);
    EXPECT_EQ(GetLastError(), c.error);
    ExpectWritten(buf, c.text);
  }
}

// LOCALE_RETURN_NUMBER writes a DWORD; the size counts WCHARs, and a DWORD is one of
// our 4-byte WCHARs (two 2-byte ones on Windows).
TEST_F(LocaleDb, ReturnNumber) {
  static_assert(sizeof(WCHAR) == sizeof(DWORD), "one WCHAR holds the DWORD");
  // clang-format off
  const struct {
    LCID lcid;
    LCTYPE type;
    DWORD value;
  } cases[] = {
      {1033, LOCALE_IDIGITS, 2}, {1041, LOCALE_IDEFAULTANSICODEPAGE, 932},
      {LOCALE_INVARIANT, LOCALE_ILANGUAGE, 0x007F},
      {1031, LOCALE_ILANGUAGE, 0x0407},  // read as hexadecimal
      {1033, LOCALE_IFIRSTDAYOFWEEK, 6}, // Sunday, counted from Monday
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "lcid " << c.lcid << " type 0x" << std::hex << c.type);
    LCTYPE type = c.type | LOCALE_RETURN_NUMBER;
    EXPECT_EQ(GetLocaleInfoW(c.lcid, type, nullptr, 0), 1);
    qxtest::Guarded<WCHAR> buf(1, kSentinel);
    ASSERT_EQ(GetLocaleInfoW(c.lcid, type | LOCALE_NOUSEROVERRIDE, buf.data(), 1), 1);
    DWORD value = 0;
    std::memcpy(&value, buf.data(), sizeof value);
    EXPECT_EQ(value, c.value);
    EXPECT_TRUE(buf.UntouchedFrom(1));
  }
}

TEST_F(LocaleDb, SetThreadLocale) {
  // clang-format off
  const struct {
    LCID set;
    BOOL ok;
    LCID after; // GetThreadLocale afterwards
    DWORD error;
  } cases[] = {
      {1031, TRUE, 1031, kUntouched},
      {0x0011, TRUE, 0x0411, kUntouched},            // neutral Japanese
      {0x10407, TRUE, 0x10407, kUntouched},          // sort bits kept
      {LOCALE_USER_DEFAULT, TRUE, 1033, kUntouched}, // stored as the user default
      {LOCALE_INVARIANT, TRUE, LOCALE_INVARIANT, kUntouched},
      {0x1234, FALSE, LOCALE_INVARIANT, ERROR_INVALID_PARAMETER}, // unchanged
      {LOCALE_CUSTOM_DEFAULT, FALSE, LOCALE_INVARIANT, ERROR_INVALID_PARAMETER},
  };
  // clang-format on
  for (const auto& c : cases) {
    SetLastError(kUntouched);
    EXPECT_EQ(SetThreadLocale(c.set), c.ok) << c.set;
    EXPECT_EQ(GetThreadLocale(), c.after) << c.set;
    EXPECT_EQ(GetLastError(), c.error) << c.set;
  }
  // A new thread starts with the user default.
  ASSERT_TRUE(SetThreadLocale(1041));
  LCID other = 0;
  std::thread([&other] { other = GetThreadLocale(); }).join();
  EXPECT_EQ(other, 1033u);
  EXPECT_EQ(GetThreadLocale(), 1041u);
}

// The special LCIDs name the user and system default (from the runtime's
// locale), not the thread locale.
TEST_F(LocaleDb, SpecialLcidsFollowTheRuntimeLocale) {
  ASSERT_TRUE(SetThreadLocale(1031));
  for (LCID lcid : {LOCALE_USER_DEFAULT, LOCALE_SYSTEM_DEFAULT, LOCALE_NEUTRAL}) {
    WCHAR buf[kBufChars];
    ASSERT_EQ(GetLocaleInfoW(lcid, LOCALE_SNAME, buf, kBufChars), 6) << lcid;
    EXPECT_STREQ(buf, L"en-US");
  }
  EXPECT_EQ(qx::platform::LocaleAnsiCodePage(LOCALE_USER_DEFAULT), 1252u);
  for (const char* name : {"C", "C.UTF-8", "POSIX"}) {
    qxtest::ScopedRuntimeLocale runtime(name);
    ASSERT_TRUE(runtime.ok()) << name;
    EXPECT_EQ(GetUserDefaultLCID(), 1033u) << name;
    EXPECT_EQ(GetSystemDefaultLCID(), 1033u) << name;
    EXPECT_EQ(GetUserDefaultLangID(), 0x0409) << name;
    EXPECT_EQ(GetSystemDefaultLangID(), 0x0409) << name;
  }
}

TEST(LocaleFromCrtName, RuntimeNames) {
  // clang-format off
  const struct {
    const char* name;
    LCID lcid;
  } cases[] = {
      {"de_DE", 1031}, {"de_DE.UTF-8", 1031}, {"de_DE@euro", 1031}, {"de-DE", 1031},
      {"de_DE.ISO-8859-15@euro", 1031}, {"DE_de", 1031}, {"de_AT.UTF-8", 3079},
      {"ja_JP.eucJP", 1041}, {"az_AZ.UTF-8", 1068},
      {"es_ES", 3082},          // the modern sort, not es-ES_tradnl
      {"uz_UZ", 1091},          // the runtime's uz_UZ is the Latin one
      {"uz_UZ@cyrillic", 2115},
      {"de", 1031}, {"es", 3082}, {"zh", 2052}, // bare language: its default locale
      {"nn", 2068},                             // not nb-NO, which shares the primary language
      {"German_Germany.1252", 1031},            // Microsoft form: English names
      {"English_United Kingdom.1252", 2057}, {"Spanish_Spain.1252", 3082}, {"german", 1031},
      {"Chinese (Simplified)_People's Republic of China.936", 2052},
      {"Arabic_U.A.E..1256", 14337}, {"Arabic_U.A.E.", 14337}, // a dot inside the country name
      {"C", 1033}, {"C.UTF-8", 1033}, {"POSIX", 1033}, {"", 1033}, {nullptr, 1033},
      {"de_BE.UTF-8", 1033}, // no such LCID
      {"sr_RS@latin", 1033}, {"xx", 1033}, {"German_Atlantis", 1033}, {"uz_UZ@klingon", 1033},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(qx::platform::LocaleFromCrtName(c.name), c.lcid) << (c.name ? c.name : "(null)");
}

TEST(LocaleValidity, IsValidLocale) {
  // clang-format off
  const struct {
    LCID lcid;
    DWORD flags;
    BOOL valid;
  } cases[] = {
      {1033, LCID_SUPPORTED, TRUE}, {1033, LCID_INSTALLED, TRUE}, {1033, 0, FALSE},
      {1033, 3, FALSE}, {0x10407, LCID_SUPPORTED, TRUE}, {0x0009, LCID_SUPPORTED, TRUE},
      {LOCALE_INVARIANT, LCID_SUPPORTED, TRUE}, {LOCALE_NEUTRAL, LCID_SUPPORTED, FALSE},
      {LOCALE_USER_DEFAULT, LCID_SUPPORTED, FALSE}, {LOCALE_SYSTEM_DEFAULT, LCID_SUPPORTED, FALSE},
      {0x1234, LCID_SUPPORTED, FALSE}, {0x00100409, LCID_SUPPORTED, FALSE}};
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(IsValidLocale(c.lcid, c.flags), c.valid) << c.lcid << " " << c.flags;
}

TEST_F(LocaleDb, LcidToLocaleName) {
  // clang-format off
  const struct {
    LCID lcid;
    int cch;
    DWORD flags;
    const wchar_t* text;
    int result;
    DWORD error;
  } cases[] = {
      {1031, kBufChars, 0, L"de-DE", 6, kUntouched}, {1031, 6, 0, L"de-DE", 6, kUntouched},
      {1031, 5, 0, nullptr, 0, ERROR_INSUFFICIENT_BUFFER}, {1031, 0, 0, nullptr, 6, kUntouched},
      {0x0009, kBufChars, LOCALE_ALLOW_NEUTRAL_NAMES, L"en-US", 6, kUntouched},
      {LOCALE_INVARIANT, kBufChars, 0, L"", 1, kUntouched},
      {LOCALE_USER_DEFAULT, kBufChars, 0, L"en-US", 6, kUntouched},
      {0x1234, kBufChars, 0, nullptr, 0, ERROR_INVALID_PARAMETER},
      {1031, kBufChars, 0x4, nullptr, 0, ERROR_INVALID_FLAGS},
      {1031, -1, 0, nullptr, 0, ERROR_INVALID_PARAMETER},
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "lcid " << c.lcid << " cch " << c.cch);
    qxtest::Guarded<WCHAR> buf(kBufChars, kSentinel);
    SetLastError(kUntouched);
    EXPECT_EQ(LCIDToLocaleName(c.lcid, buf.data(), c.cch, c.flags), c.result);
    EXPECT_EQ(GetLastError(), c.error);
    ExpectWritten(buf, c.text);
  }
}

TEST_F(LocaleDb, LocaleNameToLcid) {
  // clang-format off
  const struct {
    const wchar_t* name;
    DWORD flags;
    LCID lcid;
    DWORD error;
  } cases[] = {
      {L"de-DE", 0, 1031, kUntouched}, {L"DE-de", 0, 1031, kUntouched},
      {L"es-ES_tradnl", 0, 1034, kUntouched}, {L"uz-Cyrl-UZ", 0, 2115, kUntouched},
      {L"en", 0, 1033, kUntouched}, {L"", 0, LOCALE_INVARIANT, kUntouched},
      {LOCALE_NAME_USER_DEFAULT, 0, 1033, kUntouched},
      {LOCALE_NAME_SYSTEM_DEFAULT, 0, 1033, kUntouched}, {L"xx-YY", 0, 0, ERROR_INVALID_PARAMETER},
      {L"de-DE-", 0, 0, ERROR_INVALID_PARAMETER}, {L"de-DE", 0x4, 0, ERROR_INVALID_FLAGS},
  };
  // clang-format on
  for (const auto& c : cases) {
    SetLastError(kUntouched);
    EXPECT_EQ(LocaleNameToLCID(c.name, c.flags), c.lcid) << (c.name ? c.name : L"(null)");
    EXPECT_EQ(GetLastError(), c.error) << (c.name ? c.name : L"(null)");
  }
}

TEST(LocaleCodePage, AnsiAndOem) {
  // clang-format off
  const struct {
    LCID lcid;
    UINT ansi, oem;
  } cases[] = {
      {1033, 1252, 437}, {1031, 1252, 850}, {1049, 1251, 866}, {1041, 932, 932}, {2052, 936, 936},
      {1025, 1256, 720}, {1081, 0, 1} /* Unicode only */, {LOCALE_INVARIANT, 1252, 437},
      {0x0011, 932, 932} /* neutral Japanese */, {0x1234, 0, 0}, {0x00100409, 0, 0}};
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(qx::platform::LocaleAnsiCodePage(c.lcid), c.ansi) << c.lcid;
    EXPECT_EQ(qx::platform::LocaleOemCodePage(c.lcid), c.oem) << c.lcid;
  }
}

TEST(LocaleNames, MonthsAndDays) {
  using qx::platform::LocaleDayName;
  using qx::platform::LocaleMonthName;
  EXPECT_EQ(LocaleDayName(1031, 0, false), u"Sonntag"); // SYSTEMTIME counts from Sunday
  EXPECT_EQ(LocaleDayName(1033, 6, true), u"Sat");
  EXPECT_EQ(LocaleDayName(1033, 7, false), u"");
  EXPECT_EQ(LocaleDayName(1033, -1, false), u"");
  EXPECT_EQ(LocaleMonthName(1036, 12, false), u"d\u00E9cembre");
  EXPECT_EQ(LocaleMonthName(1033, 1, true), u"Jan");
  EXPECT_EQ(LocaleMonthName(1033, 13, false), u"");
  EXPECT_EQ(LocaleMonthName(1033, 0, false), u"");
  EXPECT_EQ(LocaleMonthName(0x1234, 1, false), u"");
}

} // namespace
