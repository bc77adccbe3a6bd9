//===- text/charset_catalogue.cpp - The 57 character sets -----------------===//
//
// The catalogue is constant data indexed by QXCHARSET. Points kept on
// purpose: three packed-EUC names begin with a question mark (and are looked
// up with it); "CodePage437" maps to code page 1 (the OEM page) and
// "Neutral" to 0 (the ANSI page); code pages follow the members' order, which
// is not sorted.
//
//===----------------------------------------------------------------------===//
#include "text/charset_catalogue.h"
#include "qxutil/winlocale.h"

#include "platform/crt_string.h"

namespace {

struct CharsetRecord {
  const wchar_t* name;
  unsigned char dbcs;
  unsigned char unknownCode;
  const wchar_t* lineEnd;
  int codePage;
};

constexpr const wchar_t* CRLF = L"\r\n";
constexpr const wchar_t* LF = L"\n";
constexpr const wchar_t* CR = L"\r";

constexpr CharsetRecord kCatalogue[kQXCharsetCount] = {
    {L"Neutral", 0, '_', CRLF, 0},
    {L"ISO8859_1", 0, '_', LF, 28591},
    {L"ISO8859_2", 0, '_', LF, 28592},
    {L"ISO8859_3", 0, '_', LF, 28593},
    {L"ISO8859_4", 0, '_', LF, 28594},
    {L"ISO8859_5", 0, '_', LF, 28595},
    {L"ISO8859_6", 0, '_', LF, 28596},
    {L"ISO8859_7", 0, '_', LF, 28597},
    {L"ISO8859_8", 0, '_', LF, 28598},
    {L"ISO8859_9", 0, '_', LF, 28599},
    {L"WindowsLatin1", 0, '_', CRLF, 1252},
    {L"WindowsLatin2", 0, '_', CRLF, 1250},
    {L"WindowsArabic", 0, '_', CRLF, 1256},
    {L"WindowsCyrillic", 0, '_', CRLF, 1251},
    {L"WindowsGreek", 0, '_', CRLF, 1253},
    {L"WindowsHebrew", 0, '_', CRLF, 1255},
    {L"WindowsTurkish", 0, '_', CRLF, 1254},
    {L"WindowsTradChinese", 1, '_', CRLF, 950},
    {L"WindowsSimpChinese", 1, '_', CRLF, 936},
    {L"WindowsJapanese", 1, '_', CRLF, 932},
    {L"WindowsKorean", 1, '_', CRLF, 949},
    {L"MacRoman", 0, '_', CR, -1},
    {L"MacArabic", 0, '_', CR, -1},
    {L"MacGreek", 0, '_', CR, -1},
    {L"MacHebrew", 0, '_', CR, -1},
    {L"MacCentralEuropean", 0, '_', CR, -1},
    {L"MacCroatian", 0, '_', CR, -1},
    {L"MacCyrillic", 0, '_', CR, -1},
    {L"MacIcelandic", 0, '_', CR, -1},
    {L"MacThai", 0, '_', CR, -1},
    {L"MacTurkish", 0, '_', CR, -1},
    {L"MacTradChinese", 1, '_', CR, -1},
    {L"MacJapanese", 1, '_', CR, -1},
    {L"MacKorean", 1, '_', CR, -1},
    {L"CodePage437", 0, '_', CRLF, 1},
    {L"CodePage850", 0, '_', CRLF, 850},
    {L"CodePage852", 0, '_', CRLF, 852},
    {L"CodePage857", 0, '_', CRLF, 857},
    {L"CodePage860", 0, '_', CRLF, 860},
    {L"CodePage861", 0, '_', CRLF, 861},
    {L"CodePage863", 0, '_', CRLF, 863},
    {L"CodePage865", 0, '_', CRLF, 865},
    {L"CodePage855", 0, '_', CRLF, 855},
    {L"CodePage864", 0, '_', CRLF, 864},
    {L"CodePage869", 0, '_', CRLF, 869},
    {L"LICS", 0, '_', CRLF, -1},
    {L"LMBCS", 1, '_', CRLF, -1},
    {L"LMBCS1", 0, '_', CRLF, -1},
    {L"LMBCS2", 0, '_', CRLF, -1},
    {L"MacSimpChinese", 1, '_', CR, -1},
    {L"?PackedEUCTradChinese", 1, '_', LF, -1},
    {L"?PackedEUCSimpChinese", 1, '_', LF, -1},
    {L"PackedEUCJapanese", 1, '_', LF, -1},
    {L"?PackedEUCKorean", 1, '_', LF, -1},
    {L"WindowsThai", 0, '_', CRLF, 874},
    {L"WindowsBalticRim", 0, '_', CRLF, 1257},
    {L"WindowsVietnamese", 0, '_', CRLF, 1258},
};

bool InRange(QXCHARSET cs) { return cs >= 0 && cs < kQXCharsetCount; }

// Unchecked accessors read the row as given; a bad value is the caller's
// fault, but it reads the first row instead of memory outside the table.
const CharsetRecord& Row(QXCHARSET cs) { return kCatalogue[InRange(cs) ? cs : 0]; }

const wchar_t kAnsi[] = L"ANSI";
const wchar_t kMac[] = L"MAC";
const wchar_t kXAscii[] = L"XASCII";
const wchar_t kLics[] = L"LICS";

struct LeadRange {
  unsigned char first, last;
};

} // namespace

const wchar_t* CharsetName(QXCHARSET cs) { return Row(cs).name; }

const wchar_t* CS2Str(QXCHARSET cs) { return InRange(cs) ? kCatalogue[cs].name : L""; }

