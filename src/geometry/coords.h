//===- geometry/coords.h - Exact integer coordinate arithmetic --*- C++ -*-===//
//
// Helpers shared by the geometry sources: 32-bit views of `long` arguments,
// saturating moves, and exact rounding of quotients of wide integers. A
// `long` counts by its low 32 bits, as it does for a Windows caller.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_GEOMETRY_COORDS_H
#define QXUTIL_GEOMETRY_COORDS_H

#include "qxutil/frame.h"

#include <cstdint>

namespace qx::geometry {

using int128 = __int128;

/// Low32 - the 32-bit value a Windows caller passes as `long`.
inline int32_t Low32(long v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

/// Clamp - v below lo becomes lo, otherwise v above hi becomes hi (the
/// lower limit is tested first, as LongAddCoords does).
inline int32_t Clamp(int32_t v, long lo, long hi) {
  if (v < Low32(lo))
    return Low32(lo);
  if (v > Low32(hi))
    return Low32(hi);
  return v;
}

/// MoveBack - LongAddCoords(a, -d, lo, hi) with the negation exact: moving
/// back by -2147483648 moves forward by 2147483648, in two saturating steps.
inline int32_t MoveBack(int32_t a, long d, long lo, long hi) {
  int32_t step = Low32(d);
  if (step == INT32_MIN)
    return static_cast<int32_t>(LongAddCoords(LongAdd(a, INT32_MAX), 1, lo, hi));
  return static_cast<int32_t>(LongAddCoords(a, -step, lo, hi));
}

/// Move - LongAddCoords(a, d, lo, hi).
inline int32_t Move(int32_t a, long d, long lo, long hi) {
  return static_cast<int32_t>(LongAddCoords(a, d, lo, hi));
}

/// RoundAway64 - DoubleToLong's rounding (halves away from zero) for a value
/// that may exceed 32 bits but is known to fit well inside 64.
inline int64_t RoundAway64(double v) { return static_cast<int64_t>(v > 0 ? v + 0.5 : v - 0.5); }

/// RoundQuotient - n / d rounded half away from zero, exactly (d != 0).
inline int64_t RoundQuotient(int128 n, int128 d) {
  if (d < 0) {
    n = -n;
    d = -d;
  }
  int128 magnitude = n < 0 ? -n : n;
  int128 q = (2 * magnitude + d) / (2 * d);
  return static_cast<int64_t>(n < 0 ? -q : q);
}

/// Sign - -1, 0 or 1.
inline int Sign(int128 v) { return (v > 0) - (v < 0); }

} // namespace qx::geometry

#endif // QXUTIL_GEOMETRY_COORDS_H
