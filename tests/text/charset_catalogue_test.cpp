// The character-set catalogue and the system charset.
#include "text/charset_catalogue.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// One row per family of members and per oddity of the catalogue: names,
// old names, code pages (unsorted: 10..13 are 1252, 1250, 1256, 1251), line
// ends and the double-byte flag.
TEST(CharsetCatalogue, Members) {
  struct Case {
    int cs;
    const wchar_t *name, *oldName;
    int codePage;
    const wchar_t* lineEnd;
    bool dbcs;
  } cases[] = {
      {0, L"Neutral", L"ANSI", 0, L"\r\n", false},
      {1, L"ISO8859_1", L"ANSI", 28591, L"\n", false},
      {9, L"ISO8859_9", L"ANSI", 28599, L"\n", false},
      {10, L"WindowsLatin1", L"ANSI", 1252, L"\r\n", false},
      {11, L"WindowsLatin2", L"ANSI", 1250, L"\r\n", false},
      {12, L"WindowsArabic", L"ANSI", 1256, L"\r\n", false},
      {13, L"WindowsCyrillic", L"ANSI", 1251, L"\r\n", false},
      {17, L"WindowsTradChinese", L"ANSI", 950, L"\r\n", true},
      {20, L"WindowsKorean", L"ANSI", 949, L"\r\n", true},
      {21, L"MacRoman", L"MAC", -1, L"\r", false},
      {31, L"MacTradChinese", L"ANSI", -1, L"\r", true},
      {33, L"MacKorean", L"ANSI", -1, L"\r", true},
      {34, L"CodePage437", L"XASCII", 1, L"\r\n", false},
      {45, L"LICS", L"LICS", -1, L"\r\n", false},
      {46, L"LMBCS", L"ANSI", -1, L"\r\n", true},
      {47, L"LMBCS1", L"ANSI", -1, L"\r\n", false},
      {49, L"MacSimpChinese", L"ANSI", -1, L"\r", true},
      {50, L"?PackedEUCTradChinese", L"ANSI", -1, L"\n", true},
      {52, L"PackedEUCJapanese", L"ANSI", -1, L"\n", true},
      {53, L"?PackedEUCKorean", L"ANSI", -1, L"\n", true},
      {54, L"WindowsThai", L"ANSI", 874, L"\r\n", false},
      {56, L"WindowsVietnamese", L"ANSI", 1258, L"\r\n", false},
  };
  for (const Case& c : cases) {
    QXCHARSET cs = static_cast<QXCHARSET>(c.cs);
    SCOPED_TRACE(c.cs);
    EXPECT_STREQ(CS2Str(cs), c.name);
    EXPECT_STREQ(CS2OldStr(cs), c.oldName);
    EXPECT_EQ(GetWinCodePage(cs), c.codePage);
    EXPECT_STREQ(CharsetSlashN(cs), c.lineEnd);
    EXPECT_EQ(CharsetDBCS(cs), c.dbcs);
    EXPECT_EQ(IS_DBCS_CHARSET(cs), c.dbcs);
    EXPECT_EQ(CharsetUnknownCode(cs), '_');
  }
  for (int bad : {-1, 57}) {
    EXPECT_STREQ(CS2Str(static_cast<QXCHARSET>(bad)), L"");
    EXPECT_EQ(GetWinCodePage(static_cast<QXCHARSET>(bad)), -1);
  }
}

TEST(CharsetCatalogue, NameLookup) {
  // clang-format off
  struct Case {
    const wchar_t* name;
    QXCHARSET expected;
  } cases[] = {
      {L"mac", QXCHARSET_MAC_ROMAN}, {L"XAscii", QXCHARSET_CODEPAGE_437}, {L"lics", QXCHARSET_LICS},
      {L"PACKEDEUCJAPANESE", QXCHARSET_PACKED_EUC_JAPANESE},
      {L"PackedEUCKorean", QXCHARSET_NONE}, // the name keeps its question mark
      {L"?packedeuckorean", QXCHARSET_PACKED_EUC_KOREAN}, {L"", QXCHARSET_NONE},
      {L"WindowsLatin1 ", QXCHARSET_NONE}, {nullptr, QXCHARSET_NONE},
  };
  // clang-format on
  for (const Case& c : cases)
    EXPECT_EQ(Str2CS(c.name), c.expected) << (c.name ? c.name : L"(null)");
  EXPECT_EQ(Str2CS(L"ansi"), system_charset());
  for (int cs = 0; cs < kQXCharsetCount; ++cs)
    EXPECT_EQ(Str2CS(CS2Str(static_cast<QXCHARSET>(cs))), cs);
}

