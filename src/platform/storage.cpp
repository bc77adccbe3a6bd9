//===- platform/storage.cpp - Structured storage, read-only --------------===//
//
// The storage, stream and enumerator objects over one CompoundFile. Each
// holds a reference to the file; the file closes with the last of them.
//
//===----------------------------------------------------------------------===//
#include "platform/storage.h"

#include "platform/compound_file.h"
#include "platform/file_crt.h"
#include "platform/file_win.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>

namespace qx::win {

using qx::platform::CfbEntry;
using qx::platform::CompoundFile;
using qx::platform::kNoEntry;
using qx::platform::StreamMap;

LPVOID CoTaskMemAlloc(size_t size) { return ::operator new(size ? size : 1, std::nothrow); }
void CoTaskMemFree(LPVOID block) { ::operator delete(block); }

namespace {

constexpr size_t kMaxNameUnits = 31;
constexpr DWORD kAccessMask = 0x3;
constexpr DWORD kShareMask = 0x70;

// FillStat - the STATSTG of entry `id` (its name allocated unless `flags`
// say STATFLAG_NONAME).
HRESULT FillStat(const CompoundFile* file, uint32_t id, DWORD mode, STATSTG* out, DWORD flags) {
  if (!out)
    return STG_E_INVALIDPOINTER;
  const CfbEntry& e = file->Entry(id);
  std::memset(static_cast<void*>(out), 0, sizeof *out);
  if (flags != STATFLAG_NONAME) {
    out->pwcsName = static_cast<LPWSTR>(CoTaskMemAlloc((e.nameLength + 1u) * sizeof(wchar_t)));
    if (!out->pwcsName)
      return STG_E_INSUFFICIENTMEMORY;
    std::wmemcpy(out->pwcsName, e.name, e.nameLength + 1u);
  }
  out->type = e.type == CfbEntry::kStream ? STGTY_STREAM : STGTY_STORAGE;
  out->cbSize.QuadPart = e.type == CfbEntry::kStream ? e.size : 0;
  out->mtime = e.modified;
  out->ctime = e.created;
  out->grfMode = mode;
  std::memcpy(&out->clsid, e.clsid, sizeof out->clsid);
  out->grfStateBits = e.stateBits;
  return S_OK;
}

// CheckChildMode - the modes a stream or a storage inside a storage opens
// with: read-only, exclusive.
HRESULT CheckChildMode(DWORD mode) {
  if ((mode & kAccessMask) != STGM_READ)
    return STG_E_ACCESSDENIED;
  if ((mode & kShareMask) != STGM_SHARE_EXCLUSIVE || (mode & ~(kAccessMask | kShareMask)) != 0)
    return STG_E_INVALIDFLAG;
  return S_OK;
}

/// Counted - the reference counting of the three objects.
template <class Interface> class Counted : public Interface {
public:
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    ULONG left = --references_;
    if (left == 0)
      delete this;
    return left;
  }

private:
  ULONG references_ = 1;
};

class Stream final : public Counted<IStream> {
public:
  Stream(CompoundFile* file, uint32_t id) : file_(file), id_(id) { file_->AddRef(); }
  HRESULT Init() { return file_->Map(id_, &map_); }

  HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override {
    if (pcbRead)
      *pcbRead = 0;
    if (!pv)
      return STG_E_INVALIDPOINTER;
    ULONG count = position_ >= map_.size
                      ? 0
                      : static_cast<ULONG>(std::min<uint64_t>(cb, map_.size - position_));
    HRESULT result = file_->ReadStream(map_, position_, pv, count);
    if (result != S_OK)
      return result;
    position_ += count;
    if (pcbRead)
      *pcbRead = count;
    return S_OK;
  }
  HRESULT Write(const void*, ULONG, ULONG* pcbWritten) override {
    if (pcbWritten)
      *pcbWritten = 0;
    return STG_E_ACCESSDENIED;
  }
  HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override {
    long long base = origin == STREAM_SEEK_SET   ? 0
                     : origin == STREAM_SEEK_CUR ? static_cast<long long>(position_)
                     : origin == STREAM_SEEK_END ? static_cast<long long>(map_.size)
                                                 : -1;
    long long target = 0;
    if (base < 0 || __builtin_add_overflow(base, move.QuadPart, &target) || target < 0)
      return STG_E_INVALIDFUNCTION;
    position_ = static_cast<uint64_t>(target);
    if (newPosition)
      newPosition->QuadPart = position_;
    return S_OK;
  }
  HRESULT Stat(STATSTG* out, DWORD flags) override {
    return FillStat(file_, id_, STGM_READ | STGM_SHARE_EXCLUSIVE, out, flags);
  }

private:
  ~Stream() override { file_->Release(); }
  CompoundFile* file_;
  uint32_t id_;
  StreamMap map_;
  uint64_t position_ = 0;
};

class Enumerator final : public Counted<IEnumSTATSTG> {
public:
  Enumerator(CompoundFile* file, uint32_t* ids, uint32_t count)
      : file_(file), ids_(ids), count_(count) {
    file_->AddRef();
  }
  HRESULT Next(ULONG celt, STATSTG* out, ULONG* fetched) override {
    ULONG done = 0;
    if (!out)
      return STG_E_INVALIDPOINTER;
    for (; done < celt && next_ < count_; ++done, ++next_) {
      HRESULT result = FillStat(file_, ids_[next_], 0, out + done, STATFLAG_DEFAULT);
      if (result != S_OK) {
        while (done > 0)
          CoTaskMemFree(out[--done].pwcsName);
        if (fetched)
          *fetched = 0;
        return result;
      }
    }
    if (fetched)
      *fetched = done;
    return done == celt ? S_OK : S_FALSE;
  }
  HRESULT Skip(ULONG celt) override {
    uint32_t left = count_ - next_;
    next_ += celt < left ? celt : left;
    return celt <= left ? S_OK : S_FALSE;
  }
  HRESULT Reset() override {
    next_ = 0;
    return S_OK;
  }

private:
  ~Enumerator() override {
    delete[] ids_;
    file_->Release();
  }
  CompoundFile* file_;
  uint32_t* ids_; // owned
  uint32_t count_;
  uint32_t next_ = 0;
};

class Storage final : public Counted<IStorage> {
public:
  Storage(CompoundFile* file, uint32_t id, DWORD mode) : file_(file), id_(id), mode_(mode) {
    file_->AddRef();
  }
  HRESULT OpenStream(LPCWSTR name, void* reserved1, DWORD mode, DWORD reserved2,
                     IStream** out) override {
    uint32_t id = 0;
    HRESULT result = Child(name, reserved1 || reserved2, mode, out, CfbEntry::kStream, &id);
    if (result != S_OK)
      return result;
    Stream* stream = new (std::nothrow) Stream(file_, id);
    if (!stream)
      return STG_E_INSUFFICIENTMEMORY;
    result = stream->Init();
    if (result != S_OK) {
      stream->Release();
      return result;
    }
    *out = stream;
    return S_OK;
  }
  HRESULT OpenStorage(LPCWSTR name, IStorage* priority, DWORD mode, void* exclude, DWORD reserved,
                      IStorage** out) override {
    uint32_t id = 0;
    HRESULT result =
        Child(name, priority || exclude || reserved, mode, out, CfbEntry::kStorage, &id);
    if (result != S_OK)
      return result;
    Storage* storage = new (std::nothrow) Storage(file_, id, mode);
    if (!storage)
      return STG_E_INSUFFICIENTMEMORY;
    *out = storage;
    return S_OK;
  }
  HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                       IEnumSTATSTG** out) override {
    if (!out)
      return STG_E_INVALIDPOINTER;
    *out = nullptr;
    if (reserved1 || reserved2 || reserved3)
      return STG_E_INVALIDPARAMETER;
    uint32_t* ids = new (std::nothrow) uint32_t[file_->EntryCount()];
    if (!ids)
      return STG_E_INSUFFICIENTMEMORY;
    uint32_t count = file_->Children(id_, ids);
    Enumerator* list = new (std::nothrow) Enumerator(file_, ids, count);
    if (!list) {
      delete[] ids;
      return STG_E_INSUFFICIENTMEMORY;
    }
    *out = list;
    return S_OK;
  }
  HRESULT Stat(STATSTG* out, DWORD flags) override {
    return FillStat(file_, id_, mode_, out, flags);
  }

private:
  ~Storage() override { file_->Release(); }

  // Child - checks an open's arguments and finds the child `name` of
  // `type`; `*out` is cleared first.
  template <class T>
  HRESULT Child(LPCWSTR name, bool reservedUsed, DWORD mode, T** out, uint8_t type, uint32_t* id) {
    if (!out)
      return STG_E_INVALIDPOINTER;
    *out = nullptr;
    if (!name)
      return STG_E_INVALIDNAME;
    if (reservedUsed)
      return STG_E_INVALIDPARAMETER;
    HRESULT result = CheckChildMode(mode);
    if (result != S_OK)
      return result;
    size_t length = std::wcslen(name);
    if (length > kMaxNameUnits)
      return STG_E_INVALIDNAME;
    *id = file_->Find(id_, name, length);
    return *id != kNoEntry && file_->Entry(*id).type == type ? S_OK : STG_E_FILENOTFOUND;
  }

  CompoundFile* file_;
  uint32_t id_;
  DWORD mode_;
};

} // namespace

HRESULT StgIsStorageFile(LPCWSTR path) {
  if (!path)
    return STG_E_INVALIDNAME;
  int fd = qx::crt::_wsopen(path, _O_RDONLY | _O_BINARY, _SH_DENYNO, 0);
  if (fd < 0)
    return qx::platform::OpenFailure(errno);
  unsigned char head[8];
  long got = qx::platform::ReadAt(fd, head, sizeof head, 0);
  qx::crt::_close(fd);
  if (got < 0)
    return STG_E_READFAULT;
  return qx::platform::HasSignature(head, static_cast<size_t>(got)) ? S_OK : S_FALSE;
}

HRESULT StgOpenStorage(LPCWSTR path, IStorage* priority, DWORD mode, void* exclude, DWORD reserved,
                       IStorage** out) {
  if (!out)
    return STG_E_INVALIDPOINTER;
  *out = nullptr;
  if (!path)
    return STG_E_INVALIDNAME;
  if (priority || exclude || reserved)
    return STG_E_INVALIDPARAMETER;
  if ((mode & kAccessMask) != STGM_READ || (mode & ~(kAccessMask | kShareMask | STGM_TRANSACTED)))
    return STG_E_INVALIDFLAG;
  DWORD share = mode & kShareMask;
  int shareMode = share == STGM_SHARE_EXCLUSIVE                  ? _SH_DENYRW
                  : share == STGM_SHARE_DENY_NONE                ? _SH_DENYNO
                  : share == STGM_SHARE_DENY_WRITE || share == 0 ? _SH_DENYWR
                                                                 : -1;
  if (shareMode < 0)
    return STG_E_INVALIDFLAG;
  CompoundFile* file = nullptr;
  HRESULT result = CompoundFile::Open(path, shareMode, &file);
  if (result != S_OK)
    return result;
  Storage* root = new (std::nothrow) Storage(file, 0, mode);
  file->Release(); // the storage holds the file now (or nothing does)
  if (!root)
    return STG_E_INSUFFICIENTMEMORY;
  *out = root;
  return S_OK;
}

} // namespace qx::win
