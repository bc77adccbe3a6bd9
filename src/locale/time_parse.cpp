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
#include <string>

using qx::date::IsBlank;
using qx::date::SkipBlanks;

namespace {

constexpr size_t kTextCopy = 256;

enum class Marker { None, Am, Pm };

// Lowered - `s` lower-cased as the text is.
std::wstring Lowered(const wchar_t* s) {
  std::wstring out = s ? s : L"";
  qxStrLwr(out.data());
  return out;
}

// StripMarker - removes a designator at the start (followed by a blank or
// a digit) or at the end of `text`, and says which it was.
Marker StripMarker(std::wstring& text, const std::wstring (&designators)[4]) {
  for (int i = 0; i < 4; ++i) {
    const std::wstring& d = designators[i];
    if (d.empty() || d.size() >= text.size())
      continue;
    Marker marker = i % 2 == 0 ? Marker::Am : Marker::Pm;
    if (text.compare(0, d.size(), d) == 0) {
      wchar_t next = text[d.size()];
      if (IsBlank(next) || (next >= L'0' && next <= L'9')) {
        text.erase(0, d.size());
        return marker;
      }
    }
    if (text.compare(text.size() - d.size(), d.size(), d) == 0) {
      text.erase(text.size() - d.size());
      while (!text.empty() && IsBlank(text.back()))
        text.pop_back();
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
  const std::wstring designators[4] = {Lowered(am), Lowered(pm), L"am", L"pm"};
  std::wstring work = copy;
  Marker marker = StripMarker(work, designators);

  const wchar_t* p = SkipBlanks(work.c_str());
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
