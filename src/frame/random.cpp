//===- frame/random.cpp - Pseudo-random numbers ---------------------------===//
//
// The runtime's generator, seeded once per process (under a lock) with the
// time in hundredths of a second when the first number is asked for.
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

#include "platform/crt_random.h"

#include <atomic>
#include <mutex>

namespace {
std::mutex gSeedLock;
std::atomic<bool> gSeeded{false};
} // namespace

int random_number(int n) {
  if (!gSeeded.load(std::memory_order_acquire)) {
    std::lock_guard<std::mutex> hold(gSeedLock);
    if (!gSeeded.load(std::memory_order_relaxed)) {
      qx::crt::srand(static_cast<unsigned int>(time_100()));
      gSeeded.store(true, std::memory_order_release);
    }
  }
  if (n == 0)
    return 0;
  return qx::crt::rand() % n;
}
