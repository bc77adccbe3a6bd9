//===- text/convert.cpp - 8-bit and multi-byte text <=> wide text ---------===//
//
// The conversions go through the platform's code-page calls with the code
// page of GetWinCodePage; the copies are the runtime's.
//
//===----------------------------------------------------------------------===//
#include "platform/codepage.h"
#include "qxutil/text.h"

#include <climits>
#include <cstring>
#include <cwchar>

using namespace qx::win;

namespace {

constexpr DWORD kCompositeCheck = WC_COMPOSITECHECK;                    // 0x200
constexpr DWORD kCompositeDefault = WC_COMPOSITECHECK | WC_DEFAULTCHAR; // 0x240

// ClampToInt - the platform calls take int sizes; larger ones count as INT_MAX.
int ClampToInt(unsigned int n) { return n > INT_MAX ? INT_MAX : static_cast<int>(n); }

// ToMultiByte - WideCharToMultiByte of the whole NUL-terminated `src` with
// `flags`, true on success or on an accepted truncation.
bool ToMultiByte(UINT cp, DWORD flags, const wchar_t* src, char* dst, int dstLen,
                 const char* defaultChar, bool acceptTruncation) {
  if (WideCharToMultiByte(cp, flags, src, -1, dst, dstLen, defaultChar, nullptr) > 0)
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
  UINT cp = static_cast<UINT>(GetWinCodePage(cs));
  if (ToMultiByte(cp, kCompositeCheck, src, dst, size, nullptr, acceptTruncation))
    return true;
  if (IsValidCodePage(cp))
    return false;
  // No code page of its own (or a placeholder): the system charset's page,
  // with the member's unknown code for what that page lacks.
  bool member = cs >= 0 && cs < kQXCharsetCount;
  const char unknown[2] = {static_cast<char>(member ? CharsetUnknownCode(cs) : '_'), 0};
  UINT systemCp = static_cast<UINT>(GetWinCodePage(system_charset()));
  return ToMultiByte(systemCp, kCompositeDefault, src, dst, size, unknown, acceptTruncation);
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
