//===- locale/number_ui.cpp - Canonical number text to UI text and back ---===//
//
// UI text differs from canonical text only by the locale record's thousands
// separators and decimal separator; both directions work on whole strings
// and take the separators in force (the number format callback may make
// them neutral). Also here: the runtime-locale test shared by the number
// functions.
//
//===----------------------------------------------------------------------===//
#include "locale/number_internal.h"

#include "platform/crt_number.h"
#include "qxutil/text.h"

#include <cstring>
#include <cwchar>

namespace {

bool AllDigits(const wchar_t* from, const wchar_t* to) {
  for (const wchar_t* p = from; p < to; ++p)
    if (*p < L'0' || *p > L'9')
      return false;
  return true;
}

} // namespace

namespace qx::number {

wchar_t RuntimePoint(bool neutral) { return neutral ? L'.' : qx::platform::CrtDecimalPoint(); }

void SeparatorsInForce(wchar_t* decimal, wchar_t* thousands, short* group) {
  bool (*callback)() = GetNumberFormatCallback();
  bool system = !callback || !callback();
  *decimal = L'.';
  *thousands = L',';
  *group = 3;
  GetQXLocaleNumInfo(system, decimal, thousands, group);
}

void Neutralise(const wchar_t* text, wchar_t* out, unsigned int size, bool neutral) {
  if (neutral) {
    strcpyn(out, text, size);
    return;
  }
  wchar_t work[kWorkSize];
  if (std::wcslen(text) >= kWorkSize) {
    strcpyn(out, L"", size);
    return;
  }
  DeformatNumberFromUI(text, work);
  strcpyn(out, work, size);
}

} // namespace qx::number

void DeformatNumberFromUI(const wchar_t* in, wchar_t* out) {
  if (!out)
    return;
  if (!in) {
    out[0] = 0;
    return;
  }
  wchar_t decimal, thousands;
  short group;
  qx::number::SeparatorsInForce(&decimal, &thousands, &group);
  wchar_t* o = out;
  for (const wchar_t* p = in; *p; ++p)
    if (thousands == 0 || *p != thousands)
      *o++ = *p;
  *o = 0;
  if (decimal != 0 && decimal != L'.')
    if (wchar_t* last = std::wcsrchr(out, decimal))
      *last = L'.';
}

void FormatNumberForUI(wchar_t* text, unsigned int size) {
  if (!text)
    return;
  const bool hadPoint = std::wcschr(text, L'.') != nullptr;
  wchar_t decimal, thousands;
  short group;
  qx::number::SeparatorsInForce(&decimal, &thousands, &group);
  if (group > 0 && thousands != 0) {
    const size_t step = static_cast<size_t>(group);
    for (bool first = true;; first = false) {
      size_t length = std::wcslen(text);
      if (size < length + 2)
        break; // no room for one more separator and the terminator
      const wchar_t* ref = std::wcschr(text, thousands);
      if (!ref && first)
        ref = std::wcschr(text, L'.');
      if (!ref)
        ref = text + length;
      size_t at = static_cast<size_t>(ref - text);
      if (at <= step || !AllDigits(ref - step - 1, ref))
        break;
      size_t insert = at - step;
      std::wmemmove(text + insert + 1, text + insert, length - insert + 1);
      text[insert] = thousands;
    }
  }
  if (hadPoint && decimal != 0)
    if (wchar_t* last = std::wcsrchr(text, L'.'))
      *last = decimal;
}
