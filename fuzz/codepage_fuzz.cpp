// Fuzz target for the code-page conversions: random bytes through
// MultiByteToWideChar on every double-byte page (and one single-byte page),
// random code units through WideCharToMultiByte, each with every output size
// from 0 up to a small bound. Checks that nothing is written past the stated
// size, that the size probe agrees with the conversion, that a short buffer
// fails with ERROR_INSUFFICIENT_BUFFER and holds a prefix of the full result.
#include "platform/codepage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <vector>

using namespace qx::win;

namespace {

constexpr int kMaxOut = 24;  // output sizes tried: 0..kMaxOut
constexpr size_t kGuard = 8; // sentinel units after the stated size
constexpr wchar_t kWideSentinel = 0x7F7F;
constexpr char kByteSentinel = '#';

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

// CheckPrefix - the first `size` elements of `out` are the full result's or
// untouched (a short buffer holds whole characters only), and nothing after
// them was written.
template <typename T>
void CheckPrefix(const std::vector<T>& out, const std::vector<T>& full, size_t size, T sentinel) {
  for (size_t i = 0; i < out.size(); ++i) {
    Check(out[i] == sentinel || (i < size && out[i] == full[i]));
  }
}

void FuzzDecode(UINT cp, DWORD flags, const char* src, int srclen) {
  int need = MultiByteToWideChar(cp, flags, src, srclen, nullptr, 0);
  if (need == 0) {
    Check(GetLastError() == ERROR_NO_UNICODE_TRANSLATION);
    return;
  }
  std::vector<wchar_t> full(static_cast<size_t>(need) + kGuard, kWideSentinel);
  Check(MultiByteToWideChar(cp, flags, src, srclen, full.data(), need) == need);
  for (size_t i = static_cast<size_t>(need); i < full.size(); ++i) {
    Check(full[i] == kWideSentinel);
  }
  for (int size = 1; size <= kMaxOut && size < need; ++size) {
    std::vector<wchar_t> out(static_cast<size_t>(size) + kGuard, kWideSentinel);
    SetLastError(0);
    Check(MultiByteToWideChar(cp, flags, src, srclen, out.data(), size) == 0);
    Check(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    CheckPrefix(out, full, static_cast<size_t>(size), kWideSentinel);
  }
}

void FuzzEncode(UINT cp, DWORD flags, const wchar_t* src, int srclen, LPCSTR defaultChar) {
  BOOL usedProbe = FALSE;
  int need = WideCharToMultiByte(cp, flags, src, srclen, nullptr, 0, defaultChar, &usedProbe);
  if (need == 0) {
    // Only discarded marks give nothing to write.
    Check((flags & WC_DISCARDNS) != 0);
    return;
  }
  std::vector<char> full(static_cast<size_t>(need) + kGuard, kByteSentinel);
  BOOL used = FALSE;
  Check(WideCharToMultiByte(cp, flags, src, srclen, full.data(), need, defaultChar, &used) == need);
  Check(used == usedProbe);
  for (size_t i = static_cast<size_t>(need); i < full.size(); ++i) {
    Check(full[i] == kByteSentinel);
  }
  for (int size = 1; size <= kMaxOut && size < need; ++size) {
    std::vector<char> out(static_cast<size_t>(size) + kGuard, kByteSentinel);
    SetLastError(0);
    Check(WideCharToMultiByte(cp, flags, src, srclen, out.data(), size, defaultChar, nullptr) == 0);
    Check(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    CheckPrefix(out, full, static_cast<size_t>(size), kByteSentinel);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 4096) {
    return 0;
  }
  const uint8_t selector = data[0];
  const char* bytes = reinterpret_cast<const char*>(data + 1);
  const int len = static_cast<int>(size - 1);

  static const UINT kDecodePages[] = {932, 936, 949, 950, 1252};
  static const DWORD kDecodeFlags[] = {0, MB_PRECOMPOSED, MB_ERR_INVALID_CHARS, MB_COMPOSITE};
  if (len > 0) {
    for (UINT cp : kDecodePages) {
      FuzzDecode(cp, kDecodeFlags[selector & 3], bytes, len);
    }
    // Up to the first NUL, as -1 asks.
    std::vector<char> terminated(bytes, bytes + len);
    terminated.push_back('\0');
    FuzzDecode(kDecodePages[(selector >> 4) % std::size(kDecodePages)],
               kDecodeFlags[(selector >> 2) & 3], terminated.data(), -1);
  }

  // Code units: two bytes each; the selector can lift some beyond the BMP.
  std::vector<wchar_t> units;
  for (int i = 0; i + 1 < len; i += 2) {
    uint32_t u = static_cast<uint8_t>(bytes[i]) | static_cast<uint8_t>(bytes[i + 1]) << 8;
    if ((selector & 0x80) != 0 && (u & 0x1F) == 0x1F) {
      u += 0x10000;
    }
    units.push_back(static_cast<wchar_t>(u));
  }
  if (units.empty()) {
    return 0;
  }
  static const UINT kEncodePages[] = {932, 936, 949, 950, 1252, 1258, 437};
  static const DWORD kEncodeFlags[] = {
      0,
      WC_NO_BEST_FIT_CHARS,
      WC_COMPOSITECHECK,
      WC_COMPOSITECHECK | WC_DEFAULTCHAR,
      WC_COMPOSITECHECK | WC_DISCARDNS | WC_NO_BEST_FIT_CHARS,
      WC_COMPOSITECHECK | WC_SEPCHARS,
      WC_DEFAULTCHAR,
      WC_COMPOSITECHECK | WC_DEFAULTCHAR | WC_NO_BEST_FIT_CHARS,
  };
  static const char* const kDefaults[] = {nullptr, "_", "\x81\x45", "\x82"};
  DWORD flags = kEncodeFlags[(selector >> 2) & 7];
  const char* defaultChar = kDefaults[(selector >> 5) & 3];
  for (UINT cp : kEncodePages) {
    FuzzEncode(cp, flags, units.data(), static_cast<int>(units.size()), defaultChar);
  }
  return 0;
}
