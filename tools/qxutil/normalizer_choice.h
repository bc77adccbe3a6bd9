//===- qxutil/normalizer_choice.h - Which normalizer a command uses -*- C++ -*-===//
//
// The options 'qxutil fold' and 'qxutil sort' share: --charset CS, --table ID
// or --language LCID, and an input file.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_NORMALIZER_CHOICE_H
#define QXUTIL_CLI_NORMALIZER_CHOICE_H

#include <qxutil/text.h>

#include <string>

namespace qxcli {

struct NormalizerOptions {
  const char* charset = nullptr;  // --charset: a catalogue name (default: the system's)
  const char* table = nullptr;    // --table: a table identifier
  const char* language = nullptr; // --language: an LCID or a locale name
  const char* input = nullptr;    // FILE, or standard input
};

/// TakeNormalizerOption - consumes argv[*i] (and its value) when it is one
/// of the shared options or the input file; false when it is not, or when
/// its value is missing (*error then says so).
bool TakeNormalizerOption(int argc, char** argv, int* i, NormalizerOptions* o, std::string* error);

/// ChooseNormalizer - the normalizer the options name, made before anything
/// else touches the library (--language pins the thread's locale, so the
/// system charset follows it): the table is --table, or the default table
/// of the character set for the language. Null with a message in *error
/// for an unknown character set, table or language.
StringNormalizer* ChooseNormalizer(const NormalizerOptions& o, std::string* error);

} // namespace qxcli

#endif // QXUTIL_CLI_NORMALIZER_CHOICE_H
