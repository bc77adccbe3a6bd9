// 8-bit and multi-byte text <=> wide text, and the wide copies.
#include "common/thread_runner.h"
#include "platform/codepage.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace qx::win;

namespace {

constexpr wchar_t kWideSentinel = 0xBEEF;
constexpr char kByteSentinel = '\xCC';
constexpr LCID kEnglishUS = 1033; // ANSI 1252, OEM 437
constexpr LCID kJapanese = 1041;  // ANSI 932, OEM 932

QXCHARSET Cs(int v) { return static_cast<QXCHARSET>(v); }

template <class Fn> void InLocale(LCID lcid, Fn fn) {
  qxtest::RunOnNewThread([&] {
    ASSERT_TRUE(SetThreadLocale(lcid));
    fn();
  });
}

TEST(ConvertMBCSCharToSystem, Cases) {
  struct Case {
    LCID lcid;
    const char* src;
    unsigned int srcLen;
    int cs;
    unsigned int dstLen;
    bool result;
    std::wstring written; // the buffer's first units afterwards; sentinel after
  } cases[] = {
      // The terminator goes after n units, also when n == dstLen.
      {kEnglishUS, "abc", 3, 10, 8, true, std::wstring(L"abc\0", 4)},
      {kEnglishUS, "abc", 3, 10, 3, true, std::wstring(L"abc\0", 4)},
      // Too small: what fits is written, then the terminator at 0.
      {kEnglishUS, "abc", 3, 10, 2, false, std::wstring(L"\0b", 2)},
      {kEnglishUS, "ab\0c", 4, 10, 8, true, std::wstring(L"ab\0c\0", 5)},
      {kEnglishUS, "\x80\xE9", 2, 10, 4, true, std::wstring(L"\u20ac\u00e9\0", 3)},
      {kEnglishUS, "\xE9", 1, 0, 4, true, std::wstring(L"\u00e9\0", 2)},  // Neutral: ANSI
      {kEnglishUS, "\x82", 1, 34, 4, true, std::wstring(L"\u00e9\0", 2)}, // 437: OEM
      {kEnglishUS, "\xE9", 1, 1, 4, true, std::wstring(L"\u00e9\0", 2)},  // 28591
      {kEnglishUS, "\xC0", 1, 13, 4, true, std::wstring(L"\u0410\0", 2)}, // 1251
      {kJapanese, "\x82\xA0", 2, 0, 4, true, std::wstring(L"\u3042\0", 2)},
      {kEnglishUS,
       "\x82\xA0"
       "a",
       3, 19, 4, true, std::wstring(L"\u3042a\0", 3)},
      {kEnglishUS, "a\x82", 2, 19, 4, true, std::wstring(L"a\u30fb\0", 3)}, // cut pair
      {kEnglishUS, "\xA4\x40", 2, 17, 4, true, std::wstring(L"\u4e00\0", 2)},
      {kEnglishUS, "\xB0\xA1", 2, 20, 4, true, std::wstring(L"\uac00\0", 2)},
      {kEnglishUS, "\xD2\xBB", 2, 18, 4, true, std::wstring(L"\u4e00\0", 2)},
      // No code page: no fallback in this direction.
      {kEnglishUS, "abc", 3, 21, 8, false, std::wstring(L"\0", 1)},
      {kEnglishUS, "abc", 3, 52, 8, false, std::wstring(L"\0", 1)},
      {kEnglishUS, "abc", 3, 57, 8, false, std::wstring(L"\0", 1)},
      {kEnglishUS, "abc", 3, -1, 8, false, std::wstring(L"\0", 1)},
      // Rejected before the conversion: nothing written.
      {kEnglishUS, "abc", 0, 10, 8, false, L""},
      {kEnglishUS, "abc", 3, 10, 0, false, L""},
      {kEnglishUS, nullptr, 3, 10, 8, false, L""},
  };
  for (const Case& c : cases) {
    InLocale(c.lcid, [&] {
      wchar_t dst[16];
      std::fill(std::begin(dst), std::end(dst), kWideSentinel);
      EXPECT_EQ(ConvertMBCSCharToSystem(c.src, c.srcLen, Cs(c.cs), dst, c.dstLen), c.result)
          << c.cs << " " << (c.src ? c.src : "(null)");
      EXPECT_EQ(std::wstring(dst, c.written.size()), c.written) << c.cs;
      for (size_t i = c.written.size(); i < 16; ++i)
        ASSERT_EQ(dst[i], kWideSentinel) << c.cs << " unit " << i;
    });
  }
  wchar_t dst[4] = {kWideSentinel};
  EXPECT_FALSE(ConvertMBCSCharToSystem("abc", 3, QXCHARSET_WINDOWS_LATIN1, nullptr, 4));
  EXPECT_EQ(dst[0], kWideSentinel);
}

TEST(ConvertMBCSCharToSystem, TerminatedSource) {
  InLocale(kEnglishUS, [] {
    wchar_t dst[8];
    std::fill(std::begin(dst), std::end(dst), kWideSentinel);
    EXPECT_TRUE(ConvertMBCSCharToSystem("h\xE9", QXCHARSET_WINDOWS_LATIN1, dst, 2));
    EXPECT_EQ(std::wstring(dst, 4), std::wstring(L"h\u00e9\0\ubeef", 4));
    EXPECT_FALSE(ConvertMBCSCharToSystem("", QXCHARSET_WINDOWS_LATIN1, dst, 2));
    EXPECT_FALSE(ConvertMBCSCharToSystem(nullptr, QXCHARSET_WINDOWS_LATIN1, dst, 2));
  });
}

TEST(ConvertSystemToMBCSChar, Cases) {
  struct Case {
    LCID lcid;
    const wchar_t* src;
    int cs;
    unsigned int dstLen;
    bool acceptTruncation;
    bool result;
    std::string written; // sentinel after
  } cases[] = {
      {kEnglishUS, L"caf\u00e9", 10, 16, false, true, std::string("caf\xE9\0", 5)},
      {kEnglishUS, L"e\u0301", 10, 16, false, true, std::string("\xE9\0", 2)}, // composed
      {kEnglishUS, L"\u20ac", 10, 16, false, true, std::string("\x80\0", 2)},
      {kEnglishUS, L"\u4e00", 10, 16, false, true, std::string("?\0", 2)},    // the page's '?'
      {kEnglishUS, L"\uff21", 10, 16, false, true, std::string("A\0", 2)},    // best fit
      {kEnglishUS, L"\u00e9", 34, 16, false, true, std::string("\x82\0", 2)}, // OEM 437
      {kEnglishUS, L"\u00e9", 0, 16, false, true, std::string("\xE9\0", 2)},  // ANSI 1252
      {kEnglishUS, L"\u3042", 19, 16, false, true, std::string("\x82\xA0\0", 3)},
      // Too small: whole characters only; accepted truncation is success.
      {kEnglishUS, L"abcd", 10, 3, false, false, std::string("abc", 3)},
      {kEnglishUS, L"abcd", 10, 3, true, true, std::string("abc", 3)},
      {kEnglishUS, L"abc", 10, 3, true, true, std::string("abc", 3)},
      {kEnglishUS, L"\u3042\u3044", 19, 3, true, true, std::string("\x82\xA0", 2)},
      {kEnglishUS, L"\u3042\u3044", 19, 3, false, false, std::string("\x82\xA0", 2)},
      // No code page: the system page (1252 here) with '_' for the unknown.
      {kEnglishUS, L"\u00e9\u4e00", 21, 16, false, true, std::string("\xE9_\0", 3)},
      {kEnglishUS, L"\u00e9\u4e00", 45, 16, false, true, std::string("\xE9_\0", 3)},
      {kEnglishUS, L"\u00e9\u4e00", 57, 16, false, true, std::string("\xE9_\0", 3)},
      {kEnglishUS, L"x\u3042", 52, 16, false, true, std::string("x_\0", 3)},
      {kJapanese, L"x\u3042\u05d0", 21, 16, false, true, std::string("x\x82\xA0_\0", 5)},
      {kEnglishUS, L"\u00e9\u4e00", 21, 2, true, true, std::string("\xE9_", 2)},
      {kEnglishUS, L"\u00e9\u4e00", 21, 2, false, false, std::string("\xE9_", 2)},
      // The placeholders of Neutral and 437 are no valid page: a failure is
      // tried again in the system page (and fails again here).
      {kEnglishUS, L"abcd", 0, 2, false, false, std::string("ab", 2)},
      {kEnglishUS, L"abcd", 34, 2, true, true, std::string("ab", 2)},
      // Rejected before the conversion.
      {kEnglishUS, L"abc", 10, 0, true, false, ""},
      {kEnglishUS, nullptr, 10, 16, true, false, ""},
  };
  for (const Case& c : cases) {
    InLocale(c.lcid, [&] {
      char dst[16];
      std::fill(std::begin(dst), std::end(dst), kByteSentinel);
      EXPECT_EQ(ConvertSystemToMBCSChar(c.src, dst, Cs(c.cs), c.dstLen, c.acceptTruncation),
                c.result)
          << c.cs << " " << (c.src ? c.src : L"(null)");
      EXPECT_EQ(std::string(dst, c.written.size()), c.written) << c.cs;
      for (size_t i = c.written.size(); i < 16; ++i)
        ASSERT_EQ(dst[i], kByteSentinel) << c.cs << " byte " << i;
    });
  }
  EXPECT_FALSE(ConvertSystemToMBCSChar(L"a", nullptr, QXCHARSET_WINDOWS_LATIN1, 4, true));
}

// The conversion must equal the platform call with WC_COMPOSITECHECK, with
// and without nonspacing marks in the text.
TEST(ConvertSystemToMBCSChar, SameAsTheCompositeCheckCall) {
  const wchar_t pool[] = {L'a',      L'e',      L'Z',      L' ',      L'\u00e9', L'\u0301',
                          L'\u0300', L'\u0308', L'\u20ac', L'\u3042', L'\u3099', L'\u4e00',
                          L'\uff21', L'\u0152', L'\u05b4', L'\u0e31', L'\u2026', L'\u00a0'};
  struct Page {
    QXCHARSET cs;
    UINT cp;
  } pages[] = {{QXCHARSET_WINDOWS_LATIN1, 1252},
               {QXCHARSET_WINDOWS_JAPANESE, 932},
               {QXCHARSET_WINDOWS_VIETNAMESE, 1258},
               {QXCHARSET_WINDOWS_HEBREW, 1255},
               {QXCHARSET_WINDOWS_THAI, 874}};
  InLocale(kEnglishUS, [&] {
    std::mt19937 rng(7);
    for (const Page& page : pages) {
      for (int round = 0; round < 2000; ++round) {
        std::wstring s;
        for (int k = rng() % 12; k > 0; --k)
          s += pool[rng() % (sizeof pool / sizeof pool[0])];
        unsigned int size = 1 + rng() % 30;
        std::vector<char> ours(32, kByteSentinel), theirs(32, kByteSentinel);
        bool ok = ConvertSystemToMBCSChar(s.c_str(), ours.data(), page.cs, size, false);
        int n = WideCharToMultiByte(page.cp, WC_COMPOSITECHECK, s.c_str(), -1, theirs.data(),
                                    static_cast<int>(size), nullptr, nullptr);
        ASSERT_EQ(ok, n > 0) << page.cp << " round " << round;
        ASSERT_EQ(ours, theirs) << page.cp << " round " << round;
      }
    }
  });
}

TEST(ConvertWideCharToSystem, Cases) {
  struct Case {
    const wchar_t* src;
    unsigned int srcLen, dstLen;
    bool result;
    std::wstring written;
  } cases[] = {
      {L"abc", 3, 8, true, std::wstring(L"abc\0\0\0\0\0", 8)}, // strcpyn zero-fills
      {L"abc", 3, 4, true, std::wstring(L"abc\0", 4)},
      {L"abc", 3, 3, false, L"abc"},                      // wcsncpy, no terminator
      {L"abcdef", 2, 4, true, std::wstring(L"abc\0", 4)}, // srcLen only decides
      {L"ab", 5, 4, false, std::wstring(L"ab\0\0", 4)},
      {L"abc", 0, 0, false, L""},
      {nullptr, 0, 3, true, std::wstring(L"\0\0\0", 3)},
  };
  for (const Case& c : cases) {
    wchar_t dst[12];
    std::fill(std::begin(dst), std::end(dst), kWideSentinel);
    EXPECT_EQ(ConvertWideCharToSystem(c.src, c.srcLen, dst, QXCHARSET_MAC_ROMAN, c.dstLen),
              c.result)
        << (c.src ? c.src : L"(null)") << " " << c.srcLen << "/" << c.dstLen;
    EXPECT_EQ(std::wstring(dst, c.written.size()), c.written);
    for (size_t i = c.written.size(); i < 12; ++i)
      ASSERT_EQ(dst[i], kWideSentinel);
  }
}

TEST(ConvertSystemToWideChar, Cases) {
  struct Case {
    const wchar_t* src;
    unsigned int dstLen;
    bool acceptTruncation, result;
    std::wstring written;
  } cases[] = {
      {L"abc", 5, false, true, std::wstring(L"abc\0\0", 5)},
      {L"abc", 4, false, true, std::wstring(L"abc\0", 4)},
      {L"abc", 3, false, false, L"abc"},
      {L"abc", 3, true, true, L"abc"}, // only the terminator left out
      {L"abcd", 3, true, false, L"abc"},
      {L"", 1, false, true, std::wstring(L"\0", 1)},
      {L"", 0, true, true, L""},
  };
  for (const Case& c : cases) {
    wchar_t dst[12];
    std::fill(std::begin(dst), std::end(dst), kWideSentinel);
    EXPECT_EQ(ConvertSystemToWideChar(c.src, dst, c.dstLen, c.acceptTruncation), c.result)
        << c.src << " " << c.dstLen << " " << c.acceptTruncation;
    EXPECT_EQ(std::wstring(dst, c.written.size()), c.written);
    for (size_t i = c.written.size(); i < 12; ++i)
      ASSERT_EQ(dst[i], kWideSentinel);
  }
}

} // namespace
