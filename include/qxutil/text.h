//===- qxutil/text.h - Text: character sets and wide strings ----*- C++ -*-===//
//
// Wide strings are NUL-terminated runs of 16-bit code units held in wchar_t.
// A buffer's capacity is given in units and counts the terminator.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TEXT_H
#define QXUTIL_TEXT_H

#include "qxutil/frame.h"

#include <cstddef>
#include <string>

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
QXUTIL_API const wchar_t* CharsetName(QXCHARSET cs);
/// CS2Str - the member's name; "" (never null) outside 0..56.
QXUTIL_API const wchar_t* CS2Str(QXCHARSET cs);
/// CS2OldStr - "MAC" (21), "XASCII" (34), "LICS" (45), else "ANSI".
QXUTIL_API const wchar_t* CS2OldStr(QXCHARSET cs);
/// Str2CS - the member named `name`, case-insensitively: the old names
/// first ("ANSI" gives the system charset), then the 57 names; -1 if none.
QXUTIL_API QXCHARSET Str2CS(const wchar_t* name);
/// CharsetDBCS, IS_DBCS_CHARSET - the DBCS flag; `cs` unchecked.
QXUTIL_API bool CharsetDBCS(QXCHARSET cs);
QXUTIL_API bool IS_DBCS_CHARSET(QXCHARSET cs);
/// CharsetUnknownCode - the byte for unmappable characters ('_').
QXUTIL_API unsigned char CharsetUnknownCode(QXCHARSET cs);
/// CharsetSlashN - the member's line end: "\r\n", "\n" or "\r".
QXUTIL_API const wchar_t* CharsetSlashN(QXCHARSET cs);
QXUTIL_API const wchar_t* CharsetANSI();
QXUTIL_API const wchar_t* CharsetMAC();
QXUTIL_API const wchar_t* CharsetXASCII();
QXUTIL_API const wchar_t* CharsetLICS();
/// GetWinCodePage - the member's Windows code page: 0 (the ANSI page) for
/// "Neutral", 1 (the OEM page) for "CodePage437", -1 for members without
/// one and for values outside 0..56.
QXUTIL_API int GetWinCodePage(QXCHARSET cs);
/// system_charset - the member chosen once, when the context's services
/// were built, from the locale's default ANSI code page.
QXUTIL_API QXCHARSET system_charset();

/// cCharsetInfo - knows the system charset (slot key 5).
class QXUTIL_API cCharsetInfo : public QXSingleton<cCharsetInfo, 5> {
public:
  virtual ~cCharsetInfo();
  virtual QXCHARSET GetSystemCharset() = 0;

  static cCharsetInfo* Create();
};
extern template class QXSingleton<cCharsetInfo, 5>;

// ---- Character-set conversion --------------------------------------------
//
// Moves text between the members of QXCHARSET and the library's wide text:
// byte-to-byte tables between two 8-bit members (built from per-member
// Unicode maps and kept in a ten-slot cache by cCharsetConverter), the
// platform code-page conversions with the member's GetWinCodePage, and
// line-end rewriting. Nothing here records an error: every failure is the
// false or null result stated. Unknown characters never fail a conversion:
// the byte tables write '_' and count it; wide to 8-bit text into a member
// without a code page writes '_' through the system code page.

/// cCharsetConverter - builds and caches translation tables (slot key 4).
class QXUTIL_API cCharsetConverter : public QXSingleton<cCharsetConverter, 4> {
public:
  virtual ~cCharsetConverter();
  /// GetConversionTable - the 256-byte table from `from` to `to` (both in
  /// 1..56, different, both with a Unicode map). On a cache hit only *table
  /// is written (*unknownCount keeps what it held); a new table also gives
  /// in *unknownCount the number of source bytes 1..255 that became the
  /// unknown code. Byte 0 always translates to the unknown code, and no
  /// byte translates to 0 or 255. False (nothing written) otherwise, and
  /// for a null `table`; a null `unknownCount` is not written.
  virtual bool GetConversionTable(QXCHARSET from, QXCHARSET to, int* unknownCount,
                                  unsigned char** table) = 0;

  static cCharsetConverter* Create();
};
extern template class QXSingleton<cCharsetConverter, 4>;

/// ConvertCharset - GetConversionTable of the context's converter. The table
/// belongs to the converter and stays valid until ten further distinct
/// pairs have been built: ConvertCharset(WindowsLatin1, CodePage437, &n, &t)
/// => true, t[0xE9] == 0x82, t[0] == '_'.
QXUTIL_API bool ConvertCharset(QXCHARSET from, QXCHARSET to, int* unknownCount,
                               unsigned char** table);

/// IsStrConvertNecessary - true when both are in 1..56 and differ.
QXUTIL_API bool IsStrConvertNecessary(QXCHARSET from, QXCHARSET to);

/// ConvertMBCSCharToSystem - MultiByteToWideChar(code page of `cs`,
/// MB_PRECOMPOSED) of `srcLen` bytes into `dst`. Writes a terminator after
/// the n units converted whenever n <= dstLen, so `dst` needs room for
/// dstLen + 1 units (a failure writes dst[0] = 0). Returns n != 0; false
/// without writing for a null pointer or a zero length, and for members
/// without a code page. Lengths above INT_MAX count as INT_MAX.
QXUTIL_API bool ConvertMBCSCharToSystem(const char* src, unsigned int srcLen, QXCHARSET cs,
                                        wchar_t* dst, unsigned int dstLen);
