// The normalizer options of 'qxutil fold' and 'qxutil sort'.
#include "normalizer_choice.h"

#include "cli_locale.h"
#include "platform/utf8.h"
#include "text/default_folding.h"
#include "text/normalization_table.h"

#include <qxutil/winlocale.h>

#include <cstdlib>
#include <cstring>

namespace qxcli {

namespace {

// KnownTables - "65496, 5607 (44414), 40623, ...": what --table accepts.
std::string KnownTables() {
  std::string list;
  for (int i = 0; i < qx::kFoldingTableCount; ++i) {
    unsigned short id = qx::FoldingTable(i).id();
    list += (i ? ", " : "") + std::to_string(id);
    if (id == 44414)
      list += " (5607)";
  }
  return list;
}

} // namespace

bool TakeNormalizerOption(int argc, char** argv, int* i, NormalizerOptions* o, std::string* error) {
  const char* a = argv[*i];
  const char** value = !std::strcmp(a, "--charset")    ? &o->charset
                       : !std::strcmp(a, "--table")    ? &o->table
                       : !std::strcmp(a, "--language") ? &o->language
                                                       : nullptr;
  if (value) {
    if (*i + 1 >= argc) {
      *error = std::string(a) + " needs a value";
      return false;
    }
    *value = argv[++*i];
    return true;
  }
  if ((a[0] == '-' && a[1] != '\0') || o->input)
    return false;
  o->input = a;
  return true;
}

StringNormalizer* ChooseNormalizer(const NormalizerOptions& o, std::string* error) {
  if (o.table && o.language) {
    *error = "--table and --language exclude each other";
    return nullptr;
  }
  int language = 0;
  if (o.language) {
    if (!PinThreadLocale(o.language)) {
      *error = std::string("unknown language '") + o.language +
               "' (an LCID such as 1053 or a "
               "locale name such as sv-SE)";
      return nullptr;
    }
    language = static_cast<int>(GetThreadLocale() & 0xFFFF);
  }
  QXCHARSET cs = system_charset();
  if (o.charset) {
    cs = Str2CS(qx::platform::Utf8ToWide(o.charset).c_str());
    if (cs == QXCHARSET_NONE) {
      *error = std::string("unknown character set '") + o.charset +
               "' (the names are those of 'qxutil charsets')";
      return nullptr;
    }
  }
  unsigned short id = qx::DefaultFoldingId(cs, language);
  if (o.table) {
    char* end = nullptr;
    unsigned long value = std::strtoul(o.table, &end, 0);
    bool known = end != o.table && *end == 0 && value <= 0xFFFF &&
                 (qx::FindFoldingTable(static_cast<unsigned short>(value)) ||
                  (value == 5607 && cs == QXCHARSET_WINDOWS_LATIN1));
    if (!known) {
      *error = std::string("unknown table '") + o.table + "'; the tables are " + KnownTables();
      return nullptr;
    }
    id = static_cast<unsigned short>(value);
  }
  StringNormalizer* normalizer = GetNormalizer(cs, id);
  ClearErrors();
  if (!normalizer)
    *error = "out of memory";
  return normalizer;
}

} // namespace qxcli
