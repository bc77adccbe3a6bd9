// Long differential runs of the file registry against its model: the input
// chooses the cache (none, tiny, the default) and the first operations, a
// generator seeded with it the rest of the 400.
#include "common/temp_dir.h"
#include "models/files_model.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2)
    return 0;
  static const int kCaches[] = {0, 3, 4, 5, 6, 401};
  static const long kSizes[] = {512, 64, 100, 4096};
  int cache = kCaches[data[0] % 6];
  long blockSize = kSizes[data[1] % 4];
  // The input's bytes, then a generator seeded with them.
  uint64_t state = size;
  for (size_t i = 0; i < size; ++i)
    state = state * 31 + data[i];
  size_t at = 2;
  auto next = [&]() -> int {
    if (at < size)
      return data[at++];
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<int>(state >> 56);
  };
  qxtest::TempDir dir;
  std::string result = qxtest::DifferentialRun(dir.Path(), cache, blockSize, next, 400);
  if (!result.empty())
    std::abort();
  return 0;
}
