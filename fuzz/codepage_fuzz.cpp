// Fuzz target for the code-page conversions: random bytes through
// MultiByteToWideChar and random code units through WideCharToMultiByte,
// each compared with its reference form (platform/codepage_reference.h),
// which converts one character at a time through the general code. For
// every output size from 0 up to a small bound, and the exact and a larger
// size, the count, the last error, the used-default flag and every element
// of the sentinel-filled buffer (with a guard after the stated size) must
// agree. Each unit converted alone without best fit must come back.
#include "common/code_pages.h"
#include "models/platform_codepage_compare.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <vector>

using namespace qx::win;

namespace {

constexpr int kMaxOut = 24; // every output size up to this one is tried

using qxtest::kAllPages;

void Decode(UINT cp, DWORD flags, const char* src, int srclen) {
  if (qxtest::DecodeDiffers(cp, flags, src, srclen, kMaxOut) >= 0)
    std::abort();
}

void Encode(UINT cp, DWORD flags, const wchar_t* src, int srclen, LPCSTR defaultChar) {
  if (qxtest::EncodeDiffers(cp, flags, src, srclen, defaultChar, kMaxOut) >= 0)
    std::abort();
}

// Unit - two input bytes as one code unit, steered towards the units the
// fast paths treat apart: ASCII runs, nonspacing marks, and anything else
// (surrogates and, now and then, a unit beyond the BMP).
wchar_t Unit(uint8_t low, uint8_t high) {
  static const wchar_t kMarks[] = {0x0300, 0x0301, 0x0302, 0x0303, 0x0308, 0x030A,
                                   0x0327, 0x0338, 0x05B0, 0x0E31, 0x3099, 0x309A};
  if (high < 0x60) {
    return static_cast<wchar_t>(low & 0x7F);
  }
  if (high < 0x70) {
    return kMarks[low % std::size(kMarks)];
  }
  if (high == 0x70) {
    return static_cast<wchar_t>(0x10000 + low * 0x1000);
  }
  return static_cast<wchar_t>(low | high << 8);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2 || size > 2048) {
    return 0;
  }
  const uint8_t selector = data[0];
  const UINT page = kAllPages[data[1] % std::size(kAllPages)];
  const char* bytes = reinterpret_cast<const char*>(data + 2);
  const int len = static_cast<int>(size - 2);

  static const DWORD kDecodeFlags[] = {0, MB_PRECOMPOSED, MB_ERR_INVALID_CHARS, MB_COMPOSITE};
  if (len > 0) {
    Decode(page, kDecodeFlags[selector & 3], bytes, len);
    // Up to the first NUL, as -1 asks.
    std::vector<char> terminated(bytes, bytes + len);
    terminated.push_back('\0');
    Decode(page, kDecodeFlags[(selector >> 2) & 3], terminated.data(), -1);
  }

  std::vector<wchar_t> units;
  for (int i = 0; i + 1 < len; i += 2) {
    units.push_back(Unit(static_cast<uint8_t>(bytes[i]), static_cast<uint8_t>(bytes[i + 1])));
  }
  if (units.empty()) {
    return 0;
  }
  // Without best fit, a unit that converts without the default character
  // decodes back to itself.
  for (wchar_t u : units) {
    char code[2];
    BOOL used = FALSE;
    wchar_t back = 0;
    int n = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, &u, 1, code, 2, nullptr, &used);
    if (n < 1 || (!used && (MultiByteToWideChar(page, 0, code, n, &back, 1) != 1 || back != u))) {
      std::abort();
    }
  }
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
  const DWORD flags = kEncodeFlags[(selector >> 4) & 7];
  const char* defaultChar = kDefaults[(selector >> 6) & 3];
  Encode(page, flags, units.data(), static_cast<int>(units.size()), defaultChar);
  units.push_back(0);
  Encode(page, flags, units.data(), -1, defaultChar);
  return 0;
}
