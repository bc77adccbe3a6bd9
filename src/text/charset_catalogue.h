//===- text/charset_catalogue.h - Internal catalogue queries ----*- C++ -*-===//
#ifndef QXUTIL_TEXT_CHARSET_CATALOGUE_H
#define QXUTIL_TEXT_CHARSET_CATALOGUE_H

#include "qxutil/text.h"

namespace qx {

/// IsCharsetLeadByte - whether the byte at `p` is a lead byte of `cs` by the
/// library's own ranges (narrower than the full code pages); false for
/// single-byte members and out-of-range values.
bool IsCharsetLeadByte(const char* p, QXCHARSET cs);

/// LocaleAnsiCodePageOf - the default ANSI code page of `lcid` as the
/// locale reports it (a text of at most 50 characters read as a decimal
/// number); 0 when the locale gives none.
int LocaleAnsiCodePageOf(LCID lcid);

/// CharsetForAnsiCodePage - the member that stands for a Windows ANSI code
/// page: 1252 => WindowsLatin1, 932 => WindowsJapanese, ...; "Neutral" for
/// any other page (0 included).
QXCHARSET CharsetForAnsiCodePage(int codePage);

} // namespace qx

#endif // QXUTIL_TEXT_CHARSET_CATALOGUE_H
