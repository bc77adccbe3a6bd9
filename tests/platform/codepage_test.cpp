// The code-page calls: what MultiByteToWideChar and WideCharToMultiByte give
// for Windows' additions, best fit, default characters and composition, and
// the page queries. fuzz/codepage_fuzz.cpp holds the buffer rules, the
// argument checks, the character walk and every code of every page.
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

struct MbCase {
  const char* what;
  UINT cp;
  DWORD flags;
  std::string_view input;
  std::vector<wchar_t> written;
};

// clang-format off
const MbCase kMbCases[] = {
    // Single-byte pages: Windows' additions to the published tables.
    {"1252 euro and C1 bytes", 1252, 0, "\x80\x81\x90\x9F", {0x20AC, 0x0081, 0x0090, 0x0178}},
    {"1253 placeholder byte", 1253, 0, "\xAA", {0xF8F9}},
    // Pages without Windows' additions: undefined bytes are the default character.
    {"28593 undefined byte", 28593, 0, "\xA5", {'?'}},
    {"28591 C1 and 0xFF", 28591, 0, "\x80\xFF", {0x0080, 0x00FF}},
    {"437 keeps controls, 0xE6 is micro", 437, 0, "\x1A\x7F\xE6", {0x001A, 0x007F, 0x00B5}},
    {"864 percent", 864, 0, "%", {0x066A}},
    // Double-byte pages.
    {"932 hiragana", 932, 0, "\x82\xA0", {0x3042}},
    {"932 half-width katakana", 932, 0, "\xB1", {0xFF71}},
    {"932 lead byte without a row", 932, 0, "\x85\x40", {0x30FB}},
    {"932 user-defined row", 932, MB_ERR_INVALID_CHARS, "\xF0\x40\xF9\xFC", {0xE000, 0xE757}},
    {"932 NEC and IBM rows", 932, 0, "\x87\x90\xED\x40\xFA\x40", {0x2252, 0x7E8A, 0x2170}},
    {"932 0xA0 placeholder", 932, 0, "\xA0\xFD", {0xF8F0, 0xF8F1}},
    {"936 euro byte", 936, 0, "\x80", {0x20AC}},
    {"949 euro", 949, 0, "\xA2\xE6", {0x20AC}},
    {"949 hangul", 949, 0, "\xB0\xA1", {0xAC00}},
    {"950 euro and ideographs", 950, 0, "\xA3\xE1\xB5\x48\xA9\xD2", {0x20AC, 0x7119, 0x6240}},
    // Flags.
    {"MB_PRECOMPOSED is the default form", 1252, MB_PRECOMPOSED, "\xE9", {0x00E9}},
    {"MB_COMPOSITE decomposes", 1252, MB_COMPOSITE, "\xE9z", {'e', 0x0301, 'z'}},
    {"MB_COMPOSITE nests", 1253, MB_COMPOSITE, "\xC0", {0x03B9, 0x0308, 0x0301}},
    {"MB_COMPOSITE horn", 1258, MB_COMPOSITE, "\xD5", {'O', 0x031B}},
    {"MB_USEGLYPHCHARS is accepted", 437, MB_USEGLYPHCHARS, "\x01", {0x0001}},
};
// clang-format on

TEST(MultiByteToWideChar, ConformanceTable) {
  for (const MbCase& c : kMbCases) {
    SCOPED_TRACE(c.what);
    wchar_t buf[12];
    std::fill(std::begin(buf), std::end(buf), kWideSentinel);
    const int srclen = static_cast<int>(c.input.size());
    SetLastError(kUntouched);
    EXPECT_EQ(MultiByteToWideChar(c.cp, c.flags, c.input.data(), srclen, buf, 8),
              static_cast<int>(c.written.size()));
    EXPECT_EQ(GetLastError(), kUntouched);
    for (size_t i = 0; i < std::size(buf); ++i)
      EXPECT_EQ(buf[i], i < c.written.size() ? c.written[i] : kWideSentinel) << "unit " << i;
  }
}

struct WcCase {
  const char* what;
  UINT cp;
  DWORD flags;
  std::vector<wchar_t> input;
  std::string_view written;
  BOOL used; // expected *lpUsedDefaultChar
  const char* defaultChar = nullptr;
};

