// Long differential runs of the file registry against its model: the input
// chooses the cache (none, tiny, the default) and every operation.
#include "common/files_model.h"
#include "common/temp_dir.h"

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
  size_t at = 2;
  auto next = [&]() -> int { return at < size ? data[at++] : 0; };
  qxtest::TempDir dir;
  std::string result =
      qxtest::DifferentialRun(dir.Path(), cache, blockSize, next, static_cast<int>(size / 3));
  if (!result.empty())
    std::abort();
  return 0;
}
