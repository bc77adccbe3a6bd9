// Case, character classes and the in-place edits.
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST(WideEdit, ReplaceAndReverse) {
  const struct {
    const wchar_t* in;
    const wchar_t* set;
    wchar_t c;
    const wchar_t* out; // up to the first terminator
    size_t zeros;       // how many units became 0
  } cases[] = {
      {L"a,b;c", L",;", L'|', L"a|b|c", 0},
      {L"abc", L"", L'|', L"abc", 0},
      {L"a,b,c", L",", 0, L"a", 2}, // every one, not only the first
  };
  for (const auto& c : cases) {
    std::wstring s = c.in;
    qxCharReplace(s.data(), c.set, c.c);
    EXPECT_STREQ(s.c_str(), c.out) << c.in;
    EXPECT_EQ(std::count(s.begin(), s.end(), 0), static_cast<long>(c.zeros)) << c.in;
  }
  std::wstring t = L"a\nb\n";
  TextReplaceChar(t.data(), L'\n', 0);
  EXPECT_EQ(t, std::wstring(L"a\0b\0", 4));
  TextReplaceChar(t.data(), 0, L'x'); // the terminator is never a `from`
  EXPECT_EQ(t, std::wstring(L"a\0b\0", 4));
  qxCharReplace(nullptr, L",", L'x');
  TextReplaceChar(nullptr, L'a', L'b');

  unsigned char bytes[] = {1, 2, 3, 4, 5, 0xEE};
  EXPECT_EQ(memrev(bytes, 5), bytes);
  const unsigned char reversed[] = {5, 4, 3, 2, 1, 0xEE};
  EXPECT_EQ(std::memcmp(bytes, reversed, 6), 0);
  EXPECT_EQ(memrev(bytes, 0), bytes);
  EXPECT_EQ(memrev(nullptr, 4), nullptr);
}

TEST(WideEdit, ConcatBackslash) {
  // strcpyn fills all n units; the backslash and its terminator may use the
  // one spare unit after them.
  const struct {
    const wchar_t* src;
    unsigned int n;
    const wchar_t* out;
    size_t touched; // units written
  } cases[] = {{L"/data", 10, L"/data\\", 10},
               {L"/data/", 10, L"/data/", 10},
               {L"C:\\x\\", 10, L"C:\\x\\", 10},
               {L"", 10, L"", 10},
               {L"abcdef", 4, L"abc\\", 5}, // the copy is cut, then appended
               {L"abc", 1, L"", 1}};
  for (const auto& c : cases) {
    auto buf = qxtest::Buffer(c.n);
    concat_backslash(c.src, buf.data(), c.n);
    EXPECT_EQ(buf.Text(), std::wstring(c.out)) << c.src << " n=" << c.n;
    EXPECT_EQ(buf.TouchedUpTo(), c.touched) << c.src;
  }
  // n = 0: no copy; what dst holds gets the backslash.
  wchar_t dst[8] = L"ab";
  concat_backslash(L"zzz", dst, 0);
  EXPECT_STREQ(dst, L"ab\\");
  concat_backslash(L"x", nullptr, 4);
}

TEST(WideEdit, StrcpynAllSizes) {
  const wchar_t* src = L"abc";
  for (unsigned int n = 0; n <= 6; ++n) {
    auto buf = qxtest::Buffer(n);
    EXPECT_EQ(strcpyn(buf.data(), src, n), buf.data());
    EXPECT_EQ(buf.Text(), std::wstring(src).substr(0, n ? n - 1 : 0)) << n;
    EXPECT_EQ(buf.TouchedUpTo(), n) << n; // the whole of n is written, no more
    EXPECT_TRUE(buf.UntouchedFrom(n)) << n;
  }
  auto buf = qxtest::Buffer(4);
  strcpyn(buf.data(), nullptr, 4);
  EXPECT_EQ(buf.Text(), L"");
  EXPECT_EQ(strcpyn(nullptr, src, 4), nullptr);
}

} // namespace
