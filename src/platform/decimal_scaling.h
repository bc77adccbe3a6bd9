//===- platform/decimal_scaling.h - Scaling by powers of ten ----*- C++ -*-===//
//
// Both directions between decimal and binary floating point without
// big-number arithmetic: the scaling by 10^q uses the 128 leading bits of
// 10^q, so the exact product is known to lie in a narrow interval, and when
// every value of that interval rounds alike, that rounding is the answer.
// When it is not (a value very close to a midpoint, rare), the functions
// refuse and the caller converts the slow, exact way.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_DECIMAL_SCALING_H
#define QXUTIL_PLATFORM_DECIMAL_SCALING_H

#include <cstdint>

namespace qx::platform {

/// DecimalToDouble - stores the double nearest to w x 10^q (ties to even)
/// and returns true when it is a normal number and the interval decides it.
/// False, storing nothing, otherwise: w == 0, q outside -342..308, a result
/// outside the normal range, or a product too close to a midpoint.
bool DecimalToDouble(uint64_t w, int q, double* result);

/// DoubleToDecimal - the `digits` (1..17) leading decimal digits of |value|,
/// rounded half to even as printf's "%.*e" rounds them: |value| is about
/// significand x 10^(exponent - digits + 1), the significand in
/// [10^(digits - 1), 10^digits). False, storing nothing, for 0, infinities,
/// NaN, subnormal values and an undecided rounding.
bool DoubleToDecimal(double value, int digits, uint64_t* significand, int* exponent);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_DECIMAL_SCALING_H
