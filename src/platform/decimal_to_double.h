//===- platform/decimal_to_double.h - w x 10^q, correctly rounded -*- C++ -*-===//
//
// The step of decimal reading that turns a significand and a decimal exponent
// into a double without big-number arithmetic: the exact product is known to
// lie within a narrow interval (128 bits of 10^q), and when both ends of the
// interval round to the same double, that double is the answer.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_DECIMAL_TO_DOUBLE_H
#define QXUTIL_PLATFORM_DECIMAL_TO_DOUBLE_H

#include <cstdint>

namespace qx::platform {

/// DecimalToDouble - stores the double nearest to w x 10^q (ties to even)
/// and returns true when it is a normal number and the interval decides it.
/// False, storing nothing, otherwise: w == 0, q outside -342..308, a result
/// outside the normal range, or a product too close to the midpoint between
/// two doubles (rare); the caller then converts another way.
bool DecimalToDouble(uint64_t w, int q, double* result);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_DECIMAL_TO_DOUBLE_H
