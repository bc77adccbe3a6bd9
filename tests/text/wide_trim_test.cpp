// White space, trimming and line ends.
#include "platform/heap.h"
#include "qxutil/frame.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(WideTrim, Skipwhite) {
  const struct {
    const wchar_t* in;
    long at; // -1: null
  } cases[] = {{L" \tx ", 2}, {L"x", 0},        {L"  ", -1},
               {L"", -1},     {L"\r\n\f y", 4}, {L"\vx", 0}, // vertical tab is not white space
               {L"\x01x", 0}};
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
    {ltrim2, L"  \ta", L"\ta", 2}, {ltrim2, L"   ", L"", 3}, {ltrim2, L"a ", L"a ", 0},
    {ltrim2, L"", L"", 0},
    {rtrim, L"a b \r\n", L"a b", 3}, {rtrim, L"abc", L"abc", 3}, {rtrim, L"", L"", 0},
    {rtrim, L" \t", L"", 0}, {rtrim, L"a\x01\x7f", L"a", 1}, {rtrim, L"a\u00a0", L"a\u00a0", 2},
    {rtrim, L"a\v", L"a", 1}, // VT is unprintable
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
}

TEST(LineEnds, AddCrsWithoutMemory) {
  wchar_t keep[] = L"old";
  wchar_t* out = keep;
  qx::platform::FailAllocations(1, true);
  unsigned int n = TextAddCrs(&out, L"a\nb", 3);
  qx::platform::FailAllocations(0, false);
  EXPECT_EQ(n, 0u);
  EXPECT_EQ(out, keep);
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
