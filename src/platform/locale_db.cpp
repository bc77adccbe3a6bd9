// Provides: GetLocaleInfoW, Get/SetThreadLocale, Get*Default*, IsValidLocale, LCID <=> locale name.
#include "platform/locale_db.h"
#include "qxutil/winlocale.h"

#include "platform/crt_locale.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace {

#include "platform/locale_tables.inc"

// The LCTYPE flags this database accepts; any other bit of the high word is an
// unknown flag.
constexpr LCTYPE kKnownTypeFlags =
    LOCALE_NOUSEROVERRIDE | LOCALE_USE_CP_ACP | LOCALE_RETURN_NUMBER | LOCALE_RETURN_GENITIVE_NAMES;

// Bits 20..31 of an LCID are reserved; an LCID with any of them set is invalid.
constexpr LCID kReservedLcidBits = 0xFFF00000u;

constexpr LCID kEnglishUnitedStates = 0x0409;

const LocaleRow* FindRow(LCID lcid) {
  const LocaleRow* end = kLocaleRows + kLocaleRowCount;
  const LocaleRow* it = std::lower_bound(
      kLocaleRows, end, lcid, [](const LocaleRow& row, LCID key) { return row.lcid < key; });
  return it != end && it->lcid == lcid ? it : nullptr;
}

// FindField - the index of `type` in kLocaleFields, or -1.
int FindField(LCTYPE type) {
  const LocaleField* end = kLocaleFields + kLocaleFieldCount;
  const LocaleField* it = std::lower_bound(
      kLocaleFields, end, type, [](const LocaleField& f, LCTYPE key) { return f.type < key; });
  return it != end && it->type == type ? static_cast<int>(it - kLocaleFields) : -1;
}

std::u16string_view Value(const LocaleRow& row, int field) {
  unsigned id = row.value[field];
  unsigned start = kLocaleStringStart[id];
  return std::u16string_view(kLocalePool + start, kLocaleStringStart[id + 1] - start - 1);
}

std::u16string_view TypeValue(const LocaleRow& row, LCTYPE type) {
  int field = FindField(type);
  return field < 0 ? std::u16string_view() : Value(row, field);
}

// Resolve - the database row answering for `lcid` after the special LCIDs are
// mapped; sort bits (16..19) do not change the row. Null for an unknown LCID.
const LocaleRow* Resolve(LCID lcid) {
  lcid = ConvertDefaultLocale(lcid);
  if (lcid & kReservedLcidBits)
    return nullptr;
  return FindRow(LANGIDFROMLCID(lcid));
}

// ---- Locale names ----------------------------------------------------------

char AsciiLower(char32_t c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); }

// SameName - ASCII case-insensitive equality of a runtime name part and a value.
// Characters outside ASCII must match exactly.
template <typename CharA, typename CharB>
bool SameName(std::basic_string_view<CharA> a, std::basic_string_view<CharB> b) {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char32_t x = static_cast<std::make_unsigned_t<CharA>>(a[i]);
    char32_t y = static_cast<std::make_unsigned_t<CharB>>(b[i]);
    if (x != y && (x > 0x7F || y > 0x7F || AsciiLower(x) != AsciiLower(y)))
      return false;
  }
  return true;
}

// FindByName - the LCID whose LOCALE_SNAME equals `name` (ASCII case-insensitive,
// "_" standing for "-"), or 0. The invariant locale's empty name is not matched.
template <typename Char> LCID FindByName(std::basic_string_view<Char> name) {
  if (name.empty())
    return 0;
  for (const LocaleRow& row : kLocaleRows) {
    std::u16string_view sname = TypeValue(row, LOCALE_SNAME);
    if (sname.size() != name.size())
      continue;
    bool same = true;
    for (size_t i = 0; i < name.size() && same; ++i) {
      char32_t c = static_cast<std::make_unsigned_t<Char>>(name[i]);
      char32_t s = sname[i];
      if (c == '_')
        c = '-';
      if (s == '_')
        s = '-';
      same = c == s || (c <= 0x7F && s <= 0x7F && AsciiLower(c) == AsciiLower(s));
    }
    if (same)
      return row.lcid;
  }
  return 0;
}

