//===- platform/modules.h - Module handles and export lookup ----*- C++ -*-===//
//
// Provides: GetModuleHandleW, GetProcAddress, LoadLibraryW, FreeLibrary over
// dlopen/dlsym, and the extra counted load GetModuleHandleExW gives. A shared
// object (".so") plays the part of a DLL.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_MODULES_H
#define QXUTIL_PLATFORM_MODULES_H

#include "qxutil/wintypes.h"

namespace qx::win {

/// GetModuleHandleW - the handle of a module the process has already loaded,
/// found by the name it was loaded under, its soname or its file name
/// without directories; null for the main program's handle when `name` is
/// null. Never loads anything; ERROR_MOD_NOT_FOUND when not loaded.
HMODULE GetModuleHandleW(LPCWSTR name);

/// GetProcAddress - the exported function `name` of `module`;
/// ERROR_PROC_NOT_FOUND when it has none.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);

/// LoadLibraryW - loads a module (counted: each load needs its FreeLibrary).
HMODULE LoadLibraryW(LPCWSTR path);

/// FreeLibrary - drops one load of `module`.
BOOL FreeLibrary(HMODULE module);

/// AddModuleReference - one more counted load of the loaded `module`, as
/// GetModuleHandleExW without GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT
/// takes one: returns `module` (each such call needs its FreeLibrary), or
/// null when `module` is null or no longer loaded.
HMODULE AddModuleReference(HMODULE module);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_MODULES_H