/// ConvertMBCSCharToSystem - the same for the NUL-terminated `src` (its
/// terminator not converted); null `src` gives false.
QXUTIL_API bool ConvertMBCSCharToSystem(const char* src, QXCHARSET cs, wchar_t* dst,
                                        unsigned int dstLen);

/// ConvertSystemToMBCSChar - WideCharToMultiByte(code page of `cs`,
/// WC_COMPOSITECHECK) of the NUL-terminated `src`, terminator included, into
/// `dst` of `dstLen` bytes. A too-small `dst` gives true with the truncated
/// output (perhaps unterminated) when `acceptTruncation`, else false. A
/// member whose code page is not valid (no code page, or the placeholders
/// of "Neutral" and "CodePage437" after a failure) is retried in the system
/// charset's code page with '_' for unknown characters. False for null
/// pointers or dstLen 0.
QXUTIL_API bool ConvertSystemToMBCSChar(const wchar_t* src, char* dst, QXCHARSET cs,
                                        unsigned int dstLen, bool acceptTruncation);

/// ConvertWideCharToSystem - copies wide text (`cs` is ignored): when
/// srcLen < dstLen, strcpyn(dst, src, dstLen) and true; otherwise wcsncpy of
/// dstLen units (no terminator guaranteed) and false.
QXUTIL_API bool ConvertWideCharToSystem(const wchar_t* src, unsigned int srcLen, wchar_t* dst,
                                        QXCHARSET cs, unsigned int dstLen);
/// ConvertSystemToWideChar - strcpyn when the text fits with its
/// terminator (true); otherwise wcsncpy of dstLen units, true only when
/// `acceptTruncation` and just the terminator was left out.
QXUTIL_API bool ConvertSystemToWideChar(const wchar_t* src, wchar_t* dst, unsigned int dstLen,
                                        bool acceptTruncation);

/// ConvertLFToPlatformCRLF - a new copy of `s` (free with ffree) in which
/// every line break (CR LF, CR or LF) is the system charset's line end:
/// L"a\nb" => L"a\r\nb". Null when `s` has no line break, is null, or
/// memory fails.
QXUTIL_API wchar_t* ConvertLFToPlatformCRLF(wchar_t* s);
/// ConvertPlatformCRLFToLF - a new copy of `s` (free with ffree) in which
/// every CR LF pair and every lone CR is one LF: L"a\r\nb\rc" => L"a\nb\nc".
/// Null when `s` has no CR, is null, or memory fails.
QXUTIL_API wchar_t* ConvertPlatformCRLFToLF(wchar_t* s);

// ---- String normalizers ----------------------------------------------------
//
// A string normalizer folds text for case- and accent-insensitive sorting and
// matching: the text is converted to bytes of the normalizer's character set,
// and each byte goes through a 256-entry folding table that up-cases letters
// and, in most tables, strips accents ("\u00e9lan", "\u00c9LAN" and "ELAN"
// fold alike). Eleven tables are built in; a table is known by a 16-bit
// identifier, the CRC-16/ARC of its 256 bytes, which hosts store with every
// index they sort so that they can ask for the same table later:
//
//   65496 a-z only        44414 Western (1252)      40623 Central European
//   55762 Cyrillic        32694 Greek               21121 Turkish
//   34070 Danish, Norw.   41909 AE O-slash A-ring   1298  Finnish, Swedish
//   56485 as 54273 with punctuation classes         54273 A-ring A-uml O-uml
//
// A normalizer of "WindowsLatin1" over table 44414 reports the identifier
// 5607, under which hosts know the default Western table; asking for either
// number gives that normalizer. docs/normalizers.md says which tables'
// bytes are confirmed by their identifier.
//
// Failure rule: GetNormalizer records error 74 (level eErrorLevelError,
// message resource 74, the identifier as its argument) for an identifier no
// table has, and returns null. Everything else fails by its result alone
// (null, false, text left as it was), recording nothing.

/// StringNormalizer - folds text through one table in one character set.
/// Normalizers belong to the context's StringNormalizerManager: callers never
/// delete them, and they live as long as the manager.
class QXUTIL_API StringNormalizer : public QXHeapObject {
public:
  virtual ~StringNormalizer();
  /// GetCharset - the character set the text is folded in.
  virtual QXCHARSET GetCharset() = 0;
  /// GetId - the identifier of the table (5607 for "WindowsLatin1" over
  /// 44414).
  virtual unsigned short GetId() = 0;
  /// GetPrintableId - the CRC-16/ARC of the table's entries 32..126: 24861
  /// for every table that only up-cases a-z there, 44564 for 56485.
  virtual unsigned short GetPrintableId() = 0;
  /// IsActive - the active flag: true from creation and whenever the
  /// manager hands the normalizer out; its meaning is the host's.
  virtual bool IsActive() = 0;
  /// Normalize - folds `text` in place: the text is converted to the
  /// character set, folded, and converted back, so characters the set
  /// cannot hold come back as its replacement ("\u03a9" => "?" in
  /// "WindowsLatin1"). The text never grows: when the folded text would
  /// need more units than it had (a double-byte set whose pairs the table
  /// breaks), or memory fails, the text is left as it was. Null or empty
  /// text: nothing happens.
  virtual void Normalize(wchar_t* text) = 0;
  /// Compare - -1, 0 or 1 as the folded bytes of `a` compare with those of
  /// `b`, byte by byte as unsigned values; a prefix sorts first:
  /// Compare(L"\u00e9lan", L"ELAN") => 0 and Compare(L"abc", L"abcd") =>
  /// -1 over 44414. A total preorder on strings. A null string counts as
  /// empty. When memory for long strings cannot be had, the strings are
  /// compared unfolded (as qxStrCmp does).
  virtual int Compare(const wchar_t* a, const wchar_t* b) = 0;
  /// SetActive - stores `on` in the active flag and returns it.
  virtual bool SetActive(bool on) = 0;
};

