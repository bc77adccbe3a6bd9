//===- geometry/clip_line.cpp - Cohen-Sutherland segment clipping ---------===//
//
// Outcode bits: 1 x < x1, 2 x > x2, 4 y < y1, 8 y > y2 (the edges are
// inside). While a point is outside, the outside point p0 (the points are
// exchanged, and the exchange remembered, when p0 is the inside one) moves
// onto the first edge whose bit it has, in the order 1, 2, 4, 8; its other
// coordinate moves by the quotient (edge - x0) * (y1 - y0) / (x1 - x0),
// formed in doubles and rounded half away from zero.
//
// Differences are exact (the 32-bit differences wherever those do not
// overflow), and the moved coordinate stays between the segment's ends, so
// every 32-bit segment clips without overflow. A moved point lands on its
// edge and inside the other axis' edge pair or beyond the other end's, so
// each point moves at most twice.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

#include <utility>

using qx::geometry::RoundAway64;

namespace {

constexpr unsigned kLeft = 1, kRight = 2, kBelow = 4, kAbove = 8;

struct Point64 {
  int64_t x, y;
};

unsigned Outcode(const Point64& p, const LRECT& r) {
  unsigned code = 0;
  if (p.x < r.x1)
    code |= kLeft;
  else if (p.x > r.x2)
    code |= kRight;
  if (p.y < r.y1)
    code |= kBelow;
  else if (p.y > r.y2)
    code |= kAbove;
  return code;
}

// Offset - (edge - from) * (toOther - fromOther) / (to - from), rounded.
int64_t Offset(int64_t edge, int64_t from, int64_t to, int64_t fromOther, int64_t toOther) {
  double q = static_cast<double>(edge - from) * static_cast<double>(toOther - fromOther) /
             static_cast<double>(to - from);
  return RoundAway64(q);
}

// MoveOntoEdge - moves p (outside, code `code`) onto its first edge.
void MoveOntoEdge(Point64& p, const Point64& q, unsigned code, const LRECT& r) {
  if (code & (kLeft | kRight)) {
    int64_t edge = (code & kLeft) ? r.x1 : r.x2;
    p.y += Offset(edge, p.x, q.x, p.y, q.y);
    p.x = edge;
  } else {
    int64_t edge = (code & kBelow) ? r.y1 : r.y2;
    p.x += Offset(edge, p.y, q.y, p.x, q.x);
    p.y = edge;
  }
}

} // namespace

bool ClipLine(LPNT* p0, LPNT* p1, const LRECT* r) {
  if (!p0 || !p1 || !r || r->x1 > r->x2 || r->y1 > r->y2)
    return false;
  Point64 a{p0->x, p0->y}, b{p1->x, p1->y};
  bool exchanged = false;
  // Four moves at most (see above); the bound only guards the loop.
  for (int moves = 0; moves <= 4; ++moves) {
    unsigned codeA = Outcode(a, *r), codeB = Outcode(b, *r);
    if ((codeA | codeB) == 0) {
      if (exchanged)
        std::swap(a, b);
      *p0 = {static_cast<int32_t>(a.x), static_cast<int32_t>(a.y)};
      *p1 = {static_cast<int32_t>(b.x), static_cast<int32_t>(b.y)};
      return true;
    }
    if (codeA & codeB)
      return false;
    if (codeA == 0) {
      std::swap(a, b);
      std::swap(codeA, codeB);
      exchanged = !exchanged;
    }
    MoveOntoEdge(a, b, codeA, *r);
  }
  return false;
}
