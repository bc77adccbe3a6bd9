//===- platform/locale_db.h - The built-in Windows locale database -*- C++ -*-===//
//
// Provides: GetLocaleInfoW, GetThreadLocale, SetThreadLocale, GetUserDefaultLCID,
// GetSystemDefaultLCID, GetUserDefaultLangID, GetSystemDefaultLangID,
// ConvertDefaultLocale, IsValidLocale, LCIDToLocaleName and LocaleNameToLCID (declared
// with Windows' signatures in qxutil/winlocale.h), and the helpers below for other parts
// of the platform layer.
//
// The database holds what Windows 7's GetLocaleInfoW returns for 142 LCIDs
// (docs/locales.md). The Windows calls fail as Windows does: 0 or FALSE with the last
// error set (ERROR_INVALID_PARAMETER for an unknown LCID or a bad buffer argument,
// ERROR_INVALID_FLAGS for an unknown LCTYPE or flag, ERROR_INSUFFICIENT_BUFFER for a
// buffer that is too small, which is then left untouched). The helpers here never set
// the last error.
//
// The user default locale is the C runtime's LC_CTYPE locale as the host set it with
// setlocale, mapped to an LCID (LocaleFromCrtName); a thread starts with it as its
// thread locale.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_LOCALE_DB_H
#define QXUTIL_PLATFORM_LOCALE_DB_H

#include "qxutil/wintypes.h"

#include <string_view>

namespace qx::platform {

/// LocaleAnsiCodePage - the locale's default ANSI code page
/// (LOCALE_IDEFAULTANSICODEPAGE) as a number: 1252 for en-US, 932 for ja-JP, 0 for
/// Unicode-only locales such as hi-IN, and 0 for an unknown LCID. Special LCIDs
/// (LOCALE_USER_DEFAULT, ...) are mapped as GetLocaleInfoW maps them.
UINT LocaleAnsiCodePage(LCID lcid);

/// LocaleOemCodePage - the locale's default OEM code page (LOCALE_IDEFAULTCODEPAGE)
/// as a number: 437 for en-US, 850 for de-DE, 1 (CP_OEMCP) for Unicode-only locales,
/// 0 for an unknown LCID.
UINT LocaleOemCodePage(LCID lcid);

/// LocaleFromCrtName - the LCID for a C-runtime locale name, as GetUserDefaultLCID
/// maps the runtime's LC_CTYPE name. Accepts "de_DE", "de_DE.UTF-8", "de_DE@euro",
/// "de-DE", "uz_UZ@cyrillic" (=> uz-Cyrl-UZ), a bare language "de" (=> its default
/// locale) and the Microsoft form "German_Germany.1252" (English language and country
/// names). "C", "POSIX", null, "" and unknown names give 1033 (en-US).
LCID LocaleFromCrtName(const char* name);

/// LocaleText - the value of `type` (an LCTYPE without flags) for `lcid` (special
/// LCIDs mapped), as GetLocaleInfoW would write it without its terminator. False for
/// an unknown LCID or LCTYPE. The text stays valid for the life of the process.
bool LocaleText(LCID lcid, LCTYPE type, std::u16string_view* text);

/// LocaleMonthName - LOCALE_SMONTHNAME<month> or, if `abbreviated`,
/// LOCALE_SABBREVMONTHNAME<month>, for month 1..13 (13 is empty for Gregorian
/// locales). Empty for an unknown LCID or a month out of range.
std::u16string_view LocaleMonthName(LCID lcid, int month, bool abbreviated);

/// LocaleDayName - the (abbreviated) name of a day counted as SYSTEMTIME.wDayOfWeek
/// counts it, 0 = Sunday .. 6 = Saturday (the LCTYPEs start at Monday: Sunday is
/// LOCALE_SDAYNAME7). Empty for an unknown LCID or a day out of range.
std::u16string_view LocaleDayName(LCID lcid, int dayOfWeek, bool abbreviated);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_LOCALE_DB_H
