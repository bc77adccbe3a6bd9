// Provides: TlsAlloc, TlsFree, TlsGetValue, TlsSetValue, critical sections,
// GetCurrentThreadId, and the entry-point notifications at thread exit and
// library unload (over pthread keys, recursive pthread mutexes and dladdr).
#include "platform/threads.h"

#include <atomic>
#include <cstdint>
#include <dlfcn.h>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace {

// Windows guarantees at least 64 slots per process (TLS_MINIMUM_AVAILABLE).
constexpr DWORD kTlsSlots = 64;

// A slot's value in one thread, with the generation of the slot's owner: a
// slot freed and allocated again reads as null in every thread, as on
// Windows, without visiting the threads.
struct TlsCell {
  void* value;
  uint32_t generation;
};

thread_local TlsCell tCells[kTlsSlots];
thread_local bool tWatched;

std::mutex gTlsLock;
bool gTlsInUse[kTlsSlots];
std::atomic<uint32_t> gTlsGeneration[kTlsSlots];

std::atomic<qx::platform::DllEntry> gEntry{nullptr};
pthread_key_t gExitKey;
std::atomic<bool> gExitKeyReady{false};
std::once_flag gExitKeyOnce;

HINSTANCE ThisModule() {
  Dl_info info{};
  if (!dladdr(reinterpret_cast<void*>(&ThisModule), &info))
    return nullptr;
  return static_cast<HINSTANCE>(info.dli_fbase);
}

void OnThreadExit(void*) {
  if (qx::platform::DllEntry entry = gEntry.load())
    entry(ThisModule(), DLL_THREAD_DETACH, nullptr);
  for (TlsCell& cell : tCells)
    cell.value = nullptr;
}

// Arranges for OnThreadExit to run when the calling thread ends.
void WatchThisThread() {
  if (tWatched)
    return;
  std::call_once(gExitKeyOnce, [] {
    if (pthread_key_create(&gExitKey, OnThreadExit) == 0)
      gExitKeyReady.store(true);
  });
  if (gExitKeyReady.load() && pthread_setspecific(gExitKey, &tWatched) == 0)
    tWatched = true;
}

__attribute__((destructor)) void OnUnload() {
  if (qx::platform::DllEntry entry = gEntry.load())
    entry(ThisModule(), DLL_PROCESS_DETACH, nullptr);
  // Threads still running must not call into code that is being unmapped.
  if (gExitKeyReady.exchange(false))
    pthread_key_delete(gExitKey);
}

pthread_mutex_t* AsMutex(CRITICAL_SECTION* section) {
  static_assert(sizeof(pthread_mutex_t) <= sizeof(section->Opaque));
  static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION));
  return reinterpret_cast<pthread_mutex_t*>(section->Opaque);
}

} // namespace

DWORD qx::win::TlsAlloc() {
  std::lock_guard<std::mutex> hold(gTlsLock);
  for (DWORD i = 0; i < kTlsSlots; ++i) {
    if (!gTlsInUse[i]) {
      gTlsInUse[i] = true;
      gTlsGeneration[i].fetch_add(1);
      return i;
    }
  }
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return TLS_OUT_OF_INDEXES;
}

BOOL qx::win::TlsFree(DWORD index) {
  std::lock_guard<std::mutex> hold(gTlsLock);
  if (index >= kTlsSlots || !gTlsInUse[index]) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  gTlsInUse[index] = false;
  gTlsGeneration[index].fetch_add(1);
  return TRUE;
}

LPVOID qx::win::TlsGetValue(DWORD index) {
  if (index >= kTlsSlots) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  SetLastError(ERROR_SUCCESS);
  return qx::platform::TlsValueFast(index);
}

BOOL qx::win::TlsSetValue(DWORD index, LPVOID value) {
  if (index >= kTlsSlots) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  if (value)
    WatchThisThread();
  tCells[index] = {value, gTlsGeneration[index].load(std::memory_order_relaxed)};
  return TRUE;
}

void qx::win::InitializeCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(AsMutex(section), &attr);
  pthread_mutexattr_destroy(&attr);
}

void qx::win::DeleteCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_destroy(AsMutex(section));
}

void qx::win::EnterCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_lock(AsMutex(section));
}

void qx::win::LeaveCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_unlock(AsMutex(section));
}

DWORD qx::win::GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }

namespace qx::platform {

void SetDllEntry(DllEntry entry) { gEntry.store(entry); }

LPVOID TlsValueFast(DWORD index) {
  const TlsCell& cell = tCells[index];
  return cell.generation == gTlsGeneration[index].load(std::memory_order_relaxed) ? cell.value
                                                                                  : nullptr;
}

} // namespace qx::platform
