//===- files/name_index.cpp - Registered names by hash --------------------===//
#include "files/name_index.h"

#include "files/names.h"
#include "qxutil/frame.h"

#include <initializer_list>

namespace qx::files {

NameIndex::~NameIndex() { ffree(reinterpret_cast<void**>(&buckets_)); }

bool NameIndex::Grow() {
  uint32_t capacity = buckets_ ? (mask_ + 1) * (live_ * 4 >= mask_ + 1 ? 2 : 1) : 64;
  if (capacity > (1u << 27))
    return false;
  Bucket* grown = nullptr;
  if (!falloc_(capacity * static_cast<unsigned int>(sizeof(Bucket)), &grown, false, false))
    return false;
  for (uint32_t i = 0; i < capacity; ++i)
    grown[i] = Bucket{0, kEmpty, nullptr};
  uint32_t mask = capacity - 1;
  if (buckets_) {
    for (uint32_t i = 0; i <= mask_; ++i) {
      if (buckets_[i].index < 0)
        continue;
      uint32_t j = buckets_[i].hash & mask;
      while (grown[j].index != kEmpty)
        j = (j + 1) & mask;
      grown[j] = buckets_[i];
    }
    ffree(reinterpret_cast<void**>(&buckets_));
  }
  buckets_ = grown;
  mask_ = mask;
  used_ = live_;
  return true;
}

bool NameIndex::Insert(uint32_t hash, int32_t index, const void* record) {
  // At most half the buckets in use, removed ones included.
  if ((!buckets_ || (used_ + 1) * 2 > mask_ + 1) && !Grow())
    return false;
  uint32_t i = hash & mask_;
  while (buckets_[i].index >= 0)
    i = (i + 1) & mask_;
  if (buckets_[i].index == kEmpty)
    ++used_;
  buckets_[i] = Bucket{hash, index, record};
  ++live_;
  return true;
}

void NameIndex::Remove(uint32_t hash, int32_t index) {
  if (!buckets_)
    return;
  for (uint32_t i = hash & mask_; buckets_[i].index != kEmpty; i = (i + 1) & mask_) {
    if (buckets_[i].index == index) {
      buckets_[i].index = kRemoved;
      --live_;
      return;
    }
  }
}

uint32_t NameHash(const wchar_t* dir, const wchar_t* name) {
  uint32_t h = 2166136261u; // FNV-1a over the upper-cased units
  for (const wchar_t* s : {dir, name}) {
    for (; *s; ++s) {
      h ^= static_cast<uint32_t>(FoldCase(*s));
      h *= 16777619u;
    }
    h ^= 0xFFu; // between the two parts
    h *= 16777619u;
  }
  return h;
}

} // namespace qx::files
