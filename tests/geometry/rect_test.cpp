// Rectangles, points and conversions: construction, merging, tests,
// offsets and expansions with clamping, centres, conversions, vectors.
// Each table runs the integer and the double form where both exist.
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

DRECT ToDouble(const LRECT& r) { return {1.0 * r.x1, 1.0 * r.y1, 1.0 * r.x2, 1.0 * r.y2}; }
DPNT ToDouble(const LPNT& p) { return {1.0 * p.x, 1.0 * p.y}; }

void ExpectRect(const LRECT& got, const LRECT& want, const char* what) {
  EXPECT_TRUE(got.x1 == want.x1 && got.y1 == want.y1 && got.x2 == want.x2 && got.y2 == want.y2)
      << what << ": got (" << got.x1 << ", " << got.y1 << ", " << got.x2 << ", " << got.y2
      << "), want (" << want.x1 << ", " << want.y1 << ", " << want.x2 << ", " << want.y2 << ")";
}

void ExpectRect(const DRECT& got, const LRECT& want, const char* what) {
  EXPECT_TRUE(got.x1 == want.x1 && got.y1 == want.y1 && got.x2 == want.x2 && got.y2 == want.y2)
      << what << " (double): got (" << got.x1 << ", " << got.y1 << ", " << got.x2 << ", "
      << got.y2 << ")";
}

