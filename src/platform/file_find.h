//===- platform/file_find.h - Windows directory enumeration -----*- C++ -*-===//
//
// Provides: FindFirstFileW, FindNextFileW and FindClose over the file-system
// seam, with Windows' patterns and its listing order.
//
// Patterns. The last component of the name is the pattern, the rest the
// directory (found ignoring case, as every name is). "*" matches any run of
// characters, "?" any one; letters match ignoring case (the library's
// upper-casing). A pattern ending in ".*" also matches names without a dot
// ("*.*" matches every name, "a*.*" matches "abc"), and one ending in "."
// matches only names without a dot ("*." lists the names that have no
// extension).
//
// Order. "." and ".." come first, then the entries in the order of their
// upper-cased names compared unit by unit, as Windows lists a directory of
// its own file system; the order never depends on the file system here.
//
// Entries. cFileName is the name (cut to 259 units); the attributes are
// FILE_ATTRIBUTE_DIRECTORY for directories, FILE_ATTRIBUTE_READONLY when
// the mode has no write bit, FILE_ATTRIBUTE_HIDDEN for names beginning with
// a dot (other than "." and ".."), and FILE_ATTRIBUTE_NORMAL when none of
// these applies; times are FILETIMEs from the kernel's times; the size is
// 0 for directories. An entry that vanished between the listing and its
// turn has the attributes FILE_ATTRIBUTE_NORMAL and zero times and size.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_FILE_FIND_H
#define QXUTIL_PLATFORM_FILE_FIND_H

#include "qxutil/wintypes.h"

namespace qx::win {

/// FindFirstFileW - lists the directory of `pattern`, fills `data` with the
/// first matching entry and returns a handle for FindNextFileW.
/// INVALID_HANDLE_VALUE with the last error ERROR_FILE_NOT_FOUND (nothing
/// matches), ERROR_PATH_NOT_FOUND (no such directory), ERROR_INVALID_PARAMETER
/// (null arguments) or ERROR_NOT_ENOUGH_MEMORY.
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);

/// FindNextFileW - the next matching entry into `data`; FALSE with
/// ERROR_NO_MORE_FILES at the end, ERROR_INVALID_HANDLE for a bad handle.
BOOL FindNextFileW(HANDLE find, WIN32_FIND_DATAW* data);

/// FindClose - ends the listing; FALSE with ERROR_INVALID_HANDLE for
/// INVALID_HANDLE_VALUE or null.
BOOL FindClose(HANDLE find);

/// MatchesPattern - whether `name` matches the pattern `pattern` under the
/// rules above.
bool MatchesPattern(LPCWSTR pattern, LPCWSTR name);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_FILE_FIND_H
