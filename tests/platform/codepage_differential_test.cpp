// Differential tests for the code-page conversions: MultiByteToWideChar and
// WideCharToMultiByte (block copies, per-span room checks, mark scans) against
// their reference forms, which convert one character at a time through the
// general code. Every answer must agree: the count, the last error, every
// unit or byte of the output buffer (sentinel-filled, with a guard after the
// stated size) and the used-default flag.
#include "common/code_pages.h"
#include "platform/codepage.h"
#include "platform/codepage_reference.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

using namespace qx::win;

namespace {

using qx::platform::MultiByteToWideCharReference;
using qx::platform::WideCharToMultiByteReference;

constexpr DWORD kUntouched = 0xDEADBEEF;
constexpr size_t kGuard = 20; // sentinel elements after the stated size
constexpr wchar_t kWideSentinel = 0x7F7F;
constexpr char kByteSentinel = '#';

using qxtest::kAllPages;

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
std::vector<int> Sizes(int need, std::mt19937& rng) {
  std::vector<int> sizes = {0, need, need + 17};
  if (need > 1) {
    sizes.push_back(need - 1);
    sizes.push_back(1);
    sizes.push_back(std::uniform_int_distribution<int>(1, need - 1)(rng));
  }
  return sizes;
}

void CompareDecode(UINT cp, DWORD flags, const std::string& bytes, int srclen, std::mt19937& rng) {
  const char* src = bytes.c_str();
  int need = MultiByteToWideCharReference(cp, flags, src, srclen, nullptr, 0);
  for (int size : Sizes(need, rng)) {
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

void CompareEncode(UINT cp, DWORD flags, const std::wstring& units, int srclen, LPCSTR defaultChar,
                   std::mt19937& rng) {
  const wchar_t* src = units.c_str();
  int need = WideCharToMultiByteReference(cp, flags, src, srclen, nullptr, 0, defaultChar, nullptr);
  for (int size : Sizes(need, rng)) {
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

// RandomBytes - text made of pieces that steer the fast paths: ASCII runs
// around the block length, high bytes, lead bytes with trails of every kind,
// NULs, and lead bytes at the end.
std::string RandomBytes(std::mt19937& rng) {
  auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  std::string s;
  for (int pieces = pick(0, 12); pieces > 0; --pieces) {
    switch (pick(0, 5)) {
    case 0: // an ASCII run
      for (int k = pick(1, 40); k > 0; --k) {
        s += static_cast<char>(pick(0x20, 0x7E));
      }
      break;
    case 1: // high bytes (lead bytes on the double-byte pages)
      for (int k = pick(1, 6); k > 0; --k) {
        s += static_cast<char>(pick(0x80, 0xFF));
      }
      break;
    case 2: // a likely pair: a common lead byte and a trail byte
      s += static_cast<char>(pick(0x81, 0x9F));
      s += static_cast<char>(pick(0x40, 0xFE));
      break;
    case 3:
      s += '\0';
      break;
    default: // any byte
      s += static_cast<char>(pick(0, 0xFF));
      break;
    }
  }
  if (s.empty() || pick(0, 3) == 0) {
    s += static_cast<char>(pick(0x81, 0xFE)); // a lead byte at the end, on most pages
  }
  return s;
}

// RandomUnits - text with ASCII runs, letters the pages have, nonspacing
// marks (alone, after bases, in clusters), CJK, units beyond the BMP,
// surrogates and NULs.
std::wstring RandomUnits(std::mt19937& rng) {
  auto pick = [&](uint32_t lo, uint32_t hi) {
    return std::uniform_int_distribution<uint32_t>(lo, hi)(rng);
  };
  std::wstring s;
  for (int pieces = static_cast<int>(pick(1, 14)); pieces > 0; --pieces) {
    switch (pick(0, 9)) {
    case 0:
    case 1: // an ASCII run
      for (uint32_t k = pick(1, 40); k > 0; --k) {
        s += static_cast<wchar_t>(pick(0x20, 0x7E));
      }
      break;
    case 2: // Latin-1 and Latin Extended letters
      s += static_cast<wchar_t>(pick(0xA0, 0x24F));
      break;
    case 3: // one to three marks
      for (uint32_t k = pick(1, 3); k > 0; --k) {
        static const wchar_t kMarks[] = {0x0300, 0x0301, 0x0302, 0x0303, 0x0308, 0x030A,
                                         0x0327, 0x0338, 0x05B0, 0x0E31, 0x3099, 0x309A};
        s += kMarks[pick(0, std::size(kMarks) - 1)];
      }
      break;
    case 4: // kana, kanji, hangul, fullwidth forms
      static const uint32_t kBlocks[][2] = {
          {0x3041, 0x30FF}, {0x4E00, 0x9FFF}, {0xAC00, 0xD7A3}, {0xFF01, 0xFF9F}};
      for (uint32_t k = pick(1, 8); k > 0; --k) {
        const auto& b = kBlocks[pick(0, 3)];
        s += static_cast<wchar_t>(pick(b[0], b[1]));
      }
      break;
    case 5: // Greek, Cyrillic, Hebrew, Arabic, Thai, Vietnamese
      s += static_cast<wchar_t>(pick(0x370, 0xE7F));
      break;
    case 6: // anything, surrogates included
      s += static_cast<wchar_t>(pick(1, 0xFFFF));
      break;
    case 7: // beyond the BMP, and a negative wchar_t
      s += pick(0, 1) == 0 ? static_cast<wchar_t>(pick(0x10000, 0x10FFFF)) : wchar_t(-2);
      break;
    case 8:
      s += L'\0';
      break;
    default: // punctuation with best fits
      static const wchar_t kPunct[] = {0x2018, 0x2019, 0x201C, 0x2026, 0x20AC,
                                       0x2122, 0x221E, 0xFF1F, 0x30FB, 0x00B7};
      s += kPunct[pick(0, std::size(kPunct) - 1)];
      break;
    }
  }
  return s;
}

// ---- Random texts -------------------------------------------------------------

TEST(CodePageDifferential, RandomBytesDecodeAlike) {
  std::mt19937 rng(20240611);
  const DWORD flags[] = {0,
                         MB_PRECOMPOSED,
                         MB_ERR_INVALID_CHARS,
                         MB_USEGLYPHCHARS,
                         MB_PRECOMPOSED | MB_ERR_INVALID_CHARS,
                         MB_COMPOSITE};
  for (int round = 0; round < 40; ++round) {
    for (UINT cp : kAllPages) {
      std::string bytes = RandomBytes(rng);
      DWORD f = flags[rng() % std::size(flags)];
      CompareDecode(cp, f, bytes, static_cast<int>(bytes.size()), rng);
      CompareDecode(cp, f, bytes, -1, rng); // up to the first NUL
      if (HasFatalFailure()) {
        return;
      }
    }
  }
}

TEST(CodePageDifferential, RandomUnitsEncodeAlike) {
  std::mt19937 rng(20240612);
  const DWORD flags[] = {0,
                         WC_COMPOSITECHECK | WC_DEFAULTCHAR,
                         WC_COMPOSITECHECK,
                         WC_COMPOSITECHECK | WC_DISCARDNS,
                         WC_COMPOSITECHECK | WC_SEPCHARS,
                         WC_DEFAULTCHAR,
                         WC_NO_BEST_FIT_CHARS,
                         WC_COMPOSITECHECK | WC_DEFAULTCHAR | WC_NO_BEST_FIT_CHARS};
  const char* const defaults[] = {nullptr, "_", "\x81\x45", "", "\x82"};
  for (int round = 0; round < 40; ++round) {
    for (UINT cp : kAllPages) {
      std::wstring units = RandomUnits(rng);
      DWORD f = flags[rng() % std::size(flags)];
      const char* def = defaults[rng() % std::size(defaults)];
      CompareEncode(cp, f, units, static_cast<int>(units.size()), def, rng);
      CompareEncode(cp, f, units, -1, def, rng);
      if (HasFatalFailure()) {
        return;
      }
    }
  }
}

// ---- Every byte, pair and unit in long texts ----------------------------------

TEST(CodePageDifferential, EveryByteAndPairInOneText) {
  std::mt19937 rng(7);
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
      CompareDecode(cp, flags, bytes, static_cast<int>(bytes.size()), rng);
    }
  }
}

TEST(CodePageDifferential, EveryUnitOfTheBmpInOneText) {
  std::mt19937 rng(11);
  std::wstring units;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) {
    units += static_cast<wchar_t>(u);
    if (u % 7 == 0) {
      units += L"abcdefghijklmnop"; // ASCII blocks between them
    }
  }
  for (UINT cp : kAllPages) {
    CompareEncode(cp, 0, units, static_cast<int>(units.size()), nullptr, rng);
    CompareEncode(cp, WC_COMPOSITECHECK | WC_DEFAULTCHAR, units, static_cast<int>(units.size()),
                  "_", rng);
  }
}

} // namespace