/// StringNormalizerManager - owns the normalizers of one context (slot key
/// 13): a default normalizer, chosen from the system character set and the
/// user's language, and any others asked for by character set and table.
class QXUTIL_API StringNormalizerManager : public QXSingleton<StringNormalizerManager, 13> {
public:
  virtual ~StringNormalizerManager();
  /// GetDefaultNormalizer - the default normalizer, made on first use with
  /// the user's language; null if it cannot be made.
  virtual StringNormalizer* GetDefaultNormalizer() = 0;
  /// GetNormalizer - the normalizer of `charset` over table `id`, made on
  /// first use and kept; the same object every later time, set active.
  /// Null (and error 74) for an identifier no table has; null when memory
  /// fails. Never the default normalizer.
  virtual StringNormalizer* GetNormalizer(QXCHARSET charset, unsigned short id) = 0;
  /// RequestDefaultNormalizer - makes the default normalizer with the
  /// folding of `languageId` (0: the user's); false when a default already
  /// exists (nothing changes) or it cannot be made.
  virtual bool RequestDefaultNormalizer(int languageId) = 0;

  /// Create - a new manager for system_charset(), with no normalizers yet
  /// (not installed); null if memory fails.
  static StringNormalizerManager* Create();
};
extern template class QXSingleton<StringNormalizerManager, 13>;

// Each function below calls the same operation of the context's manager;
// without one it returns null or false.

/// GetDefaultNormalizer - the context's default normalizer. Its table
/// follows the system character set: "WindowsLatin1" 44414 (reported as
/// 5607), or 34070 for a Danish, Norwegian or Sami language (1030, 1044,
/// 1083, 2068, 4155, 6203), or 1298 for a Finnish, Swedish or Sami one
/// (1035, 1053, 2077, 2107, 3131, 5179, 7227, 8251, 9275);
/// "WindowsLatin2" 40623, "WindowsCyrillic" 55762, "WindowsGreek" 32694,
/// "WindowsTurkish" 21121; any other set 65496. The language is the low 16
/// bits of GetLocaleIdentifier() unless RequestDefaultNormalizer chose one.
QXUTIL_API StringNormalizer* GetDefaultNormalizer();
/// GetNormalizer - StringNormalizerManager::GetNormalizer:
/// GetNormalizer(QXCHARSET_WINDOWS_LATIN1, 44414) and (..., 5607) give the
/// same normalizer, whose GetId() is 5607; GetNormalizer(..., 12345) =>
/// null and error 74 with the argument "12345".
QXUTIL_API StringNormalizer* GetNormalizer(QXCHARSET charset, unsigned short id);
/// RequestDefaultNormalizer - StringNormalizerManager::RequestDefaultNormalizer:
/// call it before the first GetDefaultNormalizer to fold as another
/// language does (RequestDefaultNormalizer(1053) => Swedish, 1298, on a
/// "WindowsLatin1" system).
QXUTIL_API bool RequestDefaultNormalizer(int languageId);

// ---- Wide-string functions -------------------------------------------------
//
// Text is NUL-terminated runs of 16-bit code units (one wchar_t each). A
// buffer's capacity is given in units and counts the terminator; every
// function that takes one writes nothing beyond it.
//
// Modes: the functions marked "two modes" look at
// CharsetDBCS(system_charset()) on every call. In single-byte mode they
// behave like the C runtime's function of the same job; in DBCS mode they
// walk the string character by character with qxNextChar (a base unit and
// the nonspacing marks after it are one character), so they only stop at
// the start of a character. In DBCS mode qxStrchr, and the first unit of
// the needle in qxStrstr, are first narrowed to their low byte,
// sign-extended to 16 bits: only characters below 0x80 are found by their
// own value (L'\u3042' narrows to L'B', L'\u00e9' to L'\uffe9').
//
// White space is exactly TAB, LF, FF, CR and space (not VT). A unit is
// unprintable when qxIsPrint is false for it.
//
// Failure rule: only Like records an error (a malformed escape: number 61,
// level eErrorLevelError, message resource 19). A null string argument
// never crashes: the function returns its failure value (null, false, 0 or
// as stated) and writes nothing, unless its comment says otherwise.

