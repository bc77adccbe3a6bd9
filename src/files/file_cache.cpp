//===- files/file_cache.cpp - The block cache -----------------------------===//
//
// Fixed-size blocks of registered files, found through a sorted index (by
// handle, then block number) and replaced least recently used first through
// a ring. All memory is taken at construction; no operation allocates.
//
// Descriptor n - 1 is never a block: it holds the key being looked for. A
// block whose write-back fails stays dirty and cached, keeping its key, and
// the operation that needed it fails.
//
//===----------------------------------------------------------------------===//
#include "files/bsearch.h"
#include "frame/singleton.h"
#include "platform/file_win.h"
#include "qxutil/files.h"

#include <cstring>

namespace qx::files {

namespace {

constexpr int kMaxDescriptors = 0x7FFFFFF;
constexpr uint32_t kDirty = 1;

class FileCacheImpl final : public cFileCache, public BSearch<int> {
public:
  enum eCreateError { kOutOfMemory = 0, kNoBlocks = 1 };

  FileCacheImpl(int blockCount, long blockSize);
  ~FileCacheImpl() override;

  bool FlushAndDrop(int handle) override;
  bool Flush(int handle) override;
  int BlockCount() override { return usable_; }
  long BlockSize() override { return blockSize_; }
  bool Fetch(int handle, long block, CacheBlock** out, int mode) override;
  CacheBlock* BlockAt(int position) override { return &blocks_[index_[position]]; }
  unsigned char* Data(int dataSlot) override {
    return data_ + static_cast<size_t>(dataSlot) * static_cast<size_t>(blockSize_);
  }
  void Drop(int position) override;

  // Key - (handle, block) as one number in the same order.
  static int64_t Key(int32_t handle, int32_t block) {
    return static_cast<int64_t>(static_cast<uint64_t>(static_cast<int64_t>(handle)) << 32) +
           (static_cast<int64_t>(block) + 0x80000000LL);
  }

  int Compare(const int& a, const int& b) const final {
    const CacheBlock& x = blocks_[a];
    const CacheBlock& y = blocks_[b];
    if (x.handle != y.handle)
      return x.handle < y.handle ? -1 : 1;
    if (x.blockNumber != y.blockNumber)
      return x.blockNumber < y.blockNumber ? -1 : 1;
    return 0;
  }

private:
  // Lookup - the index position of (handle, block), or -1 with *insertAt.
  int Lookup(int handle, int32_t block, int* insertAt);
  // PositionOf - the index position of descriptor d.
  int PositionOf(int d);
  void MoveToHead(int d);
  void Release();
  uint32_t Home(int64_t key) const {
    return static_cast<uint32_t>((static_cast<uint64_t>(key) * 0x9E3779B97F4A7C15ull) >>
                                 (64 - tableBits_));
  }
  int64_t KeyOf(int d) const { return Key(blocks_[d].handle, blocks_[d].blockNumber); }
  int Find(int64_t key) const;
  void Enter(int d);
  void Leave(int d);
  void Unlink(int d);
  bool WriteBack(CacheBlock& b);

