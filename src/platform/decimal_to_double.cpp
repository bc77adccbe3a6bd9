// Provides: DecimalToDouble, over the generated powers of five.
#include "platform/decimal_to_double.h"

#include <bit>

namespace {

#include "platform/powers_of_five.inc"

using uint128 = unsigned __int128;

// A 192-bit product, high word first.
struct Wide {
  uint64_t x2, x1, x0;
};

// Rounded - mantissa x 2^exponent, the mantissa in [2^52, 2^53).
struct Rounded {
  uint64_t mantissa;
  int exponent;
};

// RoundTo53Bits - x (at least 2^190) rounded to 53 bits, half to even.
Rounded RoundTo53Bits(const Wide& x) {
  const int drop = 10 + static_cast<int>(x.x2 >> 63); // bits of x2 below the 53
  uint64_t mantissa = x.x2 >> drop;
  const uint64_t half = uint64_t{1} << (drop - 1);
  const bool aboveHalf = (x.x2 & (half - 1)) != 0 || x.x1 != 0 || x.x0 != 0;
  if ((x.x2 & half) != 0 && (aboveHalf || (mantissa & 1) != 0))
    ++mantissa;
  int exponent = 128 + drop;
  if (mantissa >> 53) { // rounded up to the next power of two
    mantissa >>= 1;
    ++exponent;
  }
  return {mantissa, exponent};
}

} // namespace

namespace qx::platform {

bool DecimalToDouble(uint64_t w, int q, double* result) {
  if (w == 0 || q < kSmallestPowerOfTen || q > kLargestPowerOfTen)
    return false;
  const int shift = std::countl_zero(w);
  w <<= shift; // at least 2^63
  // X = w T, the entry T in [2^127, 2^128): 10^q w lies in [X, X + w) 2^e.
  const uint64_t* t = kPowersOfFive[q - kSmallestPowerOfTen];
  const uint128 high = static_cast<uint128>(w) * t[0];
  const uint128 low = static_cast<uint128>(w) * t[1];
  const uint128 middle = static_cast<uint64_t>(high) + (low >> 64);
  const Wide x{static_cast<uint64_t>(high >> 64) + static_cast<uint64_t>(middle >> 64),
               static_cast<uint64_t>(middle), static_cast<uint64_t>(low)};
  // Every value in [X, X + w) rounds as X does unless adding w carries into
  // the top word, or nothing is set below it (X may be a midpoint, and the
  // values above it are not): then the interval does not decide.
  const bool carriesToTop = x.x0 + w < w && x.x1 == ~uint64_t{0};
  if (carriesToTop || (x.x1 == 0 && x.x0 == 0))
    return false;
  const Rounded r = RoundTo53Bits(x);
  const int exponent = r.exponent + ((217706 * q) >> 16) - 127 - shift;
  const int biased = exponent + 52 + 1023;
  if (biased < 1 || biased > 2046)
    return false;
  const uint64_t fraction = r.mantissa & ((uint64_t{1} << 52) - 1);
  *result = std::bit_cast<double>(static_cast<uint64_t>(biased) << 52 | fraction);
  return true;
}

} // namespace qx::platform
