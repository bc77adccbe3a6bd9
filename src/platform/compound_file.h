//===- platform/compound_file.h - The compound-file reader ------*- C++ -*-===//
//
// Provides: CompoundFile, the reader behind platform/storage.h. Open reads
// and checks the whole structure of a compound file once: the header
// (version 3 with 512-byte sectors, version 4 with 4,096-byte sectors), the
// sector allocation table reached through the header and the DIFAT chain,
// the directory, the mini table and the mini stream, and every chain that a
// reachable directory entry uses. Each sector may belong to one chain only,
// so a chain that loops or crosses another, a sector past the end of the
// file, a size the file cannot hold or a directory entry reached twice
// makes Open fail with STG_E_DOCFILECORRUPT. Everything it allocates is
// bounded by the size of the file.
//
// After Open, streams read through a StreamMap (the sectors of one stream,
// in order) with one positional read per run of adjacent sectors.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_COMPOUND_FILE_H
#define QXUTIL_PLATFORM_COMPOUND_FILE_H

#include "platform/storage.h"

#include <cstddef>
#include <cstdint>

namespace qx::platform {

using qx::win::HRESULT;

/// The "no entry" value of directory links.
inline constexpr uint32_t kNoEntry = 0xFFFFFFFF;

/// CfbEntry - one directory entry, decoded.
struct CfbEntry {
  enum Type : uint8_t { kUnused = 0, kStorage = 1, kStream = 2, kRoot = 5 };
  wchar_t name[32];   // UTF-16 units, terminated
  uint8_t nameLength; // units, without the terminator
  uint8_t type;
  uint32_t left, right, child; // kNoEntry when none
  uint32_t start;              // first sector (of the mini stream when small)
  uint64_t size;
  FILETIME created, modified;
  uint8_t clsid[16];
  uint32_t stateBits;
};

/// StreamMap - where one stream's bytes lie: `count` sectors of the file
/// (or of the mini stream when `mini`), in order.
struct StreamMap {
  uint32_t* sectors = nullptr; // owned
  uint32_t count = 0;
  bool mini = false;
  uint64_t size = 0;
  StreamMap() = default;
  StreamMap(const StreamMap&) = delete;
  StreamMap& operator=(const StreamMap&) = delete;
  ~StreamMap() { delete[] sectors; }
};

/// OpenFailure - the storage result of a failed _wsopen with the runtime's
/// errno `error` (no such file, sharing conflict, ...).
HRESULT OpenFailure(int error);

/// HasSignature - whether the `size` bytes at `head` begin with the
/// compound-file signature.
bool HasSignature(const unsigned char* head, size_t size);

/// CompareNames - the order of names in the directory: the shorter name
/// first; names of one length by their upper-cased UTF-16 units.
int CompareNames(const wchar_t* a, size_t aLength, const wchar_t* b, size_t bLength);

/// CompoundFile - one open compound file, shared (reference counted) by the
/// storages and streams opened in it.
class CompoundFile {
public:
  /// Open - opens and checks `path`; `shareMode` is the _SH_ share mode of
  /// the descriptor. S_OK with `*out` (count 1), or the failure (storage.h).
  static HRESULT Open(const wchar_t* path, int shareMode, CompoundFile** out);

  void AddRef() { ++references_; }
  void Release();

  uint32_t EntryCount() const { return entryCount_; }
  const CfbEntry& Entry(uint32_t id) const { return entries_[id]; }

  /// Find - the child of storage `parent` named `name` (`length` units),
  /// searched down the storage's tree in the directory's order. kNoEntry
  /// when there is none.
  uint32_t Find(uint32_t parent, const wchar_t* name, size_t length) const;

  /// Children - the children of storage `parent` in the directory's order
  /// into `ids` (room for EntryCount()); returns their number.
  uint32_t Children(uint32_t parent, uint32_t* ids) const;

  /// Map - the sectors of stream `id`. S_OK, STG_E_INSUFFICIENTMEMORY.
  HRESULT Map(uint32_t id, StreamMap* map) const;

  /// ReadStream - copies `count` bytes at `offset` of the stream `map`
  /// (the caller keeps them inside its size). S_OK or STG_E_READFAULT.
  HRESULT ReadStream(const StreamMap& map, uint64_t offset, void* buffer, size_t count) const;

private:
  CompoundFile() = default;
  ~CompoundFile();
  HRESULT Load();
  HRESULT ReadHeader(const unsigned char* header);
  HRESULT LoadFat(const unsigned char* header);
  HRESULT LoadDirectory();
  HRESULT LoadMiniFat();
  HRESULT CheckTree();
  HRESULT CheckStream(uint32_t id);
  HRESULT ReadSector(uint32_t sector, unsigned char* out) const;
  HRESULT Follow(bool mini, uint32_t start, uint32_t count, unsigned char* owned, uint32_t* out,
                 uint32_t* last) const;
  HRESULT LoadChain(uint32_t start, uint32_t** sectors, uint32_t* count);
  uint64_t UnitOffset(const StreamMap& map, uint32_t unit) const;
  bool Claim(uint32_t sector);

  int fd_ = -1;
  long references_ = 1;
  uint64_t fileSize_ = 0;
  unsigned shift_ = 9;       // sector size 1 << shift_
  bool version4_ = false;    // sizes have 64 bits (version 3: the low 32 count)
  uint32_t miniSectors_ = 0; // 64-byte sectors the mini stream holds
  uint32_t sectors_ = 0;     // sectors the file holds (the last may be partial)
  uint32_t* fat_ = nullptr;  // owned, fatLength_ entries
  uint32_t fatLength_ = 0;
  uint32_t* miniFat_ = nullptr; // owned, miniFatLength_ entries
  uint32_t miniFatLength_ = 0;
  uint32_t firstDirectory_ = 0, firstMiniFat_ = 0;
  CfbEntry* entries_ = nullptr; // owned, entryCount_ entries
  uint32_t entryCount_ = 0;
  StreamMap miniStream_;               // the root's stream, where small streams lie
  unsigned char* owned_ = nullptr;     // a bit per sector while Open checks chains
  unsigned char* miniOwned_ = nullptr; // a bit per mini sector
};

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_COMPOUND_FILE_H
