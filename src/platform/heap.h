//===- platform/heap.h - The C runtime heap, with a fault hook --*- C++ -*-===//
//
// Provides: malloc, realloc, free and _msize for the memory manager, with a
// per-thread fault hook so that tests can make the Nth allocation fail (the
// test binaries route the C++ heap through the same hook).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_HEAP_H
#define QXUTIL_PLATFORM_HEAP_H

#include <cstddef>

namespace qx::platform {

void* HeapAllocate(size_t size);
void* HeapReallocate(void* block, size_t size);
void HeapRelease(void* block);

/// HeapBlockSize - the usable size of a block (_msize); 0 for null.
size_t HeapBlockSize(const void* block);

/// FailAllocations - on the calling thread, makes the `nth` allocation or
/// reallocation from now (1 = the next one) fail, and with `persistent` every
/// one after it too. 0 turns the hook off. Returns nothing; the count of
/// calls made since is AllocationCalls().
void FailAllocations(long nth, bool persistent);

/// AllocationPermitted - counts one allocation made outside this heap (the
/// test binaries' replacement of the global operator new asks here) and says
/// whether the fault hook lets it succeed.
bool AllocationPermitted();

/// AllocationCalls - allocations and reallocations requested on the calling
/// thread since the last FailAllocations.
long AllocationCalls();

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_HEAP_H
