// Tests for the code-page calls: MultiByteToWideChar, WideCharToMultiByte and
// the lead-byte and character-walking calls, against the Windows behaviour
// documented in docs/codepages.md.
#include "common/code_pages.h"
#include "platform/codepage.h"
#include "platform/codepage_tables.h"

#include "qxutil/winlocale.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

using namespace qx::win;

namespace {

using namespace std::string_view_literals;

constexpr DWORD kUntouched = 0xDEADBEEF;
constexpr wchar_t kWideSentinel = 0x7F7F;
constexpr char kByteSentinel = '#';
constexpr int kNoUsedFlag = -1; // pass no lpUsedDefaultChar

using qxtest::kAllPages;

using PinnedLocale = qxtest::ScopedThreadLocale;

// ---- MultiByteToWideChar: conformance table ---------------------------------

struct MbCase {
  const char* what;
  UINT cp;
  DWORD flags;
  std::string_view input; // passed with srclen (the view may hold NULs)
  int srclen;             // kViewLength: the view's length
  int dstlen;             // the output buffer holds 8 units; 0 probes
  std::vector<wchar_t> written;
  int ret;
  DWORD error;
};

constexpr int kViewLength = 0x7FFF;

// clang-format off
const MbCase kMbCases[] = {
    // Lengths, the probe and short buffers.
    {"ascii", 1252, 0, "abc", kViewLength, 8, {'a', 'b', 'c'}, 3, kUntouched},
    {"length -1 takes the terminator", 1252, 0, "abc", -1, 8, {'a', 'b', 'c', 0}, 4, kUntouched},
    {"any negative length", 1252, 0, "abc", -7, 8, {'a', 'b', 'c', 0}, 4, kUntouched},
    {"embedded NUL", 1252, 0, std::string_view("a\0b", 3), kViewLength, 8, {'a', 0, 'b'}, 3,
     kUntouched},
    {"probe", 1252, 0, "abc", -1, 0, {}, 4, kUntouched},
    {"short buffer keeps what fits", 1252, 0, "abc", -1, 3, {'a', 'b', 'c'}, 0,
     ERROR_INSUFFICIENT_BUFFER},
    {"probe of double-byte text", 932, 0, "\x82\xA0x\x82\xA2", kViewLength, 0, {}, 3, kUntouched},
    {"short buffer, double-byte", 932, 0, "\x82\xA0\x82\xA2", kViewLength, 1, {0x3042}, 0,
     ERROR_INSUFFICIENT_BUFFER},
    // Single-byte pages: Windows' additions to the published tables.
    {"1252 euro and C1 bytes", 1252, 0, "\x80\x81\x90\x9F", kViewLength, 8,
     {0x20AC, 0x0081, 0x0090, 0x0178}, 4, kUntouched},
    {"1252 C1 byte is valid", 1252, MB_ERR_INVALID_CHARS, "\x90", kViewLength, 8, {0x0090}, 1,
     kUntouched},
    {"1253 placeholder byte", 1253, 0, "\xAA", kViewLength, 8, {0xF8F9}, 1, kUntouched},
    {"1253 placeholder is invalid", 1253, MB_ERR_INVALID_CHARS, "a\xAA", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"874 placeholder is invalid", 874, MB_ERR_INVALID_CHARS, "\xDD", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"1255 0xCA is a point", 1255, MB_ERR_INVALID_CHARS, "\xCA", kViewLength, 8, {0x05BA}, 1,
     kUntouched},
    {"1257 placeholder is invalid", 1257, MB_ERR_INVALID_CHARS, "\xA5", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"'?' is its own code", 1252, MB_ERR_INVALID_CHARS, "?", kViewLength, 8, {'?'}, 1, kUntouched},
    {"invalid check precedes the size check", 1253, MB_ERR_INVALID_CHARS, "abc\xAA", kViewLength, 1,
     {}, 0, ERROR_NO_UNICODE_TRANSLATION},
    // Pages without Windows' additions: undefined bytes are the default character.
    {"28593 undefined byte", 28593, 0, "\xA5", kViewLength, 8, {'?'}, 1, kUntouched},
    {"28593 undefined byte is invalid", 28593, MB_ERR_INVALID_CHARS, "\xA5", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"857 undefined byte", 857, 0, "\xD5", kViewLength, 8, {'?'}, 1, kUntouched},
    {"28591 C1 and 0xFF", 28591, 0, "\x80\xFF", kViewLength, 8, {0x0080, 0x00FF}, 2, kUntouched},
    {"437 keeps controls, 0xE6 is micro", 437, 0, "\x1A\x7F\xE6", kViewLength, 8,
     {0x001A, 0x007F, 0x00B5}, 3, kUntouched},
    {"864 percent", 864, 0, "%", kViewLength, 8, {0x066A}, 1, kUntouched},
    // Double-byte pages.
    {"932 hiragana", 932, 0, "\x82\xA0", kViewLength, 8, {0x3042}, 1, kUntouched},
    {"932 half-width katakana", 932, 0, "\xB1", kViewLength, 8, {0xFF71}, 1, kUntouched},
    {"932 lead byte at the end", 932, 0, "\x82", kViewLength, 8, {0x30FB}, 1, kUntouched},
    {"932 lead byte at the end is invalid", 932, MB_ERR_INVALID_CHARS, "\x82", kViewLength, 8, {},
     0, ERROR_NO_UNICODE_TRANSLATION},
    {"932 lead byte before NUL", 932, 0, std::string_view("\x82\0x", 3), kViewLength, 8,
     {0x30FB, 0, 'x'}, 3, kUntouched},
    {"932 lead byte before the terminator", 932, 0, "a\x82", -1, 8, {'a', 0x30FB, 0}, 3,
     kUntouched},
    {"932 lead byte and an invalid trail", 932, 0, "\x81\x20z", kViewLength, 8, {0x30FB, 'z'}, 2,
     kUntouched},
    {"932 invalid trail is invalid", 932, MB_ERR_INVALID_CHARS, "\x81\x20", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"932 default character's own code", 932, MB_ERR_INVALID_CHARS, "\x81\x45", kViewLength, 8,
     {0x30FB}, 1, kUntouched},
    {"932 lead byte without a row", 932, 0, "\x85\x40", kViewLength, 8, {0x30FB}, 1, kUntouched},
    {"932 lead byte without a row is invalid", 932, MB_ERR_INVALID_CHARS, "\x85\x40", kViewLength,
     8, {}, 0, ERROR_NO_UNICODE_TRANSLATION},
    {"932 user-defined row", 932, MB_ERR_INVALID_CHARS, "\xF0\x40\xF9\xFC", kViewLength, 8,
     {0xE000, 0xE757}, 2, kUntouched},
    {"932 NEC and IBM rows", 932, 0, "\x87\x90\xED\x40\xFA\x40", kViewLength, 8,
     {0x2252, 0x7E8A, 0x2170}, 3, kUntouched},
    {"932 0x80 is valid", 932, MB_ERR_INVALID_CHARS, "\x80", kViewLength, 8, {0x0080}, 1,
     kUntouched},
    {"932 0xFE placeholder is invalid", 932, MB_ERR_INVALID_CHARS, "\xFE", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"932 0xA0 placeholder", 932, 0, "\xA0\xFD", kViewLength, 8, {0xF8F0, 0xF8F1}, 2, kUntouched},
    {"936 euro byte", 936, 0, "\x80", kViewLength, 8, {0x20AC}, 1, kUntouched},
    {"936 cut pair", 936, 0, "\xBF\xB4\xC7", kViewLength, 8, {0x770B, '?'}, 2, kUntouched},
    {"936 cut pair is invalid", 936, MB_ERR_INVALID_CHARS, "\xBF\xB4\xC7", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"936 0xFF placeholder is invalid", 936, MB_ERR_INVALID_CHARS, "\xFF", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"949 euro", 949, 0, "\xA2\xE6", kViewLength, 8, {0x20AC}, 1, kUntouched},
    {"949 hangul", 949, 0, "\xB0\xA1", kViewLength, 8, {0xAC00}, 1, kUntouched},
    {"949 0xFF placeholder is invalid", 949, MB_ERR_INVALID_CHARS, "\xFF", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    {"950 euro and ideographs", 950, 0, "\xA3\xE1\xB5\x48\xA9\xD2", kViewLength, 8,
     {0x20AC, 0x7119, 0x6240}, 3, kUntouched},
    {"950 0xFF placeholder is invalid", 950, MB_ERR_INVALID_CHARS, "\xFF", kViewLength, 8, {}, 0,
     ERROR_NO_UNICODE_TRANSLATION},
    // Flags.
    {"MB_PRECOMPOSED is the default form", 1252, MB_PRECOMPOSED, "\xE9", kViewLength, 8, {0x00E9},
     1, kUntouched},
    {"MB_COMPOSITE decomposes", 1252, MB_COMPOSITE, "\xE9z", kViewLength, 8, {'e', 0x0301, 'z'}, 3,
     kUntouched},
    {"MB_COMPOSITE nests", 1253, MB_COMPOSITE, "\xC0", kViewLength, 8, {0x03B9, 0x0308, 0x0301}, 3,
     kUntouched},
    {"MB_COMPOSITE horn", 1258, MB_COMPOSITE, "\xD5", kViewLength, 8, {'O', 0x031B}, 2, kUntouched},
    {"MB_COMPOSITE probe", 1250, MB_COMPOSITE, "\x8A\xE8", kViewLength, 0, {}, 4, kUntouched},
    {"MB_COMPOSITE keeps whole characters", 1252, MB_COMPOSITE, "a\xE9", kViewLength, 2, {'a'}, 0,
     ERROR_INSUFFICIENT_BUFFER},
    {"MB_USEGLYPHCHARS is accepted", 437, MB_USEGLYPHCHARS, "\x01", kViewLength, 8, {0x0001}, 1,
     kUntouched},
    {"both forms", 1252, MB_PRECOMPOSED | MB_COMPOSITE, "a", kViewLength, 8, {}, 0,
     ERROR_INVALID_FLAGS},
    {"unknown flag", 1252, 0x10, "a", kViewLength, 8, {}, 0, ERROR_INVALID_FLAGS},
    // Bad arguments.
    {"zero length", 1252, 0, "a", 0, 8, {}, 0, ERROR_INVALID_PARAMETER},
    {"negative size", 1252, 0, "a", 1, -1, {}, 0, ERROR_INVALID_PARAMETER},
    {"unknown page", 12345, 0, "a", 1, 8, {}, 0, ERROR_INVALID_PARAMETER},
    {"CP_MACCP", 2, 0, "a", 1, 8, {}, 0, ERROR_INVALID_PARAMETER},
    {"UTF-8 is not provided", 65001, 0, "a", 1, 8, {}, 0, ERROR_INVALID_PARAMETER},
    {"unknown page before flags", 12345, 0x10, "a", 1, 8, {}, 0, ERROR_INVALID_PARAMETER},
};
// clang-format on

TEST(MultiByteToWideChar, ConformanceTable) {
  for (const MbCase& c : kMbCases) {
    SCOPED_TRACE(c.what);
    wchar_t buf[12];
    std::fill(std::begin(buf), std::end(buf), kWideSentinel);
    int srclen = c.srclen == kViewLength ? static_cast<int>(c.input.size()) : c.srclen;
    SetLastError(kUntouched);
    int ret = MultiByteToWideChar(c.cp, c.flags, c.input.data(), srclen, buf, c.dstlen);
    EXPECT_EQ(ret, c.ret);
    EXPECT_EQ(GetLastError(), c.error);
    for (size_t i = 0; i < std::size(buf); ++i) {
      wchar_t want = i < c.written.size() ? c.written[i] : kWideSentinel;
      EXPECT_EQ(static_cast<unsigned>(buf[i]), static_cast<unsigned>(want)) << "unit " << i;
    }
  }
}

TEST(MultiByteToWideChar, PointerArguments) {
  wchar_t buf[4] = {kWideSentinel, kWideSentinel, kWideSentinel, kWideSentinel};
  struct {
    const char* what;
    LPCSTR src;
    LPWSTR dst;
    int dstlen;
  } const cases[] = {
      {"null source", nullptr, buf, 4},
      {"null output with a size", "a", nullptr, 4},
      {"same buffer", reinterpret_cast<LPCSTR>(buf), buf, 4},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    SetLastError(kUntouched);
    EXPECT_EQ(MultiByteToWideChar(1252, 0, c.src, 1, c.dst, c.dstlen), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
  EXPECT_EQ(buf[0], kWideSentinel);
  SetLastError(kUntouched);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "ab", 2, nullptr, 0), 2); // probe without a buffer
  EXPECT_EQ(GetLastError(), kUntouched);
}

// ---- WideCharToMultiByte: conformance table ---------------------------------

struct WcCase {
  const char* what;
  UINT cp;
  DWORD flags;
  std::vector<wchar_t> input; // passed with srclen
  int srclen;                 // kViewLength: the input's size
  int dstlen;                 // the output buffer holds 12 bytes; 0 probes
  const char* defaultChar;
  std::string_view written;
  int ret;
  DWORD error;
  int used; // expected *lpUsedDefaultChar, or kNoUsedFlag to pass none
};

// clang-format off
const WcCase kWcCases[] = {
    // Lengths, the probe and short buffers.
    {"ascii", 1252, 0, {'a', 'b', 'c', 0}, -1, 12, nullptr, "abc\0"sv, 4, kUntouched, FALSE},
    {"ascii, fast path", 1252, 0, {'a', 'b', 'c', 0}, -1, 12, nullptr, "abc\0"sv, 4, kUntouched,
     kNoUsedFlag},
    {"length stops before the terminator", 1252, 0, {'a', 'b', 'c', 0}, 2, 12, nullptr, "ab", 2,
     kUntouched, FALSE},
    {"probe", 1252, 0, {0x0440, 0}, -1, 0, nullptr, "", 2, kUntouched, TRUE},
    {"short buffer keeps what fits", 1252, 0, {'T', 'h', 0x0440, 'i', 0}, -1, 1, nullptr, "T", 0,
     ERROR_INSUFFICIENT_BUFFER, FALSE},
    {"short buffer, fast path", 1252, 0, {'T', 'h', 0}, -1, 2, nullptr, "Th", 0,
     ERROR_INSUFFICIENT_BUFFER, kNoUsedFlag},
    {"eight ASCII units at a time", 1252, 0, {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 0xE9, 0x263A},
     10, 12, nullptr, "abcdefgh\xE9?", 10, kUntouched, kNoUsedFlag},
    {"a block with one non-ASCII unit", 1252, 0, {'a', 'b', 'c', 0xE9, 'd', 'e', 'f', 'g', 'h'}, 9,
     12, nullptr, "abc\xE9" "defgh", 9, kUntouched, kNoUsedFlag},
    {"864 has no ASCII percent", 864, 0, {'%', '%', '%', '%', '%', '%', '%', '%'}, 8, 12, nullptr,
     "????????", 8, kUntouched, kNoUsedFlag},
    // Default characters.
    {"unmappable", 1252, 0, {'T', 'h', 0x0440, 'i', 0}, -1, 12, nullptr, "Th?i\0"sv, 5, kUntouched,
     TRUE},
    {"caller's default", 1252, 0, {'T', 0x0440, 0}, -1, 12, "_", "T_\0"sv, 3, kUntouched, TRUE},
    {"caller's default, first byte only", 1252, 0, {0x0440}, 1, 12, "_x", "_", 1, kUntouched, TRUE},
    {"beyond the BMP", 1252, 0, {'a', 0x1F600, 'b'}, 3, 12, nullptr, "a?b", 3, kUntouched, TRUE},
    {"lone surrogate", 1252, 0, {0xD800}, 1, 12, nullptr, "?", 1, kUntouched, TRUE},
    {"fullwidth '?' is the default in disguise", 1252, 0, {0xFF1F}, 1, 12, "_", "_", 1, kUntouched,
     TRUE},
    {"'?' itself", 1252, 0, {'?'}, 1, 12, "_", "?", 1, kUntouched, FALSE},
    // Best fit.
    {"1252 best fit", 1252, 0, {0xFF21, 0x221E, 0x0101, 0x0301}, 4, 12, nullptr, "A8a\xB4", 4,
     kUntouched, FALSE},
    {"1252 no best fit", 1252, WC_NO_BEST_FIT_CHARS, {0xFF21, 0x221E, 0x00E9}, 3, 12, nullptr,
     "??\xE9", 3, kUntouched, TRUE},
    {"1251 best fit", 1251, 0, {0x0440, 0x00E4}, 2, 12, nullptr, "\xF0""a", 2, kUntouched, FALSE},
    {"1251 no best fit", 1251, WC_NO_BEST_FIT_CHARS, {0x0440, 0x00E4}, 2, 12, nullptr, "\xF0?", 2,
     kUntouched, TRUE},
    {"437 has no best fit", 437, 0, {0x00E9, 0xFF21}, 2, 12, nullptr, "\x82?", 2, kUntouched, TRUE},
    {"28591 has no best fit", 28591, 0, {0x00FF, 0x0100}, 2, 12, nullptr, "\xFF?", 2, kUntouched,
     TRUE},
    {"932 fullwidth tilde", 932, 0, {0xFF5E}, 1, 12, nullptr, "\x81\x60", 2, kUntouched, FALSE},
    // Double-byte pages.
    {"950 ideographs", 950, 0, {0x7119, 0x6240, 0}, -1, 12, nullptr, "\xB5H\xA9\xD2\0"sv, 5,
     kUntouched, FALSE},
    {"950 no half character", 950, 0, {0x7119}, 1, 1, nullptr, "", 0, ERROR_INSUFFICIENT_BUFFER,
     FALSE},
    {"950 probe", 950, 0, {0x7119}, 1, 0, nullptr, "", 2, kUntouched, FALSE},
    {"932 short buffer keeps whole characters", 932, 0, {0x3042, 0x3044}, 2, 3, nullptr, "\x82\xA0",
     0, ERROR_INSUFFICIENT_BUFFER, FALSE},
    {"932 mixed widths", 932, 0, {'a', 0x0440, 0xFF71}, 3, 12, nullptr, "a\x84\x82\xB1", 4,
     kUntouched, FALSE},
    {"932 shared unit takes the JIS X 0208 code", 932, WC_NO_BEST_FIT_CHARS, {0x2252}, 1, 12,
     nullptr, "\x81\xE0", 2, kUntouched, FALSE},
    {"932 unmappable", 932, 0, {0x0E01}, 1, 12, nullptr, "?", 1, kUntouched, TRUE},
    {"932 two-byte default", 932, 0, {0x0E01}, 1, 12, "\x81\x45", "\x81\x45", 2, kUntouched, TRUE},
    {"932 one-byte default", 932, 0, {0x0E01}, 1, 12, "*", "*", 1, kUntouched, TRUE},
    {"936 middle dot", 936, 0, {0x00B7}, 1, 12, nullptr, "\xA1\xA4", 2, kUntouched, FALSE},
    {"949 hangul", 949, 0, {0xAC00, 0x20AC}, 2, 12, nullptr, "\xB0\xA1\xA2\xE6", 4, kUntouched,
     FALSE},
    // WC_COMPOSITECHECK and its exception flags.
    {"composes", 1252, WC_COMPOSITECHECK, {'e', 0x0301, 'x'}, 3, 12, nullptr, "\xE9x", 2,
     kUntouched, FALSE},
    {"composes the longest the page has", 1252, WC_COMPOSITECHECK, {'a', 0x0302, 0x0301}, 3, 12,
     nullptr, "\xE2\xB4", 2, kUntouched, FALSE},
    {"1258 composes", 1258, WC_COMPOSITECHECK, {'a', 0x0301}, 2, 12, nullptr, "\xE1", 1, kUntouched,
     FALSE},
    {"1258 keeps a mark the page has", 1258, 0, {'a', 0x0301}, 2, 12, nullptr, "a\xEC", 2,
     kUntouched, FALSE},
    {"separate characters by default", 1252, WC_COMPOSITECHECK, {'q', 0x0301}, 2, 12, nullptr,
     "q\xB4", 2, kUntouched, FALSE},
    {"WC_SEPCHARS", 1252, WC_COMPOSITECHECK | WC_SEPCHARS | WC_NO_BEST_FIT_CHARS, {'q', 0x0301}, 2,
     12, nullptr, "q?", 2, kUntouched, TRUE},
    {"WC_DISCARDNS", 1252, WC_COMPOSITECHECK | WC_DISCARDNS, {'q', 0x0301, 0x0302, 'z'}, 4, 12,
     nullptr, "qz", 2, kUntouched, FALSE},
    {"WC_DEFAULTCHAR", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR, {'q', 0x0301, 'z'}, 3, 12, "_",
     "_z", 2, kUntouched, TRUE},
    {"WC_DEFAULTCHAR, a mark that starts the text", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR,
     {0x0301, 'z'}, 2, 12, nullptr, "?z", 2, kUntouched, TRUE},
    {"composed character the page lacks", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR, {'a', 0x0304},
     2, 12, nullptr, "a", 1, kUntouched, FALSE},
    {"composed character the page lacks, no best fit", 1252,
     WC_COMPOSITECHECK | WC_DEFAULTCHAR | WC_NO_BEST_FIT_CHARS, {'a', 0x0304}, 2, 12, nullptr, "?",
     1, kUntouched, TRUE},
    {"WC_DEFAULTCHAR alone has no effect", 1252, WC_DEFAULTCHAR, {'e', 0x0301}, 2, 12, nullptr,
     "e\xB4", 2, kUntouched, FALSE},
    {"composes on a double-byte page", 932, WC_COMPOSITECHECK, {0x304B, 0x3099}, 2, 12, nullptr,
     "\x82\xAA", 2, kUntouched, FALSE},
    // Flags and bad arguments.
    {"two exception flags", 1252, WC_COMPOSITECHECK | WC_DISCARDNS | WC_SEPCHARS, {'a'}, 1, 12,
     nullptr, "", 0, ERROR_INVALID_FLAGS, kNoUsedFlag},
    {"WC_ERR_INVALID_CHARS is for UTF-8", 1252, WC_ERR_INVALID_CHARS, {'a'}, 1, 12, nullptr, "", 0,
     ERROR_INVALID_FLAGS, kNoUsedFlag},
    {"unknown flag", 1252, 0x1, {'a'}, 1, 12, nullptr, "", 0, ERROR_INVALID_FLAGS, kNoUsedFlag},
    {"zero length", 1252, 0, {'a'}, 0, 12, nullptr, "", 0, ERROR_INVALID_PARAMETER, kNoUsedFlag},
    {"negative size", 1252, 0, {'a'}, 1, -1, nullptr, "", 0, ERROR_INVALID_PARAMETER, kNoUsedFlag},
    {"unknown page", 1200, 0, {'a'}, 1, 12, nullptr, "", 0, ERROR_INVALID_PARAMETER, kNoUsedFlag},
};
// clang-format on

TEST(WideCharToMultiByte, ConformanceTable) {
  for (const WcCase& c : kWcCases) {
    SCOPED_TRACE(c.what);
    char buf[16];
    std::fill(std::begin(buf), std::end(buf), kByteSentinel);
    int srclen = c.srclen == kViewLength ? static_cast<int>(c.input.size()) : c.srclen;
    BOOL used = 7;
    SetLastError(kUntouched);
    int ret = WideCharToMultiByte(c.cp, c.flags, c.input.data(), srclen, buf, c.dstlen,
                                  c.defaultChar, c.used == kNoUsedFlag ? nullptr : &used);
    EXPECT_EQ(ret, c.ret);
    EXPECT_EQ(GetLastError(), c.error);
    if (c.used != kNoUsedFlag) {
      EXPECT_EQ(used, c.used);
    }
    for (size_t i = 0; i < std::size(buf); ++i) {
      char want = i < c.written.size() ? c.written[i] : kByteSentinel;
      EXPECT_EQ(static_cast<unsigned char>(buf[i]), static_cast<unsigned char>(want))
          << "byte " << i;
    }
  }
}

TEST(WideCharToMultiByte, PointerArguments) {
  char buf[8] = "#######";
  const wchar_t text[] = L"ab";
  SetLastError(kUntouched);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, nullptr, 1, buf, 8, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  SetLastError(kUntouched);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, text, 2, nullptr, 8, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  wchar_t same[4] = L"ab";
  SetLastError(kUntouched);
  EXPECT_EQ(
      WideCharToMultiByte(1252, 0, same, 2, reinterpret_cast<LPSTR>(same), 8, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  EXPECT_STREQ(buf, "#######");
  EXPECT_EQ(WideCharToMultiByte(1252, 0, text, -1, nullptr, 0, nullptr, nullptr), 3);
}

// ---- Round trips over every code of every page ------------------------------

struct PageCounts {
  UINT cp;
  int validCodes;  // bytes and pairs that MB_ERR_INVALID_CHARS accepts
  int sharedUnits; // units that two or more valid codes decode to
};

// Bytes and pairs each page decodes: the published table plus Windows'
// additions (C1 controls, user-defined rows), as counted in the data's README.
// clang-format off
const PageCounts kPageCounts[] = {
    {437, 256, 0},    {850, 256, 0},   {852, 256, 0},   {855, 256, 0},    {857, 253, 0},
    {860, 256, 0},    {861, 256, 0},   {863, 256, 0},   {864, 250, 0},    {865, 256, 0},
    {869, 247, 0},    {874, 248, 0},   {1250, 256, 0},  {1251, 256, 0},   {1252, 256, 0},
    {1253, 253, 0},   {1254, 256, 0},  {1255, 246, 0},  {1256, 256, 0},   {1257, 254, 0},
    {1258, 256, 0},   {28591, 256, 0}, {28592, 256, 0}, {28593, 249, 0},  {28594, 256, 0},
    {28595, 256, 0},  {28596, 211, 0}, {28597, 253, 0}, {28598, 220, 0},  {28599, 256, 0},
    {932, 9796, 396}, {936, 24069, 0}, {949, 17365, 0}, {950, 19849, 10},
};
// clang-format on

// Every code (single byte, or lead and trail) of a page.
std::vector<std::string> AllCodes(UINT cp) {
  std::vector<std::string> codes;
  for (int b = 0; b < 256; ++b) {
    if (!IsDBCSLeadByteEx(cp, static_cast<BYTE>(b))) {
      codes.emplace_back(1, static_cast<char>(b));
      continue;
    }
    for (int trail = 1; trail < 256; ++trail) {
      codes.push_back({static_cast<char>(b), static_cast<char>(trail)});
    }
  }
  return codes;
}

TEST(CodePageRoundTrip, EveryCodeOfEveryPage) {
  for (const PageCounts& page : kPageCounts) {
    SCOPED_TRACE(page.cp);
    ASSERT_TRUE(IsValidCodePage(page.cp));
    std::map<wchar_t, int> decodedFrom;
    int valid = 0;
    for (const std::string& code : AllCodes(page.cp)) {
      wchar_t w[2] = {kWideSentinel, kWideSentinel};
      int len = static_cast<int>(code.size());
      ASSERT_EQ(MultiByteToWideChar(page.cp, 0, code.data(), len, w, 2), 1);
      if (MultiByteToWideChar(page.cp, MB_ERR_INVALID_CHARS, code.data(), len, w, 2) != 1) {
        continue;
      }
      ++valid;
      ++decodedFrom[w[0]];
      // Back without best fit: the same code, or (for a unit several codes
      // share) one that decodes to the same unit.
      char back[4] = {kByteSentinel, kByteSentinel, kByteSentinel, kByteSentinel};
      BOOL used = TRUE;
      int n = WideCharToMultiByte(page.cp, WC_NO_BEST_FIT_CHARS, w, 1, back, 4, nullptr, &used);
      ASSERT_FALSE(used) << std::hex << "code 0x" << (static_cast<unsigned>(code[0]) & 0xFF);
      wchar_t again = 0;
      ASSERT_EQ(MultiByteToWideChar(page.cp, 0, back, n, &again, 1), 1);
      EXPECT_EQ(again, w[0]);
      EXPECT_EQ(back[n], kByteSentinel);
    }
    int shared = 0;
    for (const auto& [unit, count] : decodedFrom) {
      shared += count > 1 ? 1 : 0;
    }
    EXPECT_EQ(valid, page.validCodes);
    EXPECT_EQ(shared, page.sharedUnits);
  }
}

TEST(CodePageRoundTrip, UniqueCodesComeBackUnchanged) {
  for (const PageCounts& page : kPageCounts) {
    SCOPED_TRACE(page.cp);
    std::map<wchar_t, std::vector<std::string>> codesOf;
    for (const std::string& code : AllCodes(page.cp)) {
      wchar_t w = 0;
      int len = static_cast<int>(code.size());
      if (MultiByteToWideChar(page.cp, 0, code.data(), len, &w, 1) == 1 && w != '?' &&
          w != 0x30FB) {
        codesOf[w].push_back(code);
      }
    }
    for (const auto& [unit, codes] : codesOf) {
      if (codes.size() != 1) {
        continue;
      }
      char back[3] = {};
      int n = WideCharToMultiByte(page.cp, 0, &unit, 1, back, 2, nullptr, nullptr);
      ASSERT_EQ(std::string(back, n), codes[0]) << std::hex << "U+" << static_cast<unsigned>(unit);
    }
  }
}

// Every BMP unit through every page: a result that is not the default character
// decodes back to the unit when best fit is off, and best fit never sets the
// used-default flag for a unit it maps.
TEST(CodePageRoundTrip, EveryUnitOfTheBmp) {
  for (UINT cp : kAllPages) {
    SCOPED_TRACE(cp);
    int exact = 0;
    for (uint32_t u = 1; u <= 0xFFFF; ++u) {
      wchar_t unit = static_cast<wchar_t>(u);
      char bytes[2];
      BOOL used = FALSE;
      int n = WideCharToMultiByte(cp, WC_NO_BEST_FIT_CHARS, &unit, 1, bytes, 2, nullptr, &used);
      ASSERT_GE(n, 1);
      if (used) {
        continue;
      }
      ++exact;
      wchar_t back = 0;
      ASSERT_EQ(MultiByteToWideChar(cp, 0, bytes, n, &back, 1), 1);
      ASSERT_EQ(static_cast<uint32_t>(back), u);
    }
    EXPECT_GT(exact, 120);
  }
}

// ---- Lead bytes, character walking, code page numbers -----------------------

TEST(CodePageQueries, IsValidCodePage) {
  for (UINT cp : kAllPages) {
    EXPECT_TRUE(IsValidCodePage(cp)) << cp;
  }
  // The tests' list holds every page the tables have.
  EXPECT_EQ(qx::platform::CodePageTableCount(), std::size(kAllPages));
  for (UINT cp : {0u, 1u, 2u, 3u, 42u, 1200u, 1361u, 10000u, 20127u, 28600u, 65001u, 0xFFFFFFFFu}) {
    EXPECT_FALSE(IsValidCodePage(cp)) << cp;
  }
}

TEST(CodePageQueries, IsDBCSLeadByteEx) {
  struct {
    UINT cp;
    BYTE byte;
    BOOL lead;
  } const cases[] = {
      {932, 0x81, TRUE},   {932, 0x9F, TRUE},  {932, 0xA0, FALSE}, {932, 0xDF, FALSE},
      {932, 0xE0, TRUE},   {932, 0x85, TRUE},  {932, 0xFC, TRUE},  {932, 0xFD, FALSE},
      {936, 0x80, FALSE},  {936, 0x81, TRUE},  {936, 0xFE, TRUE},  {936, 0xFF, FALSE},
      {949, 0xC9, TRUE},   {949, 0x80, FALSE}, {950, 0x81, TRUE},  {950, 0x7F, FALSE},
      {1252, 0x81, FALSE}, {437, 0xE0, FALSE},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsDBCSLeadByteEx(c.cp, c.byte), c.lead) << c.cp << " " << int(c.byte);
  }
  SetLastError(kUntouched);
  EXPECT_FALSE(IsDBCSLeadByteEx(12345, 0x81));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(CodePageQueries, CharNextAndCharPrev) {
  const char text[] = "a\x82\xA0"
                      "b\x82";
  struct {
    UINT cp;
    int from;
    int next;
  } const nexts[] = {
      {932, 0, 1}, {932, 1, 3}, {932, 3, 4}, {932, 4, 5}, {932, 5, 5}, {1252, 1, 2},
  };
  for (const auto& c : nexts) {
    EXPECT_EQ(CharNextExA(static_cast<WORD>(c.cp), text + c.from, 0) - text, c.next)
        << c.cp << " from " << c.from;
  }
  struct {
    UINT cp;
    int at;
    int prev;
  } const prevs[] = {
      {932, 0, 0}, {932, 1, 0}, {932, 3, 1}, {932, 4, 3}, {932, 5, 4}, {1252, 3, 2},
  };
  for (const auto& c : prevs) {
    EXPECT_EQ(CharPrevExA(static_cast<WORD>(c.cp), text, text + c.at, 0) - text, c.prev)
        << c.cp << " at " << c.at;
  }
  EXPECT_EQ(CharNextExA(932, nullptr, 0), nullptr);
}

TEST(CodePageQueries, ThreadLocaleChoosesAnsiAndOemPages) {
  struct {
    LCID lcid;
    UINT ansi;
    UINT oem;
  } const cases[] = {
      {0x0409, 1252, 437}, // en-US
      {0x0407, 1252, 850}, // de-DE
      {0x0411, 932, 932},  // ja-JP
      {0x0804, 936, 936},  // zh-CN
      {0x0405, 1250, 852}, // cs-CZ
      {0x0419, 1251, 437}, // ru-RU: OEM 866 has no table here
      {0x0439, 1252, 437}, // hi-IN: Unicode only
  };
  for (const auto& c : cases) {
    PinnedLocale pin(c.lcid);
    EXPECT_EQ(GetACP(), c.ansi) << std::hex << c.lcid;
    EXPECT_EQ(GetOEMCP(), c.oem) << std::hex << c.lcid;
  }
}

TEST(CodePageQueries, PlaceholdersFollowTheThreadLocale) {
  const char sjis[] = "\x82\xA0";
  wchar_t w[2] = {};
  {
    PinnedLocale pin(0x0411); // ja-JP
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, sjis, 2, w, 2), 1);
    EXPECT_EQ(w[0], 0x3042);
    EXPECT_TRUE(IsDBCSLeadByte(0x82));
    EXPECT_EQ(CharNextA(sjis), sjis + 2);
    EXPECT_EQ(CharPrevA(sjis, sjis + 2), sjis);
  }
  {
    PinnedLocale pin(0x0409); // en-US
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, sjis, 2, w, 2), 2);
    EXPECT_EQ(w[0], 0x201A);
    EXPECT_EQ(MultiByteToWideChar(CP_OEMCP, 0, sjis, 2, w, 2), 2);
    EXPECT_EQ(w[0], 0x00E9);
    EXPECT_FALSE(IsDBCSLeadByte(0x82));
    const wchar_t euro = 0x20AC;
    char b = 0;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, &euro, 1, &b, 1, nullptr, nullptr), 1);
    EXPECT_EQ(static_cast<unsigned char>(b), 0x80);
  }
}

} // namespace
