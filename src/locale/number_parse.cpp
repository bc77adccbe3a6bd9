//===- locale/number_parse.cpp - Text to integers and doubles -------------===//
//
// The parsers run the C runtime's conversions with Microsoft's contracts
// (platform/crt_number.h: 32-bit long, saturating 64-bit parsers, correctly
// rounded wcstod) and judge success the same way: something was consumed
// and errno is not ERANGE. StringToDouble reads "." as the decimal point
// whatever the runtime locale: in a locale other than "C" it scans the
// number itself and hands the runtime only that span, with the "." turned
// into the runtime's decimal point for the duration of the call.
//
//===----------------------------------------------------------------------===//
#include "locale/number_internal.h"

#include "platform/crt_number.h"
#include "platform/crt_string.h"
#include "qxutil/text.h"

#include <cerrno>
#include <cwchar>

namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Next - one character on (a base character and its combining marks are one
// character).
wchar_t* Next(wchar_t* p) { return qxNextChar(p); }

template <class T> bool Fail(T* result, wchar_t** end) {
  if (result)
    *result = 0;
  if (end)
    *end = nullptr;
  return false;
}

// Converted - the common verdict: consumed, no range error, and the value
// passes `inRange`.
template <class T, class V, class InRange>
bool Converted(const wchar_t* text, wchar_t* stop, V value, T* result, wchar_t** end,
               bool rangeErrorFails, InRange inRange) {
  if (stop == text || (rangeErrorFails && errno == ERANGE) || !inRange(value))
    return Fail(result, end);
  *result = static_cast<T>(value);
  if (end)
    *end = stop;
  return true;
}

template <class T>
bool ParseSigned(const wchar_t* text, T* result, wchar_t** end, long min, long max) {
  if (!text || !result)
    return Fail(result, end);
  wchar_t* stop = nullptr;
  errno = 0;
  long value = qx::crt::wcstol(text, &stop, 10);
  return Converted(text, stop, value, result, end, true,
                   [&](long v) { return v >= min && v <= max; });
}

template <class T, class V>
bool ParseWide(const wchar_t* text, T* result, wchar_t** end, int radix, bool rangeErrorFails,
               V (*convert)(const wchar_t*, wchar_t**, int)) {
  if (!text || !result)
    return Fail(result, end);
  wchar_t* stop = nullptr;
  errno = 0;
  V value = convert(text, &stop, radix);
  return Converted(text, stop, value, result, end, rangeErrorFails, [](V) { return true; });
}

// ScanDouble - the own scan of a runtime locale other than "C".
bool ScanDouble(const wchar_t* text, double* result, wchar_t** end) {
  wchar_t* p = const_cast<wchar_t*>(text);
  while (qx::crt::iswspace(static_cast<wint_t>(*p)))
    p = Next(p);
  wchar_t* const start = p; // the span handed to the runtime begins here
  if (*p == L'+' || *p == L'-')
    p = Next(p);
  if (!IsDigit(*p) && !(*p == L'.' && IsDigit(p[1])))
    return false;
  while (IsDigit(*p))
    p = Next(p);
  wchar_t* point = nullptr;
  if (*p == L'.') {
    point = p;
    p = Next(p);
    while (IsDigit(*p))
      p = Next(p);
  }
  if (*p == L'e' || *p == L'E' || *p == L'd' || *p == L'D') {
    p = Next(p);
    if (*p == L'+' || *p == L'-')
      p = Next(p);
    while (IsDigit(*p))
      p = Next(p);
  }
  // Hand the runtime exactly the span, in its own notation.
  const wchar_t saved = *p;
  *p = 0;
  const wchar_t runtimePoint = qx::platform::CrtDecimalPoint();
  if (point && runtimePoint != L'.')
    *point = runtimePoint;
  wchar_t* stop = nullptr;
  errno = 0;
  double value = qx::crt::wcstod(start, &stop);
  const bool ok = stop != start && errno != ERANGE;
  if (point)
    *point = L'.';
  *p = saved;
  if (!ok)
    return false;
  *result = value;
  if (end)
    *end = stop;
  return true;
}

// ViaDeformat - runs `parse` on the canonical form of UI text.
template <class Parse> bool ViaDeformat(const wchar_t* text, bool fromUI, Parse parse) {
  if (!fromUI || !text)
    return parse(text);
  if (std::wcslen(text) >= qx::number::kWorkSize)
    return parse(nullptr);
  wchar_t work[qx::number::kWorkSize];
  DeformatNumberFromUI(text, work);
  return parse(work);
}

} // namespace