// DefaultForLanguage - the default locale of an ISO 639 language ("de" => de-DE,
// "es" => es-ES, "nn" => nn-NO), or 0. The sublanguage-neutral mapping decides when its
// locale speaks the language; otherwise the lowest LCID that does.
template <typename Char> LCID DefaultForLanguage(std::basic_string_view<Char> lang) {
  const LocaleRow* first = nullptr;
  for (const LocaleRow& row : kLocaleRows) {
    if (row.lcid != LOCALE_INVARIANT && SameName(lang, TypeValue(row, LOCALE_SISO639LANGNAME))) {
      first = &row;
      break;
    }
  }
  if (!first)
    return 0;
  const LocaleRow* preferred = Resolve(MAKELANGID(PRIMARYLANGID(first->lcid), SUBLANG_NEUTRAL));
  if (preferred && SameName(lang, TypeValue(*preferred, LOCALE_SISO639LANGNAME)))
    return preferred->lcid;
  return first->lcid;
}

// FromPosixName - "de_DE", "de-DE", "uz_UZ" with modifier "cyrillic", "de"; 0 if unknown.
LCID FromPosixName(std::string_view base, std::string_view modifier) {
  if (LCID lcid = FindByName(base))
    return lcid;
  size_t sep = base.find_first_of("_-");
  if (sep == std::string_view::npos)
    return base.find(' ') == std::string_view::npos ? DefaultForLanguage(base) : 0;
  // Locales written with a script in their LCID name: the runtime puts the script in
  // the modifier ("uz_UZ@cyrillic"); without one the runtime's locale is the Latin one.
  std::string_view script = "Latn";
  if (modifier == "cyrillic")
    script = "Cyrl";
  else if (!modifier.empty() && modifier != "latin" && modifier != "euro")
    return 0;
  char buf[32];
  if (base.size() + 1 + script.size() >= sizeof buf)
    return 0;
  std::string_view lang = base.substr(0, sep), region = base.substr(sep);
  size_t n = 0;
  for (std::string_view part : {lang, std::string_view("-"), script, region}) {
    std::memcpy(buf + n, part.data(), part.size());
    n += part.size();
  }
  return FindByName(std::string_view(buf, n));
}

// FromMicrosoftName - "German_Germany", "English_United States", "German"; 0 if
// unknown. Matches LOCALE_SENGLANGUAGE and LOCALE_SENGCOUNTRY; LCIDs with a sort
// suffix in their name (es-ES_tradnl) are left to the default sort (es-ES).
LCID FromMicrosoftName(std::string_view base) {
  size_t sep = base.find('_');
  std::string_view lang = base.substr(0, sep);
  std::string_view country = sep == std::string_view::npos ? "" : base.substr(sep + 1);
  const LocaleRow* first = nullptr;
  for (const LocaleRow& row : kLocaleRows) {
    if (TypeValue(row, LOCALE_SNAME).find(u'_') != std::u16string_view::npos ||
        !SameName(lang, TypeValue(row, LOCALE_SENGLANGUAGE)))
      continue;
    if (!country.empty() && !SameName(country, TypeValue(row, LOCALE_SENGCOUNTRY)))
      continue;
    first = &row;
    break;
  }
  if (!first || !country.empty())
    return first ? first->lcid : 0;
  const LocaleRow* preferred = Resolve(MAKELANGID(PRIMARYLANGID(first->lcid), SUBLANG_NEUTRAL));
  if (preferred && SameName(lang, TypeValue(*preferred, LOCALE_SENGLANGUAGE)))
    return preferred->lcid;
  return first->lcid;
}

// ---- Thread locale ---------------------------------------------------------

// 0 until the thread first asks: a thread starts with the user default locale.
thread_local LCID tThreadLocale = 0;

// CopyOut - the GetLocaleInfoW contract for text: the length probe, an exact fit,
// and nothing written when the buffer is too small.
int CopyOut(std::u16string_view text, LPWSTR buf, int cch) {
  int need = static_cast<int>(text.size()) + 1;
  if (cch == 0)
    return need;
  if (cch < need) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  for (size_t i = 0; i < text.size(); ++i)
    buf[i] = static_cast<WCHAR>(text[i]);
  buf[text.size()] = L'\0';
  return need;
}

// ParseNumber - a stored integer value as LOCALE_RETURN_NUMBER gives it.
DWORD ParseNumber(std::u16string_view text, LocaleKind kind) {
  DWORD value = 0;
  for (char16_t c : text) {
    unsigned digit = c >= u'0' && c <= u'9'   ? c - u'0'
                     : c >= u'a' && c <= u'f' ? c - u'a' + 10
                     : c >= u'A' && c <= u'F' ? c - u'A' + 10
                                              : 0;
    value = value * (kind == kLocaleHex ? 16 : 10) + digit;
  }
  return value;
}

