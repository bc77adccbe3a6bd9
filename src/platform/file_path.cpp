// Provides: kernel names for Windows-shaped wide names, and the
// case-insensitive lookup of names.
#include "platform/file_path.h"

#include "platform/file_seam.h"
#include "platform/unicode.h"
#include "platform/utf8.h"

#include <cerrno>
#include <cstring>
#include <cwchar>
#include <new>

namespace qx::platform {

namespace {

inline bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

// kNameUnits - room for one component decoded and upper-cased.
constexpr size_t kNameUnits = 1024;

// UpperName - the UTF-8 name `s` of `n` bytes decoded and upper-cased into
// `out`; the units written, or kNameUnits when it does not fit.
size_t UpperName(const char* s, size_t n, wchar_t* out) {
  if (Utf8Decoder::MaxUnits(n) > kNameUnits)
    return kNameUnits;
  Utf8Decoder decoder;
  size_t units = decoder.Decode(s, n, true, out);
  for (size_t i = 0; i < units; ++i)
    out[i] = CharToUpper(out[i]);
  return units;
}

// Component - one name of a path being resolved, upper-cased once.
struct Component {
  wchar_t upper[kNameUnits];
  size_t units;
  bool Matches(const char* name) const {
    wchar_t other[kNameUnits];
    size_t n = UpperName(name, std::strlen(name), other);
    return n == units && n < kNameUnits && std::wmemcmp(other, upper, n) == 0;
  }
};

// FindEntry - the entry of directory `dir` that `name` (of `len` bytes)
// stands for, copied into `found`: the exact spelling, else the first case
// variant in byte order. 1 found, 0 none, -1 the directory could not be read.
int FindEntry(const char* dir, const char* name, size_t len, char* found, size_t room) {
  DIR* d = SysOpendir(dir);
  if (!d)
    return -1;
  auto wanted = new (std::nothrow) Component;
  if (!wanted) {
    SysClosedir(d);
    errno = ENOMEM;
    return -1;
  }
  wanted->units = UpperName(name, len, wanted->upper);
  int result = 0;
  for (;;) {
    errno = 0;
    struct dirent* e = SysReaddir(d);
    if (!e) {
      if (errno != 0)
        result = -1;
      break;
    }
    size_t elen = std::strlen(e->d_name);
    if (elen == len && std::memcmp(e->d_name, name, len) == 0) {
      std::memcpy(found, name, len);
      found[len] = 0;
      result = 1;
      break;
    }
    if (elen >= room || !wanted->Matches(e->d_name))
      continue;
    if (result == 0 || std::strcmp(e->d_name, found) < 0) {
      std::memcpy(found, e->d_name, elen + 1);
      result = 1;
    }
  }
  int saved = errno;
  SysClosedir(d);
  errno = saved;
  delete wanted;
  return result;
}

} // namespace

bool KernelPath(const wchar_t* path, char* out) {
  if (!path || !*path) {
    errno = ENOENT;
    return false;
  }
  const wchar_t* p = path;
  if (((p[0] >= L'A' && p[0] <= L'Z') || (p[0] >= L'a' && p[0] <= L'z')) && p[1] == L':')
    p += 2; // every drive is the root
  size_t n = std::wcslen(p);
  if (Utf8Encoder::MaxBytes(n) >= kKernelPathSize) {
    errno = ENAMETOOLONG;
    return false;
  }
  Utf8Encoder encoder;
  size_t bytes = 0;
  // Encode in runs between separators so that each separator is written '/'.
  const wchar_t* run = p;
  for (const wchar_t* q = p;; ++q) {
    if (*q == 0 || IsSeparator(*q)) {
      bytes += encoder.Encode(run, static_cast<size_t>(q - run), true, out + bytes);
      if (*q == 0)
        break;
      out[bytes++] = '/';
      run = q + 1;
    }
  }
  out[bytes] = 0;
  return true;
}

bool SameIgnoringCase(const char* a, const char* b) {
  auto ca = new (std::nothrow) Component;
  if (!ca)
    return std::strcmp(a, b) == 0;
  ca->units = UpperName(a, std::strlen(a), ca->upper);
  bool same = ca->units < kNameUnits && ca->Matches(b);
  delete ca;
  return same;
}

bool ResolveCase(char* path, bool lastMayBeNew) {
  char* out = new (std::nothrow) char[kKernelPathSize];
  if (!out) {
    errno = ENOMEM;
    return false;
  }
  size_t n = 0;
  const char* p = path;
  while (*p == '/')
    out[n++] = *p++;
  bool ok = true;
  while (*p) {
    const char* start = p;
    while (*p && *p != '/')
      ++p;
    size_t len = static_cast<size_t>(p - start);
    const char* after = p;
    while (*after == '/')
      ++after;
    bool last = *after == 0;
    bool dots = (len == 1 && start[0] == '.') || (len == 2 && start[0] == '.' && start[1] == '.');
    if (dots) {
      std::memcpy(out + n, start, len);
      n += len;
    } else {
      out[n] = 0;
      const char* dir = n == 0 ? "." : out;
      char name[kKernelPathSize];
      int found = FindEntry(dir, start, len, name, sizeof name);
      if (found < 0) {
        ok = false;
        break;
      }
      if (found == 0) {
        if (!(last && lastMayBeNew)) {
          errno = ENOENT;
          ok = false;
          break;
        }
        std::memcpy(name, start, len);
        name[len] = 0;
      }
      size_t nlen = std::strlen(name);
      if (n + nlen + (after - p) >= kKernelPathSize) {
        errno = ENAMETOOLONG;
        ok = false;
        break;
      }
      std::memcpy(out + n, name, nlen);
      n += nlen;
    }
    while (p < after)
      out[n++] = *p++;
  }
  if (ok) {
    out[n] = 0;
    std::memcpy(path, out, n + 1);
  }
  delete[] out;
  return ok;
}

} // namespace qx::platform