bool StringToShort(const wchar_t* text, short* result, wchar_t** end) {
  return ParseSigned(text, result, end, -32768, 32767);
}

bool StringToInt(const wchar_t* text, int* result, wchar_t** end) {
  return ParseSigned(text, result, end, -2147483647L - 1, 2147483647L);
}

bool StringToLong(const wchar_t* text, long* result, wchar_t** end, long min, long max) {
  return ParseSigned(text, result, end, min, max);
}

bool StringToUnsignedInt(const wchar_t* text, unsigned int* result, wchar_t** end) {
  return ParseWide(text, result, end, 10, true, qx::crt::wcstoul);
}

bool StringToUnsignedLong(const wchar_t* text, unsigned long* result, wchar_t** end, int radix) {
  return ParseWide(text, result, end, radix, true, qx::crt::wcstoul);
}

bool StringToUnsignedLong16(const wchar_t* text, unsigned long* result) {
  return ParseWide(text, result, nullptr, 16, true, qx::crt::wcstoul);
}

bool StringToInt64(const wchar_t* text, long long* result) {
  return ParseWide(text, result, nullptr, 10, false, qx::crt::_wcstoi64);
}

bool StringToUnsignedInt64(const wchar_t* text, unsigned long long* result) {
  return ParseWide(text, result, nullptr, 10, false, qx::crt::_wcstoui64);
}

bool qx::number::ReadDouble(const wchar_t* text, double* result, wchar_t** end, bool neutral) {
  if (!text || !result)
    return Fail(result, end);
  if (neutral) {
    wchar_t* stop = nullptr;
    errno = 0;
    double value;
    if (qx::crt::ReadPlainDecimal(text, &value, &stop)) { // the common text, directly
      *result = value;
      if (end)
        *end = stop;
      return true;
    }
    value = qx::crt::WcstodWithPoint(text, &stop, L'.');
    return Converted(text, stop, value, result, end, true, [](double) { return true; });
  }
  *result = 0.0;
  if (end)
    *end = nullptr;
  return ScanDouble(text, result, end) || Fail(result, end);
}

bool StringToDouble(const wchar_t* text, double* result, wchar_t** end) {
  return qx::number::ReadDouble(text, result, end, qx::number::RuntimeLocaleIsNeutral());
}

bool StringToLongFmtCtl(const wchar_t* text, long* result, bool fromUI, long min, long max) {
  return ViaDeformat(text, fromUI,
                     [&](const wchar_t* t) { return StringToLong(t, result, nullptr, min, max); });
}

bool StringToShortFmtCtl(const wchar_t* text, short* result, bool fromUI) {
  long value = 0;
  bool ok = StringToLongFmtCtl(text, &value, fromUI, -32768, 32767);
  if (result)
    *result = static_cast<short>(value);
  return ok;
}

bool StringToIntFmtCtl(const wchar_t* text, int* result, bool fromUI) {
  long value = 0;
  bool ok = StringToLongFmtCtl(text, &value, fromUI, -2147483647L - 1, 2147483647L);
  if (result)
    *result = static_cast<int>(value);
  return ok;
}

bool StringToUnsignedLongFmtCtl(const wchar_t* text, unsigned long* result, bool fromUI) {
  return ViaDeformat(
      text, fromUI, [&](const wchar_t* t) { return StringToUnsignedLong(t, result, nullptr, 10); });
}

bool StringToInt64FmtCtl(const wchar_t* text, long long* result, bool fromUI) {
  return ViaDeformat(text, fromUI, [&](const wchar_t* t) { return StringToInt64(t, result); });
}

bool StringToUnsignedInt64FmtCtl(const wchar_t* text, unsigned long long* result, bool fromUI) {
  return ViaDeformat(text, fromUI,
                     [&](const wchar_t* t) { return StringToUnsignedInt64(t, result); });
}

bool StringToDoubleFmtCtl(const wchar_t* text, double* result, bool fromUI) {
  return ViaDeformat(text, fromUI,
                     [&](const wchar_t* t) { return StringToDouble(t, result, nullptr); });
}
