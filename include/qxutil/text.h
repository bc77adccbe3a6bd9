//===- qxutil/text.h - Text: character sets and wide strings ----*- C++ -*-===//
//
// Wide strings are NUL-terminated runs of 16-bit code units held in wchar_t.
// A buffer's capacity is given in units and counts the terminator.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TEXT_H
#define QXUTIL_TEXT_H

#include "qxutil/frame.h"

// ---- Character-set catalogue -----------------------------------------------
//
// Every piece of 8-bit text is tagged with one of the 57 members of
// QXCHARSET. Each member has a name, a legacy ("old") name, a Windows code
// page, a DBCS flag, the byte written for an unmappable character and the
// line end of the platform it comes from. No function here reports errors;
// out-of-range members give an empty name, "ANSI", or -1.

enum QXCHARSET : int {
  QXCHARSET_NONE = -1, // what a failed name lookup returns
  QXCHARSET_NEUTRAL = 0,
  QXCHARSET_ISO8859_1,
  QXCHARSET_ISO8859_2,
  QXCHARSET_ISO8859_3,
  QXCHARSET_ISO8859_4,
  QXCHARSET_ISO8859_5,
  QXCHARSET_ISO8859_6,
  QXCHARSET_ISO8859_7,
  QXCHARSET_ISO8859_8,
  QXCHARSET_ISO8859_9,
  QXCHARSET_WINDOWS_LATIN1, // 10
  QXCHARSET_WINDOWS_LATIN2,
  QXCHARSET_WINDOWS_ARABIC,
  QXCHARSET_WINDOWS_CYRILLIC,
  QXCHARSET_WINDOWS_GREEK,
  QXCHARSET_WINDOWS_HEBREW,
  QXCHARSET_WINDOWS_TURKISH,
  QXCHARSET_WINDOWS_TRAD_CHINESE,
  QXCHARSET_WINDOWS_SIMP_CHINESE,
  QXCHARSET_WINDOWS_JAPANESE,
  QXCHARSET_WINDOWS_KOREAN, // 20
  QXCHARSET_MAC_ROMAN,
  QXCHARSET_MAC_ARABIC,
  QXCHARSET_MAC_GREEK,
  QXCHARSET_MAC_HEBREW,
  QXCHARSET_MAC_CENTRAL_EUROPEAN,
  QXCHARSET_MAC_CROATIAN,
  QXCHARSET_MAC_CYRILLIC,
  QXCHARSET_MAC_ICELANDIC,
  QXCHARSET_MAC_THAI,
  QXCHARSET_MAC_TURKISH, // 30
  QXCHARSET_MAC_TRAD_CHINESE,
  QXCHARSET_MAC_JAPANESE,
  QXCHARSET_MAC_KOREAN,
  QXCHARSET_CODEPAGE_437,
  QXCHARSET_CODEPAGE_850,
  QXCHARSET_CODEPAGE_852,
  QXCHARSET_CODEPAGE_857,
  QXCHARSET_CODEPAGE_860,
  QXCHARSET_CODEPAGE_861,
  QXCHARSET_CODEPAGE_863, // 40
  QXCHARSET_CODEPAGE_865,
  QXCHARSET_CODEPAGE_855,
  QXCHARSET_CODEPAGE_864,
  QXCHARSET_CODEPAGE_869,
  QXCHARSET_LICS,
  QXCHARSET_LMBCS,
  QXCHARSET_LMBCS1,
  QXCHARSET_LMBCS2,
  QXCHARSET_MAC_SIMP_CHINESE,
  QXCHARSET_PACKED_EUC_TRAD_CHINESE, // 50
  QXCHARSET_PACKED_EUC_SIMP_CHINESE,
  QXCHARSET_PACKED_EUC_JAPANESE,
  QXCHARSET_PACKED_EUC_KOREAN,
  QXCHARSET_WINDOWS_THAI,
  QXCHARSET_WINDOWS_BALTIC_RIM,
  QXCHARSET_WINDOWS_VIETNAMESE, // 56
};

constexpr int kQXCharsetCount = 57;

/// CharsetName - the member's name, e.g. "WindowsLatin1"; `cs` unchecked.
const wchar_t* CharsetName(QXCHARSET cs);
/// CS2Str - the member's name; "" (never null) outside 0..56.
const wchar_t* CS2Str(QXCHARSET cs);
/// CS2OldStr - "MAC" (21), "XASCII" (34), "LICS" (45), else "ANSI".
const wchar_t* CS2OldStr(QXCHARSET cs);
/// Str2CS - the member named `name`, case-insensitively: the old names
/// first ("ANSI" gives the system charset), then the 57 names; -1 if none.
QXCHARSET Str2CS(const wchar_t* name);
/// CharsetDBCS, IS_DBCS_CHARSET - the DBCS flag; `cs` unchecked.
bool CharsetDBCS(QXCHARSET cs);
bool IS_DBCS_CHARSET(QXCHARSET cs);
/// CharsetUnknownCode - the byte for unmappable characters ('_').
unsigned char CharsetUnknownCode(QXCHARSET cs);
/// CharsetSlashN - the member's line end: "\r\n", "\n" or "\r".
const wchar_t* CharsetSlashN(QXCHARSET cs);
const wchar_t* CharsetANSI();
const wchar_t* CharsetMAC();
const wchar_t* CharsetXASCII();
const wchar_t* CharsetLICS();
/// GetWinCodePage - the member's Windows code page: 0 (the ANSI page) for
/// "Neutral", 1 (the OEM page) for "CodePage437", -1 for members without
/// one and for values outside 0..56.
int GetWinCodePage(QXCHARSET cs);
/// system_charset - the member chosen once, when the context's services
/// were built, from the locale's default ANSI code page.
QXCHARSET system_charset();

/// cCharsetInfo - knows the system charset (slot key 5).
class cCharsetInfo : public QXSingleton<cCharsetInfo, 5> {
public:
  virtual ~cCharsetInfo();
  virtual QXCHARSET GetSystemCharset() = 0;

  static cCharsetInfo* Create();
};

// ---- Wide-string functions -------------------------------------------------

/// strcpyn - copies at most n - 1 units of `src` into `dst`, fills the rest
/// of the n units with zeros and returns `dst`; n = 0 writes nothing.
/// strcpyn(d, L"abc", 3) => "ab".
wchar_t* strcpyn(wchar_t* dst, const wchar_t* src, unsigned int n);

#endif // QXUTIL_TEXT_H
