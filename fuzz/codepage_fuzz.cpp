// Fuzz target for the code-page conversions: random bytes through
// MultiByteToWideChar and random code units through WideCharToMultiByte,
// each compared with its reference form (platform/codepage_reference.h),
// which converts one character at a time through the general code. For
// every output size from 0 up to a small bound, and the exact and a larger
// size, the count, the last error, the used-default flag and every element
// of the sentinel-filled buffer (with a guard after the stated size) must
// agree. Each unit converted alone without best fit must come back. Once,
// before the first input, every code of every page is decoded and converted
// back, and the page's counts of valid codes and shared units must hold.
#include "common/code_pages.h"
#include "models/platform_codepage_compare.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <string>
#include <utility>
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

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

struct PageCounts {
  UINT cp;
  int validCodes;  // bytes and pairs that MB_ERR_INVALID_CHARS accepts
  int sharedUnits; // units that two or more valid codes decode to
};

// The published table plus Windows' additions (C1 controls, user-defined
// rows), as counted in the data's README; in the order of kAllPages.
const PageCounts kPageCounts[] = {
    {437, 256, 0},    {850, 256, 0},   {852, 256, 0},   {855, 256, 0},    {857, 253, 0},
    {860, 256, 0},    {861, 256, 0},   {863, 256, 0},   {864, 250, 0},    {865, 256, 0},
    {869, 247, 0},    {874, 248, 0},   {1250, 256, 0},  {1251, 256, 0},   {1252, 256, 0},
    {1253, 253, 0},   {1254, 256, 0},  {1255, 246, 0},  {1256, 256, 0},   {1257, 254, 0},
    {1258, 256, 0},   {28591, 256, 0}, {28592, 256, 0}, {28593, 249, 0},  {28594, 256, 0},
    {28595, 256, 0},  {28596, 211, 0}, {28597, 253, 0}, {28598, 220, 0},  {28599, 256, 0},
    {932, 9796, 396}, {936, 24069, 0}, {949, 17365, 0}, {950, 19849, 10},
};

// EveryCode - decodes every code (a byte, or a lead byte and a trail byte)
// of a page: the counts above. Back without best fit, each unit a valid code
// gives converts to a code that decodes to it, and (best fit or not) a unit
// that only one code gives, to that code.
void EveryCode(const PageCounts& page) {
  std::map<wchar_t, std::pair<std::vector<std::string>, int>> codesOf; // all codes, valid ones
  for (int b = 0; b < 256; ++b) {
    const bool lead = IsDBCSLeadByteEx(page.cp, static_cast<BYTE>(b));
    for (int trail = lead ? 1 : 0; trail < (lead ? 256 : 1); ++trail) {
      const char bytes[2] = {static_cast<char>(b), static_cast<char>(trail)};
      const int len = lead ? 2 : 1;
      wchar_t w[2] = {};
      Check(MultiByteToWideChar(page.cp, 0, bytes, len, w, 2) == 1);
      bool ok = MultiByteToWideChar(page.cp, MB_ERR_INVALID_CHARS, bytes, len, w, 2) == 1;
      codesOf[w[0]].first.emplace_back(bytes, len);
      codesOf[w[0]].second += ok;
    }
  }
  int valid = 0, shared = 0;
  for (const auto& [unit, codes] : codesOf) {
    valid += codes.second;
    shared += codes.second > 1;
    char back[4] = {'#', '#', '#', '#'};
    if (codes.second > 0) {
      BOOL used = TRUE;
      int n = WideCharToMultiByte(page.cp, WC_NO_BEST_FIT_CHARS, &unit, 1, back, 4, nullptr, &used);
      wchar_t again = 0;
      Check(!used && MultiByteToWideChar(page.cp, 0, back, n, &again, 1) == 1 && again == unit &&
            back[n] == '#');
    }
    if (codes.first.size() == 1 && unit != '?' && unit != 0x30FB) {
      int n = WideCharToMultiByte(page.cp, 0, &unit, 1, back, 2, nullptr, nullptr);
      Check(std::string(back, static_cast<size_t>(n)) == codes.first[0]);
    }
  }
  Check(valid == page.validCodes && shared == page.sharedUnits);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool everyCode = [] {
    Check(std::size(kPageCounts) == std::size(kAllPages));
    for (size_t i = 0; i < std::size(kPageCounts); ++i) {
      Check(kPageCounts[i].cp == kAllPages[i]);
      EveryCode(kPageCounts[i]);
    }
    return true;
  }();
  (void)everyCode;
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
