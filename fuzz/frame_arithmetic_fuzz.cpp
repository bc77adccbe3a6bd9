// The frame's saturating integer arithmetic and rounding conversions from
// double against exact 64-bit and 128-bit forms of their rules, for random
// arguments (64-bit longs of which only the low 32 bits count) and doubles
// made to land on halves and on the edges of the 16-, 32- and 64-bit ranges.
#include "qxutil/frame.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Bytes - the input read in pieces; zeros once it runs out.
struct Bytes {
  const uint8_t* data;
  size_t size;
  template <class T> T Next() {
    T v{};
    const size_t n = size < sizeof v ? size : sizeof v;
    std::memcpy(&v, data, n);
    data += n;
    size -= n;
    return v;
  }
};

constexpr double kLow32 = -2147483648.0;

int64_t Low32(long v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }
int64_t Clamp(int64_t v, int64_t low, int64_t high) { return v < low ? low : v > high ? high : v; }
int64_t Low16(int64_t v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }
int64_t Wrap32(__int128 v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

// Rounded - a half added away from zero (zero counts as negative), then
// truncated; nothing when that is outside the two's complement range
// [low, -low).
bool Rounded(double v, double low, int64_t* out) {
  const double t = std::trunc(v > 0 ? v + 0.5 : v - 0.5);
  if (!(t >= low && t < -low))
    return false;
  *out = static_cast<int64_t>(t);
  return true;
}

// AnyDouble - raw bits, a multiple of a half, or within a unit (in
// quarters) or a few steps of the last bit from an edge of the 16-, 32- or
// 64-bit ranges.
double AnyDouble(Bytes& in) {
  const uint8_t mode = in.Next<uint8_t>();
  const int64_t n = in.Next<int64_t>();
  static const double kEdges[] = {
      0, 32767, -32768, 2147483647, -2147483648.0, 9223372036854775808.0, -9223372036854775808.0};
  const double edge = kEdges[(mode >> 2) % 7];
  double v;
  switch (mode % 4) {
  case 0:
    std::memcpy(&v, &n, sizeof v);
    return v;
  case 1:
    return static_cast<double>(static_cast<int32_t>(n)) / 2;
  case 2:
    return edge + static_cast<double>(static_cast<int8_t>(n) % 5) / 4;
  default:
    int64_t bits;
    std::memcpy(&bits, &edge, sizeof bits);
    bits += static_cast<int8_t>(n) % 4;
    std::memcpy(&v, &bits, sizeof v);
    return v;
  }
}

void CheckIntegers(long a, long b, long low, long high) {
  const int64_t sum = Clamp(Low32(a) + Low32(b), INT32_MIN, INT32_MAX);
  Check(LongAdd(a, b) == sum);
  Check(LongAddCoords(a, b, low, high) == (sum < Low32(low)    ? Low32(low)
                                           : sum > Low32(high) ? Low32(high)
                                                               : sum));
  const short sa = static_cast<short>(a), sb = static_cast<short>(b);
  Check(ShortAdd(sa, sb) == Clamp(int64_t{sa} + sb, -32768, 32767));

  // IntegerMulDiv and LongRoundDiv take the low 32 bits of each argument;
  // a divisor of 0 gives 0.
  const int x = static_cast<int>(a), y = static_cast<int>(b), d = static_cast<int>(low);
  const int64_t t = Wrap32(__int128{x} * y + d / 2);
  Check(IntegerMulDiv(x, y, d) == (d == 0 ? 0 : Wrap32(t / d)));
  const int64_t magnitude =
      (std::abs(Low32(a)) + std::abs(Low32(b)) / 2) / (Low32(b) == 0 ? 1 : std::abs(Low32(b)));
  Check(LongRoundDiv(a, b) == (Low32(b) == 0                      ? Low32(a)
                               : (Low32(a) < 0) != (Low32(b) < 0) ? Wrap32(-magnitude)
                                                                  : Wrap32(magnitude)));
  // The scaled quotient keeps the low 16 bits of the rounded 32-bit result.
  const double scale = static_cast<double>(static_cast<int16_t>(high)) / 8;
  int64_t r = 0;
  Check(IntegerMulDivScale(x, y, d, scale) ==
        (Rounded(static_cast<double>(t) * scale / d, kLow32, &r) ? Low16(r) : 0));
}

void CheckConversions(double v) {
  int64_t r = 0;
  const int64_t asLong = Rounded(v, kLow32, &r) ? r : INT32_MIN;
  Check(DoubleToLong(v) == asLong);
  Check(DoubleToShort(v) == Low16(asLong));
  Check(DoubleToInt64(v) == (Rounded(v, -9223372036854775808.0, &r) ? r : LLONG_MIN));
  Check(DoubleToLongClip(v) == (v < -2147483648.0  ? INT32_MIN
                                : v > 2147483647.0 ? INT32_MAX
                                                   : asLong));
  Check(DoubleToShortClip(v) == (v < -32768.0 ? -32768 : v > 32767.0 ? 32767 : Low16(asLong)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The one quotient that overflows, a zero divisor, the edges themselves.
  static const bool edges = [] {
    CheckIntegers(INT32_MIN, 1, -1, 0);
    CheckIntegers(7, 0, 0, 0);
    for (double v : {-2147483648.25, -2147483647.25, 2147483646.5, 2147483647.25, 32767.5, -32768.5,
                     -0.0, 0.49999999999999994, 9223372036854774784.0})
      CheckConversions(v);
    return true;
  }();
  (void)edges;
  Bytes in{data, size};
  const long a = in.Next<int64_t>(), b = in.Next<int64_t>(), low = in.Next<int64_t>();
  CheckIntegers(a, b, low, in.Next<int64_t>());
  CheckConversions(AnyDouble(in));
  CheckConversions(AnyDouble(in));
  return 0;
}
