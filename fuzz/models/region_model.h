// A model of regions as bitmaps on a small grid, for the region fuzzer: the
// pixels of a rectangle (corners in either order, right and bottom edges
// outside), unions, intersections, bounding boxes and kinds computed pixel
// by pixel, and a reader that finds which grid pixels an HRGN covers by
// intersecting it with each pixel in turn.
#ifndef QXUTIL_FUZZ_MODELS_REGION_MODEL_H
#define QXUTIL_FUZZ_MODELS_REGION_MODEL_H

#include "platform/region.h"
#include "qxutil/geometry.h"

#include <algorithm>
#include <bitset>

namespace qxtest {

/// PixelSet - the pixels (x, y), kGridLow <= x, y < kGridHigh, of a region.
struct PixelSet {
  static constexpr int kGridLow = -4, kGridHigh = 12, kSide = kGridHigh - kGridLow;
  std::bitset<kSide * kSide> bits;

  static size_t Index(int x, int y) { return (y - kGridLow) * kSide + (x - kGridLow); }
  bool Has(int x, int y) const { return bits[Index(x, y)]; }

  static PixelSet Rectangle(int x1, int y1, int x2, int y2) {
    PixelSet s;
    for (int y = std::min(y1, y2); y < std::max(y1, y2); ++y)
      for (int x = std::min(x1, x2); x < std::max(x1, x2); ++x)
        s.bits.set(Index(x, y));
    return s;
  }
  friend PixelSet operator|(PixelSet a, const PixelSet& b) {
    a.bits |= b.bits;
    return a;
  }
  friend PixelSet operator&(PixelSet a, const PixelSet& b) {
    a.bits &= b.bits;
    return a;
  }
  bool operator==(const PixelSet& o) const { return bits == o.bits; }

  /// Box - the bounding box, (0, 0, 0, 0) when empty.
  LRECT Box() const {
    LRECT box{kGridHigh, kGridHigh, kGridLow, kGridLow};
    for (int y = kGridLow; y < kGridHigh; ++y)
      for (int x = kGridLow; x < kGridHigh; ++x)
        if (Has(x, y))
          box = {std::min(box.x1, x), std::min(box.y1, y), std::max(box.x2, x + 1),
                 std::max(box.y2, y + 1)};
    return bits.none() ? LRECT{0, 0, 0, 0} : box;
  }

  /// Kind - NULLREGION, SIMPLEREGION (a rectangle) or COMPLEXREGION.
  int Kind() const {
    if (bits.none())
      return NULLREGION;
    LRECT b = Box();
    return Rectangle(b.x1, b.y1, b.x2, b.y2) == *this ? SIMPLEREGION : COMPLEXREGION;
  }
};

/// PixelsOf - the grid pixels g covers (g must lie within the grid), read
/// pixel by pixel within g's bounding box (whose own test is GetRgnBox's)
/// through `probe`, a region that is overwritten (one of its own when
/// null). Probing never asks the heap's fault hook (each result is one
/// rectangle at most).
inline PixelSet PixelsOf(HRGN g, HRGN probe = nullptr) {
  HRGN own = probe ? nullptr : qx::win::CreateRectRgn(0, 0, 0, 0), p = probe ? probe : own;
  PixelSet s;
  qx::win::RECT box{0, 0, 0, 0};
  qx::win::GetRgnBox(g, &box);
  for (int y = std::max<int>(box.top, PixelSet::kGridLow);
       y < std::min<int>(box.bottom, PixelSet::kGridHigh); ++y)
    for (int x = std::max<int>(box.left, PixelSet::kGridLow);
         x < std::min<int>(box.right, PixelSet::kGridHigh); ++x) {
      qx::win::SetRectRgn(p, x, y, x + 1, y + 1);
      if (qx::win::CombineRgn(p, p, g, RGN_AND) == SIMPLEREGION)
        s.bits.set(PixelSet::Index(x, y));
    }
  if (own)
    qx::win::DeleteObject(own);
  return s;
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_REGION_MODEL_H
