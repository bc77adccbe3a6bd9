// DPNTContainer's capacity and growth. PointParserFactory (random texts, separators,
// null sets and texts, lengths under either decimal point) is compared with a plain
// reader by fuzz/point_parser_fuzz.cpp.
#include "qxutil/containers.h"

#include <gtest/gtest.h>

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

} // namespace
