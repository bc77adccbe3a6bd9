//===- files/names.h - Windows file names as text ---------------*- C++ -*-===//
//
// The text rules of file names, free of any registry state: separators,
// splitting, extensions, qualification, relative paths. The registry's
// name slots are these functions; tests reach them directly.
//
// Buffers hold kPathUnits (261) units unless a comment says otherwise.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FILES_NAMES_H
#define QXUTIL_FILES_NAMES_H

#include "platform/unicode.h"
#include "qxutil/files.h"

#include <cstddef>

namespace qx::files {

/// kPathUnits - a path buffer: 260 units and the terminator.
constexpr size_t kPathUnits = 261;
/// kNameUnits - the longest file name (without directory), in units.
constexpr size_t kNameUnits = 255;

inline bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

/// CopyText - strcpyn without its zero fill: at most `size` - 1 units of
/// `src` (null reads as empty) and a terminator. Returns `dst`.
wchar_t* CopyText(wchar_t* dst, const wchar_t* src, size_t size);

/// FoldCase - the library's upper-casing (CharUpperW) of one unit; ASCII
/// without a table lookup.
inline wchar_t FoldCase(wchar_t c) {
  if (c < 0x80)
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - 0x20) : c;
  return qx::platform::CharToUpper(c);
}

/// LastSeparator - the last separator of `s`, or null.
const wchar_t* LastSeparator(const wchar_t* s);

/// EnsureBackslash - appends a backslash to `s` (of `size` units) unless it
/// is empty or ends in a separator, as far as room allows.
void EnsureBackslash(wchar_t* s, size_t size);

/// DefaultExtension - the default extension of `type`, null when none.
const wchar_t* DefaultExtension(int type);
/// ForcesExtension - the extension-forcing flag of `type`.
bool ForcesExtension(int type);
/// IsDefaultExtension - whether `ext` (with its dot) equals one of the
/// default extensions ignoring case.
bool IsDefaultExtension(const wchar_t* ext);

/// SplitFileName, MakeExtension, Qualify - the text of splitfilename,
/// make_extension and qualify_filename.
void SplitFileName(wchar_t* path, wchar_t* namePart);
void MakeExtension(wchar_t* name, const wchar_t* ext);
void Qualify(wchar_t* name);

/// NormaliseForExtension - the first step of make_extension: the blanks at
/// the start of the file-name part go and that part is cut to 254 units.
void NormaliseForExtension(wchar_t* name);

/// CalcRelative, FullFromRelative - CalcRelativePath and its inverse.
bool CalcRelative(const wchar_t* base, const wchar_t* target, wchar_t* out);
bool FullFromRelative(const wchar_t* base, const wchar_t* relative, wchar_t* out);

/// PartialPath - fhandle2partialpath's shortening of `path` into `out` of
/// `size` units.
void PartialPath(const wchar_t* path, wchar_t* out, int size);

/// SameName - equality under the library's upper-casing (CharUpperW).
bool SameName(const wchar_t* a, const wchar_t* b);
/// SameNamePrefix - whether `prefix` begins `s` under the same rule.
bool SameNamePrefix(const wchar_t* s, const wchar_t* prefix);

} // namespace qx::files

#endif // QXUTIL_FILES_NAMES_H
