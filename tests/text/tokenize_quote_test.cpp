// The three tokenisers (lists with quotes and brackets, strtok in both
// modes, the positional form) and quoting with null arguments.
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

// strtok_fuzz holds the tokens and places to the plain rules, with
// delimiters that are also quotes or closers; here null arguments.
TEST(ListTokens, NullArguments) {
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

// quote_fuzz holds both at every size, with quotes of one and two units and
// none, to the plain rules; here a null source and a null buffer.
TEST(Quote, Null) {
  auto quoted = qxtest::Buffer(4), unquoted = qxtest::Buffer(4);
  quotestring(quoted.data(), nullptr, 4, L"'");
  EXPECT_EQ(quoted.Text(), L"''");
  EXPECT_EQ(unquotestring(unquoted.data(), nullptr, 4, L"'"), unquoted.data());
  EXPECT_EQ(unquoted.Text(), L"");
  EXPECT_EQ(unquoted.TouchedUpTo(), 4u); // the empty string, copied as strcpyn copies
  EXPECT_EQ(quotestring(nullptr, L"a", 4, L"'"), nullptr);
  EXPECT_EQ(unquotestring(nullptr, L"'a'", 4, L"'"), nullptr);
}

} // namespace
