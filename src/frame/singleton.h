//===- frame/singleton.h - QXSingleton's Instance, inlined ------*- C++ -*-===//
//
// The definitions of QXSingleton::Instance and Instance(p). Each service's
// own .cpp instantiates them once, exported, for hosts; code inside the
// library includes this header so that its calls are inlined, reaching a
// service without a call while per-thread storage is in force. Also the one
// body of a service's static Create (NewServiceOrNull).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_SINGLETON_H
#define QXUTIL_FRAME_SINGLETON_H

#include "qxutil/frame.h"

#include <atomic>

namespace qx::detail {
/// The services' keys index a fixed slot array of kServiceSlots slots.
constexpr unsigned int kServiceSlots = 16;
/// While per-thread storage is in force: the calling thread's service slots
/// when its set is one the library made, else null. Kept exact by the frame.
extern __thread void** tServiceSlots __attribute__((tls_model("initial-exec")));
/// True while per-thread storage (not the host's) is in force.
extern std::atomic<bool> gThreadStorageInForce;
/// SlotFromInstanceData - the context's slot `key` through GetInstanceData():
/// Instance()'s path when the thread's slots are not at hand, kept out of
/// line so that the inlined path stays a few loads.
void* SlotFromInstanceData(unsigned int key);
} // namespace qx::detail

namespace qx {
/// NewServiceOrNull - a new `Impl`, or null when it cannot be made: a
/// service's Create is exported, so no exception may leave it.
template <class Impl> Impl* NewServiceOrNull() noexcept {
  try {
    return new Impl;
  } catch (...) {
    return nullptr;
  }
}
} // namespace qx

template <class Service, unsigned int Key> Service* QXSingleton<Service, Key>::Instance() {
  static_assert(Key < qx::detail::kServiceSlots, "service keys index the fast slot array");
  if (qx::detail::gThreadStorageInForce.load(std::memory_order_relaxed))
    if (void** slots = qx::detail::tServiceSlots)
      return static_cast<Service*>(slots[Key]);
  return static_cast<Service*>(qx::detail::SlotFromInstanceData(Key));
}

template <class Service, unsigned int Key> bool QXSingleton<Service, Key>::Instance(Service* p) {
  InstanceData* data = GetInstanceData();
  return data && data->SetSlot(Key, p);
}

#endif // QXUTIL_FRAME_SINGLETON_H