namespace qxt {

/// qxt::string - the library's wide string, as the positional tokeniser
/// takes it: an owned copy of the text, built from a NUL-terminated wide
/// string (null gives the empty string) or from a pointer and a length.
class string {
public:
  string() = default;
  string(const wchar_t* s) : text_(s ? s : L"") {} // implicit on purpose
  string(const wchar_t* s, size_t n) : text_(s ? s : L"", s ? n : 0) {}
  const wchar_t* c_str() const { return text_.c_str(); }
  unsigned int length() const { return static_cast<unsigned int>(text_.size()); }
  wchar_t operator[](unsigned int i) const { return text_[i]; }

private:
  std::wstring text_;
};

} // namespace qxt

// -- Comparison. A null string compares below every string (two nulls are
// equal); the equality tests are false when either side is null.

/// qxStrCmp - unit-by-unit compare of unsigned 16-bit units: -1, 0 or 1.
QXUTIL_API int qxStrCmp(const wchar_t* a, const wchar_t* b);
/// qxStrICmp - the runtime's _wcsicmp (ASCII-only folding in the "C"
/// runtime locale); _NLSCMPERROR (INT_MAX) for a null argument.
QXUTIL_API int qxStrICmp(const wchar_t* a, const wchar_t* b);
/// qxStrNICmp - the runtime's _wcsnicmp on at most n units.
QXUTIL_API int qxStrNICmp(const wchar_t* a, const wchar_t* b, size_t n);
/// strequ - true if equal unit by unit.
QXUTIL_API bool strequ(const wchar_t* a, const wchar_t* b);
/// striequ - _wcsicmp(a, b) == 0.
QXUTIL_API bool striequ(const wchar_t* a, const wchar_t* b);
/// strnequ - wcsncmp(a, b, n) == 0: strnequ(L"abc", L"abd", 2) => true.
QXUTIL_API bool strnequ(const wchar_t* a, const wchar_t* b, size_t n);
/// strniequ - the first n units of each (fewer if a string ends first)
/// compared with _wcsicmp: strniequ(L"ABx", L"aby", 2) => true. Needs no
/// heap for n up to 256; if the scratch for a longer n cannot be had, it
/// answers with _wcsnicmp(a, b, n) == 0.
QXUTIL_API bool strniequ(const wchar_t* a, const wchar_t* b, size_t n);

// -- Length and search (two modes). Results are unit positions and counts
// of units in both modes, except qxStrLen.

/// qxStrLen - wcslen; DBCS mode: the number of characters (qxNextChar
/// steps): L"a\u0301b" => 3 single-byte, 2 DBCS. Null => 0.
QXUTIL_API size_t qxStrLen(const wchar_t* s);
/// qxStrchr - the first `c` (c = 0 finds the terminator); null if none.
QXUTIL_API const wchar_t* qxStrchr(const wchar_t* s, wchar_t c);
/// qxStrrchr - the last `c` (not narrowed in DBCS mode); null if none.
QXUTIL_API const wchar_t* qxStrrchr(const wchar_t* s, wchar_t c);
/// qxStrpbrk - the first unit of `s` found in `set`; null if none.
QXUTIL_API const wchar_t* qxStrpbrk(const wchar_t* s, const wchar_t* set);
/// qxStrspn - the length of the leading run of units found in `set`.
QXUTIL_API size_t qxStrspn(const wchar_t* s, const wchar_t* set);
/// qxStrcspn - the length of the leading run of units not in `set`.
QXUTIL_API size_t qxStrcspn(const wchar_t* s, const wchar_t* set);
/// qxStrstr - the first occurrence of `needle`; `s` itself for an empty
/// needle; null if none.
QXUTIL_API const wchar_t* qxStrstr(const wchar_t* s, const wchar_t* needle);
/// qxLastChar - the last character; `s` itself for an empty string.
QXUTIL_API const wchar_t* qxLastChar(const wchar_t* s);
inline wchar_t* qxStrchr(wchar_t* s, wchar_t c) {
  return const_cast<wchar_t*>(qxStrchr(const_cast<const wchar_t*>(s), c));
}
inline wchar_t* qxStrrchr(wchar_t* s, wchar_t c) {
  return const_cast<wchar_t*>(qxStrrchr(const_cast<const wchar_t*>(s), c));
}
inline wchar_t* qxStrpbrk(wchar_t* s, const wchar_t* set) {
  return const_cast<wchar_t*>(qxStrpbrk(const_cast<const wchar_t*>(s), set));
}
inline wchar_t* qxStrstr(wchar_t* s, const wchar_t* needle) {
  return const_cast<wchar_t*>(qxStrstr(const_cast<const wchar_t*>(s), needle));
}
inline wchar_t* qxLastChar(wchar_t* s) {
  return const_cast<wchar_t*>(qxLastChar(const_cast<const wchar_t*>(s)));
}

/// fast_strchr, fast_strpbrk - wcschr and wcspbrk, whatever the mode.
QXUTIL_API const wchar_t* fast_strchr(const wchar_t* s, wchar_t c);
QXUTIL_API const wchar_t* fast_strpbrk(const wchar_t* s, const wchar_t* set);
inline wchar_t* fast_strchr(wchar_t* s, wchar_t c) {
  return const_cast<wchar_t*>(fast_strchr(const_cast<const wchar_t*>(s), c));
}
inline wchar_t* fast_strpbrk(wchar_t* s, const wchar_t* set) {
  return const_cast<wchar_t*>(fast_strpbrk(const_cast<const wchar_t*>(s), set));
}

