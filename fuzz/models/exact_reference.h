// Exact references for the clipping and intersection functions, written
// with rational numbers in 128-bit integers and no floating point, for the
// clip fuzzer:
//
//  * ReferenceClipLine: Cohen-Sutherland with each quotient exact and
//    rounded half away from zero. It flags a step as ambiguous when the
//    quotient lies so near a half that the doubles of ClipLine may round it
//    the other way; such cases are not compared.
//  * ExactlyMeets: whether a segment meets a rectangle at all (Liang-
//    Barsky on rationals), for the geometric bounds on ClipLine.
//  * ReferenceClipPoly: the clamped path of a polyline, each crossing
//    evaluated as a rational point a + t (b - a).
//  * ReferenceIntersection: Cramer's rule on rationals, and for parallel
//    segments the shared end point nearest a.
#ifndef QXUTIL_FUZZ_MODELS_EXACT_REFERENCE_H
#define QXUTIL_FUZZ_MODELS_EXACT_REFERENCE_H

#include "qxutil/geometry.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace qxtest {

using int128 = __int128;

/// Ratio - n / d with d > 0.
struct Ratio {
  int128 n, d;
  Ratio(int128 num = 0, int128 den = 1) : n(den < 0 ? -num : num), d(den < 0 ? -den : den) {}
  friend bool operator<(const Ratio& a, const Ratio& b) { return a.n * b.d < b.n * a.d; }
  friend bool operator<=(const Ratio& a, const Ratio& b) { return a.n * b.d <= b.n * a.d; }
  friend bool operator==(const Ratio& a, const Ratio& b) { return a.n * b.d == b.n * a.d; }
};

/// RoundHalfAway - the integer nearest q, halves away from zero.
inline int64_t RoundHalfAway(const Ratio& q) {
  int128 m = q.n < 0 ? -q.n : q.n;
  int128 whole = m / q.d, rest = m - whole * q.d;
  if (2 * rest >= q.d)
    ++whole;
  return static_cast<int64_t>(q.n < 0 ? -whole : whole);
}

/// NearHalf - q lies within |q| * 2^-40 (or 2^-40) of a half-integer, where
/// a double evaluation of it may round either way.
inline bool NearHalf(const Ratio& q) {
  int128 m = q.n < 0 ? -q.n : q.n;
  int128 rest = m % q.d;
  int128 gap = 2 * rest - q.d; // distance to the half, times 2d
  if (gap < 0)
    gap = -gap;
  return gap * (int128{1} << 40) < 2 * (m + q.d);
}

// ---- ClipLine ----------------------------------------------------------------

enum class Clip { kVisible, kHidden, kAmbiguous };

struct LineClip {
  Clip verdict;
  LPNT p0, p1;
};

inline LineClip ReferenceClipLine(LPNT p0, LPNT p1, const LRECT& r) {
  if (r.x1 > r.x2 || r.y1 > r.y2)
    return {Clip::kHidden, p0, p1};
  int64_t a[2] = {p0.x, p0.y}, b[2] = {p1.x, p1.y};
  const int64_t low[2] = {r.x1, r.y1}, high[2] = {r.x2, r.y2};
  auto code = [&](const int64_t* p) {
    return (p[0] < low[0] ? 1 : 0) | (p[0] > high[0] ? 2 : 0) | (p[1] < low[1] ? 4 : 0) |
           (p[1] > high[1] ? 8 : 0);
  };
  bool exchanged = false;
  for (int moves = 0; moves < 16; ++moves) {
    int ca = code(a), cb = code(b);
    if ((ca | cb) == 0) {
      if (exchanged)
        std::swap(a, b);
      return {Clip::kVisible,
              {static_cast<int32_t>(a[0]), static_cast<int32_t>(a[1])},
              {static_cast<int32_t>(b[0]), static_cast<int32_t>(b[1])}};
    }
    if (ca & cb)
      return {Clip::kHidden, p0, p1};
    if (ca == 0) {
      std::swap(a, b);
      std::swap(ca, cb);
      exchanged = !exchanged;
    }
    // The first bit in the order 1, 2, 4, 8 names the axis and the edge.
    int bit = ca & -ca;
    int axis = bit <= 2 ? 0 : 1, other = 1 - axis;
    int64_t edge = (bit == 1 || bit == 4) ? low[axis] : high[axis];
    Ratio q(int128{edge - a[axis]} * (b[other] - a[other]), b[axis] - a[axis]);
    if (NearHalf(q))
      return {Clip::kAmbiguous, p0, p1};
    a[other] += RoundHalfAway(q);
    a[axis] = edge;
  }
  return {Clip::kAmbiguous, p0, p1}; // never reached: four moves at most
}

/// ExactlyMeets - the segment ab has a point in r (edges included).
inline bool ExactlyMeets(const LPNT& a, const LPNT& b, const LRECT& r) {
  if (r.x1 > r.x2 || r.y1 > r.y2)
    return false;
  Ratio in(0), out(1);
  const int64_t from[2] = {a.x, a.y}, delta[2] = {int64_t{b.x} - a.x, int64_t{b.y} - a.y};
  const int64_t low[2] = {r.x1, r.y1}, high[2] = {r.x2, r.y2};
  for (int axis = 0; axis < 2; ++axis) {
    if (delta[axis] == 0) {
      if (from[axis] < low[axis] || from[axis] > high[axis])
        return false;
      continue;
    }
    Ratio t1(low[axis] - from[axis], delta[axis]), t2(high[axis] - from[axis], delta[axis]);
    if (t2 < t1)
      std::swap(t1, t2);
    if (in < t1)
      in = t1;
    if (t2 < out)
      out = t2;
  }
  return in <= out;
}

// ---- ClipPoly ----------------------------------------------------------------

