// quotestring and unquotestring: into another buffer and in place, with
// sentinel-filled buffers.
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qxtest::Buffer;

struct QuoteCase {
  const wchar_t* src;
  unsigned int size;
  const wchar_t* quote;
  const wchar_t* copy;    // quoting into another buffer
  const wchar_t* inPlace; // quoting in place
};

// quote_fuzz holds single-unit quotes at every size from 3 to the rules.
// clang-format off
const QuoteCase kQuoteCases[] = {
    {L"it's", 8, L"'", L"'it''s'", L"'it''s'"}, // exact fit: the last doubling has room
    {L"it's", 6, L"'", L"'it'", L"'it''"}, // in place the doubling finds no room
    {L"a\"b", 9, L"\"x", L"\"a\"\"b\"", L"\"a\"\"b\""}, // only the first unit quotes
    {L"abc", 2, L"'", L"", L""}, {L"abc", 1, L"'", L"", L""},
    {L"abcdef", 5, L"", L"abcd", L"abcd"}, {L"abcdef", 5, nullptr, L"abcd", L"abcd"}, // a copy
};
// clang-format on

TEST(Quote, Table) {
  for (const QuoteCase& c : kQuoteCases) {
    SCOPED_TRACE(testing::Message() << "'" << c.src << "' size " << c.size);
    auto copy = Buffer(c.size);
    EXPECT_EQ(quotestring(copy.data(), c.src, c.size, c.quote), copy.data());
    EXPECT_EQ(copy.Text(), c.copy);
    EXPECT_EQ(copy.TouchedUpTo(), std::wstring(c.copy).size() + 1); // no fill after it

    auto inPlace = Buffer(c.size, c.src);
    EXPECT_EQ(quotestring(inPlace.data(), inPlace.data(), c.size, c.quote), inPlace.data());
    EXPECT_EQ(inPlace.Text(), c.inPlace);
    EXPECT_TRUE(inPlace.UntouchedFrom(c.size));
  }
  auto zero = Buffer(0);
  quotestring(zero.data(), L"abc", 0, L"'");
  EXPECT_EQ(zero.TouchedUpTo(), 0u);
  auto nullSource = Buffer(4);
  quotestring(nullSource.data(), nullptr, 4, L"'");
  EXPECT_EQ(nullSource.Text(), L"''");
  EXPECT_EQ(quotestring(nullptr, L"a", 4, L"'"), nullptr);
}

TEST(Unquote, Table) {
  // clang-format off
  const struct {
    const wchar_t* src;
    unsigned int size;
    const wchar_t* quote;
    const wchar_t* out;
    unsigned int touched; // units written
  } cases[] = {
      {L"'it''s'", 3, L"'", L"it", 3},
      {L"ab'", 5, L"'", L"ab'", 5}, // not quoted: strcpyn, which fills the size
      {L"'a'", 5, L"", L"'a'", 5},  // no quote character: strcpyn
      {L"'it''s'", 0, L"'", L"", 0}, {nullptr, 4, L"'", L"", 4},
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "'" << (c.src ? c.src : L"(null)") << "' size " << c.size);
    auto buf = Buffer(c.size);
    EXPECT_EQ(unquotestring(buf.data(), c.src, c.size, c.quote), buf.data());
    EXPECT_EQ(buf.Text(), c.out);
    EXPECT_EQ(buf.TouchedUpTo(), c.touched);
    if (!c.src)
      continue;
    std::wstring inPlace = std::wstring(c.src) + std::wstring(c.size + 1, L'\0');
    unquotestring(inPlace.data(), inPlace.data(), c.size, c.quote);
    EXPECT_STREQ(inPlace.c_str(), c.size ? c.out : c.src); // size 0 writes nothing
  }
  EXPECT_EQ(unquotestring(nullptr, L"'a'", 4, L"'"), nullptr);
}

} // namespace
