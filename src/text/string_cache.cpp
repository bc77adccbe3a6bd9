//===- text/string_cache.cpp - Keyed lists in one growing block -----------===//
//
// A cache is one block of the memory manager: unit 0 is zero, then entries of
// a `dataSize`-unit data area and a NUL-terminated name, ending where a name
// would begin with a zero unit. Every walk is bounded by the block's size, so
// a cache read with the wrong `dataSize` (or one that is not a cache) gives a
// failure result, never a read past its end. The size bound counts 16-bit
// units, as the layout does on Windows, whatever the width of wchar_t here.
//
//===----------------------------------------------------------------------===//
#include "qxutil/text.h"

#include <cstring>
#include <cwchar>

namespace {

constexpr size_t kMaxCacheBytes = 65500; // in bytes of 16-bit units
constexpr size_t kBytesPerUnit = 2;      // the layout's unit on Windows

// Cache - a cache block seen as `units` units.
struct Cache {
  wchar_t* units;
  size_t size;

  explicit Cache(wchar_t* block) : units(block), size(memSize(block) / sizeof(wchar_t)) {}

  // NameAt - the length of the name at `at` (its terminator inside the
  // block), or -1 when the block ends first.
  long NameLength(size_t at) const {
    if (at >= size)
      return -1;
    const wchar_t* end = std::wmemchr(units + at, 0, size - at);
    return end ? end - (units + at) : -1;
  }
};

// Walker - steps through the entries of a cache from offset 1.
class Walker {
public:
  enum State { kEntry, kEnd, kBroken };

  Walker(const Cache& cache, size_t dataSize) : cache_(cache), dataSize_(dataSize) { Look(); }

  State state() const { return state_; }
  size_t offset() const { return offset_; }
  const wchar_t* name() const { return cache_.units + offset_ + dataSize_; }
  // next - the offset after the current entry (the end: where a new entry goes).
  size_t next() const { return offset_ + dataSize_ + length_ + 1; }

  void Advance() {
    offset_ = next();
    Look();
  }

private:
  void Look() {
    long length = cache_.NameLength(offset_ + dataSize_);
    state_ = length < 0 ? kBroken : length == 0 ? kEnd : kEntry;
    length_ = length > 0 ? static_cast<size_t>(length) : 0;
  }

  const Cache& cache_;
  size_t dataSize_;
  size_t offset_ = 1;
  size_t length_ = 0;
  State state_ = kBroken;
};

// WithinBound - whether a block of `units` 16-bit units stays under the bound.
bool WithinBound(size_t units) { return units * kBytesPerUnit <= kMaxCacheBytes; }

// WriteEntry - the data area (zeroed, then `dataSize` bytes of `data`) and
// the name at `offset`.
void WriteEntry(wchar_t* at, const void* data, size_t dataSize, const wchar_t* name, size_t n) {
  std::wmemset(at, 0, dataSize);
  if (data && dataSize)
    std::memcpy(at, data, dataSize);
  std::wmemcpy(at + dataSize, name, n);
  at[dataSize + n] = 0;
}

// CopyEntry - the data and name of the entry at `offset` to the caller's
// buffers, never reading past the block.
void CopyEntry(const Cache& cache, size_t offset, wchar_t* name, int nameSize, void* data,
               int dataSize) {
  if (data && dataSize > 0) {
    size_t want = static_cast<size_t>(dataSize);
    size_t have = offset < cache.size ? (cache.size - offset) * sizeof(wchar_t) : 0;
    size_t copied = want < have ? want : have;
    std::memcpy(data, cache.units + offset, copied);
    std::memset(static_cast<char*>(data) + copied, 0, want - copied);
  }
  if (!name || nameSize <= 0)
    return;
  size_t at = offset + (dataSize > 0 ? static_cast<size_t>(dataSize) : 0);
  long length = cache.NameLength(at);
  if (length < 0) // no name inside the block
    length = at < cache.size ? static_cast<long>(cache.size - at) : 0;
  size_t copied = static_cast<size_t>(length) < static_cast<size_t>(nameSize - 1)
                      ? static_cast<size_t>(length)
                      : static_cast<size_t>(nameSize - 1);
  std::wmemcpy(name, cache.units + at, copied);
  std::wmemset(name + copied, 0, static_cast<size_t>(nameSize) - copied);
}

void ClearName(wchar_t* name, int nameSize) {
  if (name && nameSize > 0)
    name[0] = 0;
}

} // namespace

