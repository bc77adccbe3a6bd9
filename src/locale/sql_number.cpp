//===- locale/sql_number.cpp - Numbers read and written by a picture ------===//
//
// A picture describes a number the way database number formats do; the
// language is documented in docs/numbers.md. In short (letters are matched
// without regard to case):
//
//   [sign][currency]  integer digits  [point fraction digits]  [E]  [sign][currency]
//
//   "9"  a digit; a leading zero in a 9 position is not written
//   "0"  a digit that is always written (and so is every digit to its right)
//   "," "G"  a group separator, only between two digit positions; written
//            only when a digit is written on its left
//   "." "D"  the decimal point; fraction digits follow ("9" positions at the
//            end drop zeros, "0" positions keep them)
//   "E"  scientific form: one integer digit, then E, a sign and at least two
//        exponent digits
//   "+"  the sign, always written; "-" the sign, written for negatives only
//        (without either a negative value starts with "-")
//   "$" "L"  the currency symbol
//
// Values are rounded half away from zero to the picture's fraction digits. A
// value whose integer part has more digits than the picture has integer
// positions is written as one '#' per picture character (false returned).
//
// Nothing here allocates: a picture has at most kMaxPicture characters, so
// every text is built in a fixed buffer (sizes below) and an exported call
// cannot fail for lack of memory.
//
//===----------------------------------------------------------------------===//
#include "qxutil/locale.h"

#include "frame/fixed_text.h"
#include "platform/crt_string.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <system_error>

