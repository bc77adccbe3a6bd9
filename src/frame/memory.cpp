//===- frame/memory.cpp - The memory manager ------------------------------===//
//
// Blocks come from the C runtime heap with no header of our own; a block's
// size is the heap's usable size, which may exceed the request. Every byte
// between the request and the usable size is kept zero, so a block that grows
// gains only zero bytes, exactly as if its size were the request.
//
//===----------------------------------------------------------------------===//
#include "frame/memory.h"

#include "platform/heap.h"
#include "qxutil/frame.h"

#include <atomic>
#include <cstring>
#include <new>

using qx::platform::HeapAllocate;
using qx::platform::HeapBlockSize;
using qx::platform::HeapReallocate;
using qx::platform::HeapRelease;

namespace {

// The process's heap manager: no data of its own; it exists from the first
// memory call until the library is unloaded.
class HeapManager {
public:
  virtual ~HeapManager() {}
};

std::atomic<HeapManager*> gHeapManager{nullptr};
// Its storage: making it never costs an allocation, so it cannot fail.
alignas(HeapManager) unsigned char gHeapManagerStorage[sizeof(HeapManager)];

// The guard lives in static storage that is never destroyed, so memory calls
// made by other objects' destructors at exit still find it.
QXGuard& HeapGuard() {
  alignas(QXGuard) static unsigned char storage[sizeof(QXGuard)];
  static QXGuard* guard = new (storage) QXGuard;
  return *guard;
}

void EnsureHeapManager() {
  if (gHeapManager.load(std::memory_order_acquire))
    return;
  QXGuardLock hold(&HeapGuard());
  if (!gHeapManager.load(std::memory_order_relaxed))
    gHeapManager.store(new (gHeapManagerStorage) HeapManager, std::memory_order_release);
}

// ZeroTail - clears the bytes of `block` from `from` to its usable size.
void ZeroTail(void* block, size_t from) {
  size_t usable = HeapBlockSize(block);
  if (usable > from)
    std::memset(static_cast<char*>(block) + from, 0, usable - from);
}

void* Allocate(unsigned int size) {
  void* block = HeapAllocate(size);
  if (block)
    ZeroTail(block, size);
  return block;
}

// Resize - the resize rule: keep a large-enough block when asked to, else
// reallocate; bytes gained are zero.
void* Resize(void* block, unsigned int size, bool keepIfLargeEnough) {
  size_t old = HeapBlockSize(block);
  if (keepIfLargeEnough && old >= size)
    return block;
  if (size == 0) {
    HeapRelease(block);
    return Allocate(0);
  }
  void* grown = HeapReallocate(block, size);
  if (!grown)
    return nullptr;
  if (size > old)
    std::memset(static_cast<char*>(grown) + old, 0, size - old);
  ZeroTail(grown, size);
  return grown;
}

} // namespace

namespace qx {

void ShutDownMemoryManager() {
  QXGuardLock hold(&HeapGuard());
  if (HeapManager* manager = gHeapManager.exchange(nullptr))
    manager->~HeapManager();
}

bool MemoryManagerRunning() { return gHeapManager.load() != nullptr; }

} // namespace qx

bool falloc_(unsigned int size, void** out, bool, bool zeroFill) {
  EnsureHeapManager();
  if (!out)
    return false;
  *out = Allocate(size);
  if (*out && zeroFill)
    std::memset(*out, 0, size);
  return *out != nullptr;
}

bool GetMem_(unsigned int size, void** block, bool keepIfLargeEnough) {
  EnsureHeapManager();
  if (!block)
    return false;
  if (*block) {
    *block = Resize(*block, size, keepIfLargeEnough);
  } else if ((*block = Allocate(size)) != nullptr) {
    std::memset(*block, 0, size);
  }
  return *block != nullptr;
}

bool frealloc_(unsigned int size, void** block) {
  EnsureHeapManager();
  if (!block)
    return false;
  *block = Resize(*block, size, false);
  return *block != nullptr;
}

void ffree(void** block) {
  EnsureHeapManager();
  if (block && *block) {
    HeapRelease(*block);
    *block = nullptr;
  }
}

unsigned int memSize(const void* block) {
  EnsureHeapManager();
  size_t size = HeapBlockSize(block);
  return size > 0xFFFFFFFEu ? 0 : static_cast<unsigned int>(size);
}

void* QXHeapObject::operator new(size_t size) {
  void* block = nullptr;
  if (size > 0xFFFFFFFFu || !falloc_(static_cast<unsigned int>(size), &block, true, true))
    throw std::bad_alloc();
  return block;
}

void* QXHeapObject::operator new(size_t size, const std::nothrow_t&) noexcept {
  void* block = nullptr;
  if (size > 0xFFFFFFFFu)
    return nullptr;
  falloc_(static_cast<unsigned int>(size), &block, true, true);
  return block;
}

void QXHeapObject::operator delete(void* block) noexcept { ffree(&block); }
