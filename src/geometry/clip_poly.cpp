//===- geometry/clip_poly.cpp - Clipping a polyline to a rectangle --------===//
//
// The output is the input's path clamped onto the rectangle (Sutherland-
// Hodgman's rule): inside the rectangle the path is the input; each place
// where a segment meets one of the four edge lines adds that crossing,
// computed exactly and rounded half away from zero, then clamped; a part
// outside the rectangle thus becomes its path along the boundary, round the
// corners it passes. Consecutive repeats are dropped, and a boundary point
// that came from outside is dropped when the points on either side of it
// lie on the same edge line with it (a run along one edge keeps only its
// ends). Each segment adds at most three points.
//
// An open line (first point not equal to the last) then loses the boundary
// runs before its first visible point and after its last; a closed ring
// keeps them, so that it stays closed and fills correctly.
//
// Runs of points in one region (inside, or beyond the same edges) are found
// eight points at a time; of a run beyond one edge only the last point can
// stay, and a run beyond a corner adds nothing.
//
// Decisions are exact: crossing parameters and coordinates are quotients of
// 128-bit integers, and a point is visible only if it lies in the rectangle
// before rounding.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

#include <cstring>

using qx::geometry::int128;
using qx::geometry::RoundQuotient;

namespace {

constexpr unsigned kLeft = 1, kRight = 2, kBelow = 4, kAbove = 8;

unsigned Outcode(const LPNT& p, const LRECT& r) {
  return (p.x < r.x1   ? kLeft
          : p.x > r.x2 ? kRight
                       : 0) |
         (p.y < r.y1   ? kBelow
          : p.y > r.y2 ? kAbove
                       : 0);
}

// Clamped - p moved onto r's boundary as its outcode says.
LPNT Clamped(LPNT p, unsigned code, const LRECT& r) {
  if (code & (kLeft | kRight))
    p.x = code & kLeft ? r.x1 : r.x2;
  if (code & (kBelow | kAbove))
    p.y = code & kBelow ? r.y1 : r.y2;
  return p;
}

// Lanes - two points, x and y each; `a < b` gives -1 in the lanes where it
// holds and 0 elsewhere.
typedef int32_t Lanes __attribute__((vector_size(16)));

bool AnyLane(const Lanes& v) {
  uint64_t half[2];
  std::memcpy(half, &v, sizeof half);
  return (half[0] | half[1]) != 0;
}

// RunEnd - the first index from `from` on whose point's outcode is not
// `code`, or n: the end of a run of points in one region. Eight points at
// a time are compared with r's edges, lane by lane.
int RunEnd(const LPNT* in, int from, int n, unsigned code, const LRECT& r) {
  static_assert(sizeof(LPNT) == 8, "LPNT is two 32-bit coordinates");
  const Lanes low{r.x1, r.y1, r.x1, r.y1}, high{r.x2, r.y2, r.x2, r.y2};
  auto lane = [&](unsigned bit) { return (code & bit) ? -1 : 0; };
  const Lanes below{lane(kLeft), lane(kBelow), lane(kLeft), lane(kBelow)};
  const Lanes above{lane(kRight), lane(kAbove), lane(kRight), lane(kAbove)};
  auto differs = [&](const LPNT* p) {
    Lanes v;
    std::memcpy(&v, p, sizeof v);
    return ((v < low) ^ below) | ((v > high) ^ above);
  };
  int i = from;
  for (; i + 8 <= n; i += 8) {
    if (AnyLane(differs(in + i) | differs(in + i + 2) | differs(in + i + 4) | differs(in + i + 6)))
      break;
  }
  while (i < n && Outcode(in[i], r) == code)
    ++i;
  return i;
}

bool IsCorner(unsigned code) { return (code & (kLeft | kRight)) && (code & (kBelow | kAbove)); }

// OnOneEdgeLine - a, b and c all lie on one of the four edge lines.
bool OnOneEdgeLine(const LPNT& a, const LPNT& b, const LPNT& c, const LRECT& r) {
  auto onX = [&](int32_t x) { return a.x == x && b.x == x && c.x == x; };
  auto onY = [&](int32_t y) { return a.y == y && b.y == y && c.y == y; };
  return onX(r.x1) || onX(r.x2) || onY(r.y1) || onY(r.y2);
}

// Path - the output being written, with the rule for dropping points.
class Path {
public:
  Path(LPNT* out, const LRECT& r) : out_(out), r_(r) {}

  // Add - appends p; `outside` says that p is the clamped image of a point
  // outside the rectangle. Boundary points that p leaves between two points
  // of one edge line are dropped first.
  void Add(const LPNT& p, bool outside) {
    while (count_ >= 2 && !Same(out_[count_ - 1], p) && !IsVisible(count_ - 1) &&
           OnOneEdgeLine(out_[count_ - 2], out_[count_ - 1], p, r_))
      --count_;
    if (count_ == 0 || !Same(out_[count_ - 1], p))
      out_[count_++] = p;
    if (!outside)
      MarkVisible(count_ - 1);
  }

