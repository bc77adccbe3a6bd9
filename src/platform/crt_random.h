//===- platform/crt_random.h - Microsoft C-runtime rand/srand -*- C++ -*-===//
//
// Provides: srand and rand with the Microsoft runtime's generator (state =
// state * 214013 + 2531011, result bits 16..30: 0..32767), so that a seed
// gives the numbers it gives on Windows. One state for the whole process
// (Microsoft's runtime keeps one per thread), updated atomically.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CRT_RANDOM_H
#define QXUTIL_PLATFORM_CRT_RANDOM_H

namespace qx::crt {

inline constexpr int kRandMax = 0x7FFF;

/// srand - restarts the sequence from `seed` (the state starts at 1).
void srand(unsigned int seed);
/// rand - the next number, 0..kRandMax.
int rand();

} // namespace qx::crt

#endif // QXUTIL_PLATFORM_CRT_RANDOM_H
