// Arcs and rotated rectangles; fuzz/geometry_extremes_fuzz.cpp compares
// FlipArcAngles, RoundToPatternSize and ring orientation with references.
#include "qxutil/geometry.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace {

struct AngleCase {
  const char* what;
  LRECT r;
  LPNT p1, p2;
  bool swap;
  short a1, a2;
};

TEST(Arcs, CalcArcAnglesFromTheIntegerCentre) {
  const LRECT square{-10, -10, 10, 10};
  const AngleCase cases[] = {
      // The direction angle itself, through a square about the origin.
      {"(1, 1) is 450, (-1, 0) 1800", square, {1, 1}, {-1, 0}, false, 450, 1800},
      {"the zero vector is 2700", square, {0, 0}, {0, 5}, false, 2700, 4500},
      {"straight down is 2700, right 0", square, {0, -3}, {7, 0}, false, 2700, 3600},
      {"a hair below +x rounds to 3600", square, {10000000, -1}, {0, 1}, false, 3600, 4500},
      {"a2 raised above a1", square, {-1, 0}, {1, 1}, false, 1800, 4050},
      {"equal points make a full turn", square, {1, 1}, {1, 1}, false, 450, 4050},
      {"swap", square, {1, 1}, {-1, 0}, true, 1800, 4050},
      // The ellipse is scaled to a circle: a corner of r is at 45 degrees.
      {"ellipse", {0, 0, 40, 20}, {40, 20}, {0, 20}, false, 450, 1350},
      // The integer centre of (0, 0, 3, 3) is (1, 1).
      {"odd sizes", {0, 0, 3, 3}, {2, 1}, {1, 2}, false, 0, 900},
  };
  for (const AngleCase& c : cases) {
    short a1 = -1, a2 = -1;
    CalcArcAngles(c.r, c.p1, c.p2, &a1, &a2, c.swap);
    EXPECT_EQ(a1, c.a1) << c.what;
    EXPECT_EQ(a2, c.a2) << c.what;
  }
}

TEST(Arcs, LogCalcArcPoints) {
  struct Case {
    LRECT r;
    int angle;
    LPNT p;
  } cases[] = {
      {{0, 0, 100, 50}, 0, {100, 25}},
      {{0, 0, 100, 50}, 900, {50, 50}},
      {{0, 0, 100, 50}, 1800, {0, 25}},
      {{0, 0, 100, 50}, 2700, {50, 0}},
      {{0, 0, 100, 50}, 450, {85, 43}},
      {{0, 0, 100, 50}, 15, {100, 26}}, // tenths count: 1.5 degrees, sin * 25 = 0.65
      {{0, 0, 100, 50}, -900, {50, 0}},
      {{INT_MIN, 0, INT_MIN + 3, 0}, 1800, {INT_MIN, 0}}, // saturates
  };
  for (const Case& c : cases) {
    LPNT p1{-7, -7}, p2{-7, -7};
    LogCalcArcPoints(c.r, c.angle, 0, &p1, &p2);
    EXPECT_TRUE(p1.x == c.p.x && p1.y == c.p.y) << c.angle << " => " << p1.x << "," << p1.y;
  }
}

TEST(Arcs, CirclesThroughPointsAndAboutCentres) {
  DRECT mbr{9, 9, 9, 9};
  short a1 = -1, a2 = -1;
  ASSERT_TRUE(CirclePointsToMBRAngles({5, 2}, {2, 5}, {-1, 2}, mbr, a1, a2));
  EXPECT_TRUE(mbr.x1 == -1 && mbr.y1 == -1 && mbr.x2 == 5 && mbr.y2 == 5);
  EXPECT_TRUE(a1 == 0 && a2 == 1800);
  ASSERT_TRUE(CirclePointsToMBRAngles({0, 1}, {1, 0}, {0, -1}, mbr, a1, a2));
  EXPECT_TRUE(a1 == 900 && a2 == 2700);
  mbr = {9, 9, 9, 9};
  EXPECT_FALSE(CirclePointsToMBRAngles({0, 0}, {1, 1}, {3, 3}, mbr, a1, a2));
  EXPECT_FALSE(CirclePointsToMBRAngles({0, 0}, {1e-7, 0}, {0, 1e-7}, mbr, a1, a2)); // k = 1e-14
  EXPECT_EQ(mbr.x1, 9);

  struct Case {
    LPNT centre, on;
    double sx, sy;
    LRECT want;
  } cases[] = {
      {{10, 10}, {13, 14}, 1, 1, {5, 5, 15, 15}},
      {{10, 10}, {13, 14}, 1, 2, {6, 3, 14, 17}},
      {{0, 0}, {2000000000, 0}, 1, 1, {-1000000000, -1000000000, 1000000000, 1000000000}},
  };
  for (const auto& c : cases) {
    LRECT r;
    CreateCircleMBR(r, c.centre, c.on, c.sx, c.sy);
    EXPECT_TRUE(r.x1 == c.want.x1 && r.y1 == c.want.y1 && r.x2 == c.want.x2 && r.y2 == c.want.y2)
        << r.x1 << "," << r.y1 << "," << r.x2 << "," << r.y2;
  }
}

TEST(Rotation, CornersAndBoundingRectangles) {
  struct Case {
    short angle;
    DPNT pivot;
    DPNT corners[4];
  } cases[] = {
      {0, {0, 0}, {{0, 0}, {0, 1}, {2, 1}, {2, 0}}},
      {900, {0, 0}, {{0, 0}, {-1, 0}, {-1, 2}, {0, 2}}},
      {-900, {0, 0}, {{0, 0}, {1, 0}, {1, -2}, {0, -2}}},
      {1800, {1, 1}, {{2, 2}, {2, 1}, {0, 1}, {0, 2}}},
      {5400, {0, 0}, {{0, 0}, {0, -1}, {-2, -1}, {-2, 0}}},
  };
  for (const auto& c : cases) {
    DRECT r{0, 0, 2, 1};
    DPNT pts[4];
    GetRotatedMBRPnts(&r, c.angle, c.pivot.x, c.pivot.y, pts);
    for (int i = 0; i < 4; ++i)
      EXPECT_TRUE(pts[i].x == c.corners[i].x && pts[i].y == c.corners[i].y)
          << c.angle << " corner " << i << ": " << pts[i].x << "," << pts[i].y;
  }
  DRECT r{0, 0, 2, 1};
  RotateTextMBR(&r, 900, 0, 0);
  EXPECT_TRUE(r.x1 == -1 && r.y1 == 0 && r.x2 == 0 && r.y2 == 2);
  r = {0, 0, 2, 1};
  RotateTextMBR(&r, 450, 1, 0.5);
  const double half = 1.5 * std::sqrt(0.5);
  EXPECT_NEAR(r.x1, 1 - half, 1e-12);
  EXPECT_NEAR(r.y1, 0.5 - half, 1e-12);
  EXPECT_NEAR(r.x2, 1 + half, 1e-12);
  EXPECT_NEAR(r.y2, 0.5 + half, 1e-12);
}

} // namespace
