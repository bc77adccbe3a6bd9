//===- text/convert.cpp - 8-bit and multi-byte text <=> wide text ---------===//
//
// The conversions go through the platform's code-page calls with the code
// page of GetWinCodePage. Wide to 8-bit text asks for WC_COMPOSITECHECK; a
// text without nonspacing marks converts the same with or without it, so
// such text takes the call without the flag, which is the platform's
// one-lookup-per-unit path.
//
//===----------------------------------------------------------------------===//
#include "platform/codepage.h"
#include "platform/codepage_tables.h"
#include "qxutil/text.h"

#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace {

constexpr DWORD kCompositeCheck = WC_COMPOSITECHECK;                  // 0x200
constexpr DWORD kCompositeDefault = WC_COMPOSITECHECK | WC_DEFAULTCHAR; // 0x240

// ClampToInt - the platform calls take int sizes; larger ones count as INT_MAX.
int ClampToInt(unsigned int n) { return n > INT_MAX ? INT_MAX : static_cast<int>(n); }

// NonSpacingMarks - one bit per BMP unit, set for the nonspacing marks.
using MarkBits = std::array<uint64_t, 0x10000 / 64>;

const MarkBits& NonSpacingMarks() {
  static const MarkBits bits = [] {
    MarkBits b{};
    for (uint32_t u = 0; u < 0x10000; ++u)
      if (qx::platform::IsNonSpacingMark(u))
        b[u >> 6] |= uint64_t{1} << (u & 63);
    return b;
  }();
  return bits;
}

// HasNonSpacingMark - whether the NUL-terminated `s` holds a nonspacing mark
// (the only units WC_COMPOSITECHECK acts on).
bool HasNonSpacingMark(const wchar_t* s) {
  const MarkBits& bits = NonSpacingMarks();
  for (; *s; ++s) {
    uint32_t u = static_cast<uint32_t>(*s);
    if (u < 0x300) // below the first mark
      continue;
    if (u <= 0xFFFF && (bits[u >> 6] >> (u & 63) & 1))
      return true;
  }
  return false;
}

// ToMultiByte - WideCharToMultiByte of the whole NUL-terminated `src` with
// `flags`, true on success or on an accepted truncation.
bool ToMultiByte(UINT cp, DWORD flags, const wchar_t* src, char* dst, int dstLen,
                 const char* defaultChar, bool acceptTruncation, bool plain) {
  DWORD used = plain ? flags & ~kCompositeDefault : flags;
  if (WideCharToMultiByte(cp, used, src, -1, dst, dstLen, defaultChar, nullptr) > 0)
    return true;
  return acceptTruncation && GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

} // namespace

bool ConvertMBCSCharToSystem(const char* src, unsigned int srcLen, QXCHARSET cs, wchar_t* dst,
                             unsigned int dstLen) {
  if (!src || srcLen == 0 || dstLen == 0 || !dst)
    return false;
  UINT cp = static_cast<UINT>(GetWinCodePage(cs));
  int n = MultiByteToWideChar(cp, MB_PRECOMPOSED, src, ClampToInt(srcLen), dst, ClampToInt(dstLen));
  // n == dstLen too: the caller's buffer holds dstLen + 1 units.
  if (static_cast<unsigned int>(n) <= dstLen)
    dst[n] = 0;
  return n != 0;
}

bool ConvertMBCSCharToSystem(const char* src, QXCHARSET cs, wchar_t* dst, unsigned int dstLen) {
  if (!src)
    return false;
  size_t len = std::strlen(src);
  return ConvertMBCSCharToSystem(src, len > UINT_MAX ? UINT_MAX : static_cast<unsigned int>(len),
                                 cs, dst, dstLen);
}

bool ConvertSystemToMBCSChar(const wchar_t* src, char* dst, QXCHARSET cs, unsigned int dstLen,
                             bool acceptTruncation) {
  if (!src || !dst || dstLen == 0)
    return false;
  int size = ClampToInt(dstLen);
  bool plain = !HasNonSpacingMark(src);
  UINT cp = static_cast<UINT>(GetWinCodePage(cs));
  if (ToMultiByte(cp, kCompositeCheck, src, dst, size, nullptr, acceptTruncation, plain))
    return true;
  if (IsValidCodePage(cp))
    return false;
  // No code page of its own (or a placeholder): the system charset's page,
  // with the member's unknown code for what that page lacks.
  bool member = cs >= 0 && cs < kQXCharsetCount;
  const char unknown[2] = {static_cast<char>(member ? CharsetUnknownCode(cs) : '_'), 0};
  UINT systemCp = static_cast<UINT>(GetWinCodePage(system_charset()));
  return ToMultiByte(systemCp, kCompositeDefault, src, dst, size, unknown, acceptTruncation, plain);
}

bool ConvertWideCharToSystem(const wchar_t* src, unsigned int srcLen, wchar_t* dst,
                             QXCHARSET /*cs*/, unsigned int dstLen) {
  if (!dst)
    return false;
  if (srcLen < dstLen) {
    strcpyn(dst, src, dstLen);
    return true;
  }
  std::wcsncpy(dst, src ? src : L"", dstLen);
  return false;
}

bool ConvertSystemToWideChar(const wchar_t* src, wchar_t* dst, unsigned int dstLen,
                             bool acceptTruncation) {
  if (!dst)
    return false;
  if (!src)
    src = L"";
  size_t n = std::wcslen(src);
  if (n < dstLen) {
    strcpyn(dst, src, dstLen);
    return true;
  }
  std::wcsncpy(dst, src, dstLen);
  return acceptTruncation && n == dstLen;
}
