//===- files/handle_io.cpp - Positions, reads and writes of handles -------===//
//
// Each handle keeps its logical position and length, so seeks and length
// queries cost no system call. Reads and writes go through the block cache
// when the context has one, else straight to the descriptor.
//
// Through the cache, the bytes of a block beyond its valid length are never
// trusted: a write that starts past them zero-fills the gap first, and a
// file that grows past its last block has that block completed with zeros.
// Reads stop at the logical length, so no block is ever cached for bytes the
// file does not have.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "platform/file_crt.h"
#include "platform/file_win.h"

#include <cstring>

namespace qx::files {

using namespace qx::crt;

namespace {

constexpr long kMaxPosition = 0x7FFFFFFF;
// kReadAheadBytes - the most a read brings into the cache with one call.
constexpr long kReadAheadBytes = 16 * 1024;

// Room - how many of `count` bytes fit between `position` and the largest
// 32-bit position.
unsigned int Room(long position, unsigned int count) {
  long room = kMaxPosition - position;
  return static_cast<unsigned long>(room) < count ? static_cast<unsigned int>(room) : count;
}

} // namespace

long cFileSystemImpl::FileLength(int handle) {
  FileEntry* e = Entry(handle);
  return e ? e->length : -1;
}

long cFileSystemImpl::Seek(int handle, long offset, int whence) {
  FileEntry* e = Entry(handle);
  if (!e)
    return -1;
  long target = e->position;
  if (whence == 0)
    target = offset;
  else if (whence == 1)
    target = static_cast<long>(e->position) + offset;
  else if (whence == 2)
    target = static_cast<long>(e->length) + offset;
  e->position = static_cast<int32_t>(target); // 32-bit, as the position is
  return e->position;
}

long cFileSystemImpl::Tell(int handle) { return Seek(handle, 0, 1); }

FileEntry* cFileSystemImpl::TransferEntry(int handle, const void* bytes, unsigned int* count) {
  FileEntry* e = Entry(handle);
  if (!e || (!bytes && *count))
    return nullptr;
  if (e->position < 0) {
    errno = kErrInval;
    return nullptr;
  }
  *count = Room(e->position, *count);
  return e;
}

int cFileSystemImpl::Read(int handle, void* buffer, unsigned int count) {
  FileEntry* e = TransferEntry(handle, buffer, &count);
  if (!e)
    return -1;
  if (cFileCache::Instance())
    return CachedRead(handle, e, static_cast<unsigned char*>(buffer), count);
  if (_lseek(e->fd, e->position, 0) < 0)
    return -1;
  int n = _read(e->fd, buffer, count);
  if (n > 0)
    e->position += n;
  return n;
}

int cFileSystemImpl::CachedRead(int handle, FileEntry* e, unsigned char* out, unsigned int count) {
  cFileCache* cache = cFileCache::Instance();
  long size = cache->BlockSize();
  unsigned int done = 0;
  while (done < count && e->position < e->length) {
    long block = e->position / size, offset = e->position % size;
    CacheBlock* b = nullptr;
    if (!cache->Fetch(handle, block, &b, cFileCache::kFetchLookup)) {
      ReadAhead(handle, e, block, offset + (count - done));
      if (!cache->Fetch(handle, block, &b, cFileCache::kFetchRead))
        return done ? static_cast<int>(done) : -1;
    }
    if (offset >= b->validLength)
      break;
    unsigned int n = static_cast<unsigned int>(b->validLength - offset);
    if (n > count - done)
      n = count - done;
    std::memcpy(out + done, cache->Data(b->dataSlot) + offset, n);
    done += n;
    e->position += static_cast<int32_t>(n);
    if (b->validLength < size && offset + static_cast<long>(n) >= b->validLength)
      break; // the block was not filled to its end
  }
  return static_cast<int>(done);
}

void cFileSystemImpl::ReadAhead(int handle, FileEntry* e, long block, long bytes) {
  // A read that needs several blocks missing from the cache brings them in
  // with one system call instead of one each. Blocks missing from the cache
  // hold on disk what the file holds, so they come in clean.
  cFileCache* cache = cFileCache::Instance();
  long size = cache->BlockSize();
  long most = kReadAheadBytes / size;
  if (most > cache->BlockCount() - 1)
    most = cache->BlockCount() - 1;
  long wanted = (bytes + size - 1) / size;
  long inFile = (e->length + size - 1) / size - block;
  long n = 0;
  CacheBlock* b = nullptr;
  while (n < wanted && n < most && n < inFile &&
         !(n > 0 && cache->Fetch(handle, block + n, &b, cFileCache::kFetchLookup)))
    ++n;
  if (n < 2 || e->fd < 0)
    return;
  unsigned char scratch[kReadAheadBytes];
  long got = qx::platform::ReadAt(e->fd, scratch, static_cast<size_t>(n * size),
                                  static_cast<long long>(block) * size);
  for (long i = 0; i < n && got > i * size; ++i) {
    if (!cache->Fetch(handle, block + i, &b, cFileCache::kFetchClaim))
      return;
    long valid = got - i * size < size ? got - i * size : size;
    std::memcpy(cache->Data(b->dataSlot), scratch + i * size, static_cast<size_t>(valid));
    b->validLength = static_cast<int32_t>(valid);
  }
}

int cFileSystemImpl::Write(int handle, const void* data, unsigned int count) {
  FileEntry* e = TransferEntry(handle, data, &count);
  if (!e)
    return -1;
  if (cFileCache::Instance())
    return CachedWrite(handle, e, static_cast<const unsigned char*>(data), count);
  if (_lseek(e->fd, e->position, 0) < 0)
    return -1;
  int n = _write(e->fd, data, count);
  if (n > 0) {
    e->position += n;
    if (e->position > e->length)
      e->length = e->position;
  }
  return n;
}

void cFileSystemImpl::ExtendLastBlock(int handle, long oldLength) {
  cFileCache* cache = cFileCache::Instance();
  long size = cache->BlockSize();
  if (oldLength <= 0 || oldLength % size == 0)
    return;
  CacheBlock* b = nullptr;
  if (!cache->Fetch(handle, (oldLength - 1) / size, &b, cFileCache::kFetchLookup))
    return;
  if (b->validLength < size) {
    std::memset(cache->Data(b->dataSlot) + b->validLength, 0,
                static_cast<size_t>(size - b->validLength));
    b->validLength = static_cast<int32_t>(size);
  }
}

int cFileSystemImpl::CachedWrite(int handle, FileEntry* e, const unsigned char* data,
                                 unsigned int count) {
  if (count == 0)
    return 0;
  cFileCache* cache = cFileCache::Instance();
  long size = cache->BlockSize();
  long oldLength = e->length;
  long end = static_cast<long>(e->position) + count;
  long lastBlock = oldLength > 0 ? (oldLength - 1) / size : -1;
  if ((end - 1) / size > lastBlock) {
    // The file grows past its last block: the system file first, so that
    // the blocks between read back as zeros.
    if (_chsize(e->fd, end) != 0)
      return -1;
    ExtendLastBlock(handle, oldLength);
  }
  unsigned int done = 0;
  while (done < count) {
    long block = e->position / size, offset = e->position % size;
    unsigned int n = static_cast<unsigned int>(size - offset);
    if (n > count - done)
      n = count - done;
    bool whole = offset == 0 && static_cast<long>(n) == size;
    int mode =
        whole || block * size >= e->length ? cFileCache::kFetchClaim : cFileCache::kFetchRead;
    CacheBlock* b = nullptr;
    if (!cache->Fetch(handle, block, &b, mode))
      break;
    unsigned char* bytes = cache->Data(b->dataSlot);
    if (offset > b->validLength)
      std::memset(bytes + b->validLength, 0, static_cast<size_t>(offset - b->validLength));
    std::memcpy(bytes + offset, data + done, n);
    if (offset + static_cast<long>(n) > b->validLength)
      b->validLength = static_cast<int32_t>(offset + n);
    b->flags |= 1;
    done += n;
    e->position += static_cast<int32_t>(n);
    if (e->position > e->length)
      e->length = e->position;
  }
  return done ? static_cast<int>(done) : -1;
}

int cFileSystemImpl::ChSize(int handle, long length) {
  FileEntry* e = Entry(handle);
  if (!e || _chsize(e->fd, length) != 0)
    return -1;
  long oldLength = e->length;
  e->length = static_cast<int32_t>(length);
  cFileCache* cache = cFileCache::Instance();
  if (!cache)
    return 0;
  long size = cache->BlockSize();
  long newLast = length > 0 ? (length - 1) / size : -1;
  long oldLast = oldLength > 0 ? (oldLength - 1) / size : -1;
  int usable = cache->BlockCount();
  for (int p = 0; p < usable; ++p) {
    CacheBlock* b = cache->BlockAt(p);
    if (b->handle != handle)
      continue;
    unsigned char* bytes = cache->Data(b->dataSlot);
    if (b->blockNumber > newLast) {
      cache->Drop(p); // entries before p move up one: the loop goes on at p + 1
    } else if (b->blockNumber == newLast) {
      int32_t valid = static_cast<int32_t>((length - 1) % size + 1);
      if (valid > b->validLength)
        std::memset(bytes + b->validLength, 0, static_cast<size_t>(valid - b->validLength));
      if (valid != b->validLength) {
        b->validLength = valid;
        b->flags |= 1;
      }
    } else if (b->blockNumber == oldLast && oldLast < newLast) {
      if (b->validLength < size)
        std::memset(bytes + b->validLength, 0, static_cast<size_t>(size - b->validLength));
      b->validLength = static_cast<int32_t>(size);
      b->flags |= 1;
    }
  }
  return 0;
}

bool cFileSystemImpl::ReadAppString(int handle, wchar_t* buffer, unsigned int size) {
  FileEntry* e = Entry(handle);
  if (!e || !buffer || size == 0)
    return false;
  unsigned char length = 0;
  if (Read(handle, &length, 1) != 1)
    return false;
  if (!GetMem_(static_cast<unsigned int>(length) + 1, &e->appBuffer, true))
    return false;
  if (length == 0) {
    buffer[0] = 0;
    return true;
  }
  if (Read(handle, e->appBuffer, length) != length)
    return false;
  return ConvertMBCSCharToSystem(e->appBuffer, length, GetCharset(handle), buffer, size - 1);
}

int cFileSystemImpl::ReadAppStringLen(int handle) {
  unsigned char length = 0;
  if (Read(handle, &length, 1) != 1)
    return -1;
  Seek(handle, -1, 1);
  return length;
}

int cFileSystemImpl::WriteAppString(int handle, const wchar_t* text) {
  FileEntry* e = Entry(handle);
  if (!e || !text || !*text)
    return -1;
  size_t units = std::wcslen(text);
  if (units > 0x3FFFFFFF / 4)
    return -1;
  unsigned int room = static_cast<unsigned int>(units * 4 + 1);
  if (!GetMem_(room, &e->appBuffer, true))
    return -1;
  if (!ConvertSystemToMBCSChar(text, e->appBuffer, GetCharset(handle), room, false))
    return -1;
  size_t bytes = std::strlen(e->appBuffer);
  unsigned char length = static_cast<unsigned char>(bytes & 0xFF);
  if (Write(handle, &length, 1) != 1)
    return -1;
  return Write(handle, e->appBuffer, static_cast<unsigned int>(bytes));
}

} // namespace qx::files