namespace {

using qx::FixedText;

constexpr size_t kMaxPicture = 128;
// The integer digits of a double (at most 309) and a carry.
constexpr size_t kMaxIntegerDigits = 312;
// Written text: each picture character gives at most one character, plus a
// leading '-' and the exponent's sign and digits.
constexpr size_t kMaxOutput = kMaxPicture + 16;
// Text read: the picture's digits, a point, and the exponent (its leading
// zeros dropped, at most kMaxExponentDigits significant digits).
constexpr size_t kMaxExponentDigits = 9;
constexpr size_t kMaxNumberText = kMaxPicture + kMaxExponentDigits + 8;

using PictureText = FixedText<wchar_t, kMaxPicture>;

enum Element : wchar_t {
  kDigit9 = L'9',
  kDigit0 = L'0',
  kGroup = L',',
  kSign = L'S',
  kCurrency = L'$',
};

struct Picture {
  wchar_t sign = 0;     // '+', '-' or 0 for no sign element
  PictureText leading;  // kSign / kCurrency elements in front, in order
  PictureText trailing; // the same behind
  PictureText integer;  // kDigit9, kDigit0, kGroup
  int integerDigits = 0;
  int alwaysWritten = 0; // integer positions from the right always written
  bool point = false;
  PictureText fraction; // kDigit9, kDigit0
  bool exponent = false;
  size_t length = 0; // picture characters (for the overflow text)
};

struct Symbols {
  wchar_t currency = L'$';
  wchar_t group = L',';
  wchar_t decimal = L'.';
};

Symbols CurrentSymbols() {
  Symbols s;
  const wchar_t* currency = GetCurrencySymbol();
  if (currency && *currency)
    s.currency = *currency;
  if (const NUMBERFMTW* format = GetNumberFmtPtr()) {
    if (format->lpThousandSep && *format->lpThousandSep)
      s.group = *format->lpThousandSep;
    if (format->lpDecimalSep && *format->lpDecimalSep)
      s.decimal = *format->lpDecimalSep;
  }
  return s;
}

bool IsBlank(wchar_t c) { return qx::crt::iswspace(static_cast<wint_t>(c)) != 0; }

// TrimBlanks - [*begin, *end) is `text` without leading and trailing blanks.
void TrimBlanks(const wchar_t* text, const wchar_t** begin, const wchar_t** end) {
  const wchar_t* b = text;
  while (IsBlank(*b))
    ++b;
  const wchar_t* e = b + std::wcslen(b);
  while (e > b && IsBlank(e[-1]))
    --e;
  *begin = b;
  *end = e;
}

// ParsePicture - false for a null, empty, too long or ill-formed picture.
bool ParsePicture(const wchar_t* text, Picture* p) {
  if (!text)
    return false;
  const wchar_t *begin, *end;
  TrimBlanks(text, &begin, &end);
  p->length = static_cast<size_t>(end - begin);
  if (p->length == 0 || p->length > kMaxPicture)
    return false;
  enum { kLeading, kInteger, kFraction, kExponent, kTrailing } phase = kLeading;
  bool haveCurrency = false;
  for (const wchar_t* c = begin; c < end; ++c) {
    wchar_t u = static_cast<wchar_t>(qx::crt::towupper(static_cast<wint_t>(*c)));
    if (u == L'+' || u == L'-' || u == L'$' || u == L'L') {
      bool isSign = u == L'+' || u == L'-';
      if (isSign ? p->sign != 0 : haveCurrency)
        return false;
      if (isSign)
        p->sign = u;
      else
        haveCurrency = true;
      if (phase != kLeading)
        phase = kTrailing;
      (phase == kLeading ? p->leading : p->trailing) += isSign ? kSign : kCurrency;
    } else if (u == L'9' || u == L'0') {
      if (phase == kLeading)
        phase = kInteger;
      if (phase == kInteger) {
        p->integer += u;
        ++p->integerDigits;
      } else if (phase == kFraction) {
        p->fraction += u;
      } else {
        return false;
      }
    } else if (u == L',' || u == L'G') {
      if (phase != kInteger || p->integer.empty() || p->integer.back() == kGroup)
        return false;
      p->integer += kGroup;
    } else if (u == L'.' || u == L'D') {
      if (phase != kLeading && phase != kInteger)
        return false;
      phase = kFraction;
      p->point = true;
    } else if (u == L'E') {
      if ((phase != kInteger && phase != kFraction) || p->integerDigits == 0)
        return false;
      phase = kExponent;
      p->exponent = true;
    } else {
      return false;
    }
  }
  if (p->integerDigits + p->fraction.size() == 0)
    return false;
  if (!p->integer.empty() && p->integer.back() == kGroup)
    return false;
  int position = p->integerDigits;
  for (wchar_t e : p->integer) {
    if (e == kGroup)
      continue;
    if (e == kDigit0) {
      p->alwaysWritten = position;
      break;
    }
    --position;
  }
  return true;
}

// Digits - a rounded decimal form: integer digits without leading zeros
// (empty for 0), `fraction` digits, and the exponent in scientific form.
struct Digits {
  FixedText<char, kMaxIntegerDigits> integer;
  FixedText<char, kMaxPicture + 1> fraction;
  int exponent = 0;
  bool zero = true;
};

// RoundUp - adds one unit in the last place of `digits`; true when a carry
// leaves the front.
template <class Text> bool RoundUp(Text& digits) {
  for (size_t i = digits.size(); i-- > 0;) {
    if (digits[i] != '9') {
      ++digits[i];
      return false;
    }
    digits[i] = '0';
  }
  return true;
}

// DecimalDigits - |value| (finite) rounded half away from zero, with at
// most kMaxPicture fraction digits.
Digits DecimalDigits(double value, size_t fractionDigits, bool scientific) {
  // The exact expansion: a double has at most 309 integer and 1074
  // fraction digits.
  static thread_local char exact[1500];
  auto r =
      std::to_chars(exact, exact + sizeof exact, std::fabs(value), std::chars_format::fixed, 1074);
  const size_t wholeLength = static_cast<size_t>(std::strchr(exact, '.') - exact);
  const size_t length = static_cast<size_t>(r.ptr - exact);
  // Digit i of the expansion without its point.
  auto digit = [&](size_t i) { return exact[i < wholeLength ? i : i + 1]; };
  const size_t digitCount = length - 1;
  Digits d;
  if (!scientific) {
    FixedText<char, kMaxIntegerDigits + kMaxPicture> kept;
    kept.append(exact, wholeLength);
    for (size_t i = 0; i < fractionDigits; ++i)
      kept += wholeLength + i < digitCount ? digit(wholeLength + i) : '0';
    bool up =
        wholeLength + fractionDigits < digitCount && digit(wholeLength + fractionDigits) >= '5';
    if (up && RoundUp(kept))
      kept.insert_front('1');
    size_t integerLength = kept.size() - fractionDigits;
    size_t first = 0;
    while (first < integerLength && kept[first] == '0')
      ++first;
    d.integer.append(kept.c_str() + first, integerLength - first);
    d.fraction.append(kept.c_str() + integerLength, fractionDigits);
    d.zero = d.integer.empty();
    for (char c : d.fraction)
      d.zero = d.zero && c == '0';
    return d;
  }
  size_t first = 0;
  while (first < digitCount && digit(first) == '0')
    ++first;
  if (first == digitCount) {
    d.integer += '0';
    d.fraction.resize(fractionDigits, '0');
    return d;
  }
  d.exponent = static_cast<int>(wholeLength) - 1 - static_cast<int>(first);
  FixedText<char, kMaxPicture + 2> significant; // room for a carry
  for (size_t i = first; i <= first + fractionDigits; ++i)
    significant += i < digitCount ? digit(i) : '0';
  size_t next = first + fractionDigits + 1;
  bool up = next < digitCount && digit(next) >= '5';
  if (up && RoundUp(significant)) {
    significant.insert_front('1');
    significant.pop_back();
    ++d.exponent;
  }
  d.integer += significant[0];
  d.fraction.append(significant.c_str() + 1, fractionDigits);
  d.zero = false;
  return d;
}

// BeyondDouble - true when a scientific form rounded up past the largest
// double (9.99E writes 1.79e308 as 1.80E+308), which could not be read back.
bool BeyondDouble(const Digits& d, bool scientific) {
  if (!scientific || d.exponent < 308)
    return false;
  FixedText<char, kMaxPicture + 16> text;
  text.append(d.integer.c_str());
  text += '.';
  text.append(d.fraction.c_str());
  char exponent[16];
  auto r = std::to_chars(exponent, exponent + sizeof exponent - 1, d.exponent);
  *r.ptr = 0;
  text += 'e';
  text.append(exponent);
  double value;
  return std::from_chars(text.begin(), text.end(), value).ec != std::errc();
}

using OutputText = FixedText<wchar_t, kMaxOutput>;

bool Emit(const OutputText& text, wchar_t* buffer, unsigned int size) {
  if (text.overflowed() || text.size() + 1 > size) {
    buffer[0] = 0;
    return false;
  }
  std::wmemcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

bool Overflow(const Picture& p, wchar_t* buffer, unsigned int size) {
  size_t n = p.length < size - 1 ? p.length : size - 1;
  std::wmemset(buffer, L'#', n);
  buffer[n] = 0;
  return false;
}

void AppendElements(const PictureText& elements, const Picture& p, bool negative, const Symbols& s,
                    OutputText& out) {
  for (wchar_t e : elements) {
    if (e == kCurrency)
      out += s.currency;
    else if (negative)
      out += L'-';
    else if (p.sign == L'+')
      out += L'+';
  }
}

} // namespace

bool qxSQLDoubleToString(double value, const wchar_t* picture, wchar_t* buffer, unsigned int size) {
  if (!buffer || size == 0)
    return false;
  Picture p;
  if (!ParsePicture(picture, &p)) {
    buffer[0] = 0;
    return false;
  }
  if (!std::isfinite(value))
    return Overflow(p, buffer, size);
  Digits d = DecimalDigits(value, p.fraction.size(), p.exponent);
  if (d.integer.size() > static_cast<size_t>(p.integerDigits) || BeyondDouble(d, p.exponent))
    return Overflow(p, buffer, size);
  const bool negative = value < 0 && !d.zero;
  const Symbols s = CurrentSymbols();

  // Fraction: trailing 9 positions drop their zeros.
  size_t fractionShown = p.fraction.size();
  while (fractionShown > 0 && p.fraction[fractionShown - 1] == kDigit9 &&
         d.fraction[fractionShown - 1] == '0')
    --fractionShown;
  bool pointShown = p.point && fractionShown > 0;

  // Integer positions written, counted from the right.
  int written = static_cast<int>(d.integer.size());
  if (written < p.alwaysWritten)
    written = p.alwaysWritten;
  if (written == 0 && !pointShown) { // a number is never empty: one zero is written
    if (p.integerDigits > 0) {
      written = 1;
    } else {
      fractionShown = 1;
      pointShown = true;
    }
  }

  OutputText out;
  if (!p.sign && negative)
    out += L'-';
  AppendElements(p.leading, p, negative, s, out);
  int position = p.integerDigits; // of the next digit element, from the right (1-based)
  bool previousWritten = false;
  for (wchar_t e : p.integer) {
    if (e == kGroup) {
      if (previousWritten)
        out += s.group;
      continue;
    }
    previousWritten = position <= written;
    if (previousWritten) {
      int fromRight = position - 1;
      int index = static_cast<int>(d.integer.size()) - 1 - fromRight;
      out += index >= 0 ? static_cast<wchar_t>(d.integer[static_cast<size_t>(index)]) : L'0';
    }
    --position;
  }
  if (pointShown) {
    out += s.decimal;
    for (size_t i = 0; i < fractionShown; ++i)
      out += static_cast<wchar_t>(d.fraction[i]);
  }
  if (p.exponent) {
    int x = d.exponent;
    out += L'E';
    out += x < 0 ? L'-' : L'+';
    wchar_t digits[16];
    std::swprintf(digits, 16, L"%02d", x < 0 ? -x : x);
    out += digits;
  }
  AppendElements(p.trailing, p, negative, s, out);
  return Emit(out, buffer, size);
}

bool qxSQLStringToDouble(const wchar_t* text, const wchar_t* picture, double* result) {
  if (result)
    *result = 0.0;
  Picture p;
  if (!text || !result || !ParsePicture(picture, &p))
    return false;
  const Symbols s = CurrentSymbols();
  const wchar_t *t, *end;
  TrimBlanks(text, &t, &end);

  bool negative = false;
  auto readElements = [&](const PictureText& elements) {
    for (wchar_t e : elements) {
      if (e == kCurrency && t < end && *t == s.currency)
        ++t;
      else if (e == kSign && t < end && (*t == L'+' || *t == L'-'))
        negative = *t++ == L'-';
    }
  };
  if (!p.sign && t < end && (*t == L'-' || *t == L'+'))
    negative = *t++ == L'-';
  readElements(p.leading);

  // The digits in the notation of from_chars. Leading zeros of the integer
  // part and of the exponent are not kept: what remains fits in the buffer
  // whenever the text fits the picture.
  FixedText<char, kMaxNumberText> number;
  int integerDigits = 0, fractionDigits = 0;
  bool anyDigit = false;
  auto isDigit = [&](const wchar_t* c) { return c < end && *c >= L'0' && *c <= L'9'; };
  for (; t < end; ++t) {
    if (isDigit(t)) {
      if (*t != L'0' || integerDigits > 0) {
        number += static_cast<char>(*t);
        ++integerDigits;
      }
      anyDigit = true;
    } else if (*t == s.group && anyDigit && isDigit(t + 1) && !(p.point && *t == s.decimal)) {
      continue;
    } else {
      break;
    }
  }
  if (anyDigit && integerDigits == 0)
    number += '0';
  if (p.point && t < end && *t == s.decimal) {
    number += '.';
    for (++t; isDigit(t); ++t) {
      number += static_cast<char>(*t);
      ++fractionDigits;
      anyDigit = true;
    }
  }
  if (!anyDigit || integerDigits > p.integerDigits ||
      fractionDigits > static_cast<int>(p.fraction.size()))
    return false;
  bool zero = true;
  for (char c : number)
    zero = zero && (c == '0' || c == '.');
  if (p.exponent && t < end && (*t == L'E' || *t == L'e')) {
    number += 'e';
    ++t;
    if (t < end && (*t == L'+' || *t == L'-'))
      number += static_cast<char>(*t++);
    if (!isDigit(t))
      return false;
    size_t exponentDigits = 0;
    for (; isDigit(t); ++t) {
      if (*t == L'0' && exponentDigits == 0)
        continue;
      if (++exponentDigits <= kMaxExponentDigits)
        number += static_cast<char>(*t);
    }
    if (exponentDigits == 0)
      number += '0';
    // Ten digits or more: zero stays zero, anything else is out of range.
    if (exponentDigits > kMaxExponentDigits) {
      if (!zero)
        return false;
      number.resize(number.size() - kMaxExponentDigits, 0);
      number += '0';
    }
  }
  readElements(p.trailing);
  if (t != end)
    return false;
  double value = 0;
  auto r = std::from_chars(number.begin(), number.end(), value);
  if (number.overflowed() || r.ec != std::errc() || r.ptr != number.end())
    return false;
  *result = negative ? -value : value;
  return true;
}
