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
//===----------------------------------------------------------------------===//
#include "qxutil/locale.h"

#include "platform/crt_string.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <system_error>

namespace {

constexpr size_t kMaxPicture = 128;

enum Element : wchar_t {
  kDigit9 = L'9',
  kDigit0 = L'0',
  kGroup = L',',
  kSign = L'S',
  kCurrency = L'$',
};

struct Picture {
  wchar_t sign = 0;      // '+', '-' or 0 for no sign element
  std::wstring leading;  // kSign / kCurrency elements in front, in order
  std::wstring trailing; // the same behind
  std::wstring integer;  // kDigit9, kDigit0, kGroup
  int integerDigits = 0;
  int alwaysWritten = 0; // integer positions from the right always written
  bool point = false;
  std::wstring fraction; // kDigit9, kDigit0
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
  std::string integer;
  std::string fraction;
  int exponent = 0;
  bool zero = true;
};

// RoundUp - adds one unit in the last place of `digits`; true when a carry
// leaves the front.
bool RoundUp(std::string& digits) {
  for (size_t i = digits.size(); i-- > 0;) {
    if (digits[i] != '9') {
      ++digits[i];
      return false;
    }
    digits[i] = '0';
  }
  return true;
}

// DecimalDigits - |value| (finite) rounded half away from zero.
Digits DecimalDigits(double value, size_t fractionDigits, bool scientific) {
  // The exact expansion: a double has at most 1074 fraction digits.
  static thread_local char exact[1500];
  auto r =
      std::to_chars(exact, exact + sizeof exact, std::fabs(value), std::chars_format::fixed, 1074);
  std::string text(exact, r.ptr);
  size_t dot = text.find('.');
  std::string whole = text.substr(0, dot);
  std::string frac = text.substr(dot + 1);
  Digits d;
  if (!scientific) {
    std::string kept = whole + frac.substr(0, fractionDigits);
    kept.resize(whole.size() + fractionDigits, '0');
    bool up = frac.size() > fractionDigits && frac[fractionDigits] >= '5';
    if (up && RoundUp(kept)) {
      kept.insert(kept.begin(), '1');
      whole.push_back('0'); // one more integer digit
    }
    size_t integerLength = kept.size() - fractionDigits;
    d.integer = kept.substr(0, integerLength);
    d.fraction = kept.substr(integerLength);
    d.integer.erase(0, d.integer.find_first_not_of('0'));
    if (d.integer.find_first_not_of('0') == std::string::npos)
      d.integer.clear();
    d.zero = d.integer.empty() && d.fraction.find_first_not_of('0') == std::string::npos;
    return d;
  }
  std::string all = whole + frac;
  size_t first = all.find_first_not_of('0');
  if (first == std::string::npos) {
    d.integer.assign(1, '0'); // not = "0": g++ 12 -O3 warns falsely (-Wrestrict)
    d.fraction.assign(fractionDigits, '0');
    return d;
  }
  d.exponent = static_cast<int>(whole.size()) - 1 - static_cast<int>(first);
  std::string significant = all.substr(first, fractionDigits + 1);
  significant.resize(fractionDigits + 1, '0');
  bool up = all.size() > first + fractionDigits + 1 && all[first + fractionDigits + 1] >= '5';
  if (up && RoundUp(significant)) {
    significant.insert(significant.begin(), '1');
    significant.pop_back();
    ++d.exponent;
  }
  d.integer = significant.substr(0, 1);
  d.fraction = significant.substr(1);
  d.zero = false;
  return d;
}

// BeyondDouble - true when a scientific form rounded up past the largest
// double (9.99E writes 1.79e308 as 1.80E+308), which could not be read back.
bool BeyondDouble(const Digits& d, bool scientific) {
  if (!scientific || d.exponent < 308)
    return false;
  std::string text = d.integer + "." + d.fraction + "e" + std::to_string(d.exponent);
  double value;
  return std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc();
}

bool Emit(const std::wstring& text, wchar_t* buffer, unsigned int size) {
  if (text.size() + 1 > size) {
    buffer[0] = 0;
    return false;
  }
  text.copy(buffer, text.size());
  buffer[text.size()] = 0;
  return true;
}

bool Overflow(const Picture& p, wchar_t* buffer, unsigned int size) {
  size_t n = p.length < size - 1 ? p.length : size - 1;
  std::wmemset(buffer, L'#', n);
  buffer[n] = 0;
  return false;
}

void AppendElements(const std::wstring& elements, const Picture& p, bool negative, const Symbols& s,
                    std::wstring& out) {
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

  std::wstring out;
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
    std::wstring digits = std::to_wstring(x < 0 ? -x : x);
    if (digits.size() < 2)
      digits.insert(digits.begin(), L'0');
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
  auto readElements = [&](const std::wstring& elements) {
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

  std::string number;
  int integerDigits = 0, fractionDigits = 0;
  bool leadingZero = true;
  auto isDigit = [&](const wchar_t* c) { return c < end && *c >= L'0' && *c <= L'9'; };
  for (; t < end; ++t) {
    if (isDigit(t)) {
      number += static_cast<char>(*t);
      if (*t != L'0' || !leadingZero) {
        leadingZero = false;
        ++integerDigits;
      }
    } else if (*t == s.group && !number.empty() && isDigit(t + 1) &&
               !(p.point && *t == s.decimal)) {
      continue;
    } else {
      break;
    }
  }
  bool anyDigit = !number.empty();
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
  if (p.exponent && t < end && (*t == L'E' || *t == L'e')) {
    number += 'e';
    ++t;
    if (t < end && (*t == L'+' || *t == L'-'))
      number += static_cast<char>(*t++);
    if (!isDigit(t))
      return false;
    for (; isDigit(t); ++t)
      number += static_cast<char>(*t);
  }
  readElements(p.trailing);
  if (t != end)
    return false;
  double value = 0;
  auto r = std::from_chars(number.data(), number.data() + number.size(), value);
  if (r.ec != std::errc() || r.ptr != number.data() + number.size())
    return false;
  *result = negative ? -value : value;
  return true;
}
