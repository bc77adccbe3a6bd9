// DPNTContainer's capacity and growth, and PointParserFactory: a table of
// texts, separator sets and lengths with the points and result each gives,
// reading that stops at `length` (the text lies in a block of exactly that
// many units), and the caller's text left untouched whatever the runtime's
// decimal point.
#include "platform/crt_locale.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <memory>
#include <string>
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
  EXPECT_EQ(Read(c.get()), (Points{{1, 2}}));

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
  EXPECT_TRUE(c->Reset(50));
  EXPECT_GE(RoomFor(c.get()), 50u);
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
    // Separators.
    {L",", L";", false, L"1,2;3,4", -1, true, {{1, 2}, {3, 4}}},
    {L",", L";", false, L";;1,2;;", -1, true, {{1, 2}}},
    {L",", L";", false, L";;;", -1, true, {}},
    {L"", L"", true, L"1 2 3 4 ", -1, true, {{1, 2}, {3, 4}}},
    {L"", L"", true, L"\n 1\t2\n", -1, true, {{1, 2}}},
    {L".", L";", false, L"1.5.2", -1, true, {{1.5, 2}}}, // the number comes first
    {L"\u00A0", L"\u3000", false, L"1\u00A02\u30003\u00A04", -1, true, {{1, 2}, {3, 4}}},
    {nullptr, nullptr, true, L"5 6", -1, true, {{5, 6}}},
    // Numbers as StringToDouble reads them.
    {L",", L";", false, L"-1.5e3,+2E-2", -1, true, {{-1500, 0.02}}},
    {L",", L";", false, L"0x10,.5", -1, true, {{16, 0.5}}},
    {L",", L";", true, L" 1 , 2 ;", -1, true, {{1, 2}}},
    // Failures keep what came before.
    {L",", L";", false, L"1,2;3", -1, false, {{1, 2}}},
    {L",", L";", false, L"1,2;x,4", -1, false, {{1, 2}}},
    {L",", L";", false, L"1,2;1e999,4", -1, false, {{1, 2}}}, // out of range
    {L",", L";", false, L"1,,2", -1, true, {{1, 2}}},         // every separator is skipped
    // Lengths.
    {L"", L"", true, L"1 2", 10, false, {{1, 2}}}, // fails at the terminator
    {L"", L"", true, L"1 2 3 4", 5, false, {{1, 2}}},
    {L"", L"", true, L"1 2 3 4", 3, true, {{1, 2}}},
    {L"", L"", true, L"12 34", 4, true, {{12, 3}}}, // the number is cut at the length
    {L"", L"", true, L"1 2e5", 4, false, {{1, 2}}}, // "2e" reads as 2, then "e" is no number
    {L"", L"", true, L"", 0, true, {}},
    {L"", L"", true, L"   ", 3, true, {}},
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

TEST(PointParser, ReadsNothingPastTheLength) {
  const std::wstring text = L"12.5 -3 4e1 ";
  for (unsigned length = 0; length <= text.size(); ++length) {
    // Exactly `length` units and no terminator: a read beyond shows under ASan.
    std::unique_ptr<wchar_t[]> block(new wchar_t[length ? length : 1]);
    std::wmemcpy(block.get(), text.data(), length);
    std::unique_ptr<DPNTContainer> points(DPNTContainer::Create(0, 0));
    std::unique_ptr<PointParserFactory> parser(
        PointParserFactory::Create(points.get(), L"", L"", true));
    const bool ok = parser->Parse(block.get(), length, true);
    const Points got = Read(points.get());
    if (length >= 7) {
      ASSERT_GE(got.size(), 1u) << length;
      EXPECT_EQ(got[0], (std::pair<double, double>{12.5, -3})) << length;
    }
    EXPECT_EQ(ok, length == 0 || length == 7 || length == 8) << length; // else a number is missing
  }
}

TEST(PointParser, LeavesTheTextAloneWhateverTheRuntimePoint) {
  std::wstring text = L"1.5,2.25;3,4";
  const std::wstring original = text;
  std::unique_ptr<DPNTContainer> points(DPNTContainer::Create(0, 0));
  std::unique_ptr<PointParserFactory> parser(
      PointParserFactory::Create(points.get(), L",", L";", false));
  qx::platform::SetThreadNumericLocaleOverride("de_DE.UTF-8", L',');
  const bool ok = parser->Parse(text.c_str(), static_cast<unsigned>(text.size()), true);
  qx::platform::SetThreadNumericLocaleOverride(nullptr, 0);
  EXPECT_TRUE(ok);
  EXPECT_EQ(text, original);
  EXPECT_EQ(Read(points.get()), (Points{{1.5, 2.25}, {3, 4}}));
}

} // namespace
