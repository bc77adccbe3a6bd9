// Fuzz target for the code-page conversions: random bytes through
// MultiByteToWideChar and random code units through WideCharToMultiByte,
// each compared with its reference form (platform/codepage_reference.h),
// which converts one character at a time through the general code. For
// every output size from 0 up to a small bound, and the exact and a larger
// size, the count, the last error, the used-default flag and every element
// of the sentinel-filled buffer (with a guard after the stated size) must
// agree. Both are also held to the buffer rules built from the text
// converted a character at a time, the argument, page and flag checks come
// in their order, and CharNextExA and CharPrevExA walk as the lead bytes
// say. Each unit converted alone without best fit must come back. Once,
// before the first input, every code of every page is decoded and converted
// back, and the page's counts of valid codes and shared units must hold.
#include "common/code_pages.h"
#include "models/platform_codepage_compare.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
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

// ---- The buffer rules against the text converted a character at a time ----
//
// The comparisons above hold the fast paths to the reference forms, which
// share the argument checks, the output buffers and the results with them.
// Here the expected outcome is built from each character converted alone
// into a roomy buffer: the probe counts, a large enough buffer receives
// everything, a shorter one fails with ERROR_INSUFFICIENT_BUFFER and keeps
// the whole characters that fit, and a refused call writes nothing.

constexpr DWORD kUntouched = 0xDEADBEEF;
constexpr int kShortSizes = 8;

// The default characters of the double-byte pages, which a lead byte
// without its trail byte decodes to.
const std::map<UINT, wchar_t> kPageDefault = {{932, 0x30FB}, {936, '?'}, {949, '?'}, {950, '?'}};

template <typename T> struct Outcome {
  int ret;
  DWORD error;
  BOOL used;
  std::vector<T> buffer;
  bool operator==(const Outcome&) const = default;
};

// Pieces - a text's output a character at a time: `ends` after each
// character, `usedBy` whether the default character was used up to there.
template <typename T> struct Pieces {
  std::vector<T> out;
  std::vector<size_t> ends = {0};
  std::vector<bool> usedBy = {false};
  bool valid = true;    // every character passes MB_ERR_INVALID_CHARS
  bool partial = false; // a short buffer may keep part of a character

  void Add(const T* units, int n, bool used) {
    out.insert(out.end(), units, units + n);
    ends.push_back(out.size());
    usedBy.push_back(usedBy.back() || used);
  }
};

// Matches - whether `got` (a call with `size` elements) is what the pieces
// give; under WC_COMPOSITECHECK a short buffer may also keep part of a base
// and its marks (WC_SEPCHARS converts them one by one).
template <typename T>
bool Matches(const Pieces<T>& p, int size, bool wantUsed, T sentinel, const Outcome<T>& got) {
  const size_t need = p.out.size();
  Outcome<T> want{static_cast<int>(need), kUntouched, wantUsed ? p.usedBy.back() : 7,
                  std::vector<T>(static_cast<size_t>(size) + 8, sentinel)};
  if (size == 0) {
    return got == want;
  }
  if (static_cast<size_t>(size) >= need) {
    std::copy(p.out.begin(), p.out.end(), want.buffer.begin());
    return got == want;
  }
  size_t whole = 0; // characters that fit
  while (p.ends[whole + 1] <= static_cast<size_t>(size)) {
    ++whole;
  }
  const size_t most = p.partial ? static_cast<size_t>(size) : p.ends[whole];
  size_t kept = 0; // units written (one equal to the sentinel may count or not)
  while (kept < most && got.buffer[kept] == p.out[kept]) {
    ++kept;
  }
  const bool usedOk = !wantUsed || got.used == p.usedBy[whole] || got.used == p.usedBy[whole + 1];
  want.ret = 0;
  want.error = ERROR_INSUFFICIENT_BUFFER;
  want.used = got.used;
  std::copy(p.out.begin(), p.out.begin() + static_cast<std::ptrdiff_t>(kept), want.buffer.begin());
  return usedOk && kept >= p.ends[whole] && kept <= most && got == want;
}

// Refused - a call refused with `error`: 0, and nothing written.
template <typename T> bool Refused(DWORD error, T sentinel, const Outcome<T>& got) {
  return got == Outcome<T>{0, error, got.used, std::vector<T>(got.buffer.size(), sentinel)};
}

template <typename T, typename Call>
Outcome<T> Observe(int size, bool nullProbe, T sentinel, Call call) {
  Outcome<T> o{0, 0, 7, std::vector<T>(static_cast<size_t>(size) + 8, sentinel)};
  SetLastError(kUntouched);
  o.ret = call(size == 0 && nullProbe ? nullptr : o.buffer.data(), size, &o.used);
  o.error = GetLastError();
  return o;
}

