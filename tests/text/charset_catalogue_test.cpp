// The character-set catalogue and the system charset.
#include "common/thread_runner.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"
#include "text/charset_catalogue.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CharsetCatalogue, NamesAndOldNames) {
  EXPECT_STREQ(CS2Str(QXCHARSET_NEUTRAL), L"Neutral");
  EXPECT_STREQ(CS2Str(QXCHARSET_WINDOWS_LATIN1), L"WindowsLatin1");
  EXPECT_STREQ(CS2Str(QXCHARSET_PACKED_EUC_KOREAN), L"?PackedEUCKorean");
  EXPECT_STREQ(CS2Str(QXCHARSET_PACKED_EUC_JAPANESE), L"PackedEUCJapanese");
  EXPECT_STREQ(CS2Str(QXCHARSET_WINDOWS_VIETNAMESE), L"WindowsVietnamese");
  EXPECT_STREQ(CS2Str(static_cast<QXCHARSET>(57)), L"");
  EXPECT_STREQ(CS2Str(QXCHARSET_NONE), L"");
  int mac = 0, xascii = 0, lics = 0, ansi = 0;
  for (int cs = -2; cs <= 58; ++cs) {
    std::wstring old = CS2OldStr(static_cast<QXCHARSET>(cs));
    mac += old == L"MAC";
    xascii += old == L"XASCII";
    lics += old == L"LICS";
    ansi += old == L"ANSI";
  }
  EXPECT_EQ(mac + xascii + lics, 3);
  EXPECT_STREQ(CS2OldStr(QXCHARSET_MAC_ROMAN), L"MAC");
  EXPECT_STREQ(CS2OldStr(QXCHARSET_CODEPAGE_437), L"XASCII");
  EXPECT_STREQ(CS2OldStr(QXCHARSET_LICS), L"LICS");
  EXPECT_EQ(ansi, 61 - 3);
}

TEST(CharsetCatalogue, NameLookup) {
  struct Case {
    const wchar_t* name;
    QXCHARSET expected;
  } cases[] = {
      {L"mac", QXCHARSET_MAC_ROMAN},
      {L"macroman", QXCHARSET_MAC_ROMAN},
      {L"XAscii", QXCHARSET_CODEPAGE_437},
      {L"lics", QXCHARSET_LICS},
      {L"PACKEDEUCJAPANESE", QXCHARSET_PACKED_EUC_JAPANESE},
      {L"PackedEUCKorean", QXCHARSET_NONE}, // the name keeps its question mark
      {L"?packedeuckorean", QXCHARSET_PACKED_EUC_KOREAN},
      {L"neutral", QXCHARSET_NEUTRAL},
      {L"windowsbalticrim", QXCHARSET_WINDOWS_BALTIC_RIM},
      {L"", QXCHARSET_NONE},
      {L"WindowsLatin1 ", QXCHARSET_NONE},
      {nullptr, QXCHARSET_NONE},
  };
  for (const Case& c : cases)
    EXPECT_EQ(Str2CS(c.name), c.expected) << (c.name ? c.name : L"(null)");
  EXPECT_EQ(Str2CS(L"ansi"), system_charset());
  for (int cs = 0; cs < kQXCharsetCount; ++cs)
    EXPECT_EQ(Str2CS(CS2Str(static_cast<QXCHARSET>(cs))), cs);
}

TEST(CharsetCatalogue, CodePagesLineEndsAndFlags) {
  EXPECT_EQ(GetWinCodePage(QXCHARSET_CODEPAGE_437), 1);
  EXPECT_EQ(GetWinCodePage(QXCHARSET_MAC_ROMAN), -1);
  EXPECT_EQ(GetWinCodePage(QXCHARSET_NEUTRAL), 0);
  EXPECT_EQ(GetWinCodePage(static_cast<QXCHARSET>(57)), -1);
  EXPECT_EQ(GetWinCodePage(QXCHARSET_NONE), -1);
  // Unsorted on purpose: 10..13 are 1252, 1250, 1256, 1251.
  EXPECT_EQ(GetWinCodePage(QXCHARSET_WINDOWS_LATIN1), 1252);
  EXPECT_EQ(GetWinCodePage(QXCHARSET_WINDOWS_LATIN2), 1250);
  EXPECT_EQ(GetWinCodePage(QXCHARSET_WINDOWS_ARABIC), 1256);
  EXPECT_EQ(GetWinCodePage(QXCHARSET_WINDOWS_CYRILLIC), 1251);
  int dbcs = 0;
  for (int i = 0; i < kQXCharsetCount; ++i) {
    QXCHARSET cs = static_cast<QXCHARSET>(i);
    std::wstring expected = (i >= 21 && i <= 33) || i == 49              ? L"\r"
                            : (i >= 1 && i <= 9) || (i >= 50 && i <= 53) ? L"\n"
                                                                         : L"\r\n";
    EXPECT_EQ(CharsetSlashN(cs), expected) << i;
    EXPECT_EQ(CharsetUnknownCode(cs), '_');
    EXPECT_EQ(CharsetDBCS(cs), IS_DBCS_CHARSET(cs));
    dbcs += CharsetDBCS(cs);
  }
  EXPECT_EQ(dbcs, 13); // 17-20, 31-33, 46, 49-53
  EXPECT_TRUE(CharsetDBCS(QXCHARSET_LMBCS));
  EXPECT_FALSE(CharsetDBCS(QXCHARSET_LMBCS1));
}

