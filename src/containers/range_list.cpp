//===- containers/range_list.cpp - QXList over an array of ranges ---------===//
//
// Add and Remove search by halving and touch one or two ranges; AddRange
// replaces every range that overlaps or touches the new one by their union.
// No arithmetic here wraps at the ends of the value type: a value is one
// past a range only when the sum does not overflow.
//
//===----------------------------------------------------------------------===//
#include "containers/range_list.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qx::containers {

namespace {

// Allocate - a zero-filled array of `n` ranges of `size` bytes each; null
// when memory fails or the size passes 32 bits.
template <class Range> Range* Allocate(uint64_t n) {
  const uint64_t bytes = n * sizeof(Range);
  void* block = nullptr;
  if (bytes > 0xFFFFFFFFu || !falloc_(static_cast<unsigned int>(bytes), &block, true, true))
    return nullptr;
  return static_cast<Range*>(block);
}

template <class T, class V>
class RangeEnumerator final : public QXListEnumerator<T>, public QXListRangeEnumerator<T> {
  using List = RangeListImpl<T, V>;

public:
  explicit RangeEnumerator(const List* list) : list_(list) {}

  bool Next(T& value) override {
    if (next_ >= list_->RangeCount()) {
      value = current_ = List::kNone;
      return false;
    }
    const auto& r = list_->Ranges()[next_];
    V v = r.first;
    if (current_ != List::kNone && current_ >= r.first && current_ < r.last)
      v = static_cast<V>(current_ + 1); // inside a range
    if (v < r.last) {
      current_ = v;
    } else {
      current_ = List::kNone;
      ++next_;
    }
    value = v;
    return value != List::kNone;
  }

  bool Next(T& first, T& last) override {
    current_ = List::kNone;
    if (next_ >= list_->RangeCount()) {
      first = last = List::kNone;
      return false;
    }
    first = list_->Ranges()[next_].first;
    last = list_->Ranges()[next_].last;
    ++next_;
    return true;
  }

private:
  const List* list_;
  uint32_t next_ = 0;       // the next range
  T current_ = List::kNone; // the value last given inside a range
};

template <class T, class V> class RangeItem final : public QXListItem<T> {
  using List = RangeListImpl<T, V>;

public:
  explicit RangeItem(const List* list) : list_(list), changes_(list->Changes()) {}

  bool GetAt(unsigned long ordinal, T& value) override {
    value = List::kNone;
    const uint32_t n = list_->RangeCount();
    if (ordinal == 0 || n == 0)
      return false;
    if (changes_ != list_->Changes() || index_ >= n) { // the cache is stale
      index_ = 0;
      base_ = 1;
      changes_ = list_->Changes();
    }
    const auto* ranges = list_->Ranges();
    while (ordinal < base_) { // step back; the first range has base 1
      --index_;
      base_ -= uint64_t{ranges[index_].last - ranges[index_].first} + 1;
    }
    while (ordinal - base_ > uint64_t{ranges[index_].last - ranges[index_].first}) {
      if (index_ + 1 >= n)
        return false; // past the last value; the cache stays on the last range
      base_ += uint64_t{ranges[index_].last - ranges[index_].first} + 1;
      ++index_;
    }
    value = static_cast<T>(ranges[index_].first + (ordinal - base_));
    return true;
  }

private:
  const List* list_;
  uint32_t index_ = 0;    // the cached range
  uint64_t base_ = 1;     // the ordinal of its first value
  unsigned long changes_; // the list's change count the cache belongs to
};

} // namespace

template <class T, class V>
RangeListImpl<T, V>::RangeListImpl(Range* ranges, uint32_t count)
    : ranges_(ranges), capacity_(count), count_(count) {
  for (uint32_t i = 0; i < count; ++i)
    total_ += Size(ranges[i]);
}

template <class T, class V> RangeListImpl<T, V>::~RangeListImpl() { ffree(&ranges_); }

template <class T, class V> int64_t RangeListImpl<T, V>::Holding(V v) const {
  int64_t lo = 0, hi = int64_t{count_} - 1;
  while (lo <= hi) {
    const int64_t mid = (lo + hi) / 2;
    if (v < ranges_[mid].first)
      hi = mid - 1;
    else if (v > ranges_[mid].last)
      lo = mid + 1;
    else
      return mid;
  }
  return -1;
}

template <class T, class V> bool RangeListImpl<T, V>::OpenGap(uint32_t index) {
  if (!ranges_) {
    if (!(ranges_ = Allocate<Range>(kFirstCapacity)))
      return false;
    capacity_ = kFirstCapacity;
  } else if (count_ == capacity_) {
    Range* grown = Allocate<Range>(uint64_t{capacity_} + kGrowth);
    if (!grown)
      return false;
    std::memcpy(grown, ranges_, index * sizeof(Range));
    std::memcpy(grown + index + 1, ranges_ + index, (count_ - index) * sizeof(Range));
    ffree(&ranges_);
    ranges_ = grown;
    capacity_ += kGrowth;
    ++count_;
    return true;
  }
  std::memmove(ranges_ + index + 1, ranges_ + index, (count_ - index) * sizeof(Range));
  ++count_;
  return true;
}

template <class T, class V> void RangeListImpl<T, V>::Close(uint32_t index, uint32_t n) {
  std::memmove(ranges_ + index, ranges_ + index + n, (count_ - index - n) * sizeof(Range));
  count_ -= n;
  if (count_ == 0) { // an empty list holds no array
    ffree(&ranges_);
    capacity_ = 0;
  }
}

