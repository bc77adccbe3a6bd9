// StringToDouble in both runtime-locale paths, differential against glibc's
// wcstod (a fixed list of adversarial texts first, then random ones), and
// the integer parsers: any text, no crash, no difference, and the text is
// left as it was. The first bytes also make a double whose shortest,
// 17-digit and exponent forms, and the exact halfway point to its neighbour
// (with texts just below and above it), must read as wcstod reads them, and
// make decimal texts that the integer parsers must read by their ranges.
#include "platform/crt_number.h"
#include "qxutil/locale.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

namespace {

// Bytes become units one by one; a few bytes stand for units that matter
// to number text beyond ASCII.
std::wstring Text(const uint8_t* data, size_t size) {
  std::wstring s;
  for (size_t i = 0; i < size; ++i) {
    switch (data[i]) {
    case 0xF0:
      s += L'\u3000';
      break; // ideographic space
    case 0xF1:
      s += L'\u0661';
      break; // Arabic-Indic one
    case 0xF2:
      s += L'\u0301';
      break; // combining acute
    case 0xF3:
      s += L'\uFF15';
      break; // fullwidth five
    case 0:
      s += L'0';
      break;
    default:
      s += static_cast<wchar_t>(data[i]);
    }
  }
  return s;
}

uint64_t Bits(double d) {
  uint64_t b;
  std::memcpy(&b, &d, sizeof b);
  return b;
}

void Check(bool condition) {
  if (!condition)
    std::abort();
}

// SameAsWcstod - StringToDouble in the "C" runtime locale reads `text`
// exactly as glibc's wcstod does.
void SameAsWcstod(const std::wstring& text) {
  double value = 0;
  wchar_t *end = nullptr, *refEnd = nullptr;
  bool ok = StringToDouble(text.c_str(), &value, &end);
  errno = 0;
  double ref = std::wcstod(text.c_str(), &refEnd);
  bool refOk = refEnd != text.c_str() && errno != ERANGE;
  Check(ok == refOk);
  Check(!ok || (Bits(value) == Bits(ref) && end == refEnd));
  Check(ok || (value == 0 && end == nullptr));
}

std::wstring Widen(const char* s) { return std::wstring(s, s + std::strlen(s)); }

// Forms - the printed forms of the double in data[0..7] and the halfway
// point between it and its upper neighbour.
void Forms(const uint8_t* data) {
  uint64_t bits;
  std::memcpy(&bits, data, sizeof bits);
  double d;
  std::memcpy(&d, &bits, sizeof d);
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf - 1, d); // shortest
  *r.ptr = 0;
  SameAsWcstod(Widen(buf));
  std::snprintf(buf, sizeof buf, "%.17g", d);
  SameAsWcstod(Widen(buf));
  std::snprintf(buf, sizeof buf, "%.*e", static_cast<int>(data[7] % 25), d);
  SameAsWcstod(Widen(buf));
  if (!std::isfinite(d) || std::fabs(d) >= 1.7e308)
    return;
  // Halfway points are exact in the 64-bit mantissa of a long double.
  long double mid = (static_cast<long double>(d) + std::nextafter(d, HUGE_VAL)) / 2;
  static char exact[900];
  std::snprintf(exact, sizeof exact, "%.780Le", mid);
  std::string text = exact;
  size_t e = text.find('e');
  std::string mantissa = text.substr(0, e), exponent = text.substr(e);
  mantissa.erase(mantissa.find_last_not_of('0') + 1);
  SameAsWcstod(Widen((mantissa + exponent).c_str()));
  SameAsWcstod(Widen((mantissa + "000000000000000000001" + exponent).c_str()));
  if (mantissa.back() >= '1' && mantissa.back() <= '9') {
    mantissa.back() = static_cast<char>(mantissa.back() - 1);
    SameAsWcstod(Widen((mantissa + "999999999" + exponent).c_str()));
  }
}

