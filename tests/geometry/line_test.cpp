// Lines: ClipLine's Cohen-Sutherland steps and rounding, ClipPoly's
// boundary runs, and the intersection of two segments on integers and
// doubles.
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

std::string Text(const std::vector<LPNT>& pts) {
  std::string s;
  for (const LPNT& p : pts)
    s += "(" + std::to_string(p.x) + "," + std::to_string(p.y) + ")";
  return s;
}

const LRECT kBox{0, 0, 10, 10};

TEST(ClipLine, CohenSutherlandCases) {
  struct Case {
    const char* what;
    LPNT p0, p1;
    LRECT r;
    bool visible;
    LPNT q0, q1;
  } cases[] = {
      {"through, given order kept", {-10, 5}, {20, 5}, kBox, true, {0, 5}, {10, 5}},
      {"through, reversed", {20, 5}, {-10, 5}, kBox, true, {10, 5}, {0, 5}},
      {"beside", {-10, -10}, {-5, 20}, kBox, false, {}, {}},
      {"inside", {1, 1}, {9, 9}, kBox, true, {1, 1}, {9, 9}},
      {"diagonal through corners", {-5, -5}, {15, 15}, kBox, true, {0, 0}, {10, 10}},
      {"half rounds up", {-1, 0}, {1, 1}, kBox, true, {0, 1}, {1, 1}},
      {"negative half rounds down", {-1, 1}, {1, 0}, kBox, true, {0, 0}, {1, 0}},
      {"third rounds to the nearest", {-1, 0}, {2, 1}, kBox, true, {0, 0}, {2, 1}},
      {"touches a corner", {-2, 8}, {3, 13}, kBox, true, {0, 10}, {0, 10}},
      {"misses a corner", {-2, 9}, {2, 13}, kBox, false, {}, {}},
      {"along an edge", {0, -5}, {0, 15}, kBox, true, {0, 0}, {0, 10}},
      {"vertical, downwards", {5, 20}, {5, -20}, kBox, true, {5, 10}, {5, 0}},
      {"a point inside", {5, 5}, {5, 5}, kBox, true, {5, 5}, {5, 5}},
      {"a point outside", {11, 5}, {11, 5}, kBox, false, {}, {}},
      {"unsorted rectangle", {1, 1}, {2, 2}, {10, 10, 0, 0}, false, {}, {}},
      {"32-bit extremes", {INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, kBox, true, {0, 0}, {10, 10}},
      {"extremes, missing by one", {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, kBox, false, {}, {}},
      {"a rectangle at the limits",
       {INT_MIN, 0},
       {INT_MAX, 0},
       {INT_MAX - 1, -1, INT_MAX, 1},
       true,
       {INT_MAX - 1, 0},
       {INT_MAX, 0}},
  };
  for (const Case& c : cases) {
    LPNT p0 = c.p0, p1 = c.p1;
    bool visible = ClipLine(&p0, &p1, &c.r);
    EXPECT_EQ(visible, c.visible) << c.what;
    if (visible && c.visible) {
      EXPECT_EQ(Text({p0, p1}), Text({c.q0, c.q1})) << c.what;
    }
  }
  LPNT p{1, 1};
  EXPECT_FALSE(ClipLine(nullptr, &p, &kBox));
  EXPECT_FALSE(ClipLine(&p, &p, nullptr));
}

TEST(ClipPoly, InsideRunsAndBoundaryRuns) {
  struct Case {
    const char* what;
    std::vector<LPNT> in;
    bool visible;
    std::vector<LPNT> out;
  } cases[] = {
      {"inside", {{1, 1}, {5, 5}, {9, 1}}, true, {{1, 1}, {5, 5}, {9, 1}}},
      {"straight through", {{-5, 5}, {15, 5}}, true, {{0, 5}, {10, 5}}},
      {"the crossing is rounded", {{-1, 0}, {1, 1}}, true, {{0, 1}, {1, 1}}},
      {"leaves and re-enters by one edge",
       {{5, 5}, {5, 15}, {8, 15}, {8, 5}},
       true,
       {{5, 5}, {5, 10}, {8, 10}, {8, 5}}},
      {"leaves and re-enters round a corner",
       {{5, 5}, {15, 5}, {15, 15}, {5, 15}, {5, 8}},
       true,
       {{5, 5}, {10, 5}, {10, 10}, {5, 10}, {5, 8}}},
      {"a run along one edge keeps its ends",
       {{5, 5}, {5, 12}, {6, 20}, {7, 11}, {8, 30}, {9, 5}},
       true,
       {{5, 5}, {5, 10}, {9, 10}, {9, 5}}},
      {"passes outside a corner",
       {{5, 5}, {-5, 5}, {-5, -5}, {5, -5}, {5, 3}},
       true,
       {{5, 5}, {0, 5}, {0, 0}, {5, 0}, {5, 3}}},
      {"goes back along an edge to where it left",
       {{5, 5}, {-5, 5}, {-5, 6}, {-5, 5}, {5, 5}},
       true,
       {{5, 5}, {0, 5}, {5, 5}}},
      {"touches a corner only", {{-5, 5}, {5, -5}}, true, {{0, 0}}},
      {"around, never inside", {{-5, -5}, {15, -5}, {15, 15}, {-5, 15}, {-5, -5}}, false, {}},
      {"one point inside", {{3, 3}}, true, {{3, 3}}},
      {"one point outside", {{11, 3}}, false, {}},
      {"a closed ring keeps its boundary runs",
       {{-5, 5}, {5, 5}, {5, -5}, {-5, -5}, {-5, 5}},
       true,
       {{0, 5}, {5, 5}, {5, 0}, {0, 0}, {0, 5}}},
      {"repeated points", {{1, 1}, {1, 1}, {2, 2}, {2, 2}}, true, {{1, 1}, {2, 2}}},
      {"32-bit extremes", {{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}}, true, {{0, 0}, {10, 10}}},
  };
  for (const Case& c : cases) {
    const int n = static_cast<int>(c.in.size());
    std::vector<LPNT> in = c.in, out(3 * n - 2 + 4, LPNT{-77, -77});
    int count = -1;
    bool visible = ClipPoly(in.data(), out.data(), &kBox, &count, n);
    EXPECT_EQ(visible, c.visible) << c.what;
    ASSERT_TRUE(count >= 0 && count <= 3 * n - 2) << c.what;
    EXPECT_EQ(Text(std::vector<LPNT>(out.begin(), out.begin() + count)), Text(c.out)) << c.what;
    for (size_t i = 3 * n - 2; i < out.size(); ++i)
      EXPECT_TRUE(out[i].x == -77 && out[i].y == -77) << c.what << ": written past 3n - 2";
  }
  LPNT in[2] = {{1, 1}, {2, 2}}, out[4];
  int count = 9;
  EXPECT_FALSE(ClipPoly(in, out, &kBox, &count, 0));
  EXPECT_EQ(count, 0);
  EXPECT_FALSE(ClipPoly(in, out, nullptr, &count, 2));
  EXPECT_FALSE(ClipPoly(nullptr, out, &kBox, &count, 2));
  const LRECT unsorted{5, 5, 0, 0};
  EXPECT_FALSE(ClipPoly(in, out, &unsorted, &count, 2));
  EXPECT_TRUE(ClipPoly(in, out, &kBox, nullptr, 2));
}

TEST(LineIntersection, CasesBeyondTheQuickRejections) {
  struct Case {
    const char* what;
    LPNT a, b, c, d;
    bool meet;
    LPNT x;
  } cases[] = {
      {"crossing", {0, 0}, {10, 10}, {0, 10}, {10, 0}, true, {5, 5}},
      {"crossing, rounded", {0, 0}, {3, 1}, {0, 1}, {3, 0}, true, {2, 1}},
      {"crossing, negative half", {0, 0}, {-3, -1}, {0, -1}, {-3, 0}, true, {-2, -1}},
      {"a equals c", {4, 4}, {9, 0}, {4, 4}, {0, 9}, true, {4, 4}},
      {"b equals d", {0, 0}, {4, 4}, {8, 0}, {4, 4}, true, {4, 4}},
      {"T: c on ab", {0, 0}, {10, 0}, {5, 0}, {5, 7}, true, {5, 0}},
      {"T: b on cd", {0, 0}, {5, 0}, {5, -3}, {5, 3}, true, {5, 0}},
      {"near miss", {0, 0}, {10, 0}, {5, 1}, {6, 7}, false, {}},
      {"parallel", {0, 0}, {10, 5}, {0, 1}, {10, 6}, false, {}},
      {"collinear apart", {0, 0}, {2, 2}, {3, 3}, {5, 5}, false, {}},
      {"collinear touching", {0, 0}, {2, 2}, {2, 2}, {5, 5}, true, {2, 2}},
      {"collinear overlap: the end nearest a", {0, 0}, {6, 0}, {9, 0}, {3, 0}, true, {3, 0}},
      {"collinear, a inside cd", {4, 0}, {6, 0}, {0, 0}, {9, 0}, true, {4, 0}},
      {"ab a point on cd", {2, 1}, {2, 1}, {0, 0}, {4, 2}, true, {2, 1}},
      {"ab a point off cd", {2, 2}, {2, 2}, {0, 0}, {4, 2}, false, {}},
      {"cd a point on ab", {0, 0}, {4, 2}, {2, 1}, {2, 1}, true, {2, 1}},
      {"both points, equal", {3, 3}, {3, 3}, {3, 3}, {3, 3}, true, {3, 3}},
      {"quick rejection on x", {0, 0}, {1, 1}, {2, 0}, {3, 5}, false, {}},
      {"extremes crossing",
       {INT_MIN, INT_MIN},
       {INT_MAX, INT_MAX},
       {INT_MIN, INT_MAX},
       {INT_MAX, INT_MIN},
       true,
       {-1, -1}}, // (-0.5, -0.5)
      {"extremes touching",
       {INT_MIN, INT_MIN},
       {INT_MAX, INT_MAX},
       {INT_MAX, INT_MAX},
       {INT_MAX, 0},
       true,
       {INT_MAX, INT_MAX}},
      {"extremes, a hair apart",
       {INT_MIN, INT_MIN},
       {INT_MAX, INT_MAX - 1},
       {INT_MAX - 1, INT_MAX},
       {0, 1},
       false,
       {}},
  };
  for (const Case& c : cases) {
    LPNT x{-7, -7};
    bool meet = LineIntersection(c.a, c.b, c.c, c.d, x);
    EXPECT_EQ(meet, c.meet) << c.what;
    if (meet && c.meet) {
      EXPECT_EQ(Text({x}), Text({c.x})) << c.what;
    }
  }
}

TEST(CrossDLines, ToleranceAndInclusiveEnds) {
  struct Case {
    const char* what;
    DPNT a, b, c, d;
    bool meet;
    DPNT x;
  } cases[] = {
      {"crossing", {0, 0}, {10, 10}, {0, 10}, {10, 0}, true, {5, 5}},
      {"touching ends", {0, 0}, {2, 2}, {2, 2}, {4, 0}, true, {2, 2}},
      {"parallel", {0, 0}, {1, 1}, {0, 1}, {1, 2}, false, {}},
      {"collinear overlapping", {0, 0}, {4, 0}, {2, 0}, {6, 0}, false, {}},
      {"beyond b", {0, 0}, {1, 0}, {2, -1}, {2, 1}, false, {}},
      // den = 1e-8 against (|u.x| + |u.y|)^2 * 1e-10 = 1e-6: parallel by
      // the tolerance, though the lines cross inside both segments.
      {"nearly parallel", {0, 0}, {100, 0}, {0, -1e-10}, {100, 1e-10}, false, {}},
      {"a point", {1, 1}, {1, 1}, {0, 0}, {2, 2}, false, {}},
  };
  for (const Case& c : cases) {
    DPNT x{-7, -7};
    bool meet = CrossDLines(c.a, c.b, c.c, c.d, x);
    EXPECT_EQ(meet, c.meet) << c.what;
    if (meet && c.meet) {
      EXPECT_TRUE(x.x == c.x.x && x.y == c.x.y) << c.what << ": " << x.x << "," << x.y;
    }
  }
}

} // namespace
