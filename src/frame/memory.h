//===- frame/memory.h - The memory manager's process state -----*- C++ -*-===//
#ifndef QXUTIL_FRAME_MEMORY_H
#define QXUTIL_FRAME_MEMORY_H

namespace qx {

/// ShutDownMemoryManager - deletes the process's heap manager (the library's
/// unload does this); a later memory call creates it again.
void ShutDownMemoryManager();

/// MemoryManagerRunning - whether the heap manager exists now.
bool MemoryManagerRunning();

} // namespace qx

#endif // QXUTIL_FRAME_MEMORY_H
