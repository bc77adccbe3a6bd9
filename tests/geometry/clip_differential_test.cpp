// ClipLine, ClipPoly, LineIntersection and CrossDLines against the exact
// references on random cases (clip_checks.h); the clip fuzzer runs the same
// checks on millions more.
#include "geometry/clip_checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

TEST(ClipDifferential, RandomCasesMatchTheExactReferences) {
  std::mt19937 random(6);
  uint8_t bytes[64];
  int faults = 0;
  for (int i = 0; i < 25000 && faults < 10; ++i) {
    for (uint8_t& b : bytes)
      b = static_cast<uint8_t>(random());
    std::string fault = qxtest::CheckClipCase({bytes, sizeof bytes});
    faults += !fault.empty();
    EXPECT_EQ(fault, "") << "case " << i;
  }
}

// Long walks on a small grid round a small rectangle: runs of many points
// in one region, which ClipPoly passes over several points at a time.
TEST(ClipDifferential, LongWalksMatchTheExactReference) {
  std::mt19937 random(8);
  int faults = 0;
  for (int i = 0; i < 3000 && faults < 10; ++i) {
    const LRECT r{0, 0, static_cast<int32_t>(random() % 4), static_cast<int32_t>(random() % 4)};
    const int step = 1 + random() % 3;
    std::vector<LPNT> line(1 + random() % 200);
    int x = 2, y = 2;
    for (LPNT& p : line) {
      x = std::clamp(x + static_cast<int>(random() % (2 * step + 1)) - step, -6, 9);
      y = std::clamp(y + static_cast<int>(random() % (2 * step + 1)) - step, -6, 9);
      p = {x, y};
    }
    if (random() % 4 == 0)
      line.push_back(line.front()); // a closed ring
    std::string fault = qxtest::CheckClipPoly(line, r);
    faults += !fault.empty();
    EXPECT_EQ(fault, "") << "walk " << i;
  }
}

} // namespace
