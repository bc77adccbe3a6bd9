//===- files/bsearch.h - Binary search over an array ------------*- C++ -*-===//
//
// BSearch<T>: a base class for binary search over an array of T whose order
// its derived class defines with Compare. Search finds a key or the
// position where it would be inserted.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FILES_BSEARCH_H
#define QXUTIL_FILES_BSEARCH_H

namespace qx::files {

template <class T> class BSearch {
public:
  virtual ~BSearch() = default;
  /// Compare - -1, 0 or 1 as `a` sorts before, with or after `b`.
  virtual int Compare(const T& a, const T& b) const = 0;

  /// Search - looks for `key` among the first `count` elements of `array`
  /// (sorted by Compare): its position, or -1 with *insertAt set to where it
  /// belongs. Bounds run from 1 to `count`; the element compared is the one
  /// at middle - 1.
  int Search(const T* array, int count, const T& key, int* insertAt) const {
    int low = 1, high = count;
    while (low <= high) {
      int middle = (low + high) / 2;
      int c = Compare(key, array[middle - 1]);
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
};

} // namespace qx::files

#endif // QXUTIL_FILES_BSEARCH_H
