// Provides: malloc, realloc, free, _msize (malloc_usable_size) behind a
// per-thread fault hook.
#include "platform/heap.h"

#include <cstdlib>
#include <malloc.h>

namespace qx::platform {

namespace {
struct FaultHook {
  long countdown;  // 0: off; otherwise calls left until the failing one
  bool persistent; // keep failing after the first failure
  bool failing;    // the failing call was reached
  long calls;
};
thread_local FaultHook tHook;

// ShouldFail - counts one call and says whether it is to fail.
bool ShouldFail() {
  ++tHook.calls;
  if (tHook.failing)
    return true;
  if (tHook.countdown == 0 || --tHook.countdown != 0)
    return false;
  tHook.failing = tHook.persistent;
  return true;
}
} // namespace

// A request for no bytes takes one: every byte the heap then reports usable
// belongs to the block under every allocator (the sanitizers' allocators
// report one usable byte for a block of none, and would count a write to it
// as out of bounds). glibc gives both requests the same smallest block.
void* HeapAllocate(size_t size) { return ShouldFail() ? nullptr : std::malloc(size ? size : 1); }

void* HeapReallocate(void* block, size_t size) {
  return ShouldFail() ? nullptr : std::realloc(block, size);
}

void HeapRelease(void* block) { std::free(block); }

size_t HeapBlockSize(const void* block) {
  return block ? malloc_usable_size(const_cast<void*>(block)) : 0;
}

bool AllocationPermitted() { return !ShouldFail(); }

void FailAllocations(long nth, bool persistent) {
  tHook = {nth > 0 ? nth : 0, persistent, false, 0};
}

long AllocationCalls() { return tHook.calls; }

} // namespace qx::platform
