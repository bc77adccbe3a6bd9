// Regions built from the rectangles they cover, to compare results with
// (EqualRgn); fuzz/region_fuzz.cpp checks these calls pixel by pixel.
#ifndef QXUTIL_TESTS_GEOMETRY_REGION_COVER_H
#define QXUTIL_TESTS_GEOMETRY_REGION_COVER_H

#include "platform/region.h"
#include "qxutil/geometry.h"

#include <initializer_list>

namespace qxtest {

/// Covering - a new region covering the union of `rects`.
inline HRGN Covering(std::initializer_list<LRECT> rects) {
  HRGN g = qx::win::CreateRectRgn(0, 0, 0, 0), piece = qx::win::CreateRectRgn(0, 0, 0, 0);
  for (const LRECT& r : rects) {
    qx::win::SetRectRgn(piece, r.x1, r.y1, r.x2, r.y2);
    qx::win::CombineRgn(g, g, piece, RGN_OR);
  }
  qx::win::DeleteObject(piece);
  return g;
}

/// Covers - g covers exactly the union of `rects`.
inline bool Covers(HRGN g, std::initializer_list<LRECT> rects) {
  HRGN want = Covering(rects);
  const bool same = qx::win::EqualRgn(g, want) == TRUE;
  qx::win::DeleteObject(want);
  return same;
}

} // namespace qxtest

#endif // QXUTIL_TESTS_GEOMETRY_REGION_COVER_H