  // AddInsideRun - Add(p, false) for each point of [from, end), all inside
  // the rectangle, after a point that was too (the last point is visible,
  // so nothing is dropped).
  void AddInsideRun(const LPNT* from, const LPNT* end) {
    int count = count_; // a local: stores into out_ cannot change it
    LPNT last = out_[count - 1];
    for (; from != end; ++from) {
      if (!Same(last, *from))
        out_[count++] = last = *from;
    }
    count_ = count;
    lastVisible_ = count - 1;
  }

  // TrimBoundaryRuns - drops the points before the first visible one and
  // after the last; returns the number left.
  int TrimBoundaryRuns() {
    int kept = lastVisible_ - firstVisible_ + 1;
    for (int i = 0; i < kept; ++i)
      out_[i] = out_[firstVisible_ + i];
    return kept;
  }

  int count() const { return count_; }
  bool visible() const { return firstVisible_ >= 0; }

private:
  static bool Same(const LPNT& a, const LPNT& b) { return a.x == b.x && a.y == b.y; }
  // Visible points are never replaced, so the last one is the one to ask.
  bool IsVisible(int i) const { return i == lastVisible_; }
  void MarkVisible(int i) {
    if (firstVisible_ < 0)
      firstVisible_ = i;
    lastVisible_ = i;
  }

  LPNT* out_;
  const LRECT r_;
  int count_ = 0;
  int firstVisible_ = -1, lastVisible_ = -1;
};

// Crossing - where a segment meets an edge line: at t = num / den (den > 0)
// along it, the point p, outside the rectangle or not before clamping.
struct Crossing {
  int128 num, den;
  LPNT p;
  bool outside;
};

// CrossingOf - whether the segment ab crosses the line `coordinate` = edge
// strictly between its ends (axis 0: x, 1: y), and where.
bool CrossingOf(const LPNT& a, const LPNT& b, int axis, int32_t edge, const LRECT& r, Crossing& c) {
  const int64_t from = axis == 0 ? a.x : a.y, to = axis == 0 ? b.x : b.y;
  if (!((from < edge && edge < to) || (to < edge && edge < from)))
    return false;
  const int64_t otherFrom = axis == 0 ? a.y : a.x, otherTo = axis == 0 ? b.y : b.x;
  const int32_t low = axis == 0 ? r.y1 : r.x1, high = axis == 0 ? r.y2 : r.x2;
  int128 den = to - from, num = edge - from;
  if (den < 0) {
    den = -den;
    num = -num;
  }
  // The other coordinate is otherNum / den exactly.
  const int128 otherNum = otherFrom * den + num * (otherTo - otherFrom);
  int64_t other = RoundQuotient(otherNum, den);
  c.outside = otherNum < low * den || otherNum > high * den;
  other = other < low ? low : other > high ? high : other;
  c.num = num;
  c.den = den;
  c.p =
      axis == 0 ? LPNT{edge, static_cast<int32_t>(other)} : LPNT{static_cast<int32_t>(other), edge};
  return true;
}

// AddCrossings - adds, in order along ab, the places where ab meets the
// edge lines strictly between its ends.
void AddCrossings(const LPNT& a, const LPNT& b, const LRECT& r, Path& path) {
  Crossing found[4];
  int n = 0;
  const int32_t edges[4] = {r.x1, r.x2, r.y1, r.y2};
  for (int i = 0; i < 4; ++i) {
    Crossing c;
    if (!CrossingOf(a, b, i / 2, edges[i], r, c))
      continue;
    int j = n++;
    for (; j > 0 && c.num * found[j - 1].den < found[j - 1].num * c.den; --j)
      found[j] = found[j - 1];
    found[j] = c;
  }
  for (int i = 0; i < n; ++i)
    path.Add(found[i].p, found[i].outside);
}

} // namespace

bool ClipPoly(LPNT* in, LPNT* out, const LRECT* r, int* count, int n) {
  if (count)
    *count = 0;
  if (!in || !out || !r || n < 1 || r->x1 > r->x2 || r->y1 > r->y2)
    return false;
  Path path(out, *r);
  unsigned code = Outcode(in[0], *r);
  path.Add(Clamped(in[0], code, *r), code != 0);
  for (int i = 1; i < n;) {
    const unsigned next = Outcode(in[i], *r);
    if (next != code) {
      // Both ends beyond one edge: no crossing adds a point.
      if ((code & next) == 0)
        AddCrossings(in[i - 1], in[i], *r, path);
      path.Add(Clamped(in[i], next, *r), next != 0);
      code = next;
      ++i;
    } else {
      const int end = RunEnd(in, i, n, code, *r);
      if (code == 0)
        path.AddInsideRun(in + i, in + end);
      else if (!IsCorner(code))
        // Beyond one edge only the run's last point can stay; beyond a
        // corner every point clamps to the corner, which is already there.
        path.Add(Clamped(in[end - 1], code, *r), true);
      i = end;
    }
  }
  if (!path.visible())
    return false;
  const bool closed = in[0].x == in[n - 1].x && in[0].y == in[n - 1].y;
  const int written = closed ? path.count() : path.TrimBoundaryRuns();
  if (count)
    *count = written;
  return true;
}