struct PolyClip {
  bool visible;
  std::vector<LPNT> points;
};

inline PolyClip ReferenceClipPoly(const std::vector<LPNT>& in, const LRECT& r) {
  PolyClip result{false, {}};
  if (in.empty() || r.x1 > r.x2 || r.y1 > r.y2)
    return result;
  std::vector<LPNT>& out = result.points;
  std::vector<bool> seen; // out[i] is a point of the line inside r
  auto onOneEdgeLine = [&](const LPNT& a, const LPNT& b, const LPNT& c) {
    for (int32_t x : {r.x1, r.x2})
      if (a.x == x && b.x == x && c.x == x)
        return true;
    for (int32_t y : {r.y1, r.y2})
      if (a.y == y && b.y == y && c.y == y)
        return true;
    return false;
  };
  // Emit - the rational point (x, y), clamped and rounded.
  auto emit = [&](const Ratio& x, const Ratio& y) {
    bool inside = Ratio(r.x1) <= x && x <= Ratio(r.x2) && Ratio(r.y1) <= y && y <= Ratio(r.y2);
    auto place = [](const Ratio& v, int32_t lo, int32_t hi) {
      if (v < Ratio(lo))
        return lo;
      if (Ratio(hi) < v)
        return hi;
      return static_cast<int32_t>(RoundHalfAway(v));
    };
    LPNT p{place(x, r.x1, r.x2), place(y, r.y1, r.y2)};
    auto same = [&](const LPNT& q) { return q.x == p.x && q.y == p.y; };
    // Boundary points left between two points of one edge line go first.
    while (!out.empty() && !same(out.back()) && out.size() >= 2 && !seen.back() &&
           onOneEdgeLine(out[out.size() - 2], out.back(), p)) {
      out.pop_back();
      seen.pop_back();
    }
    if (!out.empty() && same(out.back())) {
      seen.back() = seen.back() || inside;
    } else {
      out.push_back(p);
      seen.push_back(inside);
    }
  };
  emit(Ratio(in[0].x), Ratio(in[0].y));
  for (size_t i = 1; i < in.size(); ++i) {
    const LPNT a = in[i - 1], b = in[i];
    const int64_t dx = int64_t{b.x} - a.x, dy = int64_t{b.y} - a.y;
    std::vector<Ratio> ts;
    for (int32_t x : {r.x1, r.x2})
      if (dx != 0)
        ts.emplace_back(int64_t{x} - a.x, dx);
    for (int32_t y : {r.y1, r.y2})
      if (dy != 0)
        ts.emplace_back(int64_t{y} - a.y, dy);
    std::sort(ts.begin(), ts.end());
    for (const Ratio& t : ts) {
      if (t <= Ratio(0) || Ratio(1) <= t)
        continue;
      emit(Ratio(a.x * t.d + dx * t.n, t.d), Ratio(a.y * t.d + dy * t.n, t.d));
    }
    emit(Ratio(b.x), Ratio(b.y));
  }
  auto first = std::find(seen.begin(), seen.end(), true);
  result.visible = first != seen.end();
  if (!result.visible) {
    out.clear();
    return result;
  }
  // An open line loses its boundary runs before the first visible point
  // and after the last.
  if (in.front().x != in.back().x || in.front().y != in.back().y) {
    size_t begin = first - seen.begin();
    size_t end = seen.size() - (std::find(seen.rbegin(), seen.rend(), true) - seen.rbegin());
    out = std::vector<LPNT>(out.begin() + begin, out.begin() + end);
  }
  return result;
}

// ---- LineIntersection --------------------------------------------------------

struct Meeting {
  bool meet;
  LPNT x;
};

inline Meeting ReferenceIntersection(const LPNT& a, const LPNT& b, const LPNT& c, const LPNT& d) {
  const int128 ux = int64_t{b.x} - a.x, uy = int64_t{b.y} - a.y;
  const int128 vx = int64_t{d.x} - c.x, vy = int64_t{d.y} - c.y;
  const int128 wx = int64_t{c.x} - a.x, wy = int64_t{c.y} - a.y;
  const int128 den = ux * vy - uy * vx;
  if (den != 0) {
    Ratio t(wx * vy - wy * vx, den), s(wx * uy - wy * ux, den);
    if (t < Ratio(0) || Ratio(1) < t || s < Ratio(0) || Ratio(1) < s)
      return {false, {}};
    return {true,
            {static_cast<int32_t>(RoundHalfAway(Ratio(a.x * t.d + ux * t.n, t.d))),
             static_cast<int32_t>(RoundHalfAway(Ratio(a.y * t.d + uy * t.n, t.d)))}};
  }
  // Parallel or degenerate: the shared points include an end point of the
  // overlap, which is one of a, b, c, d; take the one nearest a.
  auto on = [](const LPNT& p, const LPNT& q, const LPNT& s) {
    int128 cross = int128{int64_t{q.x} - p.x} * (int64_t{s.y} - p.y) -
                   int128{int64_t{q.y} - p.y} * (int64_t{s.x} - p.x);
    return cross == 0 && std::min(p.x, q.x) <= s.x && s.x <= std::max(p.x, q.x) &&
           std::min(p.y, q.y) <= s.y && s.y <= std::max(p.y, q.y);
  };
  Meeting best{false, {}};
  int128 bestDistance = 0;
  for (const LPNT& p : {a, b, c, d}) {
    if (!on(a, b, p) || !on(c, d, p))
      continue;
    int128 ex = int64_t{p.x} - a.x, ey = int64_t{p.y} - a.y;
    int128 distance = ex * ex + ey * ey;
    if (!best.meet || distance < bestDistance)
      best = {true, p}, bestDistance = distance;
  }
  return best;
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_EXACT_REFERENCE_H
