//===- platform/storage.h - Structured storage, read-only --------*- C++ -*-===//
//
// Provides: StgIsStorageFile, StgOpenStorage and the IStorage, IStream and
// IEnumSTATSTG objects they hand out, over the library's own reader of
// compound files (platform/compound_file.h). Only reading is provided:
// storages open read-only with deny-write sharing (a shared lock, as the
// registry's read-only opens take), streams open read-only and exclusive.
//
// Results are Windows' HRESULTs: S_OK, S_FALSE, and the STG_E_ codes below.
// A damaged file gives a clean failure at StgOpenStorage (the whole
// structure is checked there: header, sector tables, directory tree and
// every chain), never a crash, a hang or an allocation larger than the
// file. docs/storage.md says which code each damage gives.
//
// Objects are reference counted: AddRef and Release as in COM; an object
// is freed when its count reaches 0. A stream keeps the file open by
// itself, so releasing the storage before the stream is allowed.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_STORAGE_H
#define QXUTIL_PLATFORM_STORAGE_H

#include "qxutil/wintypes.h"

#include <cstdint>

namespace qx::win {

typedef int32_t HRESULT;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);
inline constexpr HRESULT STG_E_FILENOTFOUND = static_cast<HRESULT>(0x80030002);
inline constexpr HRESULT STG_E_PATHNOTFOUND = static_cast<HRESULT>(0x80030003);
inline constexpr HRESULT STG_E_TOOMANYOPENFILES = static_cast<HRESULT>(0x80030004);
inline constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005);
inline constexpr HRESULT STG_E_INSUFFICIENTMEMORY = static_cast<HRESULT>(0x80030008);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009);
inline constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001E);
inline constexpr HRESULT STG_E_SHAREVIOLATION = static_cast<HRESULT>(0x80030020);
inline constexpr HRESULT STG_E_FILEALREADYEXISTS = static_cast<HRESULT>(0x80030050);
inline constexpr HRESULT STG_E_INVALIDPARAMETER = static_cast<HRESULT>(0x80030057);
inline constexpr HRESULT STG_E_INVALIDHEADER = static_cast<HRESULT>(0x800300FB);
inline constexpr HRESULT STG_E_INVALIDNAME = static_cast<HRESULT>(0x800300FC);
inline constexpr HRESULT STG_E_INVALIDFLAG = static_cast<HRESULT>(0x800300FF);
inline constexpr HRESULT STG_E_OLDFORMAT = static_cast<HRESULT>(0x80030104);
inline constexpr HRESULT STG_E_DOCFILECORRUPT = static_cast<HRESULT>(0x80030109);

// Access, sharing and creation flags (STGM_); only the read-only ones open.
inline constexpr DWORD STGM_READ = 0x00000000;
inline constexpr DWORD STGM_WRITE = 0x00000001;
inline constexpr DWORD STGM_READWRITE = 0x00000002;
inline constexpr DWORD STGM_SHARE_DENY_NONE = 0x00000040;
inline constexpr DWORD STGM_SHARE_DENY_READ = 0x00000030;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x00000020;
inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x00000010;
inline constexpr DWORD STGM_TRANSACTED = 0x00010000;
inline constexpr DWORD STGM_CREATE = 0x00001000;

// Element types (STGTY_), seek origins (STREAM_SEEK_), Stat flags.
inline constexpr DWORD STGTY_STORAGE = 1;
inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;
inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

struct CLSID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];
};

/// STATSTG - what Stat and IEnumSTATSTG::Next say of an element. The name
/// is allocated with CoTaskMemAlloc and the caller frees it with
/// CoTaskMemFree (null with STATFLAG_NONAME).
struct STATSTG {
  LPWSTR pwcsName;
  DWORD type;
  ULARGE_INTEGER cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};

/// CoTaskMemAlloc, CoTaskMemFree - the allocator of STATSTG names.
LPVOID CoTaskMemAlloc(size_t size);
void CoTaskMemFree(LPVOID block);

