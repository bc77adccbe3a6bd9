//===- platform/string_module.h - String modules and LoadStringW -*- C++ -*-===//
//
// Provides: LoadStringW over string modules, the shared objects that play
// the part of a DLL's string-table resources.
//
// A string module exports one table under the symbol "qx_string_table": a
// header (magic, format version, count) and `count` entries in ascending
// order of identifier, each an identifier (0..65535), a length in units and
// the units themselves (UTF-16 units, one per wchar_t, not terminated; a NUL
// inside is part of the text). `qxutil strings compile` writes the source of
// such a module from a Windows resource script; the layout below is the one
// it writes, and docs/resources.md describes it.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_STRING_MODULE_H
#define QXUTIL_PLATFORM_STRING_MODULE_H

#include "qxutil/wintypes.h"

#ifndef ERROR_RESOURCE_TYPE_NOT_FOUND
#define ERROR_RESOURCE_TYPE_NOT_FOUND 1813
#endif
#ifndef ERROR_RESOURCE_NAME_NOT_FOUND
#define ERROR_RESOURCE_NAME_NOT_FOUND 1814
#endif

namespace qx::win {

/// StringModuleEntry - one string of a module.
struct StringModuleEntry {
  unsigned int id;
  unsigned int length; // in units
  const wchar_t* text; // `length` units, not terminated
};

/// StringModuleTable - what a string module exports under
/// kStringModuleSymbol.
struct StringModuleTable {
  unsigned int magic;   // kStringModuleMagic
  unsigned int version; // kStringModuleVersion
  unsigned int count;
  const StringModuleEntry* entries; // ascending by id, no id twice
};

inline constexpr char kStringModuleSymbol[] = "qx_string_table";
inline constexpr unsigned int kStringModuleMagic = 0x54535851; // "QXST" in memory order
inline constexpr unsigned int kStringModuleVersion = 1;

/// FindStringTable - the string table that `module` exports (null: the main
/// program), or null when it exports none or one of another format version.
const StringModuleTable* FindStringTable(HMODULE module);

/// LoadStringW - string `id` of `module` (null: the main program). Only the
/// low 16 bits of `id` count, as on Windows. Copies at most `bufferMax` - 1
/// units and a terminator into `buffer` and returns the units copied. With
/// `bufferMax` 0, `buffer` is taken as a `const wchar_t**` and receives a
/// pointer to the text itself (not terminated) and the full length is
/// returned. Returns 0 for a missing or empty string (writing just the
/// terminator), with ERROR_RESOURCE_TYPE_NOT_FOUND when the module has no
/// string table and ERROR_RESOURCE_NAME_NOT_FOUND when the table has no such
/// string; a null `buffer` or a negative `bufferMax` returns 0 and writes
/// nothing.
int LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int bufferMax);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_STRING_MODULE_H
