//===- locale/time_parse.cpp - ParseTimeString ----------------------------===//
//
// A time of day as text: the clock literal HHMMSSfffffff, or hours, then
// optionally the time separator and minutes, then optionally the second
// time separator and seconds (with a fraction). Each separator must appear
// as a whole (a run of its characters of another length fails). An AM/PM
// designator, the locale's or "am"/"pm", may stand before or after the
// time; it makes the hours 1..12 (12 AM is midnight).
//
//===----------------------------------------------------------------------===//
#include "locale/date_internal.h"
#include "platform/crt_number.h"
#include "qxutil/text.h"

#include <cwchar>

using qx::date::IsBlank;
using qx::date::SkipBlanks;

namespace {

constexpr size_t kTextCopy = 256;

enum class Marker { None, Am, Pm };

// Designator - an AM/PM designator lower-cased as the text is. One longer
// than the text copy could never match, so kTextCopy units of it suffice.
struct Designator {
  wchar_t text[kTextCopy + 1];
  size_t length;
  explicit Designator(const wchar_t* s) {
    strcpyn(text, s ? s : L"", kTextCopy + 1);
    qxStrLwr(text);
    length = std::wcslen(text);
  }
};

// StripMarker - removes a designator at the start (followed by a blank or
// a digit) or at the end of `text` (of *length units), and says which it
// was.
Marker StripMarker(wchar_t* text, size_t* length, const Designator (&designators)[4]) {
  for (int i = 0; i < 4; ++i) {
    const Designator& d = designators[i];
    size_t n = *length;
    if (d.length == 0 || d.length >= n)
      continue;
    Marker marker = i % 2 == 0 ? Marker::Am : Marker::Pm;
    if (std::wmemcmp(text, d.text, d.length) == 0) {
      wchar_t next = text[d.length];
      if (IsBlank(next) || (next >= L'0' && next <= L'9')) {
        std::wmemmove(text, text + d.length, n - d.length + 1);
        *length = n - d.length;
        return marker;
      }
    }
    if (std::wmemcmp(text + n - d.length, d.text, d.length) == 0) {
      n -= d.length;
      while (n > 0 && IsBlank(text[n - 1]))
        --n;
      text[n] = 0;
      *length = n;
      return marker;
    }
  }
  return Marker::None;
}

// SkipSeparator - when units of `separator` follow, their whole run must
// be `separator` itself; *p moves past it. *present says whether one was
// there.
bool SkipSeparator(const wchar_t** p, const wchar_t* separator, bool* present) {
  *present = false;
  if (!separator || !*separator || !std::wcschr(separator, **p) || **p == 0)
    return true;
  size_t run = 0;
  while ((*p)[run] && std::wcschr(separator, (*p)[run]))
    ++run;
  if (run != std::wcslen(separator) || std::wcsncmp(*p, separator, run) != 0)
    return false;
  *p += run;
  *present = true;
  return true;
}

bool ReadClockLiteral(const wchar_t* text, int* hours, int* minutes, double* seconds) {
  long long clock = 0;
  for (int i = 0; i < 13; ++i)
    clock = clock * 10 + (text[i] - L'0');
  long long h = clock / 100000000000LL, m = clock / 1000000000LL % 100,
            s = clock / 10000000LL % 100, f = clock % 10000000LL;
  if (h > 23 || m > 59 || s > 59)
    return false;
  *hours = static_cast<int>(h);
  *minutes = static_cast<int>(m);
  *seconds = static_cast<double>(s) + static_cast<double>(f) / 1e7;
  return true;
}

} // namespace

bool ParseTimeString(const wchar_t* text, int* hours, int* minutes, double* seconds) {
  if (!text || !hours || !minutes || !seconds)
    return false;
  if (qx::date::AllDigits(text, 13))
    return ReadClockLiteral(text, hours, minutes, seconds);

  wchar_t copy[kTextCopy + 1];
  strcpyn(copy, text, kTextCopy + 1);
  qxStrLwr(copy);
  ltrim(copy);
  rtrim(copy);
  const wchar_t *am = nullptr, *pm = nullptr, *separator = nullptr, *secondSeparator = nullptr;
  GetQXLocaleTimeInfo(qx::date::DateSettingsSystemFlag(), nullptr, nullptr, &am, &pm, &separator,
                      &secondSeparator);
  const Designator designators[4] = {Designator(am), Designator(pm), Designator(L"am"),
                                     Designator(L"pm")};
  size_t length = std::wcslen(copy);
  Marker marker = StripMarker(copy, &length, designators);

  const wchar_t* p = SkipBlanks(copy);
  wchar_t* end = nullptr;
  long h = qx::crt::wcstol(p, &end, 10), m = 0;
  double s = 0;
  if (end == p)
    return false;
  p = SkipBlanks(end);
  bool present = false;
  if (!SkipSeparator(&p, separator, &present))
    return false;
  if (present) {
    p = SkipBlanks(p);
    m = qx::crt::wcstol(p, &end, 10);
    if (end == p)
      return false;
    p = SkipBlanks(end);
    if (!SkipSeparator(&p, secondSeparator, &present))
      return false;
    if (present) {
      s = qx::crt::wcstod(p, &end);
      if (end == p)
        return false;
      p = end;
    }
  }
  p = SkipBlanks(p);
  if (*p != 0 || m < 0 || m > 59 || !(s >= 0 && s < 60))
    return false;
  if (marker == Marker::None) {
    if (h < 0 || h > 23)
      return false;
  } else {
    if (h < 1 || h > 12)
      return false;
    h = marker == Marker::Am ? h % 12 : h % 12 + 12;
  }
  *hours = static_cast<int>(h);
  *minutes = static_cast<int>(m);
  *seconds = s;
  return true;
}
