// The integer rectangle, point, arc and region functions at the extremes of
// 32-bit coordinates and `long` arguments. Input: bytes that pick each value
// from the limits and their neighbours (or take it raw). Under
// UndefinedBehaviorSanitizer no signed overflow or bad conversion may occur;
// rectangles, points, conversions, flips and pattern sizes must equal 64-bit
// references written from their rules, the double forms included; arc
// angles and points, circles and rotations must equal long-double ones
// (either rounding where a value lies within 1e-9 of a half). The clip
// fuzzer walks the same extremes through the line functions.
#include "qxutil/geometry.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

namespace {

// CHECK - aborts, naming the line, unless `ok` holds.
#define CHECK(ok)                                                                                  \
  do {                                                                                             \
    if (!(ok)) {                                                                                   \
      std::fprintf(stderr, "geometry_extremes_fuzz.cpp:%d: check failed\n", __LINE__);             \
      std::abort();                                                                                \
    }                                                                                              \
  } while (0)

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

const int32_t kCoords[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 2, 3, INT_MAX - 1, INT_MAX};
const long kLongs[] = {LONG_MIN, -0x100000000L, INT_MIN, -1, 0, 1, INT_MAX, 0x100000000L, LONG_MAX};
const long kLows[] = {INT_MIN, -1000, 0, 7}, kHighs[] = {-7, 0, 1000, INT_MAX};
const double kInf = std::numeric_limits<double>::infinity(), kNaN = std::nan("");
const double kDoubles[] = {-kInf, -1e300, -2147483648.6, -2.5,  -0.5, 0.5,          2.4999,
                           2.5,   6.6,    999.5,         1e300, kInf, 2147483647.6, kNaN};
const short kAngles[] = {SHRT_MIN, -3601, -1, 0, 900, 1800, 2700, 3599, 3600, 7200, SHRT_MAX};
const double kScales[] = {1, 2, 0.5, 3, -1, 1e-300, 0};
const double kSmall[] = {-3, -1, -0.5, 0, 0.5, 1, 2, 5, 1e6};
const double kSteps[] = {1, 0.5, 1e-7, 3e-7}, kOffsets[] = {-2, -1, 0, 1, 2, 3};
const long double kPi = 3.14159265358979323846264338327950288L;
const long kSizes[] = {-8, -5, -2, 0, 2, 5, 7, 8, 70000, 0x18000, INT_MAX, INT_MIN, 0x100000007L};

// ---- Exact references in 64-bit integers, written from the rules -------------

int64_t Low(long v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }
int64_t Wrap(int64_t v) {
  return ((v + 0x80000000LL) % 0x100000000LL + 0x100000000LL) % 0x100000000LL - 0x80000000LL;
}
// Coord - v saturated at the 32-bit limits, then below lo is lo, else above hi is hi.
int32_t Coord(int64_t v, long lo, long hi) {
  v = std::clamp<int64_t>(v, INT_MIN, INT_MAX);
  return static_cast<int32_t>(v < Low(lo) ? Low(lo) : v > Low(hi) ? Low(hi) : v);
}
int32_t Centre(int64_t a, int64_t b) {
  const int64_t s = std::clamp<int64_t>(a + b, INT_MIN, INT_MAX);
  return static_cast<int32_t>(s != INT_MIN && s != INT_MAX ? s / 2 : a + (b - a) / 2);
}
// ToLong - v + 0.5 (v - 0.5 from zero down) truncated; -2147483648 for a
// NaN or beyond the 32-bit range.
int32_t ToLong(double v) {
  const double t = v > 0 ? std::trunc(v + 0.5) : std::trunc(v - 0.5);
  return t >= INT_MIN && t <= INT_MAX ? static_cast<int32_t>(t) : INT_MIN;
}
int32_t ClampRound(double v, long lo, long hi) {
  return ToLong(v < Low(lo) ? Low(lo) : v > Low(hi) ? Low(hi) : v);
}
template <class R> R SortedOf(R r) {
  return {std::min(r.x1, r.x2), std::min(r.y1, r.y2), std::max(r.x1, r.x2), std::max(r.y1, r.y2)};
}
template <class V> V Below(V p, V lo) { return p < lo ? p : lo; } // a NaN p keeps lo
template <class V> V Above(V p, V hi) { return hi < p ? p : hi; }
template <class R, class P> R WithPoint(R r, P p) {
  return {Below(p.x, r.x1), Below(p.y, r.y1), Above(p.x, r.x2), Above(p.y, r.y2)};
}
template <class V> V Into(V v, V lo, V hi) { return v < lo ? lo : v > hi ? hi : v; }
bool Same(const LPNT& a, const LPNT& b) { return a.x == b.x && a.y == b.y; }
bool Same(const DPNT& a, const DPNT& b) { return a.x == b.x && a.y == b.y; }
bool Same(const LRECT& a, const LRECT& b) {
  return a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2;
}
bool Same(const DRECT& a, const DRECT& b) {
  return a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2;
}
DPNT D(const LPNT& p) { return {1.0 * p.x, 1.0 * p.y}; }
DRECT D(const LRECT& r) { return {1.0 * r.x1, 1.0 * r.y1, 1.0 * r.x2, 1.0 * r.y2}; }
bool Between(int64_t v, int64_t a, int64_t b) { return std::min(a, b) <= v && v <= std::max(a, b); }
bool Within(const LRECT& r, long lo, long hi) {
  return Between(r.x1, lo, hi) && Between(r.y1, lo, hi) && Between(r.x2, lo, hi) &&
         Between(r.y2, lo, hi) && r.x1 <= r.x2 && r.y1 <= r.y2;
}
// Flipped - FlipArcAngles' rule: mirrored as 16-bit angles, exchanged after
// one flip, a1 brought into [0, 3600), a2 below 3600 and then above a1.
std::pair<short, short> Flipped(int16_t a1, int16_t a2, bool flipX, bool flipY) {
  if (flipX)
    a1 = static_cast<int16_t>(1800 - a1), a2 = static_cast<int16_t>(1800 - a2);
  if (flipY)
    a1 = static_cast<int16_t>(3600 - a1), a2 = static_cast<int16_t>(3600 - a2);
  if (flipX != flipY)
    std::swap(a1, a2);
  const int start = (a1 % 3600 + 3600) % 3600;
  int end = a2 >= 3600 ? a2 % 3600 : a2;
  if (end <= start)
    end += 3600 * ((start - end) / 3600 + 1);
  return {static_cast<short>(start), static_cast<short>(end)};
}
// Rounded - RoundToPatternSize's rule on 32-bit values: h is the pattern's
// low 16 bits, signed, taken after negating it when v < 1.
int64_t Rounded(long v, bool allowZero, long pattern) {
  const int64_t value = Low(v), step = Low(pattern);
  if (step == 0)
    return value;
  const int64_t bits = (value < 1 ? -step : step) & 0xFFFF,
                h = bits < 0x8000 ? bits : bits - 0x10000;
  const int64_t result = (value + h / 2) / step * step;
  return result == 0 && !allowZero && value != 0 ? h
                                                 : std::clamp<int64_t>(result, INT_MIN, INT_MAX);
}
bool Clockwise(double ax, double ay, double bx, double by, double cx, double cy) {
  return ax * (by - cy) + bx * (cy - ay) + cx * (ay - by) <= 0;
}

// The integer form against the reference, then the double form on the same
// values where its rule is the same.
void RectanglesAndPoints(Bytes& in) {
  const LPNT a{in.Pick(kCoords), in.Pick(kCoords)}, b{in.Pick(kCoords), in.Pick(kCoords)};
  const LPNT c{in.Pick(kCoords), in.Pick(kCoords)}, d{in.Pick(kCoords), in.Pick(kCoords)};
  const long dx = in.Pick(kLongs), dy = in.Pick(kLongs), lo = in.Pick(kLows), hi = in.Pick(kHighs);
  const LRECT r{a.x, a.y, b.x, b.y}, other{c.x, c.y, d.x, d.y};
  LRECT s;
  SetRect(s, dx, dy, lo, hi);
  CHECK(Same(s, LRECT{int32_t(Low(dx)), int32_t(Low(dy)), int32_t(Low(lo)), int32_t(Low(hi))}));
  s = r;
  SortRect(s);
  CHECK(Same(s, SortedOf(r)));
  SortRectWithPoints(s, c, d);
  CHECK(Same(s, SortedOf(other)));
  s = r;
  MergeRects(s, other);
  const LRECT merged{std::min(a.x, c.x), std::min(a.y, c.y), std::max(b.x, d.x),
                     std::max(b.y, d.y)};
  CHECK(Same(s, merged));
  s = r;
  IntersectRects(s, other);
  const LRECT common{std::max(a.x, c.x), std::max(a.y, c.y), std::min(b.x, d.x),
                     std::min(b.y, d.y)};
  CHECK(Same(s, common));
  s = r;
  MergeRectWithPoint(s, c);
  CHECK(Same(s, WithPoint(r, c)));
  const LPNT pts[4] = {a, b, c, d};
  const uint8_t pick = in.Next8();
  const int n = pick % 6 - 1; // -1 to 4 points; with a null pointer now and then
  const bool none = pick & 0x80, noCount = pick & 0x40;
  GetRectFromPoints(s, none ? nullptr : pts, n);
  LRECT want{INT_MAX, INT_MAX, INT_MIN, INT_MIN};
  for (int i = 0; !none && i < n; ++i)
    want = WithPoint(want, pts[i]);
  CHECK(Same(s, want));
  InitRectForMerging(s);
  CHECK(Same(s, LRECT{INT_MAX, INT_MAX, INT_MIN, INT_MIN}));
  const bool tests[] = {r.x1 >= r.x2 || r.y1 >= r.y2, !r.x1 && !r.y1 && !r.x2 && !r.y2,
                        !(r.x1 > d.x || r.x2 < c.x || r.y1 > d.y || r.y2 < c.y),
                        r.x1 >= c.x && r.x2 <= d.x && r.y1 >= c.y && r.y2 <= d.y,
                        r.x1 <= c.x && c.x <= r.x2 && r.y1 <= c.y && c.y <= r.y2};
  CHECK(RectIsEmpty(r) == tests[0] && RectIsEmpty(D(r)) == tests[0]);
  CHECK(RectIsZero(r) == tests[1] && RectIsZero(D(r)) == tests[1]);
  CHECK(RectsOverlap(r, other) == tests[2] && RectsOverlap(D(r), D(other)) == tests[2]);
  CHECK(RectInRect(r, other) == tests[3] && RectInRect(D(r), D(other)) == tests[3]);
  CHECK(PointInRect(c, r) == tests[4] && PointInRect(D(c), D(r)) == tests[4]);
  LPNT p = c;
  ClipPointToRect(p, r);
  const LPNT clipped{Into(c.x, r.x1, r.x2), Into(c.y, r.y1, r.y2)};
  CHECK(Same(p, clipped));
  long w, h;
  GetWidthHeightOfRect(r, w, h);
  CHECK(w == Wrap(int64_t{b.x} - a.x) && h == Wrap(int64_t{b.y} - a.y));
  GetCenterOfRect(r, p);
  CHECK(Same(p, LPNT{Centre(a.x, b.x), Centre(a.y, b.y)}));
  GetCenterOfPoints(c, d, p);
  CHECK(Same(p, LPNT{Centre(c.x, d.x), Centre(c.y, d.y)}));
  LPNT corners[5];
  corners[4] = d;
  GetCornersOfRect(r, corners);
  CHECK(Same(corners[0], a) && Same(corners[1], LPNT{a.x, b.y}) && Same(corners[2], b) &&
        Same(corners[3], LPNT{b.x, a.y}) && Same(corners[4], d));
  DPNT diff;
  SubtractPoints(a, b, diff);
  CHECK(diff.x == Wrap(int64_t{a.x} - b.x) && diff.y == Wrap(int64_t{a.y} - b.y));
  const bool cw = Clockwise(a.x, a.y, b.x, b.y, c.x, c.y);
  CHECK(IsClockwiseTriangle(a, b, c) == cw && IsClockwiseTriangle(D(a), D(b), D(c)) == cw);
  const int64_t ddx = Low(dx), ddy = Low(dy);
  s = r;
  OffsetRect(s, dx, dy, lo, hi);
  const LRECT moved{Coord(a.x + ddx, lo, hi), Coord(a.y + ddy, lo, hi), Coord(b.x + ddx, lo, hi),
                    Coord(b.y + ddy, lo, hi)};
  CHECK(Same(s, moved));
  LPNT two[3] = {a, b, c};
  OffsetPoints(two, 2, dx, dy, lo, hi);
  CHECK(Same(two[0], LPNT{moved.x1, moved.y1}) && Same(two[1], LPNT{moved.x2, moved.y2}) &&
        Same(two[2], c));
  s = r;
  ExpandRect(s, dx, dy, lo, hi);
  CHECK(Same(s, SortedOf(LRECT{Coord(a.x - ddx, lo, hi), Coord(a.y - ddy, lo, hi),
                               Coord(b.x + ddx, lo, hi), Coord(b.y + ddy, lo, hi)})));
  ExpandPointIntoRect(c, s, dx, dy, lo, hi);
  CHECK(Same(s, SortedOf(LRECT{Coord(c.x - ddx, lo, hi), Coord(c.y - ddy, lo, hi),
                               Coord(c.x + ddx, lo, hi), Coord(c.y + ddy, lo, hi)})));
  ClipToLongRect(r, s, lo, hi);
  CHECK(Same(
      s, LRECT{Coord(a.x, lo, hi), Coord(a.y, lo, hi), Coord(b.x, lo, hi), Coord(b.y, lo, hi)}));
  int count = -2;
  LPNT out[5] = {a, a, a, a, a};
  ClipToLongPoints(pts, out, n, noCount ? nullptr : &count, lo, hi);
  CHECK(count == (noCount ? -2 : n));
  for (int i = 0; i < 5; ++i)
    CHECK(Same(out[i], i < n ? LPNT{Coord(pts[i].x, lo, hi), Coord(pts[i].y, lo, hi)} : a));
  LPNT order[4] = {a, b, c, d};
  ReverseNodes(order, n);
  for (int i = 0; i < 4; ++i)
    CHECK(Same(order[i], i < n ? pts[n - 1 - i] : pts[i]));

  const double v = in.Pick(kDoubles), u = in.Pick(kDoubles);
  DoubleToLongRect(DRECT{v, u, -v, -u}, s, lo, hi);
  CHECK(Same(s, LRECT{ClampRound(v, lo, hi), ClampRound(u, lo, hi), ClampRound(-v, lo, hi),
                      ClampRound(-u, lo, hi)}));
  const DPNT dp[2] = {{v, u}, {u, v}};
  const LPNT second = out[1];
  DoubleToLongPoints(dp, out, 1, lo, hi);
  CHECK(Same(out[0], LPNT{s.x1, s.y1}) && Same(out[1], second));
  DRECT e;
  LongToDoubleRect(r, e);
  CHECK(Same(e, DRECT{1.0 * a.x, 1.0 * a.y, 1.0 * b.x, 1.0 * b.y}));
  DPNT dpts[3] = {{7.5, 7.5}, {7.5, 7.5}, {0.5, -0.5}};
  LongToDoublePoints(pts, dpts, 2);
  CHECK(Same(dpts[0], D(a)) && Same(dpts[1], D(b)) && Same(dpts[2], DPNT{0.5, -0.5}));
  ReverseNodes(dpts, 3);
  CHECK(Same(dpts[0], DPNT{0.5, -0.5}) && Same(dpts[1], D(b)) && Same(dpts[2], D(a)));

  // The double forms, on the same values and on v, u.
  SetRect(e, v, u, 1, 2);
  CHECK(Same(e, DRECT{v, u, 1, 2}) || v != v || u != u);
  e = D(r);
  SortRect(e);
  CHECK(Same(e, D(SortedOf(r))));
  SortRectWithPoints(e, D(c), D(d));
  CHECK(Same(e, D(SortedOf(other))));
  e = D(r);
  MergeRects(e, D(other));
  CHECK(Same(e, D(merged)));
  e = D(r);
  IntersectRects(e, D(other));
  CHECK(Same(e, D(common)));
  e = D(r);
  MergeRectWithPoint(e, DPNT{v, u}); // a NaN coordinate changes nothing
  CHECK(Same(e, WithPoint(D(r), DPNT{v, u})));
  InitRectForMerging(e);
  CHECK(Same(e, DRECT{DBL_MAX, DBL_MAX, -DBL_MAX, -DBL_MAX}));
  DPNT q = D(c);
  ClipPointToRect(q, D(r));
  CHECK(Same(q, D(clipped)));
  double dw, dh;
  GetWidthHeightOfRect(D(r), dw, dh);
  CHECK(dw == 1.0 * b.x - a.x && dh == 1.0 * b.y - a.y);
  GetCenterOfRect(D(r), q);
  CHECK(q.x == (int64_t{a.x} + b.x) / 2.0 && q.y == (int64_t{a.y} + b.y) / 2.0);
  GetCenterOfPoints(D(c), D(d), q);
  CHECK(q.x == (int64_t{c.x} + d.x) / 2.0 && q.y == (int64_t{c.y} + d.y) / 2.0);
  DPNT dcorners[4];
  GetCornersOfRect(D(r), dcorners);
  for (int i = 0; i < 4; ++i)
    CHECK(Same(dcorners[i], D(corners[i])));
  SubtractPoints(D(a), D(b), q);
  CHECK(q.x == 1.0 * a.x - b.x && q.y == 1.0 * a.y - b.y);
  CHECK(DotProductVecs(D(a), D(b)) == 1.0 * a.x * b.x + 1.0 * a.y * b.y);
  const double fx = a.x / 4.0, fy = b.y / 8.0; // finite, so the sums are exact or compare
  e = D(r);
  OffsetRect(e, fx, fy);
  CHECK(Same(e, DRECT{a.x + fx, a.y + fy, b.x + fx, b.y + fy}));
  DPNT dmoved[2] = {D(a), D(b)};
  OffsetPoints(dmoved, 1, fx, fy);
  CHECK(Same(dmoved[0], DPNT{a.x + fx, a.y + fy}) && Same(dmoved[1], D(b)));
  e = D(r);
  ExpandRect(e, fx, fy);
  CHECK(Same(e, SortedOf(DRECT{a.x - fx, a.y - fy, b.x + fx, b.y + fy})));
  ExpandPointIntoRect(D(c), e, fx, fy);
  CHECK(Same(e, SortedOf(DRECT{c.x - fx, c.y - fy, c.x + fx, c.y + fy})));
  CHECK(CrossProductVecs(D(a), D(b)) == 1.0 * a.x * b.y - 1.0 * a.y * b.x);
  CHECK(NormL1Vec(DPNT{fx, -fy}) == std::fabs(fx) + std::fabs(fy));
  CHECK(!IsClockwiseTriangle(DPNT{kNaN, 0}, D(b), D(c)));

  // IsClockwiseOrientation by the sign of the exact shoelace sum.
  __int128 area = 0;
  const int ring = std::clamp(n, 0, 4);
  for (int i = 0; i < ring; ++i) {
    const LPNT& from = pts[i];
    const LPNT& to = pts[(i + 1) % ring];
    area += __int128{from.x} * to.y - __int128{to.x} * from.y;
  }
  bool ok = none;
  const bool clockwise = IsClockwiseOrientation(none ? nullptr : pts, n, &ok);
  CHECK(ok == (!none && n >= 3 && area != 0) && clockwise == (ok && area < 0));
}

// Rounds - whether `ok` accepts DoubleToLong of v (-2147483648 beyond the
// 32-bit range or for a NaN), or either neighbour where v lies so near a
// half that the library's doubles may round it the other way.
template <class F> bool Rounds(long double v, F&& ok) {
  auto take = [&](long double x) { return ok(x < INT_MIN || x > INT_MAX ? INT_MIN : int64_t(x)); };
  if (v != v)
    return ok(INT_MIN);
  const bool nearHalf =
      std::fabs(std::fabs(v - std::trunc(v)) - 0.5L) <= 1e-9L * (1 + std::fabs(v));
  return take(v > 0 ? std::floor(v + 0.5L) : std::ceil(v - 0.5L)) ||
         (nearHalf && (take(std::floor(v)) || take(std::ceil(v))));
}
// Direction - the angle of (dx, dy) in tenths of a degree, before rounding.
long double Direction(double dx, double dy) {
  if (dx == 0)
    return dy > 0 ? 900 : 2700;
  if (dy == 0)
    return dx > 0 ? 0 : 1800;
  const long double t = std::atan2(static_cast<long double>(dy), dx) * 1800 / kPi;
  return t < 0 ? t + 3600 : t;
}
short Raised(int a2, int a1) {
  return static_cast<short>(a2 > a1 ? a2 : a2 + 3600 * ((a1 - a2) / 3600 + 1));
}
// AngleIs - `angle`, raised above `above` (when given), is Direction(dx, dy) rounded.
bool AngleIs(short angle, double dx, double dy, const short* above = nullptr) {
  return Rounds(Direction(dx, dy), [&](int64_t t) {
    return angle == (above ? Raised(static_cast<short>(t), *above) : static_cast<short>(t));
  });
}
// Near - a and b agree to within 1e-9 of their size or of `scale`.
bool Near(long double a, long double b, long double scale = 0) {
  return std::fabs(a - b) <= 1e-9L * (1 + std::fabs(a) + std::fabs(b) + scale);
}
// Rotated - p turned by `tenths` about (x, y): exact for quarter turns.
DPNT Rotated(DPNT p, short tenths, double x, double y) {
  const int a = (tenths % 3600 + 3600) % 3600;
  const double dx = p.x - x, dy = p.y - y;
  switch (a) {
  case 0:
    return {x + dx, y + dy};
  case 900:
    return {x - dy, y + dx};
  case 1800:
    return {x - dx, y - dy};
  case 2700:
    return {x + dy, y - dx};
  }
  const long double t = a * kPi / 1800;
  return {static_cast<double>(x + dx * std::cos(t) - dy * std::sin(t)),
          static_cast<double>(y + dx * std::sin(t) + dy * std::cos(t))};
}

void ArcsAndRotations(Bytes& in) {
  const LPNT a{in.Pick(kCoords), in.Pick(kCoords)}, b{in.Pick(kCoords), in.Pick(kCoords)};
  const LPNT c{in.Pick(kCoords), in.Pick(kCoords)}, d{in.Pick(kCoords), in.Pick(kCoords)};
  const LRECT r{a.x, a.y, b.x, b.y};
  const bool swap = in.Next8() & 1;
  const LPNT centre{Centre(a.x, b.x), Centre(a.y, b.y)};
  const double rx = (int64_t{b.x} - a.x) * 0.5, ry = (int64_t{b.y} - a.y) * 0.5;
  const double dx1 = ry * (int64_t{c.x} - centre.x), dy1 = rx * (int64_t{c.y} - centre.y);
  const double dx2 = ry * (int64_t{d.x} - centre.x), dy2 = rx * (int64_t{d.y} - centre.y);
  short a1 = -1, a2 = -1;
  CalcArcAngles(r, c, d, &a1, &a2, swap);
  CHECK(AngleIs(a1, swap ? dx2 : dx1, swap ? dy2 : dy1) &&
        AngleIs(a2, swap ? dx1 : dx2, swap ? dy1 : dy2, &a1));
  const int angles[2] = {in.Pick(kCoords), in.Pick(kAngles)};
  LPNT p[2] = {d, d};
  LogCalcArcPoints(r, angles[0], angles[1], &p[0], &p[1]);
  for (int i = 0; i < 2; ++i) {
    const double radians = angles[i] / 10.0 * 3.141592653589793 / 180;
    CHECK(Rounds(std::cos(static_cast<long double>(radians)) * rx,
                 [&](int64_t o) { return p[i].x == Coord(centre.x + o, INT_MIN, INT_MAX); }) &&
          Rounds(std::sin(static_cast<long double>(radians)) * ry,
                 [&](int64_t o) { return p[i].y == Coord(centre.y + o, INT_MIN, INT_MAX); }));
  }
  const double sx = in.Pick(kScales), sy = in.Pick(kScales), ratio = sy / sx;
  const double ex = static_cast<double>(int64_t{c.x} - d.x),
               ey = static_cast<double>(int64_t{c.y} - d.y);
  const double radius = std::sqrt((ey / ratio) * (ey / ratio) + ex * ex);
  LRECT box;
  CreateCircleMBR(box, c, d, sx, sy);
  const int64_t rx2 = ToLong(radius), ry2 = ToLong(radius * ratio);
  const long kLimit = 1000000000;
  CHECK(Same(
      box, SortedOf(LRECT{Coord(c.x - rx2, -kLimit, kLimit), Coord(c.y - ry2, -kLimit, kLimit),
                          Coord(c.x + rx2, -kLimit, kLimit), Coord(c.y + ry2, -kLimit, kLimit)})));

  // Circles through three points, and rotations, on small doubles.
  // p2 and p3 lie a few steps of `e` from p1: tiny steps reach the collinearity threshold.
  const double e = in.Pick(kSteps);
  const DPNT p1{in.Pick(kSmall), in.Pick(kSmall)};
  const DPNT p2{p1.x + e * in.Pick(kOffsets), p1.y + e * in.Pick(kOffsets)};
  const DPNT p3{p1.x + e * in.Pick(kOffsets), p1.y + e * in.Pick(kOffsets)};
  const DPNT u{p3.x - p1.x, p3.y - p1.y}, v{p2.x - p1.x, p2.y - p1.y};
  const double k = v.y * u.x - v.x * u.y;
  DRECT mbr{9, 9, 9, 9};
  short c1 = -1, c3 = -1;
  const bool made = CirclePointsToMBRAngles(p1, p2, p3, mbr, c1, c3);
  if (std::fabs(k) < 1e-13) {
    CHECK(!made && Same(mbr, DRECT{9, 9, 9, 9}) && c1 == -1 && c3 == -1);
  } else {
    const double uu = u.x * u.x + u.y * u.y, vv = v.x * v.x + v.y * v.y;
    const DPNT m{p1.x + (v.y * uu - u.y * vv) * 0.5 / k, p1.y + (u.x * vv - v.x * uu) * 0.5 / k};
    const long double radius = std::sqrt(static_cast<long double>(m.x - p1.x) * (m.x - p1.x) +
                                         static_cast<long double>(m.y - p1.y) * (m.y - p1.y));
    const long double scale = std::fabs(m.x) + std::fabs(m.y) + radius;
    CHECK(made && Near(mbr.x1, m.x - radius, scale) && Near(mbr.y1, m.y - radius, scale) &&
          Near(mbr.x2, m.x + radius, scale) && Near(mbr.y2, m.y + radius, scale));
    CHECK(AngleIs(c1, p1.x - m.x, p1.y - m.y) && AngleIs(c3, p3.x - m.x, p3.y - m.y));
  }
  DRECT box2{p1.x, p1.y, p2.x, p2.y};
  const short turn = in.Pick(kAngles);
  DPNT corners[4];
  GetRotatedMBRPnts(&box2, turn, p3.x, p3.y, corners);
  const DPNT plain[4] = {{p1.x, p1.y}, {p1.x, p2.y}, {p2.x, p2.y}, {p2.x, p1.y}};
  DRECT bounds{DBL_MAX, DBL_MAX, -DBL_MAX, -DBL_MAX};
  for (int i = 0; i < 4; ++i) {
    const DPNT want = Rotated(plain[i], turn, p3.x, p3.y);
    const double scale = std::fabs(plain[i].x) + std::fabs(plain[i].y) + std::fabs(p3.x) +
                         std::fabs(p3.y); // of the terms, which may cancel
    CHECK(turn % 900 ? Near(corners[i].x, want.x, scale) && Near(corners[i].y, want.y, scale)
                     : Same(corners[i], want));
    bounds = WithPoint(bounds, corners[i]);
  }
  RotateTextMBR(&box2, turn, p3.x, p3.y);
  CHECK(Same(box2, bounds));
}

void ArcsAndRegions(Bytes& in) {
  const LPNT a{in.Pick(kCoords), in.Pick(kCoords)}, b{in.Pick(kCoords), in.Pick(kCoords)};
  const LPNT c{in.Pick(kCoords), in.Pick(kCoords)}, d{in.Pick(kCoords), in.Pick(kCoords)};
  LRECT r{a.x, a.y, b.x, b.y};
  short a1, a2;
  CalcArcAngles(r, c, d, &a1, &a2, false);
  CHECK(a2 > a1);
  LPNT p;
  LogCalcArcPoints(r, c.x, d.y, &p, &p);
  CreateCircleMBR(r, a, b, 1, c.x == 0 ? 2 : 1e-300);
  CHECK(Within(r, -1000000000, 1000000000));
  a1 = in.Pick(kAngles);
  a2 = in.Pick(kAngles);
  const uint8_t flips = in.Next8();
  const std::pair<short, short> flipped = Flipped(a1, a2, flips & 1, flips & 2);
  FlipArcAngles(&a1, &a2, flips & 1, flips & 2);
  CHECK(a1 == flipped.first && a2 == flipped.second);
  const long v = in.Pick(kSizes), pattern = in.Pick(kSizes);
  CHECK(RoundToPatternSize(v, flips & 4, pattern) == Rounded(v, flips & 4, pattern));
  const LRECT first{a.x, a.y, b.x, b.y}, second{c.x, c.y, d.x, d.y};
  HRGN g = rgn_unionrect(rgn_create(&first), &second);
  HRGN common = rgn_intersect(g, g);
  LRECT box;
  rgn_bounding_rect(common, &box);
  CHECK(rgn_equal(g, common));
  // The bounding box of the union: the sorted rectangles merged, the empty left out.
  const LRECT one = SortedOf(first), two = SortedOf(second);
  const bool oneEmpty = one.x1 == one.x2 || one.y1 == one.y2;
  const bool twoEmpty = two.x1 == two.x2 || two.y1 == two.y2;
  const LRECT both{std::min(one.x1, two.x1), std::min(one.y1, two.y1), std::max(one.x2, two.x2),
                   std::max(one.y2, two.y2)};
  CHECK(Same(box, oneEmpty && twoEmpty ? LRECT{0, 0, 0, 0}
                  : oneEmpty           ? two
                  : twoEmpty           ? one
                                       : both));
  rgn_destroy(g);
  rgn_destroy(common);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes in{data, size};
  RectanglesAndPoints(in);
  ArcsAndRegions(in);
  ArcsAndRotations(in);
  return 0;
}
