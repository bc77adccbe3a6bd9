// The integer rectangle, point, arc and region functions at the extremes of
// 32-bit coordinates and `long` arguments. Input: bytes that pick each value
// from the limits and their neighbours (or take it raw). Under
// UndefinedBehaviorSanitizer no signed overflow or bad conversion may occur;
// the results must keep the invariants callers rely on (clamped into
// [lo, hi], sorted, between the inputs). The clip fuzzer walks the same
// extremes through the line functions.
#include "qxutil/geometry.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

/// Bytes - reads the input, as zeros once it has run out.
struct Bytes {
  const uint8_t* data;
  size_t size;
  uint8_t Next8() { return size ? (--size, *data++) : 0; }
  uint64_t Next64() {
    uint64_t v = 0;
    for (int i = 0; i < 8; ++i)
      v = v << 8 | Next8();
    return v;
  }
  // Pick - one of `values`, now and then a raw value instead.
  template <class T, size_t N> T Pick(const T (&values)[N]) {
    const uint8_t k = Next8();
    return k < 8 * N ? values[k % N] : static_cast<T>(Next64());
  }
};

const int32_t kCoords[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
const long kLongs[] = {LONG_MIN, -0x100000000L, INT_MIN, -1, 0, 1, INT_MAX, 0x100000000L, LONG_MAX};
const long kLows[] = {INT_MIN, -1000, 0}, kHighs[] = {0, 1000, INT_MAX};
const double kInf = std::numeric_limits<double>::infinity();
const double kDoubles[] = {-kInf, -1e300, -2147483648.6,
                           -0.5,  0.5,    2147483647.6,
                           1e300, kInf,   std::numeric_limits<double>::quiet_NaN()};
const short kAngles[] = {SHRT_MIN, -1, 0, 3599, 3600, SHRT_MAX};

bool Between(int64_t v, int64_t a, int64_t b) { return std::min(a, b) <= v && v <= std::max(a, b); }
bool Sorted(const LRECT& r) { return r.x1 <= r.x2 && r.y1 <= r.y2; }
bool Within(const LRECT& r, long lo, long hi) {
  const int32_t l = static_cast<int32_t>(lo), h = static_cast<int32_t>(hi);
  return Between(r.x1, l, h) && Between(r.y1, l, h) && Between(r.x2, l, h) && Between(r.y2, l, h);
}

void RectanglesAndPoints(Bytes& in) {
  const LPNT a{in.Pick(kCoords), in.Pick(kCoords)}, b{in.Pick(kCoords), in.Pick(kCoords)};
  const LPNT c{in.Pick(kCoords), in.Pick(kCoords)}, d{in.Pick(kCoords), in.Pick(kCoords)};
  const long delta = in.Pick(kLongs), lo = in.Pick(kLows), hi = in.Pick(kHighs);
  const LRECT r{a.x, a.y, b.x, b.y}, other{c.x, c.y, d.x, d.y};
  LRECT s = r;
  SortRect(s);
  Check(Sorted(s));
  long w, h;
  GetWidthHeightOfRect(r, w, h);
  LPNT centre, corners[4];
  GetCenterOfRect(r, centre);
  Check(Between(centre.x, r.x1, r.x2) && Between(centre.y, r.y1, r.y2));
  GetCenterOfPoints(c, d, centre);
  Check(Between(centre.x, c.x, d.x) && Between(centre.y, c.y, d.y));
  GetCornersOfRect(r, corners);
  IsClockwiseTriangle(a, b, c);
  DPNT diff;
  SubtractPoints(a, b, diff);
  LRECT o = r;
  OffsetRect(o, delta, ~delta, lo, hi);
  Check(Within(o, lo, hi));
  o = r;
  ExpandRect(o, delta, ~delta, lo, hi);
  Check(Within(o, lo, hi) && Sorted(o));
  ClipToLongRect(r, o, lo, hi);
  Check(Within(o, lo, hi));
  ExpandPointIntoRect(a, o, delta, ~delta, lo, hi);
  Check(Within(o, lo, hi) && Sorted(o));
  LRECT m = r;
  RectsOverlap(m, other);
  RectInRect(m, other);
  MergeRects(m, other);
  IntersectRects(m, other);
  SortRectWithPoints(m, a, b);
  MergeRectWithPoint(m, c);
  LPNT moved[4] = {a, b, c, d};
  OffsetPoints(moved, 4, delta, ~delta, lo, hi);
  bool ok;
  IsClockwiseOrientation(moved, 4, &ok);
  const double v = in.Pick(kDoubles);
  DoubleToLongRect(DRECT{v, v, v, v}, o, lo, hi);
  const DPNT p{v, -v};
  LPNT l;
  DoubleToLongPoints(&p, &l, 1, -10, 10);
  Check(v != v || (Between(l.x, -10, 10) && Between(l.y, -10, 10)));
}

void ArcsAndRegions(Bytes& in) {
  const LPNT a{in.Pick(kCoords), in.Pick(kCoords)}, b{in.Pick(kCoords), in.Pick(kCoords)};
  const LPNT c{in.Pick(kCoords), in.Pick(kCoords)}, d{in.Pick(kCoords), in.Pick(kCoords)};
  LRECT r{a.x, a.y, b.x, b.y};
  short a1, a2;
  CalcArcAngles(r, c, d, &a1, &a2, false);
  Check(a2 > a1);
  LPNT p;
  LogCalcArcPoints(r, c.x, d.y, &p, &p);
  CreateCircleMBR(r, a, b, 1, c.x == 0 ? 2 : 1e-300);
  Check(Within(r, -1000000000, 1000000000) && Sorted(r));
  a1 = in.Pick(kAngles);
  a2 = in.Pick(kAngles);
  const uint8_t flips = in.Next8();
  FlipArcAngles(&a1, &a2, flips & 1, flips & 2);
  Check(a1 >= 0 && a1 < 3600 && a2 > a1 && a2 <= a1 + 3600);
  RoundToPatternSize(in.Pick(kLongs), flips & 4, in.Pick(kLongs));
  const LRECT first{a.x, a.y, b.x, b.y}, second{c.x, c.y, d.x, d.y};
  HRGN g = rgn_unionrect(rgn_create(&first), &second);
  HRGN common = rgn_intersect(g, g);
  LRECT box;
  rgn_bounding_rect(common, &box);
  Check(rgn_equal(g, common));
  rgn_destroy(g);
  rgn_destroy(common);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes in{data, size};
  RectanglesAndPoints(in);
  ArcsAndRegions(in);
  return 0;
}
