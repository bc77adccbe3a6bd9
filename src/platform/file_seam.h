//===- platform/file_seam.h - The table of file-system calls ----*- C++ -*-===//
//
// Provides: the one seam through which every file-system call of the library
// passes. The kernel's calls sit in a table (`FileSyscalls`), and each call is
// made through a wrapper here that first asks the calling thread's fault
// hook whether this call should fail (with a chosen errno) or, for a read or
// a write, transfer short. Tests drive the hook; production code pays one
// thread-local load and a compare per call.
//
// Only src/platform includes this header: it speaks the kernel's types.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_FILE_SEAM_H
#define QXUTIL_PLATFORM_FILE_SEAM_H

#include <cstddef>
#include <cstdio>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace qx::platform {

/// FileSyscalls - the kernel's file-system calls as the library makes them.
/// The defaults are the C library's; a test may replace an entry (and must
/// put it back) to stand in for a kernel that behaves in some other way.
struct FileSyscalls {
  int (*open)(const char* path, int flags, mode_t mode);
  int (*close)(int fd);
  ssize_t (*read)(int fd, void* buffer, size_t count);
  ssize_t (*write)(int fd, const void* buffer, size_t count);
  ssize_t (*pread)(int fd, void* buffer, size_t count, off_t offset);
  ssize_t (*pwrite)(int fd, const void* buffer, size_t count, off_t offset);
  off_t (*lseek)(int fd, off_t offset, int whence);
  int (*ftruncate)(int fd, off_t length);
  int (*fstat)(int fd, struct stat* st);
  int (*stat)(const char* path, struct stat* st);
  int (*unlink)(const char* path);
  int (*rename)(const char* from, const char* to, bool replace);
  int (*getcwd)(char* buffer, size_t size);
  int (*chdir)(const char* path);
  DIR* (*opendir)(const char* path);
  struct dirent* (*readdir)(DIR* dir);
  int (*closedir)(DIR* dir);
  int (*flock)(int fd, int operation);
  int (*utimens)(const char* path, const struct timespec times[2]);
  FILE* (*fdopen)(int fd, const char* mode);
  int (*fdatasync)(int fd);
};

/// Syscalls - the table in force (process-wide).
FileSyscalls& Syscalls();

/// DefaultSyscalls - the C library's calls, to restore an entry.
const FileSyscalls& DefaultSyscalls();

/// FailFileCalls - on the calling thread, makes the `nth` file-system call
/// from now (1 = the next one) fail with `error` (a kernel errno value), and
/// with `persistent` every one after it too. With `error` 0 the call is not
/// failed but, when it is a read or a write of two bytes or more, moves only
/// half of its bytes (a short transfer); other calls proceed. `nth` 0 turns
/// the hook off. The count of calls since is FileCallCount().
void FailFileCalls(long nth, int error, bool persistent = false);

/// FileCallCount - file-system calls made on the calling thread since the
/// last FailFileCalls.
long FileCallCount();

// The wrappers: each counts one call, consults the hook, then calls the
// table. Results and errno are the kernel's.
int SysOpen(const char* path, int flags, mode_t mode);
int SysClose(int fd);
ssize_t SysRead(int fd, void* buffer, size_t count);
ssize_t SysWrite(int fd, const void* buffer, size_t count);
ssize_t SysPread(int fd, void* buffer, size_t count, off_t offset);
ssize_t SysPwrite(int fd, const void* buffer, size_t count, off_t offset);
off_t SysLseek(int fd, off_t offset, int whence);
int SysFtruncate(int fd, off_t length);
int SysFdatasync(int fd);
int SysFstat(int fd, struct stat* st);
int SysStat(const char* path, struct stat* st);
int SysUnlink(const char* path);
/// SysRename - renames; without `replace` an existing `to` fails with EEXIST.
int SysRename(const char* from, const char* to, bool replace);
int SysGetcwd(char* buffer, size_t size);
int SysChdir(const char* path);
DIR* SysOpendir(const char* path);
/// SysReaddir - the next entry, or null at the end (errno unchanged) or on
/// failure (errno set).
struct dirent* SysReaddir(DIR* dir);
int SysClosedir(DIR* dir);
int SysFlock(int fd, int operation);
int SysUtimens(const char* path, const struct timespec times[2]);
FILE* SysFdopen(int fd, const char* mode);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_FILE_SEAM_H
