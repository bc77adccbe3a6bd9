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
  void Unlink(int d);
  bool WriteBack(CacheBlock& b);

  int count_;  // descriptors
  int usable_; // count_ - 1
  long blockSize_;
  CacheBlock* blocks_ = nullptr;
  unsigned char* data_ = nullptr;
  int* index_ = nullptr;
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
  unsigned long long indexBytes = (static_cast<unsigned long long>(blockCount) + 1) * sizeof(int);
  if (dataBytes > 0xFFFFFFFFull || blockBytes > 0xFFFFFFFFull ||
      !falloc_(static_cast<unsigned int>(blockBytes), &blocks_, false, true) ||
      !falloc_(static_cast<unsigned int>(dataBytes), &data_, false, true) ||
      !falloc_(static_cast<unsigned int>(indexBytes), &index_, false, true)) {
    ffree(reinterpret_cast<void**>(&blocks_));
    ffree(reinterpret_cast<void**>(&data_));
    ffree(reinterpret_cast<void**>(&index_));
    throw kOutOfMemory;
  }
  int u = usable_;
  for (int i = 0; i < u; ++i) {
    blocks_[i].next = (i + 1) % u;
    blocks_[i].previous = (i + u - 1) % u;
    blocks_[i].dataSlot = i;
    index_[i] = i;
  }
  blocks_[u].dataSlot = u;
  index_[u] = u;
  head_ = 0;
  tail_ = u - 1;
}

FileCacheImpl::~FileCacheImpl() {
  ffree(reinterpret_cast<void**>(&blocks_));
  ffree(reinterpret_cast<void**>(&data_));
  ffree(reinterpret_cast<void**>(&index_));
}

int FileCacheImpl::Lookup(int handle, int32_t block, int* insertAt) {
  CacheBlock& key = blocks_[usable_];
  key.handle = handle;
  key.blockNumber = block;
  // The search of BSearch, with the final Compare called directly.
  int low = 1, high = usable_;
  while (low <= high) {
    int middle = (low + high) / 2;
    int c = FileCacheImpl::Compare(usable_, index_[middle - 1]);
    if (c < 0)
      high = middle - 1;
    else if (c > 0)
      low = middle + 1;
    else
      return middle - 1;
  }
  *insertAt = low - 1;
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
  if (!out || block < INT32_MIN || block > INT32_MAX)
    return false;
  int insertAt = 0;
  int p = Lookup(handle, static_cast<int32_t>(block), &insertAt);
  if (p >= 0) {
    MoveToHead(index_[p]);
    *out = &blocks_[index_[p]];
    return true;
  }
  if (mode == kFetchLookup)
    return false;
  int d = tail_;
  CacheBlock& b = blocks_[d];
  if ((b.flags & kDirty) && !Flush(b.handle))
    return false; // the block keeps its key and contents
  int old = PositionOf(d);
  b.handle = handle;
  b.blockNumber = static_cast<int32_t>(block);
  b.validLength = 0;
  b.flags &= ~kDirty;
  if (old < insertAt) {
    --insertAt;
    std::memmove(index_ + old, index_ + old + 1, static_cast<size_t>(insertAt - old) * sizeof(int));
  } else if (old > insertAt) {
    std::memmove(index_ + insertAt + 1, index_ + insertAt,
                 static_cast<size_t>(old - insertAt) * sizeof(int));
  }
  index_[insertAt] = d;
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
  index_[0] = d;
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
