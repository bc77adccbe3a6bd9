//===- containers/word_list.h - QXList<long> in one word block --*- C++ -*-===//
//
// QXListImpl keeps its set in one memory-manager block of 32-bit words,
// always exactly as large as its content. Word 0 holds the number of entry
// words in use; the entries follow in ascending order:
//
//   a single value   one word with bit 31 set, the value in the low 31 bits
//   a run            two words with bit 31 clear, first then last (first <
//                    last, both inclusive)
//
// Entries are disjoint and never adjacent (a value next to an entry is
// merged into it) and a run of one value is a single, so every set has
// exactly one block. Lookups walk the entries from the front.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CONTAINERS_WORD_LIST_H
#define QXUTIL_CONTAINERS_WORD_LIST_H

#include "qxutil/containers.h"

#include <cstdint>

namespace qx::containers {

class QXListImpl final : public QXList<long> {
public:
  static constexpr uint32_t kSingle = 0x80000000u; // bit 31: a single value
  static constexpr long kTop = 0x7FFFFFFF;         // the greatest value
  static constexpr long kNone = -1;                // all bits set

  /// Entry - one entry read from the block.
  struct Entry {
    uint32_t first = 0;
    uint32_t last = 0;
    uint32_t width = 0; // in words: 1 for a single, 2 for a run
  };

  /// Make - a new, empty list (its block holds the count word alone); null
  /// when memory fails.
  static QXListImpl* Make();

  ~QXListImpl() override;
  bool Add(const long& value) override;
  bool AddRange(const long& first, const long& last) override;
  bool Remove(const long& value) override;
  bool Clear() override;
  bool Contains(const long& value) override;
  bool GetBounds(long& min, long& max, bool* oneRun) override;
  unsigned long Count() override;
  unsigned long CountUpToTwo() override;
  QXList<long>* Clone() override;
  QXListEnumerator<long>* GetEnumerator() override;
  QXListRangeEnumerator<long>* GetRangeEnumerator() override;
  QXListItem<long>* GetItem() override;

  /// Words - the block: word 0 is the number of entry words.
  const uint32_t* Words() const { return words_; }
  /// EntryAt - the entry that starts at word `j` (1-based); false when no
  /// whole entry starts there.
  bool EntryAt(uint32_t j, Entry* entry) const;
  /// Changes - counts the changes made, so that companions notice them.
  unsigned long Changes() const { return changes_; }

private:
  QXListImpl() = default;
  // Merge - adds lo..hi (0 <= lo <= hi <= kTop).
  bool Merge(uint32_t lo, uint32_t hi);
  // Replace - puts the `k` words of `with` in place of the entry words
  // [j0, j1), resizing the block to fit exactly; false when it cannot grow.
  bool Replace(uint32_t j0, uint32_t j1, const uint32_t* with, uint32_t k);
  // Find - the first entry whose last value is at least `value` (past the
  // end: word count + 1).
  uint32_t Find(uint32_t value, Entry* entry) const;

  uint32_t* words_ = nullptr;
  unsigned long changes_ = 0;
};

} // namespace qx::containers

#endif // QXUTIL_CONTAINERS_WORD_LIST_H
