// DPNTContainer's capacity and growth, and PointParserFactory: one text per rule. Random
// texts, separators and lengths under either decimal point are compared with a plain
// reader by fuzz/point_parser_fuzz.cpp.
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <memory>
#include <vector>

namespace {

using Points = std::vector<std::pair<double, double>>;

Points Read(DPNTContainer* c) {
  unsigned n = 0;
  const DPNT* p = c->GetPoints(&n);
  Points points;
  for (unsigned i = 0; i < n; ++i)
    points.push_back({p[i].x, p[i].y});
  return points;
}

unsigned RoomFor(DPNTContainer* c) { return memSize(c->GetPoints(nullptr)) / sizeof(DPNT); }

TEST(PointContainer, CapacityAndGrowth) {
  std::unique_ptr<DPNTContainer> c(DPNTContainer::Create(0, 100));
  ASSERT_NE(c, nullptr);
  const DPNT p{1, 2};
  ASSERT_TRUE(c->Append(&p, 1));
  EXPECT_GE(RoomFor(c.get()), 100u); // grows by the step at least
  ASSERT_TRUE(c->Reserve(RoomFor(c.get()) + 1));
  EXPECT_GE(RoomFor(c.get()), 200u);

  std::unique_ptr<DPNTContainer> exact(DPNTContainer::Create(4, 0));
  const unsigned start = RoomFor(exact.get());
  EXPECT_GE(start, 4u);
  ASSERT_TRUE(exact->Reserve(start + 10)); // step 0: what is needed, as the heap rounds it
  EXPECT_GE(RoomFor(exact.get()), start + 10);
  EXPECT_LE(RoomFor(exact.get()), start + 12);
}

TEST(PointContainer, RefusalsKeepThePoints) {
  EXPECT_EQ(DPNTContainer::Create(0x10000000u, 0), nullptr); // 2^32 bytes
  std::unique_ptr<DPNTContainer> c(DPNTContainer::Create(2, 0));
  const DPNT p[2] = {{1, 2}, {3, 4}};
  ASSERT_TRUE(c->Append(p, 2));
  DPNT* before = c->GetPoints(nullptr);
  EXPECT_FALSE(c->Reserve(0x10000000u));
  EXPECT_FALSE(c->Append(nullptr, 1));
  EXPECT_TRUE(c->Append(nullptr, 0));
  EXPECT_EQ(c->GetPoints(nullptr), before);
  EXPECT_EQ(Read(c.get()), (Points{{1, 2}, {3, 4}}));
  EXPECT_TRUE(c->Reset(0));
  EXPECT_EQ(Read(c.get()), Points{});
}

struct ParseCase {
  const wchar_t* coordinateSeparators;
  const wchar_t* pointSeparators;
  bool addWhitespace;
  const wchar_t* text;
  int length; // -1: the text's own length
  bool result;
  Points points;
};

const ParseCase kParseCases[] = {
    {L".", L";", false, L"1.5.2", -1, true, {{1.5, 2}}}, // the number comes first
    {nullptr, nullptr, true, L"5 6", -1, true, {{5, 6}}},
    {L"", L"", true, L"12 34", 4, true, {{12, 3}}}, // the number is cut at the length
};

TEST(PointParser, Cases) {
  for (const ParseCase& c : kParseCases) {
    std::unique_ptr<DPNTContainer> points(DPNTContainer::Create(0, 4));
    const DPNT old{-7, -7};
    points->Append(&old, 1);
    std::unique_ptr<PointParserFactory> parser(PointParserFactory::Create(
        points.get(), c.coordinateSeparators, c.pointSeparators, c.addWhitespace));
    ASSERT_NE(parser, nullptr);
    const unsigned length =
        c.length < 0 ? static_cast<unsigned>(std::wcslen(c.text)) : static_cast<unsigned>(c.length);
    EXPECT_EQ(parser->Parse(c.text, length, true), c.result) << c.text;
    EXPECT_EQ(Read(points.get()), c.points) << c.text;
  }
}

TEST(PointParser, AppendsOrReplaces) {
  std::unique_ptr<DPNTContainer> points(DPNTContainer::Create(1, 0));
  std::unique_ptr<PointParserFactory> parser(
      PointParserFactory::Create(points.get(), L",", L";", false));
  EXPECT_TRUE(parser->Parse(L"1,2", 3, false));
  EXPECT_TRUE(parser->Parse(L"3,4;5,6", 7, false));
  EXPECT_EQ(Read(points.get()), (Points{{1, 2}, {3, 4}, {5, 6}}));
  EXPECT_TRUE(parser->Parse(L"7,8", 3, true));
  EXPECT_EQ(Read(points.get()), (Points{{7, 8}}));
  EXPECT_TRUE(parser->Parse(L"", 0, true));
  EXPECT_EQ(Read(points.get()), Points{});
  EXPECT_FALSE(parser->Parse(nullptr, 2, true)); // read as empty text
  EXPECT_EQ(PointParserFactory::Create(nullptr, L",", L";", false), nullptr);
}

} // namespace
