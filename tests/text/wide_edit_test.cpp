// Case, character classes, the in-place edits, white space, trimming and
// line ends.
#include "platform/heap.h"
#include "qxutil/frame.h"
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

TEST(WideEdit, ConcatBackslashAndStrcpyn) {
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
  // strcpyn's sizes are held by the unquote and conversion tables and quote_fuzz.
  auto copy = qxtest::Buffer(4);
  strcpyn(copy.data(), nullptr, 4);
  EXPECT_EQ(copy.Text(), L"");
  EXPECT_EQ(strcpyn(nullptr, L"abc", 4), nullptr);
}

TEST(WideTrim, Skipwhite) {
  const struct {
    const wchar_t* in;
    long at; // -1: null
  } cases[] = {{L" \tx ", 2}, {L"\x01x", 0},    {L"  ", -1},
               {L"", -1},     {L"\r\n\f y", 4}, {L"\vx", 0}}; // vertical tab is not white space
  for (const auto& c : cases) {
    const wchar_t* r = skipwhite(c.in);
    EXPECT_EQ(r ? r - c.in : -1, c.at) << c.in;
  }
  EXPECT_EQ(skipwhite(static_cast<const wchar_t*>(nullptr)), nullptr);
}

// The in-place edits: the text afterwards and the count returned.
struct EditCase {
  unsigned int (*edit)(wchar_t*);
  const wchar_t* in;
  const wchar_t* out;
  unsigned int result;
};

// clang-format off
const EditCase kEditCases[] = {
    {ltrim, L"\t a ", L"a ", 2}, {ltrim, L"a", L"a", 0}, {ltrim, L"", L"", 0},
    {ltrim, L" \x01\x7f" L"b", L"b", 3},   // unprintable units go too
    {ltrim, L" \t ", L" \t ", 0},          // nothing but such units: left as it is
    {ltrim, L"\x80x", L"\x80x", 0},        // 128 and up is printable
    {ltrim2, L"  \ta", L"\ta", 2}, {ltrim2, L"   ", L"", 3}, {ltrim2, L"", L"", 0},
    {rtrim, L"a b \r\n", L"a b", 3}, {rtrim, L"abc", L"abc", 3}, {rtrim, L"", L"", 0},
    {rtrim, L" \t", L"", 0}, {rtrim, L"a\x01\x7f", L"a", 1}, {rtrim, L"a\u00a0", L"a\u00a0", 2},
    {TextRemoveCrs, L"a\r\nb\r\n", L"a\nb\n", 4}, {TextRemoveCrs, L"a\r\r\nb", L"a\r\nb", 4},
    {TextRemoveCrs, L"\r", L"\r", 1}, {TextRemoveCrs, L"a\n\rb", L"a\n\rb", 4},
    {TextRemoveCrs, L"", L"", 0},
};
// clang-format on

TEST(WideTrim, InPlaceEdits) {
  for (const EditCase& c : kEditCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kEditCases) << " '" << c.in << "'");
    std::wstring s = c.in;
    EXPECT_EQ(c.edit(s.data()), c.result);
    EXPECT_STREQ(s.c_str(), c.out);
    // rtrim zeroes every trimmed unit, not only the first.
    for (size_t i = c.result; c.edit == rtrim && i < s.size(); ++i)
      EXPECT_EQ(s[i], 0) << "at " << i;
    EXPECT_EQ(c.edit(nullptr), 0u);
  }
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

TEST(LineEnds, AddCrs) {
  const struct {
    std::wstring src;
    unsigned int n;
    std::wstring out;
  } cases[] = {
      {L"a\nb", 3, L"a\r\nb"},
      {L"a\r\nb", 4, L"a\r\r\nb"}, // by design
      {L"a\nb\n", 2, L"a\r\n"},    // only the first n units
      {L"", 0, L""},
      {std::wstring(L"a\0\nb", 4), 4, std::wstring(L"a\0\r\nb", 5)}, // n units, zeros too
  };
  for (const auto& c : cases) {
    wchar_t* out = nullptr;
    EXPECT_EQ(TextAddCrs(&out, c.src.data(), c.n), c.out.size());
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(std::wstring(out, c.out.size() + 1), c.out + L'\0');
    ffree(&out);
  }
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

TEST(LineEnds, FilterNewline) {
  const struct {
    const wchar_t* src;
    unsigned int n;
    bool decode;
    const wchar_t* out; // exactly n units
  } cases[] = {
      {L"a\r\nb", 4, false, L"a\\nb"},     {L"a\\nb", 4, true, L"a\r\nb"},
      {L"a\r\n", 2, false, L"a\r"}, // the pair is cut by n
      {L"\r\r\n\n", 4, false, L"\r\\n\n"}, {L"\\\\n", 3, true, L"\\\r\n"},
      {L"x\nn", 3, true, L"x\nn"},
  };
  for (const auto& c : cases) {
    auto buf = qxtest::Buffer(c.n);
    FilterNewline(buf.data(), c.src, c.n, c.decode);
    EXPECT_EQ(std::wstring(buf.data(), c.n), std::wstring(c.out)) << c.src;
    EXPECT_EQ(buf.TouchedUpTo(), c.n) << "no terminator: " << c.src;
    std::wstring inPlace(c.src);
    FilterNewline(inPlace.data(), inPlace.data(), c.n, c.decode);
    EXPECT_EQ(inPlace.substr(0, c.n), std::wstring(c.out)) << "in place: " << c.src;
  }
  FilterNewline(nullptr, L"a", 1, false);
}

} // namespace