/// strnchr - the first `c` among the first n units, stopping at the
/// terminator (so c = 0 is never found); a hit at position n or later is
/// null: strnchr(L"abc", L'c', 2) => null.
QXUTIL_API const wchar_t* strnchr(const wchar_t* s, wchar_t c, size_t n);
inline wchar_t* strnchr(wchar_t* s, wchar_t c, size_t n) {
  return const_cast<wchar_t*>(strnchr(const_cast<const wchar_t*>(s), c, n));
}
/// strrcspn - the index of the last unit of `s` found in `set`:
/// strrcspn(L"a,b,c", L",") => 3; 0xFFFFFFFF if none or `s` is empty.
QXUTIL_API unsigned int strrcspn(const wchar_t* s, const wchar_t* set);

// -- Characters.

/// qxNextChar - CharNextW: past the unit and the nonspacing marks after
/// it; at the terminator, the terminator itself.
QXUTIL_API const wchar_t* qxNextChar(const wchar_t* p);
inline wchar_t* qxNextChar(wchar_t* p) {
  return const_cast<wchar_t*>(qxNextChar(const_cast<const wchar_t*>(p)));
}
/// qxPrevChar - CharPrevW: the character before `p`, never before `start`.
QXUTIL_API const wchar_t* qxPrevChar(const wchar_t* start, const wchar_t* p);
inline wchar_t* qxPrevChar(const wchar_t* start, wchar_t* p) {
  return const_cast<wchar_t*>(qxPrevChar(start, const_cast<const wchar_t*>(p)));
}
/// qxIsLeadByte - always false: wide text has no lead units.
QXUTIL_API bool qxIsLeadByte(const wchar_t* p);

/// qxToUpper, qxToLower - CharUpperW / CharLowerW of one character
/// (Windows' simple, locale-independent case mapping): L'\u00e9' =>
/// L'\u00c9'. Values outside the BMP come back unchanged.
QXUTIL_API wchar_t qxToUpper(wchar_t c);
QXUTIL_API wchar_t qxToLower(wchar_t c);
/// qxIsAlpha, qxIsAlphaNum - the runtime's iswalpha / iswalnum.
QXUTIL_API bool qxIsAlpha(wchar_t c);
QXUTIL_API bool qxIsAlphaNum(wchar_t c);
/// qxIsUpper, qxIsLower - IsCharUpperW / IsCharLowerW.
QXUTIL_API bool qxIsUpper(wchar_t c);
QXUTIL_API bool qxIsLower(wchar_t c);
/// qxIsPrint - true for every unit of 128 or more; below 128 the
/// runtime's iswprint (false for controls and DEL).
QXUTIL_API bool qxIsPrint(wchar_t c);

// -- In-place edits. Those returning a pointer return their first
// argument; null in, null out.

/// qxStrrev - reverses the units (the runtime's _wcsrev) in both modes.
QXUTIL_API wchar_t* qxStrrev(wchar_t* s);
/// qxStrUpr, qxStrLwr - CharUpperW / CharLowerW over the whole string.
QXUTIL_API wchar_t* qxStrUpr(wchar_t* s);
QXUTIL_API wchar_t* qxStrLwr(wchar_t* s);
/// qxCharReplace - every unit of `s` found in `set` becomes `c` (with
/// c = 0 every one of them becomes a terminator).
QXUTIL_API void qxCharReplace(wchar_t* s, const wchar_t* set, wchar_t c);
/// memrev - reverses n bytes in place; returns p.
QXUTIL_API void* memrev(void* p, unsigned int n);
/// concat_backslash - strcpyn(dst, src, n) (skipped when n is 0), then a
/// backslash appended when `dst` is not empty and does not end in "\" or
/// "/". The backslash does not count against n: callers leave one unit
/// spare. concat_backslash(L"/data", d, 261) => L"/data\\".
QXUTIL_API void concat_backslash(const wchar_t* src, wchar_t* dst, unsigned int n);

// -- White space and trimming.

/// skipwhite - past the leading white space; null if only white space (or
/// nothing) is left: skipwhite(L" \tx") => "x", skipwhite(L"  ") => null.
QXUTIL_API const wchar_t* skipwhite(const wchar_t* s);
inline wchar_t* skipwhite(wchar_t* s) {
  return const_cast<wchar_t*>(skipwhite(const_cast<const wchar_t*>(s)));
}
/// ltrim - removes leading white-space and unprintable units, shifting the
/// rest left; returns how many were removed. A string made only of such
/// units is left as it is (and 0 returned): L"\t a " => L"a " (2).
QXUTIL_API unsigned int ltrim(wchar_t* s);
/// ltrim2 - removes leading spaces (32) only; returns how many:
/// L"  \ta" => L"\ta" (2), L"   " => L"" (3).
QXUTIL_API unsigned int ltrim2(wchar_t* s);
/// rtrim - overwrites trailing white-space and unprintable units with
/// zeros; returns the new length: L"a b \r\n" => L"a b" (3).
QXUTIL_API unsigned int rtrim(wchar_t* s);
/// rtrimA - rtrim of 8-bit text in the thread's ANSI code page, walking
/// with CharNextA (a double-byte character is never cut); writes one
/// terminator at the start of the trailing run; returns the new length in
/// bytes. Bytes of 128 and more are printable.
QXUTIL_API unsigned int rtrimA(char* s);

