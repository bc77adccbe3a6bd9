//===- files/directories.cpp - Directories, names, search, temporary names ===//
//
// The name side of the registry: the directories the host configures, the
// application-data list, extensions by type, qualification through the
// registry's name record, the search for a file, temporary names, relative
// paths, and the change of the current directory to a file's.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "platform/file_crt.h"
#include "platform/threads.h"

#include <cwchar>

namespace qx::files {

using namespace qx::crt;

namespace {

constexpr unsigned long kTempSequenceEnd = 999999;

// Join - `dir` (a separator ensured when not empty) followed by `name`.
void Join(const wchar_t* dir, const wchar_t* name, wchar_t* out) {
  CopyText(out, dir, kPathUnits);
  EnsureBackslash(out, kPathUnits);
  size_t n = std::wcslen(out);
  CopyText(out + n, name, static_cast<unsigned int>(kPathUnits - n));
}

} // namespace

void cFileSystemImpl::SetDir(int which, const wchar_t* dir) {
  CopyText(dirs_[which], dir, kPathUnits);
}
void cFileSystemImpl::SetProgramDir(const wchar_t* dir) { SetDir(kProgram, dir); }
void cFileSystemImpl::SetAlternateProgramDir(const wchar_t* dir) { SetDir(kAlternate, dir); }
void cFileSystemImpl::SetHomeDir(const wchar_t* dir) { SetDir(kHome, dir); }
void cFileSystemImpl::SetPrefDir(const wchar_t* dir) { SetDir(kPref, dir); }
void cFileSystemImpl::SetTempDir(const wchar_t* dir) { SetDir(kTemp, dir); }
void cFileSystemImpl::SetCurrentDir(const wchar_t* dir) { SetDir(kCurrent, dir); }

bool cFileSystemImpl::AddAppDataPath(const wchar_t* dir) {
  wchar_t* copy = nullptr;
  if (!dir || !falloc_(kPathUnits * sizeof(wchar_t), &copy, false, true))
    return false;
  CopyText(copy, dir, kPathUnits);
  EnsureBackslash(copy, kPathUnits);
  wchar_t** list = appData_;
  if (!GetMem_(static_cast<unsigned int>((appDataCount_ + 1) * sizeof(wchar_t*)), &list, true)) {
    ffree(reinterpret_cast<void**>(&copy));
    return false;
  }
  appData_ = list;
  appData_[appDataCount_++] = copy;
  return true;
}

const wchar_t* cFileSystemImpl::FileExtension(FILETYPE type) { return DefaultExtension(type); }

FILETYPE cFileSystemImpl::FileType(const wchar_t* name) {
  // The text after the last dot is compared, without its dot, with the
  // default extensions, which all begin with one: no name ever matches, and
  // a type is never inferred from a name.
  const wchar_t* dot = name ? std::wcsrchr(name, L'.') : nullptr;
  if (!dot || !dot[1])
    return FILETYPE_ANY;
  for (int t = 0; t < kFileTypeCount; ++t) {
    const wchar_t* ext = FileExtension(static_cast<FILETYPE>(t));
    if (ext && SameName(ext, dot + 1))
      return static_cast<FILETYPE>(t);
  }
  return FILETYPE_ANY;
}

void cFileSystemImpl::SplitFileName(wchar_t* path, wchar_t* namePart) {
  qx::files::SplitFileName(path, namePart);
}

void cFileSystemImpl::MakeExtension(wchar_t* name, const wchar_t* ext) {
  qx::files::MakeExtension(name, ext);
}

bool cFileSystemImpl::PathToSomething(wchar_t* reference, const wchar_t* baseDir) {
  if (!reference)
    return false;
  wchar_t full[kPathUnits];
  bool relative = FullPathFromRelativePath(baseDir, reference, full);
  CopyText(reference, full, kPathUnits);
  return relative;
}

eOpenMode cFileSystemImpl::Level0ModeToOurMode(int flags) {
  if (flags & _O_CREAT)
    return OPEN_CREATE;
  return (flags & (_O_WRONLY | _O_RDWR)) ? OPEN_READWRITE : OPEN_READ;
}

void cFileSystemImpl::QualifyFileName(wchar_t* name) { Qualify(name); }

bool cFileSystemImpl::MungeFileName(FILETYPE type) { return ForcesExtension(type); }

void cFileSystemImpl::RecommendFileName(wchar_t* out, const wchar_t* in, FILETYPE type) {
  if (!out)
    return;
  wchar_t name[kPathUnits];
  CopyText(name, in, kPathUnits);
  NormaliseForExtension(name);
  const wchar_t* ext = type <= FILETYPE_PHOTO ? FileExtension(type) : nullptr;
  if (type == FILETYPE_IMAGE) {
    const wchar_t* photo = FileExtension(FILETYPE_PHOTO);
    size_t n = std::wcslen(name), m = std::wcslen(photo);
    if (n >= m && SameName(name + n - m, photo))
      ext = photo;
  }
  if (ext)
    MakeExtension(name, ext);
  CopyText(out, name, kPathUnits);
}

void cFileSystemImpl::RecommendTableFileName(wchar_t* out, const wchar_t* in) {
  if (!out)
    return;
  wchar_t original[kPathUnits];
  CopyText(original, in, kPathUnits);
  RecommendFileName(out, original, FILETYPE_TABLE);
  if (SameName(out, original))
    RecommendFileName(out, original, FILETYPE_DELIMITED);
}

void cFileSystemImpl::RequireDosExtension(wchar_t* name, FILETYPE type) {
  if (const wchar_t* ext = type < kFileTypeCount ? FileExtension(type) : nullptr)
    MakeExtension(name, ext);
}

void cFileSystemImpl::RelativePathToFullPath(wchar_t* name) {
  if (!name)
    return;
  NameParts parts;
  BuildName(name, FILETYPE_ANY, &parts);
  Join(parts.dir, parts.name, name);
}

bool cFileSystemImpl::ResolvePathReference(wchar_t* reference, const wchar_t* basePath) {
  wchar_t dir[kPathUnits];
  CopyText(dir, basePath, kPathUnits);
  SplitFileName(dir, nullptr);
  return PathToSomething(reference, dir);
}

bool cFileSystemImpl::ResolvePathReference(wchar_t* reference, int handle) {
  FileEntry* e = Entry(handle);
  return e && PathToSomething(reference, e->name->Dir());
}

bool cFileSystemImpl::ChangeDirectory(int handle, SAVED_DIR* saved) {
  if (!saved)
    return false;
  saved->current[0] = saved->driveCurrent[0] = 0;
  FileEntry* e = Entry(handle);
  if (!e)
    return false;
  _wgetdcwd(0, saved->current, 260);
  const wchar_t* dir = e->name->Dir();
  if (dir[0] && dir[1] == L':') {
    // Every drive letter is the root of the one file system: making the
    // drive current changes nothing, its directory is saved all the same.
    int drive = (dir[0] & ~0x20) - L'A' + 1;
    _wgetdcwd(drive, saved->driveCurrent, 260);
  }
  wchar_t target[kPathUnits];
  CopyText(target, dir, kPathUnits);
  size_t n = std::wcslen(target);
  if (n >= 4 && IsSeparator(target[n - 1]))
    target[n - 1] = 0;
  return _wchdir(target) == 0;
}

bool cFileSystemImpl::RestoreDirectory(SAVED_DIR* saved) {
  if (!saved || !saved->current[0])
    return false;
  if (saved->driveCurrent[0])
    _wchdir(saved->driveCurrent);
  return _wchdir(saved->current) == 0;
}

wchar_t* cFileSystemImpl::TempName(wchar_t* out, const wchar_t* dir, FILETYPE type) {
  if (!out)
    return nullptr;
  wchar_t d[kPathUnits];
  if (dir) {
    CopyText(d, dir, kPathUnits);
    EnsureBackslash(d, kPathUnits);
  } else {
    CopyText(d, TempDir(), kPathUnits);
  }
  const wchar_t* ext = type >= 0 && type < kFileTypeCount ? FileExtension(type) : nullptr;
  if (!ext)
    ext = L".TMP";
  unsigned long thread = qx::win::GetCurrentThreadId();
  for (unsigned long tries = 0; tries <= kTempSequenceEnd; ++tries) {
    unsigned long n = tempSequence_;
    tempSequence_ = n >= kTempSequenceEnd ? 0 : n + 1;
    if (std::swprintf(out, kPathUnits, L"%ls~QXF%lu-%lu%ls", d, thread, n, ext) < 0)
      return nullptr;
    if (!FileExists(out, FILETYPE_ANY))
      return out;
  }
  return nullptr;
}

wchar_t* cFileSystemImpl::TempName(wchar_t* out, const wchar_t* dir) {
  return TempName(out, dir, FILETYPE_ANY);
}

FILE* cFileSystemImpl::TempFile(const wchar_t* dir) {
  wchar_t name[kPathUnits];
  if (!TempName(name, dir))
    return nullptr;
  FILE* stream = FRegisterFile(name, FILETYPE_ANY, true);
  return FileNo(stream) ? stream : nullptr;
}

bool cFileSystemImpl::FileExists(const wchar_t* name, FILETYPE type) {
  if (!name)
    return false;
  NameParts parts;
  BuildName(name, type, &parts);
  wchar_t path[kPathUnits];
  Join(parts.dir, parts.name, path);
  return AccessByName(path, 0) == 0;
}

bool cFileSystemImpl::FileExistsAnyCase(const wchar_t* name, FILETYPE type) {
  return FileExists(name, type);
}

bool cFileSystemImpl::SearchForFile(wchar_t* name, FILETYPE type) {
  if (!name)
    return false;
  wchar_t candidate[kPathUnits];
  for (int i = 0; i < appDataCount_; ++i) {
    Join(appData_[i], name, candidate);
    if (FileExists(candidate, type)) {
      CopyText(name, candidate, kPathUnits);
      return true;
    }
  }
  if (ProgramDir()[0]) {
    Join(ProgramDir(), name, candidate);
    if (FileExists(candidate, type)) {
      CopyText(name, candidate, kPathUnits);
      return true;
    }
  }
  return FileExists(name, type);
}

bool cFileSystemImpl::CalcRelativePath(const wchar_t* base, const wchar_t* target, wchar_t* out) {
  return CalcRelative(base, target, out);
}

bool cFileSystemImpl::FullPathFromRelativePath(const wchar_t* base, const wchar_t* relative,
                                               wchar_t* out) {
  return FullFromRelative(base, relative, out);
}

} // namespace qx::files
