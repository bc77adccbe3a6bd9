// Out-of-memory paths of the geometry functions that allocate: the region
// functions. Each allocation of a call fails in turn (once, then from there
// on); the call must end in its documented result: null from rgn_create and
// rgn_intersect, the bounding-box fallback from rgn_unionrect.
#include "common/fault_walk.h"
#include "geometry/region_model.h"
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

using qxtest::FaultCase;
using qxtest::Outcome;
using qxtest::PixelSet;

namespace {

// The inputs, rebuilt before each run with no allocation failing.
HRGN gInput = nullptr, gOther = nullptr, gProbe = nullptr;
const LRECT kFirst{0, 0, 2, 2}, kSecond{6, 6, 8, 8}, kOther{1, 1, 7, 7}, kAdded{10, 0, 11, 1};

PixelSet Pixels(const LRECT& r) { return PixelSet::Rectangle(r.x1, r.y1, r.x2, r.y2); }

void PrepareRegions() {
  rgn_destroy(gInput);
  gInput = rgn_unionrect(rgn_create(&kFirst), &kSecond);
  if (!gOther)
    gOther = rgn_create(&kOther);
  if (!gProbe)
    gProbe = rgn_create(&kFirst);
}

FaultCase::Outcome NewRegion(HRGN g, const LRECT& r) {
  bool right = g && qxtest::PixelsOf(g, gProbe) == Pixels(r);
  rgn_destroy(g);
  return Outcome(g != nullptr, right);
}

const FaultCase kRegionCalls[] = {
    {"rgn_create", [] { return NewRegion(rgn_create(&kAdded), kAdded); }, FaultCase::kFails,
     PrepareRegions},
    {"rgn_unionrect (no region yet)",
     [] { return NewRegion(rgn_unionrect(nullptr, &kAdded), kAdded); }, FaultCase::kFails,
     PrepareRegions},
    {"rgn_unionrect (a region of two rectangles)",
     [] {
       if (rgn_unionrect(gInput, &kAdded) != gInput)
         return FaultCase::kWrong;
       const PixelSet got = qxtest::PixelsOf(gInput, gProbe);
       const PixelSet box = Pixels({0, 0, 8, 8});
       if (got == (Pixels(kFirst) | Pixels(kSecond) | Pixels(kAdded)))
         return FaultCase::kComplete;
       // The fallback: the bounding box plus the rectangle, or the bounding
       // box alone when the rectangle's own region could not be made.
       return got == (box | Pixels(kAdded)) || got == box ? FaultCase::kFailed : FaultCase::kWrong;
     },
     FaultCase::kFails, PrepareRegions},
    {"rgn_intersect",
     [] {
       HRGN common = rgn_intersect(gInput, gOther);
       bool right = common && qxtest::PixelsOf(common, gProbe) ==
                                  (Pixels({1, 1, 2, 2}) | Pixels({6, 6, 7, 7}));
       rgn_destroy(common);
       return Outcome(common != nullptr, right);
     },
     FaultCase::kFails, PrepareRegions},
};

TEST(FaultWalk, RegionFunctions) {
  for (const FaultCase& c : kRegionCalls) {
    qxtest::FaultWalkCount count = qxtest::WalkFaults(c);
    EXPECT_GT(count.allocations, 0) << c.name;
  }
  for (HRGN* g : {&gInput, &gOther, &gProbe}) {
    rgn_destroy(*g);
    *g = nullptr;
  }
}

} // namespace
