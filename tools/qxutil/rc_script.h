//===- qxutil/rc_script.h - The strings of a Windows resource script -*- C++ -*-===//
//
// Reads the STRINGTABLE blocks of a Windows resource script (.rc) as the
// Windows resource compiler would: the script is preprocessed (#include,
// #define, #undef, #if/#ifdef/#ifndef/#elif/#else/#endif, #pragma
// code_page, #error; comments and line continuations), every other resource
// statement is passed over, and each table entry is an identifier
// expression (numbers and #define'd names, with C's operators), an optional
// comma and one or more string literals, concatenated. Literals are "..."
// (in the script's code page) or L"..."; a doubled quote or \" is a quote,
// and \n \r \t \a \\ \xHH (\xHHHH in L"...") and octal escapes are read as
// that compiler reads them.
//
// Hostile input never crashes the reader: it fails with a message naming the
// file and line. Nesting, includes and macro expansion are bounded.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_RC_SCRIPT_H
#define QXUTIL_CLI_RC_SCRIPT_H

#include <functional>
#include <string>
#include <vector>

namespace qxcli {

/// RcString - one string of the script.
struct RcString {
  unsigned int id;   // 0..65535
  std::wstring text; // UTF-16 units, one per wchar_t; may hold NULs
  std::string file;  // where it is defined
  int line;
};

/// RcFileReader - reads the file at `path` into `bytes`; false when it
/// cannot be read.
using RcFileReader = std::function<bool(const std::string& path, std::string* bytes)>;

struct RcOptions {
  /// Where #include looks after the including file's own directory (for
  /// "name"), or at all (for <name>).
  std::vector<std::string> includeDirs;
  /// How files are read; null reads the file system, where a name that
  /// does not exist as spelled is looked for ignoring letter case (scripts
  /// written on Windows rarely match the case of their headers).
  RcFileReader read;
};

struct RcScript {
  std::vector<RcString> strings;     // ascending by id
  std::vector<std::string> files;    // every file read, the script first
  std::vector<std::string> warnings; // "FILE:LINE: text"
};

/// ReadRcScript - the strings of the script at `path`. False with `error`
/// ("FILE:LINE: what") for a script that cannot be read, a syntax error, an
/// unknown identifier, an identifier outside 0..65535, a string defined
/// twice (one module holds one language: make one per language), a string
/// longer than 65,535 units, a code page the library does not have, or an
/// #error. An #include that cannot be found is a warning and is skipped:
/// scripts include the Windows headers, which are not needed for strings.
bool ReadRcScript(const std::string& path, const RcOptions& options, RcScript* out,
                  std::string* error);

} // namespace qxcli

#endif // QXUTIL_CLI_RC_SCRIPT_H
