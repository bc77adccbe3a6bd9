// Provides: the table of file-system calls and its per-thread fault hook.
#include "platform/file_seam.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace qx::platform {

namespace {

int OpenCall(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
int StatCall(const char* path, struct stat* st) { return ::stat(path, st); }
int FstatCall(int fd, struct stat* st) { return ::fstat(fd, st); }
int GetcwdCall(char* buffer, size_t size) { return ::getcwd(buffer, size) ? 0 : -1; }
int UtimensCall(const char* path, const struct timespec times[2]) {
  return ::utimensat(AT_FDCWD, path, times, 0);
}
int RenameCall(const char* from, const char* to, bool replace) {
  if (replace)
    return ::rename(from, to);
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
    return 0;
  if (errno != EINVAL && errno != ENOSYS)
    return -1;
  // A file system without RENAME_NOREPLACE: a hard link refuses an existing
  // target just as well, then the old name goes.
  if (::link(from, to) != 0)
    return -1;
  return ::unlink(from);
}

const FileSyscalls kDefaults = {
    OpenCall,    ::close,   ::read,     ::write,  ::pread,     ::pwrite,   ::lseek,
    ::ftruncate, FstatCall, StatCall,   ::unlink, RenameCall,  GetcwdCall, ::chdir,
    ::opendir,   ::readdir, ::closedir, ::flock,  UtimensCall, ::fdopen,   ::fdatasync,
};

FileSyscalls gCalls = kDefaults;

struct FaultHook {
  long calls = 0;
  long nth = 0;
  int error = 0;
  bool persistent = false;
};

thread_local FaultHook tHook;

enum class Verdict { kProceed, kFail, kShort };

// Consult - counts one call and says what the hook wants of it.
inline Verdict Consult() {
  FaultHook& h = tHook;
  ++h.calls;
  if (__builtin_expect(h.nth == 0, 1))
    return Verdict::kProceed;
  if (h.calls < h.nth || (!h.persistent && h.calls != h.nth))
    return Verdict::kProceed;
  if (h.error == 0)
    return Verdict::kShort;
  errno = h.error;
  return Verdict::kFail;
}

// Shorten - the byte count a short transfer moves.
inline size_t Shorten(size_t count) { return count >= 2 ? count / 2 : count; }

} // namespace

FileSyscalls& Syscalls() { return gCalls; }
const FileSyscalls& DefaultSyscalls() { return kDefaults; }

void FailFileCalls(long nth, int error, bool persistent) {
  tHook = FaultHook{};
  tHook.nth = nth > 0 ? nth : 0;
  tHook.error = error;
  tHook.persistent = persistent;
}

long FileCallCount() { return tHook.calls; }

// Call - one call through the hook and the table. An interrupted call
// (EINTR, from the kernel or the hook) is made again, a bounded number of
// times: nothing above the seam sees EINTR.
constexpr int kInterruptRetries = 100;

template <class R, class F> R Call(R failure, F call) {
  for (int tries = 0;; ++tries) {
    Verdict v = Consult();
    R r = v == Verdict::kFail ? failure : call(v == Verdict::kShort);
    if (r == failure && errno == EINTR && tries < kInterruptRetries)
      continue;
    return r;
  }
}

int SysOpen(const char* path, int flags, mode_t mode) {
  return Call(-1, [&](bool) { return gCalls.open(path, flags, mode); });
}
int SysClose(int fd) {
  // Never made again: the descriptor is released even when close fails.
  if (Consult() == Verdict::kFail) {
    ::close(fd);
    return -1;
  }
  return gCalls.close(fd);
}
ssize_t SysRead(int fd, void* buffer, size_t count) {
  return Call<ssize_t>(
      -1, [&](bool cut) { return gCalls.read(fd, buffer, cut ? Shorten(count) : count); });
}
ssize_t SysWrite(int fd, const void* buffer, size_t count) {
  return Call<ssize_t>(
      -1, [&](bool cut) { return gCalls.write(fd, buffer, cut ? Shorten(count) : count); });
}
ssize_t SysPread(int fd, void* buffer, size_t count, off_t offset) {
  return Call<ssize_t>(
      -1, [&](bool cut) { return gCalls.pread(fd, buffer, cut ? Shorten(count) : count, offset); });
}
ssize_t SysPwrite(int fd, const void* buffer, size_t count, off_t offset) {
  return Call<ssize_t>(-1, [&](bool cut) {
    return gCalls.pwrite(fd, buffer, cut ? Shorten(count) : count, offset);
  });
}
off_t SysLseek(int fd, off_t offset, int whence) {
  return Call<off_t>(-1, [&](bool) { return gCalls.lseek(fd, offset, whence); });
}
int SysFtruncate(int fd, off_t length) {
  return Call(-1, [&](bool) { return gCalls.ftruncate(fd, length); });
}
int SysFdatasync(int fd) {
  return Call(-1, [&](bool) { return gCalls.fdatasync(fd); });
}
int SysFstat(int fd, struct stat* st) {
  return Call(-1, [&](bool) { return gCalls.fstat(fd, st); });
}
int SysStat(const char* path, struct stat* st) {
  return Call(-1, [&](bool) { return gCalls.stat(path, st); });
}
int SysUnlink(const char* path) {
  return Call(-1, [&](bool) { return gCalls.unlink(path); });
}
int SysRename(const char* from, const char* to, bool replace) {
  return Call(-1, [&](bool) { return gCalls.rename(from, to, replace); });
}
int SysGetcwd(char* buffer, size_t size) {
  return Call(-1, [&](bool) { return gCalls.getcwd(buffer, size); });
}
int SysChdir(const char* path) {
  return Call(-1, [&](bool) { return gCalls.chdir(path); });
}
DIR* SysOpendir(const char* path) {
  return Call<DIR*>(nullptr, [&](bool) { return gCalls.opendir(path); });
}
struct dirent* SysReaddir(DIR* dir) {
  return Call<struct dirent*>(nullptr, [&](bool) { return gCalls.readdir(dir); });
}
int SysClosedir(DIR* dir) {
  if (Consult() == Verdict::kFail) {
    ::closedir(dir);
    return -1;
  }
  return gCalls.closedir(dir);
}
int SysFlock(int fd, int operation) {
  return Call(-1, [&](bool) { return gCalls.flock(fd, operation); });
}
int SysUtimens(const char* path, const struct timespec times[2]) {
  return Call(-1, [&](bool) { return gCalls.utimens(path, times); });
}
FILE* SysFdopen(int fd, const char* mode) {
  return Call<FILE*>(nullptr, [&](bool) { return gCalls.fdopen(fd, mode); });
}

} // namespace qx::platform
