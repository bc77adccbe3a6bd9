// Provides: FindFirstFileW, FindNextFileW, FindClose and the pattern rules of
// platform/file_find.h, over the file-system seam.
#include "platform/file_find.h"

#include "platform/file_path.h"
#include "platform/file_seam.h"
#include "platform/file_win.h"
#include "platform/unicode.h"
#include "platform/utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace qx::win {

using namespace qx::platform;

namespace {

struct Listed {
  std::wstring name;
  std::wstring upper;
  std::string kernel; // the entry's name as the kernel has it
};

// FindState - what a find handle points at: the directory and its matching
// entries in listing order.
struct FindState {
  static constexpr unsigned kMagic = 0x46494E44; // "FIND"
  unsigned magic = kMagic;
  std::string dir; // kernel name, ending in '/'
  std::vector<Listed> entries;
  size_t next = 0;
};

std::wstring Upper(const std::wstring& s) {
  std::wstring u(s);
  for (auto& c : u)
    c = CharToUpper(c);
  return u;
}

// Match - `p` against `n`, both upper-cased; "*" any run, "?" any one unit.
bool Match(const wchar_t* p, const wchar_t* pend, const wchar_t* n, const wchar_t* nend) {
  const wchar_t *star = nullptr, *resume = nullptr;
  while (n < nend) {
    if (p < pend && (*p == L'?' || *p == *n)) {
      ++p;
      ++n;
    } else if (p < pend && *p == L'*') {
      star = ++p;
      resume = n;
    } else if (star) {
      p = star;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pend && *p == L'*')
    ++p;
  return p == pend;
}

// MatchUpper - the pattern rules on an upper-cased pattern and name.
bool MatchUpper(const std::wstring& p, const std::wstring& n) {
  const wchar_t* pb = p.c_str();
  const wchar_t* nb = n.c_str();
  size_t pl = p.size(), nl = n.size();
  if (Match(pb, pb + pl, nb, nb + nl))
    return true;
  if (n.find(L'.') != std::wstring::npos)
    return false;
  if (pl >= 2 && p.compare(pl - 2, 2, L".*") == 0)
    return Match(pb, pb + pl - 2, nb, nb + nl);
  return pl >= 1 && p[pl - 1] == L'.' && Match(pb, pb + pl - 1, nb, nb + nl);
}

bool IsDotName(const char* n) { return n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)); }

void Fill(const FindState& s, const Listed& e, WIN32_FIND_DATAW* data) {
  std::memset(static_cast<void*>(data), 0, sizeof *data);
  size_t n = std::min<size_t>(e.name.size(), MAX_PATH - 1);
  std::wmemcpy(data->cFileName, e.name.data(), n);
  data->dwFileAttributes = FILE_ATTRIBUTE_NORMAL;
  struct stat st;
  char path[kKernelPathSize];
  if (s.dir.size() + e.kernel.size() >= sizeof path)
    return;
  std::memcpy(path, s.dir.data(), s.dir.size());
  std::memcpy(path + s.dir.size(), e.kernel.c_str(), e.kernel.size() + 1);
  if (SysStat(path, &st) != 0)
    return;
  DWORD a = 0;
  if (S_ISDIR(st.st_mode))
    a |= FILE_ATTRIBUTE_DIRECTORY;
  if ((st.st_mode & 0222) == 0)
    a |= FILE_ATTRIBUTE_READONLY;
  if (e.kernel[0] == '.' && !IsDotName(e.kernel.c_str()))
    a |= FILE_ATTRIBUTE_HIDDEN;
  data->dwFileAttributes = a ? a : FILE_ATTRIBUTE_NORMAL;
  WIN32_FILE_ATTRIBUTE_DATA status;
  FileDataFromStat(st, &status);
  data->ftCreationTime = status.ftCreationTime;
  data->ftLastAccessTime = status.ftLastAccessTime;
  data->ftLastWriteTime = status.ftLastWriteTime;
  data->nFileSizeHigh = status.nFileSizeHigh;
  data->nFileSizeLow = status.nFileSizeLow;
}

