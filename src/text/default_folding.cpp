//===- text/default_folding.cpp - The default table of a context ----------===//
//
// Which table a context folds with by default: by its system charset and,
// for "WindowsLatin1", by the user's language. The language comes from the
// locale service, the one thing here that text asks of locale.
//
//===----------------------------------------------------------------------===//
#include "text/default_folding.h"
#include "qxutil/locale.h"
#include "text/string_normalizer.h"

namespace qx {

namespace {

constexpr unsigned short kDanishNorwegianId = 34070;
constexpr unsigned short kFinnishSwedishId = 1298;

// Danish, Norwegian (Bokmal, Nynorsk) and Northern, Lule and Southern Sami
// in Norway.
constexpr int kDanishNorwegian[] = {1030, 1044, 1083, 2068, 4155, 6203};
// Finnish, Swedish (Sweden, Finland) and the Sami languages of Sweden and
// Finland.
constexpr int kFinnishSwedish[] = {1035, 1053, 2077, 2107, 3131, 5179, 7227, 8251, 9275};

template <size_t N> bool IsOneOf(int language, const int (&list)[N]) {
  for (int l : list)
    if (l == language)
      return true;
  return false;
}

} // namespace

unsigned short DefaultFoldingId(QXCHARSET charset, int languageId) {
  switch (charset) {
  case QXCHARSET_WINDOWS_LATIN1:
    if (languageId == 0)
      languageId = static_cast<int>(GetLocaleIdentifier() & 0xFFFF);
    if (IsOneOf(languageId, kDanishNorwegian))
      return kDanishNorwegianId;
    if (IsOneOf(languageId, kFinnishSwedish))
      return kFinnishSwedishId;
    return kWesternId;
  case QXCHARSET_WINDOWS_LATIN2:
    return 40623;
  case QXCHARSET_WINDOWS_CYRILLIC:
    return 55762;
  case QXCHARSET_WINDOWS_GREEK:
    return 32694;
  case QXCHARSET_WINDOWS_TURKISH:
    return 21121;
  default:
    return 65496;
  }
}

} // namespace qx
