//===- files/file_search.cpp - Directory listings and the search for a file -===//
//
// FileFindFirst/Next/Close filter the platform's directory listing by
// attributes; FindFileInfo looks for a name in a list of directories and,
// depth first, in their subdirectories, in listing order. Candidates are
// tested as files of any type (FILETYPE_ANY), so no extension is forced on
// the name looked for.
//
//===----------------------------------------------------------------------===//
#include "files/names.h"
#include "platform/file_find.h"
#include "qxutil/files.h"

#include <cerrno>
#include <cwchar>
#include <new>

namespace {

constexpr unsigned int kListUnits = 1024; // the directory list, terminator included

bool Matches(const FILEFIND* f) {
  unsigned long attributes = f->data.dwFileAttributes;
  if (attributes == 0)
    attributes = FILE_ATTRIBUTE_NORMAL;
  return (attributes & f->mask) != 0;
}

void TakeName(FILEFIND* f) { strcpyn(f->name, f->data.cFileName, 260); }

class FindFileInfoImpl final : public FindFileInfo {
public:
  FindFileInfoImpl(const wchar_t* directories, bool searchDirectories)
      : searchDirectories_(searchDirectories) {
    strcpyn(list_, directories ? directories : L"", kListUnits);
  }
  bool Find(const wchar_t* name, wchar_t* result, unsigned int resultSize) override;

private:
  enum Outcome { kNotFound, kFound, kOutOfMemory };
  Outcome SearchTree(const wchar_t* dir, const wchar_t* name, wchar_t* result,
                     unsigned int resultSize);

  bool searchDirectories_;
  wchar_t list_[kListUnits];
};

// Join - `dir`, a backslash unless it ends with a separator, and `name`
// into `out` of kPathUnits; false when it does not fit.
bool Join(const wchar_t* dir, const wchar_t* name, wchar_t* out) {
  size_t d = std::wcslen(dir), n = std::wcslen(name);
  bool slash = d > 0 && (dir[d - 1] == L'\\' || dir[d - 1] == L'/');
  size_t total = d + (slash ? 0 : 1) + n;
  if (total >= qx::files::kPathUnits)
    return false;
  std::wmemcpy(out, dir, d);
  if (!slash)
    out[d++] = L'\\';
  std::wmemcpy(out + d, name, n + 1);
  return true;
}

// SearchTree - depth first from `dir`. A listing that fails for want of
// memory ends the whole search: skipping the subtree could find a later
// file in place of the first.
FindFileInfoImpl::Outcome FindFileInfoImpl::SearchTree(const wchar_t* dir, const wchar_t* name,
                                                       wchar_t* result, unsigned int resultSize) {
  wchar_t candidate[qx::files::kPathUnits];
  errno = 0;
  if (Join(dir, name, candidate) && file_exists_anycase(candidate, FILETYPE_ANY)) {
    if (std::wcslen(candidate) + 1 >= resultSize)
      return kNotFound; // does not fit: this tree's search ends
    strcpyn(result, candidate, resultSize);
    return kFound;
  }
  if (errno == ENOMEM)
    return kOutOfMemory; // a case variant may be there: the answer is unknown
  wchar_t pattern[qx::files::kPathUnits];
  if (!Join(dir, L"*", pattern))
    return kNotFound;
  FILEFIND f{};
  if (!FileFindFirst(pattern, FILE_ATTRIBUTE_DIRECTORY, &f))
    return GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? kOutOfMemory : kNotFound;
  Outcome outcome = kNotFound;
  wchar_t sub[qx::files::kPathUnits];
  for (int more = 1; more && outcome == kNotFound; more = FileFindNext(&f)) {
    if (!f.name[0] || !Matches(&f) || !std::wcscmp(f.name, L".") || !std::wcscmp(f.name, L".."))
      continue;
    if (Join(dir, f.name, sub))
      outcome = SearchTree(sub, name, result, resultSize);
  }
  FileFindClose(&f);
  return outcome;
}

bool FindFileInfoImpl::Find(const wchar_t* name, wchar_t* result, unsigned int resultSize) {
  if (!name || !result || resultSize == 0)
    return false;
  errno = 0;
  if (file_exists_anycase(name, FILETYPE_ANY)) {
    strcpyn(result, name, resultSize);
    return true;
  }
  if (errno == ENOMEM)
    return false;
  if (!searchDirectories_)
    return false;
  wchar_t path[qx::files::kPathUnits], file[qx::files::kPathUnits];
  strcpyn(path, name, qx::files::kPathUnits);
  file[0] = 0;
  splitfilename(path, file);
  if (!file[0])
    return false;
  wchar_t list[kListUnits];
  std::wmemcpy(list, list_, kListUnits);
  wchar_t* next = list;
  while (next) {
    wchar_t* dir = next;
    next = std::wcschr(dir, L';');
    if (next)
      *next++ = 0;
    Outcome outcome = dir[0] ? SearchTree(dir, file, result, resultSize) : kNotFound;
    if (outcome != kNotFound)
      return outcome == kFound;
  }
  return false;
}

} // namespace

int FileFindFirst(wchar_t* pattern, unsigned long mask, FILEFIND* f) {
  if (!f)
    return 0;
  f->mask = mask;
  f->handle = qx::win::FindFirstFileW(pattern, &f->data);
  if (f->handle == INVALID_HANDLE_VALUE)
    return 0;
  if (Matches(f))
    TakeName(f);
  else
    FileFindNext(f);
  return 1;
}

int FileFindNext(FILEFIND* f) {
  if (!f)
    return 0;
  while (qx::win::FindNextFileW(f->handle, &f->data))
    if (Matches(f)) {
      TakeName(f);
      return 1;
    }
  return 0;
}

int FileFindClose(FILEFIND* f) { return f && qx::win::FindClose(f->handle) ? 1 : 0; }

FindFileInfo::~FindFileInfo() {}

FindFileInfo* FindFileInfo::Create(const wchar_t* directories, bool searchDirectories) {
  return new (std::nothrow) FindFileInfoImpl(directories, searchDirectories);
}
