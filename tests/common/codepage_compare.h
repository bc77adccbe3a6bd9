//===- common/codepage_compare.h - Fast code-page paths against the reference -*- C++ -*-===//
//
// One call of MultiByteToWideChar or WideCharToMultiByte and of its
// reference form (platform/codepage_reference.h, one character at a time
// through the general code), on equal sentinel-filled buffers with a guard
// after the stated size: the count, the last error, the used-default flag
// and every element of the buffer must agree. Shared by the fast-path test
// and the code-page fuzz targets.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TESTS_COMMON_CODEPAGE_COMPARE_H
#define QXUTIL_TESTS_COMMON_CODEPAGE_COMPARE_H

#include "platform/codepage.h"
#include "platform/codepage_reference.h"

#include <cstddef>
#include <vector>

namespace qxtest {

/// CodePageResult - what one call lets a caller see.
template <typename T> struct CodePageResult {
  int ret;
  DWORD error;
  BOOL used;
  std::vector<T> buffer;

  bool operator==(const CodePageResult&) const = default;
};

/// CallCodePage - `fn(dst, size, usedFlagOrNull)` on a buffer of `size`
/// elements plus a guard, all `sentinel` (dst null when size is 0).
template <typename T, typename Fn>
CodePageResult<T> CallCodePage(Fn fn, int size, bool wantUsed, T sentinel) {
  constexpr size_t kGuard = 8;
  CodePageResult<T> r{0, 0, 7, std::vector<T>(static_cast<size_t>(size) + kGuard, sentinel)};
  SetLastError(0xDEADBEEF);
  r.ret = fn(size == 0 ? nullptr : r.buffer.data(), size, wantUsed ? &r.used : nullptr);
  r.error = GetLastError();
  return r;
}

/// SameDecode - MultiByteToWideChar agrees with its reference for output
/// room `size`.
inline bool SameDecode(UINT cp, DWORD flags, const char* src, int srclen, int size) {
  auto fast = CallCodePage<wchar_t>(
      [&](LPWSTR dst, int n, LPBOOL) {
        return qx::win::MultiByteToWideChar(cp, flags, src, srclen, dst, n);
      },
      size, false, 0x7F7F);
  auto ref = CallCodePage<wchar_t>(
      [&](LPWSTR dst, int n, LPBOOL) {
        return qx::platform::MultiByteToWideCharReference(cp, flags, src, srclen, dst, n);
      },
      size, false, 0x7F7F);
  return fast == ref;
}

/// SameEncode - WideCharToMultiByte agrees with its reference for output
/// room `size`, with and without a used-default flag.
inline bool SameEncode(UINT cp, DWORD flags, const wchar_t* src, int srclen, LPCSTR defaultChar,
                       int size) {
  for (bool wantUsed : {false, true}) {
    auto fast = CallCodePage<char>(
        [&](LPSTR dst, int n, LPBOOL used) {
          return qx::win::WideCharToMultiByte(cp, flags, src, srclen, dst, n, defaultChar, used);
        },
        size, wantUsed, '#');
    auto ref = CallCodePage<char>(
        [&](LPSTR dst, int n, LPBOOL used) {
          return qx::platform::WideCharToMultiByteReference(cp, flags, src, srclen, dst, n,
                                                            defaultChar, used);
        },
        size, wantUsed, '#');
    if (!(fast == ref)) {
      return false;
    }
  }
  return true;
}

/// DecodeNeed, EncodeNeed - the reference's size probe.
inline int DecodeNeed(UINT cp, DWORD flags, const char* src, int srclen) {
  return qx::platform::MultiByteToWideCharReference(cp, flags, src, srclen, nullptr, 0);
}
inline int EncodeNeed(UINT cp, DWORD flags, const wchar_t* src, int srclen, LPCSTR defaultChar) {
  return qx::platform::WideCharToMultiByteReference(cp, flags, src, srclen, nullptr, 0, defaultChar,
                                                    nullptr);
}

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_CODEPAGE_COMPARE_H