// DecodePieces - n bytes a character at a time: a lead byte and the byte
// after it (unless that is missing or NUL: then the lead byte alone, the
// default character and invalid), or one byte.
Pieces<wchar_t> DecodePieces(UINT cp, DWORD flags, const char* src, size_t n) {
  Pieces<wchar_t> p;
  for (size_t i = 0; i < n;) {
    const bool lead = IsDBCSLeadByteEx(cp, static_cast<BYTE>(src[i]));
    const bool pair = lead && i + 1 < n && src[i + 1];
    const int len = pair ? 2 : 1;
    wchar_t units[8];
    const int got = MultiByteToWideChar(cp, flags & ~MB_ERR_INVALID_CHARS, src + i, len, units, 8);
    Check(got > 0 && (pair || !lead || units[0] == kPageDefault.at(cp)));
    p.Add(units, got, false);
    p.valid = p.valid && pair == lead &&
              MultiByteToWideChar(cp, MB_ERR_INVALID_CHARS, src + i, len, units, 8) == 1;
    i += static_cast<size_t>(len);
  }
  return p;
}

// EncodePieces - n units a unit at a time, or under WC_COMPOSITECHECK a
// unit and the nonspacing marks after it at a time.
Pieces<char> EncodePieces(UINT cp, DWORD flags, const wchar_t* src, size_t n, LPCSTR defaultChar) {
  Pieces<char> p;
  p.partial = (flags & WC_COMPOSITECHECK) != 0;
  for (size_t i = 0; i < n;) {
    size_t end = i + 1;
    while (p.partial && end < n &&
           qx::platform::IsNonSpacingMark(static_cast<uint32_t>(src[end]))) {
      ++end;
    }
    // Room for two bytes a unit: a piece may carry any number of marks.
    std::vector<char> bytes(2 * (end - i) + 2);
    BOOL used = FALSE;
    SetLastError(kUntouched);
    const int got = WideCharToMultiByte(cp, flags, src + i, static_cast<int>(end - i), bytes.data(),
                                        static_cast<int>(bytes.size()), defaultChar, &used);
    Check(got > 0 || GetLastError() == kUntouched); // WC_DISCARDNS drops a lone mark
    p.Add(bytes.data(), got, used != FALSE);
    i = end;
  }
  return p;
}

void DecodeContract(UINT cp, DWORD flags, const char* src, int srclen, size_t n) {
  const Pieces<wchar_t> p = DecodePieces(cp, flags, src, n);
  const bool refused = (flags & MB_ERR_INVALID_CHARS) != 0 && !p.valid;
  for (int size : qxtest::ConversionSizes(static_cast<int>(p.out.size()), kShortSizes)) {
    for (bool nullProbe : {true, false}) {
      auto got = Observe<wchar_t>(size, nullProbe, 0x7F7F, [&](LPWSTR dst, int m, LPBOOL) {
        return MultiByteToWideChar(cp, flags, src, srclen, dst, m);
      });
      Check(refused ? Refused<wchar_t>(ERROR_NO_UNICODE_TRANSLATION, 0x7F7F, got)
                    : Matches<wchar_t>(p, size, false, 0x7F7F, got));
    }
  }
}

void EncodeContract(UINT cp, DWORD flags, const wchar_t* src, int srclen, size_t n,
                    LPCSTR defaultChar) {
  const Pieces<char> p = EncodePieces(cp, flags, src, n, defaultChar);
  for (int size : qxtest::ConversionSizes(static_cast<int>(p.out.size()), kShortSizes)) {
    for (bool wantUsed : {true, false}) {
      auto got = Observe<char>(size, wantUsed, '#', [&](LPSTR dst, int m, LPBOOL used) {
        return WideCharToMultiByte(cp, flags, src, srclen, dst, m, defaultChar,
                                   wantUsed ? used : nullptr);
      });
      Check(Matches<char>(p, size, wantUsed, '#', got));
    }
  }
}

// ArgumentChecks - the calls `call(page, src, srclen, dst, dstlen)` that the
// argument and page checks refuse: no source or a length of 0, a negative
// size, a size without an output, the source as output, an unknown page.
template <typename In, typename Out, typename Call>
void ArgumentChecks(UINT cp, UINT noPage, const In* src, Out* dst, Call call) {
  call(cp, src, 0, dst, 4);
  call(cp, src, 1, dst, -1);
  call(cp, static_cast<const In*>(nullptr), 1, dst, 4);
  call(cp, src, 1, static_cast<Out*>(nullptr), 4);
  call(cp, reinterpret_cast<const In*>(dst), 1, dst, 4);
  call(noPage, src, 1, dst, 4);
}

