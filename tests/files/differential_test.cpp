// The registry against a model of each file's bytes, with no cache, the
// context's cache, and tiny caches that evict all the time. Long runs are
// the fuzz target files_differential_fuzz.
#include "common/files_model.h"
#include "common/temp_dir.h"

#include <gtest/gtest.h>
#include <random>

namespace {

TEST(FilesDifferential, MatchesTheModel) {
  struct Setting {
    int cacheBlocks;
    long blockSize;
  } settings[] = {{0, 512}, {401, 512}, {3, 512}, {4, 512}, {6, 512}, {5, 64}};
  for (const Setting& s : settings) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      qxtest::TempDir dir;
      std::mt19937 random(seed * 7919 + static_cast<unsigned>(s.cacheBlocks));
      std::string result = qxtest::DifferentialRun(
          dir.Path(), s.cacheBlocks, s.blockSize, [&] { return static_cast<int>(random() & 0xFF); },
          400);
      EXPECT_EQ(result, "") << "cache " << s.cacheBlocks << " x " << s.blockSize << ", seed "
                            << seed;
    }
  }
}

} // namespace
