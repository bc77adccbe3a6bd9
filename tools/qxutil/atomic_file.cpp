// Provides: the temporary-file-and-rename output of atomic_file.h.
#include "atomic_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qxcli {
namespace {

// SyncDirectory - makes a rename in the directory of `path` durable (best
// effort: some file systems cannot sync a directory).
void SyncDirectory(const std::string& path) {
  size_t slash = path.rfind('/');
  std::string dir = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
  int fd = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd >= 0) {
    fsync(fd);
    close(fd);
  }
}

} // namespace

AtomicFile::~AtomicFile() { Abandon(); }

bool AtomicFile::Open(const char* path) {
  if (!path || !std::strcmp(path, "-")) {
    fd_ = STDOUT_FILENO;
    return true;
  }
  path_ = path;
  struct stat target;
  if (stat(path, &target) == 0 && (S_ISCHR(target.st_mode) || S_ISFIFO(target.st_mode))) {
    // A device or a pipe (/dev/null, a FIFO) cannot be replaced: it is written as it comes.
    direct_ = true;
    fd_ = open(path, O_WRONLY | O_CLOEXEC);
    return fd_ >= 0;
  }
  temp_ = path_ + ".qxutil-XXXXXX";
  fd_ = mkstemp(temp_.data());
  if (fd_ < 0)
    return false;
  fcntl(fd_, F_SETFD, FD_CLOEXEC);
  struct stat st;
  mode_t mode;
  if (stat(path, &st) == 0) {
    mode = st.st_mode & 07777;
  } else {
    mode_t mask = umask(0);
    umask(mask);
    mode = 0666 & ~mask;
  }
  fchmod(fd_, mode);
  return true;
}

bool AtomicFile::Write(const void* data, size_t n) {
  const char* p = static_cast<const char*>(data);
  while (n > 0) {
    ssize_t done = write(fd_, p, n);
    if (done < 0 && errno == EINTR)
      continue;
    if (done <= 0) {
      if (done == 0)
        errno = EIO;
      return false;
    }
    p += done;
    n -= static_cast<size_t>(done);
  }
  return true;
}

bool AtomicFile::Commit() {
  if (path_.empty())
    return true;
  if (fd_ < 0) {
    errno = EBADF;
    return false;
  }
  if (direct_) {
    bool closed = close(fd_) == 0;
    fd_ = -1;
    return closed;
  }
  bool ok = fsync(fd_) == 0;
  int error = errno;
  if (close(fd_) != 0 && ok) {
    ok = false;
    error = errno;
  }
  fd_ = -1;
  if (ok && rename(temp_.c_str(), path_.c_str()) == 0) {
    SyncDirectory(path_);
    return true;
  }
  if (ok)
    error = errno;
  unlink(temp_.c_str());
  errno = error;
  return false;
}

void AtomicFile::Abandon() {
  if (path_.empty() || fd_ < 0)
    return;
  int error = errno;
  close(fd_);
  fd_ = -1;
  if (!direct_)
    unlink(temp_.c_str());
  errno = error;
}

} // namespace qxcli
