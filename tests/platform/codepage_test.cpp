// The code-page calls: MultiByteToWideChar and WideCharToMultiByte as
// conformance tables, and the lead-byte, character-walking and code page
// queries (every code of every page is decoded and back in the fuzz target).
#include "common/scaffold.h"
#include "platform/codepage.h"
#include "platform/codepage_tables.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <string_view>
#include <vector>

using namespace qx::win;

namespace {

using namespace std::string_view_literals;
using qxtest::kAllPages;

constexpr DWORD kUntouched = 0xDEADBEEF;
constexpr wchar_t kWideSentinel = 0x7F7F;
constexpr char kByteSentinel = '#';
constexpr int kView = 0x7FFF;   // srclen: the input's whole length
constexpr int kNoUsedFlag = -1; // pass no lpUsedDefaultChar
constexpr DWORD kNoTranslation = ERROR_NO_UNICODE_TRANSLATION;
constexpr DWORD kTooSmall = ERROR_INSUFFICIENT_BUFFER;

struct MbCase {
  const char* what;
  UINT cp;
  DWORD flags;
  std::string_view input; // may hold NULs
  std::vector<wchar_t> written;
  int ret;
  DWORD error = kUntouched;
  int srclen = kView;
  int dstlen = 8; // of a 12-unit buffer; 0 probes
};

// clang-format off
const MbCase kMbCases[] = {
    // Lengths, the probe and short buffers.
    {"ascii", 1252, 0, "abc", {'a', 'b', 'c'}, 3},
    {"length -1 takes the terminator", 1252, 0, "abc", {'a', 'b', 'c', 0}, 4, kUntouched, -1},
    {"any negative length", 1252, 0, "abc", {'a', 'b', 'c', 0}, 4, kUntouched, -7},
    {"embedded NUL", 1252, 0, std::string_view("a\0b", 3), {'a', 0, 'b'}, 3},
    {"probe", 1252, 0, "abc", {}, 4, kUntouched, -1, 0},
    {"short buffer keeps what fits", 1252, 0, "abc", {'a', 'b', 'c'}, 0, kTooSmall, -1, 3},
    {"probe of double-byte text", 932, 0, "\x82\xA0x\x82\xA2", {}, 3, kUntouched, kView, 0},
    {"short buffer, double-byte", 932, 0, "\x82\xA0\x82\xA2", {0x3042}, 0, kTooSmall, kView, 1},
    // Single-byte pages: Windows' additions to the published tables.
    {"1252 euro and C1 bytes", 1252, 0, "\x80\x81\x90\x9F", {0x20AC, 0x0081, 0x0090, 0x0178}, 4},
    {"1253 placeholder byte", 1253, 0, "\xAA", {0xF8F9}, 1},
    {"1253 placeholder is invalid", 1253, MB_ERR_INVALID_CHARS, "a\xAA", {}, 0, kNoTranslation},
    {"'?' is its own code", 1252, MB_ERR_INVALID_CHARS, "?", {'?'}, 1},
    {"invalid check precedes the size check", 1253, MB_ERR_INVALID_CHARS, "abc\xAA", {}, 0,
     kNoTranslation, kView, 1},
    // Pages without Windows' additions: undefined bytes are the default character.
    {"28593 undefined byte", 28593, 0, "\xA5", {'?'}, 1},
    {"28591 C1 and 0xFF", 28591, 0, "\x80\xFF", {0x0080, 0x00FF}, 2},
    {"437 keeps controls, 0xE6 is micro", 437, 0, "\x1A\x7F\xE6", {0x001A, 0x007F, 0x00B5}, 3},
    {"864 percent", 864, 0, "%", {0x066A}, 1},
    // Double-byte pages.
    {"932 hiragana", 932, 0, "\x82\xA0", {0x3042}, 1},
    {"932 half-width katakana", 932, 0, "\xB1", {0xFF71}, 1},
    {"932 lead byte at the end", 932, 0, "\x82", {0x30FB}, 1},
    {"932 lead byte at the end is invalid", 932, MB_ERR_INVALID_CHARS, "\x82", {}, 0,
     kNoTranslation},
    {"932 lead byte before NUL", 932, 0, std::string_view("\x82\0x", 3), {0x30FB, 0, 'x'}, 3},
    {"932 lead byte before the terminator", 932, 0, "a\x82", {'a', 0x30FB, 0}, 3, kUntouched, -1},
    {"932 lead byte and an invalid trail", 932, 0, "\x81\x20z", {0x30FB, 'z'}, 2},
    {"932 default character's own code", 932, MB_ERR_INVALID_CHARS, "\x81\x45", {0x30FB}, 1},
    {"932 lead byte without a row", 932, 0, "\x85\x40", {0x30FB}, 1},
    {"932 user-defined row", 932, MB_ERR_INVALID_CHARS, "\xF0\x40\xF9\xFC", {0xE000, 0xE757}, 2},
    {"932 NEC and IBM rows", 932, 0, "\x87\x90\xED\x40\xFA\x40", {0x2252, 0x7E8A, 0x2170}, 3},
    {"932 0xA0 placeholder", 932, 0, "\xA0\xFD", {0xF8F0, 0xF8F1}, 2},
    {"936 euro byte", 936, 0, "\x80", {0x20AC}, 1},
    {"936 cut pair", 936, 0, "\xBF\xB4\xC7", {0x770B, '?'}, 2},
    {"936 cut pair is invalid", 936, MB_ERR_INVALID_CHARS, "\xBF\xB4\xC7", {}, 0, kNoTranslation},
    {"949 euro", 949, 0, "\xA2\xE6", {0x20AC}, 1},
    {"949 hangul", 949, 0, "\xB0\xA1", {0xAC00}, 1},
    {"950 euro and ideographs", 950, 0, "\xA3\xE1\xB5\x48\xA9\xD2", {0x20AC, 0x7119, 0x6240}, 3},
    // Flags.
    {"MB_PRECOMPOSED is the default form", 1252, MB_PRECOMPOSED, "\xE9", {0x00E9}, 1},
    {"MB_COMPOSITE decomposes", 1252, MB_COMPOSITE, "\xE9z", {'e', 0x0301, 'z'}, 3},
    {"MB_COMPOSITE nests", 1253, MB_COMPOSITE, "\xC0", {0x03B9, 0x0308, 0x0301}, 3},
    {"MB_COMPOSITE horn", 1258, MB_COMPOSITE, "\xD5", {'O', 0x031B}, 2},
    {"MB_COMPOSITE probe", 1250, MB_COMPOSITE, "\x8A\xE8", {}, 4, kUntouched, kView, 0},
    {"MB_COMPOSITE keeps whole characters", 1252, MB_COMPOSITE, "a\xE9", {'a'}, 0, kTooSmall, kView,
     2},
    {"MB_USEGLYPHCHARS is accepted", 437, MB_USEGLYPHCHARS, "\x01", {0x0001}, 1},
    {"both forms", 1252, MB_PRECOMPOSED | MB_COMPOSITE, "a", {}, 0, ERROR_INVALID_FLAGS},
    {"unknown flag", 1252, 0x10, "a", {}, 0, ERROR_INVALID_FLAGS},
    // Bad arguments.
    {"zero length", 1252, 0, "a", {}, 0, ERROR_INVALID_PARAMETER, 0},
    {"negative size", 1252, 0, "a", {}, 0, ERROR_INVALID_PARAMETER, kView, -1},
    {"unknown page", 12345, 0, "a", {}, 0, ERROR_INVALID_PARAMETER},
    {"CP_MACCP", 2, 0, "a", {}, 0, ERROR_INVALID_PARAMETER},
    {"UTF-8 is not provided", 65001, 0, "a", {}, 0, ERROR_INVALID_PARAMETER},
    {"unknown page before flags", 12345, 0x10, "a", {}, 0, ERROR_INVALID_PARAMETER},
};
// clang-format on

TEST(MultiByteToWideChar, ConformanceTable) {
  for (const MbCase& c : kMbCases) {
    SCOPED_TRACE(c.what);
    wchar_t buf[12];
    std::fill(std::begin(buf), std::end(buf), kWideSentinel);
    int srclen = c.srclen == kView ? static_cast<int>(c.input.size()) : c.srclen;
    SetLastError(kUntouched);
    EXPECT_EQ(MultiByteToWideChar(c.cp, c.flags, c.input.data(), srclen, buf, c.dstlen), c.ret);
    EXPECT_EQ(GetLastError(), c.error);
    for (size_t i = 0; i < std::size(buf); ++i)
      EXPECT_EQ(buf[i], i < c.written.size() ? c.written[i] : kWideSentinel) << "unit " << i;
  }
}

TEST(MultiByteToWideChar, PointerArguments) {
  wchar_t buf[4] = {kWideSentinel};
  const struct {
    LPCSTR src;
    LPWSTR dst;
  } cases[] = {{nullptr, buf}, {"a", nullptr}, {reinterpret_cast<LPCSTR>(buf), buf}};
  for (const auto& c : cases) {
    SetLastError(kUntouched);
    EXPECT_EQ(MultiByteToWideChar(1252, 0, c.src, 1, c.dst, 4), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
  EXPECT_EQ(buf[0], kWideSentinel);
  SetLastError(kUntouched);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "ab", 2, nullptr, 0), 2); // probe without a buffer
  EXPECT_EQ(GetLastError(), kUntouched);
}

struct WcCase {
  const char* what;
  UINT cp;
  DWORD flags;
  std::vector<wchar_t> input;
  std::string_view written;
  int ret;
  int used; // expected *lpUsedDefaultChar, or kNoUsedFlag to pass none
  DWORD error = kUntouched;
  int srclen = kView;
  int dstlen = 12; // of a 16-byte buffer; 0 probes
  const char* defaultChar = nullptr;
};

// clang-format off
const WcCase kWcCases[] = {
    // Lengths, the probe and short buffers.
    {"ascii", 1252, 0, {'a', 'b', 'c', 0}, "abc\0"sv, 4, FALSE, kUntouched, -1},
    {"length stops before the terminator", 1252, 0, {'a', 'b', 'c', 0}, "ab", 2, FALSE, kUntouched,
     2},
    {"probe", 1252, 0, {0x0440, 0}, "", 2, TRUE, kUntouched, -1, 0},
    {"short buffer keeps what fits", 1252, 0, {'T', 'h', 0x0440, 'i', 0}, "T", 0, FALSE, kTooSmall,
     -1, 1},
    // Default characters.
    {"unmappable", 1252, 0, {'T', 'h', 0x0440, 'i', 0}, "Th?i\0"sv, 5, TRUE, kUntouched, -1},
    {"caller's default", 1252, 0, {'T', 0x0440, 0}, "T_\0"sv, 3, TRUE, kUntouched, -1, 12, "_"},
    {"caller's default, first byte only", 1252, 0, {0x0440}, "_", 1, TRUE, kUntouched, kView, 12,
     "_x"},
    {"beyond the BMP", 1252, 0, {'a', 0x1F600, 'b'}, "a?b", 3, TRUE},
    {"lone surrogate", 1252, 0, {0xD800}, "?", 1, TRUE},
    {"fullwidth '?' is the default in disguise", 1252, 0, {0xFF1F}, "_", 1, TRUE, kUntouched, kView,
     12, "_"},
    {"'?' itself", 1252, 0, {'?'}, "?", 1, FALSE, kUntouched, kView, 12, "_"},
    // Best fit.
    {"1252 best fit", 1252, 0, {0xFF21, 0x221E, 0x0101, 0x0301}, "A8a\xB4", 4, FALSE},
    {"1252 no best fit", 1252, WC_NO_BEST_FIT_CHARS, {0xFF21, 0x221E, 0x00E9}, "??\xE9", 3, TRUE},
    {"1251 best fit", 1251, 0, {0x0440, 0x00E4}, "\xF0""a", 2, FALSE},
    {"1251 no best fit", 1251, WC_NO_BEST_FIT_CHARS, {0x0440, 0x00E4}, "\xF0?", 2, TRUE},
    {"437 has no best fit", 437, 0, {0x00E9, 0xFF21}, "\x82?", 2, TRUE},
    {"28591 has no best fit", 28591, 0, {0x00FF, 0x0100}, "\xFF?", 2, TRUE},
    {"932 fullwidth tilde", 932, 0, {0xFF5E}, "\x81\x60", 2, FALSE},
    // Double-byte pages.
    {"950 ideographs", 950, 0, {0x7119, 0x6240, 0}, "\xB5H\xA9\xD2\0"sv, 5, FALSE, kUntouched, -1},
    {"950 no half character", 950, 0, {0x7119}, "", 0, FALSE, kTooSmall, kView, 1},
    {"950 probe", 950, 0, {0x7119}, "", 2, FALSE, kUntouched, kView, 0},
    {"932 short buffer keeps whole characters", 932, 0, {0x3042, 0x3044}, "\x82\xA0", 0, FALSE,
     kTooSmall, kView, 3},
    {"932 mixed widths", 932, 0, {'a', 0x0440, 0xFF71}, "a\x84\x82\xB1", 4, FALSE},
    {"932 shared unit takes the JIS X 0208 code", 932, WC_NO_BEST_FIT_CHARS, {0x2252}, "\x81\xE0",
     2, FALSE},
    {"932 unmappable", 932, 0, {0x0E01}, "?", 1, TRUE},
    {"932 two-byte default", 932, 0, {0x0E01}, "\x81\x45", 2, TRUE, kUntouched, kView, 12,
     "\x81\x45"},
    {"932 one-byte default", 932, 0, {0x0E01}, "*", 1, TRUE, kUntouched, kView, 12, "*"},
    {"936 middle dot", 936, 0, {0x00B7}, "\xA1\xA4", 2, FALSE},
    {"949 hangul", 949, 0, {0xAC00, 0x20AC}, "\xB0\xA1\xA2\xE6", 4, FALSE},
    // WC_COMPOSITECHECK and its exception flags.
    {"composes", 1252, WC_COMPOSITECHECK, {'e', 0x0301, 'x'}, "\xE9x", 2, FALSE},
    {"composes the longest the page has", 1252, WC_COMPOSITECHECK, {'a', 0x0302, 0x0301},
     "\xE2\xB4", 2, FALSE},
    {"1258 composes", 1258, WC_COMPOSITECHECK, {'a', 0x0301}, "\xE1", 1, FALSE},
    {"1258 keeps a mark the page has", 1258, 0, {'a', 0x0301}, "a\xEC", 2, FALSE},
    {"separate characters by default", 1252, WC_COMPOSITECHECK, {'q', 0x0301}, "q\xB4", 2, FALSE},
    {"WC_SEPCHARS", 1252, WC_COMPOSITECHECK | WC_SEPCHARS | WC_NO_BEST_FIT_CHARS, {'q', 0x0301},
     "q?", 2, TRUE},
    {"WC_DISCARDNS", 1252, WC_COMPOSITECHECK | WC_DISCARDNS, {'q', 0x0301, 0x0302, 'z'}, "qz", 2,
     FALSE},
    {"WC_DEFAULTCHAR", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR, {'q', 0x0301, 'z'}, "_z", 2, TRUE,
     kUntouched, kView, 12, "_"},
    {"WC_DEFAULTCHAR, a mark that starts the text", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR,
     {0x0301, 'z'}, "?z", 2, TRUE},
    {"composed character the page lacks", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR, {'a', 0x0304},
     "a", 1, FALSE},
    {"composed character the page lacks, no best fit", 1252,
     WC_COMPOSITECHECK | WC_DEFAULTCHAR | WC_NO_BEST_FIT_CHARS, {'a', 0x0304}, "?", 1, TRUE},
    {"WC_DEFAULTCHAR alone has no effect", 1252, WC_DEFAULTCHAR, {'e', 0x0301}, "e\xB4", 2, FALSE},
    {"composes on a double-byte page", 932, WC_COMPOSITECHECK, {0x304B, 0x3099}, "\x82\xAA", 2,
     FALSE},
    // Flags (the argument checks are MultiByteToWideChar's, tested there).
    {"two exception flags", 1252, WC_COMPOSITECHECK | WC_DISCARDNS | WC_SEPCHARS, {'a'}, "", 0,
     kNoUsedFlag, ERROR_INVALID_FLAGS},
    {"WC_ERR_INVALID_CHARS is for UTF-8", 1252, WC_ERR_INVALID_CHARS, {'a'}, "", 0, kNoUsedFlag,
     ERROR_INVALID_FLAGS},
    {"unknown flag", 1252, 0x1, {'a'}, "", 0, kNoUsedFlag, ERROR_INVALID_FLAGS},
};
// clang-format on

TEST(WideCharToMultiByte, ConformanceTable) {
  for (const WcCase& c : kWcCases) {
    SCOPED_TRACE(c.what);
    char buf[16];
    std::fill(std::begin(buf), std::end(buf), kByteSentinel);
    int srclen = c.srclen == kView ? static_cast<int>(c.input.size()) : c.srclen;
    BOOL used = 7;
    SetLastError(kUntouched);
    EXPECT_EQ(WideCharToMultiByte(c.cp, c.flags, c.input.data(), srclen, buf, c.dstlen,
                                  c.defaultChar, c.used == kNoUsedFlag ? nullptr : &used),
              c.ret);
    EXPECT_EQ(GetLastError(), c.error);
    EXPECT_EQ(used, c.used == kNoUsedFlag ? 7 : c.used);
    for (size_t i = 0; i < std::size(buf); ++i)
      EXPECT_EQ(buf[i], i < c.written.size() ? c.written[i] : kByteSentinel) << "byte " << i;
  }
}

TEST(CodePageQueries, IsValidCodePage) {
  for (UINT cp : kAllPages)
    EXPECT_TRUE(IsValidCodePage(cp)) << cp;
  // The tests' list holds every page the tables have.
  EXPECT_EQ(qx::platform::CodePageTableCount(), std::size(kAllPages));
  for (UINT cp : {0u, 1u, 2u, 3u, 42u, 1200u, 1361u, 10000u, 20127u, 28600u, 65001u, 0xFFFFFFFFu})
    EXPECT_FALSE(IsValidCodePage(cp)) << cp;
}

// The lead bytes of every page: fuzz/codepage_fuzz.cpp's every-code check.
TEST(CodePageQueries, IsDBCSLeadByteExOfAnUnknownPage) {
  SetLastError(kUntouched);
  EXPECT_FALSE(IsDBCSLeadByteEx(12345, 0x81));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(CodePageQueries, CharNextAndCharPrev) {
  const char text[] = "a\x82\xA0"
                      "b\x82";
  const struct {
    WORD cp;
    int from, next, prev; // CharNextExA from `from`; CharPrevExA at `from`
  } cases[] = {{932, 0, 1, 0}, {932, 1, 3, 0},  {932, 3, 4, 1}, {932, 4, 5, 3},
               {932, 5, 5, 4}, {1252, 1, 2, 0}, {1252, 3, 4, 2}};
  for (const auto& c : cases) {
    EXPECT_EQ(CharNextExA(c.cp, text + c.from, 0) - text, c.next) << c.cp << " from " << c.from;
    EXPECT_EQ(CharPrevExA(c.cp, text, text + c.from, 0) - text, c.prev) << c.cp << " at " << c.from;
  }
  EXPECT_EQ(CharNextExA(932, nullptr, 0), nullptr);
}

TEST(CodePageQueries, ThreadLocaleChoosesAnsiAndOemPages) {
  const struct {
    LCID lcid;
    UINT ansi, oem;
  } cases[] = {{0x0409, 1252, 437}, {0x0407, 1252, 850}, {0x0411, 932, 932}, {0x0804, 936, 936},
               {0x0405, 1250, 852}, {0x0419, 1251, 437}, // ru-RU: OEM 866 has no table here
               {0x0439, 1252, 437}};                     // hi-IN: Unicode only
  for (const auto& c : cases) {
    qxtest::ScopedThreadLocale pin(c.lcid);
    EXPECT_EQ(GetACP(), c.ansi) << std::hex << c.lcid;
    EXPECT_EQ(GetOEMCP(), c.oem) << std::hex << c.lcid;
  }
}

TEST(CodePageQueries, PlaceholdersFollowTheThreadLocale) {
  const char sjis[] = "\x82\xA0";
  wchar_t w[2] = {};
  {
    qxtest::ScopedThreadLocale pin(0x0411); // ja-JP
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, sjis, 2, w, 2), 1);
    EXPECT_EQ(w[0], 0x3042);
    EXPECT_TRUE(IsDBCSLeadByte(0x82));
    EXPECT_EQ(CharNextA(sjis), sjis + 2);
    EXPECT_EQ(CharPrevA(sjis, sjis + 2), sjis);
  }
  qxtest::ScopedThreadLocale pin(0x0409); // en-US
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

} // namespace