// Texts where a reader most easily parts from wcstod: the limits of the
// range, ties at the denormal edge, hexadecimal forms, words, exponents
// that overflow their own counter, and long digit runs.
// clang-format off
const char* const kAdversarial[] = {
    "1.5", "1.5d3", "  -2.5e-3x", "-Infinity", "0e999999", "abc", "1,5", "0.1",
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

// CheckIntegers - the integer parsers on a decimal text made from `b` (at
// least 4 bytes): blanks, a sign, digits (none, random ones or a magnitude
// at the edge of a range) and a tail. The magnitude is read exactly and each
// parser's rule applied: the signed 32-bit parsers and their narrower ranges
// refuse what lies outside; the unsigned one takes magnitudes to 2^32 - 1
// and wraps a minus; the 64-bit ones saturate. A refusal leaves 0 and a null
// end, a success the end after the digits.
void CheckIntegers(const uint8_t* b, size_t n) {
  static const wchar_t* const kBlanks[] = {L"", L" ", L"\t\n "};
  static const wchar_t* const kSigns[] = {L"", L"+", L"-"};
  static const wchar_t* const kTails[] = {L"", L"x", L" x", L".5"};
  static const wchar_t* const kEdges[] = {
      L"32767",      L"32768",      L"2147483647",           L"2147483648",
      L"4294967295", L"4294967296", L"9223372036854775807",  L"9223372036854775808",
      L"0",          L"000",        L"18446744073709551615", L"18446744073709551616"};
  std::wstring text = kBlanks[b[0] % 3];
  text += kSigns[b[0] / 3 % 3];
  const bool negative = b[0] / 3 % 3 == 2;
  const size_t start = text.size();
  if (b[1] & 1) {
    text += kEdges[b[1] / 2 % 12];
  } else {
    for (size_t i = 4; i < n && i < 4 + b[1] / 2 % 26; ++i)
      text += static_cast<wchar_t>(L'0' + b[i] % 10);
  }
  const size_t digits = text.size() - start;
  unsigned __int128 m = 0;
  for (size_t i = start; i < text.size(); ++i)
    m = std::min<unsigned __int128>(m * 10 + (text[i] - L'0'), static_cast<unsigned __int128>(1)
                                                                   << 100);
  text += kTails[b[2] % 4];
  const __int128 v = negative ? -static_cast<__int128>(m) : static_cast<__int128>(m);
  const wchar_t* stop = text.c_str() + start + digits;
  auto same = [&](bool ok, auto got, auto want, wchar_t* end, bool withEnd) {
    Check(ok ? got == want && (!withEnd || end == stop) : got == 0 && (!withEnd || end == nullptr));
  };
  const bool in32 = digits > 0 && v >= INT32_MIN && v <= INT32_MAX;
  int i = 7;
  wchar_t* end = nullptr;
  bool ok = StringToInt(text.c_str(), &i, &end);
  Check(ok == in32);
  same(ok, i, static_cast<int>(v), end, true);
  short s = 7;
  ok = StringToShort(text.c_str(), &s, &end);
  Check(ok == (in32 && v >= -32768 && v <= 32767));
  same(ok, s, static_cast<short>(v), end, true);
  const long low = static_cast<int8_t>(b[3]) * 1000L, high = low + (b[2] >> 2) * 2000L;
  long l = 7;
  ok = StringToLong(text.c_str(), &l, &end, low, high);
  Check(ok == (in32 && v >= low && v <= high));
  same(ok, l, static_cast<long>(v), end, true);
  unsigned int u = 7;
  ok = StringToUnsignedInt(text.c_str(), &u, &end);
  Check(ok == (digits > 0 && m <= 0xFFFFFFFFu));
  same(ok, u, static_cast<unsigned int>(negative ? 0u - static_cast<unsigned int>(m) : m), end,
       true);
  long long ll = 7;
  ok = StringToInt64(text.c_str(), &ll);
  Check(ok == (digits > 0));
  same(ok, ll, static_cast<long long>(std::clamp<__int128>(v, LLONG_MIN, LLONG_MAX)), nullptr,
       false);
  unsigned long long ull = 7;
  ok = StringToUnsignedInt64(text.c_str(), &ull);
  Check(ok == (digits > 0));
  const unsigned long long magnitude =
      m > ULLONG_MAX ? ULLONG_MAX : static_cast<unsigned long long>(m);
  same(ok, ull,
       m > ULLONG_MAX ? ULLONG_MAX
       : negative     ? 0ULL - magnitude
                      : magnitude,
       nullptr, false);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 2000)
    return 0;
  static const bool adversarial = [] {
    for (const char* s : kAdversarial)
      SameAsWcstod(Widen(s));
    return true;
  }();
  (void)adversarial;
  const std::wstring original = Text(data + 1, size - 1);
  std::wstring text = original;

  if (size >= 8)
    Forms(data);
  if (size >= 4)
    CheckIntegers(data, size);

  // The "C" runtime locale: identical to wcstod.
  SameAsWcstod(text);
  double value = 0;
  wchar_t* end = nullptr;

  // Another runtime locale: the own scan, with a comma or a full stop as the
  // runtime's point. A success reads what wcstod reads in the span alone.
  const wchar_t point = (data[0] & 1) ? L',' : L'.';
  qx::platform::SetThreadNumericLocaleOverride("xx_XX.UTF-8", point);
  bool ok = StringToDouble(text.data(), &value, &end);
  qx::platform::SetThreadNumericLocaleOverride(nullptr, 0);
  Check(text == original);
  if (ok) {
    // The span starts at the sign or the first digit (the white space before
    // it is the runtime's, which includes more than glibc's).
    const wchar_t* start = text.c_str();
    while (!std::wcschr(L"+-.0123456789", *start))
      ++start;
    std::wstring span(start, static_cast<size_t>(end - start));
    Check(Bits(std::wcstod(span.c_str(), nullptr)) == Bits(value));
  } else {
    Check(value == 0 && end == nullptr);
  }

  // The integer parsers and the UI path.
  int i = 0;
  long l = 0;
  long long ll = 0;
  unsigned long ul = 0;
  unsigned long long ull = 0;
  short s = 0;
  if (StringToInt(text.c_str(), &i, &end))
    Check(end > text.c_str() && end <= text.c_str() + text.size());
  StringToLong(text.c_str(), &l, nullptr, -5, 5);
  Check(l >= -5 && l <= 5);
  StringToShort(text.c_str(), &s, nullptr);
  StringToUnsignedLong(text.c_str(), &ul, &end, data[0] % 40);
  Check(ul <= 0xFFFFFFFFul);
  StringToInt64(text.c_str(), &ll);
  StringToUnsignedInt64(text.c_str(), &ull);
  StringToDoubleFmtCtl(text.c_str(), &value, true);
  StringToIntFmtCtl(text.c_str(), &i, true);
  Check(text == original);
  return 0;
}
