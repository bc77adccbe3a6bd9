// The three tokenisers (lists with quotes and brackets, strtok in both
// modes, the positional form) and quoting, into another buffer and in place.
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

struct ListCase {
  const wchar_t* text;
  const wchar_t* delims;
  bool brackets;
  std::vector<std::wstring> tokens;
};

// strtok_fuzz holds the tokens and places of "," ";" and a mark as
// delimiters to the plain rules; these delimiters are also quotes or closers.
const ListCase kListCases[] = {
    {L"(a)b),c", L")", true, {L"(a)b", L",c"}},     // the closer to depth 0 is not a delimiter
    {L"a\"b\"c", L"\"", false, {L"a", L"b", L"c"}}, // delimiters come before quotes
};

TEST(ListTokens, Table) {
  for (const ListCase& c : kListCases) {
    SCOPED_TRACE(testing::Message() << "'" << c.text << "' brackets " << c.brackets);
    std::wstring text = c.text;
    std::vector<std::wstring> got;
    wchar_t* next = nullptr;
    for (wchar_t* p = text.data(); wchar_t* token = qxStrtok(p, c.delims, c.brackets, &next);
         p = next) {
      got.push_back(token);
      ASSERT_LT(got.size(), 10u);
    }
    EXPECT_EQ(got, c.tokens);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(*next, 0); // null only once the end is reached
    EXPECT_EQ(next, text.data() + text.size());
  }
  wchar_t text[] = L"a,b";
  wchar_t* next = text;
  EXPECT_EQ(qxStrtok(nullptr, L",", false, &next), nullptr);
  EXPECT_EQ(qxStrtok(text, nullptr, false, &next), nullptr);
  EXPECT_EQ(qxStrtok(text, L",", false, nullptr), nullptr);
  EXPECT_EQ(next, text);
  EXPECT_STREQ(text, L"a,b");
}

TEST(StrtokTokens, BothModes) {
  for (qxtest::Mode mode : {qxtest::Mode::kSingleByte, qxtest::Mode::kDbcs})
    qxtest::InMode(mode, [mode] {
      const bool dbcs = mode == qxtest::Mode::kDbcs;
      const struct {
        const wchar_t* text;
        const wchar_t* delims;
        std::vector<std::wstring> singleByte, dbcs;
      } cases[] = {
          {L"  a,,b c, ", L", ", {L"a", L"b", L"c"}, {L"a", L"b", L"c"}},
          {L"a\u0301,b", L"\u0301,", {L"a", L"b"}, {L"a\u0301", L"b"}}, // marks belong to "a"
          {L"abc", L"", {L"abc"}, {L"abc"}},
      };
      for (const auto& c : cases) {
        std::wstring text = c.text;
        wchar_t marker[] = L"m";
        wchar_t* context = marker;
        std::vector<std::wstring> got;
        for (wchar_t* t = qxStrtok(text.data(), c.delims, &context); t;
             t = qxStrtok(nullptr, c.delims, &context)) {
          got.push_back(t);
          ASSERT_LT(got.size(), 10u);
        }
        EXPECT_EQ(got, dbcs ? c.dbcs : c.singleByte) << c.text;
        if (dbcs) { // strtok_fuzz checks the end is an empty string
          EXPECT_EQ(qxStrtok(nullptr, c.delims, &context), nullptr);
        } else {
          EXPECT_EQ(context, marker); // the runtime keeps its own position
        }
      }
      EXPECT_EQ(qxStrtok(nullptr, nullptr, static_cast<wchar_t**>(nullptr)), nullptr);
    });
}

struct PositionCase {
  const wchar_t* text;
  const wchar_t* quotes;                           // null: the list quotes
  std::vector<std::array<unsigned int, 3>> tokens; // start, end, next
  unsigned int endAt;                              // where the final false leaves all three
};

TEST(PositionTokens, Table) {
  // With the list's quotes the tokens are the list tokeniser's (strtok_fuzz).
  const PositionCase cases[] = {
      {L"'x,y',z", L"", {{0, 2, 3}, {3, 5, 6}, {6, 7, 7}}, 7}, // no quote characters
      {L"#x,y# ,z", L"#", {{0, 5, 7}, {7, 8, 8}}, 8},
  };
  for (const PositionCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "'" << c.text << "'");
    qxt::string text(c.text);
    unsigned int start = 0, ts = 99, te = 99, next = 99;
    for (const auto& want : c.tokens) {
      ASSERT_TRUE(qxStrtok(text, start, L",", &ts, &te, &next, c.quotes)) << start;
      EXPECT_EQ((std::array<unsigned int, 3>{ts, te, next}), want) << start;
      start = next;
    }
    EXPECT_FALSE(qxStrtok(text, start, L",", &ts, &te, &next, c.quotes));
    EXPECT_EQ(ts, c.endAt);
    EXPECT_EQ(te, c.endAt);
    EXPECT_EQ(next, c.endAt);
  }
  // Bad arguments write nothing.
  qxt::string text(L"a,b");
  unsigned int ts = 7, te = 7, next = 7;
  EXPECT_FALSE(qxStrtok(text, 4, L",", &ts, &te, &next, nullptr));
  EXPECT_FALSE(qxStrtok(text, 0, L",", nullptr, &te, &next, nullptr));
  EXPECT_EQ(ts + te + next, 21u);
  // Text with an embedded zero is tokenised by its length.
  qxt::string zero(L"a\0b,c", 5);
  EXPECT_TRUE(qxStrtok(zero, 0, L",", &ts, &te, &next, nullptr));
  EXPECT_EQ(te, 3u);
  EXPECT_EQ(next, 4u);
}

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
  // quote_fuzz holds unquoting with a quote character at every size.
  const struct {
    const wchar_t* src;
    unsigned int size;
    const wchar_t* quote;
    const wchar_t* out;
    unsigned int touched; // units written
  } cases[] = {
      {L"'a'", 5, L"", L"'a'", 5}, // no quote character: strcpyn, which fills the size
      {nullptr, 4, L"'", L"", 4},
  };
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
