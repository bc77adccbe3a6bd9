//===- files/open_close.cpp - Opening and closing registered files --------===//
//
// A registered file is opened on demand and counted: several fileopen calls
// share one system file. At the last close a read-only file may stay open,
// idle, for the next open (when the registry was created without
// closeAtOnce). The number of open system files stays under the bound by
// closing the idle file of greatest age; a file a caller holds open is never
// closed behind its back.
//
// Ages: an entry's age is 1 when it is opened and grows by one with every
// open of another file while it is idle. It is kept as a base and the open
// counter at the moment the entry became idle, so an open costs nothing per
// idle file; only the idle entries (a compact list, at most the bound) are
// looked at when one must be closed.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "frame/report.h"
#include "platform/file_crt.h"

#include <cstdint>
#include <cwchar>

namespace qx::files {

using namespace qx::crt;

namespace {

constexpr int kOpenFlags[] = {0, _O_RDONLY | _O_BINARY, _O_RDWR | _O_BINARY,
                              _O_RDWR | _O_CREAT | _O_TRUNC | _O_BINARY};
constexpr int kShareModes[] = {0, _SH_DENYWR, _SH_DENYRW, _SH_DENYRW};
constexpr const wchar_t* kStreamModes[] = {L"", L"rb", L"r+b", L"w+b"};

bool Compatible(eOpenMode held, eOpenMode wanted) {
  return held == wanted || held == OPEN_CREATE || (held == OPEN_READWRITE && wanted == OPEN_READ);
}

bool SameTime(const FILETIME& a, const FILETIME& b) {
  return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}

} // namespace

void cFileSystemImpl::ReportOpen(int resourceId, int number, const FileEntry* e, int error) {
  if (number == 13) {
    wchar_t code[16];
    std::swprintf(code, 16, L"%d", error);
    ReportError(eErrorLevelError, resourceId, number, code, e->name->Name());
  } else if (number == 10) {
    ReportError(eErrorLevelError, resourceId, number);
  } else {
    ReportError(eErrorLevelError, resourceId, number, e->name->Name());
  }
}

bool cFileSystemImpl::EnterIdle(int index) {
  if (idle_ == idleCapacity_) {
    int grown = idleCapacity_ ? idleCapacity_ * 2 : 64;
    IdleSlot* list = idleList_;
    if (!GetMem_(static_cast<unsigned int>(grown * sizeof(IdleSlot)), &list, true))
      return false;
    idleList_ = list;
    idleCapacity_ = grown;
  }
  FileEntry& e = table_[index];
  e.idleSince = opens_;
  e.idleAt = idle_;
  idleList_[idle_++] = IdleSlot{index, opens_ - e.age};
  return true;
}

void cFileSystemImpl::LeaveIdle(int index) {
  FileEntry& e = table_[index];
  e.age += static_cast<int32_t>(opens_ - e.idleSince);
  IdleSlot last = idleList_[--idle_];
  idleList_[e.idleAt] = last;
  table_[last.index].idleAt = e.idleAt;
  e.idleAt = -1;
}

bool cFileSystemImpl::CloseOldestIdle() {
  // The greatest age (opens_ - stamp), the lowest index among equals.
  int oldest = -1;
  int64_t stamp = 0;
  for (int k = 0; k < idle_; ++k) {
    const IdleSlot& s = idleList_[k];
    if (oldest < 0 || s.stamp < stamp || (s.stamp == stamp && s.index < oldest)) {
      oldest = s.index;
      stamp = s.stamp;
    }
  }
  return oldest >= 0 && opens_ - stamp > 0 && ReallyClose(oldest + 1000);
}

bool cFileSystemImpl::ReallyClose(int handle) {
  FileEntry* e = Entry(handle);
  if (!e || !e->Holds())
    return true;
  if (cFileCache* cache = cFileCache::Instance())
    if (!cache->Flush(handle))
      return false; // the blocks stay dirty and the file open: nothing is lost
  if (e->stream)
    std::fclose(e->stream);
  else
    _close(e->fd);
  if (e->Count() == 0)
    LeaveIdle(handle - 1000);
  --osOpen_;
  e->fd = -1;
  e->stream = nullptr;
  wchar_t path[kPathUnits];
  FullPath(e, path);
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (getAttributesEx_ && getAttributesEx_(path, GetFileExInfoStandard, &data))
    e->lastWrite = data.ftLastWriteTime;
  else
    e->lastWrite = FILETIME{0xFFFFFFFFu, 0xFFFFFFFFu};
  ffree(reinterpret_cast<void**>(&e->appBuffer));
  return true;
}

void cFileSystemImpl::ReallyCloseAll() {
  if (!table_ || idle_ == 0)
    return;
  while (idle_ > 0)
    if (!ReallyClose(idleList_[idle_ - 1].index + 1000))
      break;
}

int cFileSystemImpl::FileOpen(int handle, eOpenMode mode, int* changed) {
  return Open(handle, mode, changed, false);
}

int cFileSystemImpl::Open(int handle, eOpenMode mode, int* changed, bool stream) {
  FileEntry* e = Entry(handle);
  if (!e || mode < OPEN_READ || mode > OPEN_CREATE)
    return -1;
  int index = handle - 1000;
  if (e->Holds()) {
    bool sameKind = e->IsStream() == stream;
    if (sameKind && Compatible(e->mode, mode)) {
      if (e->Count() == 0)
        LeaveIdle(index);
      e->SetCount(e->Count() + 1);
      e->position = 0;
      if (e->stream)
        std::rewind(e->stream);
      return handle;
    }
    if (e->Count() != 0) {
      if (sameKind && e->mode == OPEN_READ && mode == OPEN_READWRITE) {
        int users = e->Count();
        e->SetCount(1);
        if (!ReallyClose(handle))
          return e->SetCount(users), -1;
        if (Open(handle, OPEN_READWRITE, changed, stream) >= 0) {
          e->SetCount(users + 1);
          return handle;
        }
        // Back to read-only for the existing users.
        e->SetCount(Open(handle, OPEN_READ, changed, stream) >= 0 ? users : 0);
        return -1;
      }
      ReportOpen(51, 9, e);
      return -1;
    }
    if (!ReallyClose(handle))
      return -1;
  }

  cFileCache* cache = cFileCache::Instance();
  if (mode == OPEN_CREATE && cache)
    cache->FlushAndDrop(handle);
  e->mode = mode;
  e->flags = stream ? (e->flags | FileEntry::kStream) : (e->flags & ~FileEntry::kStream);
  e->age = 1;
  ++opens_; // every idle entry is a step older

  wchar_t path[kPathUnits];
  FullPath(e, path);
  long since = 0;
  int fd = -1;
  for (;;) {
    int error;
    if (osOpen_ < maxOpen_) {
      fd = _wsopen(path, kOpenFlags[mode], kShareModes[mode], _S_IREAD | _S_IWRITE);
      error = errno;
      if (fd >= 0 && mode != OPEN_READ) {
        DWORD attributes = qx::win::GetFileAttributesW(path);
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
          _close(fd);
          fd = -1;
          error = kErrAcces;
        }
      }
      if (fd >= 0)
        break;
    } else {
      error = kErrMFile;
    }
    switch (error) {
    case kErrNoEnt:
    case kErrNotDir:
    case kErrNoSpc:
      ReportOpen(9985, 5001, e);
      return -1;
    case kErrAcces:
    case kErrNetNameDeleted:
      if (mode == OPEN_CREATE)
        return -1;
      if (!retry_ || !retry_(mode, e->name->Name(), since)) {
        ReportOpen(46, 4, e);
        return -1;
      }
      continue;
    case kErrExist:
      ReportOpen(52, 10, e);
      return -1;
    case kErrNFile:
    case kErrMFile:
      if (CloseOldestIdle())
        continue;
      ReportOpen(56, 14, e);
      return -1;
    default:
      if (mode != OPEN_CREATE)
        ReportOpen(55, 13, e, error);
      return -1;
    }
  }

