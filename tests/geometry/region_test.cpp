// Regions: the platform's region calls with Windows' rules and result
// codes, the rgn_ wrappers and their union fallback, and both against a
// bitmap model on a small grid.
#include "geometry/region_model.h"
#include "platform/heap.h"
#include "platform/region.h"
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <random>

using namespace qx::win;
using qx::platform::FailAllocations;
using qxtest::PixelSet;
using qxtest::PixelsOf;

namespace {

struct Box {
  int x1, y1, x2, y2;
};

// Owned - a region deleted at the end of the scope.
struct Owned {
  HRGN g;
  explicit Owned(HRGN h) : g(h) {}
  ~Owned() { DeleteObject(g); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
};

HRGN Make(const Box& b) { return CreateRectRgn(b.x1, b.y1, b.x2, b.y2); }
PixelSet Pixels(const Box& b) { return PixelSet::Rectangle(b.x1, b.y1, b.x2, b.y2); }

// ExpectBox - GetRgnBox's kind and box agree with the model's.
void ExpectBox(HRGN g, const PixelSet& want, const char* what) {
  RECT box{-9, -9, -9, -9};
  EXPECT_EQ(GetRgnBox(g, &box), want.Kind()) << what;
  LRECT b = want.Box();
  EXPECT_TRUE(box.left == b.x1 && box.top == b.y1 && box.right == b.x2 && box.bottom == b.y2)
      << what << ": (" << box.left << ", " << box.top << ", " << box.right << ", " << box.bottom
      << ")";
}

TEST(RegionCalls, RectanglesFollowWindowsRules) {
  struct Case {
    const char* what;
    Box b;
    int kind;
    RECT box;
  } cases[] = {
      {"sorted", {1, 2, 5, 6}, SIMPLEREGION, {1, 2, 5, 6}},
      {"corners in either order", {5, 6, 1, 2}, SIMPLEREGION, {1, 2, 5, 6}},
      {"zero width is empty", {3, 3, 3, 9}, NULLREGION, {0, 0, 0, 0}},
      {"zero height, away from the origin", {-7, 4, 9, 4}, NULLREGION, {0, 0, 0, 0}},
      {"one pixel", {-1, -1, 0, 0}, SIMPLEREGION, {-1, -1, 0, 0}},
      {"the 32-bit range", {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, SIMPLEREGION,
       {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}},
  };
  for (const Case& c : cases) {
    Owned g(Make(c.b));
    RECT box{-9, -9, -9, -9};
    EXPECT_EQ(GetRgnBox(g.g, &box), c.kind) << c.what;
    EXPECT_TRUE(box.left == c.box.left && box.top == c.box.top && box.right == c.box.right &&
                box.bottom == c.box.bottom)
        << c.what;
    Owned s(CreateRectRgn(0, 0, 1, 1));
    EXPECT_TRUE(SetRectRgn(s.g, c.b.x1, c.b.y1, c.b.x2, c.b.y2));
    EXPECT_TRUE(EqualRgn(s.g, g.g)) << c.what;
  }
  // The right and bottom edges are outside.
  Owned g(Make({0, 0, 2, 2}));
  EXPECT_EQ(PixelsOf(g.g), PixelSet::Rectangle(0, 0, 2, 2));
  RECT box;
  EXPECT_EQ(GetRgnBox(nullptr, &box), ERROR);
  EXPECT_EQ(GetRgnBox(g.g, nullptr), ERROR);
  EXPECT_FALSE(SetRectRgn(nullptr, 0, 0, 1, 1));
  EXPECT_FALSE(DeleteObject(nullptr));
}

TEST(RegionCalls, CombineRgnResultsAndKinds) {
  const Box a{0, 0, 4, 4}, b{2, 2, 6, 6};
  struct Case {
    const char* what;
    Box first, second;
    int mode;
    PixelSet want;
  } cases[] = {
      {"and", a, b, RGN_AND, Pixels(a) & Pixels(b)},
      {"or", a, b, RGN_OR, Pixels(a) | Pixels(b)},
      {"xor", a, b, RGN_XOR, PixelSet{Pixels(a).bits ^ Pixels(b).bits}},
      {"diff", a, b, RGN_DIFF, PixelSet{Pixels(a).bits & ~Pixels(b).bits}},
      {"copy", a, b, RGN_COPY, Pixels(a)},
      {"disjoint and", a, {5, 5, 8, 8}, RGN_AND, PixelSet{}},
      {"side by side or", a, {4, 0, 8, 4}, RGN_OR, Pixels({0, 0, 8, 4})},
      {"stacked or", a, {0, 4, 4, 9}, RGN_OR, Pixels({0, 0, 4, 9})},
      {"nested or", a, {1, 1, 2, 2}, RGN_OR, Pixels(a)},
      {"or with empty", a, {7, 7, 7, 9}, RGN_OR, Pixels(a)},
      {"xor of equals", a, a, RGN_XOR, PixelSet{}},
      {"diff of a cover", a, {-1, -1, 5, 5}, RGN_DIFF, PixelSet{}},
  };
  for (const Case& c : cases) {
    for (int into = 0; into < 3; ++into) { // a new region, then each source
      Owned first(Make(c.first)), second(Make(c.second)), fresh(CreateRectRgn(0, 0, 0, 0));
      HRGN dst = into == 0 ? fresh.g : into == 1 ? first.g : second.g;
      EXPECT_EQ(CombineRgn(dst, first.g, second.g, c.mode), c.want.Kind()) << c.what << into;
      EXPECT_EQ(PixelsOf(dst), c.want) << c.what << into;
      ExpectBox(dst, c.want, c.what);
    }
  }
  Owned first(Make(a)), second(Make(b));
  EXPECT_EQ(CombineRgn(first.g, first.g, second.g, 0), ERROR);
  EXPECT_EQ(CombineRgn(first.g, first.g, second.g, 6), ERROR);
  EXPECT_EQ(CombineRgn(first.g, nullptr, second.g, RGN_OR), ERROR);
  EXPECT_EQ(CombineRgn(first.g, first.g, nullptr, RGN_AND), ERROR);
  EXPECT_EQ(CombineRgn(nullptr, first.g, second.g, RGN_OR), ERROR);
  EXPECT_EQ(CombineRgn(second.g, first.g, nullptr, RGN_COPY), SIMPLEREGION);
  EXPECT_EQ(PixelsOf(first.g), Pixels(a)) << "failed calls change nothing";
}

TEST(RegionCalls, EqualRgnComparesPixels) {
  Owned empty1(CreateRectRgn(0, 0, 0, 0)), empty2(CreateRectRgn(5, 5, 5, 9));
  Owned left(Make({0, 0, 4, 4})), right(Make({9, 9, 12, 12})), disjoint(CreateRectRgn(0, 0, 0, 0));
  ASSERT_EQ(CombineRgn(disjoint.g, left.g, right.g, RGN_AND), NULLREGION);
  EXPECT_TRUE(EqualRgn(empty1.g, empty2.g));
  EXPECT_TRUE(EqualRgn(empty1.g, disjoint.g)) << "however an empty region was made";
  // The same pixels built in two orders.
  Owned one(Make({0, 0, 2, 4})), other(Make({0, 2, 4, 4}));
  ASSERT_EQ(CombineRgn(one.g, one.g, other.g, RGN_OR), COMPLEXREGION);
  Owned two(Make({2, 2, 4, 4})), top(Make({0, 0, 2, 2})), bottom(Make({0, 2, 2, 4}));
  CombineRgn(two.g, two.g, bottom.g, RGN_OR);
  CombineRgn(two.g, two.g, top.g, RGN_OR);
  EXPECT_TRUE(EqualRgn(one.g, two.g));
  EXPECT_FALSE(EqualRgn(one.g, left.g));
  EXPECT_FALSE(EqualRgn(empty1.g, left.g));
  EXPECT_EQ(EqualRgn(nullptr, left.g), ERROR);
}

TEST(RegionCalls, AFailedCombinationLeavesTheDestination) {
  Owned dst(Make({0, 0, 4, 4})), other(Make({6, 6, 8, 8}));
  FailAllocations(1, false); // the storage of the two-rectangle result
  EXPECT_EQ(CombineRgn(dst.g, dst.g, other.g, RGN_OR), ERROR);
  FailAllocations(0, false);
  EXPECT_EQ(PixelsOf(dst.g), Pixels({0, 0, 4, 4}));
  EXPECT_EQ(CombineRgn(dst.g, dst.g, other.g, RGN_OR), COMPLEXREGION);
}

TEST(Regions, NullStandsForNoRegion) {
  LRECT r{9, 9, 9, 9};
  rgn_bounding_rect(nullptr, &r);
  EXPECT_TRUE(RectIsZero(r));
  EXPECT_TRUE(rgn_equal(nullptr, nullptr));
  const LRECT unsorted{5, 6, 1, 2}, sorted{1, 2, 5, 6}, away{7, 7, 8, 8};
  HRGN g = rgn_create(&unsorted);
  ASSERT_NE(g, nullptr);
  EXPECT_FALSE(rgn_equal(g, nullptr));
  EXPECT_FALSE(rgn_equal(nullptr, g));
  EXPECT_EQ(rgn_intersect(g, nullptr), nullptr);
  EXPECT_EQ(rgn_intersect(nullptr, g), nullptr);
  EXPECT_EQ(rgn_create(nullptr), nullptr);
  EXPECT_EQ(rgn_unionrect(g, nullptr), g);
  rgn_bounding_rect(g, &r);
  EXPECT_TRUE(r.x1 == 1 && r.y1 == 2 && r.x2 == 5 && r.y2 == 6);
  rgn_bounding_rect(g, nullptr);

  HRGN fresh = rgn_unionrect(nullptr, &sorted);
  ASSERT_NE(fresh, nullptr);
  EXPECT_TRUE(rgn_equal(fresh, g));
  HRGN apart = rgn_create(&away);
  HRGN none = rgn_intersect(g, apart);
  ASSERT_NE(none, nullptr) << "disjoint regions intersect in an empty region, not null";
  rgn_bounding_rect(none, &r);
  EXPECT_TRUE(RectIsZero(r));
  EXPECT_FALSE(rgn_equal(none, nullptr));
  for (HRGN h : {g, fresh, apart, none})
    rgn_destroy(h);
  rgn_destroy(nullptr);
}

// The union fallback, through the heap's fault hook: in rgn_unionrect the
// first allocation is the temporary region of r, the second the storage of
// the union.
TEST(Regions, AUnionThatFailsBecomesTheBoundingBoxPlusTheRectangle) {
  struct Case {
    const char* what;
    long nth;
    bool persistent;
    PixelSet want;
  } cases[] = {
      {"no failure", 0, false, Pixels({0, 0, 2, 2}) | Pixels({6, 6, 8, 8}) | Pixels({10, 0, 11, 1})},
      {"the union fails once", 2, false, Pixels({0, 0, 8, 8}) | Pixels({10, 0, 11, 1})},
      {"both unions fail", 2, true, Pixels({0, 0, 8, 8})},
      {"no temporary region", 1, false, Pixels({0, 0, 8, 8})},
  };
  for (const Case& c : cases) {
    const LRECT first{0, 0, 2, 2}, second{6, 6, 8, 8}, added{10, 0, 11, 1};
    HRGN g = rgn_create(&first);
    ASSERT_EQ(rgn_unionrect(g, &second), g);
    FailAllocations(c.nth, c.persistent);
    HRGN result = rgn_unionrect(g, &added);
    FailAllocations(0, false);
    EXPECT_EQ(result, g) << c.what;
    EXPECT_EQ(PixelsOf(g), c.want) << c.what;
    rgn_destroy(g);
  }
}

// Random unions and intersections against the bitmap model; the fuzzer
// (fuzz/region_fuzz.cpp) runs many more.
TEST(Regions, MatchTheBitmapModel) {
  std::mt19937 random(14);
  std::uniform_int_distribution<int> coordinate(PixelSet::kGridLow, PixelSet::kGridHigh);
  auto rect = [&] {
    return LRECT{coordinate(random), coordinate(random), coordinate(random), coordinate(random)};
  };
  auto pixels = [](const LRECT& r) { return PixelSet::Rectangle(r.x1, r.y1, r.x2, r.y2); };
  HRGN probe = CreateRectRgn(0, 0, 0, 0);
  for (int round = 0; round < 150; ++round) {
    HRGN regions[2] = {nullptr, nullptr};
    PixelSet models[2];
    for (int i = 0; i < 2; ++i)
      for (int n = random() % 6; n >= 0; --n) {
        LRECT r = rect();
        regions[i] = rgn_unionrect(regions[i], &r);
        models[i] = models[i] | pixels(r);
      }
    HRGN common = rgn_intersect(regions[0], regions[1]);
    const PixelSet both = models[0] & models[1];
    for (auto [g, model] : {std::pair{regions[0], models[0]}, std::pair{regions[1], models[1]},
                            std::pair{common, both}}) {
      ASSERT_EQ(PixelsOf(g, probe), model) << "round " << round;
      ExpectBox(g, model, "bounding box");
      LRECT box;
      rgn_bounding_rect(g, &box);
      LRECT want = model.Box();
      EXPECT_TRUE(box.x1 == want.x1 && box.y1 == want.y1 && box.x2 == want.x2 &&
                  box.y2 == want.y2);
    }
    EXPECT_EQ(rgn_equal(regions[0], regions[1]), models[0] == models[1]);
    EXPECT_EQ(rgn_equal(common, regions[0]), both == models[0]);
    for (HRGN g : {regions[0], regions[1], common})
      rgn_destroy(g);
  }
  DeleteObject(probe);
}

} // namespace