// -- Line ends and replacement.

/// TextRemoveCrs - removes each CR that is directly followed by LF;
/// returns the new length: L"a\r\r\nb" => L"a\r\nb" (4).
QXUTIL_API unsigned int TextRemoveCrs(wchar_t* s);
/// TextAddCrs - allocates, with the memory manager, a copy of the first n
/// units of `src` with a CR written before every LF (also before an LF
/// that already has one: L"\r\n" => L"\r\r\n") and a terminator, into
/// *out (the caller frees it with ffree). Returns the copy's length; 0 if
/// the memory cannot be had (then *out is left as it was).
QXUTIL_API unsigned int TextAddCrs(wchar_t** out, const wchar_t* src, unsigned int n);
/// TextReplaceChar - every `from` becomes `to` (from = 0 changes nothing).
QXUTIL_API void TextReplaceChar(wchar_t* s, wchar_t from, wchar_t to);
/// FilterNewline - copies exactly n units from `src` to `dst` (which may be
/// `src`); encoding (`decode` false) writes each CR LF pair as backslash
/// and "n", decoding writes each backslash-"n" pair as CR LF. The length
/// never changes and no terminator is written.
QXUTIL_API void FilterNewline(wchar_t* dst, const wchar_t* src, unsigned int n, bool decode);

// -- SQL LIKE.

/// Like - matches `subject` against the SQL LIKE `pattern`, exactly and
/// case-sensitively: "%" is any run of units, "_" any one unit, and the
/// first unit of `escape` (none when `escape` is null or empty) makes the
/// following "%", "_" or escape unit literal. Returns whether the pattern
/// was well formed; *match says whether the subject matched:
///   Like(L"abc", L"a%", L"", &m) => true, m = true
///   Like(L"ab", L"a_c", L"", &m) => true, m = false
///   Like(L"a%", L"a!%", L"!", &m) => true, m = true
/// A "%" with more pattern after it never stretches to the end of the
/// subject, so L"" against L"%%" and L"a" against L"a%%" do not match
/// while L"" against L"%" and L"ab" against L"a%%" do.
/// An escape followed by anything else is malformed once matching reaches
/// it: error 61 is recorded and false returned with *match false
/// (L"ab" against L"a!b" with escape L"!"). A subject that fails before the
/// bad escape is reached simply does not match (L"xb" against L"a!b").
/// Null `subject` or `pattern`: false, *match false, nothing recorded; null
/// `match`: false. Worst case O(subject length x pattern length), no heap.
QXUTIL_API bool Like(const wchar_t* subject, const wchar_t* pattern, const wchar_t* escape,
                     bool* match);

// -- Tokenising.

/// qxStrtok - the next token of `s`, for lists such as L"a, f(b,c), 'x,y'":
/// skips leading white-space and unprintable units (storing that position
/// in *next and returning null if nothing is left), then ends the token at
/// the first unit of `delims` that is outside quotes (" ' `, a doubled
/// quote staying inside) and, when `brackets` is set, outside () and []
/// nesting. The delimiter is overwritten with 0 and *next points past it
/// (at the end of the string, *next points at the terminator). The token
/// is trimmed in place (ltrim, rtrim) and returned; quotes are kept. A
/// delimiter first gives an empty token. Null `s`, `delims` or `next`:
/// null, nothing written.
QXUTIL_API wchar_t* qxStrtok(wchar_t* s, const wchar_t* delims, bool brackets, wchar_t** next);

/// qxStrtok - strtok-style tokenising. Single-byte mode: the runtime's
/// two-argument wcstok (position kept per thread; `context` is neither read
/// nor written). DBCS mode: resumes at `s`, or at *context when `s` is
/// null, skips delimiters, and returns the token up to the next delimiter
/// (overwritten with 0) with the resume point in *context; at the end
/// *context becomes a constant empty string and null is returned. Null
/// `delims` (or, in DBCS mode, null `context`): null, nothing written.
QXUTIL_API wchar_t* qxStrtok(wchar_t* s, const wchar_t* delims, wchar_t** context);

/// qxStrtok - the first overload's rules by positions, on text it does not
/// change, with brackets always honoured. From unit `start`: skips leading
/// white-space and unprintable units; returns false when nothing is left
/// (all three outputs then hold the length). Otherwise the token runs to
/// the first unit of `delims` outside quotes and brackets; *tokenStart and
/// *tokenEnd are its trimmed bounds (tokenEnd one past its last unit; equal
/// for an empty token) and *next is the position after the delimiter, or
/// the length at the end. `quotes` lists the quote characters; null means
/// the first overload's three (" ' `), empty means none. Null outputs, or
/// `start` beyond the length: false, nothing written.
///   s = L" a , (b,c)", start 0, delims L"," => true, 1, 2, 4
///   then start 4 => true, 5, 10, 10; then start 10 => false, 10, 10, 10
QXUTIL_API bool qxStrtok(const qxt::string& s, unsigned int start, const qxt::string& delims,
                         unsigned int* tokenStart, unsigned int* tokenEnd, unsigned int* next,
                         const wchar_t* quotes);

// -- Copying and quoting.