  if (stream) {
    FILE* f = _wfdopen(fd, kStreamModes[mode]);
    if (!f) {
      _close(fd);
      return -1;
    }
    e->stream = f;
    e->fd = -1;
  } else {
    e->fd = fd;
  }

  // A file changed since the registry last closed it: its cached blocks
  // are stale.
  WIN32_FILE_ATTRIBUTE_DATA data;
  bool known = getAttributesEx_ && getAttributesEx_(path, GetFileExInfoStandard, &data);
  if (!known || !SameTime(data.ftLastWriteTime, e->lastWrite)) {
    if (cache)
      cache->FlushAndDrop(handle);
    if (e->lastWrite.dwLowDateTime != 0 && e->lastWrite.dwHighDateTime != 0 && changed)
      *changed |= 1;
  }

  ++osOpen_;
  e->SetCount(1);
  e->position = 0;
  if (e->fd >= 0) {
    long length = _lseek(e->fd, 0, 2);
    if (length < 0 || _lseek(e->fd, 0, 0) != 0) {
      int error = errno;
      ReallyClose(handle);
      e->SetCount(0);
      ReportOpen(55, 13, e, error);
      return -1;
    }
    e->length = static_cast<int32_t>(length);
  } else {
    std::rewind(e->stream);
  }
  return handle;
}

int cFileSystemImpl::Close(int handle) {
  FileEntry* e = Entry(handle);
  if (!e)
    return -1;
  if (e->Count() == 0) {
    wchar_t text[16];
    std::swprintf(text, 16, L"%d", handle);
    ReportError(eErrorLevelError, 53, 53, text);
    return -1;
  }
  if (e->Count() == 1 && !closeAtOnce_ && e->mode == OPEN_READ && EnterIdle(handle - 1000)) {
    e->SetCount(0);
    return 0;
  }
  if (e->Count() == 1 && !ReallyClose(handle))
    return -1;
  e->SetCount(e->Count() - 1);
  return 0;
}

} // namespace qx::files
