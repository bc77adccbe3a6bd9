//===- geometry/rotation.cpp - Rotating a bounding rectangle --------------===//
//
// A rotation by `angle` tenths of a degree about a pivot turns +x towards
// +y (the direction in which angles grow). Quarter turns use exact sines
// and cosines, so a rectangle rotated by 900 stays on the integer grid.
//
//===----------------------------------------------------------------------===//
#include "qxutil/geometry.h"

#include <cmath>

namespace {

struct Turn {
  double cos, sin;
};

Turn TurnOf(short angle) {
  int a = angle % 3600;
  if (a < 0)
    a += 3600;
  switch (a) {
  case 0:
    return {1, 0};
  case 900:
    return {0, 1};
  case 1800:
    return {-1, 0};
  case 2700:
    return {0, -1};
  default: {
    double radians = a / 10.0 * 3.141592653589793 / 180;
    return {std::cos(radians), std::sin(radians)};
  }
  }
}

} // namespace

void GetRotatedMBRPnts(DRECT* r, short angle, double x, double y, DPNT* pts) {
  if (!r || !pts)
    return;
  const Turn t = TurnOf(angle);
  GetCornersOfRect(*r, pts);
  for (int i = 0; i < 4; ++i) {
    double dx = pts[i].x - x, dy = pts[i].y - y;
    pts[i] = {x + dx * t.cos - dy * t.sin, y + dx * t.sin + dy * t.cos};
  }
}

void RotateTextMBR(DRECT* r, short angle, double x, double y) {
  if (!r)
    return;
  DPNT corners[4];
  GetRotatedMBRPnts(r, angle, x, y, corners);
  InitRectForMerging(*r);
  for (const DPNT& c : corners)
    MergeRectWithPoint(*r, c);
}
