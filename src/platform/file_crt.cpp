// Provides: the Microsoft C runtime's file calls (_wsopen, _read, _write,
// _lseek, _chsize, _close, _wremove, _wrename, _waccess, _wstat32,
// _wgetdcwd, _wchdir, _wutime, _wfdopen) over the file-system seam.
#include "platform/file_crt.h"

#include "platform/file_path.h"
#include "platform/file_seam.h"
#include "platform/utf8.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

// glibc's st_mtime and relatives are macros; the record _stat32 uses the names.
#undef st_atime
#undef st_mtime
#undef st_ctime

namespace qx::crt {

using namespace qx::platform;

namespace {

// Fail - turns the kernel's errno into the runtime's and returns -1.
int Fail() {
  errno = WindowsErrno(errno);
  return -1;
}

int FailWith(int windowsErrno) {
  errno = windowsErrno;
  return -1;
}

// WithName - makes `call` with the kernel name of `path`; when that fails
// because a component does not exist as spelled, makes it once more with
// the name resolved ignoring case. The result and errno are the kernel's,
// or ENOMEM when the lookup ignoring case could not get its memory.
template <class Call> int WithName(const wchar_t* path, Call call) {
  char name[kKernelPathSize];
  if (!KernelPath(path, name))
    return -1;
  int r = call(name);
  if (r >= 0 || (errno != ENOENT && errno != ENOTDIR))
    return r;
  int saved = errno;
  if (!ResolveCase(name, false)) {
    if (errno != ENOMEM)
      errno = saved; // no case variant either: the first answer stands
    return -1;
  }
  return call(name);
}

bool ReadOnlyMode(mode_t mode) { return (mode & 0222) == 0; }

// LockedElsewhere - whether another descriptor holds a share lock on the
// file `name` (the test takes and drops an exclusive lock).
bool LockedElsewhere(const char* name) {
  int fd = SysOpen(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0);
  if (fd < 0)
    return false;
  bool locked = SysFlock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  SysClose(fd);
  return locked;
}

} // namespace

int WindowsErrno(int e) {
  switch (e) {
  case ENAMETOOLONG:
    return kErrNameTooLong;
  case EDEADLK:
    return 36;
  case ENOLCK:
    return 39;
  case ENOSYS:
    return 40;
  case ENOTEMPTY:
    return 41;
  case EILSEQ:
    return 42;
  case ELOOP:
    return kErrNoEnt;
  case EOVERFLOW:
    return kErrOverflow;
  case EDQUOT:
    return kErrNoSpc;
  case EISDIR:
    return kErrAcces;
  case EOPNOTSUPP:
    return 130;
  case ESTALE:
  case ENOTCONN:
  case ENETDOWN:
  case ENETUNREACH:
  case ENETRESET:
  case ECONNABORTED:
  case ECONNRESET:
  case EHOSTDOWN:
  case EHOSTUNREACH:
  case ETIMEDOUT:
  case EREMOTEIO:
  case ENOLINK:
  case ECOMM:
    return kErrNetNameDeleted;
  default:
    return e >= 1 && e <= 34 ? e : kErrIo;
  }
}

int _wsopen(const wchar_t* path, int oflag, int shflag, int pmode) {
  int access = oflag & (_O_WRONLY | _O_RDWR);
  if (access == (_O_WRONLY | _O_RDWR) || (shflag != _SH_DENYRW && shflag != _SH_DENYWR &&
                                          shflag != _SH_DENYRD && shflag != _SH_DENYNO))
    return FailWith(kErrInval);
  int flags = O_CLOEXEC | (access == _O_RDWR ? O_RDWR : access == _O_WRONLY ? O_WRONLY : O_RDONLY);
  if (oflag & _O_APPEND)
    flags |= O_APPEND;
  bool create = (oflag & _O_CREAT) != 0;
  char name[kKernelPathSize];
  if (!KernelPath(path, name))
    return Fail();
  // An existing file first, as spelled: no case lookup, no creation of a
  // second spelling beside an existing case variant.
  bool created = false;
  int fd = SysOpen(name, flags, 0);
  if (fd < 0 && (errno == ENOENT || errno == ENOTDIR)) {
    int saved = errno;
    if (!ResolveCase(name, create)) {
      if (errno == ENOENT)
        errno = saved;
      return Fail();
    }
    fd = SysOpen(name, flags, 0);
    if (fd < 0 && errno == ENOENT && create) {
      fd = SysOpen(name, flags | O_CREAT | O_EXCL, (pmode & _S_IWRITE) ? 0666 : 0444);
      if (fd >= 0)
        created = true;
      else if (errno == EEXIST) // made by someone else meanwhile
        fd = SysOpen(name, flags, 0);
    }
  }
  if (fd < 0)
    return Fail();
  if (create && (oflag & _O_EXCL) && !created) {
    SysClose(fd);
    return FailWith(kErrExist);
  }
  struct stat st;
  if (SysFstat(fd, &st) != 0) {
    int e = errno;
    SysClose(fd);
    errno = e;
    return Fail();
  }
  if (S_ISDIR(st.st_mode) || (access != 0 && !created && ReadOnlyMode(st.st_mode))) {
    SysClose(fd);
    return FailWith(kErrAcces);
  }
  if (shflag != _SH_DENYNO) {
    int op = (shflag == _SH_DENYWR ? LOCK_SH : LOCK_EX) | LOCK_NB;
    if (SysFlock(fd, op) != 0) {
      int e = errno;
      SysClose(fd);
      return e == EWOULDBLOCK ? FailWith(kErrAcces) : (errno = e, Fail());
    }
  }
  if ((oflag & _O_TRUNC) && !created && access != 0 && st.st_size != 0) {
    if (SysFtruncate(fd, 0) != 0) {
      int e = errno;
      SysClose(fd);
      errno = e;
      return Fail();
    }
  }
  return fd;
}

int _read(int fd, void* buffer, unsigned int count) {
  if (count > INT_MAX || (!buffer && count))
    return FailWith(kErrInval);
  unsigned int done = 0;
  while (done < count) {
    ssize_t r = SysRead(fd, static_cast<char*>(buffer) + done, count - done);
    if (r < 0) {
      if (done)
        break;
      return Fail();
    }
    if (r == 0)
      break;
    done += static_cast<unsigned int>(r);
  }
  return static_cast<int>(done);
}

int _write(int fd, const void* buffer, unsigned int count) {
  if (count > INT_MAX || (!buffer && count))
    return FailWith(kErrInval);
  unsigned int done = 0;
  while (done < count) {
    ssize_t r = SysWrite(fd, static_cast<const char*>(buffer) + done, count - done);
    if (r <= 0) {
      if (r == 0)
        errno = ENOSPC;
      int e = WindowsErrno(errno);
      errno = e;
      return done ? static_cast<int>(done) : -1;
    }
    done += static_cast<unsigned int>(r);
  }
  return static_cast<int>(done);
}

long _lseek(int fd, long offset, int origin) {
  if (origin < 0 || origin > 2 || offset > INT32_MAX || offset < INT32_MIN)
    return FailWith(kErrInval);
  static constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  off_t r = SysLseek(fd, offset, kWhence[origin]);
  if (r < 0)
    return Fail();
  if (r > INT32_MAX)
    return FailWith(kErrInval);
  return static_cast<long>(r);
}

int _chsize(int fd, long size) {
  if (size < 0 || size > INT32_MAX)
    return FailWith(kErrInval);
  if (SysFtruncate(fd, size) != 0)
    return errno == EINVAL ? FailWith(kErrAcces) : Fail();
  return 0;
}

int _commit(int fd) { return SysFdatasync(fd) == 0 ? 0 : Fail(); }

int _close(int fd) { return SysClose(fd) == 0 ? 0 : Fail(); }

int _wremove(const wchar_t* path) {
  int r = WithName(path, [](const char* name) {
    struct stat st;
    if (SysStat(name, &st) != 0)
      return -1;
    if (S_ISDIR(st.st_mode) || ReadOnlyMode(st.st_mode) || LockedElsewhere(name)) {
      errno = EACCES;
      return -2; // refused: no case lookup
    }
    return SysUnlink(name);
  });
  return r == 0 ? 0 : Fail();
}

int _wrename(const wchar_t* oldname, const wchar_t* newname) {
  char from[kKernelPathSize];
  int r = WithName(oldname, [&from](const char* name) {
    struct stat st;
    if (SysStat(name, &st) != 0)
      return -1;
    std::strcpy(from, name);
    return 0;
  });
  if (r != 0)
    return Fail();
  char to[kKernelPathSize], given[kKernelPathSize];
  if (!KernelPath(newname, to))
    return Fail();
  std::strcpy(given, to);
  if (!ResolveCase(to, true))
    return Fail();
  if (std::strcmp(to, from) == 0) {
    // A change of case only: the entry found is the file itself; keep the
    // resolved directories and the spelling asked for.
    const char* last = std::strrchr(given, '/');
    char* slot = std::strrchr(to, '/');
    last = last ? last + 1 : given;
    slot = slot ? slot + 1 : to;
    if (static_cast<size_t>(slot - to) + std::strlen(last) >= kKernelPathSize)
      return FailWith(kErrNameTooLong);
    std::strcpy(slot, last);
    if (std::strcmp(to, from) == 0)
      return 0;
  }
  struct stat st;
  if (SysStat(from, &st) == 0 && !S_ISDIR(st.st_mode) && LockedElsewhere(from))
    return FailWith(kErrAcces);
  bool caseOnly = SameIgnoringCase(from, to);
  if (SysRename(from, to, false) != 0) {
    if (errno == EEXIST && caseOnly)
      return SysRename(from, to, true) == 0 ? 0 : Fail();
    return errno == EEXIST ? FailWith(kErrAcces) : Fail();
  }
  return 0;
}

int _waccess(const wchar_t* path, int mode) {
  if (mode != 0 && mode != 2 && mode != 4 && mode != 6)
    return FailWith(kErrInval);
  struct stat st;
  int r = WithName(path, [&st](const char* name) { return SysStat(name, &st); });
  if (r != 0)
    return Fail();
  if ((mode & 2) && !S_ISDIR(st.st_mode) && ReadOnlyMode(st.st_mode))
    return FailWith(kErrAcces);
  return 0;
}

int _wstat32(const wchar_t* path, struct _stat32* out) {
  if (!out)
    return FailWith(kErrInval);
  struct stat st;
  int r = WithName(path, [&st](const char* name) { return SysStat(name, &st); });
  if (r != 0)
    return Fail();
  if (st.st_size > INT32_MAX || st.st_mtim.tv_sec > INT32_MAX || st.st_atim.tv_sec > INT32_MAX ||
      st.st_ctim.tv_sec > INT32_MAX)
    return FailWith(kErrOverflow);
  std::memset(out, 0, sizeof *out);
  unsigned mode = S_ISDIR(st.st_mode) ? _S_IFDIR : _S_IFREG;
  unsigned user = _S_IREAD;
  if (!ReadOnlyMode(st.st_mode))
    user |= _S_IWRITE;
  if (S_ISDIR(st.st_mode) || (st.st_mode & 0111))
    user |= _S_IEXEC;
  mode |= user | (user >> 3) | (user >> 6);
  out->st_mode = static_cast<uint16_t>(mode);
  out->st_dev = out->st_rdev = 2;
  out->st_nlink = 1;
  out->st_size = static_cast<int32_t>(st.st_size);
  out->st_atime = static_cast<__time32_t>(st.st_atim.tv_sec);
  out->st_mtime = static_cast<__time32_t>(st.st_mtim.tv_sec);
  out->st_ctime = static_cast<__time32_t>(st.st_ctim.tv_sec);
  return 0;
}

wchar_t* _wgetdcwd(int drive, wchar_t* buffer, int maxlen) {
  if (drive < 0 || drive > 26) {
    errno = kErrAcces;
    return nullptr;
  }
  if (maxlen <= 0 && buffer) {
    errno = kErrInval;
    return nullptr;
  }
  char cwd[kKernelPathSize];
  if (SysGetcwd(cwd, sizeof cwd) != 0) {
    Fail();
    return nullptr;
  }
  // Decoded into a fixed buffer: the directory never depends on the heap.
  wchar_t wide[kKernelPathSize + 1];
  Utf8Decoder decoder;
  const size_t units = decoder.Decode(cwd, std::strlen(cwd), true, wide);
  size_t need = 2 + units + 1;
  if (!buffer) {
    size_t room = need > static_cast<size_t>(maxlen > 0 ? maxlen : 0) ? need : maxlen;
    buffer = static_cast<wchar_t*>(std::malloc(room * sizeof(wchar_t)));
    if (!buffer) {
      errno = kErrNoMem;
      return nullptr;
    }
  } else if (need > static_cast<size_t>(maxlen)) {
    errno = kErrRange;
    return nullptr;
  }
  buffer[0] = static_cast<wchar_t>(drive == 0 ? L'C' : L'A' + drive - 1);
  buffer[1] = L':';
  for (size_t i = 0; i < units; ++i)
    buffer[2 + i] = wide[i] == L'/' ? L'\\' : wide[i];
  buffer[2 + units] = 0;
  return buffer;
}

int _wchdir(const wchar_t* path) {
  return WithName(path, [](const char* name) { return SysChdir(name); }) == 0 ? 0 : Fail();
}

int _wutime(const wchar_t* path, const void* times) {
  if (times)
    return FailWith(kErrInval);
  int r = WithName(path, [](const char* name) { return SysUtimens(name, nullptr); });
  return r == 0 ? 0 : Fail();
}

FILE* _wfdopen(int fd, const wchar_t* mode) {
  char narrow[8];
  size_t i = 0;
  for (; mode && mode[i] && i + 1 < sizeof narrow; ++i) {
    if (mode[i] > 0x7F) {
      errno = kErrInval;
      return nullptr;
    }
    narrow[i] = static_cast<char>(mode[i]);
  }
  narrow[i] = 0;
  if (i == 0) {
    errno = kErrInval;
    return nullptr;
  }
  FILE* f = SysFdopen(fd, narrow);
  if (!f)
    Fail();
  return f;
}

const unsigned char* StreamReadAhead(FILE* f, size_t* count) {
#ifdef __GLIBC__
  if (f->_IO_read_ptr && f->_IO_read_end > f->_IO_read_ptr) {
    *count = static_cast<size_t>(f->_IO_read_end - f->_IO_read_ptr);
    return reinterpret_cast<const unsigned char*>(f->_IO_read_ptr);
  }
#else
  (void)f;
#endif
  *count = 0;
  return nullptr;
}

void StreamSkip(FILE* f, size_t count) {
#ifdef __GLIBC__
  f->_IO_read_ptr += count;
#else
  while (count--)
    getc_unlocked(f);
#endif
}

} // namespace qx::crt
