// Out-of-memory paths of the geometry functions that allocate: the region
// functions. Each allocation of a call fails in turn (once, then from there
// on); the call must end in its documented result: null from rgn_create and
// rgn_intersect, the bounding-box fallback from rgn_unionrect.
#include "common/fault_walk.h"
#include "platform/region.h"
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <initializer_list>

using qxtest::FaultCase;
using qxtest::Outcome;

namespace {

// Covering - a new region covering the union of `rects`.
HRGN Covering(std::initializer_list<LRECT> rects) {
  HRGN g = qx::win::CreateRectRgn(0, 0, 0, 0), piece = qx::win::CreateRectRgn(0, 0, 0, 0);
  for (const LRECT& r : rects) {
    qx::win::SetRectRgn(piece, r.x1, r.y1, r.x2, r.y2);
    qx::win::CombineRgn(g, g, piece, RGN_OR);
  }
  qx::win::DeleteObject(piece);
  return g;
}

const LRECT kFirst{0, 0, 2, 2}, kSecond{6, 6, 8, 8}, kOther{1, 1, 7, 7}, kAdded{10, 0, 11, 1};

// The inputs, and the regions the results must equal (compared without
// allocating), rebuilt before each run with no allocation failing.
HRGN gInput, gOther, gAdded, gUnion, gBoxAndAdded, gBox, gCommon;

void PrepareRegions() {
  for (HRGN g : {gInput, gOther, gAdded, gUnion, gBoxAndAdded, gBox, gCommon})
    rgn_destroy(g);
  gInput = rgn_unionrect(rgn_create(&kFirst), &kSecond);
  gOther = rgn_create(&kOther);
  gAdded = rgn_create(&kAdded);
  gUnion = Covering({kFirst, kSecond, kAdded});
  gBoxAndAdded = Covering({{0, 0, 8, 8}, kAdded});
  gBox = Covering({{0, 0, 8, 8}});
  gCommon = Covering({{1, 1, 2, 2}, {6, 6, 7, 7}});
}

bool Same(HRGN a, HRGN b) { return qx::win::EqualRgn(a, b) == TRUE; }

FaultCase::Outcome NewRegion(HRGN g, HRGN want) {
  const bool right = g && Same(g, want);
  rgn_destroy(g);
  return Outcome(g != nullptr, right);
}

const FaultCase kRegionCalls[] = {
    {"rgn_create", [] { return NewRegion(rgn_create(&kAdded), gAdded); }, FaultCase::kFails,
     PrepareRegions},
    {"rgn_unionrect (no region yet)",
     [] { return NewRegion(rgn_unionrect(nullptr, &kAdded), gAdded); }, FaultCase::kFails,
     PrepareRegions},
    {"rgn_unionrect (a region of two rectangles)",
     [] {
       if (rgn_unionrect(gInput, &kAdded) != gInput)
         return FaultCase::kWrong;
       if (Same(gInput, gUnion))
         return FaultCase::kComplete;
       // The fallback: the bounding box plus the rectangle, or the bounding
       // box alone when the rectangle's own region could not be made.
       return Same(gInput, gBoxAndAdded) || Same(gInput, gBox) ? FaultCase::kFailed
                                                               : FaultCase::kWrong;
     },
     FaultCase::kFails, PrepareRegions},
    {"rgn_intersect", [] { return NewRegion(rgn_intersect(gInput, gOther), gCommon); },
     FaultCase::kFails, PrepareRegions},
};

TEST(FaultWalk, RegionFunctions) {
  for (const FaultCase& c : kRegionCalls) {
    qxtest::FaultWalkCount count = qxtest::WalkFaults(c);
    EXPECT_GT(count.allocations, 0) << c.name;
  }
  for (HRGN* g : {&gInput, &gOther, &gAdded, &gUnion, &gBoxAndAdded, &gBox, &gCommon}) {
    rgn_destroy(*g);
    *g = nullptr;
  }
}

} // namespace
