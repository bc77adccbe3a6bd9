//===- geometry/vectors.cpp - Point order and small vector operations -----===//
#include "qxutil/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

template <class Point> void Reverse(Point* p, int n) {
  if (p && n > 1)
    std::reverse(p, p + n);
}

// ClockwiseDeterminant - twice the signed area of abc, in doubles.
bool ClockwiseDeterminant(double ax, double ay, double bx, double by, double cx, double cy) {
  double d = ax * (by - cy) + bx * (cy - ay) + cx * (ay - by);
  return d <= 0;
}

} // namespace

void ReverseNodes(LPNT* p, int n) { Reverse(p, n); }
void ReverseNodes(DPNT* p, int n) { Reverse(p, n); }

void SubtractPoints(const LPNT& a, const LPNT& b, DPNT& c) {
  // 32-bit differences, wrapping as they do for a Windows caller.
  int32_t dx = static_cast<int32_t>(static_cast<uint32_t>(a.x) - static_cast<uint32_t>(b.x));
  int32_t dy = static_cast<int32_t>(static_cast<uint32_t>(a.y) - static_cast<uint32_t>(b.y));
  c = {1.0 * dx, 1.0 * dy};
}

void SubtractPoints(const DPNT& a, const DPNT& b, DPNT& c) { c = {a.x - b.x, a.y - b.y}; }

double DotProductVecs(const DPNT& a, const DPNT& b) { return a.x * b.x + a.y * b.y; }

double CrossProductVecs(const DPNT& a, const DPNT& b) { return a.x * b.y - a.y * b.x; }

double NormL1Vec(const DPNT& a) { return std::fabs(a.x) + std::fabs(a.y); }

bool IsClockwiseTriangle(const LPNT& a, const LPNT& b, const LPNT& c) {
  return ClockwiseDeterminant(a.x, a.y, b.x, b.y, c.x, c.y);
}

bool IsClockwiseTriangle(const DPNT& a, const DPNT& b, const DPNT& c) {
  return ClockwiseDeterminant(a.x, a.y, b.x, b.y, c.x, c.y);
}