/// quotestring - `src` in the quote character quote[0], with each quote
/// character inside doubled, in `dst` of `size` units (at least 3; the
/// content gets at most size - 3 units and a quote character is copied
/// only when both its units fit):
///   quotestring(d, L"it's", 20, L"'") => L"'it''s'"
///   quotestring(d, L"it's", 6, L"'")  => L"'it'"
/// `dst` may be `src` (quoting in place): the text is then first cut to
/// size - 3 units, and a doubling that finds no room drops the content's
/// last unit instead (in place, size 6: L"it's" => L"'it''", the cut
/// content "it'" having no room to double its quote). An empty or null
/// `quote` makes it strcpyn. Only the result and its terminator are
/// written; sizes 1 and 2 write just a terminator, size 0 nothing; a null
/// `src` is the empty string. Returns `dst`.
QXUTIL_API wchar_t* quotestring(wchar_t* dst, const wchar_t* src, unsigned int size,
                                const wchar_t* quote);

/// unquotestring - if `src` starts with quote[0]: the text after it up to
/// the closing quote character, each doubled quote character read as one,
/// at most size - 1 units, terminated (L"'it''s'" => L"it's", L"'ab'cd" =>
/// L"ab", L"'ab" => L"ab"); otherwise (or with an empty or null `quote`)
/// strcpyn(dst, src, size). `dst` may be `src`. Returns `dst`.
QXUTIL_API wchar_t* unquotestring(wchar_t* dst, const wchar_t* src, unsigned int size,
                                  const wchar_t* quote);

// ---- The default rotatable font --------------------------------------------

/// InitLiterals - once per process, chooses the default rotatable font for
/// the system character set (see docs/utilities.md for the names); false
/// when there is no system character set, and then it tries again next
/// time.
QXUTIL_API bool InitLiterals();
/// GetDefaultRotatableFont - the font InitLiterals chose (at most 31
/// characters, a LOGFONT face name); "Arial" until it succeeds.
QXUTIL_API const wchar_t* GetDefaultRotatableFont();

// ---- String resources and string caches ------------------------------------
//
// Hosts fetch their message texts by number. cStringResource is one source
// of numbered strings with two implementations: cResourceDLL reads a string
// module (a shared object made from a Windows resource script with `qxutil
// strings compile` or the CMake function qxutil_add_string_module), loaded on
// its first lookup; cStringTable reads a caller's array of sStringTable
// entries. operator[] hands each text out in the next of ten buffers kept by
// the calling context (cStringResourceBuffers), so several texts can be used
// in one expression without copying: a text stays valid until ten more have
// been fetched in the same context. A missing string gives a fixed fallback
// text instead.
//
// A string cache is a small keyed list in one block of the memory manager,
// owned by the caller through a wchar_t* (null for an empty cache, freed with
// ffree). Its layout, in units: unit 0 is zero; then entries, each a data area
// of `dataSize` units that holds the first `dataSize` bytes of the caller's
// record (the rest of the area is zero) followed by the NUL-terminated name;
// the list ends where a name would begin with a zero unit. An entry is
// addressed by its offset, the unit index of its data area (the first entry
// has offset 1). Every call on one cache must pass the same `dataSize`.
// Sizes are reckoned in 16-bit units, as on Windows: a cache never grows
// beyond 65,500 bytes of them.
//
// Failure rule: nothing here records an error. A missing string or module
// makes FindString false and operator[] return the fallback text; the cache
// functions answer 0 or false (or an empty name) and leave the cache as it
// was; every read stays inside the cache's block (memSize).

/// cResourceHandle - the root of the string-resource classes.
class QXUTIL_API cResourceHandle : public QXHeapObject {
public:
  cResourceHandle();
  cResourceHandle(const cResourceHandle& other);
  cResourceHandle& operator=(const cResourceHandle& other);
  virtual ~cResourceHandle();
};

/// cStringResource - a source of numbered strings.
class QXUTIL_API cStringResource : public cResourceHandle {
public:
  cStringResource();
  cStringResource(const cStringResource& other);
  cStringResource& operator=(const cStringResource& other);
  ~cStringResource() override;

  /// operator[] - string `id` in the next buffer of the context's ring of
  /// ten (256 units each), looked up with FindString. When there is no such
  /// string the buffer holds a fallback text: for 58 "Internal Error: %u"
  /// (as it stands, unformatted), for 59 "System Error", for 60 "Program
  /// cannot run because required resource was not found.  Executable file
  /// may be damaged.", for any other id "The string resource (7) could not
  /// be accessed." (with the id). Null only when the context has no ring (a
  /// failed start-up).
  virtual wchar_t* operator[](int id) const;

protected:
  /// FindString - copies string `id` into `buffer` (at most 255 units and a
  /// terminator); false when there is no such string.
  virtual bool FindString(int id, wchar_t* buffer) const = 0;

private:
  /// GetNextBuffer - the next buffer of cStringResourceBuffers::Instance().
  wchar_t* GetNextBuffer() const;
};

