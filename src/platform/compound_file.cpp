//===- platform/compound_file.cpp - The compound-file reader -------------===//
//
// The layout, in short: a 512-byte header; then sectors of 512 (version 3)
// or 4,096 bytes (version 4), sector n at byte (n + 1) * size. The sector
// allocation table (FAT) links each sector to the next of its chain; the
// header lists its first 109 sectors and a chain of DIFAT sectors the rest.
// The directory is a chain of 128-byte entries; each storage's children
// form a red-black tree ordered by CompareNames. Streams below 4,096 bytes
// lie in 64-byte sectors of the mini stream (the root entry's stream),
// linked by the mini table.
//
//===----------------------------------------------------------------------===//
#include "platform/compound_file.h"

#include "platform/file_crt.h"
#include "platform/file_win.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

namespace qx::platform {

using namespace qx::win;

namespace {

constexpr unsigned char kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr unsigned char kBetaSignature[8] = {0x0E, 0x11, 0xFC, 0x0D, 0xD0, 0xCF, 0x11, 0x0E};
constexpr size_t kHeaderSize = 512;
constexpr size_t kEntrySize = 128;
constexpr size_t kHeaderFatIds = 109; // FAT sectors named in the header
constexpr uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr uint32_t kMaxSector = 0xFFFFFFFA; // the largest sector number
constexpr unsigned kMiniShift = 6;
constexpr uint64_t kMiniCutoff = 4096;

uint16_t Le16(const unsigned char* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
uint32_t Le32(const unsigned char* p) {
  return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
         static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}
uint64_t Le64(const unsigned char* p) { return Le32(p) | static_cast<uint64_t>(Le32(p + 4)) << 32; }
FILETIME TimeAt(const unsigned char* p) { return FILETIME{Le32(p), Le32(p + 4)}; }

uint32_t Units(uint64_t bytes, unsigned shift) {
  return static_cast<uint32_t>((bytes + (uint64_t{1} << shift) - 1) >> shift);
}

wchar_t Upper(wchar_t c) {
  return static_cast<wchar_t>(
      reinterpret_cast<ULONG_PTR>(CharUpperW(reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(c)))));
}

// A bitmap of `bits` bits, zeroed; null when memory fails.
unsigned char* NewBitmap(uint64_t bits) {
  return new (std::nothrow) unsigned char[(bits + 7) / 8 + 1]();
}
bool TestAndSet(unsigned char* map, uint32_t bit) {
  unsigned char mask = static_cast<unsigned char>(1u << (bit & 7));
  bool was = (map[bit >> 3] & mask) != 0;
  map[bit >> 3] |= mask;
  return was;
}

} // namespace

HRESULT OpenFailure(int error) {
  switch (error) {
  case qx::crt::kErrNoEnt:
    return STG_E_FILENOTFOUND;
  case qx::crt::kErrNotDir:
    return STG_E_PATHNOTFOUND;
  case qx::crt::kErrAcces:
    return STG_E_SHAREVIOLATION;
  case qx::crt::kErrMFile:
  case qx::crt::kErrNFile:
    return STG_E_TOOMANYOPENFILES;
  case qx::crt::kErrNoMem:
    return STG_E_INSUFFICIENTMEMORY;
  default:
    return STG_E_READFAULT;
  }
}

bool HasSignature(const unsigned char* head, size_t size) {
  return size >= sizeof kSignature && std::memcmp(head, kSignature, sizeof kSignature) == 0;
}

int CompareNames(const wchar_t* a, size_t aLength, const wchar_t* b, size_t bLength) {
  if (aLength != bLength)
    return aLength < bLength ? -1 : 1;
  for (size_t i = 0; i < aLength; ++i) {
    wchar_t ua = Upper(a[i]), ub = Upper(b[i]);
    if (ua != ub)
      return ua < ub ? -1 : 1;
  }
  return 0;
}

HRESULT CompoundFile::Open(const wchar_t* path, int shareMode, CompoundFile** out) {
  *out = nullptr;
  CompoundFile* file = new (std::nothrow) CompoundFile;
  if (!file)
    return STG_E_INSUFFICIENTMEMORY;
  file->fd_ = qx::crt::_wsopen(path, _O_RDONLY | _O_BINARY, shareMode, 0);
  HRESULT result = file->fd_ < 0 ? OpenFailure(errno) : file->Load();
  // The bitmaps serve only the checks.
  delete[] file->owned_;
  delete[] file->miniOwned_;
  file->owned_ = file->miniOwned_ = nullptr;
  if (result != S_OK) {
    file->Release();
    return result;
  }
  *out = file;
  return S_OK;
}

void CompoundFile::Release() {
  if (--references_ == 0)
    delete this;
}

CompoundFile::~CompoundFile() {
  if (fd_ >= 0)
    qx::crt::_close(fd_);
  delete[] fat_;
  delete[] miniFat_;
  delete[] entries_;
  delete[] owned_;
  delete[] miniOwned_;
}

HRESULT CompoundFile::Load() {
  long end = qx::crt::_lseek(fd_, 0, 2);
  if (end < 0)
    return STG_E_READFAULT;
  fileSize_ = static_cast<uint64_t>(end);
  unsigned char header[kHeaderSize];
  long got = ReadAt(fd_, header, sizeof header, 0);
  if (got < 0)
    return STG_E_READFAULT;
  if (!HasSignature(header, static_cast<size_t>(got)))
    return got >= 8 && std::memcmp(header, kBetaSignature, 8) == 0 ? STG_E_OLDFORMAT
                                                                   : STG_E_FILEALREADYEXISTS;
  if (static_cast<size_t>(got) < kHeaderSize)
    return STG_E_INVALIDHEADER;
  HRESULT result = ReadHeader(header);
  if (result == S_OK)
    result = LoadFat(header);
  if (result == S_OK)
    result = LoadDirectory();
  if (result == S_OK)
    result = LoadMiniFat();
  if (result == S_OK)
    result = CheckTree();
  return result;
}

HRESULT CompoundFile::ReadHeader(const unsigned char* header) {
  uint16_t major = Le16(header + 26);
  unsigned shift = Le16(header + 30);
  if (Le16(header + 28) != 0xFFFE || (major != 3 && major != 4) ||
      shift != (major == 3 ? 9u : 12u) || Le16(header + 32) != kMiniShift ||
      Le32(header + 56) != kMiniCutoff)
    return STG_E_INVALIDHEADER;
  shift_ = shift;
  version4_ = major == 4;
  uint64_t size = uint64_t{1} << shift_;
  uint64_t sectors = fileSize_ > size ? Units(fileSize_ - size, shift_) : 0;
  sectors_ = static_cast<uint32_t>(std::min<uint64_t>(sectors, uint64_t{kMaxSector} + 1));
  firstDirectory_ = Le32(header + 48);
  firstMiniFat_ = Le32(header + 60);
  owned_ = NewBitmap(sectors_);
  return owned_ ? S_OK : STG_E_INSUFFICIENTMEMORY;
}

bool CompoundFile::Claim(uint32_t sector) {
  return sector < sectors_ && !TestAndSet(owned_, sector);
}

HRESULT CompoundFile::ReadSector(uint32_t sector, unsigned char* out) const {
  size_t size = size_t{1} << shift_;
  long got = ReadAt(fd_, out, size, static_cast<long long>((uint64_t{sector} + 1) << shift_));
  if (got < 0)
    return STG_E_READFAULT;
  // The last sector of a file may be cut short; the rest reads as zeros.
  std::memset(out + got, 0, size - static_cast<size_t>(got));
  return S_OK;
}

HRESULT CompoundFile::LoadFat(const unsigned char* header) {
  uint32_t fatSectors = Le32(header + 44);
  if (fatSectors > sectors_)
    return STG_E_DOCFILECORRUPT;
  size_t size = size_t{1} << shift_;
  uint32_t perSector = static_cast<uint32_t>(size / 4);
  fatLength_ = fatSectors * perSector;
  fat_ = new (std::nothrow) uint32_t[fatLength_ ? fatLength_ : 1];
  uint32_t* ids = new (std::nothrow) uint32_t[fatSectors ? fatSectors : 1];
  unsigned char* buffer = new (std::nothrow) unsigned char[size];
  if (!fat_ || !ids || !buffer) {
    delete[] ids;
    delete[] buffer;
    return STG_E_INSUFFICIENTMEMORY;
  }
  HRESULT result = S_OK;
  uint32_t known = std::min<uint32_t>(fatSectors, kHeaderFatIds);
  for (uint32_t i = 0; i < known; ++i)
    ids[i] = Le32(header + 76 + 4 * i);
  // The DIFAT chain: each sector names perSector - 1 FAT sectors, then the next.
  for (uint32_t difat = Le32(header + 68); result == S_OK && known < fatSectors;) {
    if (!Claim(difat)) {
      result = STG_E_DOCFILECORRUPT;
      break;
    }
    result = ReadSector(difat, buffer);
    for (uint32_t i = 0; result == S_OK && i + 1 < perSector && known < fatSectors; ++i)
      ids[known++] = Le32(buffer + 4 * i);
    difat = Le32(buffer + size - 4);
  }
  // The FAT's sectors, read straight into the table a run of adjacent ones at a time.
  for (uint32_t i = 0, run; result == S_OK && i < fatSectors; i += run) {
    for (run = 0; i + run < fatSectors && (run == 0 || ids[i + run] == ids[i] + run); ++run)
      if (!Claim(ids[i + run]))
        result = STG_E_DOCFILECORRUPT;
    if (result != S_OK)
      break;
    auto* bytes = reinterpret_cast<unsigned char*>(fat_ + size_t{i} * perSector);
    size_t want = size_t{run} << shift_;
    long got = ReadAt(fd_, bytes, want, static_cast<long long>((uint64_t{ids[i]} + 1) << shift_));
    if (got < 0) {
      result = STG_E_READFAULT;
      break;
    }
    if (static_cast<size_t>(got) < want) // a file cut short
      std::memset(bytes + got, 0, want - static_cast<size_t>(got));
    for (size_t j = 0; j < size_t{run} * perSector; ++j)
      fat_[size_t{i} * perSector + j] = Le32(bytes + 4 * j);
  }
  delete[] ids;
  delete[] buffer;
  return result;
}

HRESULT CompoundFile::Follow(bool mini, uint32_t start, uint32_t count, unsigned char* owned,
                             uint32_t* out, uint32_t* last) const {
  const uint32_t* table = mini ? miniFat_ : fat_;
  uint32_t length = mini ? miniFatLength_ : fatLength_;
  uint32_t limit = std::min(length, mini ? miniSectors_ : sectors_);
  uint32_t sector = start;
  for (uint32_t i = 0; i < count; ++i) {
    if (sector >= limit || (owned && TestAndSet(owned, sector)))
      return STG_E_DOCFILECORRUPT;
    if (out)
      out[i] = sector;
    if (last)
      *last = sector;
    sector = table[sector];
  }
  return S_OK;
}

// LoadChain - the sectors of a chain that ends where the table says
// (the directory, the mini table), claimed for it.
HRESULT CompoundFile::LoadChain(uint32_t start, uint32_t** sectors, uint32_t* count) {
  *sectors = nullptr;
  *count = 0;
  uint32_t n = 0;
  for (uint32_t s = start; s != kEndOfChain; s = fat_[s], ++n)
    if (s >= fatLength_ || !Claim(s))
      return STG_E_DOCFILECORRUPT;
  *sectors = new (std::nothrow) uint32_t[n ? n : 1];
  if (!*sectors)
    return STG_E_INSUFFICIENTMEMORY;
  *count = n;
  return Follow(false, start, n, nullptr, *sectors, nullptr);
}

HRESULT CompoundFile::LoadDirectory() {
  uint32_t* chain = nullptr;
  uint32_t count = 0;
  HRESULT result = LoadChain(firstDirectory_, &chain, &count);
  size_t size = size_t{1} << shift_;
  size_t perSector = size / kEntrySize;
  if (result == S_OK && count == 0)
    result = STG_E_DOCFILECORRUPT;
  unsigned char* buffer = nullptr;
  if (result == S_OK) {
    entryCount_ = static_cast<uint32_t>(count * perSector);
    entries_ = new (std::nothrow) CfbEntry[entryCount_];
    buffer = new (std::nothrow) unsigned char[size];
    if (!entries_ || !buffer)
      result = STG_E_INSUFFICIENTMEMORY;
  }
  for (uint32_t i = 0; result == S_OK && i < count; ++i) {
    result = ReadSector(chain[i], buffer);
    for (size_t j = 0; result == S_OK && j < perSector; ++j) {
      const unsigned char* p = buffer + j * kEntrySize;
      CfbEntry& e = entries_[i * perSector + j];
      unsigned bytes = Le16(p + 64);
      // An impossible length leaves the name empty, which no entry in the tree may have.
      e.nameLength = bytes >= 2 && bytes <= 64 && bytes % 2 == 0 ? bytes / 2 - 1 : 0;
      for (unsigned k = 0; k < e.nameLength; ++k)
        e.name[k] = Le16(p + 2 * k);
      e.name[e.nameLength] = 0;
      e.type = p[66];
      e.left = Le32(p + 68);
      e.right = Le32(p + 72);
      e.child = Le32(p + 76);
      std::memcpy(e.clsid, p + 80, sizeof e.clsid);
      e.stateBits = Le32(p + 96);
      e.created = TimeAt(p + 100);
      e.modified = TimeAt(p + 108);
      e.start = Le32(p + 116);
      // Version 3 files may leave the high half of a size unset.
      e.size = version4_ ? Le64(p + 120) : Le32(p + 120);
    }
  }
  delete[] chain;
  delete[] buffer;
  return result;
}

HRESULT CompoundFile::LoadMiniFat() {
  const CfbEntry& root = entries_[0];
  if (root.type != CfbEntry::kRoot)
    return STG_E_DOCFILECORRUPT;
  uint32_t* chain = nullptr;
  uint32_t count = 0;
  HRESULT result = LoadChain(firstMiniFat_, &chain, &count);
  size_t size = size_t{1} << shift_;
  uint32_t perSector = static_cast<uint32_t>(size / 4);
  unsigned char* buffer = nullptr;
  if (result == S_OK) {
    miniFatLength_ = count * perSector;
    miniFat_ = new (std::nothrow) uint32_t[miniFatLength_ ? miniFatLength_ : 1];
    buffer = new (std::nothrow) unsigned char[size];
    if (!miniFat_ || !buffer)
      result = STG_E_INSUFFICIENTMEMORY;
  }
  for (uint32_t i = 0; result == S_OK && i < count; ++i) {
    result = ReadSector(chain[i], buffer);
    for (uint32_t j = 0; result == S_OK && j < perSector; ++j)
      miniFat_[i * perSector + j] = Le32(buffer + 4 * j);
  }
  delete[] chain;
  delete[] buffer;
  // The mini stream: the root's chain of ordinary sectors.
  if (result == S_OK && root.size > fileSize_)
    result = STG_E_DOCFILECORRUPT;
  if (result == S_OK) {
    miniStream_.size = root.size;
    miniStream_.count = Units(root.size, shift_);
    miniStream_.sectors = new (std::nothrow) uint32_t[miniStream_.count ? miniStream_.count : 1];
    miniSectors_ = Units(root.size, kMiniShift);
    miniOwned_ = NewBitmap(miniSectors_);
    if (!miniStream_.sectors || !miniOwned_)
      result = STG_E_INSUFFICIENTMEMORY;
  }
  uint32_t last = 0;
  if (result == S_OK)
    result = Follow(false, root.start, miniStream_.count, owned_, miniStream_.sectors, &last);
  if (result == S_OK && miniStream_.count &&
      ((uint64_t{last} + 1) << shift_) + root.size - (uint64_t{miniStream_.count - 1} << shift_) >
          fileSize_)
    result = STG_E_DOCFILECORRUPT;
  return result;
}

HRESULT CompoundFile::CheckStream(uint32_t id) {
  const CfbEntry& e = entries_[id];
  if (e.size > fileSize_)
    return STG_E_DOCFILECORRUPT;
  bool mini = e.size < kMiniCutoff;
  unsigned shift = mini ? kMiniShift : shift_;
  uint32_t count = Units(e.size, shift);
  if (count == 0)
    return S_OK;
  uint32_t last = 0;
  HRESULT result = Follow(mini, e.start, count, mini ? miniOwned_ : owned_, nullptr, &last);
  // The stream's last bytes must lie inside the mini stream or the file.
  uint64_t end = mini ? uint64_t{last} << kMiniShift : (uint64_t{last} + 1) << shift_;
  end += e.size - (uint64_t{count - 1} << shift);
  if (result == S_OK && end > (mini ? miniStream_.size : fileSize_))
    result = STG_E_DOCFILECORRUPT;
  return result;
}

HRESULT CompoundFile::CheckTree() {
  // Each entry may be reached once: a tree that loops or shares a subtree is damaged.
  unsigned char* seen = NewBitmap(entryCount_);
  uint32_t* pending = new (std::nothrow) uint32_t[entryCount_];
  if (!seen || !pending) {
    delete[] seen;
    delete[] pending;
    return STG_E_INSUFFICIENTMEMORY;
  }
  uint32_t depth = 0;
  TestAndSet(seen, 0);
  HRESULT result = S_OK;
  auto push = [&](uint32_t id) {
    if (id == kNoEntry)
      return;
    if (id >= entryCount_ || TestAndSet(seen, id))
      result = STG_E_DOCFILECORRUPT;
    else
      pending[depth++] = id;
  };
  push(entries_[0].child);
  while (result == S_OK && depth > 0) {
    uint32_t id = pending[--depth];
    const CfbEntry& e = entries_[id];
    if ((e.type != CfbEntry::kStorage && e.type != CfbEntry::kStream) || e.nameLength == 0) {
      result = STG_E_DOCFILECORRUPT;
      break;
    }
    push(e.left);
    push(e.right);
    if (e.type == CfbEntry::kStorage)
      push(e.child);
    else if (result == S_OK)
      result = CheckStream(id);
  }
  delete[] seen;
  delete[] pending;
  return result;
}

uint32_t CompoundFile::Find(uint32_t parent, const wchar_t* name, size_t length) const {
  uint32_t id = entries_[parent].child;
  // The tree was checked at Open: the walk ends within EntryCount() steps.
  while (id < entryCount_) {
    const CfbEntry& e = entries_[id];
    int order = CompareNames(name, length, e.name, e.nameLength);
    if (order == 0)
      return id;
    id = order < 0 ? e.left : e.right;
  }
  return kNoEntry;
}

uint32_t CompoundFile::Children(uint32_t parent, uint32_t* ids) const {
  // Gather the tree breadth first in `ids` itself, then put it in name order.
  uint32_t count = 0;
  if (entries_[parent].child < entryCount_)
    ids[count++] = entries_[parent].child;
  for (uint32_t i = 0; i < count; ++i)
    for (uint32_t next : {entries_[ids[i]].left, entries_[ids[i]].right})
      if (next < entryCount_)
        ids[count++] = next;
  std::sort(ids, ids + count, [this](uint32_t a, uint32_t b) {
    return CompareNames(entries_[a].name, entries_[a].nameLength, entries_[b].name,
                        entries_[b].nameLength) < 0;
  });
  return count;
}

HRESULT CompoundFile::Map(uint32_t id, StreamMap* map) const {
  const CfbEntry& e = entries_[id];
  map->size = e.size;
  map->mini = e.size < kMiniCutoff;
  map->count = Units(e.size, map->mini ? kMiniShift : shift_);
  map->sectors = new (std::nothrow) uint32_t[map->count ? map->count : 1];
  if (!map->sectors)
    return STG_E_INSUFFICIENTMEMORY;
  return Follow(map->mini, e.start, map->count, nullptr, map->sectors, nullptr);
}

uint64_t CompoundFile::UnitOffset(const StreamMap& map, uint32_t unit) const {
  if (!map.mini)
    return (uint64_t{map.sectors[unit]} + 1) << shift_;
  uint64_t at = uint64_t{map.sectors[unit]} << kMiniShift;
  return UnitOffset(miniStream_, static_cast<uint32_t>(at >> shift_)) +
         (at & ((uint64_t{1} << shift_) - 1));
}

HRESULT CompoundFile::ReadStream(const StreamMap& map, uint64_t offset, void* buffer,
                                 size_t count) const {
  unsigned shift = map.mini ? kMiniShift : shift_;
  uint64_t unit = uint64_t{1} << shift;
  auto* out = static_cast<unsigned char*>(buffer);
  while (count > 0) {
    // One read for the run of units that lie side by side in the file.
    uint32_t i = static_cast<uint32_t>(offset >> shift);
    uint64_t within = offset & (unit - 1);
    uint64_t at = UnitOffset(map, i) + within;
    size_t run = static_cast<size_t>(std::min<uint64_t>(count, unit - within));
    for (uint64_t next = at - within; run < count && i + 1 < map.count; ++i) {
      uint64_t following = UnitOffset(map, i + 1);
      if (following != next + unit)
        break;
      next = following;
      run += static_cast<size_t>(std::min<uint64_t>(count - run, unit));
    }
    if (ReadAt(fd_, out, run, static_cast<long long>(at)) != static_cast<long>(run))
      return STG_E_READFAULT;
    out += run;
    offset += run;
    count -= run;
  }
  return S_OK;
}

} // namespace qx::platform
