// Provides: srand, rand (the Microsoft runtime's linear congruential generator).
#include "platform/crt_random.h"

#include <atomic>
#include <cstdint>

namespace {
std::atomic<uint32_t> gState{1};
} // namespace

namespace qx::crt {

void srand(unsigned int seed) { gState.store(seed, std::memory_order_relaxed); }

int rand() {
  uint32_t state = gState.load(std::memory_order_relaxed);
  uint32_t next;
  do {
    next = state * 214013u + 2531011u;
  } while (!gState.compare_exchange_weak(state, next, std::memory_order_relaxed));
  return static_cast<int>((next >> 16) & 0x7FFF);
}

} // namespace qx::crt
