// Provides: DecimalToDouble and DoubleToDecimal, over the generated powers
// of five.
#include "platform/decimal_scaling.h"

#include <bit>
#include <cmath>

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

// Product - w x the entry of 10^q: X = w T, with 10^q w in [X, X + w) 2^e
// for e = PowerExponent(q).
Wide Product(uint64_t w, int q) {
  const uint64_t* t = kPowersOfFive[q - kSmallestPowerOfTen];
  const uint128 high = static_cast<uint128>(w) * t[0];
  const uint128 low = static_cast<uint128>(w) * t[1];
  const uint128 middle = static_cast<uint64_t>(high) + (low >> 64);
  return {static_cast<uint64_t>(high >> 64) + static_cast<uint64_t>(middle >> 64),
          static_cast<uint64_t>(middle), static_cast<uint64_t>(low)};
}

// PowerExponent - the binary exponent of the entry of 10^q.
int PowerExponent(int q) { return ((217706 * q) >> 16) - 127; }

// RoundedInteger - x / 2^(128 + s) rounded half to even, for 0 < s < 64.
uint64_t RoundedInteger(const Wide& x, int s) {
  const uint64_t integer = x.x2 >> s;
  const uint64_t half = uint64_t{1} << (s - 1);
  const bool aboveHalf = (x.x2 & (half - 1)) != 0 || x.x1 != 0 || x.x0 != 0;
  return integer + ((x.x2 & half) != 0 && (aboveHalf || (integer & 1) != 0));
}

// Decides - every value of [x, x + w) 2^e, where w (10^q) lies, rounds as
// x does at any bit of the top word. With an exact entry (0 <= q <=
// kLargestExactPower) the interval is x alone. Otherwise adding w reaches
// the top word only by carrying through an all-ones middle word, and it
// changes a rounding only when nothing below the top word is set (x may be
// a midpoint, the values above it are not).
bool Decides(const Wide& x, uint64_t w, int q) {
  if (q >= 0 && q <= kLargestExactPower)
    return true;
  const bool carriesToTop = x.x0 + w < w && x.x1 == ~uint64_t{0};
  return !carriesToTop && !(x.x1 == 0 && x.x0 == 0);
}

// RoundTo53Bits - x (at least 2^190) rounded to 53 bits, half to even.
Rounded RoundTo53Bits(const Wide& x) {
  const int drop = 10 + static_cast<int>(x.x2 >> 63); // bits of x2 below the 53
  uint64_t mantissa = RoundedInteger(x, drop);
  int exponent = 128 + drop;
  if (mantissa >> 53) { // rounded up to the next power of two
    mantissa >>= 1;
    ++exponent;
  }
  return {mantissa, exponent};
}

constexpr uint64_t kTenTo[] = {1,
                               10,
                               100,
                               1000,
                               10000,
                               100000,
                               1000000,
                               10000000,
                               100000000,
                               1000000000,
                               10000000000,
                               100000000000,
                               1000000000000,
                               10000000000000,
                               100000000000000,
                               1000000000000000,
                               10000000000000000,
                               100000000000000000};

} // namespace

namespace qx::platform {

bool DecimalToDouble(uint64_t w, int q, double* result) {
  if (w == 0 || q < kSmallestPowerOfTen || q > kLargestPowerOfTen)
    return false;
  const int shift = std::countl_zero(w);
  w <<= shift;                  // at least 2^63
  const Wide x = Product(w, q); // the entry T is in [2^127, 2^128)
  if (!Decides(x, w, q))
    return false;
  const Rounded r = RoundTo53Bits(x);
  const int exponent = r.exponent + PowerExponent(q) - shift;
  const int biased = exponent + 52 + 1023;
  if (biased < 1 || biased > 2046)
    return false;
  const uint64_t fraction = r.mantissa & ((uint64_t{1} << 52) - 1);
  *result = std::bit_cast<double>(static_cast<uint64_t>(biased) << 52 | fraction);
  return true;
}

bool DoubleToDecimal(double value, int digits, uint64_t* significand, int* exponent) {
  if (digits < 1 || digits > 17 || !std::isnormal(value))
    return false;
  const uint64_t bits = std::bit_cast<uint64_t>(value);
  // |value| = m 2^e, m normalised to [2^63, 2^64).
  const uint64_t m = (bits << 11) | (uint64_t{1} << 63);
  const int e = static_cast<int>(bits >> 52 & 0x7FF) - 1075 - 11;
  // |value| is in [2^(e + 63), 2^(e + 64)): its decimal exponent is
  // floor((e + 63) log10 2) (78913 / 2^18 is a little below log10 2) or one
  // more; the first guess that leaves `digits` digits holds.
  int x = ((e + 63) * 78913) >> 18;
  for (int attempt = 0; attempt < 3; ++attempt) {
    const int q = digits - 1 - x;
    if (q < kSmallestPowerOfTen || q > kLargestPowerOfTen)
      return false;
    // |value| 10^q is in [X, X + m) / 2^shift; its integer part must fall in
    // the top word's high bits.
    const int shift = -(e + PowerExponent(q));
    if (shift <= 128 || shift >= 192)
      return false;
    const Wide product = Product(m, q);
    const uint64_t integer = product.x2 >> (shift - 128);
    if (integer >= kTenTo[digits]) {
      ++x; // the guess was one short
      continue;
    }
    if (integer < kTenTo[digits - 1]) {
      --x; // one too many: the digits round at the next place down
      continue;
    }
    if (!Decides(product, m, q))
      return false;
    uint64_t d = RoundedInteger(product, shift - 128);
    if (d == kTenTo[digits]) { // rounded up to the next power of ten
      d = kTenTo[digits - 1];
      ++x;
    }
    *significand = d;
    *exponent = x;
    return true;
  }
  return false;
}

} // namespace qx::platform
