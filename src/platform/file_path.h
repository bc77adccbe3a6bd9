//===- platform/file_path.h - Windows names on a Linux file system -*- C++ -*-===//
//
// Provides: the turning of a Windows-shaped wide name into the name the
// kernel reads, and the case-insensitive lookup of a name that does not
// exist in the spelling given.
//
// Kernel names. "\" and "/" are both separators; "/" is written. A drive
// prefix ("C:") is dropped: every drive letter names the one root of the
// file system, and the current directory of every drive is the process's
// current directory, so "C:\data\a.dbf" is "/data/a.dbf" and "D:a.dbf" is
// "a.dbf" in the current directory. A network name ("\\server\share\x")
// becomes "//server/share/x". Text goes to the kernel as UTF-8.
//
// Case. Windows finds "ROADS.DAT" when the file is "roads.dat". When a name
// does not exist as spelled, ResolveCase walks it component by component and
// replaces each component by the entry of its directory that equals it under
// the library's upper-casing (Windows' simple case mapping, CharUpperW): an
// entry spelled exactly as given always wins, and among several case
// variants the one whose UTF-8 bytes sort first (strcmp) is taken, so
// "ROADS.DAT" is chosen before "Roads.dat", and that before "roads.dat".
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_FILE_PATH_H
#define QXUTIL_PLATFORM_FILE_PATH_H

#include <cstddef>

namespace qx::platform {

/// kKernelPathSize - the room of a kernel name, terminator included.
constexpr size_t kKernelPathSize = 4096;

/// KernelPath - `path` as the kernel reads it, into `out` (kKernelPathSize
/// bytes). False with errno ENOENT for a null or empty name and
/// ENAMETOOLONG when it does not fit.
bool KernelPath(const wchar_t* path, char* out);

/// ResolveCase - rewrites `path` (a kernel name in a buffer of
/// kKernelPathSize bytes) to the spelling found on disk. Every component
/// must exist, except the last when `lastMayBeNew` (a name about to be
/// created): it is then kept as given when no entry matches it. Returns
/// false with errno ENOENT or ENOTDIR when a component is not found (the
/// buffer is then unchanged), or with the errno of a failed directory
/// read.
bool ResolveCase(char* path, bool lastMayBeNew);

/// SameIgnoringCase - whether two UTF-8 names are equal under the
/// library's upper-casing.
bool SameIgnoringCase(const char* a, const char* b);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_FILE_PATH_H