bool IsMonthNameType(LCTYPE type) {
  return (type >= LOCALE_SMONTHNAME1 && type <= LOCALE_SMONTHNAME12) || type == LOCALE_SMONTHNAME13;
}

UINT CodePage(LCID lcid, LCTYPE type) {
  const LocaleRow* row = Resolve(lcid);
  if (!row)
    return 0;
  int field = FindField(type);
  return field < 0 ? 0 : ParseNumber(Value(*row, field), kLocaleDecimal);
}

} // namespace

// ---- Helpers ---------------------------------------------------------------

namespace qx::platform {

UINT LocaleAnsiCodePage(LCID lcid) { return CodePage(lcid, LOCALE_IDEFAULTANSICODEPAGE); }

UINT LocaleOemCodePage(LCID lcid) { return CodePage(lcid, LOCALE_IDEFAULTCODEPAGE); }

LCID LocaleFromCrtName(const char* name) {
  if (!name || !*name)
    return kEnglishUnitedStates;
  std::string_view full(name);
  std::string_view modifier;
  if (size_t at = full.find('@'); at != std::string_view::npos) {
    modifier = full.substr(at + 1);
    full = full.substr(0, at);
  }
  // The code set follows the last dot ("de_DE.UTF-8", "German_Germany.1252"); try the
  // name without it first, then as it is (a dot may belong to a country name).
  std::string_view base = full;
  if (size_t dot = full.rfind('.'); dot != std::string_view::npos)
    base = full.substr(0, dot);
  for (std::string_view candidate : {base, full}) {
    if (candidate.empty() || candidate == "C" || candidate == "POSIX")
      return kEnglishUnitedStates;
    if (LCID lcid = FromPosixName(candidate, modifier))
      return lcid;
    if (LCID lcid = FromMicrosoftName(candidate))
      return lcid;
  }
  return kEnglishUnitedStates;
}

bool LocaleText(LCID lcid, LCTYPE type, std::u16string_view* text) {
  const LocaleRow* row = Resolve(lcid);
  int field = FindField(type);
  if (!row || field < 0)
    return false;
  *text = Value(*row, field);
  return true;
}

std::u16string_view LocaleMonthName(LCID lcid, int month, bool abbreviated) {
  if (month < 1 || month > 13)
    return {};
  LCTYPE type;
  if (month == 13)
    type = abbreviated ? LOCALE_SABBREVMONTHNAME13 : LOCALE_SMONTHNAME13;
  else
    type = (abbreviated ? LOCALE_SABBREVMONTHNAME1 : LOCALE_SMONTHNAME1) + (month - 1);
  std::u16string_view text;
  return LocaleText(lcid, type, &text) ? text : std::u16string_view();
}

std::u16string_view LocaleDayName(LCID lcid, int dayOfWeek, bool abbreviated) {
  if (dayOfWeek < 0 || dayOfWeek > 6)
    return {};
  LCTYPE first = abbreviated ? LOCALE_SABBREVDAYNAME1 : LOCALE_SDAYNAME1;
  std::u16string_view text;
  return LocaleText(lcid, first + (dayOfWeek + 6) % 7, &text) ? text : std::u16string_view();
}

} // namespace qx::platform

// ---- Windows calls ---------------------------------------------------------

LCID ConvertDefaultLocale(LCID lcid) {
  switch (lcid) {
  case LOCALE_INVARIANT:
    return lcid;
  case LOCALE_SYSTEM_DEFAULT:
    return GetSystemDefaultLCID();
  case LOCALE_USER_DEFAULT:
  case LOCALE_NEUTRAL:
    return GetUserDefaultLCID();
  default:
    break;
  }
  LANGID lang = LANGIDFROMLCID(lcid);
  if (SUBLANGID(lang) != SUBLANG_NEUTRAL)
    return lcid;
  switch (PRIMARYLANGID(lang)) {
  case LANG_SPANISH:
    lang = MAKELANGID(LANG_SPANISH, 0x03); // es-ES, modern sort
    break;
  case LANG_CHINESE:
    lang = MAKELANGID(LANG_CHINESE, 0x02); // zh-CN
    break;
  default:
    lang = MAKELANGID(PRIMARYLANGID(lang), SUBLANG_DEFAULT);
    break;
  }
  return MAKELCID(lang, SORTIDFROMLCID(lcid)) | (lcid & kReservedLcidBits);
}