const wchar_t* CS2OldStr(QXCHARSET cs) {
  switch (cs) {
  case QXCHARSET_MAC_ROMAN:
    return kMac;
  case QXCHARSET_CODEPAGE_437:
    return kXAscii;
  case QXCHARSET_LICS:
    return kLics;
  default:
    return kAnsi;
  }
}

QXCHARSET Str2CS(const wchar_t* name) {
  if (!name)
    return QXCHARSET_NONE;
  if (qx::crt::_wcsicmp(name, kAnsi) == 0)
    return system_charset();
  if (qx::crt::_wcsicmp(name, kMac) == 0)
    return QXCHARSET_MAC_ROMAN;
  if (qx::crt::_wcsicmp(name, kXAscii) == 0)
    return QXCHARSET_CODEPAGE_437;
  if (qx::crt::_wcsicmp(name, kLics) == 0)
    return QXCHARSET_LICS;
  for (int i = 0; i < kQXCharsetCount; ++i)
    if (qx::crt::_wcsicmp(name, kCatalogue[i].name) == 0)
      return static_cast<QXCHARSET>(i);
  return QXCHARSET_NONE;
}

bool CharsetDBCS(QXCHARSET cs) { return Row(cs).dbcs != 0; }

bool IS_DBCS_CHARSET(QXCHARSET cs) { return CharsetDBCS(cs); }

unsigned char CharsetUnknownCode(QXCHARSET cs) { return Row(cs).unknownCode; }

const wchar_t* CharsetSlashN(QXCHARSET cs) { return Row(cs).lineEnd; }

const wchar_t* CharsetANSI() { return kAnsi; }
const wchar_t* CharsetMAC() { return kMac; }
const wchar_t* CharsetXASCII() { return kXAscii; }
const wchar_t* CharsetLICS() { return kLics; }

int GetWinCodePage(QXCHARSET cs) { return InRange(cs) ? kCatalogue[cs].codePage : -1; }

namespace qx {

bool IsCharsetLeadByte(const char* p, QXCHARSET cs) {
  static constexpr LeadRange kTradChinese[] = {{0xA1, 0xC6}, {0xC9, 0xF9}};
  static constexpr LeadRange kSimpChinese[] = {{0x81, 0xFE}};
  static constexpr LeadRange kJapanese[] = {
      {0x81, 0x84}, {0x87, 0x9F}, {0xE0, 0xEA}, {0xED, 0xEE}, {0xFA, 0xFC}};
  static constexpr LeadRange kKorean[] = {{0x81, 0xC8}, {0xCA, 0xFD}};
  static constexpr LeadRange kMacChineseKorean[] = {{0x90, 0xAF}};
  static constexpr LeadRange kMacJapanese[] = {{0x81, 0x9F}, {0xE0, 0xFC}};
  static constexpr LeadRange kPackedEucJapanese[] = {{0x81, 0x9F}, {0xE0, 0xEF}};

  auto in = [](unsigned char b, const auto& ranges) {
    for (const LeadRange& r : ranges)
      if (b >= r.first && b <= r.last)
        return true;
    return false;
  };
  if (!p)
    return false;
  unsigned char b = static_cast<unsigned char>(*p);
  switch (cs) {
  case QXCHARSET_WINDOWS_TRAD_CHINESE:
    return in(b, kTradChinese);
  case QXCHARSET_WINDOWS_SIMP_CHINESE:
    return in(b, kSimpChinese);
  case QXCHARSET_WINDOWS_JAPANESE:
    return in(b, kJapanese);
  case QXCHARSET_WINDOWS_KOREAN:
    return in(b, kKorean);
  case QXCHARSET_MAC_TRAD_CHINESE:
  case QXCHARSET_MAC_KOREAN:
    return in(b, kMacChineseKorean);
  case QXCHARSET_MAC_JAPANESE:
    return in(b, kMacJapanese);
  case QXCHARSET_PACKED_EUC_JAPANESE:
    return in(b, kPackedEucJapanese);
  default:
    return false;
  }
}

QXCHARSET CharsetForAnsiCodePage(int codePage) {
  switch (codePage) {
  case 1250:
    return QXCHARSET_WINDOWS_LATIN2;
  case 1251:
    return QXCHARSET_WINDOWS_CYRILLIC;
  case 1252:
    return QXCHARSET_WINDOWS_LATIN1;
  case 1253:
    return QXCHARSET_WINDOWS_GREEK;
  case 1254:
    return QXCHARSET_WINDOWS_TURKISH;
  case 1255:
    return QXCHARSET_WINDOWS_HEBREW;
  case 1256:
    return QXCHARSET_WINDOWS_ARABIC;
  case 1257:
    return QXCHARSET_WINDOWS_BALTIC_RIM;
  case 1258:
    return QXCHARSET_WINDOWS_VIETNAMESE;
  case 874:
    return QXCHARSET_WINDOWS_THAI;
  case 932:
    return QXCHARSET_WINDOWS_JAPANESE;
  case 936:
    return QXCHARSET_WINDOWS_SIMP_CHINESE;
  case 949:
    return QXCHARSET_WINDOWS_KOREAN;
  case 950:
    return QXCHARSET_WINDOWS_TRAD_CHINESE;
  default:
    return QXCHARSET_NEUTRAL;
  }
}

int LocaleAnsiCodePageOf(LCID lcid) {
  constexpr int kMaxLength = 50;
  int length = GetLocaleInfoW(lcid, LOCALE_IDEFAULTANSICODEPAGE, nullptr, 0);
  if (length <= 0 || length > kMaxLength)
    return 0;
  wchar_t text[kMaxLength + 1] = {};
  if (!GetLocaleInfoW(lcid, LOCALE_IDEFAULTANSICODEPAGE, text, kMaxLength + 1))
    return 0;
  return qx::crt::_wtoi(text);
}

} // namespace qx