TEST(CharsetCatalogue, LeadByteRangesAreTheLibrarysOwn) {
  auto lead = [](unsigned char b, QXCHARSET cs) {
    char c = static_cast<char>(b);
    return qx::IsCharsetLeadByte(&c, cs);
  };
  // Japanese skips 0x85, 0x86, 0xEB, 0xEC and 0xEF-0xF9.
  for (unsigned char b : {0x81, 0x84, 0x87, 0x9F, 0xE0, 0xEA, 0xED, 0xEE, 0xFA, 0xFC})
    EXPECT_TRUE(lead(b, QXCHARSET_WINDOWS_JAPANESE)) << int(b);
  for (unsigned char b : {0x80, 0x85, 0x86, 0xA0, 0xEB, 0xEC, 0xEF, 0xF9, 0xFD})
    EXPECT_FALSE(lead(b, QXCHARSET_WINDOWS_JAPANESE)) << int(b);
  EXPECT_TRUE(lead(0xC9, QXCHARSET_WINDOWS_TRAD_CHINESE));
  EXPECT_FALSE(lead(0xC7, QXCHARSET_WINDOWS_TRAD_CHINESE));
  EXPECT_TRUE(lead(0xFE, QXCHARSET_WINDOWS_SIMP_CHINESE));
  EXPECT_FALSE(lead(0xC9, QXCHARSET_WINDOWS_KOREAN));
  EXPECT_TRUE(lead(0x90, QXCHARSET_MAC_KOREAN));
  EXPECT_TRUE(lead(0xAF, QXCHARSET_MAC_TRAD_CHINESE));
  EXPECT_TRUE(lead(0xFC, QXCHARSET_MAC_JAPANESE));
  EXPECT_TRUE(lead(0x8E, QXCHARSET_PACKED_EUC_JAPANESE));
  EXPECT_FALSE(lead(0xF0, QXCHARSET_PACKED_EUC_JAPANESE));
  EXPECT_FALSE(lead(0x81, QXCHARSET_MAC_SIMP_CHINESE)); // DBCS, but no ranges
  EXPECT_FALSE(lead(0x81, QXCHARSET_NONE));
  EXPECT_FALSE(qx::IsCharsetLeadByte(nullptr, QXCHARSET_WINDOWS_JAPANESE));
}

TEST(SystemCharset, ChosenFromTheLocalesAnsiCodePageWhenTheSetIsBuilt) {
  struct Case {
    LCID lcid;
    QXCHARSET expected;
  } cases[] = {
      {1033, QXCHARSET_WINDOWS_LATIN1},
      {1041, QXCHARSET_WINDOWS_JAPANESE},
      {2052, QXCHARSET_WINDOWS_SIMP_CHINESE},
      {1028, QXCHARSET_WINDOWS_TRAD_CHINESE},
      {1042, QXCHARSET_WINDOWS_KOREAN},
      {1049, QXCHARSET_WINDOWS_CYRILLIC},
      {1045, QXCHARSET_WINDOWS_LATIN2},
      {1054, QXCHARSET_WINDOWS_THAI},
      {1062, QXCHARSET_WINDOWS_BALTIC_RIM},
      {1066, QXCHARSET_WINDOWS_VIETNAMESE},
      {1081, QXCHARSET_NEUTRAL}, // hi-IN: Unicode only, ANSI code page 0
  };
  for (const Case& c : cases) {
    qxtest::RunOnNewThread([&] {
      ASSERT_TRUE(SetThreadLocale(c.lcid));
      EXPECT_EQ(system_charset(), c.expected) << c.lcid;
      EXPECT_EQ(Str2CS(L"ANSI"), c.expected);
      // Fixed once: a later change of locale does not move it.
      SetThreadLocale(1033);
      EXPECT_EQ(system_charset(), c.expected);
    });
  }
}

TEST(SystemCharset, CodePageQueryForAnyLocale) {
  EXPECT_EQ(qx::LocaleAnsiCodePageOf(1041), 932);
  EXPECT_EQ(qx::LocaleAnsiCodePageOf(1025), 1256);
  EXPECT_EQ(qx::LocaleAnsiCodePageOf(1081), 0);
  EXPECT_EQ(qx::LocaleAnsiCodePageOf(0x12345), 0);
  EXPECT_EQ(qx::CharsetForAnsiCodePage(65001), QXCHARSET_NEUTRAL);
}

} // namespace
