// The code-page conversions against their reference forms
// (platform/codepage_reference.h), which convert one character at a time
// through the general code: for the probe, the exact size, a larger one and
// short ones, the count, the last error, the used-default flag and every
// element of a sentinel-filled buffer (with a guard after the stated size)
// must agree. Shared by the code-page fuzz targets.
#ifndef QXUTIL_FUZZ_MODELS_PLATFORM_CODEPAGE_COMPARE_H
#define QXUTIL_FUZZ_MODELS_PLATFORM_CODEPAGE_COMPARE_H

#include "platform/codepage.h"
#include "platform/codepage_reference.h"

#include <vector>

namespace qxtest {

/// ConversionSizes - the output sizes tried for a result of `need`
/// elements: 0, need, more, and the short sizes need - 1, need / 2,
/// need / 3 + 1 and 1 up to `shortUpTo`.
inline std::vector<int> ConversionSizes(int need, int shortUpTo) {
  std::vector<int> sizes = {0, need, need + 5};
  if (need > 1)
    sizes.insert(sizes.end(), {need - 1, need / 2, need / 3 + 1});
  for (int size = 1; size <= shortUpTo && size < need; ++size)
    sizes.push_back(size);
  return sizes;
}

/// SameCall - whether `fast` and `ref` (each taking the output, its size
/// and the used-default flag's address) leave everything observable equal.
template <typename T, typename Fast, typename Ref>
bool SameCall(int size, bool wantUsed, T sentinel, Fast fast, Ref ref) {
  struct Result {
    int ret;
    DWORD error;
    BOOL used;
    std::vector<T> buffer;
  };
  auto call = [&](auto fn) {
    Result r{0, 0, 7, std::vector<T>(static_cast<size_t>(size) + 8, sentinel)};
    SetLastError(0xDEADBEEF);
    r.ret = fn(size == 0 ? nullptr : r.buffer.data(), size, wantUsed ? &r.used : nullptr);
    r.error = GetLastError();
    return r;
  };
  Result a = call(fast), b = call(ref);
  return a.ret == b.ret && a.error == b.error && a.used == b.used && a.buffer == b.buffer;
}

/// DecodeDiffers - the first output size at which MultiByteToWideChar and
/// its reference form disagree, or -1.
inline int DecodeDiffers(UINT cp, DWORD flags, const char* src, int srclen, int shortUpTo) {
  using namespace qx::win;
  int need = qx::platform::MultiByteToWideCharReference(cp, flags, src, srclen, nullptr, 0);
  for (int size : ConversionSizes(need, shortUpTo)) {
    if (!SameCall<wchar_t>(
            size, false, 0x7F7F,
            [&](LPWSTR dst, int n, LPBOOL) {
              return MultiByteToWideChar(cp, flags, src, srclen, dst, n);
            },
            [&](LPWSTR dst, int n, LPBOOL) {
              return qx::platform::MultiByteToWideCharReference(cp, flags, src, srclen, dst, n);
            }))
      return size;
  }
  return -1;
}

/// EncodeDiffers - the same for WideCharToMultiByte, with and without the
/// used-default flag.
inline int EncodeDiffers(UINT cp, DWORD flags, const wchar_t* src, int srclen, LPCSTR defaultChar,
                         int shortUpTo) {
  using namespace qx::win;
  using qx::platform::WideCharToMultiByteReference;
  int need = WideCharToMultiByteReference(cp, flags, src, srclen, nullptr, 0, defaultChar, nullptr);
  for (int size : ConversionSizes(need, shortUpTo)) {
    for (bool wantUsed : {false, true}) {
      if (!SameCall<char>(
              size, wantUsed, '#',
              [&](LPSTR dst, int n, LPBOOL used) {
                return WideCharToMultiByte(cp, flags, src, srclen, dst, n, defaultChar, used);
              },
              [&](LPSTR dst, int n, LPBOOL used) {
                return WideCharToMultiByteReference(cp, flags, src, srclen, dst, n, defaultChar,
                                                    used);
              }))
        return size;
    }
  }
  return -1;
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_PLATFORM_CODEPAGE_COMPARE_H
