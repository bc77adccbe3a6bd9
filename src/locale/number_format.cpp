//===- locale/number_format.cpp - Doubles to canonical and UI text --------===//
//
// The formatters print with the C runtime's conversions (platform/
// crt_number.h gives printf's exact text), then neutralise the runtime's
// decimal point through the locale record when the runtime locale is not
// "C", and make UI text on request.
//
//===----------------------------------------------------------------------===//
#include "locale/number_internal.h"

#include "platform/crt_number.h"
#include "qxutil/text.h"

#include <cmath>
#include <cwchar>

namespace {

using qx::number::kWorkSize;

// Pow10 - 10^n from a table of correctly rounded powers (|n| <= 22 covers
// every column the database layer writes; beyond, std::pow).
double Pow10(int n) {
  static const double kPositive[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  static const double kNegative[] = {1e0,   1e-1,  1e-2,  1e-3,  1e-4,  1e-5,  1e-6,  1e-7,
                                     1e-8,  1e-9,  1e-10, 1e-11, 1e-12, 1e-13, 1e-14, 1e-15,
                                     1e-16, 1e-17, 1e-18, 1e-19, 1e-20, 1e-21, 1e-22};
  if (n >= 0 && n <= 22)
    return kPositive[n];
  if (n < 0 && n >= -22)
    return kNegative[-n];
  return std::pow(10.0, n);
}

char Conversion(PRINTF_FORMAT format) {
  return format == PRINTF_E ? 'e' : format == PRINTF_F ? 'f' : 'g';
}

} // namespace

namespace qx::number {

int AutomaticPrecision(double value) {
  if (value == 0 || !std::isfinite(value))
    return 6;
  double digits = std::trunc(std::log10(std::fabs(value))) + 3;
  return digits < 6 || digits > 14 ? 6 : static_cast<int>(digits);
}

} // namespace qx::number

wchar_t* DoubleToString(double value, wchar_t* buffer, unsigned int size, bool forUI, int precision,
                        PRINTF_FORMAT format, int width) {
  if (!buffer || size == 0)
    return buffer;
  if (precision == -1)
    precision = format == PRINTF_G ? qx::number::AutomaticPrecision(value) : 6;
  const char conversion = Conversion(format);
  const int field = width == -1 ? 0 : width;
  const bool neutral = qx::number::RuntimeLocaleIsNeutral();
  int length = -1;
  if (neutral) // straight into the caller's buffer when the text fits
    length = qx::crt::FormatDouble(buffer, size, conversion, field, precision, value, L'.');
  if (length >= 0) {
    std::wmemset(buffer + length + 1, 0, size - static_cast<unsigned int>(length) - 1);
  } else {
    wchar_t work[kWorkSize];
    qx::crt::FormatDouble(work, kWorkSize, conversion, field, precision, value,
                          qx::number::RuntimePoint(neutral));
    qx::number::Neutralise(work, buffer, size, neutral);
  }
  if (forUI)
    FormatNumberForUI(buffer, size);
  return buffer;
}

wchar_t* DoubleToStringEditCtl(double value, wchar_t* buffer, int size, bool forUI) {
  return DoubleToString(value, buffer, size > 0 ? static_cast<unsigned int>(size) : 0, forUI, 14,
                        PRINTF_G, -1);
}

wchar_t* CoordinateToString(double value, wchar_t* buffer, unsigned int size) {
  if (!buffer || size == 0)
    return buffer;
  wchar_t work[kWorkSize];
  wchar_t text[kWorkSize];
  const bool neutral = qx::number::RuntimeLocaleIsNeutral();
  qx::crt::FormatDouble(work, kWorkSize, 'f', 0, 12, value, qx::number::RuntimePoint(neutral));
  // Only the neutral copy is cut to 30 units (29 characters).
  qx::number::Neutralise(work, text, neutral ? 30 : kWorkSize, neutral);
  if (std::wcschr(text, L'.')) {
    size_t length = std::wcslen(text);
    while (length > 0 && text[length - 1] == L'0')
      text[--length] = 0;
    if (length > 0 && text[length - 1] == L'.')
      text[--length] = 0;
  }
  return strcpyn(buffer, text, size);
}

void DoubleToDBString(wchar_t* buffer, int width, int decimals, double value) {
  if (!buffer || width < 0)
    return;
  double limit, step;
  if (decimals == 0) {
    limit = Pow10(width);
    step = Pow10(width > 15 ? width - 15 : 0);
  } else {
    int integerDigits = width - decimals - 1; // one character for the point
    int k = decimals < 15 - integerDigits ? decimals : 15 - integerDigits;
    limit = Pow10(integerDigits);
    step = Pow10(-k);
  }
  if (value >= limit)
    value = limit - step;
  else if (value <= -limit / 10)
    value = step - limit / 10; // one character goes to the minus sign
  if (decimals != 0)
    value = qx_round(value, Pow10(-decimals));
  if (decimals == -1)
    decimals = 6;
  wchar_t work[kWorkSize];
  const bool neutral = qx::number::RuntimeLocaleIsNeutral();
  qx::crt::FormatDouble(work, kWorkSize, 'f', width, decimals, value,
                        qx::number::RuntimePoint(neutral));
  qx::number::Neutralise(work, buffer, static_cast<unsigned int>(width) + 1, neutral);
}

bool EqualDoubles(double a, double b, SIGNIFICANTDIGITS digits) {
  if (a == b)
    return true;
  if (std::isnan(a) || std::isnan(b))
    return false;
  static const double kTolerance[] = {1e-1, 1e-2,  1e-3,  1e-4,  1e-5,  1e-6,  1e-7, 1e-8,
                                      1e-9, 1e-10, 1e-11, 1e-12, 1e-13, 1e-14, 1e-15};
  int index = digits < 0 ? 0 : digits > 14 ? 14 : static_cast<int>(digits);
  int ea = 0, eb = 0;
  double ma = std::frexp(a, &ea);
  double mb = std::frexp(b, &eb);
  if (ea != eb)
    return false;
  return std::fabs(ma - mb) < kTolerance[index];
}