/// cResourceDLL - the strings of a string module, loaded (LoadLibraryW) on
/// the first lookup that needs it and released (FreeLibrary) when the object
/// is destroyed. A module that cannot be loaded makes every lookup false and
/// is tried again at the next one.
class QXUTIL_API cResourceDLL : public cStringResource {
public:
  /// cResourceDLL - remembers the module's file name (at most 259 units);
  /// nothing is loaded yet. A null name leaves the name empty, so that
  /// nothing is ever found.
  cResourceDLL(const wchar_t* fileName);
  /// cResourceDLL - takes a module already loaded; the object owns that load
  /// and releases it at its destruction.
  cResourceDLL(HINSTANCE const& module);
  /// The copies take the module only (not the name), each with a counted
  /// load of its own that it releases at its destruction; an object whose
  /// module is not loaded yet copies as one that finds nothing.
  cResourceDLL(const cResourceDLL& other);
  cResourceDLL& operator=(const cResourceDLL& other);
  ~cResourceDLL() override;

  /// SetResource - replaces the file name used for the next load (a null
  /// name changes nothing); a module already loaded stays loaded and in use.
  void SetResource(const wchar_t* fileName);

protected:
  /// FindString - LoadStringW(module, id, buffer, 255) of the loaded module:
  /// true when it copied at least one unit.
  bool FindString(int id, wchar_t* buffer) const override;

private:
  /// GetResource - the module, loaded now if it is not yet; null when it
  /// cannot be loaded.
  HINSTANCE GetResource() const;
  /// bIsWIN95 - whether the platform is of the Windows 9x family (where
  /// modules are never released): false here, which reports the NT family.
  bool bIsWIN95() const;

  wchar_t fileName_[MAX_PATH];
  mutable HINSTANCE module_;
};

/// sStringTable - one string of a caller's table; the table ends with an
/// entry whose `id` is 0.
struct sStringTable {
  int id;
  const wchar_t* text;
};

/// cStringTable - the strings of a caller-owned array of sStringTable
/// entries (not copied: it must outlive the object).
class QXUTIL_API cStringTable : public cStringResource {
public:
  cStringTable();
  cStringTable(sStringTable* table);
  cStringTable(const cStringTable& other);
  cStringTable& operator=(const cStringTable& other);
  ~cStringTable() override;

  /// operator const sStringTable* - the array (null for none).
  operator const sStringTable*() const;

protected:
  /// FindString - the first entry with this id before the one whose id is
  /// 0, copied with strcpyn(buffer, text, 255); false with no array, or when
  /// the id is not there (so id 0 is never found).
  bool FindString(int id, wchar_t* buffer) const override;

private:
  sStringTable* table_;
};

/// cStringResourceBuffers - the ring of ten 256-unit buffers that
/// operator[] hands texts out in (slot key 9).
class QXUTIL_API cStringResourceBuffers : public QXSingleton<cStringResourceBuffers, 9> {
public:
  virtual ~cStringResourceBuffers();
  /// GetNextBuffer - the next buffer of the ring: buffer 1 first, then 2,
  /// ..., 9, 0, 1, ...
  virtual wchar_t* GetNextBuffer() = 0;

  /// Create - a new ring (not installed); null if memory fails.
  static cStringResourceBuffers* Create();
};
extern template class QXSingleton<cStringResourceBuffers, 9>;

/// CacheString - adds (name, data) to *cache and returns the entry's
/// offset. An empty cache is allocated (zero-filled) with the entry. In a
/// cache that has entries, a name equal to an entry's name ignoring ASCII
/// case (qxStrICmp) only has its data replaced (when `data` is not null),
/// and its offset is returned. Otherwise the entry is added at the end, or,
/// with `sorted`, before the first entry whose name compares greater, and
/// the entries after it move up (so hosts that keep offsets must not insert
/// sorted). A null `data` leaves the new entry's data area zero. Returns 0,
/// with the cache as it was, for a null `cache` or `name`, a negative
/// `dataSize`, an empty name added to a cache that has entries, a block
/// that would exceed 65,500 bytes of 16-bit units, a cache that does not
/// read as one with this `dataSize`, or memory that cannot be had.
///   CacheString(&c, L"beta", &b, 4, true) => 1;
///   CacheString(&c, L"Alpha", &a, 4, true) => 1 ("beta" is now at 11)
QXUTIL_API unsigned CacheString(wchar_t** cache, wchar_t* name, void* data, int dataSize,
                                bool sorted);

/// GetCachedString - copies `dataSize` bytes of the entry at `offset` to
/// `data` (when not null) and its name to `name` with strcpyn(name, ...,
/// nameSize). With a null cache, or an offset outside the block, `name`
/// becomes "" and `data` is not written. Nothing is read beyond the block:
/// bytes of `data` the block cannot supply are zero.
QXUTIL_API void GetCachedString(wchar_t* cache, unsigned offset, wchar_t* name, int nameSize,
                                void* data, int dataSize);

/// GetIthCachedString - entry `index` (from 0) copied as GetCachedString
/// does; true when it exists. `name` is set to "" first; false for a null
/// cache, a negative index or one past the last entry.
QXUTIL_API bool GetIthCachedString(wchar_t* cache, int index, wchar_t* name, int nameSize,
                                   void* data, int dataSize);

/// GetCachedStructure - copies `dataSize` bytes of the data of the first
/// entry whose name equals `name` ignoring ASCII case (striequ) to `data`
/// (when not null); false when there is none.
QXUTIL_API bool GetCachedStructure(wchar_t* cache, wchar_t* name, void* data, int dataSize);

#endif // QXUTIL_TEXT_H