// Japanese skips 0x85, 0x86, 0xEB, 0xEC and 0xEF-0xF9.
TEST(CharsetCatalogue, LeadByteRangesAreTheLibrarysOwn) {
  // clang-format off
  const struct {
    QXCHARSET cs;
    std::vector<int> leads, others;
  } cases[] = {
      {QXCHARSET_WINDOWS_JAPANESE, {0x81, 0x84, 0x87, 0x9F, 0xE0, 0xEA, 0xED, 0xEE, 0xFA, 0xFC},
       {0x80, 0x85, 0x86, 0xA0, 0xEB, 0xEC, 0xEF, 0xF9, 0xFD}},
      {QXCHARSET_WINDOWS_TRAD_CHINESE, {0xC9}, {0xC7}}, {QXCHARSET_WINDOWS_SIMP_CHINESE, {0xFE}, {}},
      {QXCHARSET_WINDOWS_KOREAN, {}, {0xC9}}, {QXCHARSET_MAC_KOREAN, {0x90}, {}},
      {QXCHARSET_MAC_TRAD_CHINESE, {0xAF}, {}}, {QXCHARSET_MAC_JAPANESE, {0xFC}, {}},
      {QXCHARSET_PACKED_EUC_JAPANESE, {0x8E}, {0xF0}},
      {QXCHARSET_MAC_SIMP_CHINESE, {}, {0x81}}, // DBCS, but no ranges
      {QXCHARSET_NONE, {}, {0x81}},
  };
  // clang-format on
  for (const auto& c : cases) {
    for (bool lead : {true, false})
      for (int b : lead ? c.leads : c.others) {
        char byte = static_cast<char>(b);
        EXPECT_EQ(qx::IsCharsetLeadByte(&byte, c.cs), lead) << c.cs << " " << b;
      }
  }
  EXPECT_FALSE(qx::IsCharsetLeadByte(nullptr, QXCHARSET_WINDOWS_JAPANESE));
}

TEST(SystemCharset, ChosenFromTheLocalesAnsiCodePageWhenTheSetIsBuilt) {
  // clang-format off
  struct Case {
    LCID lcid;
    QXCHARSET expected;
  } cases[] = {
      {1033, QXCHARSET_WINDOWS_LATIN1}, {1041, QXCHARSET_WINDOWS_JAPANESE},
      {2052, QXCHARSET_WINDOWS_SIMP_CHINESE}, {1028, QXCHARSET_WINDOWS_TRAD_CHINESE},
      {1042, QXCHARSET_WINDOWS_KOREAN}, {1049, QXCHARSET_WINDOWS_CYRILLIC},
      {1045, QXCHARSET_WINDOWS_LATIN2}, {1054, QXCHARSET_WINDOWS_THAI},
      {1062, QXCHARSET_WINDOWS_BALTIC_RIM}, {1066, QXCHARSET_WINDOWS_VIETNAMESE},
      {1081, QXCHARSET_NEUTRAL}, // hi-IN: Unicode only, ANSI code page 0
  };
  // clang-format on
  for (const Case& c : cases) {
    qxtest::InLocale(c.lcid, [&] {
      EXPECT_EQ(system_charset(), c.expected) << c.lcid;
      EXPECT_EQ(Str2CS(L"ANSI"), c.expected);
      // Fixed once: a later change of locale does not move it.
      SetThreadLocale(1033);
      EXPECT_EQ(system_charset(), c.expected);
    });
  }
}

TEST(SystemCharset, CodePageQueryForAnyLocale) {
  EXPECT_EQ(qx::LocaleAnsiCodePageOf(1025), 1256);
  EXPECT_EQ(qx::LocaleAnsiCodePageOf(0x12345), 0);
  EXPECT_EQ(qx::CharsetForAnsiCodePage(65001), QXCHARSET_NEUTRAL);
}

} // namespace
