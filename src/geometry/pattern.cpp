//===- geometry/pattern.cpp - Rounding to a pattern's size ----------------===//
//
// Sizes of fill patterns are 16-bit: the half-step and the value that
// replaces a zero come from the pattern's low 16 bits, while the division
// uses the whole 32-bit pattern. The arithmetic is 32-bit and wraps, as it
// does for a Windows caller.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

using qx::geometry::Low32;

namespace {

int32_t Wrap(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

} // namespace

long RoundToPatternSize(long v, bool allowZero, long pattern) {
  const int32_t value = Low32(v), step = Low32(pattern);
  if (step == 0)
    return value;
  // h carries the sign of v: the pattern is negated before its truncation.
  const int32_t signedStep = value < 1 ? Wrap(-int64_t{step}) : step;
  const int32_t h = static_cast<int16_t>(static_cast<uint16_t>(signedStep));
  const int32_t shifted = Wrap(int64_t{value} + h / 2);
  // The one 32-bit quotient that overflows (-2147483648 / -1) wraps.
  const int32_t quotient = Wrap(int64_t{shifted} / step);
  const int32_t result = Wrap(int64_t{quotient} * step);
  if (result == 0 && !allowZero && value != 0)
    return h;
  return result;
}