// OpenDirectory - the directory `dir` (a kernel name), found ignoring case
// when it does not exist as spelled; `dir` gets the spelling found.
DIR* OpenDirectory(std::string& dir) {
  DIR* d = SysOpendir(dir.empty() ? "." : dir.c_str());
  if (d || dir.empty() || (errno != ENOENT && errno != ENOTDIR))
    return d;
  char path[kKernelPathSize];
  if (dir.size() >= sizeof path)
    return nullptr;
  std::memcpy(path, dir.c_str(), dir.size() + 1);
  if (!ResolveCase(path, false))
    return nullptr;
  dir = path;
  return SysOpendir(dir.c_str());
}

FindState* List(LPCWSTR pattern) {
  // Split at the last separator: the directory, then the pattern.
  const wchar_t* last = pattern;
  for (const wchar_t* p = pattern; *p; ++p)
    if (*p == L'\\' || *p == L'/' || (p == pattern + 1 && *p == L':'))
      last = p + 1;
  std::wstring dirPart(pattern, static_cast<size_t>(last - pattern));
  std::wstring upperPattern = Upper(last);
  if (upperPattern.empty()) {
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
  }
  auto state = std::make_unique<FindState>();
  if (!dirPart.empty()) {
    char kernel[kKernelPathSize];
    if (!KernelPath(dirPart.c_str(), kernel)) {
      ::SetLastError(ERROR_PATH_NOT_FOUND);
      return nullptr;
    }
    state->dir = kernel;
    if (state->dir.back() != '/')
      state->dir += '/';
  }
  DIR* d = OpenDirectory(state->dir);
  if (!d) {
    ::SetLastError(ERROR_PATH_NOT_FOUND);
    return nullptr;
  }
  std::vector<Listed> dots;
  try {
    for (;;) {
      errno = 0;
      struct dirent* e = SysReaddir(d);
      if (!e)
        break;
      Listed item{Utf8ToWide(e->d_name), {}, e->d_name};
      item.upper = Upper(item.name);
      if (!MatchUpper(upperPattern, item.upper))
        continue;
      (IsDotName(e->d_name) ? dots : state->entries).push_back(std::move(item));
    }
  } catch (...) {
    SysClosedir(d);
    throw;
  }
  SysClosedir(d);
  std::sort(state->entries.begin(), state->entries.end(),
            [](const Listed& a, const Listed& b) { return a.upper < b.upper; });
  std::sort(dots.begin(), dots.end(),
            [](const Listed& a, const Listed& b) { return a.name.size() < b.name.size(); });
  state->entries.insert(state->entries.begin(), dots.begin(), dots.end());
  if (state->entries.empty()) {
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
  }
  return state.release();
}

FindState* StateOf(HANDLE find) {
  auto* s = static_cast<FindState*>(find);
  if (!find || find == INVALID_HANDLE_VALUE || s->magic != FindState::kMagic)
    return nullptr;
  return s;
}

} // namespace

bool MatchesPattern(LPCWSTR pattern, LPCWSTR name) {
  try {
    return pattern && name && MatchUpper(Upper(pattern), Upper(name));
  } catch (...) {
    return false;
  }
}

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) {
  if (!pattern || !data) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  try {
    FindState* s = List(pattern);
    if (!s)
      return INVALID_HANDLE_VALUE;
    Fill(*s, s->entries[s->next++], data);
    return s;
  } catch (...) {
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
  }
}

BOOL FindNextFileW(HANDLE find, WIN32_FIND_DATAW* data) {
  FindState* s = StateOf(find);
  if (!s || !data) {
    ::SetLastError(s ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    return FALSE;
  }
  if (s->next >= s->entries.size()) {
    ::SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
  }
  Fill(*s, s->entries[s->next++], data);
  return TRUE;
}

BOOL FindClose(HANDLE find) {
  FindState* s = StateOf(find);
  if (!s) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  s->magic = 0;
  delete s;
  return TRUE;
}

} // namespace qx::win
