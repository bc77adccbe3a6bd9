//===- files/registry.cpp - Registration and lookup of file names ---------===//
//
// The table of registered files: a slot per registration, the handle being
// the slot's index plus 1000. Slots are taken lowest first and grow by 100.
// Names are found through a hash index that gives the answer of a scan in
// slot order (the first matching slot).
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "frame/report.h"
#include "frame/singleton.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

namespace qx::files {

namespace {

constexpr int kFirstHandle = 1000;
constexpr int kTableGrowth = 100;

// time_100() runs from 0 to this value and then starts again at 0.
constexpr long kTime100Period = 0xFFFFFFFFL / 10 + 1;

// DefaultRetry - retries until GetFileAccessRetryTime() hundredths have
// passed since the first failure, without sleeping. An open retrying
// while the tick count wraps still gives up after the retry time.
bool DefaultRetry(eOpenMode, const wchar_t*, long& since) {
  if (since == 0)
    since = time_100();
  long elapsed = time_100() - since;
  if (elapsed < 0)
    elapsed += kTime100Period;
  if (elapsed < GetFileAccessRetryTime())
    return true;
  since = 0;
  return false;
}

bool TypesMatch(FILETYPE a, FILETYPE b) { return a == b || a == FILETYPE_ANY || b == FILETYPE_ANY; }

} // namespace

cFileSystemImpl::cFileSystemImpl(int maxOpenFiles, bool closeAtOnce, FileRetryCallback retry)
    : maxOpen_(maxOpenFiles), closeAtOnce_(closeAtOnce), retry_(retry) {
  getAttributesEx_ = reinterpret_cast<qx::win::GetFileAttributesExWProc>(
      reinterpret_cast<void*>(qx::win::GetKernelProcAddress("GetFileAttributesExW")));
}

cFileSystemImpl::~cFileSystemImpl() {
  // Every file still open is closed, its cached blocks written first.
  for (int i = 0; i < capacity_; ++i)
    if (table_[i].InUse() && table_[i].Holds())
      ReallyClose(i + kFirstHandle);
  for (int i = 0; i < capacity_; ++i) {
    ReleaseStorage(&table_[i]);
    ffree(reinterpret_cast<void**>(&table_[i].name));
    ffree(reinterpret_cast<void**>(&table_[i].appBuffer));
  }
  ffree(reinterpret_cast<void**>(&table_));
  ffree(reinterpret_cast<void**>(&idleList_));
  for (int i = 0; i < appDataCount_; ++i)
    ffree(reinterpret_cast<void**>(&appData_[i]));
  ffree(reinterpret_cast<void**>(&appData_));
}

FileEntry* cFileSystemImpl::Entry(int handle) const {
  long index = static_cast<long>(handle) - kFirstHandle;
  if (index < 0 || index >= capacity_ || !table_[index].InUse())
    return nullptr;
  return &table_[index];
}

void cFileSystemImpl::BuildName(const wchar_t* name, FILETYPE type, NameParts* parts) {
  CopyText(parts->dir, name, kPathUnits);
  QualifyFileName(parts->dir);
  SplitFileName(parts->dir, parts->name);
  if (MungeFileName(type))
    MakeExtension(parts->name, FileExtension(type));
  EnsureBackslash(parts->dir, kPathUnits);
}

int cFileSystemImpl::Find(const NameParts& parts, FILETYPE type) const {
  uint32_t hash = NameHash(parts.dir, parts.name);
  int32_t found = index_.Find(hash, [&](int32_t, const void* r) {
    auto* record = static_cast<const FileNameRecord*>(r);
    return TypesMatch(record->type, type) && SameName(record->Dir(), parts.dir) &&
           SameName(record->Name(), parts.name);
  });
  return found < 0 ? 0 : found + kFirstHandle;
}

bool cFileSystemImpl::SetName(FileEntry* e, int index, const NameParts& parts, FILETYPE type) {
  size_t dirLen = std::wcslen(parts.dir), nameLen = std::wcslen(parts.name);
  FileNameRecord* record = nullptr;
  size_t bytes = sizeof(FileNameRecord) + (dirLen + nameLen + 2) * sizeof(wchar_t);
  if (!falloc_(static_cast<unsigned int>(bytes), &record, false, true))
    return false;
  record->type = type;
  record->dirLen = static_cast<uint16_t>(dirLen);
  record->nameLen = static_cast<uint16_t>(nameLen);
  std::wmemcpy(record->text, parts.dir, dirLen + 1);
  std::wmemcpy(record->text + dirLen + 1, parts.name, nameLen + 1);
  record->hash = NameHash(parts.dir, parts.name);
  if (!index_.Insert(record->hash, index, record)) {
    ffree(reinterpret_cast<void**>(&record));
    return false;
  }
  if (e->name) {
    index_.Remove(e->name->hash, index);
    ffree(reinterpret_cast<void**>(&e->name));
  }
  e->name = record;
  return true;
}

void cFileSystemImpl::FullPath(const FileEntry* e, wchar_t* out) const {
  size_t n = e->name->dirLen;
  if (n >= kPathUnits)
    n = kPathUnits - 1;
  std::wmemcpy(out, e->name->Dir(), n);
  CopyText(out + n, e->name->Name(), static_cast<unsigned int>(kPathUnits - n));
}

int cFileSystemImpl::RegisterFile(const wchar_t* name, FILETYPE type, bool unique) {
  NameParts parts;
  if (unique && IsFileRegistered(name, type)) {
    BuildName(name, type, &parts);
    wchar_t text[kFormattedArgCapacity];
    std::swprintf(text, kFormattedArgCapacity,
                  L"Attempt to register file which is already registered! - %ls",
                  name ? name : L"");
    ::SetError(eErrorLevelError, 50, text, kLibraryGuid, 8, parts.name, nullptr);
    return 0;
  }
  int index = firstFree_;
  while (index < capacity_ && table_[index].InUse())
    ++index;
  if (index >= capacity_) {
    long grown = static_cast<long>(capacity_) + kTableGrowth;
    if (grown * static_cast<long>(sizeof(FileEntry)) > 0x7FFFFFFFL)
      return 0;
    FileEntry* table = table_;
    if (!GetMem_(static_cast<unsigned int>(grown * sizeof(FileEntry)), &table, false))
      return 0;
    table_ = table;
    index = capacity_;
    capacity_ = static_cast<int>(grown);
  }
  FileEntry* e = &table_[index];
  std::memset(static_cast<void*>(e), 0, sizeof *e);
  BuildName(name, type, &parts);
  if (!SetName(e, index, parts, type))
    return 0;
  e->flags = FileEntry::kInUse;
  e->fd = -1;
  e->idleAt = -1;
  e->charset = system_charset();
  firstFree_ = index + 1;
  return index + kFirstHandle;
}

int cFileSystemImpl::RegisterFileVariant(int handle, const wchar_t* name, FILETYPE type) {
  if (handle != 0) {
    wchar_t path[kPathUnits];
    if (!HandleToPath(handle, path))
      return 0;
    if (!MungeFileName(type))
      RecommendFileName(path, path, type);
    return RegisterFile(path, type, true);
  }
  if (name)
    return RegisterFile(name, type, true);
  FILE* stream = TempFile(nullptr);
  return stream ? FileNo(stream) : 0;
}

int cFileSystemImpl::IsFileRegistered(const wchar_t* name, FILETYPE type) {
  if (!table_)
    return 0;
  NameParts parts;
  BuildName(name, type, &parts);
  return Find(parts, type);
}

bool cFileSystemImpl::UnregisterFile(int handle) {
  FileEntry* e = Entry(handle);
  if (!e)
    return false;
  if (cFileCache* cache = cFileCache::Instance()) {
    // Nothing is dropped that could not be written.
    if (!cache->Flush(handle))
      return false;
    cache->FlushAndDrop(handle);
  }
  if (e->Holds() && !ReallyClose(handle))
    return false;
  ReleaseStorage(e);
  int index = handle - kFirstHandle;
  index_.Remove(e->name->hash, index);
  ffree(reinterpret_cast<void**>(&e->name));
  ffree(reinterpret_cast<void**>(&e->appBuffer));
  std::memset(static_cast<void*>(e), 0, sizeof *e);
  if (index < firstFree_)
    firstFree_ = index;
  return true;
}

QXCHARSET cFileSystemImpl::GetCharset(FILE* stream) {
  return GetCharset(static_cast<int>(reinterpret_cast<intptr_t>(stream)));
}
QXCHARSET cFileSystemImpl::GetCharset(int handle) {
  FileEntry* e = Entry(handle);
  return e ? e->charset : static_cast<QXCHARSET>(-1);
}
void cFileSystemImpl::PutCharset(FILE* stream, QXCHARSET charset) {
  PutCharset(static_cast<int>(reinterpret_cast<intptr_t>(stream)), charset);
}
void cFileSystemImpl::PutCharset(int handle, QXCHARSET charset) {
  if (FileEntry* e = Entry(handle))
    e->charset = charset;
}

FILE* cFileSystemImpl::FRegisterFile(const wchar_t* name, FILETYPE type, bool unique) {
  return reinterpret_cast<FILE*>(static_cast<intptr_t>(RegisterFile(name, type, unique)));
}
bool cFileSystemImpl::FUnregisterFile(FILE* stream) { return UnregisterFile(FileNo(stream)); }
FILE* cFileSystemImpl::FFileOpen(FILE* stream, eOpenMode mode, int* changed) {
  int handle = Open(FileNo(stream), mode, changed, true);
  return handle < 0 ? nullptr : stream;
}
int cFileSystemImpl::FClose(FILE* stream) { return Close(FileNo(stream)); }
int cFileSystemImpl::FileNo(FILE* stream) {
  return static_cast<int>(reinterpret_cast<intptr_t>(stream));
}

int cFileSystemImpl::GetFileFD(int handle) {
  FileEntry* e = Entry(handle);
  return e ? e->fd : -1;
}

FILE* cFileSystemImpl::GetFilePtr(const FILE* stream) {
  FileEntry* e = Entry(static_cast<int>(reinterpret_cast<intptr_t>(stream)));
  return e ? e->stream : nullptr;
}

} // namespace qx::files

cFileSystem::~cFileSystem() {}

cFileSystem* cFileSystem::Create(int maxOpenFiles, bool closeAtOnce, FileRetryCallback retry) {
  try {
    return new qx::files::cFileSystemImpl(maxOpenFiles, closeAtOnce, retry);
  } catch (...) {
    return nullptr;
  }
}

cFileSystem* cFileSystem::Create() { return Create(507, true, qx::files::DefaultRetry); }

template class QXSingleton<cFileSystem, 2>;
