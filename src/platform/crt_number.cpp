// Provides: wcstol, wcstoul, _wcstoi64, _wcstoui64, wcstod, swprintf %e/%f/%g.
#include "platform/crt_number.h"

#include "platform/crt_string.h"
#include "platform/decimal_scaling.h"
#include "platform/heap.h"

#include <cerrno>
#include <cfloat>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <locale.h>

namespace {

// ---- Integers --------------------------------------------------------------

// DigitOf - the value of a digit or an ASCII letter (A = 10), or 99.
unsigned DigitOf(wchar_t c) {
  uint32_t u = static_cast<uint32_t>(c);
  if (u - '0' < 10)
    return u - '0';
  if ((u | 0x20) - 'a' < 26)
    return (u | 0x20) - 'a' + 10;
  int digit = qx::crt::DigitValue(c);
  return digit >= 0 ? static_cast<unsigned>(digit) : 99;
}

struct IntegerScan {
  uint64_t magnitude = 0; // saturated at `limit` + 1 when overflowed
  bool negative = false;
  bool overflow = false;
  bool ok = false; // at least one digit
};

// ScanInteger - the Microsoft runtime's integer scan. `limit` is the
// largest magnitude that does not overflow (for signed types it depends on
// the sign, so both are given).
IntegerScan ScanInteger(const wchar_t* text, wchar_t** end, int radix, uint64_t positiveLimit,
                        uint64_t negativeLimit) {
  IntegerScan r;
  if (end)
    *end = const_cast<wchar_t*>(text);
  if (!text || (radix != 0 && (radix < 2 || radix > 36))) {
    errno = EINVAL;
    return r;
  }
  const wchar_t* p = text;
  while (qx::crt::iswspace(static_cast<wint_t>(*p)))
    ++p;
  if (*p == L'-' || *p == L'+')
    r.negative = *p++ == L'-';
  if (radix == 0) {
    if (DigitOf(*p) != 0)
      radix = 10;
    else if (p[1] == L'x' || p[1] == L'X')
      radix = 16;
    else
      radix = 8;
  }
  if (radix == 16 && DigitOf(*p) == 0 && (p[1] == L'x' || p[1] == L'X'))
    p += 2;
  const uint64_t limit = r.negative ? negativeLimit : positiveLimit;
  for (unsigned d; (d = DigitOf(*p)) < static_cast<unsigned>(radix); ++p) {
    r.ok = true;
    if (r.overflow)
      continue;
    if (r.magnitude > (limit - d) / static_cast<unsigned>(radix))
      r.overflow = true;
    else
      r.magnitude = r.magnitude * static_cast<unsigned>(radix) + d;
  }
  if (!r.ok)
    return r; // *end stays at the start
  if (end)
    *end = const_cast<wchar_t*>(p);
  if (r.overflow)
    errno = ERANGE;
  return r;
}

// The "C" locale, for the conversions glibc does on our behalf.
locale_t CLocale() {
  static locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return c;
}

// ---- Floating point --------------------------------------------------------

bool IsAsciiSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

// GlibcWcstod - glibc's conversion in the "C" locale (the reference).
double GlibcWcstod(const wchar_t* text, wchar_t** end) { return wcstod_l(text, end, CLocale()); }

bool IsAsciiDigit(wchar_t c) { return static_cast<uint32_t>(c) - L'0' < 10; }

// AccumulateDigits - w = 10 w + d for each ASCII digit d from p on, modulo
// 2^64; returns the end of the digits. Four at a time while there are four
// (one multiplication on the chain instead of four); never reads past the
// first unit that is not a digit.
[[gnu::always_inline]] inline const wchar_t* AccumulateDigits(const wchar_t* p, uint64_t* w) {
  uint64_t v = *w;
  while (IsAsciiDigit(p[0]) && IsAsciiDigit(p[1]) && IsAsciiDigit(p[2]) && IsAsciiDigit(p[3])) {
    uint64_t four =
        (static_cast<uint64_t>(p[0] - L'0') * 10 + static_cast<uint64_t>(p[1] - L'0')) * 100 +
        static_cast<uint64_t>(p[2] - L'0') * 10 + static_cast<uint64_t>(p[3] - L'0');
    v = v * 10000 + four;
    p += 4;
  }
  for (; IsAsciiDigit(*p); ++p)
    v = v * 10 + static_cast<uint64_t>(*p - L'0');
  *w = v;
  return p;
}

// Narrow - appends the units [from, to) (ASCII) to buf at *n.
void Narrow(const wchar_t* from, const wchar_t* to, char* buf, size_t* n) {
  for (const wchar_t* p = from; p < to; ++p)
    buf[(*n)++] = static_cast<char>(*p);
}

// FastWcstod - plain decimal text ([space][sign]digits[.digits][e[sign]digits])
// without glibc; false, with nothing stored, when the text or its value
// needs glibc (no digits, hexadecimal, inf, nan, results near the range
// bounds). When the significant digits form an integer w <= 2^53 and the
// decimal exponent e is within -22..22, w * 10^e (or w / 10^-e) is one
// correctly rounded operation on exact operands; other significands of up
// to 19 digits go to DecimalToDouble, and what it leaves to std::from_chars
// on a narrow copy.
bool FastWcstod(const wchar_t* text, double* value, const wchar_t** end) {
  static const double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const wchar_t* p = text;
  while (IsAsciiSpace(*p))
    ++p;
  bool negative = false;
  if (*p == L'-' || *p == L'+')
    negative = *p++ == L'-';
  if (p[0] == L'0' && (p[1] == L'x' || p[1] == L'X'))
    return false; // hexadecimal
  // One scan: the digits' spans, the count of significant digits (from the
  // first that is not 0) and w, their value modulo 2^64 (exact up to 19).
  uint64_t w = 0;
  const wchar_t* const integerBegin = p;
  while (*p == L'0')
    ++p;
  const wchar_t* significant = p;
  p = AccumulateDigits(p, &w);
  long digits = p - significant;
  const wchar_t* const integerEnd = p;
  const wchar_t *fractionBegin = p, *fractionEnd = p;
  if (*p == L'.') {
    fractionBegin = ++p;
    if (digits == 0)
      while (*p == L'0')
        ++p;
    significant = p;
    p = AccumulateDigits(p, &w);
    digits += p - significant;
    fractionEnd = p;
  }
  const long scale = fractionBegin - fractionEnd;
  if (integerEnd == integerBegin && fractionEnd == fractionBegin)
    return false; // no digit: nothing, inf or nan; glibc decides
  const wchar_t *exponentBegin = p, *exponentEnd = p;
  int exponent = 0;
  if (*p == L'e' || *p == L'E') {
    const wchar_t* q = p + 1;
    bool minus = false;
    if (*q == L'-' || *q == L'+')
      minus = *q++ == L'-';
    if (IsAsciiDigit(*q)) {
      exponentBegin = p + 1;
      for (; IsAsciiDigit(*q); ++q)
        if (exponent < 100000)
          exponent = exponent * 10 + static_cast<int>(*q - L'0');
      if (minus)
        exponent = -exponent;
      exponentEnd = p = q;
    }
  }
  double v;
  const long e = scale + exponent;
  if (digits == 0) {
    v = 0.0; // every digit is 0
  } else if (digits <= 19 && w <= (uint64_t{1} << 53) && e >= -22 && e <= 22) {
    v = e >= 0 ? static_cast<double>(w) * kPowers[e] : static_cast<double>(w) / kPowers[-e];
  } else {
    if (digits > 19 || e < -400 || e > 400 ||
        !qx::platform::DecimalToDouble(w, static_cast<int>(e), &v)) {
      constexpr size_t kMax = 400;
      const size_t length =
          static_cast<size_t>((integerEnd - integerBegin) + (fractionEnd - fractionBegin) +
                              (exponentEnd - exponentBegin));
      if (length > kMax)
        return false;
      char buf[kMax + 8]; // the point and 'e' come on top
      size_t n = 0;
      Narrow(integerBegin, integerEnd, buf, &n);
      buf[n++] = '.';
      Narrow(fractionBegin, fractionEnd, buf, &n);
      if (exponentEnd != exponentBegin) {
        buf[n++] = 'e';
        Narrow(exponentBegin + (*exponentBegin == L'+'), exponentEnd, buf, &n);
      }
      auto [ptr, ec] = std::from_chars(buf, buf + n, v, std::chars_format::general);
      if (ec != std::errc() || ptr != buf + n)
        return false;
    }
    if (v == 0 || !(std::fabs(v) >= 2 * DBL_MIN && std::fabs(v) <= DBL_MAX))
      return false; // near the bounds glibc decides about the range error
  }
  *value = negative ? -v : v;
  *end = p;
  return true;
}

// PointWcstod - the conversion with "." as the decimal point.
double PointWcstod(const wchar_t* text, wchar_t** end) {
  double value;
  const wchar_t* stop;
  if (FastWcstod(text, &value, &stop)) {
    if (end)
      *end = const_cast<wchar_t*>(stop);
    return value;
  }
  return GlibcWcstod(text, end);
}

// Scientific - std::to_chars(first, last, value, scientific, precision):
// printf's "%.*e" text without the '#' flag. Up to 17 significant digits
// come from DoubleToDecimal when it decides them.
std::to_chars_result Scientific(char* first, char* last, double value, int precision) {
  uint64_t digits;
  int exponent;
  if (precision > 16 || last - first < 32 ||
      !qx::platform::DoubleToDecimal(value, precision + 1, &digits, &exponent))
    return std::to_chars(first, last, value, std::chars_format::scientific, precision);
  char text[20] = {};
  char* end = std::to_chars(text, text + sizeof text, digits).ptr; // precision + 1 digits
  char* o = first;
  if (std::signbit(value))
    *o++ = '-';
  *o++ = text[0];
  if (precision > 0) {
    *o++ = '.';
    for (const char* c = text + 1; c < end; ++c)
      *o++ = *c;
  }
  *o++ = 'e';
  *o++ = exponent < 0 ? '-' : '+';
  const int magnitude = exponent < 0 ? -exponent : exponent;
  if (magnitude >= 100)
    *o++ = static_cast<char>('0' + magnitude / 100);
  *o++ = static_cast<char>('0' + magnitude / 10 % 10);
  *o++ = static_cast<char>('0' + magnitude % 10);
  return {o, std::errc()};
}

// GeneralFromScientific - printf's "%.*g" made from the "%.*e" digits (the
// style-e conversion decides the exponent X; with P > X >= -4 the fixed
// form rounds at the same digit, so the digits are the same). Writes into
// out[0, 500) and returns the length; -1 for precisions it does not take.
int GeneralFromScientific(double value, int precision, char* out) {
  const int p = precision == 0 ? 1 : precision;
  if (p > 400 || !std::isfinite(value))
    return -1;
  char sci[480];
  auto r = Scientific(sci, sci + sizeof sci, value, p - 1);
  if (r.ec != std::errc())
    return -1;
  const char* c = sci;
  char* o = out;
  if (*c == '-')
    *o++ = *c++;
  char digits[404];
  int n = 0;
  for (; *c != 'e'; ++c)
    if (*c != '.')
      digits[n++] = *c;
  ++c; // 'e'
  const bool negativeExponent = *c++ == '-';
  int x = 0;
  for (; c < r.ptr; ++c)
    x = x * 10 + (*c - '0');
  if (negativeExponent)
    x = -x;
  while (n > 1 && digits[n - 1] == '0')
    --n; // no '#' flag: trailing zeros go
  if (p > x && x >= -4) {
    if (x >= 0) {
      for (int i = 0; i <= x; ++i)
        *o++ = i < n ? digits[i] : '0';
      if (n > x + 1) {
        *o++ = '.';
        for (int i = x + 1; i < n; ++i)
          *o++ = digits[i];
      }
    } else {
      *o++ = '0';
      if (!(n == 1 && digits[0] == '0')) {
        *o++ = '.';
        for (int i = 0; i < -x - 1; ++i)
          *o++ = '0';
        for (int i = 0; i < n; ++i)
          *o++ = digits[i];
      }
    }
  } else {
    *o++ = digits[0];
    if (n > 1) {
      *o++ = '.';
      for (int i = 1; i < n; ++i)
        *o++ = digits[i];
    }
    *o++ = 'e';
    *o++ = x < 0 ? '-' : '+';
    int magnitude = x < 0 ? -x : x;
    if (magnitude >= 100)
      *o++ = static_cast<char>('0' + magnitude / 100);
    *o++ = static_cast<char>('0' + magnitude / 10 % 10);
    *o++ = static_cast<char>('0' + magnitude % 10);
  }
  return static_cast<int>(o - out);
}

} // namespace

