// Regions: the platform's region calls with Windows' rules and result
// codes, and the rgn_ wrappers; fuzz/region_fuzz.cpp compares random
// sequences of them with a pixel model, every combine mode, the union
// fallback and the equality of every pair included.
#include "geometry/region_cover.h"
#include "platform/heap.h"
#include "platform/region.h"
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <string>

using namespace qx::win;
using qx::platform::FailAllocations;
using qxtest::Covers;

namespace {

// Owned - a region deleted at the end of the scope.
struct Owned {
  HRGN g;
  explicit Owned(const LRECT& r) : g(CreateRectRgn(r.x1, r.y1, r.x2, r.y2)) {}
  ~Owned() { DeleteObject(g); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
};

// Box - a region's kind and bounding box as text.
std::string Box(int kind, const LRECT& r) {
  return std::to_string(kind) + ": " + std::to_string(r.x1) + "," + std::to_string(r.y1) + "," +
         std::to_string(r.x2) + "," + std::to_string(r.y2);
}
std::string Box(HRGN g) {
  RECT box{-9, -9, -9, -9};
  const int kind = GetRgnBox(g, &box);
  return Box(kind, {box.left, box.top, box.right, box.bottom});
}

TEST(RegionCalls, RectanglesFollowWindowsRules) {
  struct Case {
    const char* what;
    LRECT r;
    int kind;
    LRECT box;
  } cases[] = {
      {"sorted", {1, 2, 5, 6}, SIMPLEREGION, {1, 2, 5, 6}},
      {"corners in either order", {5, 6, 1, 2}, SIMPLEREGION, {1, 2, 5, 6}},
      {"zero width is empty", {3, 3, 3, 9}, NULLREGION, {0, 0, 0, 0}},
      {"zero height, away from the origin", {-7, 4, 9, 4}, NULLREGION, {0, 0, 0, 0}},
      {"one pixel", {-1, -1, 0, 0}, SIMPLEREGION, {-1, -1, 0, 0}},
      {"the 32-bit range",
       {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX},
       SIMPLEREGION,
       {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}},
  };
  for (const Case& c : cases) {
    Owned g(c.r), s({0, 0, 1, 1});
    EXPECT_EQ(Box(g.g), Box(c.kind, c.box)) << c.what;
    EXPECT_TRUE(SetRectRgn(s.g, c.r.x1, c.r.y1, c.r.x2, c.r.y2));
    EXPECT_TRUE(EqualRgn(s.g, g.g)) << c.what;
  }
  Owned g({0, 0, 2, 2});
  RECT box;
  EXPECT_EQ(GetRgnBox(nullptr, &box), ERROR);
  EXPECT_EQ(GetRgnBox(g.g, nullptr), ERROR);
  EXPECT_FALSE(SetRectRgn(nullptr, 0, 0, 1, 1));
  EXPECT_FALSE(DeleteObject(nullptr));
  EXPECT_EQ(EqualRgn(nullptr, g.g), ERROR);
}

TEST(RegionCalls, CombineRgnResultsAndKinds) {
  const LRECT a{0, 0, 4, 4}, b{2, 2, 6, 6};
  struct Case {
    const char* what;
    LRECT second;
    int mode, kind;
    std::initializer_list<LRECT> want;
  } cases[] = {
      {"and", b, RGN_AND, SIMPLEREGION, {{2, 2, 4, 4}}},
      {"copy", b, RGN_COPY, SIMPLEREGION, {a}},
      {"side by side or", {4, 0, 8, 4}, RGN_OR, SIMPLEREGION, {{0, 0, 8, 4}}},
  };
  for (const Case& c : cases) {
    for (int into = 0; into < 3; ++into) { // a new region, then each source
      Owned first(a), second(c.second), fresh({0, 0, 0, 0});
      HRGN dst = into == 0 ? fresh.g : into == 1 ? first.g : second.g;
      EXPECT_EQ(CombineRgn(dst, first.g, second.g, c.mode), c.kind) << c.what << into;
      EXPECT_TRUE(Covers(dst, c.want)) << c.what << into;
    }
  }
  Owned first(a), second(b);
  for (int mode : {0, 6})
    EXPECT_EQ(CombineRgn(first.g, first.g, second.g, mode), ERROR);
  EXPECT_EQ(CombineRgn(first.g, nullptr, second.g, RGN_OR), ERROR);
  EXPECT_EQ(CombineRgn(first.g, first.g, nullptr, RGN_AND), ERROR);
  EXPECT_EQ(CombineRgn(nullptr, first.g, second.g, RGN_OR), ERROR);
  EXPECT_EQ(CombineRgn(second.g, first.g, nullptr, RGN_COPY), SIMPLEREGION);
  Owned apart({6, 6, 8, 8});
  FailAllocations(1, false); // the storage of the two-rectangle result
  EXPECT_EQ(CombineRgn(first.g, first.g, apart.g, RGN_OR), ERROR);
  FailAllocations(0, false);
  EXPECT_TRUE(Covers(first.g, {a})) << "failed calls change nothing";
}

TEST(Regions, NullStandsForNoRegion) {
  LRECT r{9, 9, 9, 9};
  rgn_bounding_rect(nullptr, &r);
  EXPECT_TRUE(RectIsZero(r));
  EXPECT_TRUE(rgn_equal(nullptr, nullptr));
  const LRECT unsorted{5, 6, 1, 2}, sorted{1, 2, 5, 6}, away{7, 7, 8, 8};
  HRGN g = rgn_create(&unsorted), fresh = rgn_unionrect(nullptr, &sorted),
       apart = rgn_create(&away);
  ASSERT_TRUE(g && fresh && apart);
  EXPECT_FALSE(rgn_equal(g, nullptr) || rgn_equal(nullptr, g));
  EXPECT_TRUE(rgn_equal(fresh, g));
  EXPECT_TRUE(!rgn_intersect(g, nullptr) && !rgn_intersect(nullptr, g) && !rgn_create(nullptr));
  EXPECT_EQ(rgn_unionrect(g, nullptr), g);
  rgn_bounding_rect(g, &r);
  EXPECT_EQ(Box(0, r), Box(0, sorted));
  rgn_bounding_rect(g, nullptr);
  HRGN none = rgn_intersect(g, apart);
  ASSERT_NE(none, nullptr) << "disjoint regions intersect in an empty region, not null";
  rgn_bounding_rect(none, &r);
  EXPECT_TRUE(RectIsZero(r));
  EXPECT_FALSE(rgn_equal(none, nullptr));
  for (HRGN h : {g, fresh, apart, none, HRGN{}})
    rgn_destroy(h);
}

} // namespace