// clang-format off
const WcCase kWcCases[] = {
    // Default characters.
    {"unmappable", 1252, 0, {'T', 'h', 0x0440, 'i', 0}, "Th?i\0"sv, TRUE},
    {"caller's default", 1252, 0, {'T', 0x0440, 0}, "T_\0"sv, TRUE, "_"},
    {"caller's default, first byte only", 1252, 0, {0x0440}, "_", TRUE, "_x"},
    {"beyond the BMP", 1252, 0, {'a', 0x1F600, 'b'}, "a?b", TRUE},
    {"lone surrogate", 1252, 0, {0xD800}, "?", TRUE},
    {"fullwidth '?' is the default in disguise", 1252, 0, {0xFF1F}, "_", TRUE, "_"},
    {"'?' itself", 1252, 0, {'?'}, "?", FALSE, "_"},
    // Best fit.
    {"1252 best fit", 1252, 0, {0xFF21, 0x221E, 0x0101, 0x0301}, "A8a\xB4", FALSE},
    {"1252 no best fit", 1252, WC_NO_BEST_FIT_CHARS, {0xFF21, 0x221E, 0x00E9}, "??\xE9", TRUE},
    {"1251 best fit", 1251, 0, {0x0440, 0x00E4}, "\xF0""a", FALSE},
    {"1251 no best fit", 1251, WC_NO_BEST_FIT_CHARS, {0x0440, 0x00E4}, "\xF0?", TRUE},
    {"437 has no best fit", 437, 0, {0x00E9, 0xFF21}, "\x82?", TRUE},
    {"28591 has no best fit", 28591, 0, {0x00FF, 0x0100}, "\xFF?", TRUE},
    {"932 fullwidth tilde", 932, 0, {0xFF5E}, "\x81\x60", FALSE},
    // Double-byte pages.
    {"950 ideographs", 950, 0, {0x7119, 0x6240, 0}, "\xB5H\xA9\xD2\0"sv, FALSE},
    {"932 mixed widths", 932, 0, {'a', 0x0440, 0xFF71}, "a\x84\x82\xB1", FALSE},
    {"932 shared unit takes the JIS X 0208 code", 932, WC_NO_BEST_FIT_CHARS, {0x2252}, "\x81\xE0",
     FALSE},
    {"932 unmappable", 932, 0, {0x0E01}, "?", TRUE},
    {"932 two-byte default", 932, 0, {0x0E01}, "\x81\x45", TRUE, "\x81\x45"},
    {"932 one-byte default", 932, 0, {0x0E01}, "*", TRUE, "*"},
    {"936 middle dot", 936, 0, {0x00B7}, "\xA1\xA4", FALSE},
    {"949 hangul", 949, 0, {0xAC00, 0x20AC}, "\xB0\xA1\xA2\xE6", FALSE},
    // WC_COMPOSITECHECK and its exception flags.
    {"composes", 1252, WC_COMPOSITECHECK, {'e', 0x0301, 'x'}, "\xE9x", FALSE},
    {"composes the longest the page has", 1252, WC_COMPOSITECHECK, {'a', 0x0302, 0x0301},
     "\xE2\xB4", FALSE},
    {"1258 composes", 1258, WC_COMPOSITECHECK, {'a', 0x0301}, "\xE1", FALSE},
    {"1258 keeps a mark the page has", 1258, 0, {'a', 0x0301}, "a\xEC", FALSE},
    {"separate characters by default", 1252, WC_COMPOSITECHECK, {'q', 0x0301}, "q\xB4", FALSE},
    {"WC_SEPCHARS", 1252, WC_COMPOSITECHECK | WC_SEPCHARS | WC_NO_BEST_FIT_CHARS, {'q', 0x0301},
     "q?", TRUE},
    {"WC_DISCARDNS", 1252, WC_COMPOSITECHECK | WC_DISCARDNS, {'q', 0x0301, 0x0302, 'z'}, "qz",
     FALSE},
    {"WC_DEFAULTCHAR", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR, {'q', 0x0301, 'z'}, "_z", TRUE,
     "_"},
    {"WC_DEFAULTCHAR, a mark that starts the text", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR,
     {0x0301, 'z'}, "?z", TRUE},
    {"composed character the page lacks", 1252, WC_COMPOSITECHECK | WC_DEFAULTCHAR, {'a', 0x0304},
     "a", FALSE},
    {"composed character the page lacks, no best fit", 1252,
     WC_COMPOSITECHECK | WC_DEFAULTCHAR | WC_NO_BEST_FIT_CHARS, {'a', 0x0304}, "?", TRUE},
    {"WC_DEFAULTCHAR alone has no effect", 1252, WC_DEFAULTCHAR, {'e', 0x0301}, "e\xB4", FALSE},
    {"composes on a double-byte page", 932, WC_COMPOSITECHECK, {0x304B, 0x3099}, "\x82\xAA",
     FALSE},
};
// clang-format on

TEST(WideCharToMultiByte, ConformanceTable) {
  for (const WcCase& c : kWcCases) {
    SCOPED_TRACE(c.what);
    char buf[16];
    std::fill(std::begin(buf), std::end(buf), kByteSentinel);
    const int srclen = static_cast<int>(c.input.size());
    BOOL used = 7;
    SetLastError(kUntouched);
    EXPECT_EQ(
        WideCharToMultiByte(c.cp, c.flags, c.input.data(), srclen, buf, 12, c.defaultChar, &used),
        static_cast<int>(c.written.size()));
    EXPECT_EQ(GetLastError(), kUntouched);
    EXPECT_EQ(used, c.used);
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
