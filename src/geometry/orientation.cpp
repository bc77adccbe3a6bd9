//===- geometry/orientation.cpp - The orientation of a ring ---------------===//
//
// The sign of the ring's exact signed area (the shoelace sum, in 128-bit
// integers, taken about the first point so that each term stays within 66
// bits): the same sign convention as IsClockwiseTriangle, whose d is twice
// a triangle's signed area. Zero area leaves the orientation undefined.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

using qx::geometry::int128;

bool IsClockwiseOrientation(const LPNT* p, int n, bool* ok) {
  int128 twiceArea = 0;
  if (p && n >= 3) {
    const int64_t x0 = p[0].x, y0 = p[0].y;
    for (int i = 1; i + 1 < n; ++i) {
      int128 ux = p[i].x - x0, uy = p[i].y - y0;
      int128 vx = p[i + 1].x - x0, vy = p[i + 1].y - y0;
      twiceArea += ux * vy - uy * vx;
    }
  }
  if (ok)
    *ok = twiceArea != 0;
  return twiceArea < 0;
}
