// quotestring and unquotestring: tables with sentinel buffers, every size
// down to 3, and quoting in place.
#include "text/wide_test_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qxtest::SentinelBuffer;

struct QuoteCase {
  const wchar_t* src;
  unsigned int size;
  const wchar_t* quote;
  const wchar_t* copy;    // quoting into another buffer
  const wchar_t* inPlace; // quoting in place
};

const QuoteCase kQuoteCases[] = {
    {L"it's", 20, L"'", L"'it''s'", L"'it''s'"},
    {L"it's", 7, L"'", L"'it'''", L"'it'''"},
    {L"it's", 6, L"'", L"'it'", L"'it''"}, // in place the doubling finds no room
    {L"ab'", 6, L"'", L"'ab'", L"'ab''"},
    {L"a'bc", 7, L"'", L"'a''b'", L"'a''b'"},   // in place: "c" is dropped for the copy
    {L"a'b'c", 8, L"'", L"'a''b'", L"'a''b''"}, // in place: "c" dropped, then no room
    {L"''", 8, L"'", L"''''''", L"''''''"},
    {L"abc", 3, L"'", L"''", L"''"},
    {L"abcdef", 5, L"'", L"'ab'", L"'ab'"},
    {L"", 3, L"'", L"''", L"''"},
    {L"a\"b", 9, L"\"x", L"\"a\"\"b\"", L"\"a\"\"b\""}, // only the first unit quotes
    {L"abc", 2, L"'", L"", L""},
    {L"abc", 1, L"'", L"", L""},
};

TEST(Quote, Table) {
  for (const QuoteCase& c : kQuoteCases) {
    SCOPED_TRACE(testing::Message() << "'" << c.src << "' size " << c.size);
    SentinelBuffer copy(c.size);
    EXPECT_EQ(quotestring(copy.data(), c.src, c.size, c.quote), copy.data());
    EXPECT_EQ(copy.Text(), c.copy);
    EXPECT_EQ(copy.TouchedUpTo(), std::wstring(c.copy).size() + 1); // no fill after it

    SentinelBuffer inPlace(c.size, c.src);
    EXPECT_EQ(quotestring(inPlace.data(), inPlace.data(), c.size, c.quote), inPlace.data());
    EXPECT_EQ(inPlace.Text(), c.inPlace);
    EXPECT_TRUE(inPlace.TailIntact());
  }
}

TEST(Quote, EmptyQuoteIsACopy) {
  for (const wchar_t* quote : {L"", static_cast<const wchar_t*>(nullptr)}) {
    SentinelBuffer buf(5);
    quotestring(buf.data(), L"abcdef", 5, quote);
    EXPECT_EQ(buf.Text(), L"abcd");
    EXPECT_EQ(buf.TouchedUpTo(), 5u);
  }
  SentinelBuffer zero(0);
  quotestring(zero.data(), L"abc", 0, L"'");
  EXPECT_EQ(zero.TouchedUpTo(), 0u);
  SentinelBuffer nullSource(4);
  quotestring(nullSource.data(), nullptr, 4, L"'");
  EXPECT_EQ(nullSource.Text(), L"''");
  EXPECT_EQ(quotestring(nullptr, L"a", 4, L"'"), nullptr);
}

// Every size from 3 up: the result fits, is quoted, and unquotes to a
// prefix of the source (the whole source once there is room).
TEST(Quote, EverySizeRoundTrips) {
  for (const wchar_t* src : {L"it's", L"'''", L"a'b'c'd", L"plain text", L""}) {
    const std::wstring s = src;
    const std::wstring full = L"'" + [&] {
      std::wstring d;
      for (wchar_t c : s)
        d += c == L'\'' ? L"''" : std::wstring(1, c);
      return d;
    }() + L"'";
    for (unsigned int size = 3; size <= full.size() + 3; ++size) {
      for (bool inPlace : {false, true}) {
        SCOPED_TRACE(testing::Message()
                     << "'" << src << "' size " << size << " in place " << inPlace);
        SentinelBuffer buf(size, inPlace ? src : nullptr);
        quotestring(buf.data(), inPlace ? buf.data() : src, size, L"'");
        ASSERT_TRUE(buf.TailIntact());
        std::wstring q = buf.Text();
        ASSERT_LT(q.size(), size);
        ASSERT_GE(q.size(), 2u);
        EXPECT_EQ(q.front(), L'\'');
        EXPECT_EQ(q.back(), L'\'');
        if (size > full.size()) {
          EXPECT_EQ(q, full);
        }
        SentinelBuffer back(size);
        unquotestring(back.data(), q.c_str(), size, L"'");
        EXPECT_EQ(s.compare(0, back.Text().size(), back.Text()), 0) << back.Text();
        if (size > full.size()) {
          EXPECT_EQ(back.Text(), s);
        }
      }
    }
  }
}

struct UnquoteCase {
  const wchar_t* src;
  unsigned int size;
  const wchar_t* quote;
  const wchar_t* out;
  unsigned int touched; // units written
};

TEST(Unquote, Table) {
  const UnquoteCase cases[] = {
      {L"'it''s'", 20, L"'", L"it's", 5},
      {L"'ab'cd", 20, L"'", L"ab", 3}, // what follows the closing quote is dropped
      {L"'ab", 20, L"'", L"ab", 3},
      {L"''", 20, L"'", L"", 1},
      {L"''''", 20, L"'", L"'", 2},
      {L"'it''s'", 3, L"'", L"it", 3},
      {L"'it''s'", 4, L"'", L"it'", 4},
      {L"'it''s'", 1, L"'", L"", 1},
      {L"'it''s'", 0, L"'", L"", 0},
      {L"ab'", 5, L"'", L"ab'", 5}, // not quoted: strcpyn, which fills the size
      {L"'a'", 5, L"", L"'a'", 5},  // no quote character: strcpyn
      {L"\"a\"\"b\"", 9, L"\"", L"a\"b", 4},
      {L"", 4, L"'", L"", 4},
  };
  for (const UnquoteCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "'" << c.src << "' size " << c.size);
    SentinelBuffer buf(c.size);
    EXPECT_EQ(unquotestring(buf.data(), c.src, c.size, c.quote), buf.data());
    EXPECT_EQ(buf.Text(), c.out);
    EXPECT_EQ(buf.TouchedUpTo(), c.touched);
    std::wstring inPlace = std::wstring(c.src) + std::wstring(c.size + 1, L'\0');
    unquotestring(inPlace.data(), inPlace.data(), c.size, c.quote);
    EXPECT_STREQ(inPlace.c_str(), c.size ? c.out : c.src); // size 0 writes nothing
  }
  EXPECT_EQ(unquotestring(nullptr, L"'a'", 4, L"'"), nullptr);
  SentinelBuffer buf(4);
  unquotestring(buf.data(), nullptr, 4, L"'");
  EXPECT_EQ(buf.Text(), L"");
}

} // namespace
