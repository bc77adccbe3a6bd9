// 8-bit and multi-byte text <=> wide text, and the wide copies, as tables
// with sentinel-filled buffers (fuzz/convert_fuzz.cpp compares
// ConvertSystemToMBCSChar with WideCharToMultiByte on random text).
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr wchar_t kWideSentinel = 0xBEEF;
constexpr char kByteSentinel = '\xCC';
constexpr LCID kEnglishUS = 1033; // ANSI 1252, OEM 437
constexpr LCID kJapanese = 1041;  // ANSI 932, OEM 932

QXCHARSET Cs(int v) { return static_cast<QXCHARSET>(v); }

// W, B - a literal's units or bytes, the NULs written in it included.
template <size_t N> std::wstring W(const wchar_t (&s)[N]) { return std::wstring(s, N - 1); }
template <size_t N> std::string B(const char (&s)[N]) { return std::string(s, N - 1); }

// InLocales - runs `fn(lcid)` on a fresh thread in each of the two locales.
template <class Fn> void InLocales(Fn fn) {
  for (LCID lcid : {kEnglishUS, kJapanese})
    qxtest::InLocale(lcid, [&] { fn(lcid); });
}

// Written - `buf` starts with `written` and nothing after it was touched.
template <typename T, typename S>
::testing::AssertionResult Written(const qxtest::Guarded<T>& buf, const S& written) {
  if (S(buf.units.data(), written.size()) == written && buf.UntouchedFrom(written.size()))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the buffer holds other units";
}

// convert_fuzz holds the sizes, the double-byte members and those without a
// page to the platform call (its system pages are 932); these rows need
// en-US, where ANSI and OEM differ, or are no member at all.
TEST(ConvertMBCSCharToSystem, Cases) {
  const struct {
    int cs;
    const char* src;
    bool result;
    std::wstring written; // the buffer's first units afterwards; sentinels after
  } cases[] = {
      {0, "\xE9", true, W(L"\u00e9\0")},  // Neutral: ANSI
      {34, "\x82", true, W(L"\u00e9\0")}, // 437: OEM
      {57, "abc", false, W(L"\0")},
      {-1, "abc", false, W(L"\0")},
  };
  qxtest::InLocale(kEnglishUS, [&] {
    for (const auto& c : cases) {
      qxtest::Guarded<wchar_t> dst(0, kWideSentinel);
      EXPECT_EQ(ConvertMBCSCharToSystem(c.src, Cs(c.cs), dst.data(), 4), c.result) << c.cs;
      EXPECT_TRUE(Written(dst, c.written)) << c.cs;
    }
  });
  qxtest::Guarded<wchar_t> dst(0, kWideSentinel);
  EXPECT_FALSE(ConvertMBCSCharToSystem(nullptr, 3, QXCHARSET_WINDOWS_LATIN1, dst.data(), 8));
  EXPECT_FALSE(ConvertMBCSCharToSystem(nullptr, QXCHARSET_WINDOWS_LATIN1, dst.data(), 8));
  EXPECT_FALSE(ConvertMBCSCharToSystem("abc", 3, QXCHARSET_WINDOWS_LATIN1, nullptr, 4));
  EXPECT_TRUE(dst.UntouchedFrom(0));
  // The terminated form reads up to the NUL.
  EXPECT_TRUE(ConvertMBCSCharToSystem("abc\0d", QXCHARSET_WINDOWS_LATIN1, dst.data(), 3));
  EXPECT_TRUE(Written(dst, W(L"abc\0")));
}

struct ToBytesCase {
  int cs;
  const wchar_t* src;
  unsigned int dstLen;
  bool acceptTruncation;
  bool result;
  std::string written; // sentinels after
  LCID lcid = kEnglishUS;
};

// clang-format off
const ToBytesCase kToBytesCases[] = {
    // convert_fuzz holds the members with a code page of their own to the
    // platform call (composition, best fit, the page's '?', whole characters).
    {34, L"\u00e9", 16, false, true, B("\x82\0")},    // OEM 437
    {0, L"\u00e9", 16, false, true, B("\xE9\0")},     // ANSI 1252
    // Too small: whole characters only; accepted truncation is success.
    {10, L"abcd", 3, true, true, "abc"}, {10, L"abc", 3, true, true, "abc"},
    {19, L"\u3042\u3044", 3, true, true, "\x82\xA0"},
    // No code page: the system page (1252 here) with '_' for the unknown.
    {21, L"\u00e9\u4e00", 16, false, true, B("\xE9_\0")},
    {57, L"\u00e9\u4e00", 16, false, true, B("\xE9_\0")},
    {21, L"x\u3042\u05d0", 16, false, true, B("x\x82\xA0_\0"), kJapanese},
    {21, L"\u00e9\u4e00", 2, true, true, "\xE9_"}, {21, L"\u00e9\u4e00", 2, false, false, "\xE9_"},
    // The placeholders of Neutral and 437 are no valid page: a failure is
    // tried again in the system page (and fails again here).
    {0, L"abcd", 2, false, false, "ab"}, {34, L"abcd", 2, true, true, "ab"},
    // Rejected before the conversion.
    {10, L"abc", 0, true, false, ""}, {10, nullptr, 16, true, false, ""},
};
// clang-format on

TEST(ConvertSystemToMBCSChar, Cases) {
  InLocales([](LCID lcid) {
    for (const ToBytesCase& c : kToBytesCases) {
      if (c.lcid != lcid)
        continue;
      SCOPED_TRACE(testing::Message() << c.cs << " '" << (c.src ? c.src : L"(null)") << "'");
      qxtest::Guarded<char> dst(0, kByteSentinel);
      EXPECT_EQ(ConvertSystemToMBCSChar(c.src, dst.data(), Cs(c.cs), c.dstLen, c.acceptTruncation),
                c.result);
      EXPECT_TRUE(Written(dst, c.written));
    }
  });
  EXPECT_FALSE(ConvertSystemToMBCSChar(L"a", nullptr, QXCHARSET_WINDOWS_LATIN1, 4, true));
}

// wide_edit_fuzz holds the wide copies to the plain rules; a null source is
// the empty string.
TEST(WideCopies, NullSource) {
  qxtest::Guarded<wchar_t> dst(0, kWideSentinel);
  EXPECT_TRUE(ConvertWideCharToSystem(nullptr, 0, dst.data(), QXCHARSET_MAC_ROMAN, 3));
  EXPECT_TRUE(Written(dst, W(L"\0\0\0")));
}

} // namespace
