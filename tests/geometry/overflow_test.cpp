// Every integer geometry function over the extremes of 32-bit coordinates
// and `long` arguments. Under UndefinedBehaviorSanitizer no signed overflow
// or bad conversion may occur; everywhere the results keep the invariants
// callers rely on (clamped into [lo, hi], sorted, inside the clip
// rectangle, between the inputs).
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <vector>

namespace {

const int32_t kExtremes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
const int32_t kCorners[] = {INT_MIN, 0, INT_MAX};
const long kLongs[] = {LONG_MIN, -0x100000000L, INT_MIN, -1, 0, 1, INT_MAX, 0x100000000L, LONG_MAX};

std::vector<LPNT> Points(const int32_t* values, size_t n) {
  std::vector<LPNT> pts;
  for (size_t i = 0; i < n; ++i)
    for (size_t j = 0; j < n; ++j)
      pts.push_back({values[i], values[j]});
  return pts;
}

std::vector<LRECT> Rects(const int32_t* values, size_t n) {
  std::vector<LRECT> rects;
  for (const LPNT& a : Points(values, n))
    for (const LPNT& b : Points(values, n))
      rects.push_back({a.x, a.y, b.x, b.y});
  return rects;
}

bool Between(int32_t v, int64_t a, int64_t b) { return std::min(a, b) <= v && v <= std::max(a, b); }
bool Inside(const LPNT& p, const LRECT& r) {
  return r.x1 <= p.x && p.x <= r.x2 && r.y1 <= p.y && p.y <= r.y2;
}
bool Sorted(const LRECT& r) { return r.x1 <= r.x2 && r.y1 <= r.y2; }
bool Within(const LRECT& r, long lo, long hi) {
  const int32_t l = static_cast<int32_t>(lo), h = static_cast<int32_t>(hi);
  return Between(r.x1, l, h) && Between(r.y1, l, h) && Between(r.x2, l, h) && Between(r.y2, l, h);
}

TEST(Overflow, RectanglesAndPoints) {
  const std::vector<LRECT> rects = Rects(kExtremes, std::size(kExtremes));
  const std::vector<LPNT> points = Points(kExtremes, std::size(kExtremes));
  for (const LRECT& r : rects) {
    LRECT s = r;
    SortRect(s);
    ASSERT_TRUE(Sorted(s));
    long w, h;
    GetWidthHeightOfRect(r, w, h);
    LPNT c, corners[4];
    GetCenterOfRect(r, c);
    ASSERT_TRUE(Between(c.x, r.x1, r.x2) && Between(c.y, r.y1, r.y2));
    GetCornersOfRect(r, corners);
    DRECT d;
    LongToDoubleRect(r, d);
    RectIsEmpty(r);
    RectIsZero(r);
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
        }
  }
  const std::vector<LRECT> few = Rects(kCorners, std::size(kCorners));
  for (const LRECT& a : few)
    for (const LRECT& b : few) {
      LRECT m = a;
      MergeRects(m, b);
      IntersectRects(m, b);
      RectsOverlap(a, b);
      RectInRect(a, b);
    }
  for (const LPNT& a : points) {
    for (const LPNT& b : points) {
      LPNT c;
      GetCenterOfPoints(a, b, c);
      ASSERT_TRUE(Between(c.x, a.x, b.x) && Between(c.y, a.y, b.y));
      DPNT diff;
      SubtractPoints(a, b, diff);
      LRECT r;
      SortRectWithPoints(r, a, b);
      MergeRectWithPoint(r, a);
      PointInRect(b, r);
      ClipPointToRect(c, r);
      ASSERT_TRUE(Inside(c, r));
      IsClockwiseTriangle(a, b, c);
      for (long delta : kLongs) {
        ExpandPointIntoRect(a, r, delta, ~delta, -1000, 1000);
        ASSERT_TRUE(Within(r, -1000, 1000) && Sorted(r));
      }
    }
  }
  std::vector<LPNT> moved = points, copy(points.size());
  OffsetPoints(moved.data(), static_cast<int>(moved.size()), INT_MAX, INT_MIN, INT_MIN, INT_MAX);
  int count = 0;
  ClipToLongPoints(points.data(), copy.data(), static_cast<int>(points.size()), &count, -5, 5);
  ReverseNodes(copy.data(), count);
  LRECT box;
  GetRectFromPoints(box, points.data(), static_cast<int>(points.size()));
  EXPECT_TRUE(box.x1 == INT_MIN && box.y1 == INT_MIN && box.x2 == INT_MAX && box.y2 == INT_MAX);
  bool ok;
  IsClockwiseOrientation(points.data(), static_cast<int>(points.size()), &ok);

  const double kInf = std::numeric_limits<double>::infinity();
  const double doubles[] = {-kInf, -1e300, -2147483648.6, -0.5, 0.5, 2147483647.6, 1e300, kInf,
                            std::numeric_limits<double>::quiet_NaN()};
  for (double v : doubles) {
    LRECT r;
    DoubleToLongRect(DRECT{v, v, v, v}, r, INT_MIN, INT_MAX);
    DPNT p{v, -v};
    LPNT l;
    DoubleToLongPoints(&p, &l, 1, -10, 10);
    if (v == v) { // not NaN
      ASSERT_TRUE(Between(l.x, -10, 10) && Between(l.y, -10, 10)) << v;
    }
  }
}

TEST(Overflow, LinesArcsAndRegions) {
  const std::vector<LPNT> points = Points(kExtremes, std::size(kExtremes));
  const std::vector<LRECT> clips = {{0, 0, 10, 10},
                                    {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
                                    {INT_MAX - 1, INT_MIN, INT_MAX, INT_MIN + 1},
                                    {-1, -1, 1, 1}};
  for (const LRECT& r : clips)
    for (const LPNT& a : points)
      for (const LPNT& b : points) {
        LPNT p0 = a, p1 = b;
        if (ClipLine(&p0, &p1, &r)) {
          ASSERT_TRUE(Inside(p0, r) && Inside(p1, r));
        }
        LPNT in[3] = {a, b, a}, out[7];
        int count = 0;
        ClipPoly(in, out, &r, &count, 3);
        for (int i = 0; i < count; ++i)
          ASSERT_TRUE(Inside(out[i], r));
      }
  const std::vector<LPNT> few = Points(kCorners, std::size(kCorners));
  for (const LPNT& a : few)
    for (const LPNT& b : few)
      for (const LPNT& c : few)
        for (const LPNT& d : few) {
          LPNT x;
          if (LineIntersection(a, b, c, d, x)) {
            ASSERT_TRUE(Between(x.x, a.x, b.x) && Between(x.y, c.y, d.y));
          }
          LRECT r{a.x, a.y, b.x, b.y};
          short a1, a2;
          CalcArcAngles(r, c, d, &a1, &a2, false);
          ASSERT_GT(a2, a1);
          LogCalcArcPoints(r, c.x, d.y, &x, &x);
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
  for (const LRECT& r : Rects(kCorners, std::size(kCorners))) {
    HRGN g = rgn_create(&r);
    g = rgn_unionrect(g, &clips[2]);
    HRGN common = rgn_intersect(g, g);
    LRECT box;
    rgn_bounding_rect(common, &box);
    EXPECT_TRUE(rgn_equal(g, common));
    rgn_destroy(g);
    rgn_destroy(common);
  }
}

} // namespace
