//===- containers/word_list.cpp - QXList<long> in one word block ----------===//
//
// Every change replaces a stretch of entry words by at most two new entries
// and resizes the block to its new content: growth before the words move,
// shrinking after. A failed growth leaves the list as it was; a shrink that
// the heap refuses keeps the larger block, which is harmless because word 0
// says how much of it is in use.
//
//===----------------------------------------------------------------------===//
#include "containers/word_list.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qx::containers {

namespace {

// Encode - the words of the entry first..last into `out`; their number.
uint32_t Encode(uint32_t first, uint32_t last, uint32_t* out) {
  if (first == last) {
    out[0] = first | QXListImpl::kSingle;
    return 1;
  }
  out[0] = first;
  out[1] = last;
  return 2;
}

bool InRange(long value) { return value >= 0 && value <= QXListImpl::kTop; }

// Resize - the block at *words resized to hold `entryWords` and the count
// word; false (the block unchanged) when the heap refuses.
bool Resize(uint32_t** words, uint64_t entryWords) {
  const uint64_t bytes = (entryWords + 1) * sizeof(uint32_t);
  void* block = *words;
  if (bytes > 0xFFFFFFFFu || !GetMem_(static_cast<unsigned int>(bytes), &block, false))
    return false;
  *words = static_cast<uint32_t*>(block);
  return true;
}

// The value and range enumerator: one object, two interfaces.
class QXListEnumeratorImpl final : public QXListEnumerator<long>,
                                   public QXListRangeEnumerator<long> {
public:
  explicit QXListEnumeratorImpl(const QXListImpl* list) : list_(list) {}

  bool Next(long& value) override {
    QXListImpl::Entry e;
    if (!list_->EntryAt(next_, &e)) {
      value = current_ = QXListImpl::kNone;
      return false;
    }
    long v = e.first;
    if (current_ != QXListImpl::kNone && current_ >= static_cast<long>(e.first))
      v = current_ + 1; // inside a run
    if (v >= static_cast<long>(e.last)) {
      v = e.last;
      next_ += e.width;
      current_ = QXListImpl::kNone;
    } else {
      current_ = v;
    }
    value = v;
    return true;
  }

  bool Next(long& first, long& last) override {
    QXListImpl::Entry e;
    current_ = QXListImpl::kNone;
    if (!list_->EntryAt(next_, &e)) {
      first = last = QXListImpl::kNone;
      return false;
    }
    first = e.first;
    last = e.last;
    next_ += e.width;
    return true;
  }

private:
  const QXListImpl* list_;
  uint32_t next_ = 1;                // the word where the next entry starts
  long current_ = QXListImpl::kNone; // the value last given inside a run
};

class QXListItemImpl final : public QXListItem<long> {
public:
  explicit QXListItemImpl(const QXListImpl* list) : list_(list), changes_(list->Changes()) {}

  bool GetAt(unsigned long ordinal, long& value) override {
    value = QXListImpl::kNone;
    const uint32_t n = list_->Words()[0];
    if (ordinal == 0 || n == 0)
      return false;
    if (changes_ != list_->Changes() || entry_ > n) { // the cache is stale
      entry_ = 1;
      base_ = 1;
      changes_ = list_->Changes();
    }
    QXListImpl::Entry e;
    list_->EntryAt(entry_, &e);
    while (ordinal < base_) { // step back; the first entry has base 1
      const uint32_t before = list_->Words()[entry_ - 1];
      entry_ -= (before & QXListImpl::kSingle) ? 1 : 2;
      list_->EntryAt(entry_, &e);
      base_ -= e.last - e.first + 1ul;
    }
    while (ordinal - base_ > e.last - e.first) { // step forward
      QXListImpl::Entry next;
      if (!list_->EntryAt(entry_ + e.width, &next))
        return false; // past the last value; the cache stays on the last entry
      base_ += e.last - e.first + 1ul;
      entry_ += e.width;
      e = next;
    }
    value = static_cast<long>(e.first + (ordinal - base_));
    return true;
  }

private:
  const QXListImpl* list_;
  uint32_t entry_ = 1;     // the word where the cached entry starts
  unsigned long base_ = 1; // the ordinal of its first value
  unsigned long changes_;  // the list's change count the cache belongs to
};

} // namespace

QXListImpl* QXListImpl::Make() {
  QXListImpl* list = new (std::nothrow) QXListImpl;
  if (list && !Resize(&list->words_, 0)) {
    delete list;
    return nullptr;
  }
  return list;
}

QXListImpl::~QXListImpl() { ffree(&words_); }

bool QXListImpl::EntryAt(uint32_t j, Entry* entry) const {
  const uint32_t n = words_[0];
  if (j == 0 || j > n)
    return false;
  const uint32_t w = words_[j];
  if (w & kSingle) {
    *entry = {w & ~kSingle, w & ~kSingle, 1};
    return true;
  }
  if (j + 1 > n)
    return false;
  *entry = {w, words_[j + 1], 2};
  return true;
}

uint32_t QXListImpl::Find(uint32_t value, Entry* entry) const {
  const uint32_t n = words_[0];
  uint32_t j = 1;
  while (j <= n) { // the walk, word by word
    const uint32_t w = words_[j];
    if (w & kSingle) {
      if ((w & ~kSingle) >= value)
        break;
      ++j;
    } else {
      if (j == n || words_[j + 1] >= value)
        break;
      j += 2;
    }
  }
  return EntryAt(j, entry) ? j : n + 1;
}

