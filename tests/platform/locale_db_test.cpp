// Conformance tests of the built-in locale database: GetLocaleInfoW, the thread and
// default locales, locale names, and the helpers other platform code uses. Expected
// values are Windows 7's, as the locale data records them.
#include "platform/locale_db.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <string>
#include <thread>

namespace {

constexpr WCHAR kSentinel = 0xBEEF;
constexpr int kBufChars = 64;
constexpr DWORD kUntouched = 0xDEADu;

// ExpectUntouchedFrom - nothing at or after buf[from] was written.
void ExpectUntouchedFrom(const WCHAR (&buf)[kBufChars], int from) {
  for (int i = from; i < kBufChars; ++i)
    ASSERT_EQ(buf[i], kSentinel) << "written at " << i;
}

// Pins the runtime's LC_CTYPE locale to "C" (user default en-US) and restores both it
// and the thread locale afterwards, so no case depends on the machine.
class PinnedLocale : public ::testing::Test {
protected:
  void SetUp() override {
    const char* name = std::setlocale(LC_CTYPE, nullptr);
    saved_ = name ? name : "C";
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    savedThread_ = GetThreadLocale();
    SetLastError(kUntouched);
  }
  void TearDown() override {
    std::setlocale(LC_CTYPE, saved_.c_str());
    SetThreadLocale(savedThread_);
  }

private:
  std::string saved_;
  LCID savedThread_ = 0;
};

// ---- GetLocaleInfoW ---------------------------------------------------------

struct InfoCase {
  LCID lcid;
  LCTYPE type;
  int cch;             // buffer size passed; 0 = length probe
  const wchar_t* text; // expected text when something is written, else nullptr
  int result;          // expected return value
  DWORD error;         // expected last error (kUntouched: not set)
};

const InfoCase kInfoCases[] = {
    // Values of the requested locales.
    {1033, LOCALE_SDECIMAL, kBufChars, L".", 2, kUntouched},
    {1033, LOCALE_SLONGDATE, kBufChars, L"dddd, MMMM dd, yyyy", 20, kUntouched},
    {1033, LOCALE_SSHORTDATE, kBufChars, L"M/d/yyyy", 9, kUntouched},
    {1033, LOCALE_S1159, kBufChars, L"AM", 3, kUntouched},
    {1031, LOCALE_SDECIMAL, kBufChars, L",", 2, kUntouched},
    {1031, LOCALE_STHOUSAND, kBufChars, L".", 2, kUntouched},
    {1031, LOCALE_SSHORTDATE, kBufChars, L"dd.MM.yyyy", 11, kUntouched},
    {1031, LOCALE_SCURRENCY, kBufChars, L"\u20AC", 2, kUntouched},
    {1031, LOCALE_SMONTHNAME3, kBufChars, L"M\u00E4rz", 5, kUntouched},
    {1031, LOCALE_SDAYNAME7, kBufChars, L"Sonntag", 8, kUntouched}, // 7 is Sunday
    {1031, LOCALE_ILANGUAGE, kBufChars, L"0407", 5, kUntouched},
    {1036, LOCALE_STHOUSAND, kBufChars, L"\u00A0", 2, kUntouched}, // no-break space
    {1036, LOCALE_SMONTHNAME12, kBufChars, L"d\u00E9cembre", 9, kUntouched},
    {1041, LOCALE_IDEFAULTANSICODEPAGE, kBufChars, L"932", 4, kUntouched},
    {1041, LOCALE_SSHORTDATE, kBufChars, L"yyyy/MM/dd", 11, kUntouched},
    {1041, LOCALE_S1159, kBufChars, L"\u5348\u524D", 3, kUntouched},
    {1025, LOCALE_SCURRENCY, kBufChars, L"\u0631.\u0633.\u200F", 6, kUntouched}, // RLM kept
    {1025, LOCALE_IDEFAULTANSICODEPAGE, kBufChars, L"1256", 5, kUntouched},
    {1081, LOCALE_IDEFAULTANSICODEPAGE, kBufChars, L"0", 2, kUntouched}, // Unicode only
    {1081, LOCALE_IDEFAULTCODEPAGE, kBufChars, L"1", 2, kUntouched},
    {1081, LOCALE_SGROUPING, kBufChars, L"3;2;0", 6, kUntouched},
    {1034, LOCALE_SNAME, kBufChars, L"es-ES_tradnl", 13, kUntouched},
    // The invariant locale: its name is empty.
    {LOCALE_INVARIANT, LOCALE_SNAME, kBufChars, L"", 1, kUntouched},
    {LOCALE_INVARIANT, LOCALE_ILANGUAGE, kBufChars, L"007f", 5, kUntouched},
    {LOCALE_INVARIANT, LOCALE_SENGLANGUAGE, kBufChars, L"Invariant Language", 19, kUntouched},
    // Empty values return just the terminator.
    {1033, LOCALE_SMONTHNAME13, kBufChars, L"", 1, kUntouched},
    {1031, LOCALE_S1159, 1, L"", 1, kUntouched},
    // Buffer sizes: probe, exact fit, one short, none.
    {1033, LOCALE_SLONGDATE, 0, nullptr, 20, kUntouched},
    {1033, LOCALE_SLONGDATE, 20, L"dddd, MMMM dd, yyyy", 20, kUntouched},
    {1033, LOCALE_SLONGDATE, 19, nullptr, 0, ERROR_INSUFFICIENT_BUFFER},
    {1036, LOCALE_STHOUSAND, 1, nullptr, 0, ERROR_INSUFFICIENT_BUFFER},
    {1033, LOCALE_SMONTHNAME13, 0, nullptr, 1, kUntouched},
    {1033, LOCALE_SDECIMAL, -1, nullptr, 0, ERROR_INVALID_PARAMETER},
    // Flags: no user overrides exist, so LOCALE_NOUSEROVERRIDE changes nothing.
    {1031, LOCALE_SDECIMAL | LOCALE_NOUSEROVERRIDE, kBufChars, L",", 2, kUntouched},
    {1031, LOCALE_SDECIMAL | LOCALE_USE_CP_ACP, kBufChars, L",", 2, kUntouched},
    {1045, LOCALE_SMONTHNAME1 | LOCALE_RETURN_GENITIVE_NAMES, kBufChars, L"stycze\u0144", 8,
     kUntouched}, // no genitive names: the nominative
    {1045, LOCALE_SDECIMAL | LOCALE_RETURN_GENITIVE_NAMES, kBufChars, nullptr, 0,
     ERROR_INVALID_FLAGS},
    {1033, LOCALE_SDECIMAL | LOCALE_RETURN_NUMBER, kBufChars, nullptr, 0, ERROR_INVALID_FLAGS},
    {1033, LOCALE_SDECIMAL | 0x01000000, kBufChars, nullptr, 0, ERROR_INVALID_FLAGS},
    // Unknown LCTYPEs, including Windows ones this database does not hold.
    {1033, 0x7777, kBufChars, nullptr, 0, ERROR_INVALID_FLAGS},
    {1033, 0, kBufChars, nullptr, 0, ERROR_INVALID_FLAGS},
    {1033, LOCALE_SLANGUAGE, kBufChars, nullptr, 0, ERROR_INVALID_FLAGS},
    // LCID mapping: sort bits ignored, neutral sublanguages to the default locale.
    {0x10407, LOCALE_SNAME, kBufChars, L"de-DE", 6, kUntouched},
    {0x0007, LOCALE_SNAME, kBufChars, L"de-DE", 6, kUntouched},
    {0x0009, LOCALE_SNAME, kBufChars, L"en-US", 6, kUntouched},
    {0x000A, LOCALE_SNAME, kBufChars, L"es-ES", 6, kUntouched},
    {0x0004, LOCALE_SNAME, kBufChars, L"zh-CN", 6, kUntouched},
    {0x0014, LOCALE_SNAME, kBufChars, L"nb-NO", 6, kUntouched},
    // Unknown LCIDs; the LCID is checked before the LCTYPE.
    {0x1234, LOCALE_SDECIMAL, kBufChars, nullptr, 0, ERROR_INVALID_PARAMETER},
    {0x0C1A, LOCALE_SDECIMAL, kBufChars, nullptr, 0,
     ERROR_INVALID_PARAMETER}, // sr-Cyrl-CS: left out
    {LOCALE_CUSTOM_DEFAULT, LOCALE_SDECIMAL, kBufChars, nullptr, 0, ERROR_INVALID_PARAMETER},
    {LOCALE_CUSTOM_UNSPECIFIED, LOCALE_SDECIMAL, kBufChars, nullptr, 0, ERROR_INVALID_PARAMETER},
    {0x00100409, LOCALE_SDECIMAL, kBufChars, nullptr, 0, ERROR_INVALID_PARAMETER},
    {0x1234, 0x7777, kBufChars, nullptr, 0, ERROR_INVALID_PARAMETER},
};

using LocaleInfo = PinnedLocale;

TEST_F(LocaleInfo, ConformanceTable) {
  for (const InfoCase& c : kInfoCases) {
    SCOPED_TRACE(testing::Message() << "lcid " << c.lcid << " type 0x" << std::hex << c.type
                                    << std::dec << " cch " << c.cch);
    WCHAR buf[kBufChars];
    std::wmemset(buf, kSentinel, kBufChars);
    SetLastError(kUntouched);
    int got = GetLocaleInfoW(c.lcid, c.type, buf, c.cch);
    EXPECT_EQ(got, c.result);
    EXPECT_EQ(GetLastError(), c.error);
    int written = 0;
    if (c.text) {
      written = static_cast<int>(std::wcslen(c.text)) + 1;
      EXPECT_EQ(std::wstring(buf, written - 1), c.text);
      EXPECT_EQ(buf[written - 1], L'\0');
    }
    ExpectUntouchedFrom(buf, written);
  }
}

TEST_F(LocaleInfo, NullBufferOnlyForTheProbe) {
  EXPECT_EQ(GetLocaleInfoW(1033, LOCALE_SENGLANGUAGE, nullptr, 0), 8);
  EXPECT_EQ(GetLastError(), kUntouched);
  EXPECT_EQ(GetLocaleInfoW(1033, LOCALE_SENGLANGUAGE, nullptr, 8), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

// LOCALE_RETURN_NUMBER writes a DWORD; the size counts WCHARs, and a DWORD is one of
// our 4-byte WCHARs (two 2-byte ones on Windows).
struct NumberCase {
  LCID lcid;
  LCTYPE type;
  DWORD value;
};

const NumberCase kNumberCases[] = {
    {1033, LOCALE_IDIGITS, 2},
    {1041, LOCALE_IDEFAULTANSICODEPAGE, 932},
    {1081, LOCALE_IDEFAULTANSICODEPAGE, 0},
    {3084, LOCALE_INEGCURR, 15},      // two digits
    {1031, LOCALE_ILANGUAGE, 0x0407}, // read as hexadecimal
    {LOCALE_INVARIANT, LOCALE_ILANGUAGE, 0x007F},
    {1033, LOCALE_IFIRSTDAYOFWEEK, 6}, // Sunday, counted from Monday
};

TEST_F(LocaleInfo, ReturnNumber) {
  static_assert(sizeof(WCHAR) == sizeof(DWORD), "one WCHAR holds the DWORD");
  for (const NumberCase& c : kNumberCases) {
    SCOPED_TRACE(testing::Message() << "lcid " << c.lcid << " type 0x" << std::hex << c.type);
    LCTYPE type = c.type | LOCALE_RETURN_NUMBER;
    EXPECT_EQ(GetLocaleInfoW(c.lcid, type, nullptr, 0), 1);
    WCHAR buf[4];
    std::wmemset(buf, kSentinel, 4);
    ASSERT_EQ(GetLocaleInfoW(c.lcid, type | LOCALE_NOUSEROVERRIDE, buf, 1), 1);
    DWORD value = 0;
    std::memcpy(&value, buf, sizeof value);
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(buf[1], kSentinel);
  }
}

// Every value of every locale obeys the buffer contract: the probe's length is what a
// fetch returns, the text has no embedded terminator, one character less fails and
// writes nothing, and integer values read back as LOCALE_RETURN_NUMBER gives them.
TEST_F(LocaleInfo, EveryValueHonoursTheBufferContract) {
  const LCTYPE kTypes[] = {LOCALE_IDEFAULTANSICODEPAGE,
                           LOCALE_IDEFAULTCODEPAGE,
                           LOCALE_SDECIMAL,
                           LOCALE_STHOUSAND,
                           LOCALE_SLONGDATE,
                           LOCALE_S1159,
                           LOCALE_SMONTHNAME13,
                           LOCALE_SABBREVDAYNAME7,
                           LOCALE_SNAME,
                           LOCALE_SNATIVEDIGITS,
                           LOCALE_ICALENDARTYPE,
                           LOCALE_IFIRSTDAYOFWEEK,
                           LOCALE_SCURRENCY,
                           LOCALE_INEGCURR};
  const bool kNumeric[] = {true,  true,  false, false, false, false, false,
                           false, false, false, true,  true,  false, true};
  int locales = 0;
  for (LCID lcid = 1; lcid <= 0xFFFF; ++lcid) {
    if (ConvertDefaultLocale(lcid) != lcid || !IsValidLocale(lcid, LCID_SUPPORTED))
      continue;
    ++locales;
    for (size_t t = 0; t < std::size(kTypes); ++t) {
      SCOPED_TRACE(testing::Message() << "lcid " << lcid << " type 0x" << std::hex << kTypes[t]);
      int need = GetLocaleInfoW(lcid, kTypes[t], nullptr, 0);
      ASSERT_GE(need, 1);
      ASSERT_LE(need, kBufChars);
      WCHAR buf[kBufChars];
      std::wmemset(buf, kSentinel, kBufChars);
      // need - 1 == 0 is the probe again; any other short size fails.
      ASSERT_EQ(GetLocaleInfoW(lcid, kTypes[t], buf, need - 1), need == 1 ? 1 : 0);
      EXPECT_EQ(buf[0], kSentinel);
      ASSERT_EQ(GetLocaleInfoW(lcid, kTypes[t], buf, need), need);
      EXPECT_EQ(std::wcslen(buf), static_cast<size_t>(need - 1));
      EXPECT_EQ(buf[need], kSentinel);
      if (kNumeric[t]) {
        DWORD value = 0;
        WCHAR number[1];
        ASSERT_EQ(GetLocaleInfoW(lcid, kTypes[t] | LOCALE_RETURN_NUMBER, number, 1), 1);
        std::memcpy(&value, number, sizeof value);
        EXPECT_EQ(value, std::wcstoul(buf, nullptr, 10));
      }
    }
  }
  EXPECT_EQ(locales, 142);
}

// The special LCIDs name the user and system default, not the thread locale.
TEST_F(LocaleInfo, SpecialLcidsFollowTheRuntimeLocale) {
  ASSERT_TRUE(SetThreadLocale(1031));
  for (LCID lcid : {LOCALE_USER_DEFAULT, LOCALE_SYSTEM_DEFAULT, LOCALE_NEUTRAL}) {
    WCHAR buf[kBufChars];
    ASSERT_EQ(GetLocaleInfoW(lcid, LOCALE_SNAME, buf, kBufChars), 6) << lcid;
    EXPECT_STREQ(buf, L"en-US");
  }
  EXPECT_EQ(qx::platform::LocaleAnsiCodePage(LOCALE_USER_DEFAULT), 1252u);
}

// ---- Code pages and names for other platform code --------------------------------

TEST(LocaleCodePage, AnsiAndOem) {
  struct Case {
    LCID lcid;
    UINT ansi, oem;
  };
  const Case kCases[] = {
      {1033, 1252, 437},
      {1031, 1252, 850},
      {1049, 1251, 866},
      {1041, 932, 932},
      {2052, 936, 936},
      {1025, 1256, 720},
      {1081, 0, 1}, // Unicode-only
      {LOCALE_INVARIANT, 1252, 437},
      {0x0011, 932, 932}, // neutral Japanese
      {0x1234, 0, 0},
      {0x00100409, 0, 0}, // unknown
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(qx::platform::LocaleAnsiCodePage(c.lcid), c.ansi) << c.lcid;
    EXPECT_EQ(qx::platform::LocaleOemCodePage(c.lcid), c.oem) << c.lcid;
  }
}

TEST(LocaleNames, MonthsAndDays) {
  using qx::platform::LocaleDayName;
  using qx::platform::LocaleMonthName;
  EXPECT_EQ(LocaleDayName(1031, 0, false), u"Sonntag"); // SYSTEMTIME counts from Sunday
  EXPECT_EQ(LocaleDayName(1031, 1, false), u"Montag");
  EXPECT_EQ(LocaleDayName(1033, 6, true), u"Sat");
  EXPECT_EQ(LocaleDayName(1033, 7, false), u"");
  EXPECT_EQ(LocaleDayName(1033, -1, false), u"");
  EXPECT_EQ(LocaleMonthName(1036, 12, false), u"d\u00E9cembre");
  EXPECT_EQ(LocaleMonthName(1033, 1, true), u"Jan");
  EXPECT_EQ(LocaleMonthName(1033, 13, false), u"");
  EXPECT_EQ(LocaleMonthName(1033, 0, false), u"");
  EXPECT_EQ(LocaleMonthName(0x1234, 1, false), u"");
}

// ---- Thread locale ---------------------------------------------------------------

using ThreadLocale = PinnedLocale;

TEST_F(ThreadLocale, SetAndGet) {
  struct Case {
    LCID set;
    BOOL ok;
    LCID after; // GetThreadLocale afterwards
    DWORD error;
  };
  const Case kCases[] = {
      {1031, TRUE, 1031, kUntouched},
      {0x0011, TRUE, 0x0411, kUntouched},            // neutral Japanese
      {0x10407, TRUE, 0x10407, kUntouched},          // sort bits kept
      {LOCALE_USER_DEFAULT, TRUE, 1033, kUntouched}, // stored as the user default
      {LOCALE_INVARIANT, TRUE, LOCALE_INVARIANT, kUntouched},
      {0x1234, FALSE, LOCALE_INVARIANT, ERROR_INVALID_PARAMETER}, // unchanged
      {LOCALE_CUSTOM_DEFAULT, FALSE, LOCALE_INVARIANT, ERROR_INVALID_PARAMETER},
  };
  for (const Case& c : kCases) {
    SetLastError(kUntouched);
    EXPECT_EQ(SetThreadLocale(c.set), c.ok) << c.set;
    EXPECT_EQ(GetThreadLocale(), c.after) << c.set;
    EXPECT_EQ(GetLastError(), c.error) << c.set;
  }
}

TEST_F(ThreadLocale, NewThreadStartsWithTheUserDefault) {
  ASSERT_TRUE(SetThreadLocale(1041));
  LCID other = 0;
  std::thread([&other] { other = GetThreadLocale(); }).join();
  EXPECT_EQ(other, 1033u);
  EXPECT_EQ(GetThreadLocale(), 1041u);
}

// ---- User default locale from the runtime's locale name ---------------------------

TEST(UserDefaultLocale, FromRuntimeNames) {
  struct Case {
    const char* name;
    LCID lcid;
  };
  const Case kCases[] = {
      {"de_DE", 1031},
      {"de_DE.UTF-8", 1031},
      {"de_DE@euro", 1031},
      {"de_DE.ISO-8859-15@euro", 1031},
      {"de-DE", 1031},
      {"DE_de", 1031},
      {"de_AT.UTF-8", 3079},
      {"ja_JP.eucJP", 1041},
      {"es_ES", 3082}, // the modern sort, not es-ES_tradnl
      {"uz_UZ", 1091}, // the runtime's uz_UZ is the Latin one
      {"uz_UZ@cyrillic", 2115},
      {"az_AZ.UTF-8", 1068},
      {"de", 1031}, // bare language: its default locale
      {"es", 3082},
      {"zh", 2052},
      {"nn", 2068},                  // not nb-NO, which shares the primary language
      {"German_Germany.1252", 1031}, // Microsoft form: English names
      {"English_United Kingdom.1252", 2057},
      {"Spanish_Spain.1252", 3082},
      {"Chinese (Simplified)_People's Republic of China.936", 2052},
      {"Arabic_U.A.E..1256", 14337}, // a dot inside the country name
      {"Arabic_U.A.E.", 14337},
      {"german", 1031},
      {"C", 1033},
      {"C.UTF-8", 1033},
      {"POSIX", 1033},
      {"", 1033},
      {nullptr, 1033},
      {"de_BE.UTF-8", 1033}, // no such LCID
      {"sr_RS@latin", 1033},
      {"xx", 1033},
      {"German_Atlantis", 1033},
      {"uz_UZ@klingon", 1033},
  };
  for (const Case& c : kCases)
    EXPECT_EQ(qx::platform::LocaleFromCrtName(c.name), c.lcid) << (c.name ? c.name : "(null)");
}

using UserDefaultThroughRuntime = PinnedLocale;

TEST_F(UserDefaultThroughRuntime, CAndCUtf8GiveEnglishUnitedStates) {
  for (const char* name : {"C", "C.UTF-8", "POSIX"}) {
    ASSERT_NE(std::setlocale(LC_CTYPE, name), nullptr) << name;
    EXPECT_EQ(GetUserDefaultLCID(), 1033u) << name;
    EXPECT_EQ(GetSystemDefaultLCID(), 1033u) << name;
    EXPECT_EQ(GetUserDefaultLangID(), 0x0409) << name;
    EXPECT_EQ(GetSystemDefaultLangID(), 0x0409) << name;
  }
}

// ---- Validity and locale names ------------------------------------------------------

TEST(LocaleValidity, IsValidLocale) {
  struct Case {
    LCID lcid;
    DWORD flags;
    BOOL valid;
  };
  const Case kCases[] = {
      {1033, LCID_SUPPORTED, TRUE},
      {1033, LCID_INSTALLED, TRUE},
      {1033, 0, FALSE},
      {1033, 3, FALSE},
      {0x10407, LCID_SUPPORTED, TRUE},
      {0x0009, LCID_SUPPORTED, TRUE},
      {LOCALE_INVARIANT, LCID_SUPPORTED, TRUE},
      {LOCALE_NEUTRAL, LCID_SUPPORTED, FALSE},
      {LOCALE_USER_DEFAULT, LCID_SUPPORTED, FALSE},
      {LOCALE_SYSTEM_DEFAULT, LCID_SUPPORTED, FALSE},
      {0x1234, LCID_SUPPORTED, FALSE},
      {0x00100409, LCID_SUPPORTED, FALSE},
  };
  for (const Case& c : kCases)
    EXPECT_EQ(IsValidLocale(c.lcid, c.flags), c.valid) << c.lcid << " " << c.flags;
}

using LocaleNameCalls = PinnedLocale;

TEST_F(LocaleNameCalls, LcidToLocaleName) {
  struct Case {
    LCID lcid;
    int cch;
    DWORD flags;
    const wchar_t* text;
    int result;
    DWORD error;
  };
  const Case kCases[] = {
      {1031, kBufChars, 0, L"de-DE", 6, kUntouched},
      {1031, 6, 0, L"de-DE", 6, kUntouched},
      {1031, 5, 0, nullptr, 0, ERROR_INSUFFICIENT_BUFFER},
      {1031, 0, 0, nullptr, 6, kUntouched},
      {0x0009, kBufChars, LOCALE_ALLOW_NEUTRAL_NAMES, L"en-US", 6, kUntouched},
      {LOCALE_INVARIANT, kBufChars, 0, L"", 1, kUntouched},
      {LOCALE_USER_DEFAULT, kBufChars, 0, L"en-US", 6, kUntouched},
      {0x1234, kBufChars, 0, nullptr, 0, ERROR_INVALID_PARAMETER},
      {1031, kBufChars, 0x4, nullptr, 0, ERROR_INVALID_FLAGS},
      {1031, -1, 0, nullptr, 0, ERROR_INVALID_PARAMETER},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(testing::Message() << "lcid " << c.lcid << " cch " << c.cch);
    WCHAR buf[kBufChars];
    std::wmemset(buf, kSentinel, kBufChars);
    SetLastError(kUntouched);
    EXPECT_EQ(LCIDToLocaleName(c.lcid, buf, c.cch, c.flags), c.result);
    EXPECT_EQ(GetLastError(), c.error);
    int written = c.text ? static_cast<int>(std::wcslen(c.text)) + 1 : 0;
    if (c.text) {
      EXPECT_STREQ(buf, c.text);
    }
    ExpectUntouchedFrom(buf, written);
  }
}

TEST_F(LocaleNameCalls, LocaleNameToLcid) {
  struct Case {
    const wchar_t* name;
    DWORD flags;
    LCID lcid;
    DWORD error;
  };
  const Case kCases[] = {
      {L"de-DE", 0, 1031, kUntouched},
      {L"DE-de", 0, 1031, kUntouched},
      {L"es-ES_tradnl", 0, 1034, kUntouched},
      {L"uz-Cyrl-UZ", 0, 2115, kUntouched},
      {L"en", 0, 1033, kUntouched},
      {L"", 0, LOCALE_INVARIANT, kUntouched},
      {LOCALE_NAME_USER_DEFAULT, 0, 1033, kUntouched},
      {LOCALE_NAME_SYSTEM_DEFAULT, 0, 1033, kUntouched},
      {L"xx-YY", 0, 0, ERROR_INVALID_PARAMETER},
      {L"de-DE-", 0, 0, ERROR_INVALID_PARAMETER},
      {L"de-DE", 0x4, 0, ERROR_INVALID_FLAGS},
  };
  for (const Case& c : kCases) {
    SetLastError(kUntouched);
    EXPECT_EQ(LocaleNameToLCID(c.name, c.flags), c.lcid) << (c.name ? c.name : L"(null)");
    EXPECT_EQ(GetLastError(), c.error) << (c.name ? c.name : L"(null)");
  }
}

// Every locale's name leads back to it.
TEST(LocaleNames, RoundTripEveryLocale) {
  int count = 0;
  for (LCID lcid = 1; lcid <= 0xFFFF; ++lcid) {
    if (ConvertDefaultLocale(lcid) != lcid || !IsValidLocale(lcid, LCID_SUPPORTED))
      continue;
    WCHAR name[LOCALE_NAME_MAX_LENGTH];
    ASSERT_GT(LCIDToLocaleName(lcid, name, LOCALE_NAME_MAX_LENGTH, 0), 0) << lcid;
    EXPECT_EQ(LocaleNameToLCID(name, 0), lcid) << lcid;
    ++count;
  }
  EXPECT_EQ(count, 142);
}

} // namespace