// BadCalls - the argument checks, then the page, then the flags: a refused
// call returns 0, sets its error and writes nothing. `pick` chooses the
// page and the flag refused.
void BadCalls(UINT cp, const char* bytes, const wchar_t* units, uint8_t pick) {
  static const UINT kNoPages[] = {CP_MACCP, 42, 1200, 10000, 12345, 20127, 65001, 0xFFFFFFFF};
  const UINT noPage = kNoPages[pick & 7];
  const DWORD badMb = pick & 8 ? MB_PRECOMPOSED | MB_COMPOSITE : 0x10u << (pick >> 4);
  static const DWORD kBadWc[] = {WC_DISCARDNS | WC_SEPCHARS,
                                 WC_SEPCHARS | WC_DEFAULTCHAR,
                                 WC_DISCARDNS | WC_DEFAULTCHAR,
                                 WC_ERR_INVALID_CHARS,
                                 0x1,
                                 0x100,
                                 0x800,
                                 0x80000000};
  const DWORD badWc = kBadWc[pick >> 5] | (pick & 16 ? WC_COMPOSITECHECK : 0);
  wchar_t w[4];
  char b[4];
  auto mb = [&](UINT page, DWORD flags, LPCSTR src, int srclen, LPWSTR dst, int dstlen,
                DWORD error) {
    std::fill(std::begin(w), std::end(w), 0x7F7F);
    auto got = Observe<wchar_t>(0, true, 0x7F7F, [&](LPWSTR, int, LPBOOL) {
      return MultiByteToWideChar(page, flags, src, srclen, dst, dstlen);
    });
    Check(Refused<wchar_t>(error, 0x7F7F, got) && w[0] == 0x7F7F && w[3] == 0x7F7F);
  };
  auto wc = [&](UINT page, DWORD flags, LPCWSTR src, int srclen, LPSTR dst, int dstlen,
                DWORD error) {
    std::fill(std::begin(b), std::end(b), '#');
    auto got = Observe<char>(0, true, '#', [&](LPSTR, int, LPBOOL used) {
      return WideCharToMultiByte(page, flags, src, srclen, dst, dstlen, nullptr, used);
    });
    Check(Refused<char>(error, '#', got) && b[0] == '#' && b[3] == '#');
  };
  for (DWORD flags : {DWORD{0}, badMb, badMb | MB_ERR_INVALID_CHARS}) {
    ArgumentChecks(cp, noPage, bytes, w,
                   [&](UINT page, LPCSTR src, int srclen, LPWSTR dst, int dstlen) {
                     mb(page, flags, src, srclen, dst, dstlen, ERROR_INVALID_PARAMETER);
                   });
  }
  mb(cp, badMb, bytes, 1, w, 4, ERROR_INVALID_FLAGS);
  mb(cp, badMb | MB_ERR_INVALID_CHARS, "\x82", 1, w, 4, ERROR_INVALID_FLAGS);
  for (DWORD flags : {DWORD{0}, badWc}) {
    ArgumentChecks(cp, noPage, units, b,
                   [&](UINT page, LPCWSTR src, int srclen, LPSTR dst, int dstlen) {
                     wc(page, flags, src, srclen, dst, dstlen, ERROR_INVALID_PARAMETER);
                   });
  }
  wc(cp, badWc, units, 1, b, 4, ERROR_INVALID_FLAGS);
  SetLastError(kUntouched);
  Check(!IsDBCSLeadByteEx(noPage, 0x81) && GetLastError() == ERROR_INVALID_PARAMETER);
}

// Walk - CharNextExA and CharPrevExA over a NUL-terminated text: a
// character is a lead byte and the byte after it unless that is NUL, or
// one byte; CharPrevExA gives the start of the character before `p`.
void Walk(UINT cp, const char* s, size_t upTo) {
  const WORD page = static_cast<WORD>(cp);
  size_t start = 0;     // of the character that holds position i - 1
  size_t nextStart = 0; // of the character after it
  Check(CharNextExA(page, nullptr, 0) == nullptr && CharPrevExA(page, s, s, 0) == s);
  for (size_t i = 0; i <= upTo; ++i) {
    const bool pair = IsDBCSLeadByteEx(cp, static_cast<BYTE>(s[i])) && s[i] && s[i + 1];
    const size_t next = s[i] == 0 ? i : i + (pair ? 2 : 1);
    Check(CharNextExA(page, s + i, 0) == s + next);
    if (i > 0) {
      Check(CharPrevExA(page, s, s + i, 0) == s + start);
    }
    if (i == nextStart) {
      start = i;
      nextStart = next;
    }
    if (s[i] == 0) {
      break;
    }
  }
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
    DecodeContract(page, kDecodeFlags[selector & 3], bytes, len, static_cast<size_t>(len));
    const size_t upToNul = std::strlen(terminated.data()) + 1;
    DecodeContract(page, kDecodeFlags[(selector >> 2) & 3], terminated.data(), -1 - len % 5,
                   upToNul);
    Walk(page, terminated.data(), std::min<size_t>(upToNul, 64));
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
  EncodeContract(page, flags, units.data(), static_cast<int>(units.size()), units.size(),
                 defaultChar);
  units.push_back(0);
  Encode(page, flags, units.data(), -1, defaultChar);
  EncodeContract(page, flags, units.data(), -1 - len % 3, std::wcslen(units.data()) + 1,
                 defaultChar);
  BadCalls(page, bytes, units.data(), data[size - 1]);
  return 0;
}
