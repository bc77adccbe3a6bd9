//===- frame/arithmetic.cpp - Saturating and rounding arithmetic ----------===//
//
// The integer helpers behave as they do with Windows' 32-bit `long`:
// arguments are taken modulo 2^32 and results are 32-bit values. Products
// that callers rely on wrapping wrap (computed in unsigned arithmetic, so
// the wrap is defined). Conversions from double reproduce the x86
// truncating conversion, including its "integer indefinite" result for
// values it cannot represent.
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

int32_t Low32(long v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

int32_t Wrap32(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

// RoundAway - v + 0.5 for v > 0, v - 0.5 otherwise (still to be truncated).
double RoundAway(double v) { return v > 0 ? v + 0.5 : v - 0.5; }

// Truncate32 - x86 cvttsd2si: truncation, INT32_MIN when out of range.
int32_t Truncate32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0))
    return INT32_MIN;
  return static_cast<int32_t>(v);
}

int64_t Truncate64(double v) {
  if (!(v >= -9223372036854775808.0 && v < 9223372036854775808.0))
    return INT64_MIN;
  return static_cast<int64_t>(v);
}

} // namespace

long LongAdd(long a, long b) {
  int64_t sum = int64_t{Low32(a)} + Low32(b);
  if (sum > INT32_MAX)
    return INT32_MAX;
  if (sum < INT32_MIN)
    return INT32_MIN;
  return static_cast<long>(sum);
}

short ShortAdd(short a, short b) {
  int sum = a + b;
  return static_cast<short>(sum > 32767 ? 32767 : sum < -32768 ? -32768 : sum);
}

long LongAddCoords(long a, long b, long low, long high) {
  long sum = LongAdd(a, b);
  if (sum < Low32(low))
    return Low32(low);
  if (sum > Low32(high))
    return Low32(high);
  return sum;
}

int IntegerMulDiv(int a, int b, int divisor) {
  if (divisor == 0)
    return 0;
  uint32_t t =
      static_cast<uint32_t>(a) * static_cast<uint32_t>(b) + static_cast<uint32_t>(divisor / 2);
  int32_t dividend = static_cast<int32_t>(t);
  if (dividend == INT32_MIN && divisor == -1)
    return INT32_MIN; // the one quotient that does not fit wraps
  return dividend / divisor;
}

long LongRoundDiv(long a, long b) {
  int32_t x = Low32(a), y = Low32(b);
  if (y == 0)
    return x;
  int64_t mx = x < 0 ? -int64_t{x} : x;
  int64_t my = y < 0 ? -int64_t{y} : y;
  int64_t q = (mx + my / 2) / my;
  return Wrap32((x < 0) != (y < 0) ? -q : q);
}

int IntegerMulDivScale(int a, int b, int divisor, double scale) {
  uint32_t t =
      static_cast<uint32_t>(a) * static_cast<uint32_t>(b) + static_cast<uint32_t>(divisor / 2);
  double scaled = static_cast<double>(static_cast<int32_t>(t)) * scale / divisor;
  return static_cast<int16_t>(static_cast<uint16_t>(Truncate32(RoundAway(scaled))));
}

long DoubleToLong(double value) { return Truncate32(RoundAway(value)); }

short DoubleToShort(double value) {
  return static_cast<short>(static_cast<uint16_t>(Truncate32(RoundAway(value))));
}

long long DoubleToInt64(double value) { return Truncate64(RoundAway(value)); }

long DoubleToLongClip(double value) {
  if (value < -2147483648.0)
    return INT32_MIN;
  if (value > 2147483647.0)
    return INT32_MAX;
  return DoubleToLong(value);
}

short DoubleToShortClip(double value) {
  if (value < -32768.0)
    return -32768;
  if (value > 32767.0)
    return 32767;
  return DoubleToShort(value);
}

double qx_round(double value, double step) {
  if (step == 0)
    return value;
  return std::floor((value + step / 2) / step) * step;
}

void SetNaN(double& value) { value = GetNaN(); }

double GetNaN() {
  const uint64_t bits = 0x7FFFFFFFFFFFFFFFull;
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

bool IsNaN(double value) { return std::isnan(value); }
