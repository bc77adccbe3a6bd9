// The fast paths of the code-page conversions against their reference forms
// (tests/common/codepage_compare.h), input class by input class: ASCII runs,
// double-byte runs, characters the page lacks, nonspacing marks under
// WC_COMPOSITECHECK, best-fit characters and the end of the buffer. Each
// piece is shifted across the 16-unit blocks by an ASCII prefix and
// converted into every output size up to more than it needs. Long random
// texts are compared by fuzz/codepage_fastpath_fuzz.cpp.
#include "common/platform_codepage_compare.h"
#include "platform/codepage_tables.h"
#include "platform/unicode.h"

#include <gtest/gtest.h>

#include <string>

using namespace qx::win;

namespace {

const UINT kPages[] = {1252, 1251, 864, 932, 936, 949, 950};

struct EncodeCase {
  const char* what;
  std::wstring text;
};

const EncodeCase kEncodeCases[] = {
    {"ASCII run", L"abcdefghijklmnopqrstuvwxyz0123456789"},
    {"double-byte run", L"\u6F22\u5B57\u304B\u306A\u4E2D\u6587\uD55C\uAD6D\u7E41\u9AD4\u3002x"},
    {"NUL inside", std::wstring(L"ab\0cd\u6F22\0", 7)},
    {"units the page lacks", L"a\u0E01\U0001F600\xD800z\uFFFF\u10A0"},
    {"a unit past U+10FFFF", std::wstring(1, static_cast<wchar_t>(0x7FFFFFFF)) + L"a"},
    {"base and mark compose", L"e\u0301a\u0302\u0301\u304B\u3099"},
    {"mark without composition", L"q\u0301\u6F22\u0301\u0E01\u0301"},
    {"stray and repeated marks", L"\u0301\u0301a\u0327\u0301\u0301"},
    {"best fit", L"\uFF21\u221E\u00E4\u00A5\u2252\u30FB"},
    {"mark after an ASCII block", L"abcdefghijklmnop\u0301qrstuvwxyzabcdef\u0308"},
};

const DWORD kEncodeFlags[] = {0, WC_COMPOSITECHECK, WC_COMPOSITECHECK | WC_DEFAULTCHAR,
                              WC_COMPOSITECHECK | WC_DISCARDNS};

TEST(CodePageFastPath, EncodeEveryClassAtEveryShiftAndSize) {
  for (const EncodeCase& c : kEncodeCases) {
    for (size_t shift = 0; shift <= 17; ++shift) {
      // The piece after `shift` ASCII units, twice, then an ASCII tail.
      std::wstring text = std::wstring(shift, L'.') + c.text + c.text + L"tail";
      const int len = static_cast<int>(text.size());
      for (UINT cp : kPages) {
        const bool dbcs = cp >= 932 && cp <= 950;
        for (size_t f = 0; f < std::size(kEncodeFlags); ++f) {
          const DWORD flags = kEncodeFlags[f];
          const char* def = f % 2 == 0 ? nullptr : dbcs ? "\x81\x45" : "_";
          ASSERT_EQ(qxtest::EncodeDiffers(cp, flags, text.data(), len, def, len * 2), -1)
              << c.what << ", shift " << shift << ", page " << cp << ", flags " << flags;
        }
      }
    }
  }
}

struct DecodeCase {
  const char* what;
  std::string bytes;
};

const DecodeCase kDecodeCases[] = {
    {"ASCII run", "abcdefghijklmnopqrstuvwxyz0123456789"},
    {"high bytes", "\x80\xA0\xE9\xFF\x81\xC0"},
    {"double-byte pairs", "\x82\xA0\x93\xFA\xB0\xA1\xA4\x40\x81\x40"},
    {"undefined pairs and a lead byte before NUL", std::string("\x85\x40\x81\x20\x82\0a", 7)},
    {"a lead byte at the end", "abc\x82"},
};

TEST(CodePageFastPath, DecodeEveryClassAtEveryShiftAndSize) {
  for (const DecodeCase& c : kDecodeCases) {
    for (size_t shift = 0; shift <= 17; ++shift) {
      std::string bytes = std::string(shift, '.') + c.bytes + c.bytes + "tail";
      const int len = static_cast<int>(bytes.size());
      for (UINT cp : kPages) {
        for (DWORD flags : {0u, static_cast<DWORD>(MB_PRECOMPOSED)}) {
          ASSERT_EQ(qxtest::DecodeDiffers(cp, flags, bytes.data(), len, len), -1)
              << c.what << ", shift " << shift << ", page " << cp;
        }
      }
    }
  }
}

// The flat table of each double-byte page holds every unit's code, bytes in
// writing order, and 0 exactly where the general step must decide.
TEST(CodePageFastPath, FlatTablesHoldTheCodes) {
  using qx::platform::CodePageTable;
  for (unsigned i = 0; i < qx::platform::CodePageTableCount(); ++i) {
    const CodePageTable& t = qx::platform::CodePageTableAt(i);
    if (!t.dbcs) {
      continue;
    }
    const uint16_t* flat = qx::platform::DbcsUnitCodes(t);
    ASSERT_NE(flat, nullptr) << t.codePage;
    for (uint32_t u = 0; u <= 0xFFFF; ++u) {
      uint16_t code = t.Encode(u);
      bool general = u == 0 || u == 0xFFFF || code == 0 || qx::platform::IsNonSpacingMark(u);
      uint16_t want = general       ? 0
                      : code > 0xFF ? static_cast<uint16_t>(code >> 8 | (code & 0xFF) << 8)
                                    : code;
      ASSERT_EQ(flat[u], want) << "page " << t.codePage << ", unit " << u;
    }
  }
}

} // namespace
