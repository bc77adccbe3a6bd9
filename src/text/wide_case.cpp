//===- text/wide_case.cpp - Case and character classes ---------------------===//
#include "platform/crt_string.h"
#include "platform/unicode.h"
#include "qxutil/text.h"

#include <cstdint>

using namespace qx::win;

namespace {

// OneChar - CharUpperW or CharLowerW applied to a single character, passed
// as the platform expects: a pointer-sized value below 0x10000. Values
// that are not BMP units are not characters and come back unchanged.
wchar_t OneChar(LPWSTR (*convert)(LPWSTR), wchar_t c) {
  if (static_cast<uint32_t>(c) > 0xFFFF)
    return c;
  LPWSTR v = convert(reinterpret_cast<LPWSTR>(static_cast<uintptr_t>(c)));
  return static_cast<wchar_t>(reinterpret_cast<uintptr_t>(v));
}

} // namespace

wchar_t qxToUpper(wchar_t c) { return OneChar(CharUpperW, c); }
wchar_t qxToLower(wchar_t c) { return OneChar(CharLowerW, c); }

bool qxIsAlpha(wchar_t c) { return qx::crt::iswalpha(static_cast<wint_t>(c)) != 0; }
bool qxIsAlphaNum(wchar_t c) { return qx::crt::iswalnum(static_cast<wint_t>(c)) != 0; }

bool qxIsUpper(wchar_t c) {
  return static_cast<uint32_t>(c) <= 0xFFFF && IsCharUpperW(static_cast<WCHAR>(c));
}
bool qxIsLower(wchar_t c) {
  return static_cast<uint32_t>(c) <= 0xFFFF && IsCharLowerW(static_cast<WCHAR>(c));
}

bool qxIsPrint(wchar_t c) {
  // Units are unsigned 16-bit values: everything from 128 up is printable.
  uint32_t u = static_cast<uint32_t>(c);
  return u >= 128 || qx::crt::iswprint(static_cast<wint_t>(u)) != 0;
}

wchar_t* qxStrUpr(wchar_t* s) { return s ? CharUpperW(s) : nullptr; }
wchar_t* qxStrLwr(wchar_t* s) { return s ? CharLowerW(s) : nullptr; }
