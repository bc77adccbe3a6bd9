// Lines: ClipLine's Cohen-Sutherland steps and rounding, ClipPoly's
// boundary runs, and the intersection of two segments on integers and
// doubles; fuzz/clip_fuzz.cpp compares them with exact references on
// millions more cases (null arguments, no points and no count included).
#include "geometry/geometry_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

namespace {

using qxtest::Describe;
using qxtest::Pts;

const LRECT kBox{0, 0, 10, 10};

TEST(ClipLine, CohenSutherlandCases) {
  struct Case {
    const char* what;
    const char* line;
    bool visible;
    const char* clipped;
    LRECT r = kBox;
  } cases[] = {
      {"through, given order kept", "-10,5 20,5", true, "0,5 10,5"},
      {"touches a corner", "-2,8 3,13", true, "0,10 0,10"},
      {"misses a corner", "-2,9 2,13", false, ""},
      {"unsorted rectangle", "1,1 2,2", false, "", {10, 10, 0, 0}},
      {"32-bit extremes", "min,min max,max", true, "0,0 10,10"},
      {"a rectangle at the limits",
       "min,0 max,0",
       true,
       "max-1,0 max,0",
       {INT_MAX - 1, -1, INT_MAX, 1}},
  };
  for (const Case& c : cases) {
    const std::vector<LPNT> line = Pts(c.line);
    LPNT p0 = line[0], p1 = line[1];
    const bool visible = ClipLine(&p0, &p1, &c.r);
    EXPECT_EQ(visible, c.visible) << c.what;
    EXPECT_EQ(visible ? Describe({p0, p1}) : "", Describe(Pts(c.clipped))) << c.what;
  }
}

TEST(ClipPoly, InsideRunsAndBoundaryRuns) {
  struct Case {
    const char* what;
    const char* line;
    bool visible;
    const char* clipped;
  } cases[] = {
      {"leaves and re-enters by one edge", "5,5 5,15 8,15 8,5", true, "5,5 5,10 8,10 8,5"},
      {"leaves and re-enters round a corner", "5,5 15,5 15,15 5,15 5,8", true,
       "5,5 10,5 10,10 5,10 5,8"},
      {"a run along one edge keeps its ends", "5,5 5,12 6,20 7,11 8,30 9,5", true,
       "5,5 5,10 9,10 9,5"},
      {"one point outside", "11,3", false, ""},
      {"a closed ring keeps its boundary runs", "-5,5 5,5 5,-5 -5,-5 -5,5", true,
       "0,5 5,5 5,0 0,0 0,5"},
  };
  for (const Case& c : cases) {
    std::vector<LPNT> in = Pts(c.line), out(3 * in.size() - 2); // exactly the room promised
    int count = -1;
    EXPECT_EQ(ClipPoly(in.data(), out.data(), &kBox, &count, static_cast<int>(in.size())),
              c.visible)
        << c.what;
    out.resize(std::max(count, 0));
    EXPECT_EQ(Describe(out), Describe(Pts(c.clipped))) << c.what;
  }
}

TEST(LineIntersection, CasesBeyondTheQuickRejections) {
  struct Case {
    const char* what;
    const char* segments;
    const char* meeting;
  } cases[] = {
      {"crossing, rounded", "0,0 3,1 0,1 3,0", "2,1"},
      {"collinear overlap: the end nearest a", "0,0 6,0 9,0 3,0", "3,0"},
      {"extremes crossing at (-0.5, -0.5)", "min,min max,max min,max max,min", "-1,-1"},
      {"extremes, a hair apart", "min,min max,max-1 max-1,max 0,1", ""},
  };
  for (const Case& c : cases) {
    const std::vector<LPNT> p = Pts(c.segments);
    LPNT x{-7, -7};
    const bool meet = LineIntersection(p[0], p[1], p[2], p[3], x);
    EXPECT_EQ(meet ? Describe({x}) : "", Describe(Pts(c.meeting))) << c.what;
  }
}

// CrossDLines's parallel tolerance; the clip fuzzer compares it with the
// exact crossing.
TEST(CrossDLines, NearlyParallelLinesDoNotMeet) {
  // den = 1e-8 against (|u.x| + |u.y|)^2 * 1e-10 = 1e-6: parallel by the
  // tolerance, though the lines cross inside both segments.
  DPNT x{-7, -7};
  EXPECT_FALSE(CrossDLines({0, 0}, {100, 0}, {0, -1e-10}, {100, 1e-10}, x));
  EXPECT_TRUE(CrossDLines({0, 0}, {100, 0}, {0, -1e-3}, {100, 1e-3}, x));
  EXPECT_EQ(Describe(x), "(50,0)");
}

} // namespace