LCID GetUserDefaultLCID() {
  char name[256];
  size_t len = qx::platform::CrtLocaleName(name, sizeof name);
  if (len >= sizeof name)
    return kEnglishUnitedStates;
  return qx::platform::LocaleFromCrtName(name);
}

LCID GetSystemDefaultLCID() { return GetUserDefaultLCID(); }

LANGID GetUserDefaultLangID() { return LANGIDFROMLCID(GetUserDefaultLCID()); }

LANGID GetSystemDefaultLangID() { return LANGIDFROMLCID(GetSystemDefaultLCID()); }

BOOL IsValidLocale(LCID lcid, DWORD flags) {
  if (flags != LCID_INSTALLED && flags != LCID_SUPPORTED)
    return FALSE;
  switch (lcid) {
  case LOCALE_NEUTRAL:
  case LOCALE_USER_DEFAULT:
  case LOCALE_SYSTEM_DEFAULT:
    return FALSE;
  default:
    return Resolve(lcid) ? TRUE : FALSE;
  }
}

LCID GetThreadLocale() {
  if (tThreadLocale == 0)
    tThreadLocale = GetUserDefaultLCID();
  return tThreadLocale;
}

BOOL SetThreadLocale(LCID lcid) {
  lcid = ConvertDefaultLocale(lcid);
  if (!Resolve(lcid)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  tThreadLocale = lcid;
  return TRUE;
}

int GetLocaleInfoW(LCID lcid, LCTYPE lctype, LPWSTR buf, int cch) {
  if (cch < 0 || (cch > 0 && !buf)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const LocaleRow* row = Resolve(lcid);
  if (!row) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  LCTYPE flags = lctype & 0xFFFF0000u;
  LCTYPE type = lctype & 0xFFFFu;
  int field = FindField(type);
  if ((flags & ~kKnownTypeFlags) || field < 0 ||
      ((flags & LOCALE_RETURN_GENITIVE_NAMES) && !IsMonthNameType(type)) ||
      ((flags & LOCALE_RETURN_NUMBER) && kLocaleFields[field].kind == kLocaleText)) {
    SetLastError(ERROR_INVALID_FLAGS);
    return 0;
  }
  std::u16string_view text = Value(*row, field);
  if (!(flags & LOCALE_RETURN_NUMBER))
    return CopyOut(text, buf, cch);
  // A DWORD takes sizeof(DWORD) / sizeof(WCHAR) characters: 2 on Windows, 1 here.
  constexpr int kNumberChars =
      static_cast<int>((sizeof(DWORD) + sizeof(WCHAR) - 1) / sizeof(WCHAR));
  if (cch == 0)
    return kNumberChars;
  if (cch < kNumberChars) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  DWORD value = ParseNumber(text, kLocaleFields[field].kind);
  std::memcpy(buf, &value, sizeof value);
  return kNumberChars;
}

int LCIDToLocaleName(LCID lcid, LPWSTR name, int cch, DWORD flags) {
  if (cch < 0 || (cch > 0 && !name)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (flags & ~static_cast<DWORD>(LOCALE_ALLOW_NEUTRAL_NAMES)) {
    SetLastError(ERROR_INVALID_FLAGS);
    return 0;
  }
  const LocaleRow* row = Resolve(lcid);
  if (!row) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  return CopyOut(TypeValue(*row, LOCALE_SNAME), name, cch);
}

LCID LocaleNameToLCID(LPCWSTR name, DWORD flags) {
  if (flags & ~static_cast<DWORD>(LOCALE_ALLOW_NEUTRAL_NAMES)) {
    SetLastError(ERROR_INVALID_FLAGS);
    return 0;
  }
  if (!name)
    return GetUserDefaultLCID();
  std::wstring_view text(name);
  if (text.empty())
    return LOCALE_INVARIANT;
  if (text == LOCALE_NAME_SYSTEM_DEFAULT)
    return GetSystemDefaultLCID();
  LCID lcid = FindByName(text);
  if (!lcid && text.find_first_of(L"-_") == std::wstring_view::npos)
    lcid = DefaultForLanguage(text);
  if (!lcid)
    SetLastError(ERROR_INVALID_PARAMETER);
  return lcid;
}
