//===- containers/range_list.h - QXList over an array of ranges -*- C++ -*-===//
//
// The members QXList<unsigned long> (UtilULongListImpl, 32-bit values) and
// QXList<unsigned long long> (UtilULongLongListImpl, 64-bit values) keep a
// sorted array of disjoint, non-adjacent ranges (first, last), a single
// value as first == last, searched by halving. The array is allocated with
// room for 32 ranges on the first insertion and grows by 8 ranges when full
// (a new array, the ranges copied around the gap, the old one freed). An
// empty list holds no array. The number of values is kept as a 32-bit
// total, updated on every change: the count modulo 2^32.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CONTAINERS_RANGE_LIST_H
#define QXUTIL_CONTAINERS_RANGE_LIST_H

#include "qxutil/containers.h"

#include <cstdint>
#include <limits>

namespace qx::containers {

/// RangeListImpl - the member for interface type T holding values of type
/// V (V may be narrower than T: unsigned long is 32 bits on Windows).
template <class T, class V> class RangeListImpl final : public QXList<T> {
public:
  struct Range {
    V first;
    V last;
  };
  static constexpr V kTop = std::numeric_limits<V>::max(); // the greatest value
  static constexpr T kNone = kTop;                         // all bits set
  static constexpr uint32_t kFirstCapacity = 32;
  static constexpr uint32_t kGrowth = 8;

  RangeListImpl() = default;
  /// RangeListImpl - adopts `ranges` (a memory-manager block of `count`
  /// sorted ranges, or null for none) as a full array; computes the total.
  RangeListImpl(Range* ranges, uint32_t count);

  ~RangeListImpl() override;
  bool Add(const T& value) override;
  bool AddRange(const T& first, const T& last) override;
  bool Remove(const T& value) override;
  bool Clear() override;
  bool Contains(const T& value) override;
  bool GetBounds(T& min, T& max, bool* oneRun) override;
  unsigned long Count() override { return total_; }
  unsigned long CountUpToTwo() override;
  QXList<T>* Clone() override;
  QXListEnumerator<T>* GetEnumerator() override;
  QXListRangeEnumerator<T>* GetRangeEnumerator() override;
  QXListItem<T>* GetItem() override;

  const Range* Ranges() const { return ranges_; }
  uint32_t RangeCount() const { return count_; }
  uint32_t Capacity() const { return capacity_; }
  /// Changes - counts the changes made, so that companions notice them.
  unsigned long Changes() const { return changes_; }

private:
  static bool InRange(const T& value) {
    if constexpr (sizeof(T) > sizeof(V))
      return value <= kTop;
    return true;
  }
  // Size - the values of `r` modulo 2^32.
  static uint32_t Size(const Range& r) {
    return static_cast<uint32_t>(r.last) - static_cast<uint32_t>(r.first) + 1u;
  }
  // Holding - the index of the range that holds `v`, or -1.
  int64_t Holding(V v) const;
  // OpenGap - one free range at `index`, the later ones moved up (the
  // array made or grown as needed); false, nothing changed, when memory
  // fails.
  bool OpenGap(uint32_t index);
  // Close - removes the ranges [index, index + n).
  void Close(uint32_t index, uint32_t n);
  // Changed - the total moved by `delta` (modulo 2^32).
  void Changed(uint32_t delta) {
    total_ += delta;
    ++changes_;
  }

  Range* ranges_ = nullptr;
  uint32_t capacity_ = 0; // in ranges
  uint32_t count_ = 0;    // ranges in use
  uint32_t total_ = 0;    // values, modulo 2^32
  unsigned long changes_ = 0;
};

using UtilULongListImpl = RangeListImpl<unsigned long, uint32_t>;
using UtilULongLongListImpl = RangeListImpl<unsigned long long, uint64_t>;

extern template class RangeListImpl<unsigned long, uint32_t>;
extern template class RangeListImpl<unsigned long long, uint64_t>;

} // namespace qx::containers

#endif // QXUTIL_CONTAINERS_RANGE_LIST_H
