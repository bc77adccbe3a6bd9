//===- geometry/intersection.cpp - Where two segments meet ----------------===//
//
// LineIntersection decides exactly: orientations and the crossing point are
// computed in 128-bit integers (coordinate differences take 33 bits, their
// products 66, the crossing's numerators under 100), so no input overflows
// and segments that only touch are never missed. The answer is the shared
// point nearest a, rounded half away from zero.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

#include <cmath>

using qx::geometry::int128;
using qx::geometry::RoundQuotient;
using qx::geometry::Sign;

namespace {

// Orientation - the sign of (b - a) x (p - a): which side of ab p lies on.
int Orientation(const LPNT& a, const LPNT& b, const LPNT& p) {
  int128 ux = int64_t{b.x} - a.x, uy = int64_t{b.y} - a.y;
  int128 vx = int64_t{p.x} - a.x, vy = int64_t{p.y} - a.y;
  return Sign(ux * vy - uy * vx);
}

bool Same(const LPNT& a, const LPNT& b) { return a.x == b.x && a.y == b.y; }

// Along - how far p lies along ab, in units of |ab|^2 (p on ab's line).
int128 Along(const LPNT& a, const LPNT& b, const LPNT& p) {
  return int128{int64_t{p.x} - a.x} * (int64_t{b.x} - a.x) +
         int128{int64_t{p.y} - a.y} * (int64_t{b.y} - a.y);
}

// WithinBox - p (on the line of ab) lies on the segment ab.
bool WithinBox(const LPNT& a, const LPNT& b, const LPNT& p) {
  return std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= p.y &&
         p.y <= std::max(a.y, b.y);
}

bool OnSegment(const LPNT& a, const LPNT& b, const LPNT& p) {
  return Orientation(a, b, p) == 0 && WithinBox(a, b, p);
}

// CollinearOverlap - ab (not a point) and cd on one line: the overlap's
// end nearest a, if they overlap.
bool CollinearOverlap(const LPNT& a, const LPNT& b, const LPNT& c, const LPNT& d, LPNT& x) {
  const int128 length = Along(a, b, b);
  int128 tc = Along(a, b, c), td = Along(a, b, d);
  const LPNT* nearer = tc <= td ? &c : &d;
  int128 low = tc <= td ? tc : td, high = tc <= td ? td : tc;
  if (high < 0 || low > length)
    return false;
  x = low <= 0 ? a : *nearer;
  return true;
}

// Crossing - the crossing point of the lines ab and cd (not parallel),
// rounded half away from zero.
LPNT Crossing(const LPNT& a, const LPNT& b, const LPNT& c, const LPNT& d) {
  const int128 ux = int64_t{b.x} - a.x, uy = int64_t{b.y} - a.y;
  const int128 vx = int64_t{d.x} - c.x, vy = int64_t{d.y} - c.y;
  const int128 wx = int64_t{c.x} - a.x, wy = int64_t{c.y} - a.y;
  const int128 den = ux * vy - uy * vx;
  const int128 num = wx * vy - wy * vx; // t = num / den along ab
  return {static_cast<int32_t>(RoundQuotient(a.x * den + ux * num, den)),
          static_cast<int32_t>(RoundQuotient(a.y * den + uy * num, den))};
}

template <class T> bool AllBelow(T a, T b, T c, T d) { return a < c && a < d && b < c && b < d; }

} // namespace

bool LineIntersection(const LPNT& a, const LPNT& b, const LPNT& c, const LPNT& d, LPNT& x) {
  if (AllBelow(a.x, b.x, c.x, d.x) || AllBelow(c.x, d.x, a.x, b.x) ||
      AllBelow(a.y, b.y, c.y, d.y) || AllBelow(c.y, d.y, a.y, b.y))
    return false;
  if (Same(a, c) || Same(a, d)) {
    x = a;
    return true;
  }
  if (Same(a, b)) { // ab is a point
    if (!OnSegment(c, d, a))
      return false;
    x = a;
    return true;
  }
  if (Same(c, d)) { // cd is a point
    if (!OnSegment(a, b, c))
      return false;
    x = c;
    return true;
  }
  const int o1 = Orientation(a, b, c), o2 = Orientation(a, b, d);
  if (o1 == 0 && o2 == 0)
    return CollinearOverlap(a, b, c, d, x);
  const int o3 = Orientation(c, d, a), o4 = Orientation(c, d, b);
  if (o1 * o2 > 0 || o3 * o4 > 0)
    return false;
  x = Crossing(a, b, c, d);
  return true;
}

bool CrossDLines(const DPNT& a, const DPNT& b, const DPNT& c, const DPNT& d, DPNT& x) {
  const DPNT u{b.x - a.x, b.y - a.y}, v{d.x - c.x, d.y - c.y}, w{c.x - a.x, c.y - a.y};
  const double den = v.y * u.x - v.x * u.y;
  const double scale = std::fabs(u.x) + std::fabs(u.y);
  if (std::fabs(den) <= scale * scale * 1e-10)
    return false;
  const double t = (v.y * w.x - w.y * v.x) / den;
  const double s = (w.x * u.y - w.y * u.x) / den;
  if (!(t >= 0 && t <= 1 && s >= 0 && s <= 1))
    return false;
  x = {a.x + t * u.x, a.y + t * u.y};
  return true;
}
