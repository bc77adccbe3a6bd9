// Differential tests for the code-page conversions: MultiByteToWideChar and
// WideCharToMultiByte (block copies, per-span room checks, mark scans) against
// their reference forms, which convert one character at a time through the
// general code, over every byte, pair and BMP unit of every page. Every
// answer must agree: the count, the last error, every unit or byte of the
// output buffer (sentinel-filled, with a guard after the stated size) and the
// used-default flag. Random texts are compared by fuzz/codepage_fuzz.cpp.
#include "platform/codepage.h"
#include "platform/codepage_reference.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

using namespace qx::win;

namespace {

using qx::platform::MultiByteToWideCharReference;
using qx::platform::WideCharToMultiByteReference;
using qxtest::kAllPages;

constexpr DWORD kUntouched = 0xDEADBEEF;
constexpr size_t kGuard = 20; // sentinel elements after the stated size
constexpr wchar_t kWideSentinel = 0x7F7F;
constexpr char kByteSentinel = '#';

// One call's observable result.
template <typename T> struct Result {
  int ret;
  DWORD error;
  BOOL used;
  std::vector<T> buffer;

  bool operator==(const Result&) const = default;
};

template <typename T> std::ostream& operator<<(std::ostream& os, const Result<T>& r) {
  os << "ret " << r.ret << ", error " << r.error << ", used " << r.used << ", buffer";
  for (T c : r.buffer) {
    os << ' ' << std::hex << (static_cast<uint32_t>(c) & (sizeof(T) == 1 ? 0xFF : ~0u)) << std::dec;
  }
  return os;
}

template <typename Fn> Result<wchar_t> CallDecode(Fn fn, int dstlen) {
  Result<wchar_t> r{0, 0, FALSE,
                    std::vector<wchar_t>(static_cast<size_t>(dstlen) + kGuard, kWideSentinel)};
  SetLastError(kUntouched);
  r.ret = fn(dstlen == 0 ? nullptr : r.buffer.data(), dstlen);
  r.error = GetLastError();
  return r;
}

template <typename Fn> Result<char> CallEncode(Fn fn, int dstlen, bool wantUsed) {
  Result<char> r{0, 0, 7, std::vector<char>(static_cast<size_t>(dstlen) + kGuard, kByteSentinel)};
  SetLastError(kUntouched);
  r.ret = fn(dstlen == 0 ? nullptr : r.buffer.data(), dstlen, wantUsed ? &r.used : nullptr);
  r.error = GetLastError();
  return r;
}

// The output sizes worth trying for a result of `need` elements: the probe,
// exactly enough, more than enough, and a few short ones (whole characters
// must stop the output there).
std::vector<int> Sizes(int need) {
  std::vector<int> sizes = {0, need, need + 17};
  if (need > 1) {
    sizes.insert(sizes.end(), {need - 1, 1, need / 2, need / 3 + 1});
  }
  return sizes;
}

void CompareDecode(UINT cp, DWORD flags, const std::string& bytes, int srclen) {
  const char* src = bytes.c_str();
  int need = MultiByteToWideCharReference(cp, flags, src, srclen, nullptr, 0);
  for (int size : Sizes(need)) {
    auto fast = CallDecode(
        [&](LPWSTR dst, int n) { return MultiByteToWideChar(cp, flags, src, srclen, dst, n); },
        size);
    auto ref = CallDecode(
        [&](LPWSTR dst, int n) {
          return MultiByteToWideCharReference(cp, flags, src, srclen, dst, n);
        },
        size);
    ASSERT_EQ(fast, ref) << "page " << cp << ", flags " << flags << ", size " << size;
  }
}

void CompareEncode(UINT cp, DWORD flags, const std::wstring& units, int srclen,
                   LPCSTR defaultChar) {
  const wchar_t* src = units.c_str();
  int need = WideCharToMultiByteReference(cp, flags, src, srclen, nullptr, 0, defaultChar, nullptr);
  for (int size : Sizes(need)) {
    for (bool wantUsed : {false, true}) {
      auto fast = CallEncode(
          [&](LPSTR dst, int n, LPBOOL used) {
            return WideCharToMultiByte(cp, flags, src, srclen, dst, n, defaultChar, used);
          },
          size, wantUsed);
      auto ref = CallEncode(
          [&](LPSTR dst, int n, LPBOOL used) {
            return WideCharToMultiByteReference(cp, flags, src, srclen, dst, n, defaultChar, used);
          },
          size, wantUsed);
      ASSERT_EQ(fast, ref) << "page " << cp << ", flags " << flags << ", size " << size
                           << ", default " << (defaultChar ? defaultChar : "(none)");
    }
  }
}

// ---- Every byte, pair and unit in long texts ----------------------------------

TEST(CodePageDifferential, EveryByteAndPairInOneText) {
  for (UINT cp : kAllPages) {
    // Every byte after an ASCII run (so blocks of 16 meet every byte), then
    // every lead byte with every trail byte.
    std::string bytes;
    for (int b = 1; b < 256; ++b) {
      bytes += "abcdefghijklmno";
      bytes += static_cast<char>(b);
    }
    for (int lead = 0x81; lead < 0x100; ++lead) {
      if (IsDBCSLeadByteEx(cp, static_cast<BYTE>(lead))) {
        for (int trail = 1; trail < 256; ++trail) {
          bytes += static_cast<char>(lead);
          bytes += static_cast<char>(trail);
        }
      }
    }
    for (DWORD flags : {0u, static_cast<DWORD>(MB_ERR_INVALID_CHARS)}) {
      CompareDecode(cp, flags, bytes, static_cast<int>(bytes.size()));
    }
  }
}

TEST(CodePageDifferential, EveryUnitOfTheBmpInOneText) {
  std::wstring units;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) {
    units += static_cast<wchar_t>(u);
    if (u % 7 == 0) {
      units += L"abcdefghijklmnop"; // ASCII blocks between them
    }
  }
  for (UINT cp : kAllPages) {
    CompareEncode(cp, 0, units, static_cast<int>(units.size()), nullptr);
    CompareEncode(cp, WC_COMPOSITECHECK | WC_DEFAULTCHAR, units, static_cast<int>(units.size()),
                  "_");
  }
}

} // namespace