/// IStream - a stream opened for reading.
class IStream {
public:
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
  /// Read - copies up to `cb` bytes from the position and advances it;
  /// `*pcbRead` (when not null) gets the count, fewer than `cb` only at the
  /// end of the stream. S_OK (also at the end), STG_E_INVALIDPOINTER for a
  /// null buffer, STG_E_READFAULT when the file cannot be read.
  virtual HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
  /// Write - STG_E_ACCESSDENIED: streams here are read-only.
  virtual HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;
  /// Seek - moves the position by `move` from STREAM_SEEK_SET, _CUR or
  /// _END; `*newPosition` (when not null) gets the position. A position
  /// past the end is allowed (reads there give 0 bytes); a negative one is
  /// STG_E_INVALIDFUNCTION and another origin STG_E_INVALIDFUNCTION, both
  /// leaving the position.
  virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) = 0;
  /// Stat - the stream's name (unless STATFLAG_NONAME), type and size.
  virtual HRESULT Stat(STATSTG* out, DWORD flags) = 0;

protected:
  virtual ~IStream() = default;
};

/// IEnumSTATSTG - the elements of one storage, in the directory's order.
class IEnumSTATSTG {
public:
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
  /// Next - fills up to `celt` STATSTGs; S_OK when all were filled, S_FALSE
  /// when fewer (`*fetched`, when not null, says how many).
  virtual HRESULT Next(ULONG celt, STATSTG* out, ULONG* fetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;

protected:
  virtual ~IEnumSTATSTG() = default;
};

/// IStorage - a storage (the root, or one inside another) opened for
/// reading.
class IStorage {
public:
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
  /// OpenStream - opens the stream `name` among this storage's elements,
  /// matched as the format orders names (ignoring case). `mode` must be
  /// STGM_READ | STGM_SHARE_EXCLUSIVE (else STG_E_INVALIDFLAG, or
  /// STG_E_ACCESSDENIED when it asks to write); `reserved1` null and
  /// `reserved2` 0 (else STG_E_INVALIDPARAMETER). STG_E_FILENOTFOUND when
  /// there is no such stream (a storage of that name is not one),
  /// STG_E_INVALIDNAME for a name of 32 units or more.
  virtual HRESULT OpenStream(LPCWSTR name, void* reserved1, DWORD mode, DWORD reserved2,
                             IStream** out) = 0;
  /// OpenStorage - the storage `name` inside this one, with the rules of
  /// OpenStream; `priority` and `exclude` must be null.
  virtual HRESULT OpenStorage(LPCWSTR name, IStorage* priority, DWORD mode, void* exclude,
                              DWORD reserved, IStorage** out) = 0;
  /// EnumElements - an enumerator of this storage's elements; the three
  /// reserved arguments must be 0 and null.
  virtual HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                               IEnumSTATSTG** out) = 0;
  /// Stat - the storage's name (unless STATFLAG_NONAME) and type.
  virtual HRESULT Stat(STATSTG* out, DWORD flags) = 0;

protected:
  virtual ~IStorage() = default;
};

/// StgIsStorageFile - S_OK when `path` begins with the compound-file
/// signature, S_FALSE when it does not (also when shorter than the
/// signature), STG_E_FILENOTFOUND / STG_E_PATHNOTFOUND when it cannot be
/// found, STG_E_SHAREVIOLATION when another holder denies reading,
/// STG_E_INVALIDNAME for a null path.
HRESULT StgIsStorageFile(LPCWSTR path);

/// StgOpenStorage - opens the compound file `path` read-only. `mode` must
/// be STGM_READ with STGM_SHARE_DENY_WRITE (STGM_SHARE_EXCLUSIVE and
/// STGM_SHARE_DENY_NONE are accepted and take an exclusive lock or none;
/// STGM_TRANSACTED is accepted and changes nothing); asking to write or
/// create is STG_E_INVALIDFLAG. `priority` and `exclude` must be null and
/// `reserved` 0 (else STG_E_INVALIDPARAMETER). Besides the open's own
/// failures (STG_E_FILENOTFOUND, STG_E_SHAREVIOLATION, ...): a file that is
/// not a compound file is STG_E_FILEALREADYEXISTS, one in the older format
/// STG_E_OLDFORMAT, a bad header STG_E_INVALIDHEADER, a damaged structure
/// STG_E_DOCFILECORRUPT, a failed read STG_E_READFAULT, no memory
/// STG_E_INSUFFICIENTMEMORY. `*out` is null on failure.
HRESULT StgOpenStorage(LPCWSTR path, IStorage* priority, DWORD mode, void* exclude, DWORD reserved,
                       IStorage** out);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_STORAGE_H