unsigned CacheString(wchar_t** cache, wchar_t* name, void* data, int dataSize, bool sorted) {
  if (!cache || !name || dataSize < 0)
    return 0;
  const size_t n = std::wcslen(name);
  const size_t ds = static_cast<size_t>(dataSize);

  if (!*cache) {
    const size_t units = n + 2 * ds + 3;
    if (!WithinBound(units))
      return 0;
    wchar_t* block = nullptr;
    if (!falloc_(static_cast<unsigned int>(units * sizeof(wchar_t)), &block, true, true))
      return 0;
    WriteEntry(block + 1, data, ds, name, n);
    *cache = block;
    return 1;
  }
  if (n == 0)
    return 0;

  Cache current(*cache);
  Walker walk(current, ds);
  size_t insertAt = 0;
  for (; walk.state() == Walker::kEntry; walk.Advance()) {
    int order = qxStrICmp(walk.name(), name);
    if (order == 0) {
      if (data && ds)
        std::memcpy(current.units + walk.offset(), data, ds);
      return static_cast<unsigned>(walk.offset());
    }
    if (sorted && !insertAt && order > 0)
      insertAt = walk.offset();
  }
  if (walk.state() == Walker::kBroken)
    return 0;

  const size_t end = walk.offset();
  const size_t units = n + end + 2 * ds + 2;
  if (!WithinBound(units))
    return 0;
  wchar_t* block = *cache;
  if (!frealloc_(static_cast<unsigned int>(units * sizeof(wchar_t)), &block))
    return 0; // the old block is still the caller's, unchanged
  *cache = block;

  const size_t at = insertAt ? insertAt : end;
  const size_t entryUnits = ds + n + 1;
  std::wmemmove(block + at + entryUnits, block + at, end - at);
  WriteEntry(block + at, data, ds, name, n);
  // The end marker: a zero data area and a zero name unit after the last entry.
  std::wmemset(block + end + entryUnits, 0, units - (end + entryUnits));
  return static_cast<unsigned>(at);
}

void GetCachedString(wchar_t* cache, unsigned offset, wchar_t* name, int nameSize, void* data,
                     int dataSize) {
  Cache block(cache);
  if (!cache || offset >= block.size) {
    ClearName(name, nameSize);
    return;
  }
  CopyEntry(block, offset, name, nameSize, data, dataSize);
}

bool GetIthCachedString(wchar_t* cache, int index, wchar_t* name, int nameSize, void* data,
                        int dataSize) {
  ClearName(name, nameSize);
  if (!cache || index < 0 || dataSize < 0)
    return false;
  Cache block(cache);
  if (block.size < 1)
    return false;
  Walker walk(block, static_cast<size_t>(dataSize));
  for (int i = 0; i < index && walk.state() == Walker::kEntry; ++i)
    walk.Advance();
  if (walk.state() != Walker::kEntry)
    return false;
  CopyEntry(block, walk.offset(), name, nameSize, data, dataSize);
  return true;
}

bool GetCachedStructure(wchar_t* cache, wchar_t* name, void* data, int dataSize) {
  if (!cache || dataSize < 0)
    return false;
  Cache block(cache);
  for (Walker walk(block, static_cast<size_t>(dataSize)); walk.state() == Walker::kEntry;
       walk.Advance()) {
    if (striequ(walk.name(), name)) {
      if (data && dataSize > 0)
        std::memcpy(data, block.units + walk.offset(), static_cast<size_t>(dataSize));
      return true;
    }
  }
  return false;
}
