// The global operator new and delete of every test binary, in all their
// standard forms, on malloc and free. Each allocation first asks the platform
// heap's fault hook (qx::platform::FailAllocations), so a fault walk reaches
// the C++ heap too: when the countdown says fail, the throwing forms throw
// std::bad_alloc and the nothrow forms return null.
#include "platform/heap.h"

#include <cstdlib>
#include <new>

namespace {

void* Allocate(std::size_t size) {
  if (!qx::platform::AllocationPermitted())
    return nullptr;
  return std::malloc(size ? size : 1);
}

void* AllocateAligned(std::size_t size, std::align_val_t alignment) {
  if (!qx::platform::AllocationPermitted())
    return nullptr;
  std::size_t align = static_cast<std::size_t>(alignment);
  if (align < sizeof(void*))
    align = sizeof(void*);
  void* block = nullptr;
  return posix_memalign(&block, align, size ? size : 1) == 0 ? block : nullptr;
}

void* OrThrow(void* block) {
  if (!block)
    throw std::bad_alloc();
  return block;
}

} // namespace

void* operator new(std::size_t size) { return OrThrow(Allocate(size)); }
void* operator new[](std::size_t size) { return OrThrow(Allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new(std::size_t size, std::align_val_t a) {
  return OrThrow(AllocateAligned(size, a));
}
void* operator new[](std::size_t size, std::align_val_t a) {
  return OrThrow(AllocateAligned(size, a));
}
void* operator new(std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
  return AllocateAligned(size, a);
}
void* operator new[](std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
  return AllocateAligned(size, a);
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