  int count_;  // descriptors
  int usable_; // count_ - 1
  long blockSize_;
  CacheBlock* blocks_ = nullptr;
  unsigned char* data_ = nullptr;
  int* index_ = nullptr;
  int64_t* keys_ = nullptr; // keys_[p]: the key of index_[p], for the search
  // The cached blocks by key, open addressing: hits are answered here, the
  // sorted index gives the positions that claims and drops need.
  int32_t* table_ = nullptr;
  uint32_t tableMask_ = 0;
  int tableBits_ = 0;
  int head_ = 0;
  int tail_ = 0;
};

FileCacheImpl::FileCacheImpl(int blockCount, long blockSize) {
  if (blockCount < 2 || blockSize < 1) // one block leaves none usable
    throw kNoBlocks;
  if (blockCount > kMaxDescriptors)
    blockCount = kMaxDescriptors;
  count_ = blockCount;
  usable_ = blockCount - 1;
  blockSize_ = blockSize;
  unsigned long long dataBytes =
      static_cast<unsigned long long>(blockCount) * static_cast<unsigned long long>(blockSize);
  unsigned long long blockBytes = static_cast<unsigned long long>(blockCount) * sizeof(CacheBlock);
  if (blockBytes > 0xFFFFFFFFull)
    throw kOutOfMemory;
  unsigned long long indexBytes = (static_cast<unsigned long long>(blockCount) + 1) * sizeof(int);
  unsigned long long keyBytes = static_cast<unsigned long long>(blockCount) * sizeof(int64_t);
  tableBits_ = 1;
  while ((1ull << tableBits_) < 2ull * static_cast<unsigned long long>(blockCount))
    ++tableBits_;
  tableMask_ = static_cast<uint32_t>((1ull << tableBits_) - 1);
  unsigned long long tableBytes = (1ull << tableBits_) * sizeof(int32_t);
  if (dataBytes > 0xFFFFFFFFull || keyBytes > 0xFFFFFFFFull || tableBytes > 0xFFFFFFFFull ||
      !falloc_(static_cast<unsigned int>(tableBytes), &table_, false, false) ||
      !falloc_(static_cast<unsigned int>(blockBytes), &blocks_, false, true) ||
      !falloc_(static_cast<unsigned int>(dataBytes), &data_, false, true) ||
      !falloc_(static_cast<unsigned int>(indexBytes), &index_, false, true) ||
      !falloc_(static_cast<unsigned int>(keyBytes), &keys_, false, true)) {
    Release();
    throw kOutOfMemory;
  }
  std::memset(table_, 0xFF, static_cast<size_t>(tableBytes)); // every entry -1: empty
  int u = usable_;
  for (int i = 0; i < u; ++i) {
    blocks_[i].next = (i + 1) % u;
    blocks_[i].previous = (i + u - 1) % u;
    blocks_[i].dataSlot = i;
    index_[i] = i;
    keys_[i] = Key(0, 0);
  }
  blocks_[u].dataSlot = u;
  index_[u] = u;
  head_ = 0;
  tail_ = u - 1;
}

FileCacheImpl::~FileCacheImpl() { Release(); }

void FileCacheImpl::Release() {
  ffree(reinterpret_cast<void**>(&blocks_));
  ffree(reinterpret_cast<void**>(&data_));
  ffree(reinterpret_cast<void**>(&index_));
  ffree(reinterpret_cast<void**>(&keys_));
  ffree(reinterpret_cast<void**>(&table_));
}

int FileCacheImpl::Find(int64_t key) const {
  for (uint32_t i = Home(key);; i = (i + 1) & tableMask_) {
    int d = table_[i];
    if (d < 0 || KeyOf(d) == key)
      return d;
  }
}

void FileCacheImpl::Enter(int d) {
  uint32_t i = Home(KeyOf(d));
  while (table_[i] >= 0)
    i = (i + 1) & tableMask_;
  table_[i] = d;
}

void FileCacheImpl::Leave(int d) {
  uint32_t i = Home(KeyOf(d));
  while (table_[i] != d) {
    if (table_[i] < 0)
      return;
    i = (i + 1) & tableMask_;
  }
  // Backward shift: later entries of the run move into the hole when their
  // home does not lie between the hole and them.
  for (uint32_t j = (i + 1) & tableMask_; table_[j] >= 0; j = (j + 1) & tableMask_) {
    uint32_t home = Home(KeyOf(table_[j]));
    bool between = i <= j ? (home > i && home <= j) : (home > i || home <= j);
    if (!between) {
      table_[i] = table_[j];
      i = j;
    }
  }
  table_[i] = -1;
}

int FileCacheImpl::Lookup(int handle, int32_t block, int* insertAt) {
  CacheBlock& key = blocks_[usable_];
  key.handle = handle;
  key.blockNumber = block;
  // The position BSearch's search finds (the key, or the first greater
  // one), over the keys kept beside the index and without branches to
  // mispredict.
  int64_t k = Key(handle, block);
  const int64_t* first = keys_;
  size_t length = static_cast<size_t>(usable_);
  while (length > 1) {
    size_t half = length / 2;
    first += first[half - 1] < k ? half : 0;
    length -= half;
  }
  int p = static_cast<int>(first - keys_) + (usable_ > 0 && *first < k ? 1 : 0);
  if (p < usable_ && keys_[p] == k)
    return p;
  *insertAt = p;
  return -1;
}

int FileCacheImpl::PositionOf(int d) {
  int insertAt = 0;
  int p = Lookup(blocks_[d].handle, blocks_[d].blockNumber, &insertAt);
  if (p >= 0 && index_[p] == d)
    return p;
  // Equal keys (free blocks share (0, 0)) lie together around p.
  for (int q = p; q >= 0 && Compare(index_[q], d) == 0; --q)
    if (index_[q] == d)
      return q;
  for (int q = p + 1; q < usable_ && Compare(index_[q], d) == 0; ++q)
    if (index_[q] == d)
      return q;
  return -1;
}

void FileCacheImpl::Unlink(int d) {
  CacheBlock& b = blocks_[d];
  blocks_[b.previous].next = b.next;
  blocks_[b.next].previous = b.previous;
  if (d == tail_)
    tail_ = b.previous;
  if (d == head_)
    head_ = b.next;
}

void FileCacheImpl::MoveToHead(int d) {
  if (d == head_ || usable_ < 2)
    return;
  Unlink(d);
  CacheBlock& b = blocks_[d];
  b.previous = tail_;
  b.next = head_;
  blocks_[tail_].next = d;
  blocks_[head_].previous = d;
  head_ = d;
}

bool FileCacheImpl::WriteBack(CacheBlock& b) {
  int fd = ::GetFileFD(b.handle);
  if (fd < 0)
    return false;
  long long offset = static_cast<long long>(b.blockNumber) * blockSize_;
  long n = qx::platform::WriteAt(fd, Data(b.dataSlot), static_cast<size_t>(b.validLength), offset);
  if (n != b.validLength)
    return false;
  b.flags &= ~kDirty;
  return true;
}

bool FileCacheImpl::Fetch(int handle, long block, CacheBlock** out, int mode) {
  if (!out || handle == 0 || block < INT32_MIN || block > INT32_MAX)
    return false;
  if (blocks_[head_].handle == handle && blocks_[head_].blockNumber == block && handle != 0) {
    *out = &blocks_[head_]; // the most recent block again
    return true;
  }
  int hit = handle != 0 ? Find(Key(handle, static_cast<int32_t>(block))) : -1;
  if (hit >= 0) {
    MoveToHead(hit);
    *out = &blocks_[hit];
    return true;
  }
  if (mode == kFetchLookup)
    return false;
  int insertAt = 0;
  if (Lookup(handle, static_cast<int32_t>(block), &insertAt) >= 0)
    return false; // cannot happen: every cached key is in the table
  int d = tail_;
  CacheBlock& b = blocks_[d];
  if ((b.flags & kDirty) && !Flush(b.handle))
    return false; // the block keeps its key and contents
  int old = PositionOf(d);
  if (b.handle != 0)
    Leave(d);
  b.handle = handle;
  b.blockNumber = static_cast<int32_t>(block);
  b.validLength = 0;
  b.flags &= ~kDirty;
  if (old < insertAt) {
    --insertAt;
    std::memmove(index_ + old, index_ + old + 1, static_cast<size_t>(insertAt - old) * sizeof(int));
    std::memmove(keys_ + old, keys_ + old + 1,
                 static_cast<size_t>(insertAt - old) * sizeof(int64_t));
  } else if (old > insertAt) {
    std::memmove(index_ + insertAt + 1, index_ + insertAt,
                 static_cast<size_t>(old - insertAt) * sizeof(int));
    std::memmove(keys_ + insertAt + 1, keys_ + insertAt,
                 static_cast<size_t>(old - insertAt) * sizeof(int64_t));
  }
  index_[insertAt] = d;
  keys_[insertAt] = Key(handle, static_cast<int32_t>(block));
  Enter(d);
  MoveToHead(d);
  if (mode == kFetchRead) {
    int fd = ::GetFileFD(handle);
    long long offset = static_cast<long long>(block) * blockSize_;
    long n = fd < 0 || offset < 0 ? -1
                                  : qx::platform::ReadAt(fd, Data(b.dataSlot),
                                                         static_cast<size_t>(blockSize_), offset);
    if (n < 0) {
      Drop(insertAt); // no block stands for bytes that could not be read
      return false;
    }
    b.validLength = static_cast<int32_t>(n);
  }
  *out = &b;
  return true;
}

void FileCacheImpl::Drop(int position) {
  if (position < 0 || position >= usable_)
    return;
  int d = index_[position];
  CacheBlock& b = blocks_[d];
  if (b.handle != 0)
    Leave(d);
  b.handle = 0;
  b.blockNumber = 0;
  b.validLength = 0;
  b.flags &= ~kDirty;
  if (usable_ >= 2 && d != tail_) {
    Unlink(d);
    b.previous = tail_;
    b.next = head_;
    blocks_[tail_].next = d;
    blocks_[head_].previous = d;
    tail_ = d;
  }
  std::memmove(index_ + 1, index_, static_cast<size_t>(position) * sizeof(int));
  std::memmove(keys_ + 1, keys_, static_cast<size_t>(position) * sizeof(int64_t));
  index_[0] = d;
  keys_[0] = Key(0, 0);
}

bool FileCacheImpl::FlushAndDrop(int handle) {
  bool ok = true;
  for (int p = 0; p < usable_; ++p) {
    CacheBlock& b = blocks_[index_[p]];
    if (b.handle != handle)
      continue;
    if ((b.flags & kDirty) && !WriteBack(b))
      ok = false;
    Drop(p);
  }
  return ok;
}

bool FileCacheImpl::Flush(int handle) {
  for (int p = 0; p < usable_; ++p) {
    CacheBlock& b = blocks_[index_[p]];
    bool mine = handle == -1 ? b.handle != 0 : b.handle == handle;
    if (mine && (b.flags & kDirty) && !WriteBack(b))
      return false;
  }
  return true;
}

} // namespace

} // namespace qx::files

cFileCache::~cFileCache() {}

cFileCache* cFileCache::Create(int blockCount, long blockSize) {
  try {
    return new qx::files::FileCacheImpl(blockCount, blockSize);
  } catch (...) {
    return nullptr;
  }
}

template class QXSingleton<cFileCache, 8>;
