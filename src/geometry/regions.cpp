//===- geometry/regions.cpp - Regions that accumulate rectangles ----------===//
//
// Wrappers of the platform's region calls that take LRECTs and let null
// stand for no region. A union that fails degrades to a coarser region:
// the bounding box of what was there plus the new rectangle.
//
//===----------------------------------------------------------------------===//
#include "platform/region.h"
#include "qxutil/geometry.h"

using namespace qx::win;

HRGN rgn_create(const LRECT* r) { return r ? CreateRectRgn(r->x1, r->y1, r->x2, r->y2) : nullptr; }

void rgn_destroy(HRGN g) {
  if (g)
    DeleteObject(g);
}

HRGN rgn_unionrect(HRGN g, const LRECT* r) {
  if (!r)
    return g;
  if (!g)
    return rgn_create(r);
  HRGN added = rgn_create(r);
  RECT box;
  GetRgnBox(g, &box);
  if (CombineRgn(g, g, added, RGN_OR) == ERROR) {
    SetRectRgn(g, box.left, box.top, box.right, box.bottom);
    CombineRgn(g, g, added, RGN_OR);
  }
  DeleteObject(added);
  return g;
}

HRGN rgn_intersect(HRGN a, HRGN b) {
  if (!a || !b)
    return nullptr;
  HRGN common = CreateRectRgn(0, 0, 0, 0);
  if (common && CombineRgn(common, a, b, RGN_AND) == ERROR) {
    DeleteObject(common);
    return nullptr;
  }
  return common;
}

void rgn_bounding_rect(HRGN g, LRECT* out) {
  if (!out)
    return;
  RECT box{0, 0, 0, 0};
  if (g)
    GetRgnBox(g, &box);
  SetRect(*out, box.left, box.top, box.right, box.bottom);
}

bool rgn_equal(HRGN a, HRGN b) {
  if (!a || !b)
    return !a && !b;
  return EqualRgn(a, b) != 0;
}
