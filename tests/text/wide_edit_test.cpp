// Case, character classes, the in-place edits, white space, trimming and
// line ends.
#include "platform/heap.h"
#include "qxutil/frame.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

struct CharCase {
  wchar_t c, upper, lower;
  const char* classes; // 'a' alpha, 'n' alnum, 'U' upper, 'l' lower, 'p' print
};

const wchar_t kAboveBmp = static_cast<wchar_t>(0x10041);

// clang-format off
const CharCase kCharCases[] = {
    {L'a', L'A', L'a', "anlp"}, {L'Z', L'Z', L'z', "anUp"}, {L'5', L'5', L'5', "np"},
    {L' ', L' ', L' ', "p"}, {L'\t', L'\t', L'\t', ""}, {L'\x7f', L'\x7f', L'\x7f', ""},
    {L'\x80', L'\x80', L'\x80', "p"}, {L'\x9f', L'\x9f', L'\x9f', "p"}, // 128 up is printable
    {L'\u00e9', L'\u00c9', L'\u00e9', "anlp"},
    {L'\u00df', L'\u00df', L'\u00df', "anlp"}, // no one-unit upper case
    {L'\u0661', L'\u0661', L'\u0661', "np"},   // Arabic-Indic one
    {kAboveBmp, kAboveBmp, kAboveBmp, "p"},
};
// clang-format on

TEST(WideCase, Characters) {
  for (const CharCase& c : kCharCases) {
    SCOPED_TRACE(testing::Message() << "U+" << std::hex << static_cast<unsigned>(c.c));
    auto has = [&](char k) { return std::strchr(c.classes, k) != nullptr; };
    EXPECT_EQ(qxToUpper(c.c), c.upper);
    EXPECT_EQ(qxToLower(c.c), c.lower);
    EXPECT_EQ(qxIsAlpha(c.c), has('a'));
    EXPECT_EQ(qxIsAlphaNum(c.c), has('n'));
    EXPECT_EQ(qxIsUpper(c.c), has('U'));
    EXPECT_EQ(qxIsLower(c.c), has('l'));
    EXPECT_EQ(qxIsPrint(c.c), has('p'));
  }
  EXPECT_EQ(qxToUpper(0), 0);
}

TEST(WideCase, Strings) {
  wchar_t s[] = L"Stra\u00dfe \u00e9t\u00e9 1";
  EXPECT_EQ(qxStrUpr(s), s);
  EXPECT_STREQ(s, L"STRA\u00dfE \u00c9T\u00c9 1");
  EXPECT_EQ(qxStrLwr(s), s);
  EXPECT_STREQ(s, L"stra\u00dfe \u00e9t\u00e9 1");
  EXPECT_EQ(qxStrUpr(nullptr), nullptr);
  wchar_t r[] = L"ab\u0301c";
  EXPECT_STREQ(qxStrrev(r), L"c\u0301ba"); // units, in both modes
  qxtest::InMode(qxtest::Mode::kDbcs, [] {
    wchar_t d[] = L"ab\u0301c";
    EXPECT_STREQ(qxStrrev(d), L"c\u0301ba");
  });
  EXPECT_EQ(qxStrrev(nullptr), nullptr);
}

TEST(WideEdit, Memrev) {
  unsigned char bytes[] = {1, 2, 3, 4, 5, 0xEE};
  EXPECT_EQ(memrev(bytes, 5), bytes);
  const unsigned char reversed[] = {5, 4, 3, 2, 1, 0xEE};
  EXPECT_EQ(std::memcmp(bytes, reversed, 6), 0);
  EXPECT_EQ(memrev(bytes, 0), bytes);
  EXPECT_EQ(memrev(nullptr, 4), nullptr);
}

// wide_edit_fuzz holds the replacements, copies, trims, skipwhite and the
// line-end rewrites to the plain rules at sizes from 1; here size 0 and null.
TEST(WideEdit, SizeZeroAndNull) {
  wchar_t dst[8] = L"ab"; // no copy: what dst holds gets the backslash
  concat_backslash(L"zzz", dst, 0);
  EXPECT_STREQ(dst, L"ab\\");
  concat_backslash(L"x", nullptr, 4);
  auto copy = qxtest::Buffer(4);
  strcpyn(copy.data(), nullptr, 4);
  EXPECT_EQ(copy.Text(), L"");
  EXPECT_EQ(strcpyn(nullptr, L"abc", 4), nullptr);
  qxCharReplace(nullptr, L",", L'x');
  TextReplaceChar(nullptr, L'a', L'b');
  FilterNewline(nullptr, L"a", 1, false);
  for (unsigned int (*edit)(wchar_t*) : {ltrim, ltrim2, rtrim, TextRemoveCrs})
    EXPECT_EQ(edit(nullptr), 0u);
  EXPECT_EQ(skipwhite(static_cast<const wchar_t*>(nullptr)), nullptr);
}

TEST(WideTrim, RtrimANeverCutsADoubleByteCharacter) {
  const struct {
    const char* in;
    unsigned int latin1;   // code page 1252
    unsigned int japanese; // code page 932
  } cases[] = {
      {"ab \t", 2, 2},      {"a\x81\t", 2, 3}, // 0x81 0x09 is one character in 932
      {"a\x81\x40 ", 3, 3},                    // the ideographic space of 932 is printable
      {"a \x81", 3, 3},                        // a lead byte before the terminator stands alone
      {"\x01\x02", 0, 0},   {"", 0, 0},
  };
  for (qxtest::Mode mode : {qxtest::Mode::kSingleByte, qxtest::Mode::kDbcs})
    qxtest::InMode(mode, [&] {
      for (const auto& c : cases) {
        std::string s = c.in;
        unsigned int want = mode == qxtest::Mode::kDbcs ? c.japanese : c.latin1;
        EXPECT_EQ(rtrimA(s.data()), want) << qxtest::ModeName(mode) << " " << c.in;
        EXPECT_EQ(std::string(s.c_str()).size(), want);
      }
    });
  EXPECT_EQ(rtrimA(nullptr), 0u);
}

// wide_edit_fuzz holds the rule; here zeros among the n units, null and a
// failed allocation.
TEST(LineEnds, AddCrs) {
  const std::wstring src(L"a\0\nb", 4);
  wchar_t* out = nullptr;
  EXPECT_EQ(TextAddCrs(&out, src.data(), 4), 5u);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(std::wstring(out, 6), std::wstring(L"a\0\r\nb\0", 6));
  ffree(&out);
  wchar_t* untouched = reinterpret_cast<wchar_t*>(0x1);
  EXPECT_EQ(TextAddCrs(&untouched, nullptr, 3), 0u);
  EXPECT_EQ(untouched, reinterpret_cast<wchar_t*>(0x1));
  EXPECT_EQ(TextAddCrs(nullptr, L"a", 1), 0u);
  // Without memory *out keeps what it held.
  qx::platform::FailAllocations(1, true);
  unsigned int n = TextAddCrs(&untouched, L"a\nb", 3);
  qx::platform::FailAllocations(0, false);
  EXPECT_EQ(n, 0u);
  EXPECT_EQ(untouched, reinterpret_cast<wchar_t*>(0x1));
}

} // namespace
