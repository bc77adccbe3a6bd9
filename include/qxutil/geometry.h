//===- qxutil/geometry.h - Plane geometry -----------------------*- C++ -*-===//
//
// Points and rectangles in two forms: 32-bit integers (device or map units)
// and doubles. The records are plain values, passed by reference or as
// arrays with an explicit count; no function on them allocates.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_GEOMETRY_H
#define QXUTIL_GEOMETRY_H

#include "qxutil/wintypes.h"

#include <cstdint>

// ---- Records ---------------------------------------------------------------

/// LPNT - a point with 32-bit integer coordinates.
struct LPNT {
  int32_t x;
  int32_t y;
};

/// DPNT - a point with double coordinates.
struct DPNT {
  double x;
  double y;
};

/// LRECT - a rectangle with 32-bit integer corners, in this order. A
/// normalised rectangle has x1 <= x2 and y1 <= y2; nothing assumes which way
/// the y axis points. Prepared for merging it holds x1 = y1 = 2147483647
/// and x2 = y2 = -2147483648.
struct LRECT {
  int32_t x1;
  int32_t y1;
  int32_t x2;
  int32_t y2;
};

/// DRECT - LRECT with double corners; prepared for merging it holds
/// x1 = y1 = DBL_MAX and x2 = y2 = -DBL_MAX.
struct DRECT {
  double x1;
  double y1;
  double x2;
  double y2;
};

#endif // QXUTIL_GEOMETRY_H
