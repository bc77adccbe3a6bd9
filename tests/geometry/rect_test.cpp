// Rectangles, points and conversions: construction, merging, tests,
// offsets and expansions with clamping, centres, conversions, vectors.
// Each table runs the integer and the double form where both exist.
#include "geometry/geometry_text.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <limits>

namespace {

using qxtest::Describe;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

DRECT D(const LRECT& r) { return {1.0 * r.x1, 1.0 * r.y1, 1.0 * r.x2, 1.0 * r.y2}; }
DPNT D(const LPNT& p) { return {1.0 * p.x, 1.0 * p.y}; }

TEST(Rects, SortingAndMerging) {
  struct Case {
    const char* what;
    LRECT r, s;
    const char* mergedIntersected;
  } cases[] = {
      {"disjoint stays inverted", {0, 0, 10, 10}, {20, 20, 30, 30}, "[0,0,30,30] [20,20,10,10]"},
      {"touching", {0, 0, 10, 10}, {10, 10, 20, 20}, "[0,0,20,20] [10,10,10,10]"},
      {"empty merges as it is", {0, 0, 10, 10}, {5, 5, 5, 50}, "[0,0,10,50] [5,5,5,10]"},
      {"extremes",
       {INT_MIN, 0, 0, INT_MAX},
       {0, INT_MIN, INT_MAX, 0},
       "[-2147483648,-2147483648,2147483647,2147483647] [0,0,0,0]"},
  };
  for (const Case& c : cases) {
    LRECT l = c.r, i = c.r;
    DRECT d = D(c.r), e = D(c.r);
    MergeRects(l, c.s);
    MergeRects(d, D(c.s));
    IntersectRects(i, c.s);
    IntersectRects(e, D(c.s));
    EXPECT_EQ(Describe(l) + " " + Describe(i), c.mergedIntersected) << c.what;
    EXPECT_EQ(Describe(d) + " " + Describe(e), c.mergedIntersected) << c.what;
  }
  LRECT l;
  SetRect(l, 9, 8, 1, 2);
  EXPECT_EQ(Describe(l), "[9,8,1,2]") << "SetRect keeps the order";
  SetRect(l, 0x100000009L, -1, 0, 0);
  EXPECT_EQ(Describe(l), "[9,-1,0,0]") << "SetRect keeps the low 32 bits";
  SortRect(l);
  EXPECT_EQ(Describe(l), "[0,-1,9,0]");
  SortRectWithPoints(l, {5, 1}, {2, 7});
  DRECT d;
  SortRectWithPoints(d, {5, 1}, {2, 7});
  EXPECT_EQ(Describe(l) + Describe(d), "[2,1,5,7][2,1,5,7]");

  InitRectForMerging(l);
  EXPECT_EQ(Describe(l), Describe(LRECT{INT_MAX, INT_MAX, INT_MIN, INT_MIN}));
  MergeRectWithPoint(l, {5, 7});
  EXPECT_EQ(Describe(l), "[5,7,5,7]");
  InitRectForMerging(d);
  EXPECT_EQ(Describe(d), Describe(DRECT{DBL_MAX, DBL_MAX, -DBL_MAX, -DBL_MAX}));
  MergeRectWithPoint(d, {5, 7});
  MergeRectWithPoint(d, {kNaN, -1});
  EXPECT_EQ(Describe(d), "[5,-1,5,7]") << "a NaN coordinate changes nothing";
  const LPNT pts[] = {{3, 4}, {-1, 9}, {7, -2}};
  GetRectFromPoints(l, pts, 3);
  EXPECT_EQ(Describe(l), "[-1,-2,7,9]");
  for (const LPNT* p : {pts, static_cast<const LPNT*>(nullptr)}) {
    GetRectFromPoints(l, p, p ? 0 : 3);
    EXPECT_EQ(Describe(l), Describe(LRECT{INT_MAX, INT_MAX, INT_MIN, INT_MIN})) << "no points";
  }
}

TEST(Rects, Tests) {
  struct Case {
    LRECT a, b;
    bool aEmpty, aZero, overlap, aInB;
  } cases[] = {
      {{0, 0, 10, 10}, {10, 10, 20, 20}, false, false, true, false},
      {{0, 0, 10, 10}, {11, 0, 20, 10}, false, false, false, false},
      {{0, 0, 10, 10}, {0, 0, 10, 10}, false, false, true, true},
      {{5, 0, 5, 10}, {0, 0, 10, 10}, true, false, true, true},
      {{0, 0, 0, 0}, {0, 0, 0, 0}, true, true, true, true},
      {{20, 20, 10, 10}, {0, 0, 30, 30}, true, false, true, true},
      {{0, 0, 10, 10}, {3, 3, 2, 2}, false, false, true, false},
  };
  for (const Case& c : cases) {
    const bool want[] = {c.aEmpty, c.aZero, c.overlap, c.aInB};
    const bool got[] = {RectIsEmpty(c.a), RectIsZero(c.a), RectsOverlap(c.a, c.b),
                        RectInRect(c.a, c.b)};
    const bool dgot[] = {RectIsEmpty(D(c.a)), RectIsZero(D(c.a)), RectsOverlap(D(c.a), D(c.b)),
                         RectInRect(D(c.a), D(c.b))};
    for (int i = 0; i < 4; ++i)
      EXPECT_TRUE(got[i] == want[i] && dgot[i] == want[i]) << Describe(c.a) << Describe(c.b) << i;
  }
  struct PointCase {
    LPNT p;
    bool in;
    LPNT clipped;
    LRECT r = {0, 0, 10, 10};
  } points[] = {
      {{10, 10}, true, {10, 10}},
      {{0, 5}, true, {0, 5}},
      {{-1, 5}, false, {0, 5}},
      {{5, 11}, false, {5, 10}},
      {{20, -3}, false, {10, 0}},
      {{INT_MIN, INT_MAX}, false, {0, 10}},
      {{5, 5}, false, {10, 10}, {10, 10, 0, 0}}, // unsorted: the lower limit is tested first
  };
  for (const PointCase& c : points) {
    LPNT l = c.p;
    DPNT d = D(c.p);
    ClipPointToRect(l, c.r);
    ClipPointToRect(d, D(c.r));
    EXPECT_EQ(Describe(l) + Describe(d), Describe(c.clipped) + Describe(c.clipped))
        << Describe(c.p);
    EXPECT_TRUE(PointInRect(c.p, c.r) == c.in && PointInRect(D(c.p), D(c.r)) == c.in)
        << Describe(c.p);
  }
}

TEST(Rects, MeasuresCentresAndCorners) {
  struct Case {
    LPNT a, b, centre;
  } cases[] = {
      {{3, -3}, {4, -4}, {3, -3}},
      {{INT_MAX, INT_MAX - 2}, {INT_MAX, INT_MAX}, {INT_MAX, INT_MAX - 1}},
      {{INT_MIN, INT_MIN}, {INT_MIN + 3, INT_MIN + 4}, {INT_MIN + 1, INT_MIN + 2}},
      {{INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, {0, 0}},
      // The sum reaches a limit without saturating: the other formula.
      {{INT_MAX, 0}, {0, INT_MAX}, {1073741824, 1073741823}},
      // The 32-bit difference would overflow here; the exact one does not.
      {{INT_MIN, 0}, {0, INT_MIN}, {-1073741824, -1073741824}},
  };
  for (const Case& c : cases) {
    LPNT got, fromRect;
    GetCenterOfPoints(c.a, c.b, got);
    GetCenterOfRect(LRECT{c.a.x, c.a.y, c.b.x, c.b.y}, fromRect);
    EXPECT_EQ(Describe(got) + Describe(fromRect), Describe(c.centre) + Describe(c.centre))
        << Describe(c.a) << Describe(c.b);
  }
  DPNT dc;
  GetCenterOfRect(DRECT{1, 2, 4, 8}, dc);
  EXPECT_EQ(Describe(dc), "(2.5,5)");
  long w, h;
  GetWidthHeightOfRect(LRECT{INT_MIN, 5, INT_MAX, 2}, w, h);
  EXPECT_TRUE(w == -1 && h == -3); // plain 32-bit subtraction wraps
  double dw, dh;
  GetWidthHeightOfRect(DRECT{1, 2, 4, 8}, dw, dh);
  EXPECT_TRUE(dw == 3 && dh == 6);
  LPNT corners[5] = {};
  corners[4] = {77, 77};
  GetCornersOfRect(LRECT{1, 2, 3, 4}, corners);
  EXPECT_EQ(Describe(std::vector<LPNT>(corners, corners + 5)), "(1,2)(1,4)(3,4)(3,2)(77,77)");
}

TEST(Rects, OffsetsAndExpansionsClampAndSort) {
  struct Case {
    const char* what;
    LRECT r;
    long dx, dy, lo, hi;
    const char* offsetExpanded;
  } cases[] = {
      {"in bounds", {0, 0, 100, 100}, 50, 0, 0, 120, "[50,0,120,100] [0,0,120,100]"},
      {"shrink", {0, 0, 10, 10}, -2, -2, -100, 100, "[-2,-2,8,8] [2,2,8,8]"},
      {"shrink crosses over", {0, 0, 10, 10}, -6, -6, -100, 100, "[-6,-6,4,4] [4,4,6,6]"},
      {"saturates",
       {INT_MAX - 1, INT_MIN + 1, 0, 0},
       INT_MAX,
       INT_MIN,
       INT_MIN,
       INT_MAX,
       "[2147483647,-2147483648,2147483647,-2147483648] [-1,-2147483648,2147483647,1]"},
      {"low 32 bits count",
       {0, 0, 10, 10},
       0x100000001L,
       0,
       0x100000000L,
       0x100000005L,
       "[1,0,5,5] [0,0,5,5]"},
      // Expanding by -2147483648 shrinks by 2147483648 on each side.
      {"minimum expansion",
       {-5, -5, 5, 5},
       INT_MIN,
       0,
       INT_MIN,
       INT_MAX,
       "[-2147483648,-5,-2147483643,5] [-2147483643,-5,2147483643,5]"},
  };
  for (const Case& c : cases) {
    LRECT o = c.r, e = c.r;
    OffsetRect(o, c.dx, c.dy, c.lo, c.hi);
    ExpandRect(e, c.dx, c.dy, c.lo, c.hi);
    EXPECT_EQ(Describe(o) + " " + Describe(e), c.offsetExpanded) << c.what;
    LPNT pts[2] = {{c.r.x1, c.r.y1}, {c.r.x2, c.r.y2}};
    OffsetPoints(pts, 2, c.dx, c.dy, c.lo, c.hi);
    EXPECT_EQ(Describe(LRECT{pts[0].x, pts[0].y, pts[1].x, pts[1].y}), Describe(o)) << c.what;
  }
  LRECT l;
  ExpandPointIntoRect(LPNT{10, 20}, l, 5, -7, 0, 24);
  EXPECT_EQ(Describe(l), "[5,13,15,24]") << "clamps, then sorts";
  DRECT d{0, 0, 10, 10};
  ExpandRect(d, -6, 1.5);
  EXPECT_EQ(Describe(d), "[4,-1.5,6,11.5]");
  OffsetRect(d, 0.5, 1.5);
  EXPECT_EQ(Describe(d), "[4.5,0,6.5,13]");
  ExpandPointIntoRect(DPNT{1, 1}, d, -2, 3);
  EXPECT_EQ(Describe(d), "[-1,-2,3,4]");
  DPNT dp[2] = {{1, 2}, {3, 4}};
  OffsetPoints(dp, 1, 10, 20);
  EXPECT_EQ(Describe(dp[0]) + Describe(dp[1]), "(11,22)(3,4)");
}

TEST(Conversions, ClampThenRound) {
  struct Case {
    double v;
    long lo, hi;
    int32_t want;
  } cases[] = {
      {2.5, -100, 100, 3},    {-2.5, -100, 100, -3},
      {2.4999, -100, 100, 2}, {1e12, 0, 1000000000, 1000000000},
      {-1e12, -7, 7, -7},     {7.4, -7, 7, 7}, // above hi: hi itself
      {-7.4, -7, 7, -7},      {6.6, -7, 7, 7}, // kept, then rounded up to hi
      {kNaN, -7, 7, INT_MIN}, {5, 10, 0, 10},  // below lo wins
  };
  for (const Case& c : cases) {
    LRECT l;
    DoubleToLongRect(DRECT{c.v, c.v, c.v, c.v}, l, c.lo, c.hi);
    LPNT p[2] = {{0, 0}, {99, 99}};
    DPNT s{c.v, c.v};
    DoubleToLongPoints(&s, p, 1, c.lo, c.hi);
    const LRECT got{l.x1, l.y2, p[0].x, p[0].y};
    EXPECT_EQ(Describe(got), Describe(LRECT{c.want, c.want, c.want, c.want})) << c.v;
    EXPECT_EQ(Describe(l) + Describe(p[1]), Describe(got) + "(99,99)") << c.v;
  }
  LRECT l;
  ClipToLongRect(LRECT{-50, 5, 50, INT_MAX}, l, -10, 10);
  EXPECT_EQ(Describe(l), "[-10,5,10,10]");
  LPNT src[3] = {{-50, 5}, {50, 0}, {1, 2}}, dst[3] = {{9, 9}, {9, 9}, {9, 9}};
  int count = -1;
  ClipToLongPoints(src, dst, 2, &count, -10, 10);
  EXPECT_EQ(Describe({dst[0], dst[1], dst[2]}), "(-10,5)(10,0)(9,9)");
  EXPECT_EQ(count, 2);
  ClipToLongPoints(src, dst, -1, &count, -10, 10);
  EXPECT_EQ(count, -1);
  DRECT d;
  LongToDoubleRect(LRECT{INT_MIN, -1, 0, INT_MAX}, d);
  EXPECT_EQ(Describe(d), "[-2147483648,-1,0,2147483647]");
  DPNT dp[2] = {{7, 7}, {7, 7}};
  LongToDoublePoints(src, dp, 1);
  EXPECT_EQ(Describe(dp[0]) + Describe(dp[1]), "(-50,5)(7,7)");
}

TEST(Vectors, ReverseSubtractProducts) {
  LPNT l[4] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}};
  ReverseNodes(l, 3);
  EXPECT_EQ(Describe({l[0], l[1], l[2], l[3]}), "(3,3)(2,2)(1,1)(4,4)");
  DPNT d[2] = {{1, 1}, {2, 2}};
  ReverseNodes(d, 2);
  EXPECT_TRUE(d[0].x == 2 && d[1].x == 1);
  ReverseNodes(d, -1);
  DPNT c;
  SubtractPoints(LPNT{INT_MIN, 5}, LPNT{1, 7}, c);
  EXPECT_EQ(Describe(c), "(2147483647,-2)"); // the 32-bit difference wraps
  SubtractPoints(DPNT{0.5, 1}, DPNT{1, 1}, c);
  EXPECT_EQ(Describe(c), "(-0.5,0)");
  EXPECT_EQ(DotProductVecs({1, 2}, {3, 4}), 11);
  EXPECT_EQ(CrossProductVecs({1, 2}, {3, 4}), -2);
  EXPECT_EQ(NormL1Vec({-1.5, 2}), 3.5);

  struct Case {
    const char* triangle;
    bool clockwise;
  } cases[] = {
      {"0,0 1,0 0,1", false}, {"0,0 0,1 1,0", true},
      {"0,0 1,1 2,2", true}, // collinear counts as clockwise
      {"5,5 5,5 5,5", true},  {"min,min max,min max,max", false},
  };
  for (const Case& k : cases) {
    const std::vector<LPNT> p = qxtest::Pts(k.triangle);
    EXPECT_EQ(IsClockwiseTriangle(p[0], p[1], p[2]), k.clockwise) << k.triangle;
    EXPECT_EQ(IsClockwiseTriangle(D(p[0]), D(p[1]), D(p[2])), k.clockwise) << k.triangle;
  }
  EXPECT_FALSE(IsClockwiseTriangle(DPNT{kNaN, 0}, DPNT{0, 1}, DPNT{1, 0}));
}

} // namespace