TEST(Rects, SortingAndMerging) {
  struct Case {
    const char* what;
    LRECT r, s, merged, intersected;
  } cases[] = {
      {"nested", {0, 0, 10, 10}, {2, 3, 4, 5}, {0, 0, 10, 10}, {2, 3, 4, 5}},
      {"disjoint stays inverted", {0, 0, 10, 10}, {20, 20, 30, 30}, {0, 0, 30, 30}, {20, 20, 10, 10}},
      {"touching", {0, 0, 10, 10}, {10, 10, 20, 20}, {0, 0, 20, 20}, {10, 10, 10, 10}},
      {"empty merges as it is", {0, 0, 10, 10}, {5, 5, 5, 50}, {0, 0, 10, 50}, {5, 5, 5, 10}},
      {"extremes", {INT_MIN, 0, 0, INT_MAX}, {0, INT_MIN, INT_MAX, 0}, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    LRECT l = c.r;
    MergeRects(l, c.s);
    ExpectRect(l, c.merged, c.what);
    l = c.r;
    IntersectRects(l, c.s);
    ExpectRect(l, c.intersected, c.what);
    DRECT d = ToDouble(c.r);
    MergeRects(d, ToDouble(c.s));
    ExpectRect(d, c.merged, c.what);
    d = ToDouble(c.r);
    IntersectRects(d, ToDouble(c.s));
    ExpectRect(d, c.intersected, c.what);
  }

  LRECT l;
  SetRect(l, 9, 8, 1, 2);
  ExpectRect(l, {9, 8, 1, 2}, "SetRect keeps the order");
  SetRect(l, 0x100000009L, -1, 0, 0);
  ExpectRect(l, {9, -1, 0, 0}, "SetRect keeps the low 32 bits");
  SortRect(l);
  ExpectRect(l, {0, -1, 9, 0}, "SortRect");
  SortRectWithPoints(l, {5, 1}, {2, 7});
  ExpectRect(l, {2, 1, 5, 7}, "SortRectWithPoints");
  DRECT d;
  SortRectWithPoints(d, {5, 1}, {2, 7});
  ExpectRect(d, {2, 1, 5, 7}, "SortRectWithPoints");
}

TEST(Rects, MergingFromTheSentinels) {
  LRECT l;
  InitRectForMerging(l);
  ExpectRect(l, {INT_MAX, INT_MAX, INT_MIN, INT_MIN}, "sentinels");
  MergeRectWithPoint(l, {5, 7});
  ExpectRect(l, {5, 7, 5, 7}, "one point");
  EXPECT_TRUE(RectIsEmpty(l));
  DRECT d;
  InitRectForMerging(d);
  EXPECT_EQ(d.x1, DBL_MAX);
  EXPECT_EQ(d.y2, -DBL_MAX);
  MergeRectWithPoint(d, {5, 7});
  MergeRectWithPoint(d, {kNaN, -1});
  ExpectRect(d, {5, -1, 5, 7}, "a NaN coordinate changes nothing");

  const LPNT pts[] = {{3, 4}, {-1, 9}, {7, -2}};
  GetRectFromPoints(l, pts, 3);
  ExpectRect(l, {-1, -2, 7, 9}, "GetRectFromPoints");
  GetRectFromPoints(l, pts, 0);
  ExpectRect(l, {INT_MAX, INT_MAX, INT_MIN, INT_MIN}, "no points leave the sentinels");
  GetRectFromPoints(l, nullptr, 3);
  ExpectRect(l, {INT_MAX, INT_MAX, INT_MIN, INT_MIN}, "null points");
}

TEST(Rects, Tests) {
  struct Case {
    LRECT a, b;
    bool aEmpty, aZero, overlap, aInB;
  } cases[] = {
      {{0, 0, 10, 10}, {10, 10, 20, 20}, false, false, true, false},
      {{0, 0, 10, 10}, {11, 0, 20, 10}, false, false, false, false},
      {{2, 2, 8, 8}, {0, 0, 10, 10}, false, false, true, true},
      {{0, 0, 10, 10}, {0, 0, 10, 10}, false, false, true, true},
      {{5, 0, 5, 10}, {0, 0, 10, 10}, true, false, true, true},
      {{0, 0, 0, 0}, {0, 0, 0, 0}, true, true, true, true},
      {{20, 20, 10, 10}, {0, 0, 30, 30}, true, false, true, true},
      {{0, 0, 10, 10}, {3, 3, 2, 2}, false, false, true, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(RectIsEmpty(c.a), c.aEmpty);
    EXPECT_EQ(RectIsEmpty(ToDouble(c.a)), c.aEmpty);
    EXPECT_EQ(RectIsZero(c.a), c.aZero);
    EXPECT_EQ(RectIsZero(ToDouble(c.a)), c.aZero);
    EXPECT_EQ(RectsOverlap(c.a, c.b), c.overlap);
    EXPECT_EQ(RectsOverlap(ToDouble(c.a), ToDouble(c.b)), c.overlap);
    EXPECT_EQ(RectInRect(c.a, c.b), c.aInB);
    EXPECT_EQ(RectInRect(ToDouble(c.a), ToDouble(c.b)), c.aInB);
  }
  struct PointCase {
    LPNT p;
    bool in;
    LPNT clipped;
  } points[] = {
      {{10, 10}, true, {10, 10}}, {{0, 5}, true, {0, 5}},     {{-1, 5}, false, {0, 5}},
      {{5, 11}, false, {5, 10}},  {{20, -3}, false, {10, 0}}, {{INT_MIN, INT_MAX}, false, {0, 10}},
  };
  const LRECT r{0, 0, 10, 10};
  for (const PointCase& c : points) {
    EXPECT_EQ(PointInRect(c.p, r), c.in) << c.p.x << "," << c.p.y;
    EXPECT_EQ(PointInRect(ToDouble(c.p), ToDouble(r)), c.in);
    LPNT l = c.p;
    ClipPointToRect(l, r);
    EXPECT_TRUE(l.x == c.clipped.x && l.y == c.clipped.y) << c.p.x << "," << c.p.y;
    DPNT d = ToDouble(c.p);
    ClipPointToRect(d, ToDouble(r));
    EXPECT_TRUE(d.x == c.clipped.x && d.y == c.clipped.y);
  }
  // An unsorted rectangle: the lower limit is tested first.
  LPNT l{5, 5};
  ClipPointToRect(l, LRECT{10, 10, 0, 0});
  EXPECT_TRUE(l.x == 10 && l.y == 10);
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
    LPNT got;
    GetCenterOfPoints(c.a, c.b, got);
    EXPECT_TRUE(got.x == c.centre.x && got.y == c.centre.y)
        << c.a.x << "," << c.a.y << " " << c.b.x << "," << c.b.y << " => " << got.x << ","
        << got.y;
    GetCenterOfRect(LRECT{c.a.x, c.a.y, c.b.x, c.b.y}, got);
    EXPECT_TRUE(got.x == c.centre.x && got.y == c.centre.y);
  }
  DPNT dc;
  GetCenterOfRect(DRECT{1, 2, 4, 8}, dc);
  EXPECT_TRUE(dc.x == 2.5 && dc.y == 5);

  long w, h;
  GetWidthHeightOfRect(LRECT{INT_MIN, 5, INT_MAX, 2}, w, h);
  EXPECT_EQ(w, -1); // plain 32-bit subtraction wraps
  EXPECT_EQ(h, -3);
  double dw, dh;
  GetWidthHeightOfRect(DRECT{1, 2, 4, 8}, dw, dh);
  EXPECT_TRUE(dw == 3 && dh == 6);

  LPNT corners[5] = {};
  corners[4] = {77, 77};
  GetCornersOfRect(LRECT{1, 2, 3, 4}, corners);
  const LPNT want[] = {{1, 2}, {1, 4}, {3, 4}, {3, 2}, {77, 77}};
  for (int i = 0; i < 5; ++i)
    EXPECT_TRUE(corners[i].x == want[i].x && corners[i].y == want[i].y) << i;
  DPNT dcorners[4];
  GetCornersOfRect(DRECT{1, 2, 3, 4}, dcorners);
  for (int i = 0; i < 4; ++i)
    EXPECT_TRUE(dcorners[i].x == want[i].x && dcorners[i].y == want[i].y) << i;
}

TEST(Rects, OffsetsAndExpansionsClampAndSort) {
  struct Case {
    const char* what;
    LRECT r;
    long dx, dy, lo, hi;
    LRECT offset, expanded;
  } cases[] = {
      {"in bounds", {0, 0, 100, 100}, 50, 0, 0, 120, {50, 0, 120, 100}, {0, 0, 120, 100}},
      {"shrink", {0, 0, 10, 10}, -2, -2, -100, 100, {-2, -2, 8, 8}, {2, 2, 8, 8}},
      {"shrink crosses over", {0, 0, 10, 10}, -6, -6, -100, 100, {-6, -6, 4, 4}, {4, 4, 6, 6}},
      {"saturates", {INT_MAX - 1, INT_MIN + 1, 0, 0}, INT_MAX, INT_MIN, INT_MIN, INT_MAX,
       {INT_MAX, INT_MIN, INT_MAX, INT_MIN}, {-1, INT_MIN, INT_MAX, 1}},
      {"low 32 bits count", {0, 0, 10, 10}, 0x100000001L, 0, 0x100000000L, 0x100000005L,
       {1, 0, 5, 5}, {0, 0, 5, 5}},
      // Expanding by -2147483648 shrinks by 2147483648 on each side.
      {"minimum expansion", {-5, -5, 5, 5}, INT_MIN, 0, INT_MIN, INT_MAX,
       {INT_MIN, -5, INT_MIN + 5, 5}, {INT_MIN + 5, -5, 2147483643, 5}},
  };
  for (const Case& c : cases) {
    LRECT l = c.r;
    OffsetRect(l, c.dx, c.dy, c.lo, c.hi);
    ExpectRect(l, c.offset, c.what);
    LPNT pts[2] = {{c.r.x1, c.r.y1}, {c.r.x2, c.r.y2}};
    OffsetPoints(pts, 2, c.dx, c.dy, c.lo, c.hi);
    ExpectRect(LRECT{pts[0].x, pts[0].y, pts[1].x, pts[1].y}, c.offset, c.what);
    l = c.r;
    ExpandRect(l, c.dx, c.dy, c.lo, c.hi);
    ExpectRect(l, c.expanded, c.what);
  }
  LRECT l;
  ExpandPointIntoRect(LPNT{10, 20}, l, 5, -7, 0, 24);
  ExpectRect(l, {5, 13, 15, 24}, "ExpandPointIntoRect clamps, then sorts");
  DRECT d{0, 0, 10, 10};
  ExpandRect(d, -6, 1.5);
  EXPECT_TRUE(d.x1 == 4 && d.y1 == -1.5 && d.x2 == 6 && d.y2 == 11.5);
  OffsetRect(d, 0.5, 1.5);
  EXPECT_TRUE(d.x1 == 4.5 && d.y1 == 0 && d.x2 == 6.5 && d.y2 == 13);
  ExpandPointIntoRect(DPNT{1, 1}, d, -2, 3);
  EXPECT_TRUE(d.x1 == -1 && d.y1 == -2 && d.x2 == 3 && d.y2 == 4);
  DPNT dp[2] = {{1, 2}, {3, 4}};
  OffsetPoints(dp, 1, 10, 20);
  EXPECT_TRUE(dp[0].x == 11 && dp[0].y == 22 && dp[1].x == 3);
}

TEST(Conversions, ClampThenRound) {
  struct Case {
    double v;
    long lo, hi;
    int32_t want;
  } cases[] = {
      {2.5, -100, 100, 3},
      {-2.5, -100, 100, -3},
      {2.4999, -100, 100, 2},
      {1e12, 0, 1000000000, 1000000000},
      {-1e12, -7, 7, -7},
      {7.4, -7, 7, 7}, // above hi: hi itself
      {-7.4, -7, 7, -7},
      {6.6, -7, 7, 7}, // kept, then rounded up to hi
      {kNaN, -7, 7, INT_MIN},
      {5, 10, 0, 10}, // below lo wins
  };
  for (const Case& c : cases) {
    LRECT l;
    DoubleToLongRect(DRECT{c.v, c.v, c.v, c.v}, l, c.lo, c.hi);
    EXPECT_TRUE(l.x1 == c.want && l.y2 == c.want) << c.v << " => " << l.x1;
    LPNT p[2] = {{0, 0}, {99, 99}};
    DPNT s{c.v, c.v};
    DoubleToLongPoints(&s, p, 1, c.lo, c.hi);
    EXPECT_TRUE(p[0].x == c.want && p[0].y == c.want && p[1].x == 99) << c.v;
  }

  LRECT l;
  ClipToLongRect(LRECT{-50, 5, 50, INT_MAX}, l, -10, 10);
  ExpectRect(l, {-10, 5, 10, 10}, "ClipToLongRect");
  LPNT src[3] = {{-50, 5}, {50, 0}, {1, 2}}, dst[3] = {{9, 9}, {9, 9}, {9, 9}};
  int count = -1;
  ClipToLongPoints(src, dst, 2, &count, -10, 10);
  EXPECT_EQ(count, 2);
  EXPECT_TRUE(dst[0].x == -10 && dst[0].y == 5 && dst[1].x == 10 && dst[2].x == 9);
  ClipToLongPoints(src, dst, -1, &count, -10, 10);
  EXPECT_EQ(count, -1);

  DRECT d;
  LongToDoubleRect(LRECT{INT_MIN, -1, 0, INT_MAX}, d);
  EXPECT_TRUE(d.x1 == -2147483648.0 && d.y1 == -1 && d.x2 == 0 && d.y2 == 2147483647.0);
  DPNT dp[2] = {{7, 7}, {7, 7}};
  LongToDoublePoints(src, dp, 1);
  EXPECT_TRUE(dp[0].x == -50 && dp[0].y == 5 && dp[1].x == 7);
}

TEST(Vectors, ReverseSubtractProducts) {
  LPNT l[4] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}};
  ReverseNodes(l, 3);
  EXPECT_TRUE(l[0].x == 3 && l[1].x == 2 && l[2].x == 1 && l[3].x == 4);
  DPNT d[2] = {{1, 1}, {2, 2}};
  ReverseNodes(d, 2);
  EXPECT_TRUE(d[0].x == 2 && d[1].x == 1);
  ReverseNodes(d, -1);

  DPNT c;
  SubtractPoints(LPNT{INT_MIN, 5}, LPNT{1, 7}, c);
  EXPECT_TRUE(c.x == 2147483647.0 && c.y == -2); // the 32-bit difference wraps
  SubtractPoints(DPNT{0.5, 1}, DPNT{1, 1}, c);
  EXPECT_TRUE(c.x == -0.5 && c.y == 0);
  EXPECT_EQ(DotProductVecs({1, 2}, {3, 4}), 11);
  EXPECT_EQ(CrossProductVecs({1, 2}, {3, 4}), -2);
  EXPECT_EQ(NormL1Vec({-1.5, 2}), 3.5);

  struct Case {
    LPNT a, b, c;
    bool clockwise;
  } cases[] = {
      {{0, 0}, {1, 0}, {0, 1}, false},
      {{0, 0}, {0, 1}, {1, 0}, true},
      {{0, 0}, {1, 1}, {2, 2}, true}, // collinear counts as clockwise
      {{5, 5}, {5, 5}, {5, 5}, true},
      {{INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}, false},
  };
  for (const Case& k : cases) {
    EXPECT_EQ(IsClockwiseTriangle(k.a, k.b, k.c), k.clockwise);
    EXPECT_EQ(IsClockwiseTriangle(ToDouble(k.a), ToDouble(k.b), ToDouble(k.c)), k.clockwise);
  }
  EXPECT_FALSE(IsClockwiseTriangle(DPNT{kNaN, 0}, DPNT{0, 1}, DPNT{1, 0}));
}

} // namespace
