//===- geometry/conversions.cpp - Between integer and double forms --------===//
//
// Double to integer: clamp into [lo, hi] first (below lo becomes lo,
// otherwise above hi becomes hi), then round with DoubleToLong.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

using qx::geometry::Clamp;
using qx::geometry::Low32;

namespace {

int32_t ClampRound(double v, long lo, long hi) {
  double low = Low32(lo), high = Low32(hi);
  if (v < low)
    v = low;
  else if (v > high)
    v = high;
  return static_cast<int32_t>(DoubleToLong(v));
}

} // namespace

void LongToDoubleRect(const LRECT& s, DRECT& d) {
  d = {1.0 * s.x1, 1.0 * s.y1, 1.0 * s.x2, 1.0 * s.y2};
}

void LongToDoublePoints(const LPNT* s, DPNT* d, int n) {
  for (int i = 0; s && d && i < n; ++i)
    d[i] = {1.0 * s[i].x, 1.0 * s[i].y};
}

void DoubleToLongRect(const DRECT& s, LRECT& d, long lo, long hi) {
  d = {ClampRound(s.x1, lo, hi), ClampRound(s.y1, lo, hi), ClampRound(s.x2, lo, hi),
       ClampRound(s.y2, lo, hi)};
}

void DoubleToLongPoints(const DPNT* s, LPNT* d, int n, long lo, long hi) {
  for (int i = 0; s && d && i < n; ++i)
    d[i] = {ClampRound(s[i].x, lo, hi), ClampRound(s[i].y, lo, hi)};
}

void ClipToLongRect(const LRECT& s, LRECT& d, long lo, long hi) {
  d = {Clamp(s.x1, lo, hi), Clamp(s.y1, lo, hi), Clamp(s.x2, lo, hi), Clamp(s.y2, lo, hi)};
}

void ClipToLongPoints(const LPNT* s, LPNT* d, int n, int* count, long lo, long hi) {
  if (count)
    *count = n;
  for (int i = 0; s && d && i < n; ++i)
    d[i] = {Clamp(s[i].x, lo, hi), Clamp(s[i].y, lo, hi)};
}
