//===- files/file_ops.cpp - Removing, renaming, copying, times, names -----===//
//
// Operations on a registered file as a whole. Each first closes the system
// file (writing its cached blocks), so it acts on what the caller wrote.
// Group removal and copying never leave a half-done result: removal renames
// every file aside before deleting any, and a copy is written beside its
// target, written through to the device, and then put in its place in one
// step, so that even a machine that stops leaves the old target or the new.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "platform/file_crt.h"
#include "platform/file_win.h"

#include <cwchar>

namespace qx::files {

using namespace qx::crt;

namespace {

// DropBlocks - forgets the cached blocks of a file that is gone or was
// replaced on disk.
void DropBlocks(int handle) {
  if (cFileCache* cache = cFileCache::Instance())
    cache->FlushAndDrop(handle);
}

constexpr unsigned int kCopyChunk = 64 * 1024;

} // namespace

bool cFileSystemImpl::Remove(int handle) {
  FileEntry* e = Entry(handle);
  if (!e || !ReallyClose(handle))
    return false;
  wchar_t path[kPathUnits];
  FullPath(e, path);
  if (_wremove(path) != 0)
    return false;
  DropBlocks(handle);
  return true;
}

bool cFileSystemImpl::GroupRemove(int* handles, int count) {
  if (count <= 0)
    return count == 0;
  if (!handles)
    return false;
  struct Aside {
    wchar_t path[kPathUnits];
    wchar_t temp[kPathUnits];
  };
  Aside* aside = nullptr;
  if (!falloc_(static_cast<unsigned int>(count) * sizeof(Aside), &aside, false, true))
    return false;
  int done = 0;
  for (; done < count; ++done) {
    FileEntry* e = Entry(handles[done]);
    if (!e || !ReallyClose(handles[done]))
      break;
    Aside& a = aside[done];
    FullPath(e, a.path);
    if (!TempName(a.temp, e->name->Dir()) || RenameByName(a.path, a.temp) != 0)
      break;
  }
  bool ok = done == count;
  if (!ok) {
    while (done-- > 0)
      RenameByName(aside[done].temp, aside[done].path);
  } else {
    for (int i = 0; i < count; ++i) {
      RemoveByName(aside[i].temp);
      DropBlocks(handles[i]);
    }
  }
  ffree(reinterpret_cast<void**>(&aside));
  return ok;
}

bool cFileSystemImpl::Rename(int* handle, const wchar_t* name, FILETYPE type) {
  FileEntry* e = handle ? Entry(*handle) : nullptr;
  if (!e || !name || !ReallyClose(*handle))
    return false;
  NameParts parts;
  BuildName(name, type, &parts);
  wchar_t from[kPathUnits], to[kPathUnits];
  FullPath(e, from);
  CopyText(to, parts.dir, kPathUnits);
  size_t n = std::wcslen(to);
  CopyText(to + n, parts.name, static_cast<unsigned int>(kPathUnits - n));
  if (RenameByName(from, to) != 0)
    return false;
  if (!SetName(e, *handle - 1000, parts, type)) {
    RenameByName(to, from); // keep the registration and the disk in step
    return false;
  }
  return true;
}

bool cFileSystemImpl::WrittenPath(int handle, wchar_t* path) {
  FileEntry* e = Entry(handle);
  if (!e)
    return false;
  if (cFileCache* cache = cFileCache::Instance())
    if (!cache->Flush(handle))
      return false;
  FullPath(e, path);
  return true;
}

bool cFileSystemImpl::Touch(int handle) {
  wchar_t path[kPathUnits];
  if (!WrittenPath(handle, path))
    return false;
  if (_waccess(path, 0) == 0)
    return _wutime(path, nullptr) == 0;
  int fd = _wsopen(path, _O_RDWR | _O_CREAT | _O_BINARY, _SH_DENYNO, _S_IREAD | _S_IWRITE);
  return fd >= 0 && _close(fd) == 0;
}

long cFileSystemImpl::GetTimestamp(int handle) {
  FileEntry* e = Entry(handle);
  if (!e)
    return 0;
  wchar_t path[kPathUnits];
  FullPath(e, path);
  struct _stat32 st;
  return StatByName(path, &st) == 0 ? st.st_mtime : 0;
}

bool cFileSystemImpl::SetTimestamp(int handle) {
  wchar_t path[kPathUnits];
  return WrittenPath(handle, path) && _wutime(path, nullptr) == 0;
}

wchar_t* cFileSystemImpl::HandleToName(int handle, wchar_t* out) {
  FileEntry* e = Entry(handle);
  if (!e || !out)
    return nullptr;
  return CopyText(out, e->name->Name(), kPathUnits);
}

wchar_t* cFileSystemImpl::HandleToDir(int handle, wchar_t* out) {
  FileEntry* e = Entry(handle);
  if (!e || !out)
    return nullptr;
  return CopyText(out, e->name->Dir(), kPathUnits);
}

wchar_t* cFileSystemImpl::HandleToPath(int handle, wchar_t* out) {
  FileEntry* e = Entry(handle);
  if (!e || !out)
    return nullptr;
  FullPath(e, out);
  return out;
}

wchar_t* cFileSystemImpl::HandleToPartialPath(int handle, wchar_t* out, int size) {
  FileEntry* e = Entry(handle);
  if (!e || !out || size <= 0)
    return nullptr;
  wchar_t path[kPathUnits];
  FullPath(e, path);
  PartialPath(path, out, size);
  return out;
}

eOpenMode cFileSystemImpl::GetOpenMode(int handle) {
  FileEntry* e = Entry(handle);
  return e ? e->mode : OPEN_READ;
}

bool cFileSystemImpl::Copy(int source, int target, bool failIfExists) {
  FileEntry* from = Entry(source);
  FileEntry* to = Entry(target);
  if (!from || !to || source == target || !ReallyClose(source) || !ReallyClose(target))
    return false;
  wchar_t sourcePath[kPathUnits], targetPath[kPathUnits], temp[kPathUnits];
  FullPath(from, sourcePath);
  FullPath(to, targetPath);
  if (SameName(sourcePath, targetPath))
    return false;
  if (failIfExists && _waccess(targetPath, 0) == 0)
    return false;
  if (!TempName(temp, to->name->Dir()))
    return false;
  int in = _wsopen(sourcePath, _O_RDONLY | _O_BINARY, _SH_DENYWR, 0);
  if (in < 0)
    return false;
  int out =
      _wsopen(temp, _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY, _SH_DENYRW, _S_IREAD | _S_IWRITE);
  if (out < 0) {
    _close(in);
    return false;
  }
  char* chunk = nullptr;
  bool ok = falloc_(kCopyChunk, &chunk, false, false);
  while (ok) {
    int n = _read(in, chunk, kCopyChunk);
    if (n <= 0) {
      ok = n == 0;
      break;
    }
    ok = _write(out, chunk, static_cast<unsigned int>(n)) == n;
  }
  ffree(reinterpret_cast<void**>(&chunk));
  _close(in);
  ok = ok && _commit(out) == 0; // on the device before it takes the target's name
  ok = _close(out) == 0 && ok;
  if (ok)
    ok = qx::win::MoveFileExW(temp, targetPath, failIfExists ? 0 : MOVEFILE_REPLACE_EXISTING);
  if (!ok) {
    _wremove(temp);
    return false;
  }
  DropBlocks(target);
  return true;
}

int cFileSystemImpl::RenameByName(const wchar_t* from, const wchar_t* to) {
  wchar_t a[kPathUnits], b[kPathUnits];
  CopyText(a, from, kPathUnits);
  CopyText(b, to, kPathUnits);
  return _wrename(a, b);
}

int cFileSystemImpl::AccessByName(const wchar_t* name, int mode) {
  wchar_t a[kPathUnits];
  CopyText(a, name, kPathUnits);
  return _waccess(a, mode);
}

int cFileSystemImpl::RemoveByName(const wchar_t* name) {
  wchar_t a[kPathUnits];
  CopyText(a, name, kPathUnits);
  return _wremove(a);
}

int cFileSystemImpl::StatByName(const wchar_t* name, struct _stat32* out) {
  wchar_t a[kPathUnits];
  CopyText(a, name, kPathUnits);
  return _wstat32(a, out);
}

} // namespace qx::files
