// Regions against the bitmap model of models/region_model.h.
// Input: a list of operations on three regions, each a byte naming the
// operation and the regions, then a rectangle on the model's grid:
// rgn_unionrect (sometimes with the union made to fail, where the model
// expects the bounding-box fallback), rgn_intersect, CombineRgn in every
// mode, invalid modes and null regions included (sometimes made to fail
// where it needs storage: ERROR, the region unchanged), and SetRectRgn.
// After each one the changed region's pixels, kind and bounding boxes
// (GetRgnBox's and rgn_bounding_rect's), and the equality of every pair,
// must match the model; null regions give the calls' error results.
#include "models/region_model.h"
#include "platform/heap.h"

#include <cstdlib>

using namespace qx::win;
using qxtest::PixelSet;

namespace {

struct Reader {
  const uint8_t* data;
  size_t size;
  uint8_t Next() { return size ? (--size, *data++) : 0; }
  int Coordinate() { return PixelSet::kGridLow + Next() % (PixelSet::kSide + 1); }
};

void Check(bool ok) {
  if (!ok)
    std::abort();
}

void CheckRegion(HRGN g, const PixelSet& model, HRGN probe) {
  Check(qxtest::PixelsOf(g, probe) == model);
  RECT box;
  Check(GetRgnBox(g, &box) == model.Kind());
  LRECT want = model.Box();
  Check(box.left == want.x1 && box.top == want.y1 && box.right == want.x2 && box.bottom == want.y2);
  LRECT bounds;
  rgn_bounding_rect(g, nullptr); // nowhere to write: nothing
  rgn_bounding_rect(g, &bounds);
  Check(bounds.x1 == want.x1 && bounds.y1 == want.y1 && bounds.x2 == want.x2 &&
        bounds.y2 == want.y2);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in{data, size};
  HRGN regions[3] = {nullptr, nullptr, nullptr};
  PixelSet models[3];
  HRGN probe = CreateRectRgn(0, 0, 0, 0);
  for (int step = 0; step < 24 && in.size > 0; ++step) {
    const uint8_t op = in.Next();
    const int i = op % 3, j = op / 3 % 3, k = op / 9 % 3;
    const LRECT r{in.Coordinate(), in.Coordinate(), in.Coordinate(), in.Coordinate()};
    const PixelSet pixels = PixelSet::Rectangle(r.x1, r.y1, r.x2, r.y2);
    int changed = i;
    switch (op / 27 % 4) {
    case 0: { // a union, failing when it needs storage (op >= 128)
      const bool fail = op >= 128 && regions[i];
      if (op & 64 && regions[i]) { // no rectangle: the region as it was
        Check(rgn_unionrect(regions[i], nullptr) == regions[i]);
        break;
      }
      PixelSet want = models[i] | pixels;
      // The union needs storage when r adds to g and the result is complex.
      if (fail && pixels.bits.any() && want.Kind() == COMPLEXREGION) {
        LRECT box = models[i].Box();
        want = PixelSet::Rectangle(box.x1, box.y1, box.x2, box.y2) | pixels;
      }
      if (fail)
        qx::platform::FailAllocations(2, false);
      HRGN g = rgn_unionrect(regions[i], &r);
      qx::platform::FailAllocations(0, false);
      Check(g && (!regions[i] || g == regions[i]));
      regions[i] = g;
      models[i] = want;
      break;
    }
    case 1: { // an intersection into a new region
      HRGN common = rgn_intersect(regions[i], regions[j]);
      Check((common != nullptr) == (regions[i] && regions[j]));
      if (!common)
        continue;
      rgn_destroy(regions[k]);
      regions[k] = common;
      models[k] = models[i] & models[j];
      changed = k;
      break;
    }
    case 2: { // CombineRgn into the third region, in any mode, failing when it needs storage
      const int mode = RGN_AND - 1 + (r.x1 - PixelSet::kGridLow) % 7;
      const bool fail = op >= 128;
      if (!regions[i] || (!regions[j] && mode != RGN_COPY) || !regions[k] || mode < RGN_AND ||
          mode > RGN_COPY) {
        if (fail)
          qx::platform::FailAllocations(1, false);
        Check(CombineRgn(regions[k], regions[i], regions[j], mode) == ERROR);
        qx::platform::FailAllocations(0, false);
        if (!regions[k])
          continue;
        changed = k; // unchanged
        break;
      }
      const auto& a = models[i].bits;
      const auto& b = models[j].bits;
      PixelSet want{mode == RGN_AND    ? a & b
                    : mode == RGN_OR   ? a | b
                    : mode == RGN_XOR  ? a ^ b
                    : mode == RGN_DIFF ? a & ~b
                                       : a};
      // A complex result needs storage, unless a union into the first
      // source adds nothing to it.
      const bool refused = fail && want.Kind() == COMPLEXREGION &&
                           !(mode == RGN_OR && k == i && models[j].bits.none());
      if (fail)
        qx::platform::FailAllocations(1, false);
      const int kind = CombineRgn(regions[k], regions[i], regions[j], mode);
      qx::platform::FailAllocations(0, false);
      Check(kind == (refused ? ERROR : want.Kind()));
      if (!refused)
        models[k] = want;
      changed = k;
      break;
    }
    default: // reset to a rectangle
      if (!regions[i]) {
        RECT box;
        Check(!SetRectRgn(nullptr, r.x1, r.y1, r.x2, r.y2) && GetRgnBox(nullptr, &box) == ERROR &&
              GetRgnBox(probe, nullptr) == ERROR && EqualRgn(nullptr, probe) == ERROR &&
              !DeleteObject(nullptr) && !rgn_create(nullptr));
        continue;
      }
      Check(SetRectRgn(regions[i], r.x1, r.y1, r.x2, r.y2));
      models[i] = pixels;
      break;
    }
    CheckRegion(regions[changed], models[changed], probe);
    for (int n = 0; n < 3; ++n) {
      LRECT none{9, 9, 9, 9};
      if (!regions[n]) {
        rgn_bounding_rect(nullptr, &none);
        Check(none.x1 == 0 && none.y1 == 0 && none.x2 == 0 && none.y2 == 0);
      }
      for (int m = 0; m < 3; ++m)
        Check(rgn_equal(regions[n], regions[m]) ==
              (!regions[n] || !regions[m] ? !regions[n] && !regions[m] : models[n] == models[m]));
    }
  }
  for (HRGN g : regions)
    rgn_destroy(g);
  DeleteObject(probe);
  return 0;
}
