//===- frame/instance_data.cpp - Instance data and its storages -----------===//
//
// Each context's services live in an InstanceData. Where it is kept is
// decided by the storage switch: in a thread-local slot (the default) or
// through the host's getter and setter after SetExternalDataStorage.
//
//===----------------------------------------------------------------------===//
#include "frame/memory.h"
#include "frame/service_set.h"
#include "frame/singleton.h"
#include "platform/threads.h"
#include "qxutil/frame.h"

#include <atomic>
#include <map>

using namespace qx::win;

namespace qx::detail {
__thread void** tServiceSlots __attribute__((tls_model("initial-exec"))) = nullptr;
std::atomic<bool> gThreadStorageInForce{true};

void* SlotFromInstanceData(unsigned int key) {
  InstanceData* data = GetInstanceData();
  return data ? data->GetSlot(key) : nullptr;
}

} // namespace qx::detail

namespace {

// An allocator for the slot map's nodes over the memory manager; a failed
// allocation throws std::bad_alloc, which SetSlot turns into false.
template <class T> struct QXAllocator {
  using value_type = T;
  QXAllocator() = default;
  template <class U> QXAllocator(const QXAllocator<U>&) {}
  T* allocate(size_t n) {
    void* block = nullptr;
    if (n * sizeof(T) > 0xFFFFFFFFu ||
        !falloc_(static_cast<unsigned int>(n * sizeof(T)), &block, true, true))
      throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  void deallocate(T* p, size_t) { ffree(&p); }
  template <class U> bool operator==(const QXAllocator<U>&) const { return true; }
};

class InstanceDataImpl final : public InstanceData {
public:
  bool SetSlot(unsigned int key, void* value) override {
    if (key < kDirectSlots) {
      direct_[key] = value;
      return true;
    }
    try {
      others_[key] = value;
      return true;
    } catch (...) {
      return false;
    }
  }

  void* GetSlot(unsigned int key) override {
    if (key < kDirectSlots)
      return direct_[key];
    auto it = others_.find(key);
    return it == others_.end() ? nullptr : it->second;
  }

  bool IsAutoDestroy() override { return autoDestroy_; }
  void ClearAutoDestroy() override { autoDestroy_ = false; }

  /// ServiceSlots - the slot array of a set the library made; null for a
  /// host's own InstanceData.
  static void** ServiceSlots(InstanceData* p) {
    auto* impl = dynamic_cast<InstanceDataImpl*>(p);
    return impl ? impl->direct_ : nullptr;
  }

private:
  // The services' keys are all small: they live in an array, and other keys
  // in an ordered map.
  static constexpr unsigned int kDirectSlots = qx::detail::kServiceSlots;
  void* direct_[kDirectSlots] = {};
  std::map<unsigned int, void*, std::less<unsigned int>,
           QXAllocator<std::pair<const unsigned int, void*>>>
      others_;
  bool autoDestroy_ = true;
};

// Where the current context's InstanceData is held.
class InstanceDataStorage {
public:
  virtual ~InstanceDataStorage() {}
  virtual InstanceData* Get() = 0;
  virtual bool Set(InstanceData* p) = 0;
};

// One InstanceData per thread, in a thread-local slot allocated on first use.
class TlsInstanceDataStorage final : public InstanceDataStorage {
public:
  ~TlsInstanceDataStorage() override {
    if (index_ != TLS_OUT_OF_INDEXES) {
      QXGuardLock hold(&guard_);
      TlsFree(index_);
      index_ = TLS_OUT_OF_INDEXES;
    }
  }

  InstanceData* Get() override {
    DWORD index = EnsureIndex();
    if (index == TLS_OUT_OF_INDEXES)
      return nullptr;
    return static_cast<InstanceData*>(qx::platform::TlsValueFast(index));
  }

  bool Set(InstanceData* p) override {
    DWORD index = EnsureIndex();
    if (index == TLS_OUT_OF_INDEXES || !TlsSetValue(index, p))
      return false;
    qx::detail::tServiceSlots = InstanceDataImpl::ServiceSlots(p);
    return true;
  }

private:
  DWORD EnsureIndex() {
    DWORD index = index_.load(std::memory_order_acquire);
    if (index != TLS_OUT_OF_INDEXES)
      return index;
    QXGuardLock hold(&guard_);
    if (index_.load(std::memory_order_relaxed) == TLS_OUT_OF_INDEXES)
      index_.store(TlsAlloc(), std::memory_order_release);
    return index_.load(std::memory_order_relaxed);
  }

  std::atomic<DWORD> index_{TLS_OUT_OF_INDEXES};
  QXGuard guard_;
};

// The host's storage: a getter and a setter it installed.
class ExternalInstanceDataStorage final : public InstanceDataStorage {
public:
  InstanceData* Get() override {
    auto getter = getter_.load(std::memory_order_acquire);
    return getter ? getter() : nullptr;
  }
  bool Set(InstanceData* p) override {
    auto setter = setter_.load(std::memory_order_acquire);
    return setter ? setter(p) : false;
  }

  std::atomic<InstanceData* (*)()> getter_{nullptr};
  std::atomic<bool (*)(InstanceData*)> setter_{nullptr};
};

BOOL LibraryEntry(HINSTANCE, DWORD reason, LPVOID) {
  switch (reason) {
  case DLL_THREAD_DETACH:
    InstanceData::Destroy(true, true);
    qx::detail::tServiceSlots = nullptr;
    break;
  case DLL_PROCESS_DETACH:
    qx::ShutDownMemoryManager();
    break;
  default:
    break;
  }
  return TRUE;
}

// The frame's one static object, made when the library is loaded.
struct InstanceDataStorageSwitch {
  InstanceDataStorageSwitch() { qx::platform::SetDllEntry(&LibraryEntry); }
  ~InstanceDataStorageSwitch() { current.store(&thread); }

  InstanceDataStorage* Current() { return current.load(std::memory_order_acquire); }

  ExternalInstanceDataStorage external;
  QXGuard guard;
  int useCount = 0;
  TlsInstanceDataStorage thread;
  std::atomic<InstanceDataStorage*> current{&thread};
};

InstanceDataStorageSwitch gSwitch;

// The set this thread is filling with services. A service whose construction
// asks for another service reaches it here also when the storage could not
// keep the set (no TLS index, a host setter that refuses), instead of
// starting another set without end.
thread_local InstanceData* tSetUnderConstruction = nullptr;

// CreateWithSingletons - a new set, installed, with its services.
InstanceData* CreateWithSingletons() {
  InstanceData* data = qx::NewServiceOrNull<InstanceDataImpl>();
  if (!data)
    return nullptr;
  gSwitch.Current()->Set(data);
  InstanceData* outer = tSetUnderConstruction;
  tSetUnderConstruction = data;
  InstanceData* result = qx::CreateServices(data);
  tSetUnderConstruction = outer;
  return result;
}

} // namespace

InstanceData::~InstanceData() {}

InstanceData* GetInstanceData() {
  InstanceDataStorage* current = gSwitch.Current();
  InstanceData* p = current == &gSwitch.thread ? gSwitch.thread.Get() : current->Get();
  if (p)
    return p;
  if (tSetUnderConstruction)
    return tSetUnderConstruction;
  if (current == &gSwitch.external) {
    // A set made on this thread before the host installed its storage goes
    // to the host rather than being lost.
    if (InstanceData* q = gSwitch.thread.Get()) {
      gSwitch.thread.Set(nullptr);
      gSwitch.external.Set(q);
      return q;
    }
  }
  return CreateWithSingletons();
}

bool SetInstanceData(InstanceData* p) { return gSwitch.Current()->Set(p); }

InstanceData* InstanceData::Create() {
  InstanceData* data = qx::NewServiceOrNull<InstanceDataImpl>();
  if (data)
    gSwitch.Current()->Set(data);
  return data;
}

void InstanceData::Destroy(bool onlyIfAutoDestroy, bool fromThreadSlot) {
  InstanceDataStorage* storage = fromThreadSlot ? &gSwitch.thread : gSwitch.Current();
  InstanceData* p = fromThreadSlot ? gSwitch.thread.Get() : GetInstanceData();
  if (!p)
    return;
  if (onlyIfAutoDestroy && !p->IsAutoDestroy())
    return;
  qx::DestroyServices(p);
  storage->Set(nullptr);
  delete p;
}

void SetExternalDataStorage(InstanceData* (*getter)(), bool (*setter)(InstanceData*)) {
  QXGuardLock hold(&gSwitch.guard);
  if (gSwitch.useCount == 0) {
    gSwitch.external.getter_ = getter;
    gSwitch.external.setter_ = setter;
    gSwitch.current.store(&gSwitch.external, std::memory_order_release);
    qx::detail::gThreadStorageInForce.store(false);
  }
  ++gSwitch.useCount;
}

void ClearExternalDataStorage() {
  {
    QXGuardLock hold(&gSwitch.guard);
    if (gSwitch.useCount == 1) {
      gSwitch.current.store(&gSwitch.thread, std::memory_order_release);
      qx::detail::gThreadStorageInForce.store(true);
      gSwitch.external.getter_ = nullptr;
      gSwitch.external.setter_ = nullptr;
    }
    --gSwitch.useCount;
  }
  // While another installation keeps the host's storage, the set it held
  // for this thread comes back to the thread's slot.
  if (!gSwitch.thread.Get()) {
    gSwitch.thread.Set(gSwitch.external.Get());
    gSwitch.external.Set(nullptr);
  }
}
