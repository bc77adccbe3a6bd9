//===- geometry/offsets.cpp - Offsets and expansions with clamping --------===//
//
// Integer coordinates move with saturation at the 32-bit limits and are
// then clamped into [lo, hi] (LongAddCoords); doubles move plainly.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

using qx::geometry::Move;
using qx::geometry::MoveBack;

void OffsetRect(LRECT& r, long dx, long dy, long lo, long hi) {
  r = {Move(r.x1, dx, lo, hi), Move(r.y1, dy, lo, hi), Move(r.x2, dx, lo, hi),
       Move(r.y2, dy, lo, hi)};
}

void OffsetRect(DRECT& r, double dx, double dy) {
  r = {r.x1 + dx, r.y1 + dy, r.x2 + dx, r.y2 + dy};
}

void OffsetPoints(LPNT* p, int n, long dx, long dy, long lo, long hi) {
  for (int i = 0; p && i < n; ++i)
    p[i] = {Move(p[i].x, dx, lo, hi), Move(p[i].y, dy, lo, hi)};
}

void OffsetPoints(DPNT* p, int n, double dx, double dy) {
  for (int i = 0; p && i < n; ++i)
    p[i] = {p[i].x + dx, p[i].y + dy};
}

void ExpandRect(LRECT& r, long dx, long dy, long lo, long hi) {
  r = {MoveBack(r.x1, dx, lo, hi), MoveBack(r.y1, dy, lo, hi), Move(r.x2, dx, lo, hi),
       Move(r.y2, dy, lo, hi)};
  SortRect(r);
}

void ExpandRect(DRECT& r, double dx, double dy) {
  r = {r.x1 - dx, r.y1 - dy, r.x2 + dx, r.y2 + dy};
  SortRect(r);
}

void ExpandPointIntoRect(const LPNT& p, LRECT& r, long dx, long dy, long lo, long hi) {
  r = {MoveBack(p.x, dx, lo, hi), MoveBack(p.y, dy, lo, hi), Move(p.x, dx, lo, hi),
       Move(p.y, dy, lo, hi)};
  SortRect(r);
}

void ExpandPointIntoRect(const DPNT& p, DRECT& r, double dx, double dy) {
  r = {p.x - dx, p.y - dy, p.x + dx, p.y + dy};
  SortRect(r);
}
