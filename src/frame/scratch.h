//===- frame/scratch.h - A work buffer on the stack or the heap -*- C++ -*-===//
//
// Room for a number of elements: an array inside the object when the caller
// says the request is small, else a zero-filled block from the memory
// manager, freed when the buffer goes. It never throws; ok() is false when
// the block could not be had.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_SCRATCH_H
#define QXUTIL_FRAME_SCRATCH_H

#include "qxutil/frame.h"

#include <cstddef>

namespace qx {

template <class T, size_t LocalCount> class Scratch {
public:
  /// Scratch - `count` elements: the local array when `local` (count must
  /// then be at most LocalCount), else from the heap.
  Scratch(size_t count, bool local) {
    if (local) {
      data_ = local_;
      return;
    }
    if (count <= 0xFFFFFFFFu / sizeof(T))
      falloc_(static_cast<unsigned int>(count * sizeof(T)), &heap_, true, true);
    data_ = heap_;
  }
  ~Scratch() { ffree(&heap_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  bool ok() const { return data_ != nullptr; }
  T* data() const { return data_; }

private:
  T local_[LocalCount];
  T* heap_ = nullptr;
  T* data_ = nullptr;
};

} // namespace qx

#endif // QXUTIL_FRAME_SCRATCH_H
