//===- geometry/centres.cpp - Widths, heights and centres -----------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

namespace {

// Difference32 - b - a in wrapping 32-bit arithmetic.
int32_t Difference32(int32_t b, int32_t a) {
  return static_cast<int32_t>(static_cast<uint32_t>(b) - static_cast<uint32_t>(a));
}

// Centre - the integer centre of one axis: the sum halved unless it reached
// a 32-bit limit, else a + (b - a) / 2. The difference is taken exactly: it
// equals the 32-bit one except for a = -2147483648 and b = 0, where the
// 32-bit difference would overflow.
int32_t Centre(int32_t a, int32_t b) {
  long s = LongAdd(a, b);
  if (s != INT32_MAX && s != INT32_MIN)
    return static_cast<int32_t>(s / 2);
  return static_cast<int32_t>(a + (int64_t{b} - a) / 2);
}

} // namespace

void GetWidthHeightOfRect(const LRECT& r, long& w, long& h) {
  w = Difference32(r.x2, r.x1);
  h = Difference32(r.y2, r.y1);
}

void GetWidthHeightOfRect(const DRECT& r, double& w, double& h) {
  w = r.x2 - r.x1;
  h = r.y2 - r.y1;
}

void GetCenterOfPoints(const LPNT& a, const LPNT& b, LPNT& c) {
  c = {Centre(a.x, b.x), Centre(a.y, b.y)};
}

void GetCenterOfPoints(const DPNT& a, const DPNT& b, DPNT& c) {
  c = {(a.x + b.x) * 0.5, (a.y + b.y) * 0.5};
}

void GetCenterOfRect(const LRECT& r, LPNT& c) {
  GetCenterOfPoints(LPNT{r.x1, r.y1}, LPNT{r.x2, r.y2}, c);
}

void GetCenterOfRect(const DRECT& r, DPNT& c) {
  GetCenterOfPoints(DPNT{r.x1, r.y1}, DPNT{r.x2, r.y2}, c);
}
