// StringToDouble against glibc's wcstod on adversarial texts, and
// DoubleToString against swprintf on a bounded random sample: the answers
// must be identical (value bits, end pointer, range error; the same text).
// Random texts, shortest forms and halfway points are compared by
// fuzz/number_parse_fuzz.cpp.
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <random>
#include <string>

namespace {

uint64_t Bits(double d) {
  uint64_t b;
  std::memcpy(&b, &d, sizeof b);
  return b;
}

double FromBits(uint64_t b) {
  double d;
  std::memcpy(&d, &b, sizeof d);
  return d;
}

std::wstring Widen(const std::string& s) { return std::wstring(s.begin(), s.end()); }

// Checks one text; returns false (after reporting) on a difference.
bool SameAsWcstod(const std::wstring& text) {
  wchar_t* refEnd = nullptr;
  errno = 0;
  double ref = std::wcstod(text.c_str(), &refEnd);
  bool refOk = refEnd != text.c_str() && errno != ERANGE;
  double ours = 0;
  wchar_t* ourEnd = nullptr;
  bool ok = StringToDouble(text.c_str(), &ours, &ourEnd);
  bool same = ok == refOk && (!ok || (Bits(ours) == Bits(ref) && ourEnd == refEnd));
  if (!same)
    ADD_FAILURE() << "text \"" << std::string(text.begin(), text.end()) << "\" ok " << ok << " vs "
                  << refOk << " value " << ours << " vs " << ref;
  return same;
}

TEST(Differential, StringToDoubleMatchesWcstodOnEdges) {
  // The runtime locale is "C" here (tests never call setlocale), so the
  // whole wcstod syntax is compared.
  // clang-format off
  const char* fixed[] = {
      "0", "-0", "+0.0e-999999", "1e308", "1.7976931348623157e308", "1.7976931348623158e308",
      "1.7976931348623159e308", "1e309", "-1e400", "1e-400", "2.2250738585072011e-308",
      "2.2250738585072014e-308", "2.2250738585072012e-308", "4.9406564584124654e-324",
      "2.4703282292062327e-324", "2.4703282292062328e-324", "5e-324", "1e-323", "0x1.8p3",
      "0X.8P-2", "0x", "0xg", "0x1p-1074", "0x1p-1075", "0x1.fffffffffffffp1023", "0x1p1024",
      "-0x0", "inf", "INFINITY", "-Inf", "infinit", "nan", "NaN(123)", "nan(abc_1)", "nan(",
      " \t+1", "+-1", "- 1", "\xe3", ".", "e5", "1e", "1e+", "1.e5", ".e5", ".5", "5.",
      "00000000000000000000000000001", "1e+0000000000000000000001", "0e999999999999999999",
      "1e99999999999999999999", "1e-99999999999999999999", "9007199254740993",
      "9007199254740992.5", "1.00000000000000011102230246251565404",
      "123456789012345678901234567890e-30", "0.000000000000000000000000000001e30",
  };
  // clang-format on
  for (const char* text : fixed)
    SameAsWcstod(Widen(text));
}

TEST(Differential, DoubleToStringMatchesSwprintf) {
  std::mt19937_64 random(7);
  const struct {
    PRINTF_FORMAT format;
    const wchar_t* picture;
    const wchar_t* widePicture;
  } forms[] = {
      {PRINTF_G, L"%.*g", L"%*.*g"}, {PRINTF_F, L"%.*f", L"%*.*f"}, {PRINTF_E, L"%.*e", L"%*.*e"}};
  int failures = 0;
  wchar_t ours[1100], ref[1100];
  for (int i = 0; i < 100000; ++i) {
    double d;
    switch (i % 4) {
    case 0:
      d = FromBits(random());
      break;
    case 1:
      d = static_cast<double>(static_cast<int64_t>(random() % 2000001) - 1000000) / 64;
      break;
    case 2:
      d = FromBits(random() % 0x0010000000000000ull);
      break;
    default:
      d = std::ldexp(static_cast<double>(random() % 1000), static_cast<int>(random() % 200) - 100);
    }
    for (const auto& f : forms) {
      // Mostly everyday precisions, now and then a long one.
      int precision = static_cast<int>(random() % (i % 16 == 0 ? 420 : 30));
      if (f.format == PRINTF_F && std::fabs(d) > 1e30)
        precision %= 4;
      int width = (random() % 4 == 0) ? static_cast<int>(random() % 40) : -1;
      DoubleToString(d, ours, 1100, false, precision, f.format, width);
      if (width == -1)
        std::swprintf(ref, 1100, f.picture, precision, d);
      else
        std::swprintf(ref, 1100, f.widePicture, width, precision, d);
      if (std::wcscmp(ours, ref) != 0) {
        ADD_FAILURE() << "value " << d << " precision " << precision;
        if (++failures > 20)
          return;
      }
    }
  }
}

} // namespace
