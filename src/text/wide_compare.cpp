//===- text/wide_compare.cpp - Comparing wide strings ----------------------===//
#include "platform/crt_string.h"
#include "qxutil/text.h"

#include <cstdint>
#include <cwchar>

namespace {

// strniequ's scratch stays on the stack up to this many units per string.
constexpr size_t kStackScratchUnits = 256;

// CopyHead - the first n units of `s` (fewer if it ends first), terminated.
void CopyHead(wchar_t* out, const wchar_t* s, size_t n) {
  size_t i = 0;
  for (; i < n && s[i]; ++i)
    out[i] = s[i];
  out[i] = 0;
}

} // namespace

int qxStrCmp(const wchar_t* a, const wchar_t* b) {
  if (!a || !b)
    return a == b ? 0 : (a ? 1 : -1);
  for (;; ++a, ++b) {
    // Units compare as Windows' unsigned 16-bit values.
    uint16_t ua = static_cast<uint16_t>(*a), ub = static_cast<uint16_t>(*b);
    if (ua != ub)
      return ua < ub ? -1 : 1;
    if (!ua)
      return 0;
  }
}

int qxStrICmp(const wchar_t* a, const wchar_t* b) { return qx::crt::_wcsicmp(a, b); }

int qxStrNICmp(const wchar_t* a, const wchar_t* b, size_t n) { return qx::crt::_wcsnicmp(a, b, n); }

bool strequ(const wchar_t* a, const wchar_t* b) { return a && b && std::wcscmp(a, b) == 0; }

bool striequ(const wchar_t* a, const wchar_t* b) { return a && b && qx::crt::_wcsicmp(a, b) == 0; }

bool strnequ(const wchar_t* a, const wchar_t* b, size_t n) {
  return a && b && std::wcsncmp(a, b, n) == 0;
}

bool strniequ(const wchar_t* a, const wchar_t* b, size_t n) {
  if (!a || !b)
    return false;
  if (n <= kStackScratchUnits) {
    wchar_t ca[kStackScratchUnits + 1], cb[kStackScratchUnits + 1];
    CopyHead(ca, a, n);
    CopyHead(cb, b, n);
    return qx::crt::_wcsicmp(ca, cb) == 0;
  }
  // Two copies of n + 1 units from the memory manager; a request that does
  // not fit its 32-bit size counts as a failed allocation.
  wchar_t* scratch = nullptr;
  uint64_t bytes = (static_cast<uint64_t>(n) + 1) * 2 * sizeof(wchar_t);
  if (bytes > 0xFFFFFFFFu || !falloc_(static_cast<unsigned int>(bytes), &scratch, false, false))
    return qx::crt::_wcsnicmp(a, b, n) == 0;
  CopyHead(scratch, a, n);
  CopyHead(scratch + n + 1, b, n);
  bool equal = qx::crt::_wcsicmp(scratch, scratch + n + 1) == 0;
  ffree(&scratch);
  return equal;
}
