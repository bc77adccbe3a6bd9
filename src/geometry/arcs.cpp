//===- geometry/arcs.cpp - Angles and points of elliptical arcs -----------===//
//
// Angles are tenths of a degree (3600 a full turn), 0 along +x, growing
// towards +y. The ellipse of a rectangle is the one inscribed in it, seen
// from the rectangle's integer centre. Differences of integer coordinates
// are exact (the 32-bit differences wherever those do not overflow).
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

#include <cmath>
#include <utility>

namespace {

constexpr double kPi = 3.141592653589793;

// DirectionAngle - the angle of (dx, dy) in tenths of a degree, 0..3600.
short DirectionAngle(double dx, double dy) {
  if (dx == 0)
    return dy > 0 ? 900 : 2700;
  if (dy == 0)
    return dx > 0 ? 0 : 1800;
  double degrees = std::atan2(dy, dx) * 180 / kPi;
  if (degrees < 0)
    degrees += 360;
  return static_cast<short>(DoubleToLong(degrees * 10));
}

// Radii - half the width and half the height of r.
void Radii(const LRECT& r, double& rx, double& ry) {
  rx = (int64_t{r.x2} - r.x1) * 0.5;
  ry = (int64_t{r.y2} - r.y1) * 0.5;
}

// RaiseAbove - adds full turns to a2 until it exceeds a1.
short RaiseAbove(int a2, int a1) {
  while (a2 <= a1)
    a2 += 3600;
  return static_cast<short>(a2);
}

// ArcPoint - c + the rounded offsets (cos * rx, sin * ry), saturating.
LPNT ArcPoint(const LPNT& c, double rx, double ry, int tenths) {
  double radians = tenths / 10.0 * kPi / 180;
  return {static_cast<int32_t>(LongAdd(c.x, DoubleToLong(std::cos(radians) * rx))),
          static_cast<int32_t>(LongAdd(c.y, DoubleToLong(std::sin(radians) * ry)))};
}

} // namespace

void CalcArcAngles(const LRECT& r, const LPNT& p1, const LPNT& p2, short* a1, short* a2,
                   bool swap) {
  if (!a1 || !a2)
    return;
  LPNT c;
  GetCenterOfRect(r, c);
  double rx, ry;
  Radii(r, rx, ry);
  short first = DirectionAngle(ry * (int64_t{p1.x} - c.x), rx * (int64_t{p1.y} - c.y));
  short second = DirectionAngle(ry * (int64_t{p2.x} - c.x), rx * (int64_t{p2.y} - c.y));
  if (swap)
    std::swap(first, second);
  *a1 = first;
  *a2 = RaiseAbove(second, first);
}

void FlipArcAngles(short* a1, short* a2, bool flipX, bool flipY) {
  if (!a1 || !a2)
    return;
  // Mirrored angles are 16-bit values, as the angles themselves are.
  short first = *a1, second = *a2;
  if (flipX) {
    first = static_cast<short>(1800 - first);
    second = static_cast<short>(1800 - second);
  }
  if (flipY) {
    first = static_cast<short>(3600 - first);
    second = static_cast<short>(3600 - second);
  }
  if (flipX != flipY)
    std::swap(first, second);
  int start = first % 3600;
  if (start < 0)
    start += 3600;
  int end = second;
  while (end >= 3600)
    end -= 3600;
  *a1 = static_cast<short>(start);
  *a2 = RaiseAbove(end, start);
}

void LogCalcArcPoints(const LRECT& r, int a1, int a2, LPNT* p1, LPNT* p2) {
  LPNT c;
  GetCenterOfRect(r, c);
  double rx, ry;
  Radii(r, rx, ry);
  if (p1)
    *p1 = ArcPoint(c, rx, ry, a1);
  if (p2)
    *p2 = ArcPoint(c, rx, ry, a2);
}

bool CirclePointsToMBRAngles(const DPNT& p1, const DPNT& p2, const DPNT& p3, DRECT& mbr, short& a1,
                             short& a2) {
  const DPNT u{p3.x - p1.x, p3.y - p1.y}, v{p2.x - p1.x, p2.y - p1.y};
  const double k = v.y * u.x - v.x * u.y;
  if (std::fabs(k) < 1e-13)
    return false;
  const double uu = u.x * u.x + u.y * u.y, vv = v.x * v.x + v.y * v.y;
  const DPNT centre{p1.x + (v.y * uu - u.y * vv) * 0.5 / k, p1.y + (u.x * vv - v.x * uu) * 0.5 / k};
  const double radius = std::hypot(centre.x - p1.x, centre.y - p1.y);
  mbr = {centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius};
  a1 = DirectionAngle(p1.x - centre.x, p1.y - centre.y);
  a2 = DirectionAngle(p3.x - centre.x, p3.y - centre.y);
  return true;
}

void CreateCircleMBR(LRECT& r, const LPNT& centre, const LPNT& onCircle, double sx, double sy) {
  const double ratio = sy / sx;
  const double dx = static_cast<double>(int64_t{centre.x} - onCircle.x);
  const double dy = static_cast<double>(int64_t{centre.y} - onCircle.y);
  const double radius = std::sqrt((dy / ratio) * (dy / ratio) + dx * dx);
  ExpandPointIntoRect(centre, r, DoubleToLong(radius), DoubleToLong(radius * ratio), -1000000000,
                      1000000000);
}
