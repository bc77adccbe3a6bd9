//===- files/name_index.h - Registered names by hash ------------*- C++ -*-===//
//
// The registry's lookup of a name: an open-addressing table of (hash, entry
// index) pairs, so that finding a name among 100,000 registrations costs a
// few probes instead of a scan. The answer is the one the scan in entry
// order gives: Find returns the lowest index that the caller's test
// accepts. Memory comes from the memory manager; a failed growth leaves the
// table as it was and returns false.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FILES_NAME_INDEX_H
#define QXUTIL_FILES_NAME_INDEX_H

#include <cstdint>

namespace qx::files {

class NameIndex {
public:
  NameIndex() = default;
  ~NameIndex();
  NameIndex(const NameIndex&) = delete;
  NameIndex& operator=(const NameIndex&) = delete;

  /// Insert - adds entry `index` under `hash`, with `record` (what the
  /// caller's test reads, kept beside it so that a lookup touches no more
  /// memory); false when memory fails.
  bool Insert(uint32_t hash, int32_t index, const void* record);
  /// Remove - takes entry `index` (stored under `hash`) out.
  void Remove(uint32_t hash, int32_t index);
  /// Find - the lowest entry index under `hash` for which
  /// accept(index, record) is true, or -1.
  template <class Accept> int32_t Find(uint32_t hash, Accept accept) const {
    if (!buckets_)
      return -1;
    int32_t best = -1;
    for (uint32_t i = hash & mask_;; i = (i + 1) & mask_) {
      const Bucket& b = buckets_[i];
      if (b.index == kEmpty)
        return best;
      if (b.index >= 0 && b.hash == hash && (best < 0 || b.index < best) &&
          accept(b.index, b.record))
        best = b.index;
    }
  }

private:
  struct Bucket {
    uint32_t hash;
    int32_t index; // kEmpty, kRemoved or an entry index
    const void* record;
  };
  static constexpr int32_t kEmpty = -1;
  static constexpr int32_t kRemoved = -2;

  bool Grow();

  Bucket* buckets_ = nullptr;
  uint32_t mask_ = 0;
  uint32_t used_ = 0; // live and removed buckets
  uint32_t live_ = 0;
};

/// NameHash - the hash of a directory and a name under the library's
/// upper-casing (names equal ignoring case hash equal).
uint32_t NameHash(const wchar_t* dir, const wchar_t* name);

} // namespace qx::files

#endif // QXUTIL_FILES_NAME_INDEX_H
