//===- platform/file_win.h - Windows kernel file calls ----------*- C++ -*-===//
//
// Provides: GetFileAttributesW, GetFileAttributesExW, MoveFileExW, the run-
// time lookup of kernel calls by name (GetKernelProcAddress, where Windows
// would ask kernel32.dll), and positional reads and writes (ReadAt,
// WriteAt: ReadFile and WriteFile with an offset), all over the file-system
// seam and with the case-insensitive names of platform/file_crt.h.
//
// Attributes: FILE_ATTRIBUTE_DIRECTORY for directories, else
// FILE_ATTRIBUTE_ARCHIVE; FILE_ATTRIBUTE_READONLY when the mode has no
// write bit; FILE_ATTRIBUTE_HIDDEN for names beginning with a dot. Times
// are FILETIMEs (100-nanosecond units since 1601) from the kernel's
// nanosecond times.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_FILE_WIN_H
#define QXUTIL_PLATFORM_FILE_WIN_H

#include "qxutil/wintypes.h"

#include <cstddef>

struct stat;

namespace qx::win {

/// GetFileAttributesW - the attributes of `path`, or INVALID_FILE_ATTRIBUTES
/// with the last error ERROR_FILE_NOT_FOUND (ERROR_PATH_NOT_FOUND when a
/// directory on the way is missing).
DWORD GetFileAttributesW(LPCWSTR path);

/// GetFileAttributesExW - attributes, times and size of `path` into a
/// WIN32_FILE_ATTRIBUTE_DATA (`level` must be GetFileExInfoStandard);
/// FALSE with the last error as GetFileAttributesW.
BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID info);

/// The shape of GetFileAttributesExW, for the run-time lookup.
typedef BOOL (*GetFileAttributesExWProc)(LPCWSTR, GET_FILEEX_INFO_LEVELS, LPVOID);

/// MoveFileExW - renames `from` to `to`; with MOVEFILE_REPLACE_EXISTING an
/// existing `to` is replaced in one step (readers see the old file or the
/// new one, never a mixture). FALSE with the last error.
BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);

/// GetKernelProcAddress - the kernel call `name` that callers look up at run
/// time: "GetFileAttributesExW" is always present here; anything else is
/// null with ERROR_PROC_NOT_FOUND.
FARPROC GetKernelProcAddress(LPCSTR name);

} // namespace qx::win

namespace qx::platform {

/// ReadAt - reads up to `count` bytes at `offset` without moving the
/// descriptor's position: one kernel call for a whole block inside the
/// file. Returns the bytes read (fewer only at the end), or -1 with a
/// Windows errno.
long ReadAt(int fd, void* buffer, size_t count, long long offset);

/// WriteAt - writes `count` bytes at `offset`; the bytes written (fewer
/// only before a failure, with errno set) or -1 with a Windows errno.
long WriteAt(int fd, const void* buffer, size_t count, long long offset);

/// FileDataFromStat - the times and the size (0 for a directory) of the
/// kernel's status `st` into `data`; the attributes are left alone.
void FileDataFromStat(const struct stat& st, WIN32_FILE_ATTRIBUTE_DATA* data);

/// FileTimeFromUnix - a FILETIME from seconds and nanoseconds since 1970.
FILETIME FileTimeFromUnix(long long seconds, long nanoseconds);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_FILE_WIN_H
