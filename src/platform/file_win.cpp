// Provides: GetFileAttributesW, GetFileAttributesExW, MoveFileExW,
// GetKernelProcAddress, and positional reads and writes.
#include "platform/file_win.h"

#include "platform/file_crt.h"
#include "platform/file_path.h"
#include "platform/file_seam.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace qx::win {

using namespace qx::platform;

namespace {

// StatName - the kernel's status of `path`, looked up ignoring case when
// needed; sets the last error on failure.
bool StatName(LPCWSTR path, struct stat* st, const char** base) {
  static thread_local char name[kKernelPathSize];
  bool ok = KernelPath(path, name) && SysStat(name, st) == 0;
  if (!ok && (errno == ENOENT || errno == ENOTDIR)) {
    int saved = errno;
    ok = ResolveCase(name, false) && SysStat(name, st) == 0;
    if (!ok)
      errno = saved;
  }
  if (!ok) {
    ::SetLastError(errno == ENOTDIR  ? ERROR_PATH_NOT_FOUND
                   : errno == ENOENT ? ERROR_FILE_NOT_FOUND
                                     : ERROR_ACCESS_DENIED);
    return false;
  }
  const char* slash = std::strrchr(name, '/');
  *base = slash ? slash + 1 : name;
  return true;
}

DWORD AttributesOf(const struct stat& st, const char* base) {
  DWORD a = S_ISDIR(st.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  if ((st.st_mode & 0222) == 0)
    a |= FILE_ATTRIBUTE_READONLY;
  if (base[0] == '.' && base[1] != 0 && !(base[1] == '.' && base[2] == 0))
    a |= FILE_ATTRIBUTE_HIDDEN;
  return a;
}

} // namespace

DWORD GetFileAttributesW(LPCWSTR path) {
  struct stat st;
  const char* base = nullptr;
  if (!StatName(path, &st, &base))
    return INVALID_FILE_ATTRIBUTES;
  return AttributesOf(st, base);
}

BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID info) {
  if (level != GetFileExInfoStandard || !info) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  struct stat st;
  const char* base = nullptr;
  if (!StatName(path, &st, &base))
    return FALSE;
  auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(info);
  data->dwFileAttributes = AttributesOf(st, base);
  FileDataFromStat(st, data);
  return TRUE;
}

BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  if (!(flags & MOVEFILE_REPLACE_EXISTING)) {
    if (qx::crt::_wrename(from, to) == 0)
      return TRUE;
    ::SetLastError(errno == qx::crt::kErrNoEnt ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED);
    return FALSE;
  }
  char source[kKernelPathSize], target[kKernelPathSize];
  bool ok = KernelPath(from, source) && KernelPath(to, target);
  if (ok && SysRename(source, target, true) != 0) {
    ok = false;
    if (errno == ENOENT || errno == ENOTDIR) {
      // Either name may be spelled in another case than on disk.
      ok = ResolveCase(source, false) && ResolveCase(target, true) &&
           SysRename(source, target, true) == 0;
    }
  }
  if (!ok) {
    ::SetLastError(errno == ENOENT    ? ERROR_FILE_NOT_FOUND
                   : errno == ENOTDIR ? ERROR_PATH_NOT_FOUND
                                      : ERROR_ACCESS_DENIED);
    return FALSE;
  }
  return TRUE;
}

FARPROC GetKernelProcAddress(LPCSTR name) {
  if (name && std::strcmp(name, "GetFileAttributesExW") == 0)
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&GetFileAttributesExW));
  ::SetLastError(ERROR_PROC_NOT_FOUND);
  return nullptr;
}

} // namespace qx::win

void qx::platform::FileDataFromStat(const struct stat& st, WIN32_FILE_ATTRIBUTE_DATA* data) {
  data->ftCreationTime = FileTimeFromUnix(st.st_ctim.tv_sec, st.st_ctim.tv_nsec);
  data->ftLastAccessTime = FileTimeFromUnix(st.st_atim.tv_sec, st.st_atim.tv_nsec);
  data->ftLastWriteTime = FileTimeFromUnix(st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
  unsigned long long size = S_ISDIR(st.st_mode) ? 0 : static_cast<unsigned long long>(st.st_size);
  data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
  data->nFileSizeLow = static_cast<DWORD>(size);
}

namespace qx::platform {

long ReadAt(int fd, void* buffer, size_t count, long long offset) {
  size_t done = 0;
  while (done < count) {
    ssize_t r = SysPread(fd, static_cast<char*>(buffer) + done, count - done,
                         static_cast<off_t>(offset + static_cast<long long>(done)));
    if (r < 0) {
      errno = qx::crt::WindowsErrno(errno);
      return done ? static_cast<long>(done) : -1;
    }
    if (r == 0)
      break;
    done += static_cast<size_t>(r);
  }
  return static_cast<long>(done);
}

long WriteAt(int fd, const void* buffer, size_t count, long long offset) {
  size_t done = 0;
  while (done < count) {
    ssize_t r = SysPwrite(fd, static_cast<const char*>(buffer) + done, count - done,
                          static_cast<off_t>(offset + static_cast<long long>(done)));
    if (r <= 0) {
      errno = qx::crt::WindowsErrno(r == 0 ? ENOSPC : errno);
      return done ? static_cast<long>(done) : -1;
    }
    done += static_cast<size_t>(r);
  }
  return static_cast<long>(done);
}

FILETIME FileTimeFromUnix(long long seconds, long nanoseconds) {
  constexpr long long kEpochDifference = 11644473600LL; // 1601 to 1970, in seconds
  unsigned long long ticks =
      static_cast<unsigned long long>(seconds + kEpochDifference) * 10000000ULL +
      static_cast<unsigned long long>(nanoseconds / 100);
  return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

} // namespace qx::platform
