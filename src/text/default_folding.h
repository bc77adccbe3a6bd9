//===- text/default_folding.h - The default table of a context --*- C++ -*-===//
#ifndef QXUTIL_TEXT_DEFAULT_FOLDING_H
#define QXUTIL_TEXT_DEFAULT_FOLDING_H

#include "qxutil/text.h"

namespace qx {

/// DefaultFoldingId - the identifier of the table a context whose system
/// charset is `charset` folds with by default, for the language
/// `languageId` (0: the low 16 bits of GetLocaleIdentifier()):
/// "WindowsLatin1" 44414, or 34070 (Danish, Norwegian) or 1298 (Finnish,
/// Swedish) by language; "WindowsLatin2" 40623, "WindowsCyrillic" 55762,
/// "WindowsGreek" 32694, "WindowsTurkish" 21121; any other set 65496.
unsigned short DefaultFoldingId(QXCHARSET charset, int languageId);

} // namespace qx

#endif // QXUTIL_TEXT_DEFAULT_FOLDING_H
