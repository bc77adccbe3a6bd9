// ClipLine, ClipPoly, LineIntersection and CrossDLines against the exact
// references on random cases (clip_checks.h); the clip fuzzer runs the same
// checks on millions more.
#include "geometry/clip_checks.h"

#include <gtest/gtest.h>

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

} // namespace
