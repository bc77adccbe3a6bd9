// The integer rectangle, point, arc and region functions over the extremes
// of 32-bit coordinates and `long` arguments. Under
// UndefinedBehaviorSanitizer no signed overflow or bad conversion may
// occur; everywhere the results keep the invariants callers rely on
// (clamped into [lo, hi], sorted, between the inputs). The clip fuzzer
// walks the same extremes through the line functions.
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <vector>

namespace {

const long kLongs[] = {LONG_MIN, -0x100000000L, INT_MIN, -1, 0, 1, INT_MAX, 0x100000000L, LONG_MAX};

// Points - every point whose coordinates are both in `values`.
std::vector<LPNT> Points(std::initializer_list<int32_t> values) {
  std::vector<LPNT> pts;
  for (int32_t x : values)
    for (int32_t y : values)
      pts.push_back({x, y});
  return pts;
}
const std::vector<LPNT> kPoints = Points({INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX});
const std::vector<LPNT> kCorners = Points({INT_MIN, 0, INT_MAX});

bool Between(int32_t v, int64_t a, int64_t b) { return std::min(a, b) <= v && v <= std::max(a, b); }
bool Sorted(const LRECT& r) { return r.x1 <= r.x2 && r.y1 <= r.y2; }
bool Within(const LRECT& r, long lo, long hi) {
  const int32_t l = static_cast<int32_t>(lo), h = static_cast<int32_t>(hi);
  return Between(r.x1, l, h) && Between(r.y1, l, h) && Between(r.x2, l, h) && Between(r.y2, l, h);
}

TEST(Overflow, RectanglesAndPoints) {
  for (const LPNT& a : kPoints)
    for (const LPNT& b : kPoints) {
      const LRECT r{a.x, a.y, b.x, b.y};
      LRECT s = r;
      SortRect(s);
      ASSERT_TRUE(Sorted(s));
      long w, h;
      GetWidthHeightOfRect(r, w, h);
      LPNT c, corners[4];
      GetCenterOfRect(r, c);
      ASSERT_TRUE(Between(c.x, r.x1, r.x2) && Between(c.y, r.y1, r.y2));
      GetCornersOfRect(r, corners);
      IsClockwiseTriangle(a, b, c);
      DPNT diff;
      SubtractPoints(a, b, diff);
      for (long delta : kLongs)
        for (long lo : {long{INT_MIN}, -1000L, 0L})
          for (long hi : {0L, 1000L, long{INT_MAX}}) {
            LRECT o = r;
            OffsetRect(o, delta, ~delta, lo, hi);
            ASSERT_TRUE(Within(o, lo, hi));
            o = r;
            ExpandRect(o, delta, ~delta, lo, hi);
            ASSERT_TRUE(Within(o, lo, hi) && Sorted(o));
            ClipToLongRect(r, o, lo, hi);
            ASSERT_TRUE(Within(o, lo, hi));
            ExpandPointIntoRect(a, o, delta, ~delta, lo, hi);
            ASSERT_TRUE(Within(o, lo, hi) && Sorted(o));
          }
    }
  for (const LPNT& a : kCorners)
    for (const LPNT& b : kCorners)
      for (const LPNT& c : kCorners)
        for (const LPNT& d : kCorners) {
          LRECT m{a.x, a.y, b.x, b.y};
          const LRECT other{c.x, c.y, d.x, d.y};
          RectsOverlap(m, other);
          RectInRect(m, other);
          MergeRects(m, other);
          IntersectRects(m, other);
          SortRectWithPoints(m, a, b);
          MergeRectWithPoint(m, c);
          LPNT centre;
          GetCenterOfPoints(c, d, centre);
          ASSERT_TRUE(Between(centre.x, c.x, d.x) && Between(centre.y, c.y, d.y));
        }
  std::vector<LPNT> moved = kPoints;
  OffsetPoints(moved.data(), static_cast<int>(moved.size()), INT_MAX, INT_MIN, INT_MIN, INT_MAX);
  bool ok;
  IsClockwiseOrientation(kPoints.data(), static_cast<int>(kPoints.size()), &ok);

  const double kInf = std::numeric_limits<double>::infinity();
  for (double v : {-kInf, -1e300, -2147483648.6, -0.5, 0.5, 2147483647.6, 1e300, kInf,
                   std::numeric_limits<double>::quiet_NaN()}) {
    LRECT r;
    DoubleToLongRect(DRECT{v, v, v, v}, r, INT_MIN, INT_MAX);
    DPNT p{v, -v};
    LPNT l;
    DoubleToLongPoints(&p, &l, 1, -10, 10);
    ASSERT_TRUE(v != v || (Between(l.x, -10, 10) && Between(l.y, -10, 10))) << v;
  }
}

TEST(Overflow, ArcsAndRegions) {
  for (const LPNT& a : kCorners)
    for (const LPNT& b : kCorners)
      for (const LPNT& c : kCorners)
        for (const LPNT& d : kCorners) {
          LRECT r{a.x, a.y, b.x, b.y};
          short a1, a2;
          CalcArcAngles(r, c, d, &a1, &a2, false);
          ASSERT_GT(a2, a1);
          LPNT p;
          LogCalcArcPoints(r, c.x, d.y, &p, &p);
          CreateCircleMBR(r, a, b, 1, c.x == 0 ? 2 : 1e-300);
          ASSERT_TRUE(Within(r, -1000000000, 1000000000) && Sorted(r));
        }
  for (short a1 : {SHRT_MIN, -1, 0, 3599, 3600, SHRT_MAX})
    for (short a2 : {SHRT_MIN, -1, 0, 3599, 3600, SHRT_MAX})
      for (int flips = 0; flips < 4; ++flips) {
        short f1 = a1, f2 = a2;
        FlipArcAngles(&f1, &f2, flips & 1, flips & 2);
        ASSERT_TRUE(f1 >= 0 && f1 < 3600 && f2 > f1 && f2 <= f1 + 3600);
      }
  for (long v : kLongs)
    for (long pattern : kLongs)
      for (bool allowZero : {false, true})
        RoundToPatternSize(v, allowZero, pattern);
  const LRECT sliver{INT_MAX - 1, INT_MIN, INT_MAX, INT_MIN + 1};
  for (const LPNT& a : kCorners)
    for (const LPNT& b : kCorners) {
      const LRECT r{a.x, a.y, b.x, b.y};
      HRGN g = rgn_unionrect(rgn_create(&r), &sliver);
      HRGN common = rgn_intersect(g, g);
      LRECT box;
      rgn_bounding_rect(common, &box);
      EXPECT_TRUE(rgn_equal(g, common));
      rgn_destroy(g);
      rgn_destroy(common);
    }
}

} // namespace