bool QXListImpl::Replace(uint32_t j0, uint32_t j1, const uint32_t* with, uint32_t k) {
  const uint32_t n = words_[0];
  const uint64_t n2 = uint64_t{n} - (j1 - j0) + k;
  if (k > j1 - j0 && !Resize(&words_, n2))
    return false;
  std::memmove(words_ + j0 + k, words_ + j1, (n + 1 - j1) * sizeof(uint32_t));
  if (k > 0)
    std::memcpy(words_ + j0, with, k * sizeof(uint32_t));
  words_[0] = static_cast<uint32_t>(n2);
  if (k < j1 - j0)
    Resize(&words_, n2); // refused: the larger block is kept
  ++changes_;
  return true;
}

bool QXListImpl::Merge(uint32_t lo, uint32_t hi) {
  // The entries from j0 up to j1 overlap or touch lo..hi. Values from the
  // last entry's first on (ascending additions) need no walk: the entries
  // before it end too early to touch them.
  const uint32_t n = words_[0];
  const uint32_t lastStart = n == 0 || (words_[n] & kSingle) ? n : n - 1;
  Entry e;
  uint32_t j0;
  if (EntryAt(lastStart, &e) && lo >= e.first)
    j0 = lo > uint64_t{e.last} + 1 ? n + 1 : lastStart;
  else
    j0 = Find(lo == 0 ? 0 : lo - 1, &e);
  uint32_t j1 = j0;
  uint32_t first = lo, last = hi;
  while (EntryAt(j1, &e) && e.first <= uint64_t{hi} + 1) {
    first = std::min(first, e.first);
    last = std::max(last, e.last);
    j1 += e.width;
  }
  if (j1 > j0 && EntryAt(j0, &e) && j0 + e.width == j1 && e.first == first && e.last == last)
    return true; // already there
  uint32_t with[2];
  return Replace(j0, j1, with, Encode(first, last, with));
}

bool QXListImpl::Add(const long& value) {
  return InRange(value) && Merge(static_cast<uint32_t>(value), static_cast<uint32_t>(value));
}

bool QXListImpl::AddRange(const long& first, const long& last) {
  if (!InRange(first) || !InRange(last))
    return false;
  return Merge(static_cast<uint32_t>(std::min(first, last)),
               static_cast<uint32_t>(std::max(first, last)));
}

bool QXListImpl::Remove(const long& value) {
  if (!InRange(value))
    return true; // never present
  const uint32_t v = static_cast<uint32_t>(value);
  Entry e;
  const uint32_t j = Find(v, &e);
  if (j > words_[0] || e.first > v)
    return true; // absent: success
  uint32_t with[4];
  uint32_t k = 0;
  if (e.first < v)
    k += Encode(e.first, v - 1, with);
  if (v < e.last)
    k += Encode(v + 1, e.last, with + k);
  return Replace(j, j + e.width, with, k);
}

bool QXListImpl::Clear() { return Replace(1, words_[0] + 1, nullptr, 0); }

bool QXListImpl::Contains(const long& value) {
  if (!InRange(value))
    return false;
  Entry e;
  const uint32_t j = Find(static_cast<uint32_t>(value), &e);
  return j <= words_[0] && e.first <= static_cast<uint32_t>(value);
}

bool QXListImpl::GetBounds(long& min, long& max, bool* oneRun) {
  const uint32_t n = words_[0];
  Entry e;
  if (!EntryAt(1, &e))
    return false;
  min = e.first;
  max = words_[n] & ~kSingle;
  if (oneRun)
    *oneRun = e.width == n;
  return true;
}

unsigned long QXListImpl::Count() {
  const uint32_t n = words_[0];
  unsigned long count = 0;
  for (uint32_t j = 1; j <= n; ++j) {
    if (words_[j] & kSingle) {
      ++count;
    } else if (j < n) {
      count += words_[j + 1] - words_[j] + 1ul;
      ++j;
    }
  }
  return count;
}

unsigned long QXListImpl::CountUpToTwo() {
  Entry e;
  if (!EntryAt(1, &e))
    return 0;
  if (e.width == 2)
    return 2;
  return EntryAt(2, &e) ? 2 : 1;
}

QXList<long>* QXListImpl::Clone() {
  // The block is the set's one representation: a copy of it is the list
  // that adding the values one by one would build.
  QXListImpl* copy = Make();
  if (copy && !Resize(&copy->words_, words_[0])) {
    delete copy;
    return nullptr;
  }
  if (copy)
    std::memcpy(copy->words_, words_, (words_[0] + 1ul) * sizeof(uint32_t));
  return copy;
}

QXListEnumerator<long>* QXListImpl::GetEnumerator() {
  return new (std::nothrow) QXListEnumeratorImpl(this);
}

QXListRangeEnumerator<long>* QXListImpl::GetRangeEnumerator() {
  return new (std::nothrow) QXListEnumeratorImpl(this);
}

QXListItem<long>* QXListImpl::GetItem() { return new (std::nothrow) QXListItemImpl(this); }

} // namespace qx::containers
