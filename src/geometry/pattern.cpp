//===- geometry/pattern.cpp - Rounding to a pattern's size ----------------===//
//
// Sizes of fill patterns are 16-bit: the half-step and the value that
// replaces a zero come from the pattern's low 16 bits, while the division
// uses the whole 32-bit pattern. The arithmetic is exact and the result
// saturates at the 32-bit limits.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

using qx::geometry::Low32;

long RoundToPatternSize(long v, bool allowZero, long pattern) {
  const int64_t value = Low32(v), step = Low32(pattern);
  if (step == 0)
    return value;
  // h carries the sign of v: the pattern is negated before its truncation.
  const int64_t h = static_cast<int16_t>(static_cast<uint16_t>(value < 1 ? -step : step));
  const int64_t result = (value + h / 2) / step * step;
  if (result == 0 && !allowZero && value != 0)
    return h;
  return result > INT32_MAX ? INT32_MAX : result < INT32_MIN ? INT32_MIN : result;
}