template <class T, class V> bool RangeListImpl<T, V>::Add(const T& value) {
  if (!InRange(value))
    return false;
  const V v = static_cast<V>(value);
  int64_t lo = 0, hi = int64_t{count_} - 1;
  uint32_t at = 0; // where a new range goes
  while (lo <= hi) {
    const int64_t mid = (lo + hi) / 2;
    Range& r = ranges_[mid];
    if (v != 0 && v - 1 == r.last) { // extends this range upward
      r.last = v;
      if (mid + 1 < count_ && v != kTop && ranges_[mid + 1].first == v + 1) {
        r.last = ranges_[mid + 1].last;
        Close(static_cast<uint32_t>(mid) + 1, 1);
      }
      Changed(1);
      return true;
    }
    if (v != kTop && v + 1 == r.first) { // extends this range downward
      r.first = v;
      if (mid > 0 && v != 0 && ranges_[mid - 1].last == v - 1) {
        ranges_[mid - 1].last = r.last;
        Close(static_cast<uint32_t>(mid), 1);
      }
      Changed(1);
      return true;
    }
    if (v > r.last) {
      if (mid == hi) {
        at = static_cast<uint32_t>(mid) + 1;
        break;
      }
      lo = mid + 1;
    } else if (v >= r.first) {
      return false; // already present
    } else {
      if (lo == mid) {
        at = static_cast<uint32_t>(mid);
        break;
      }
      hi = mid - 1;
    }
  }
  if (!OpenGap(at))
    return false;
  ranges_[at] = {v, v};
  Changed(1);
  return true;
}

template <class T, class V> bool RangeListImpl<T, V>::AddRange(const T& first, const T& last) {
  if (!InRange(first) || !InRange(last))
    return false;
  const V lo = static_cast<V>(std::min(first, last));
  const V hi = static_cast<V>(std::max(first, last));
  // [j0, j1): the ranges that overlap or touch lo..hi.
  Range* const end = ranges_ + count_;
  const uint32_t j0 = static_cast<uint32_t>(
      std::partition_point(ranges_, end,
                           [&](const Range& r) { return r.last < lo && r.last + 1 < lo; }) -
      ranges_);
  const uint32_t j1 = static_cast<uint32_t>(
      std::partition_point(ranges_ + j0, end,
                           [&](const Range& r) { return hi == kTop || r.first <= hi + 1; }) -
      ranges_);
  if (j0 == j1) {
    if (!OpenGap(j0))
      return false;
    ranges_[j0] = {lo, hi};
    Changed(Size(ranges_[j0]));
    return true;
  }
  const Range merged = {std::min(lo, ranges_[j0].first), std::max(hi, ranges_[j1 - 1].last)};
  if (j1 - j0 == 1 && merged.first == ranges_[j0].first && merged.last == ranges_[j0].last)
    return true; // already there
  uint32_t removed = 0;
  for (uint32_t j = j0; j < j1; ++j)
    removed += Size(ranges_[j]);
  ranges_[j0] = merged;
  Close(j0 + 1, j1 - j0 - 1);
  Changed(Size(merged) - removed);
  return true;
}

template <class T, class V> bool RangeListImpl<T, V>::Remove(const T& value) {
  if (!InRange(value))
    return true; // never present
  const V v = static_cast<V>(value);
  const int64_t found = Holding(v);
  if (found < 0)
    return true; // absent: success
  const uint32_t i = static_cast<uint32_t>(found);
  Range& r = ranges_[i];
  if (r.first == r.last) {
    Close(i, 1);
  } else if (v == r.first) {
    ++r.first;
  } else if (v == r.last) {
    --r.last;
  } else { // split
    if (!OpenGap(i + 1))
      return false;
    ranges_[i + 1] = {static_cast<V>(v + 1), ranges_[i].last};
    ranges_[i].last = v - 1;
  }
  Changed(static_cast<uint32_t>(-1));
  return true;
}

template <class T, class V> bool RangeListImpl<T, V>::Clear() {
  ffree(&ranges_);
  capacity_ = count_ = total_ = 0;
  ++changes_;
  return true;
}

template <class T, class V> bool RangeListImpl<T, V>::Contains(const T& value) {
  return InRange(value) && Holding(static_cast<V>(value)) >= 0;
}

template <class T, class V> bool RangeListImpl<T, V>::GetBounds(T& min, T& max, bool* oneRun) {
  if (count_ == 0)
    return false;
  min = ranges_[0].first;
  max = ranges_[count_ - 1].last;
  if (oneRun)
    *oneRun = count_ == 1;
  return true;
}

template <class T, class V> unsigned long RangeListImpl<T, V>::CountUpToTwo() {
  if (count_ == 0)
    return 0;
  return count_ == 1 && ranges_[0].first == ranges_[0].last ? 1 : 2;
}

template <class T, class V> QXList<T>* RangeListImpl<T, V>::Clone() {
  Range* copy = nullptr;
  if (count_ > 0) {
    if (!(copy = Allocate<Range>(count_)))
      return nullptr;
    std::memcpy(copy, ranges_, count_ * sizeof(Range));
  }
  RangeListImpl* list = new (std::nothrow) RangeListImpl(copy, count_);
  if (!list)
    ffree(&copy);
  return list;
}

template <class T, class V> QXListEnumerator<T>* RangeListImpl<T, V>::GetEnumerator() {
  return new (std::nothrow) RangeEnumerator<T, V>(this);
}

template <class T, class V> QXListRangeEnumerator<T>* RangeListImpl<T, V>::GetRangeEnumerator() {
  return new (std::nothrow) RangeEnumerator<T, V>(this);
}

template <class T, class V> QXListItem<T>* RangeListImpl<T, V>::GetItem() {
  return new (std::nothrow) RangeItem<T, V>(this);
}

template class RangeListImpl<unsigned long, uint32_t>;
template class RangeListImpl<unsigned long long, uint64_t>;

} // namespace qx::containers