namespace qx::crt {

long wcstol(const wchar_t* text, wchar_t** end, int radix) {
  IntegerScan r = ScanInteger(text, end, radix, 0x7FFFFFFF, 0x80000000);
  if (r.overflow)
    return r.negative ? -2147483647L - 1 : 2147483647L;
  return r.negative ? -static_cast<long>(r.magnitude) : static_cast<long>(r.magnitude);
}

unsigned long wcstoul(const wchar_t* text, wchar_t** end, int radix) {
  IntegerScan r = ScanInteger(text, end, radix, 0xFFFFFFFF, 0xFFFFFFFF);
  if (r.overflow)
    return 0xFFFFFFFFUL;
  uint32_t v = static_cast<uint32_t>(r.magnitude);
  return r.negative ? static_cast<uint32_t>(0u - v) : v;
}

long long _wcstoi64(const wchar_t* text, wchar_t** end, int radix) {
  IntegerScan r = ScanInteger(text, end, radix, INT64_MAX, uint64_t{1} << 63);
  if (r.overflow)
    return r.negative ? INT64_MIN : INT64_MAX;
  return r.negative ? static_cast<long long>(0 - r.magnitude) : static_cast<long long>(r.magnitude);
}

unsigned long long _wcstoui64(const wchar_t* text, wchar_t** end, int radix) {
  IntegerScan r = ScanInteger(text, end, radix, UINT64_MAX, UINT64_MAX);
  if (r.overflow)
    return UINT64_MAX;
  return r.negative ? 0 - r.magnitude : r.magnitude;
}

double wcstod(const wchar_t* text, wchar_t** end) {
  return WcstodWithPoint(text, end, qx::platform::CrtDecimalPoint());
}

bool ReadPlainDecimal(const wchar_t* text, double* value, wchar_t** end) {
  const wchar_t* stop;
  if (!FastWcstod(text, value, &stop))
    return false;
  *end = const_cast<wchar_t*>(stop);
  return true;
}

double WcstodWithPoint(const wchar_t* text, wchar_t** end, wchar_t point) {
  if (!text) {
    if (end)
      *end = nullptr;
    errno = EINVAL;
    return 0.0;
  }
  if (point == L'.')
    return PointWcstod(text, end);
  // Another decimal point: read a copy in which it is "." and "." is not.
  wchar_t local[512];
  size_t length = std::wcslen(text);
  wchar_t* copy = local;
  if (length >= sizeof local / sizeof local[0]) {
    copy = static_cast<wchar_t*>(qx::platform::HeapAllocate((length + 1) * sizeof(wchar_t)));
    if (!copy) {
      if (end)
        *end = const_cast<wchar_t*>(text);
      errno = ENOMEM;
      return 0.0;
    }
  }
  for (size_t i = 0; i <= length; ++i)
    copy[i] = text[i] == point ? L'.' : text[i] == L'.' ? L'\x1' : text[i];
  wchar_t* stop = nullptr;
  double value = PointWcstod(copy, &stop);
  if (end)
    *end = const_cast<wchar_t*>(text) + (stop - copy);
  if (copy != local)
    qx::platform::HeapRelease(copy);
  return value;
}

int FormatDouble(wchar_t* out, size_t size, char conversion, int width, int precision, double value,
                 wchar_t point) {
  if (precision < 0)
    precision = 6;
  std::chars_format format = conversion == 'e'   ? std::chars_format::scientific
                             : conversion == 'f' ? std::chars_format::fixed
                                                 : std::chars_format::general;
  char local[512];
  char* heap = nullptr; // on the platform heap, for fixed forms longer than `local`
  char* first = local;
  char* last = local + sizeof local;
  std::to_chars_result r{first, std::errc::value_too_large};
  if (format == std::chars_format::general) {
    int n = GeneralFromScientific(value, precision, local);
    if (n >= 0)
      r = {local + n, std::errc()};
  }
  if (r.ec != std::errc())
    r = format == std::chars_format::scientific
            ? Scientific(first, last, value, precision)
            : std::to_chars(first, last, value, format, precision);
  if (r.ec != std::errc()) {
    heap = static_cast<char*>(qx::platform::HeapAllocate(size + 64));
    if (heap) {
      first = heap;
      last = first + size + 64;
      r = std::to_chars(first, last, value, format, precision);
    }
    if (!heap || r.ec != std::errc()) {
      qx::platform::HeapRelease(heap);
      if (out && size)
        out[0] = 0;
      return -1;
    }
  }
  size_t len = static_cast<size_t>(r.ptr - first);
  size_t field = static_cast<size_t>(width < 0 ? -static_cast<long long>(width) : width);
  size_t total = len > field ? len : field;
  if (!out || total >= size) {
    qx::platform::HeapRelease(heap);
    if (out && size)
      out[0] = 0;
    return -1;
  }
  size_t pad = total - len;
  wchar_t* o = out;
  if (width >= 0)
    for (size_t i = 0; i < pad; ++i)
      *o++ = L' ';
  for (const char* c = first; c < r.ptr; ++c)
    *o++ = *c == '.' ? point : static_cast<wchar_t>(*c);
  if (width < 0)
    for (size_t i = 0; i < pad; ++i)
      *o++ = L' ';
  *o = 0;
  qx::platform::HeapRelease(heap);
  return static_cast<int>(total);
}

} // namespace qx::crt
