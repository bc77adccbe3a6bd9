// Both directions of decimal scaling against the standard library's exact
// conversions. DecimalToDouble against std::from_chars: for any significand
// and decimal exponent (and for the digits of a double's midpoint with its
// neighbour), an accepted result is the correctly rounded one.
// DoubleToDecimal against std::to_chars' "%.*e" digits, for any double and
// digit count, including doubles that are decimal ties at some digit.
#include "platform/decimal_scaling.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void Check(bool condition) {
  if (!condition)
    std::abort();
}

// Compare - DecimalToDouble(w, q) is refused or equals from_chars' reading.
void Compare(uint64_t w, int q) {
  double got;
  if (!qx::platform::DecimalToDouble(w, q, &got))
    return;
  char text[48];
  int n = std::snprintf(text, sizeof text, "%llue%d", static_cast<unsigned long long>(w), q);
  double want = 0;
  auto r = std::from_chars(text, text + n, want);
  Check(r.ec == std::errc() && std::memcmp(&got, &want, sizeof got) == 0);
  Check(std::isnormal(got));
}

// CompareDigits - DoubleToDecimal(value, digits) is refused or gives the
// digits and exponent of to_chars' scientific form.
void CompareDigits(double value, int digits) {
  uint64_t significand;
  int exponent;
  if (!qx::platform::DoubleToDecimal(value, digits, &significand, &exponent))
    return;
  char want[64], got[64];
  auto r = std::to_chars(want, want + sizeof want, std::fabs(value), std::chars_format::scientific,
                         digits - 1);
  *r.ptr = 0;
  char text[24];
  std::snprintf(text, sizeof text, "%llu", static_cast<unsigned long long>(significand));
  Check(std::strlen(text) == static_cast<size_t>(digits));
  std::snprintf(got, sizeof got, "%c%s%se%c%02d", text[0], digits > 1 ? "." : "", text + 1,
                exponent < 0 ? '-' : '+', exponent < 0 ? -exponent : exponent);
  Check(std::strcmp(want, got) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 10)
    return 0;
  uint64_t w;
  std::memcpy(&w, data, sizeof w);
  int q = static_cast<int>(data[8] | data[9] << 8) % 700 - 350;
  Compare(w, q);
  Compare(w >> (data[8] & 63), q);
  // The midpoint between a double and the next: its 17 to 19 leading digits.
  double d;
  std::memcpy(&d, data, sizeof d);
  const int digitCount = 1 + data[8] % 17;
  CompareDigits(d, digitCount);
  // A short decimal (a tie at some digit when it is exact in binary).
  CompareDigits(static_cast<double>(w % 100000) / (1 << (data[9] % 12)), digitCount);
  d = std::fabs(d);
  if (!std::isfinite(d) || d == 0)
    return 0;
  double next = std::nextafter(d, INFINITY);
  // Exact in long double's 64-bit significand; printed to 19 digits.
  long double mid = static_cast<long double>(d) + (static_cast<long double>(next) - d) / 2;
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.18Le", mid);
  uint64_t m = 0;
  int count = 0;
  const char* p = digits;
  for (; *p && *p != 'e'; ++p)
    if (*p >= '0' && *p <= '9') {
      m = m * 10 + static_cast<uint64_t>(*p - '0');
      ++count;
    }
  int e = std::atoi(p + 1) - (count - 1);
  Compare(m, e);
  Compare(m + 1, e);
  Compare(m - 1, e);
  return 0;
}
