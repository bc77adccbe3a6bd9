// Byte-to-byte translation tables: the converter's ten-slot cache and what it
// rejects. The maps themselves are pinned by gen_charset_maps.py --check;
// fuzz/convert_fuzz.cpp holds every table to the rule that builds it.
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

constexpr QXCHARSET kLatin1 = QXCHARSET_WINDOWS_LATIN1;
constexpr QXCHARSET k437 = QXCHARSET_CODEPAGE_437;

QXCHARSET Cs(int v) { return static_cast<QXCHARSET>(v); }

// convert_fuzz holds every table and its count to the rule; here a miss
// writes the count (28 controls, 0x7F, 75 upper-half bytes), the reverse
// direction is another pair, another thread has its own cache (hits:
// TenSlotsReplacedRoundRobin).
TEST(ConvertCharset, Latin1To437AndTheCache) {
  qxtest::InLocale(1033, [] {
    int count = -1;
    unsigned char* first = nullptr;
    ASSERT_TRUE(ConvertCharset(kLatin1, k437, &count, &first));
    EXPECT_EQ(count, 104);
    count = -7;
    unsigned char* reverse = nullptr;
    ASSERT_TRUE(ConvertCharset(k437, kLatin1, &count, &reverse));
    EXPECT_NE(count, -7);
    EXPECT_NE(reverse, first);
    qxtest::InLocale(1033, [&] {
      int other = -7;
      unsigned char* theirs = nullptr;
      ASSERT_TRUE(ConvertCharset(kLatin1, k437, &other, &theirs));
      EXPECT_EQ(other, 104); // built afresh: the count is written
      EXPECT_NE(theirs, first);
    });
  });
}

TEST(ConvertCharset, Rejections) {
  struct Case {
    int from, to;
  } cases[] = {{10, 10}, {0, 10},  {10, 0},  {10, 57}, {57, 10}, {-1, 10}, {10, -1}, {10, 17},
               {17, 10}, {19, 20}, {10, 26}, {29, 10}, {46, 10}, {10, 49}, {50, 10}, {10, 53}};
  qxtest::InLocale(1033, [&] {
    for (const Case& c : cases) {
      int count = 12345;
      unsigned char sentinel = 0;
      unsigned char* table = &sentinel;
      EXPECT_FALSE(ConvertCharset(Cs(c.from), Cs(c.to), &count, &table)) << c.from << "->" << c.to;
      EXPECT_EQ(count, 12345);
      EXPECT_EQ(table, &sentinel);
    }
    int count = 0;
    EXPECT_FALSE(ConvertCharset(kLatin1, k437, &count, nullptr));
  });
}

TEST(ConvertCharset, TenSlotsReplacedRoundRobin) {
  qxtest::InLocale(1033, [] {
    // Ten sources, each to WindowsLatin1.
    auto pair = [](int i) { return i < 9 ? Cs(i + 1) : QXCHARSET_WINDOWS_LATIN2; };
    std::vector<unsigned char*> tables;
    for (int i = 0; i < 10; ++i) {
      int count = -1;
      unsigned char* t = nullptr;
      ASSERT_TRUE(ConvertCharset(pair(i), kLatin1, &count, &t));
      EXPECT_NE(count, -1);
      tables.push_back(t);
    }
    EXPECT_EQ(std::set<unsigned char*>(tables.begin(), tables.end()).size(), 10u);
    // A failed request takes no slot.
    int count = 0;
    unsigned char* t = nullptr;
    EXPECT_FALSE(ConvertCharset(kLatin1, QXCHARSET_WINDOWS_JAPANESE, &count, &t));
    // The eleventh pair reuses slot 0; the twelfth slot 1.
    ASSERT_TRUE(ConvertCharset(k437, kLatin1, &count, &t));
    EXPECT_EQ(t, tables[0]);
    count = -7;
    ASSERT_TRUE(ConvertCharset(pair(1), kLatin1, &count, &t)); // still cached
    EXPECT_EQ(t, tables[1]);
    EXPECT_EQ(count, -7);
    ASSERT_TRUE(ConvertCharset(pair(0), kLatin1, &count, &t)); // evicted: rebuilt
    EXPECT_EQ(t, tables[1]);
    EXPECT_NE(count, -7);
    EXPECT_EQ(t[0xE9], 0xE9);
  });
}

TEST(IsStrConvertNecessary, Cases) {
  struct Case {
    int from, to;
    bool expected;
  } cases[] = {{10, 0, false}, {0, 10, false}, {10, 10, false}, {10, 34, true},
               {1, 56, true},  {56, 1, true},  {57, 1, false},  {1, 57, false},
               {-1, 1, false}, {17, 19, true}, {21, 21, false}, {0, 0, false}};
  for (const Case& c : cases)
    EXPECT_EQ(IsStrConvertNecessary(Cs(c.from), Cs(c.to)), c.expected) << c.from << "," << c.to;
}

} // namespace
