//===- containers/point_container.cpp - DPNTContainer ---------------------===//
//
// A growable array of points in one memory-manager block. The capacity is
// what the block actually holds (memSize / 16), so it may exceed the
// request; a request whose size passes 32 bits is refused like a failed
// allocation.
//
//===----------------------------------------------------------------------===//
#include "qxutil/containers.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

class DPNTContainerImpl final : public DPNTContainer {
public:
  explicit DPNTContainerImpl(unsigned growthStep) : growthStep_(growthStep) {}
  ~DPNTContainerImpl() override { ffree(&points_); }

  /// Allocate - the first buffer, room for `n` points.
  bool Allocate(unsigned n) {
    const uint64_t bytes = uint64_t{n} * kElementSize;
    if (bytes > 0xFFFFFFFFu || !falloc_(static_cast<unsigned int>(bytes), &points_, true, true))
      return false;
    // The heap gives an empty request a few usable bytes; it holds nothing.
    capacity_ = n == 0 ? 0 : memSize(points_) / kElementSize;
    return true;
  }

  bool Append(const DPNT* points, unsigned n) override {
    if ((n > 0 && !points) || n > 0xFFFFFFFFu - count_ || !Reserve(count_ + n))
      return false;
    if (n > 0)
      std::memcpy(points_ + count_, points, uint64_t{n} * kElementSize);
    count_ += n;
    return true;
  }

  bool Reset(unsigned capacity) override {
    count_ = 0;
    return capacity == 0 || Reserve(capacity);
  }

  bool Reserve(unsigned needed) override {
    if (needed <= capacity_)
      return true;
    const uint64_t points = uint64_t{capacity_} + std::max(needed - capacity_, growthStep_);
    const uint64_t bytes = points * kElementSize;
    DPNT* grown = points_; // a failed resize leaves the old buffer to us
    if (bytes > 0xFFFFFFFFu || !frealloc_(static_cast<unsigned int>(bytes), &grown))
      return false;
    points_ = grown;
    capacity_ = memSize(points_) / kElementSize;
    return true;
  }

  DPNT* GetPoints(unsigned* count) override {
    if (count)
      *count = count_;
    return points_;
  }

private:
  static constexpr uint32_t kElementSize = sizeof(DPNT);
  static_assert(kElementSize == 16, "a DPNT is two doubles");

  DPNT* points_ = nullptr;
  uint32_t count_ = 0;    // points in use
  uint32_t capacity_ = 0; // points that fit in the buffer
  uint32_t growthStep_;   // the least growth, in points
};

} // namespace

DPNTContainer::~DPNTContainer() = default;

DPNTContainer* DPNTContainer::Create(unsigned initialCapacity, unsigned growthStep) {
  DPNTContainerImpl* container = new (std::nothrow) DPNTContainerImpl(growthStep);
  if (container && !container->Allocate(initialCapacity)) {
    delete container;
    return nullptr;
  }
  return container;
}
