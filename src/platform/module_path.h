//===- platform/module_path.h - Module file names and loading by path -*- C++ -*-===//
//
// Provides: GetModuleFileNameW (dlinfo's link map; /proc/self/exe for the
// main program), LoadLibraryExW (dlopen of a path) and SetErrorMode (kept
// for the callers' save-and-restore; there are no critical-error boxes).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_MODULE_PATH_H
#define QXUTIL_PLATFORM_MODULE_PATH_H

#include "qxutil/wintypes.h"

#ifndef SEM_FAILCRITICALERRORS
#define SEM_FAILCRITICALERRORS 0x0001
#endif

namespace qx::win {

/// GetModuleFileNameW - the full path of a loaded module (null: the main
/// program). Copies at most `size` - 1 units and a terminator and returns
/// the units copied; when the path does not fit, the text is cut to `size`
/// - 1 units, `size` is returned and the last error is
/// ERROR_INSUFFICIENT_BUFFER. 0 with ERROR_MOD_NOT_FOUND for an unknown
/// handle.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);

/// LoadLibraryExW - loads the module at `path` (counted like LoadLibraryW).
/// With LOAD_WITH_ALTERED_SEARCH_PATH the module's own directory is where
/// its dependencies are looked for first, which a path with a directory
/// already gives here. `file` must be null.
HMODULE LoadLibraryExW(LPCWSTR path, void* file, DWORD flags);

/// SetErrorMode - stores the process's error mode and returns the previous
/// one.
UINT SetErrorMode(UINT mode);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_MODULE_PATH_H
